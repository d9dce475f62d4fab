#include <cerrno>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "failures/Journey.h"
#include "failures/calls/FailingCalls.h"

namespace valdorn {

// For the test's own output: gtest looks for it where the type is.
namespace failing {
void PrintTo(Call call, std::ostream* stream);
void PrintTo(Call call, std::ostream* stream) {
    *stream << kindOf(call).name;
}
}  // namespace failing

namespace {

using failing::Call;
using failing::Failure;
using failing::Fault;
using failing::Manner;

bool isEverythingAskedFor() {
    return std::getenv("VALDORN_EVERY_FAILURE") != nullptr;
}

// What happens when nothing fails. One per process.
const Story& reference() {
    static const Story story = Journey({}).tell();
    return story;
}

std::string text(const Fault& fault) {
    const char* const manners[] = {"refused", "done and refused", "shortened", "cut"};
    return std::string(failing::kindOf(fault.call).name) + " " + std::to_string(fault.nth) + " " +
           manners[static_cast<int>(fault.failure.manner)] + " with errno " +
           std::to_string(fault.failure.error);
}

std::string text(const std::vector<Fault>& faults) {
    std::string all;
    for (const Fault& fault : faults)
        all += text(fault) + "; ";
    return all;
}

testing::AssertionResult isSame(const Chapter& seen, const Chapter& expected) {
    if (seen.facts == expected.facts)
        return testing::AssertionSuccess();
    auto failure = testing::AssertionFailure() << "in the chapter \"" << seen.name << "\":";
    for (const std::string& fact : seen.facts)
        failure << "\n  " << fact;
    failure << "\ninstead of";
    for (const std::string& fact : expected.facts)
        failure << "\n  " << fact;
    return failure;
}

// What has failed shows in its own chapter at most, and nowhere if it is transparent.
void compare(const Story& story, bool isTransparent) {
    for (const std::string& wrong : story.wrongs)
        ADD_FAILURE() << wrong;
    const auto& expected = reference().chapters;
    if (isTransparent) {
        ASSERT_EQ(story.chapters.size(), expected.size());
    }
    bool hadFailed = false;
    for (std::size_t at = 0; at < story.chapters.size(); ++at) {
        const Chapter& chapter = story.chapters[at];
        if (isTransparent || hadFailed || !chapter.hasFailed) {
            EXPECT_TRUE(isSame(chapter, expected[at]));
        }
        hadFailed = chapter.hasFailed;
    }
}

// What has to fail as well, for this call to be made at all.
std::optional<Fault> companionOf(Call call) {
    switch (call) {
        case Call::unlink:
            return Fault{Call::rename, 1, {Manner::refuse, EIO, false}};
        case Call::waitpid:
            return Fault{Call::childExecute, 1, {Manner::refuse, ENOENT, false}};
        case Call::kill:
            // The reader's mailbox is the first that it watches, then a daemon's process and its
            // pipe: that daemon runs already.
            return Fault{Call::epollControl, 3, {Manner::refuse, ENOMEM, false}};
        default:
            return std::nullopt;
    }
}

class SweepTest : public testing::TestWithParam<Call> {
protected:
    // False when the call was not made so often that the fault could come.
    static bool survives(const Fault& fault) {
        const auto companion = companionOf(fault.call);
        std::vector<Fault> faults{fault};
        if (companion)
            faults.push_back(*companion);
        SCOPED_TRACE(text(faults));
        const Story story = Journey(faults).tell();
        compare(story, fault.failure.isTransparent && !companion);
        return story.hasFailed;
    }

    static void failAtEachPlace(const std::vector<Failure>& failures) {
        bool isReached = true;
        for (unsigned nth = 1; isReached; ++nth) {
            isReached = false;
            for (std::size_t at = 0; at < failures.size(); ++at) {
                if (isEverythingAskedFor() || at == nth % failures.size())
                    isReached = survives({GetParam(), nth, failures[at]}) || isReached;
            }
        }
    }
};

// One failure at each place. What can be refused there comes by turns, or all of it when asked for;
// a signal comes at every other call, so that each place meets it and may try once more.
TEST_P(SweepTest, LeavesNothingWrong) {
    std::vector<Failure> refusals;
    for (const Failure* one = failing::kindOf(GetParam()).failures; one->error >= 0; ++one) {
        if (one->manner == Manner::shorten)
            failAtEachPlace({*one});
        else if (one->error == EINTR && !isEverythingAskedFor())
            survives({GetParam(), 1, *one, true});
        else
            refusals.push_back(*one);
    }
    if (!refusals.empty())
        failAtEachPlace(refusals);
}

std::string nameOf(const testing::TestParamInfo<Call>& info) {
    return failing::kindOf(info.param).name;
}

std::vector<Call> allCalls() {
    std::vector<Call> calls;
    for (std::size_t at = 0; at < failing::callCount; ++at)
        calls.push_back(static_cast<Call>(at));
    return calls;
}

INSTANTIATE_TEST_SUITE_P(EachCall, SweepTest, testing::ValuesIn(allCalls()), nameOf);

TEST(JourneyTest, ComesToItsEndWhenNothingFails) {
    const Story story = Journey({}).tell();
    for (const std::string& wrong : story.wrongs)
        ADD_FAILURE() << wrong;
    compare(story, true);
}

TEST(JourneyTest, MakesEachCall) {
    Journey({}).tell();
    std::vector<Call> others;
    for (const Call call : allCalls()) {
        if (companionOf(call))
            others.push_back(call);
        else
            EXPECT_GT(failing::timesMade(call), 0u) << failing::kindOf(call).name;
    }
    for (const Call call : others) {
        Journey({*companionOf(call)}).tell();
        EXPECT_GT(failing::timesMade(call), 0u) << failing::kindOf(call).name;
    }
}

}  // namespace
}  // namespace valdorn
