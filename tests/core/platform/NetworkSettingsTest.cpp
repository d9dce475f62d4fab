#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/NetworkSettings.h"

namespace valdorn {
namespace {

using Lines = std::vector<std::string>;

Lines linesFor(const std::string& desktops) {
    Lines lines;
    for (const auto& [program, arguments] : NetworkSettings::commands(desktops)) {
        lines.push_back(program);
        for (const std::string& argument : arguments)
            lines.back() += " " + argument;
    }
    return lines;
}

// What is tried before the editors that run everywhere, which must follow.
Lines ownOf(const std::string& desktops) {
    const Lines everywhere{"nm-connection-editor", "cmst", "connman-gtk"};
    Lines lines = linesFor(desktops);
    for (auto line = everywhere.rbegin(); line != everywhere.rend(); ++line) {
        if (lines.empty() || lines.back() != *line)
            return {"not followed by " + *line};
        lines.pop_back();
    }
    return lines;
}

TEST(NetworkSettingsTest, CommandIsAnotherByItsProgramAndItsArguments) {
    const NetworkSettings::Command command{"a", {"b"}};
    EXPECT_NE(command, (NetworkSettings::Command{"c", {"b"}}));
    EXPECT_NE(command, (NetworkSettings::Command{"a", {"c"}}));
}

TEST(NetworkSettingsTest, EachDesktopsOwnProgramComesFirst) {
    const Lines gnome{"gnome-control-center network"};
    for (const char* const desktop : {"GNOME", "GNOME-Classic", "GNOME-Flashback", "ubuntu", "pop"})
        EXPECT_EQ(ownOf(desktop), gnome) << desktop;
    EXPECT_EQ(ownOf("Unity"),
              (Lines{"unity-control-center network", "gnome-control-center network"}));
    EXPECT_EQ(ownOf("Budgie"),
              (Lines{"budgie-control-center network", "gnome-control-center network"}));
    EXPECT_EQ(
        ownOf("KDE"),
        (Lines{"systemsettings kcm_networkmanagement", "systemsettings5 kcm_networkmanagement",
               "kcmshell6 kcm_networkmanagement", "kcmshell5 kcm_networkmanagement"}));
    for (const char* const desktop : {"X-Cinnamon", "Cinnamon"})
        EXPECT_EQ(ownOf(desktop), (Lines{"cinnamon-settings network"})) << desktop;
    EXPECT_EQ(ownOf("Pantheon"), (Lines{"io.elementary.settings settings://network",
                                        "io.elementary.switchboard settings://network"}));
}

TEST(NetworkSettingsTest, WithoutAControlCentreOfTheDesktopNoForeignOneIsTried) {
    for (const char* const desktop : {"", "XFCE", "LXQt", "LXDE", "MATE", "i3", "sway",
                                      "never heard of", "GNOMES", ":", " KDE"})
        EXPECT_EQ(ownOf(desktop), Lines{}) << desktop;
}

TEST(NetworkSettingsTest, CaseDoesNotCount) {
    EXPECT_EQ(linesFor("kDe"), linesFor("KDE"));
    EXPECT_EQ(linesFor("x-CINNAMON"), linesFor("X-Cinnamon"));
}

TEST(NetworkSettingsTest, DesktopsAreTriedInTheOrderOfTheList) {
    EXPECT_EQ(ownOf("X-Cinnamon:GNOME"),
              (Lines{"cinnamon-settings network", "gnome-control-center network"}));
    EXPECT_EQ(ownOf("GNOME:X-Cinnamon"),
              (Lines{"gnome-control-center network", "cinnamon-settings network"}));
    EXPECT_EQ(ownOf("::unheard:KDE:").size(), 4U);
}

TEST(NetworkSettingsTest, NothingIsTriedTwice) {
    EXPECT_EQ(ownOf("ubuntu:GNOME"), ownOf("GNOME"));
    EXPECT_EQ(ownOf("Unity:Unity7:ubuntu"), ownOf("Unity"));
    EXPECT_EQ(ownOf("GNOME:Budgie"),
              (Lines{"gnome-control-center network", "budgie-control-center network"}));
}

}  // namespace
}  // namespace valdorn
