#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileSystemWatcher>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QUrl>
#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "contracts/PasteboardContract.h"
#include "contracts/WorkspaceContract.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtWorkspace.h"
#include "support/FixedHostInfo.h"
#include "support/TemporaryFolder.h"
#include "ui/EventLoop.h"
#include "ui/onboarding/OnboardingView.h"

namespace valdorn {
namespace {

// Plays the desktop's default program for one scheme.
class Opener : public QObject {
    Q_OBJECT

public:
    explicit Opener(const QString& scheme) : scheme_(scheme) {
        QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~Opener() override { QDesktopServices::unsetUrlHandler(scheme_); }
    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl& url) { opened.append(url); }

private:
    const QString scheme_;
};

class RealPasteboard {
public:
    Pasteboard& pasteboard() { return pasteboard_; }
    std::string content() const { return QGuiApplication::clipboard()->text().toStdString(); }

private:
    QtPasteboard pasteboard_;
};

class RealWorkspace {
public:
    Workspace& workspace() { return workspace_; }
    void removePrograms() {
        files_.reset();
        settings_.reset();
    }
    std::vector<std::string> filesOpened() const {
        std::vector<std::string> paths;
        for (const QUrl& url : files_->opened)
            paths.push_back(url.toLocalFile().toStdString());
        return paths;
    }
    std::vector<std::string> urlsOpened() const {
        std::vector<std::string> urls;
        for (const QUrl& url : settings_->opened)
            urls.push_back(url.toString(QUrl::FullyEncoded).toStdString());
        return urls;
    }

private:
    QtWorkspace workspace_{FixedHostInfo()};
    std::unique_ptr<Opener> files_ = std::make_unique<Opener>(QStringLiteral("file"));
    std::unique_ptr<Opener> settings_ = std::make_unique<Opener>(QStringLiteral("x-settings"));
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, PasteboardContract, RealPasteboard);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, WorkspaceContract, RealWorkspace);

TEST(QtPasteboardTest, TextReplacesAPictureToo) {
    QGuiApplication::clipboard()->setImage(QImage(1, 1, QImage::Format_ARGB32));
    QtPasteboard().setText("text");
    EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasImage());
}

TEST(QtWorkspaceTest, TextThatIsNoUrlIsNotOpened) {
    EXPECT_FALSE(QtWorkspace(FixedHostInfo()).openUrl("http://[broken"));
}

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
        write(name,
              "#!/bin/sh\n"
              "printf '%s\\n' \"${0##*/}\" \"$@\" \"$(pwd -P)\" \"$(cat)\" > '" +
                  (folder / "draft") + "'\nmv '" + (folder / "draft") + "' '" + (folder / "told") +
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

TEST_F(NetworkSettingsLinkTest, TheProgramIsNoChildOfOurs) {
    install("gnome-control-center");
    EXPECT_TRUE(open());
    told();
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace valdorn

#include "DesktopServicesTest.moc"
