#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ui/Announcements.h"
#include "ui/Announcer.h"
#include "ui/onboarding/OnboardingStage.h"

namespace valdorn {
namespace {

using Said = std::vector<std::string>;

// What is said of the runner without being asked for.
class OnboardingNewsTest : public testing::Test {
protected:
    Said announced() {
        stage.world.queue.advance(Announcer::gathering);
        return announcements.take();
    }

    Announcements announcements;
    OnboardingStage stage;
};

TEST_F(OnboardingNewsTest, StatusIsSaidWithItsNoteWhenItChanges) {
    stage.show();
    EXPECT_EQ(announced(), Said{});
    stage.become(RunnerStatus::connected);
    EXPECT_EQ(announced(),
              Said{"Status: Connected — idle. Local network access is working — you're all set."});
    stage.runner().setConfig(stage.runner().config());
    stage.settle();
    EXPECT_EQ(announced(), Said{});
}

TEST_F(OnboardingNewsTest, ClosedWindowIsSilentAndHasNoOldNewsAfterwards) {
    stage.show();
    stage.close();
    stage.become(RunnerStatus::noNetwork);
    EXPECT_EQ(announced(), Said{});
    stage.show();
    EXPECT_EQ(announced(), Said{});
}

}  // namespace
}  // namespace valdorn
