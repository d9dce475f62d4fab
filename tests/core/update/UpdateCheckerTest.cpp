#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/ScriptedHttpClient.h"
#include "support/VirtualMainQueue.h"
#include "update/UpdateChecker.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;
using Tag = std::optional<std::string>;

std::string release(const std::string& tag) {
    return R"({"tag_name": ")" + tag + R"("})";
}

const HttpError broken{HttpError::Kind::network, "The cable is out"};

class UpdateCheckerTest : public testing::Test {
protected:
    void check(int times = 1) {
        for (int time = 0; time < times; ++time)
            checker->check();
    }

    VirtualMainQueue queue;
    ScriptedHttpClient http{queue};
    std::unique_ptr<UpdateChecker> checker =
        std::make_unique<UpdateChecker>(http, "https://releases.example");
};

TEST_F(UpdateCheckerTest, AsksNothingByItself) {
    queue.advance(24h);
    EXPECT_TRUE(http.queries.empty());
    EXPECT_EQ(checker->latest(), std::nullopt);
}

TEST_F(UpdateCheckerTest, AsksForTheLatestRelease) {
    check();
    ASSERT_EQ(http.queries.size(), 1U);
    EXPECT_EQ(http.queries[0].url,
              "https://releases.example/api/v1/repos/gitea/runner/releases/latest");
    EXPECT_EQ(http.queries[0].timeout, 10s);
    EXPECT_EQ(http.queries[0].maxBodyBytes, 1024U * 1024U);
}

TEST_F(UpdateCheckerTest, ASlashAtTheEndOfTheServiceIsNotDoubled) {
    for (const char* const service :
         {"http://host:3000/gitea", "http://host:3000/gitea/", "http://host:3000/gitea///"}) {
        UpdateChecker(http, service).check();
        EXPECT_EQ(http.queries.back().url,
                  "http://host:3000/gitea/api/v1/repos/gitea/runner/releases/latest");
    }
}

TEST_F(UpdateCheckerTest, TheTagIsPublishedAsItCame) {
    check();
    http.answer(0, release("  v0.2.11 "));
    EXPECT_EQ(checker->latest(), "  v0.2.11 ");
}

TEST_F(UpdateCheckerTest, AnEmptyTagIsATag) {
    check();
    http.answer(0, release(""));
    EXPECT_EQ(checker->latest(), "");
    check();
    EXPECT_EQ(http.queries.size(), 1U);
}

TEST_F(UpdateCheckerTest, TheChangeIsAnnouncedBeforeItLands) {
    std::vector<Tag> seen;
    const auto subscription =
        checker->onWillChange([this, &seen] { seen.push_back(checker->latest()); });
    check(2);
    EXPECT_TRUE(seen.empty());
    http.answer(0, release("v1"));
    EXPECT_EQ(seen, (std::vector<Tag>{std::nullopt}));
    http.answer(1, release("v2"));
    EXPECT_EQ(seen, (std::vector<Tag>{std::nullopt, "v1"}));
}

TEST_F(UpdateCheckerTest, ASuccessIsNotRepeated) {
    check();
    http.answer(0, release("v1"));
    check(3);
    queue.advance(24h);
    EXPECT_EQ(http.queries.size(), 1U);
}

TEST_F(UpdateCheckerTest, EachCheckBeforeTheAnswerAsksOnItsOwn) {
    check(3);
    EXPECT_EQ(http.queries.size(), 3U);
    EXPECT_EQ(http.pending(), 3U);
}

TEST_F(UpdateCheckerTest, TheLastSuccessDecidesWhicheverWasAskedFirst) {
    check(3);
    http.answer(2, release("v3"));
    EXPECT_EQ(checker->latest(), "v3");
    EXPECT_EQ(http.pending(), 2U);
    http.answer(0, release("v1"));
    EXPECT_EQ(checker->latest(), "v1");
    http.answer(1, broken);
    EXPECT_EQ(checker->latest(), "v1");
}

TEST_F(UpdateCheckerTest, AnAnswerThatIsEqualIsAnnouncedToo) {
    int changes = 0;
    const auto subscription = checker->onWillChange([&changes] { ++changes; });
    check(2);
    http.answer(0, release("v1"));
    http.answer(1, release("v1"));
    EXPECT_EQ(changes, 2);
}

TEST_F(UpdateCheckerTest, AFailureChangesNothingAndTheNextCheckAsksAgain) {
    int changes = 0;
    const auto subscription = checker->onWillChange([&changes] { ++changes; });
    check();
    http.answer(0, broken);
    queue.advance(24h);
    EXPECT_EQ(http.queries.size(), 1U);
    EXPECT_EQ(checker->latest(), std::nullopt);
    EXPECT_EQ(changes, 0);
    check();
    http.answer(1, release("v1"));
    EXPECT_EQ(checker->latest(), "v1");
}

TEST_F(UpdateCheckerTest, AnAnswerWithoutATagChangesNothing) {
    const std::vector<std::string> bodies = {"",
                                             "<html>Bad Gateway</html>",
                                             "[]",
                                             "{}",
                                             R"({"tag_name": 7})",
                                             R"([{"tag_name": "v1"}])",
                                             "{\"tag_name\": \"\xff\"}"};
    for (std::size_t index = 0; index < bodies.size(); ++index) {
        check();
        http.answer(index, bodies[index]);
        EXPECT_EQ(checker->latest(), std::nullopt) << bodies[index];
    }
    EXPECT_EQ(http.queries.size(), bodies.size());
}

TEST_F(UpdateCheckerTest, AFailureLeavesATagThatHasCome) {
    check(3);
    http.answer(0, release("v1"));
    http.answer(1, broken);
    http.answer(2, std::string("{}"));
    EXPECT_EQ(checker->latest(), "v1");
}

TEST_F(UpdateCheckerTest, AnAnswerOverTheLimitIsAFailure) {
    check();
    http.answer(0, release(std::string(1024 * 1024, '1')));
    EXPECT_EQ(checker->latest(), std::nullopt);
}

TEST_F(UpdateCheckerTest, SilenceIsGivenUpAfterTenSeconds) {
    check();
    queue.advance(9999ms);
    EXPECT_EQ(http.pending(), 1U);
    queue.advance(1ms);
    EXPECT_EQ(http.pending(), 0U);
    EXPECT_EQ(checker->latest(), std::nullopt);
    EXPECT_EQ(queue.pending(), 0U);
    check();
    EXPECT_EQ(http.pending(), 1U);
}

TEST_F(UpdateCheckerTest, AServiceThatIsNoAddressFailsQuietly) {
    for (const char* const service : {"", "/", "nonsense", "ftp://host"}) {
        UpdateChecker other(http, service);
        other.check();
        queue.advance(1h);
        EXPECT_EQ(other.latest(), std::nullopt);
        EXPECT_EQ(http.pending(), 0U);
    }
}

TEST_F(UpdateCheckerTest, AnObserverMayAskAgainWhileItIsTold) {
    int told = 0;
    const auto subscription = checker->onWillChange([this, &told] {
        if (++told == 1)
            check();
    });
    check();
    http.answer(0, release("v1"));
    EXPECT_EQ(checker->latest(), "v1");
    EXPECT_EQ(http.pending(), 1U);
    http.answer(1, release("v2"));
    EXPECT_EQ(checker->latest(), "v2");
}

// Counts the requests that somebody holds.
class CountingClient : public HttpClient {
public:
    explicit CountingClient(HttpClient& client) : client_(client) {}

    long held() const { return count_.use_count() - 1; }

    std::unique_ptr<HttpRequest> get(const HttpQuery& query, Completion completion) override {
        return std::make_unique<Held>(client_.get(query, std::move(completion)), count_);
    }

private:
    class Held : public HttpRequest {
    public:
        Held(std::unique_ptr<HttpRequest> request, std::shared_ptr<void> count)
            : request_(std::move(request)), count_(std::move(count)) {}

    private:
        const std::unique_ptr<HttpRequest> request_;
        const std::shared_ptr<void> count_;
    };

    HttpClient& client_;
    const std::shared_ptr<int> count_ = std::make_shared<int>();
};

TEST_F(UpdateCheckerTest, ARequestIsLetGoOfOnceAnswered) {
    CountingClient counting(http);
    UpdateChecker other(counting, "https://releases.example");
    other.check();
    other.check();
    other.check();
    EXPECT_EQ(counting.held(), 3);
    http.answer(1, broken);
    EXPECT_EQ(counting.held(), 2);
    http.answer(0, release("v1"));
    EXPECT_EQ(counting.held(), 1);
    EXPECT_EQ(http.pending(), 1U);
}

TEST_F(UpdateCheckerTest, DestroyingItCallsOffWhatIsUnderWay) {
    check(2);
    checker.reset();
    EXPECT_EQ(http.pending(), 0U);
    EXPECT_EQ(queue.pending(), 0U);
    http.answer(0, release("v1"));
    http.answer(1, broken);
}

TEST_F(UpdateCheckerTest, ANewCheckerKnowsNothingYet) {
    check();
    http.answer(0, release("v1"));
    const UpdateChecker other(http, "https://releases.example");
    EXPECT_EQ(other.latest(), std::nullopt);
}

}  // namespace
}  // namespace valdorn
