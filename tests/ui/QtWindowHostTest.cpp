#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QTest>
#include <QWindow>
#include <cstdint>
#include <fstream>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "contracts/WindowHostContract.h"
#include "platform/MenuModel.h"
#include "platform/qt/QtWindowHost.h"
#include "ui/EventLoop.h"

namespace valdorn {
namespace {

// A view that says what its window went through.
class View : public QWidget {
public:
    QByteArray tokenWhenShown;

protected:
    void showEvent(QShowEvent*) override { tokenWhenShown = qgetenv("XDG_ACTIVATION_TOKEN"); }
};

QWidget* window(const char* name) {
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QLatin1String(name))
            return widget;
    }
    return nullptr;
}

// A host whose views are plain.
class RealWindowHost {
public:
    RealWindowHost() {
        for (const WindowKind kind :
             {WindowKind::settings, WindowKind::log, WindowKind::status, WindowKind::onboarding}) {
            host_.registerView(kind, [this, kind] {
                ++viewsMade_;
                return views_[kind] = new View;
            });
        }
    }

    WindowHost& host() { return host_; }
    int windowsMade() const { return viewsMade_; }
    bool isShown(WindowKind kind) const {
        return views_.count(kind) > 0 && views_.at(kind)->isVisible();
    }
    bool hasKeyboard(WindowKind kind) const {
        return runUntil([this, kind] { return views_.at(kind)->isActiveWindow(); });
    }
    WindowDescription look(WindowKind kind) const {
        const QWidget& view = *views_.at(kind);
        const QWidget& window = *view.window();
        return {kind, window.windowTitle().toStdString(), view.width(), view.height(),
                window.minimumSize() != window.maximumSize()};
    }
    void closeAsUser(WindowKind kind) { views_.at(kind)->window()->close(); }

private:
    int viewsMade_ = 0;
    std::map<WindowKind, QWidget*> views_;  // the last one made of each kind
    QtWindowHost host_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, WindowHostContract, RealWindowHost);

class QtWindowHostTest : public testing::Test {
protected:
    QtWindowHostTest() {
        for (const WindowKind kind : {WindowKind::settings, WindowKind::log, WindowKind::status})
            host.registerView(kind, [this] { return view = new View; });
    }

    QMenuBar* menuBar(const char* name) { return window(name)->findChild<QMenuBar*>(); }

    const WindowDescription settings{WindowKind::settings, "Valdorn", 480, 340, false};
    const WindowDescription log{WindowKind::log, "Valdorn — Log", 720, 460, true};
    const WindowDescription status{WindowKind::status, "Valdorn — Runner Status", 480, 260, true};

    std::string activated;
    MenuModel menu{
        {{"title", "Valdorn — CI Runner", false, false, false, 0, nullptr},
         {"quit", "Quit Valdorn", true, false, false, 'q', [this] { activated += "quit "; }}}};
    View* view = nullptr;  // the last one made
    QtWindowHost host;
};

TEST_F(QtWindowHostTest, MinimisedWindowIsBroughtBack) {
    host.show(log);
    window("logWindow")->showMinimized();
    host.show(log);
    EXPECT_FALSE(window("logWindow")->isMinimized());
    EXPECT_TRUE(window("logWindow")->isVisible());
}

TEST_F(QtWindowHostTest, MaximisedWindowStaysMaximised) {
    host.show(log);
    window("logWindow")->showMaximized();
    host.close(WindowKind::log);
    host.show(log);
    EXPECT_TRUE(window("logWindow")->isMaximized());
}

TEST_F(QtWindowHostTest, NewWindowStandsInTheMiddle) {
    host.show(log);
    const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
    const QRect frame = window("logWindow")->frameGeometry();
    EXPECT_TRUE(frame.contains(middle));
    EXPECT_NEAR(frame.center().x(), middle.x(), 10);
    EXPECT_NEAR(frame.center().y(), middle.y(), 40);  // a title bar is not known before the show
}

TEST_F(QtWindowHostTest, OnlyResizableWindowsCanBeResizedMinimisedAndMaximised) {
    host.show(settings);
    host.show(log);
    EXPECT_EQ(window("settingsWindow")->minimumSize(), window("settingsWindow")->maximumSize());
    EXPECT_FALSE(window("settingsWindow")->windowFlags() & Qt::WindowMinMaxButtonsHint);
    EXPECT_TRUE(window("settingsWindow")->windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_GT(window("logWindow")->maximumSize().width(), 5000);
    EXPECT_TRUE(window("logWindow")->windowFlags() & Qt::WindowMinMaxButtonsHint);
}

TEST_F(QtWindowHostTest, WindowGrowsWithAViewThatNeedsMore) {
    host.registerView(WindowKind::settings, [this] {
        view = new View;
        view->setMinimumSize(600, 500);
        return view;
    });
    host.show(settings);
    EXPECT_EQ(window("settingsWindow")->size(), QSize(600, 500));
    view->setMinimumSize(700, 100);
    EXPECT_TRUE(runUntil([] { return window("settingsWindow")->size() == QSize(700, 340); }));
    view->setMinimumSize(10, 10);
    EXPECT_TRUE(runUntil([] { return window("settingsWindow")->size() == QSize(480, 340); }));
}

TEST_F(QtWindowHostTest, UsersSizeOfAResizableWindowIsKept) {
    host.show(log);
    window("logWindow")->resize(900, 600);
    host.close(WindowKind::log);
    host.show(log);
    EXPECT_EQ(window("logWindow")->size(), QSize(900, 600));
}

TEST_F(QtWindowHostTest, ScreenReadersFindAWindowOfThatTitle) {
    host.show(log);
    auto* const seen = QAccessible::queryAccessibleInterface(window("logWindow"));
    EXPECT_EQ(seen->role(), QAccessible::Window);
    EXPECT_EQ(seen->text(QAccessible::Name), QStringLiteral("Valdorn — Log"));
}

TEST_F(QtWindowHostTest, ControlWCloses) {
    host.show(log);
    EXPECT_TRUE(runUntil([] { return window("logWindow")->isActiveWindow(); }));
    QTest::keyClick(window("logWindow"), Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window("logWindow")->isVisible());
}

TEST_F(QtWindowHostTest, EscapeDoesNotClose) {
    host.show(settings);
    EXPECT_TRUE(runUntil([] { return window("settingsWindow")->isActiveWindow(); }));
    QTest::keyClick(window("settingsWindow"), Qt::Key_Escape);
    EXPECT_TRUE(window("settingsWindow")->isVisible());
}

TEST_F(QtWindowHostTest, OfferedMenuStandsInTheStatusWindowOnly) {
    host.offerMenu(menu);
    host.show(settings);
    host.show(status);
    EXPECT_EQ(menuBar("settingsWindow"), nullptr);
    ASSERT_NE(menuBar("statusWindow"), nullptr);
    ASSERT_EQ(menuBar("statusWindow")->actions().size(), 1);
    const QAction* const entry = menuBar("statusWindow")->actions()[0];
    EXPECT_EQ(entry->text(), QStringLiteral("Valdorn"));
    EXPECT_EQ(entry->menu()->actions().size(), 2);
    EXPECT_EQ(view->size(), QSize(480, 260));
}

TEST_F(QtWindowHostTest, MenuComesAndGoesWhileTheWindowIsShown) {
    host.show(status);
    host.offerMenu(menu);
    host.offerMenu(menu);
    ASSERT_NE(menuBar("statusWindow"), nullptr);
    runReadyEvents();
    EXPECT_EQ(view->size(), QSize(480, 260));
    host.withdrawMenu();
    host.withdrawMenu();
    EXPECT_EQ(menuBar("statusWindow"), nullptr);
    runReadyEvents();
    EXPECT_EQ(view->size(), QSize(480, 260));
}

TEST_F(QtWindowHostTest, ShortcutsWorkOnlyWhileTheMenuIsOffered) {
    host.show(status);
    EXPECT_TRUE(runUntil([] { return window("statusWindow")->isActiveWindow(); }));
    QTest::keyClick(window("statusWindow"), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(activated, "");
    host.offerMenu(menu);
    QTest::keyClick(window("statusWindow"), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(activated, "quit ");
    host.withdrawMenu();
    QTest::keyClick(window("statusWindow"), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(activated, "quit ");
}

TEST_F(QtWindowHostTest, ActivationTokenIsGoodForOneWindow) {
    host.useActivationToken("leave-to-raise");
    host.show(log);
    EXPECT_EQ(view->tokenWhenShown, "leave-to-raise");
    EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), "");
    host.show(status);
    EXPECT_EQ(view->tokenWhenShown, "");
}

TEST_F(QtWindowHostTest, EmptyTokenTakesNothingAway) {
    host.useActivationToken("leave-to-raise");
    host.useActivationToken("");
    host.show(log);
    EXPECT_EQ(view->tokenWhenShown, "leave-to-raise");
}

// How often the application tells of one change of focus within the log's window.
int timesFocusIsTold() {
    int told = 0;
    QLineEdit field(window("logWindow"));
    field.show();
    const auto telling = QObject::connect(qGuiApp, &QGuiApplication::focusObjectChanged, qGuiApp,
                                          [&told] { ++told; });
    field.setFocus();
    QObject::disconnect(telling);
    return told;
}

TEST_F(QtWindowHostTest, AChangeOfFocusIsToldAsOftenAsBeforeTheWindowWasClosed) {
    host.show(log);
    ASSERT_TRUE(runUntil([] { return window("logWindow")->isActiveWindow(); }));
    const int told = timesFocusIsTold();
    EXPECT_GT(told, 0);
    for (int round = 0; round < 3; ++round) {
        host.close(WindowKind::log);
        runReadyEvents();
        host.show(log);
        ASSERT_TRUE(runUntil([] { return window("logWindow")->isActiveWindow(); }));
    }
    EXPECT_EQ(timesFocusIsTold(), told);
}

std::uint64_t residentBytes() {
    std::uint64_t size = 0;
    std::uint64_t resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// Takes memory, and leaves nearly all of it again: the last block holds the heap where it is.
std::vector<char> leaveGapOf(std::size_t bytes) {
    constexpr std::size_t blockBytes = 16384;  // too small for a mapping of its own
    std::vector<std::vector<char>> blocks;
    for (std::size_t taken = 0; taken < bytes; taken += blockBytes)
        blocks.emplace_back(blockBytes);
    return std::move(blocks.back());
}

TEST_F(QtWindowHostTest, AClosedWindowGivesGapsInMemoryBack) {
    if (!std::string_view(VALDORN_SANITIZE).empty())
        GTEST_SKIP() << "a sanitizer has a memory of its own, and keeps what is left for a while";
    constexpr std::uint64_t bytes = std::uint64_t{32} << 20;
    host.show(log);
    runReadyEvents();
    const std::vector<char> last = leaveGapOf(bytes);
    const std::uint64_t before = residentBytes();
    ASSERT_GT(before, bytes);
    host.close(WindowKind::log);
    runReadyEvents();
    EXPECT_LT(residentBytes(), before - bytes / 2);
}

// As when the desktop says late that a window has the focus, and it has been closed meanwhile.
class LateFocusTest : public QtWindowHostTest {
protected:
    LateFocusTest() {
        host.show(log);
        host.show(settings);
        EXPECT_TRUE(runUntil([] { return window("settingsWindow")->isActiveWindow(); }));
        window("logWindow")->activateWindow();
        EXPECT_TRUE(runUntil([] { return window("logWindow")->isActiveWindow(); }));
        window("settingsWindow")->activateWindow();
        host.close(WindowKind::settings);
        runReadyEvents();
        const QWindow* const focused = QGuiApplication::focusWindow();
        EXPECT_TRUE(focused && !focused->handle());
    }
};

TEST_F(LateFocusTest, NoActivationIsAskedForInItsName) {
    host.show(log);
    runReadyEvents();
    EXPECT_FALSE(window("logWindow")->isActiveWindow());
}

TEST_F(LateFocusTest, ATokenActivatesAllTheSame) {
    host.useActivationToken("leave-to-raise");
    host.show(log);
    EXPECT_TRUE(runUntil([] { return window("logWindow")->isActiveWindow(); }));
}

}  // namespace
}  // namespace valdorn
