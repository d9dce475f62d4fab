#include <gtest/gtest.h>

#include "ui/Announcements.h"
#include "ui/Announcer.h"
#include "ui/settings/SettingsTest.h"

namespace valdorn {
namespace {

using Said = std::vector<std::string>;

const char refusal[] = "Error: runner registration token not found";

// What is said of a registration without being asked for.
class RegistrationNewsTest : public SettingsTest {
protected:
    void begin() {
        stage.type("token", QStringLiteral("token"));
        click("register");
    }
    Said announced() {
        stage.world.queue.advance(Announcer::gathering);
        return announcements.take();
    }

    Announcements announcements;
};

TEST_F(RegistrationNewsTest, ItsBeginningAndItsSuccessAreSaid) {
    show({"mini"});
    begin();
    EXPECT_EQ(announced(), Said{"Registering"});
    stage.world.launcher.duringRun = [this] { stage.world.markRegistered("r0"); };
    stage.finishRegistration();
    EXPECT_EQ(announced(), Said{"Registered ✓"});
}

TEST_F(RegistrationNewsTest, RefusalIsSaidEachTime) {
    show({"mini"});
    for (int time = 0; time < 2; ++time) {
        stage.world.toolFails(std::string(refusal) + "\n");
        begin();
        EXPECT_EQ(announced(), Said{"Registering"});
        stage.finishRegistration();
        EXPECT_EQ(announced(), Said{refusal});
    }
}

TEST_F(RegistrationNewsTest, QuickOutcomeTakesThePlaceOfTheBeginning) {
    show({"mini"});
    stage.world.toolFails(std::string(refusal) + "\n");
    begin();
    stage.finishRegistration();
    EXPECT_EQ(announced(), Said{refusal});
}

TEST_F(RegistrationNewsTest, NeitherTypingNorAnotherRunnerIsNews) {
    show({"mini", "spare"});
    stage.world.toolFails(std::string(refusal) + "\n");
    begin();
    stage.finishRegistration();
    announced();
    stage.type("name", QStringLiteral("x"));
    EXPECT_EQ(announced(), Said{});
    stage.clickRow(1);
    EXPECT_TRUE(isShown("message"));
    EXPECT_EQ(announced(), Said{});
}

TEST_F(RegistrationNewsTest, ClosedWindowIsSilent) {
    show({"mini"});
    stage.world.toolFails(std::string(refusal) + "\n");
    begin();
    stage.view->hide();
    stage.finishRegistration();
    EXPECT_EQ(announced(), Said{});
    stage.view->show();
    stage.settle();
    EXPECT_TRUE(isShown("message"));
    EXPECT_EQ(announced(), Said{});
}

}  // namespace
}  // namespace valdorn
