#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QUrl>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "contracts/PasteboardContract.h"
#include "contracts/WorkspaceContract.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtWorkspace.h"
#include "support/FixedHostInfo.h"
#include "support/TemporaryFolder.h"

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

}  // namespace
}  // namespace valdorn

#include "DesktopServicesTest.moc"
