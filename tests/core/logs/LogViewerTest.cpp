#include <chrono>
#include <cstdint>
#include <ctime>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "logs/LogViewer.h"
#include "support/LogTexts.h"
#include "support/MemoryFileSystem.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {
namespace {

using Scrolling = LogViewer::Scrolling;
using Texts = std::vector<std::string>;

// What this thread has computed so far, however busy the machine is.
std::chrono::nanoseconds computed() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

class LogViewerTest : public testing::Test {
protected:
    void write(const std::string& text) { files.files[path] += text; }

    // What the file has got since is taken in, as it would be by the next poll.
    void poll() {
        tailer->poll();
        queue.runPosted();
    }

    Texts shown() const { return texts(viewer->filtered()); }

    static constexpr char path[] = "/log";
    MemoryFileSystem files;
    VirtualMainQueue queue;
    std::shared_ptr<LogTailer> tailer = LogTailer::create(queue, files, path);
    std::unique_ptr<LogViewer> viewer = std::make_unique<LogViewer>(queue, tailer, CaseFold("C"));
    std::vector<Scrolling> told;
    Subscription subscription =
        viewer->onFilteredChanged([this](Scrolling scrolling) { told.push_back(scrolling); });
};

TEST_F(LogViewerTest, BeginsWithNoQueryEveryLevelAndFollowing) {
    EXPECT_EQ(viewer->query(), "");
    EXPECT_EQ(viewer->level(), LevelFilter::all);
    EXPECT_TRUE(viewer->follow());
    EXPECT_TRUE(viewer->filtered().empty());
    EXPECT_EQ(viewer->text(), "");
}

TEST_F(LogViewerTest, BeginsWithTheLinesThatAreThere) {
    write("a\nb\n");
    tailer->reload();
    const LogViewer late(queue, tailer, CaseFold("C"));
    EXPECT_EQ(texts(late.filtered()), (Texts{"a", "b"}));
}

TEST_F(LogViewerTest, ShowsTheFileAndWhatIsAddedUntilItStops) {
    write("a\n");
    viewer->start();
    queue.runPosted();
    EXPECT_EQ(shown(), (Texts{"a"}));
    write("b\n");
    queue.advance(LogTailer::pollPeriod);
    EXPECT_EQ(shown(), (Texts{"a", "b"}));
    viewer->stop();
    write("c\n");
    queue.advance(3 * LogTailer::pollPeriod);
    EXPECT_EQ(shown(), (Texts{"a", "b"}));
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LogViewerTest, QueryIgnoresCaseAndLevelDoesNot) {
    write("level=warning the job\nlevel=Warning the job\nlevel=warning\nlevel=info job\n");
    poll();
    viewer->setQuery("JOB");
    EXPECT_EQ(shown(), (Texts{"level=warning the job", "level=Warning the job", "level=info job"}));
    viewer->setLevel(LevelFilter::warning);
    EXPECT_EQ(shown(), (Texts{"level=warning the job"}));
    EXPECT_EQ(viewer->text(), "level=warning the job");
    viewer->setQuery("");
    EXPECT_EQ(shown(), (Texts{"level=warning the job", "level=warning"}));
}

TEST_F(LogViewerTest, ErrorLinesWithoutTheLevelAreHiddenByTheErrorFilter) {
    write("Error: no host\nlevel=error x\n");
    poll();
    viewer->setLevel(LevelFilter::error);
    EXPECT_EQ(shown(), (Texts{"level=error x"}));
}

TEST_F(LogViewerTest, SearchesByTheLanguageItIsGiven) {
    write("DIYARBAKIR\n");
    poll();
    viewer = std::make_unique<LogViewer>(queue, tailer, CaseFold("tr_TR"));
    viewer->setQuery("d\xC4\xB1yar");
    EXPECT_EQ(shown(), (Texts{"DIYARBAKIR"}));
    viewer->setQuery("diyar");
    EXPECT_EQ(shown(), Texts{});
}

TEST_F(LogViewerTest, TextIsTheLinesThatPassWithoutALineFeedAtTheEnd) {
    write("xa\nb\nxc\n\n");
    poll();
    EXPECT_EQ(viewer->text(), "xa\nb\nxc\n");
    viewer->setQuery("X");
    EXPECT_EQ(viewer->text(), "xa\nxc");
    viewer->setQuery("none");
    EXPECT_EQ(viewer->text(), "");
}

TEST_F(LogViewerTest, TextBeginningWithAnEmptyLineKeepsIt) {
    write("\na\n");
    poll();
    EXPECT_EQ(viewer->text(), "\na");
}

TEST_F(LogViewerTest, TextIsOfTheLinesOfThatMoment) {
    write("a\n");
    tailer->poll();  // not taken in yet
    EXPECT_EQ(viewer->text(), "a");
    EXPECT_TRUE(viewer->filtered().empty());
}

TEST_F(LogViewerTest, TextOfThatMomentIsOfTheLinesThatPass) {
    write("level=info job\n");
    poll();
    viewer->setQuery("JOB");
    viewer->setLevel(LevelFilter::info);
    write("level=info x\nlevel=info Job\nlevel=error job\n");
    tailer->poll();  // not taken in yet
    EXPECT_EQ(viewer->text(), "level=info job\nlevel=info Job");
    viewer->setQuery("");
    EXPECT_EQ(viewer->text(), "level=info job\nlevel=info x\nlevel=info Job");
    write("level=info y\n");
    tailer->poll();
    viewer->setQuery("y");
    EXPECT_EQ(viewer->text(), "level=info y");
    viewer->clear();
    EXPECT_EQ(viewer->text(), "");
}

TEST_F(LogViewerTest, EachAdditionScrollsToTheLastLineWhileFollowing) {
    write("a\n");
    poll();
    write("b\n");
    poll();
    EXPECT_EQ(told, (std::vector{Scrolling::toLast, Scrolling::toLast}));
}

TEST_F(LogViewerTest, NothingScrollsWithoutFollowing) {
    viewer->setFollow(false);
    EXPECT_FALSE(viewer->follow());
    write("a\nb\n");
    poll();
    viewer->setQuery("a");
    EXPECT_EQ(told, (std::vector{Scrolling::keep, Scrolling::keep}));
}

TEST_F(LogViewerTest, FollowingAgainScrollsWithTheNextChangeOfTheNumberOnly) {
    viewer->setFollow(false);
    write("a\n");
    poll();
    told.clear();
    viewer->setFollow(true);
    queue.runPosted();
    EXPECT_TRUE(told.empty());
    tailer->reload();  // other lines, as many as before
    queue.runPosted();
    EXPECT_EQ(told, (std::vector{Scrolling::keep}));
    write("b\n");
    poll();
    EXPECT_EQ(told, (std::vector{Scrolling::keep, Scrolling::toLast}));
}

TEST_F(LogViewerTest, AFullListThatMovesOnDoesNotScroll) {
    std::string many;
    for (std::size_t line = 0; line < LogTailer::maxLines; ++line)
        many += "x\n";
    write(many);
    poll();
    told.clear();
    write("y\n");
    poll();
    EXPECT_EQ(told, (std::vector{Scrolling::keep}));
    EXPECT_EQ(shown().size(), LogTailer::maxLines);
    EXPECT_EQ(shown().back(), "y");
}

TEST_F(LogViewerTest, AnEmptyResultScrollsNowhere) {
    write("a\n");
    poll();
    told.clear();
    viewer->setQuery("none");
    EXPECT_EQ(told, (std::vector{Scrolling::keep}));
}

TEST_F(LogViewerTest, AFilterThatChangesTheNumberScrolls) {
    write("a\nb\n");
    poll();
    told.clear();
    viewer->setQuery("a");
    EXPECT_EQ(told, (std::vector{Scrolling::toLast}));
    viewer->setQuery("b");  // one line again, another one
    EXPECT_EQ(told, (std::vector{Scrolling::toLast, Scrolling::keep}));
}

TEST_F(LogViewerTest, EqualValuesAndEqualResultsTellNobody) {
    write("level=info\n");
    poll();
    told.clear();
    viewer->setQuery("");
    viewer->setLevel(LevelFilter::all);
    viewer->setQuery("level");
    viewer->setQuery("level");
    viewer->setLevel(LevelFilter::info);
    EXPECT_TRUE(told.empty());
    write("level=error hidden\n");
    poll();
    EXPECT_TRUE(told.empty());
    write("level=info more\n");
    tailer->poll();
    viewer->setQuery("level");
    viewer->setLevel(LevelFilter::info);
    EXPECT_TRUE(told.empty());  // the new line waits for its turn
    queue.runPosted();
    EXPECT_EQ(told, (std::vector{Scrolling::toLast}));
}

TEST_F(LogViewerTest, AddedLineCostsFarLessThanAllLines) {
    // Marks make a line dear to look at.
    for (std::size_t line = 0; line < LogTailer::maxLines; ++line)
        write("Re\xCC\x81sume\xCC\x81 " + std::to_string(line) + "\n");
    poll();
    auto start = computed();
    viewer->setQuery("sume");
    const auto all = computed() - start;
    write("one more, for which the first goes\n");
    tailer->poll();
    start = computed();
    queue.runPosted();
    EXPECT_LT(4 * (computed() - start), all);
}

TEST_F(LogViewerTest, ManyChangesInOneTurnAreTakenInOnce) {
    write("a\n");
    tailer->poll();
    write("b\n");
    tailer->poll();
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(queue.pending(), 1U);
    queue.runPosted();
    EXPECT_EQ(shown(), (Texts{"a", "b"}));
    EXPECT_EQ(told, (std::vector{Scrolling::toLast}));
    tailer->clear();
    tailer->reload();
    queue.runPosted();
    EXPECT_EQ(told, (std::vector{Scrolling::toLast, Scrolling::keep}));
}

TEST_F(LogViewerTest, AQueryTakesInTheLinesThatWaitToBeTakenIn) {
    write("a\nb\n");
    tailer->poll();
    viewer->setQuery("a");
    EXPECT_EQ(shown(), (Texts{"a"}));
    queue.runPosted();
    EXPECT_EQ(told, (std::vector{Scrolling::toLast}));
}

TEST_F(LogViewerTest, ClearShowsNothingUntilALineIsAddedOrTheFileIsReadAgain) {
    write("a\nb\n");
    viewer->start();
    queue.runPosted();
    viewer->clear();
    queue.runPosted();
    EXPECT_EQ(shown(), Texts{});
    EXPECT_EQ(told.back(), Scrolling::keep);
    write("c\n");
    queue.advance(LogTailer::pollPeriod);
    EXPECT_EQ(shown(), (Texts{"c"}));
    viewer->stop();
    viewer->start();
    queue.runPosted();
    EXPECT_EQ(shown(), (Texts{"a", "b", "c"}));
}

TEST_F(LogViewerTest, QueryLevelAndFollowOutliveStoppingAndStarting) {
    write("level=info a\nlevel=info b\n");
    viewer->setQuery("a");
    viewer->setLevel(LevelFilter::info);
    viewer->setFollow(false);
    viewer->start();
    viewer->stop();
    viewer->start();
    queue.runPosted();
    EXPECT_EQ(shown(), (Texts{"level=info a"}));
    EXPECT_FALSE(viewer->follow());
}

TEST_F(LogViewerTest, AChangeThatComesAfterItsEndDoesNothing) {
    write("a\n");
    tailer->poll();
    viewer.reset();
    queue.runPosted();
    EXPECT_TRUE(told.empty());
    write("b\n");
    tailer->poll();
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LogViewerTest, HoldsNoLineThatTheTailerHasDropped) {
    write("level=info a\n");
    viewer->setQuery("a");
    poll();
    const std::weak_ptr<LogLine::element_type> line = tailer->lines().front();
    EXPECT_FALSE(line.expired());
    viewer->clear();
    queue.runPosted();
    EXPECT_TRUE(line.expired());
}

TEST_F(LogViewerTest, AnObserverMayChangeTheQueryOrEndTheViewer) {
    write("a\nb\n");
    const Subscription changing =
        viewer->onFilteredChanged([this](Scrolling) { viewer->setQuery("b"); });
    poll();
    EXPECT_EQ(shown(), (Texts{"b"}));
    const Subscription ending = viewer->onFilteredChanged([this](Scrolling) { viewer.reset(); });
    viewer->setQuery("a");
    EXPECT_EQ(viewer, nullptr);
}

// Whatever happens in whatever order, what is shown is what a look at every line gives.
class LogViewerWalk : public LogViewerTest {
protected:
    std::string randomLine() {
        static const Texts words{"level=info",
                                 "level=warning",
                                 "level=error",
                                 "job",
                                 "JOB",
                                 "stra\xC3\x9F"
                                 "e",
                                 "STRASSE",
                                 ""};
        return words[random() % words.size()] + " " + words[random() % words.size()] + "\n";
    }

    void appendLines() {
        for (std::uint32_t left = random() % 4; left > 0; --left)
            write(randomLine());
        tailer->poll();
    }

    void fill() {
        std::string many;
        for (std::size_t left = LogTailer::maxLines - random() % 3; left > 0; --left)
            many += randomLine();
        write(many);
        tailer->poll();
    }

    void step() {
        static const Texts queries{"", "job", "Strasse", "none", "LEVEL=I", "o"};
        switch (random() % 24) {
            case 0:
                return tailer->clear();
            case 1:
                return tailer->reload();
            case 2:
                files.files[path] = randomLine();
                return tailer->poll();
            case 3:
                return random() % 8 == 0 ? fill() : appendLines();
            case 4:
            case 5:
                return viewer->setLevel(levelFilters[random() % levelFilters.size()]);
            case 6:
            case 7:
                return viewer->setQuery(queries[random() % queries.size()]);
            case 8:
                return viewer->setFollow(random() % 2 == 0);
            default:
                return appendLines();
        }
    }

    LogLines expected() const {
        const CaseFold fold("C");
        LogLines::List lines;
        for (const LogLine& line : tailer->lines()) {
            if (passes(viewer->level(), *line) &&
                CaseFold::contains(fold.key(*line), fold.key(viewer->query())))
                lines.push_back(line);
        }
        return lines;
    }

    void check() {
        ASSERT_EQ(viewer->filtered(), expected());
        std::string joined;
        for (const LogLine& line : viewer->filtered()) {
            joined += joined.empty() ? "" : "\n";
            joined += *line;
        }
        ASSERT_EQ(viewer->text(), joined);
    }

    std::mt19937 random;
};

TEST_F(LogViewerTest, SharesTheTailersListWhileEveryLinePasses) {
    write("one\ntwo\n");
    tailer->reload();
    queue.runPosted();
    EXPECT_EQ(&viewer->filtered().front(), &tailer->lines().front());
    viewer->setQuery("two");
    viewer->setQuery("");
    EXPECT_EQ(&viewer->filtered().front(), &tailer->lines().front());
}

TEST_F(LogViewerWalk, ShowsWhatALookAtEveryLineGives) {
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random.seed(seed);
        files.files[path].clear();
        for (int steps = 0; steps < 60; ++steps) {
            const LogLines before = viewer->filtered();
            told.clear();
            step();
            if (random() % 3 == 0)
                tailer->poll();
            queue.runPosted();
            ASSERT_NO_FATAL_FAILURE(check()) << "step " << steps;
            ASSERT_EQ(told.empty(), before == viewer->filtered()) << "step " << steps;
        }
    }
}

}  // namespace
}  // namespace valdorn
