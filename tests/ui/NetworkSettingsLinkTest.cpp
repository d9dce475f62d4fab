#include <QDir>
#include <QFile>
#include <QFileSystemWatcher>
#include <QString>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/qt/QtWorkspace.h"
#include "support/FixedHostInfo.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"
#include "ui/EventLoop.h"

namespace valdorn {
namespace {

// A desktop on which only the test's own programs are found.
class NetworkSettingsLinkTest : public testing::Test {
protected:
    NetworkSettingsLinkTest() {
        QDir().mkpath(inFolder("programs"));
        host.home = folder.path();
        setEnvironment("GNOME", folder / "programs");
    }

    void setEnvironment(const std::string& desktop, const std::string& path) {
        host.variables = {"XDG_CURRENT_DESKTOP=" + desktop, "PATH=" + path};
    }
    QString inFolder(const char* name) const { return QString::fromStdString(folder / name); }

    // A program that writes down its name, its arguments, where it runs and what it can read.
    void install(const std::string& name) {
        installScript(name, "printf '%s\\n' \"${0##*/}\" \"$@\" \"$(pwd -P)\" \"$(cat)\"");
    }
    // A program that writes down what the command prints.
    void installScript(const std::string& name, const std::string& command) {
        write(name, "#!/bin/sh\n" + command + " > '" + (folder / "draft") + "'\nmv '" +
                        (folder / "draft") + "' '" + (folder / "told") +
                        "'\necho unheard; echo unheard >&2\n");
    }
    void write(const std::string& name, const std::string& content,
               QFile::Permissions permissions = QFile::ReadOwner | QFile::ExeOwner) {
        QFile file(QString::fromStdString(folder / ("programs/" + name)));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content.c_str());
        ASSERT_TRUE(file.setPermissions(permissions));
    }

    bool open(const std::string& url = localNetworkSettings) const {
        return QtWorkspace(host).openUrl(url);
    }
    // What the program has written down, line by line.
    std::vector<std::string> told() {
        QFileSystemWatcher watcher({QString::fromStdString(folder.path())});
        EXPECT_TRUE(runUntil([this] { return QFile::exists(inFolder("told")); }));
        QFile file(inFolder("told"));
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        std::vector<std::string> lines;
        while (!file.atEnd())
            lines.push_back(file.readLine().trimmed().toStdString());
        file.remove();
        return lines;
    }
    using Lines = std::vector<std::string>;

    TemporaryFolder folder;
    FixedHostInfo host;
};

TEST_F(NetworkSettingsLinkTest, OpensTheDesktopsOwnPage) {
    install("gnome-control-center");
    install("nm-connection-editor");
    EXPECT_TRUE(open());
    EXPECT_EQ(told(), (Lines{"gnome-control-center", "network", folder.path(), ""}));
}

TEST_F(NetworkSettingsLinkTest, SchemeAloneCounts) {
    install("gnome-control-center");
    for (const char* const link :
         {"x-apple.systempreferences:", "X-Apple.SystemPreferences:anything?at#all"}) {
        EXPECT_TRUE(open(link)) << link;
        EXPECT_EQ(told().at(0), "gnome-control-center");
    }
    EXPECT_FALSE(open("x-apple.systempreferences"));
    EXPECT_FALSE(open("x-other:network"));
}

TEST_F(NetworkSettingsLinkTest, WhatCannotBeStartedIsPassedOver) {
    write("gnome-control-center", "", QFile::ReadOwner);
    install("cmst");
    EXPECT_TRUE(open());
    EXPECT_EQ(told().at(0), "cmst");
    // One that is found and yet cannot run.
    QFile::remove(inFolder("programs/gnome-control-center"));
    write("gnome-control-center", "#!/no/such/interpreter\n");
    EXPECT_TRUE(open());
    EXPECT_EQ(told().at(0), "cmst");
}

TEST_F(NetworkSettingsLinkTest, FoldersAreSearchedInOrderAndOnlyAbsoluteOnes) {
    install("gnome-control-center");
    setEnvironment("GNOME", "/no/such/folder::" + (folder / "programs"));
    EXPECT_TRUE(open());
    EXPECT_EQ(told().at(0), "gnome-control-center");
    setEnvironment("GNOME", QDir::current().relativeFilePath(inFolder("programs")).toStdString());
    EXPECT_FALSE(open());
}

TEST_F(NetworkSettingsLinkTest, WithoutAnyProgramNothingHappens) {
    install("kcmshell5");  // another desktop's
    EXPECT_FALSE(open());
    for (const std::string path : {"", ":", "/no/such/folder"}) {
        setEnvironment("GNOME", path);
        EXPECT_FALSE(open()) << path;
    }
    EXPECT_FALSE(QFile::exists(inFolder("told")));
}

TEST_F(NetworkSettingsLinkTest, OnlyTheGivenPathIsSearched) {
    install("gnome-control-center");
    const ScopedVariable ours("PATH", folder / "programs");
    setEnvironment("GNOME", "");
    EXPECT_FALSE(open());
}

TEST_F(NetworkSettingsLinkTest, TheProgramReadsAndPrintsNothingOfOurs) {
    installScript("gnome-control-center",
                  "all=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2); echo \"$all\"");
    EXPECT_TRUE(open());
    EXPECT_EQ(told(), (std::vector<std::string>(3, "/dev/null")));
}

TEST_F(NetworkSettingsLinkTest, TheProgramIsNoChildOfOurs) {
    installScript("gnome-control-center", "echo $PPID");
    EXPECT_TRUE(open());
    EXPECT_NE(told(), std::vector<std::string>{std::to_string(getpid())});
}

}  // namespace
}  // namespace valdorn
