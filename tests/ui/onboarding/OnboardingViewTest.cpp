#include <QAccessible>
#include <QTest>
#include <QUrl>
#include <vector>

#include <gtest/gtest.h>

#include "ui/EventCounter.h"
#include "ui/Pictures.h"
#include "ui/StatusDot.h"
#include "ui/SystemPalette.h"
#include "ui/onboarding/OnboardingStage.h"
#include "ui/onboarding/OnboardingView.h"

namespace valdorn {
namespace {

constexpr char allSet[] = "Local network access is working — you're all set.";
constexpr char refused[] =
    "The runner can't reach Gitea over the local network. If you dismissed the “find devices on "
    "your local network” prompt, re-enable Valdorn in Local Network settings.";
constexpr char firstConnect[] =
    "On first connect, macOS asks to let Valdorn find devices on your local network — choose "
    "Allow.";

struct StatusRow {
    RunnerStatus status;
    const char* title;
    SystemColor color;
    const char* note;
};

constexpr StatusRow statusRows[] = {
    {RunnerStatus::notRegistered, "Not registered", SystemColor::secondary, firstConnect},
    {RunnerStatus::stopped, "Stopped", SystemColor::secondary, firstConnect},
    {RunnerStatus::starting, "Starting…", SystemColor::yellow, firstConnect},
    {RunnerStatus::noNetwork, "No local-network access", SystemColor::red, refused},
    {RunnerStatus::connected, "Connected — idle", SystemColor::green, allSet},
    {RunnerStatus::building, "Building a job", SystemColor::blue, allSet},
};

class OnboardingViewTest : public testing::Test {
protected:
    static QString nameOf(QWidget* widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    }

    const Looks looks{Scheme::light, 9};
    OnboardingStage stage;
};

TEST_F(OnboardingViewTest, EachStatusHasItsWordsItsColourAndItsNote) {
    for (const StatusRow& row : statusRows) {
        OnboardingStage each;
        each.show();
        each.become(row.status);
        auto* const dot = each.part<StatusDot>("statusDot");
        EXPECT_EQ(each.text("status"), std::string("Status: ") + row.title);
        EXPECT_EQ(each.text("note"), row.note);
        EXPECT_EQ(Pictures::render(*dot).pixelColor(5, 5),
                  SystemPalette::dot(row.color, each.window->palette()))
            << row.title;
        EXPECT_EQ(dot->accessibleName().toStdString(), row.title);
        EXPECT_EQ(dot->size(), QSize(10, 10));
    }
}

TEST_F(OnboardingViewTest, ShowsWhatTheRunnerIsWhenTheWindowIsMade) {
    stage.become(RunnerStatus::connected);
    stage.show();
    EXPECT_EQ(stage.text("status"), "Status: Connected — idle");
    EXPECT_EQ(stage.text("note"), allSet);
}

TEST_F(OnboardingViewTest, SaysWhyRunnersAreChildrenOfThisProgram) {
    stage.show();
    EXPECT_EQ(stage.text("title"), "Welcome to Valdorn");
    EXPECT_EQ(stage.text("explanation"),
              "Valdorn runs a Gitea CI runner as a child process, so it inherits this app's macOS "
              "Local Network permission. That's the workaround for Sequoia's Local Network "
              "Privacy: a launchd-spawned runner can't get the grant, but a signed app — and its "
              "children — can.");
    EXPECT_EQ(stage.title("openNetworkSettings"), "Open Local Network Settings…");
    EXPECT_EQ(stage.title("continue"), "Continue");
}

TEST_F(OnboardingViewTest, SecondButtonIsNamedWithTheNextChangeOfTheRunner) {
    stage.unregister("r0");
    stage.show();
    EXPECT_EQ(stage.title("runnerSettings"), "Register a Runner…");
    stage.world.markRegistered("r0");
    stage.close();
    stage.show();
    EXPECT_EQ(stage.title("runnerSettings"), "Register a Runner…");
    stage.become(RunnerStatus::starting);
    EXPECT_EQ(stage.title("runnerSettings"), "Runner Settings…");
}

TEST_F(OnboardingViewTest, SecondButtonIsAboutTheFleetsFirstRunnerWhicheverThatIs) {
    stage.show();
    EXPECT_EQ(stage.title("runnerSettings"), "Runner Settings…");
    const auto observed = stage.store->runners().front();
    stage.store->remove(observed);  // the other one is not registered
    stage.settle();
    observed->setConfig(FakeWorld::record("r0"));
    stage.settle();
    EXPECT_EQ(stage.title("runnerSettings"), "Register a Runner…");
    EXPECT_EQ(stage.text("status"), "Status: Stopped");
}

TEST_F(OnboardingViewTest, OtherRunnersAreOfNoConcern) {
    stage.unregister("r0");
    stage.show();
    stage.world.markRegistered("r0");
    stage.world.markRegistered("r1");
    stage.store->runners().back()->start();
    stage.settle();
    EXPECT_EQ(stage.text("status"), "Status: Stopped");
    EXPECT_EQ(stage.title("runnerSettings"), "Register a Runner…");
}

TEST_F(OnboardingViewTest, FollowsTheRunnerWhileTheWindowIsClosed) {
    stage.show();
    stage.close();
    stage.become(RunnerStatus::noNetwork);
    EXPECT_EQ(stage.text("status"), "Status: No local-network access");
}

TEST_F(OnboardingViewTest, EachButtonDoesOneThing) {
    stage.show();
    stage.button("openNetworkSettings")->click();
    EXPECT_EQ(stage.workspace.urlsOpened, std::vector<std::string>{localNetworkSettings});
    stage.button("runnerSettings")->click();
    EXPECT_EQ(stage.registrations, 1);
    EXPECT_EQ(stage.closings, 0);
    stage.button("continue")->click();
    EXPECT_EQ(stage.closings, 1);
    EXPECT_EQ(stage.registrations, 1);
    EXPECT_EQ(stage.workspace.urlsOpened.size(), 1U);
    EXPECT_TRUE(stage.window->isVisible());
}

TEST_F(OnboardingViewTest, SystemThatCannotOpenItsSettingsChangesNothing) {
    stage.workspace.answer = false;
    stage.show();
    stage.button("openNetworkSettings")->click();
    EXPECT_TRUE(stage.window->isVisible());
}

TEST_F(OnboardingViewTest, LinkToTheSystemsSettingsIsAUrl) {
    EXPECT_STREQ(localNetworkSettings,
                 "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension"
                 "?Privacy_LocalNetwork");
    EXPECT_TRUE(QUrl(QString::fromLatin1(localNetworkSettings), QUrl::StrictMode).isValid());
}

TEST_F(OnboardingViewTest, EmptyFleetIsAMistakeOfOurs) {
    stage.show();
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // other tests may have left threads
    const auto observed = stage.store->runners().front();
    stage.store->remove(stage.store->runners().back());
    EXPECT_EXIT(
        {
            stage.store->remove(observed);
            observed->setConfig(FakeWorld::record("r0"));
            stage.settle();
        },
        testing::KilledBySignal(SIGABRT), "");
}

// Qt announces a label's new text as its new name, unless it has a name of its own.
TEST_F(OnboardingViewTest, AScreenReaderIsToldHowTheRunnerFares) {
    stage.show();
    stage.become(RunnerStatus::connected);
    EXPECT_EQ(stage.view->accessibleDescription().toStdString(),
              std::string("Status: Connected — idle. ") + allSet);
    stage.become(RunnerStatus::noNetwork);
    EXPECT_EQ(stage.view->accessibleDescription().toStdString(),
              std::string("Status: No local-network access. ") + refused);
    EXPECT_TRUE(stage.part<QLabel>("status")->accessibleName().isEmpty());
    EXPECT_TRUE(stage.part<QLabel>("note")->accessibleName().isEmpty());
}

TEST_F(OnboardingViewTest, ChangeThatIsNotShownPaintsNothing) {
    stage.show();
    stage.become(RunnerStatus::connected);
    QTest::qWait(0);
    EventCounter paints(QEvent::Paint);
    for (QWidget* const part : stage.view->findChildren<QWidget*>())
        part->installEventFilter(&paints);
    stage.runner().setConfig(FakeWorld::record("r0"));
    stage.settle();
    QTest::qWait(0);
    EXPECT_TRUE(paints.counts.empty());
    stage.become(RunnerStatus::building);  // the note stays
    QTest::qWait(0);
    EXPECT_GT(paints.counts[stage.part<QLabel>("status")], 0);
    EXPECT_EQ(paints.counts[stage.part<QLabel>("note")], 0);
}

TEST_F(OnboardingViewTest, AScreenReaderFindsEachPartByItsWords) {
    stage.show();
    EXPECT_EQ(QAccessible::queryAccessibleInterface(stage.part<QLabel>("title"))->role(),
              QAccessible::Heading);
    EXPECT_EQ(nameOf(stage.view), QStringLiteral("Welcome to Valdorn"));
    for (const char* const label : {"title", "explanation", "status", "note"})
        EXPECT_EQ(nameOf(stage.part<QLabel>(label)).toStdString(), stage.text(label));
    for (const char* const name : {"openNetworkSettings", "runnerSettings", "continue"})
        EXPECT_EQ(nameOf(stage.button(name)).toStdString(), stage.title(name));
    EXPECT_EQ(nameOf(stage.part<StatusDot>("statusDot")), QStringLiteral("Stopped"));
}

}  // namespace
}  // namespace valdorn
