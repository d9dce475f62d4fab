#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>

#include <gtest/gtest.h>

#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtWorkspace.h"

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

TEST(QtPasteboardTest, TextReplacesTheClipboard) {
    QtPasteboard pasteboard;
    pasteboard.setText("before");
    pasteboard.setText("chmod +x “act_runner” — ✓");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "chmod +x “act_runner” — ✓");
}

TEST(QtWorkspaceTest, FileIsOpenedByItsPathWhateverCharactersItHas) {
    Opener opener(QStringLiteral("file"));
    EXPECT_TRUE(QtWorkspace().openFile("/tmp/a b#c?d%20/Übersicht.log"));
    ASSERT_EQ(opener.opened.size(), 1);
    EXPECT_EQ(opener.opened[0].toLocalFile().toStdString(), "/tmp/a b#c?d%20/Übersicht.log");
}

TEST(QtWorkspaceTest, UrlIsHandedToTheProgramForItsScheme) {
    Opener opener(QStringLiteral("x-settings"));
    EXPECT_TRUE(QtWorkspace().openUrl("x-settings:privacy?Network"));
    ASSERT_EQ(opener.opened.size(), 1);
    EXPECT_EQ(opener.opened[0].toString().toStdString(), "x-settings:privacy?Network");
}

TEST(QtWorkspaceTest, TextThatIsNoUrlIsNotOpened) {
    EXPECT_FALSE(QtWorkspace().openUrl(""));
    EXPECT_FALSE(QtWorkspace().openUrl("/just/a/path"));
    EXPECT_FALSE(QtWorkspace().openUrl("http://[broken"));
}

}  // namespace
}  // namespace valdorn

#include "DesktopServicesTest.moc"
