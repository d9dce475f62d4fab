#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "runner/LineHints.h"
#include "runner/RunnerLog.h"
#include "runner/RunnerLogTexts.h"
#include "support/PlainNews.h"

namespace valdorn {
namespace {

using Kind = RunnerLogEvent::Kind;
using Lines = std::vector<std::string>;

std::vector<RunnerNews> newsOf(const Lines& lines) {
    const std::vector<std::string_view> views(lines.begin(), lines.end());
    return RunnerLog::news(views);
}

RunnerNews job(const std::string& label) {
    return {std::nullopt, label, {}};
}

TEST(RunnerNews, LinesWithoutNewsAreLeftOut) {
    EXPECT_TRUE(newsOf({}).empty());
    EXPECT_TRUE(newsOf({"", "x", "time=\"x\" level=debug msg=\"Worker pool\"", "[a] b"}).empty());
}

TEST(RunnerNews, LinesThatOnlyLookLikeNewsAreLeftOut) {
    for (const char* line : {"hash verified", "a repo is ", "with version: ", "finished ("}) {
        EXPECT_TRUE(LineHints::mayTell(line)) << line;
        EXPECT_TRUE(newsOf({line}).empty()) << line;
    }
}

TEST(RunnerNews, OneLineMaySayAllAtOnce) {
    EXPECT_EQ(newsOf({"[a/b] with version: v1, declare successfully"}),
              (std::vector<RunnerNews>{{"v1", "a/b", {Kind::declared, {}}}}));
}

TEST(RunnerNews, NewsKeepTheirOrder) {
    EXPECT_EQ(newsOf({"[a/b]", "permission denied", "x", "[c/d]", " repo is e"}),
              (std::vector<RunnerNews>{job("a/b"),
                                       {std::nullopt, std::nullopt, {Kind::networkBlocked, {}}},
                                       job("c/d"),
                                       {std::nullopt, std::nullopt, {Kind::repository, "e"}}}));
}

TEST(RunnerNews, JobIsToldOnceForAllItsLines) {
    EXPECT_EQ(newsOf({"[a/b] x", "between", "[a/b] y", "[a/b]z", "[a/b]"}),
              (std::vector<RunnerNews>{job("a/b")}));
}

TEST(RunnerNews, LabelEndsWithItsFirstBracket) {
    EXPECT_EQ(newsOf({"[a/b] list[0]", "[a/b] list"}), (std::vector<RunnerNews>{job("a/b")}));
}

TEST(RunnerNews, JobThatComesBackIsToldAgain) {
    EXPECT_EQ(newsOf({"[a/b]", "[c/d]", "[a/b]"}),
              (std::vector<RunnerNews>{job("a/b"), job("c/d"), job("a/b")}));
}

TEST(RunnerNews, JobIsNotTakenForAnotherThatItBeginsLike) {
    EXPECT_EQ(newsOf({"[a/b]", "[a/bc] x", "[a/b", "[a/b]"}),
              (std::vector<RunnerNews>{job("a/b"), job("a/bc"), job("a/b")}));
}

TEST(RunnerNews, JobIsToldAgainAfterADeclarationTookItBack) {
    const RunnerNews declared{std::nullopt, std::nullopt, {Kind::declared, {}}};
    EXPECT_EQ(newsOf({"[a/b]", "declare successfully", "[a/b]"}),
              (std::vector<RunnerNews>{job("a/b"), declared, job("a/b")}));
}

TEST(RunnerNews, KnownJobDoesNotHideWhatElseItsLineSays) {
    EXPECT_EQ(newsOf({"[a/b]", "[a/b] Worker 1 finished (ok)"}),
              (std::vector<RunnerNews>{job("a/b"),
                                       {std::nullopt, std::nullopt, {Kind::jobFinished, {}}}}));
}

// The quick look at a line, beside the search for each text.

// Each telling text with what makes it tell something by itself: a word behind it, and the worker
// before its end.
const Lines& texts() {
    static const Lines all = [] {
        Lines lines;
        for (const std::string_view text : RunnerLogTexts::telling) {
            lines.emplace_back(text == RunnerLogTexts::finished ? "Worker " : "");
            lines.back().append(text).append("a/b");
        }
        return lines;
    }();
    return all;
}

TEST(LineHints, NoTextIsOverlookedWhereverItStands) {
    for (const std::string& text : texts()) {
        for (std::size_t before = 0; before < 70; ++before) {
            for (std::size_t after = 0; after < 40; ++after) {
                const std::string line = std::string(before, 'x') + text + std::string(after, 'x');
                ASSERT_NE(plainNews(line), RunnerNews{}) << line;
                ASSERT_TRUE(LineHints::mayTell(line)) << line;
            }
        }
    }
}

TEST(LineHints, OrdinaryLinesAreNotLookedAtTwice) {
    for (const char* line :
         {"", "x", "[Deploy/push]   | npm run build", "echo done",
          "time=\"2026-03-09T14:05:00Z\" level=debug msg=\"Stages Runs: [push]\" "
          "func=\"[func1]\" file=\"[runner.go:165]\""})
        EXPECT_FALSE(LineHints::mayTell(line)) << line;
}

TEST(LineHints, LookNeitherBeforeNorBehindTheLine) {
    for (const std::string text : {"permission denied", "n d"}) {
        for (std::size_t size = 0; size < 40; ++size) {
            const std::string around = text + std::string(size, 'x') + text;
            EXPECT_FALSE(LineHints::mayTell(std::string_view(around).substr(text.size(), size)));
        }
    }
}

TEST(LineHints, AreNotPiecedTogetherAcrossTheLinesEnds) {
    for (const std::string hint : {"n d", "h v"}) {
        for (std::size_t size = 0; size < 40; ++size) {
            const std::string before = hint + std::string(size, 'x');
            const std::string behind = std::string(size, 'x') + hint;
            for (const std::size_t cut : {1U, 2U}) {
                EXPECT_FALSE(LineHints::mayTell(std::string_view(before).substr(cut))) << size;
                EXPECT_FALSE(LineHints::mayTell(std::string_view(behind).substr(0, size + cut)))
                    << size;
            }
        }
    }
}

class RandomLines {
public:
    explicit RandomLines(unsigned seed) : random_(seed) {}

    std::string line() {
        std::string line;
        for (std::size_t parts = below(6); parts > 0; --parts)
            line += part();
        return line;
    }

    std::size_t below(std::size_t limit) { return random_() % limit; }

private:
    // A text, a piece of one, or something else, so that texts stand everywhere, cut and whole.
    std::string part() {
        static const Lines others{"[a/b] ",      "[c/d]",  "[a/bc]", "[", "]",    "/",
                                  " ",           "Worker", "x",      ",", "\r\n", "\xE2\x80\xA6",
                                  "no h ssf d ("};
        const std::string& text = texts()[below(texts().size())];
        switch (below(4)) {
            case 0:
                return text;
            case 1:
                return text.substr(below(text.size()), below(text.size()));
            case 2:
                return std::string(below(20), 'e');
            default:
                return others[below(others.size())];
        }
    }

    std::mt19937 random_;
};

TEST(RunnerNewsProperty, TheQuickWayDoesWhatTheSearchForEachTextDoes) {
    for (unsigned seed = 0; seed < 4000; ++seed) {
        RandomLines random(seed);
        Lines lines(random.below(30));
        for (std::string& line : lines)
            line = random.line();
        for (const char* shown : {"", "a/b"}) {
            AppliedNews quick(shown);
            AppliedNews plain(shown);
            for (const RunnerNews& news : newsOf(lines))
                quick.apply(news);
            for (const std::string& line : lines)
                plain.apply(plainNews(line));
            ASSERT_EQ(quick.steps, plain.steps) << "seed " << seed;
        }
    }
}

}  // namespace
}  // namespace valdorn
