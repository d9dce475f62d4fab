#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/settings/SettingsStage.h"
#include "ui/settings/ValdornSettingsView.h"

namespace valdorn {
namespace {

// The scheme of each picture, by the end of its name.
class SettingsPicturesTest : public testing::TestWithParam<Scheme> {
protected:
    void expectPicture(const std::string& name, double scale = 1) {
        Pictures::expectLikeReference(Pictures::render(*stage.view, scale),
                                      name + suffixOf(GetParam()));
    }

    const Looks looks{GetParam(), 9};
    SettingsStage stage;
};

INSTANTIATE_TEST_SUITE_P(Schemes, SettingsPicturesTest,
                         testing::Values(Scheme::light, Scheme::dark), [](const auto& scheme) {
                             return scheme.param == Scheme::light ? "Light" : "Dark";
                         });

TEST_P(SettingsPicturesTest, FirstStart) {
    stage.makeFleet({"mac-mini"});
    stage.edit(0, &RunnerConfig::instanceURL, "");
    stage.edit(0, &RunnerConfig::labels, "");
    stage.show();
    expectPicture("settings_first");
}

TEST_P(SettingsPicturesTest, RegistrationUnderWay) {
    stage.makeFleet({"mac-mini", "build-server"});
    stage.world.markRegistered("r1");
    stage.show();
    stage.clickRow(1);
    stage.type("token", QStringLiteral("a token of some length"));
    stage.registration->doRegister(stage.store->runners()[1]);
    stage.settle();
    expectPicture("settings_busy");
}

TEST_P(SettingsPicturesTest, Registered) {
    stage.makeFleet({"mac-mini", "build-server"});
    stage.world.launcher.duringRun = [this] { stage.world.markRegistered("r0"); };
    stage.show();
    stage.registerFirst("token");
    expectPicture("settings_registered");
}

TEST_P(SettingsPicturesTest, RefusedOnASharpScreen) {
    stage.makeFleet({"mac-mini", "build-server with a name that is longer than the list is wide"});
    stage.world.toolFails(
        "Error: failed to register runner: unauthenticated: runner registration token not found\n");
    stage.show();
    stage.registerFirst("wrong");
    expectPicture("settings_refused_2x", 2);
}

TEST_P(SettingsPicturesTest, TwelveRunners) {
    stage.makeFleet({"mac-mini", "build-server", "nightly", "linux-arm64", "linux-x86_64",
                     "windows-vm", "", "release-signing", "docs", "benchmarks", "flaky-hunter",
                     "the last one, with a long name"});
    stage.show();
    stage.clickRow(6);
    expectPicture("settings_twelve");
}

// The window on other desktops, after a registration that was refused.
class SettingsLooksTest : public testing::Test {
protected:
    void expectPicture(Scheme scheme, const std::string& name, double bodyPoints = 9) {
        const Looks looks(scheme, bodyPoints);
        SettingsStage stage;
        stage.makeFleet({"mac-mini", "build-server with a long name", "nightly (arm64)"});
        stage.world.toolFails(
            "Error: failed to register runner: unauthenticated: runner registration token not "
            "found.\n");
        stage.show();
        stage.registerFirst("wrong");
        stage.view->resize(stage.view->minimumSizeHint());  // as its window does
        Pictures::expectLikeReference(Pictures::render(*stage.view), name + suffixOf(scheme));
    }
};

TEST_F(SettingsLooksTest, LargeText) {
    expectPicture(Scheme::light, "settings_large", 13.5);
}

TEST_F(SettingsLooksTest, TextOfTwiceTheSize) {
    expectPicture(Scheme::light, "settings_huge", 18);
}

TEST_F(SettingsLooksTest, HighContrast) {
    for (const Scheme scheme : {Scheme::blackOnWhite, Scheme::whiteOnBlack})
        expectPicture(scheme, "settings_refused");
}

TEST_F(SettingsLooksTest, RightToLeft) {
    const RightToLeft mirrored;
    expectPicture(Scheme::light, "settings_mirrored");
}

}  // namespace
}  // namespace valdorn
