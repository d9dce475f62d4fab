#include <QApplication>
#include <QMenu>
#include <QScrollBar>
#include <QStyleHints>
#include <QTest>

#include <gtest/gtest.h>

#include "support/RecordingPasteboard.h"
#include "support/VirtualMainQueue.h"
#include "ui/Pictures.h"
#include "ui/SystemPalette.h"
#include "ui/log/LogLines.h"
#include "ui/log/LogRowsView.h"

namespace valdorn {
namespace {

using std::chrono_literals::operator""ms;

class LogRowsViewTest : public testing::Test {
protected:
    LogRowsViewTest() {
        view.resize(400, 200);
        view.show();
        view.setFocus();
    }

    QScrollBar& bar() { return *view.verticalScrollBar(); }
    int rowHeight() const { return view.rows().wrap().rowHeight(); }

    // The middle of the caret at a position, in the viewport.
    QPoint at(std::size_t line, qsizetype position) const {
        return view.caretRect({line, position}).center();
    }
    void press(QPoint place, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mousePress(view.viewport(), Qt::LeftButton, modifiers, place);
    }
    void dragTo(QPoint place) { QTest::mouseMove(view.viewport(), place); }
    void release(QPoint place) { QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, place); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&view, key, modifiers);
    }
    std::string selected() const { return view.selection().text(view.rows()).toStdString(); }

    VirtualMainQueue queue;
    RecordingPasteboard pasteboard;
    LogRowsView view{queue, pasteboard};
};

TEST_F(LogRowsViewTest, ShortLogNeedsNoScrolling) {
    view.setLines(numberedLines(3));
    EXPECT_EQ(bar().maximum(), 0);
}

TEST_F(LogRowsViewTest, ScrollsUpToTheLastPixel) {
    view.setLines(numberedLines(100));
    EXPECT_EQ(bar().maximum(), view.rows().height() - view.viewport()->height());
    EXPECT_EQ(bar().pageStep(), view.viewport()->height());
    EXPECT_EQ(bar().singleStep(), rowHeight());
}

TEST_F(LogRowsViewTest, NewLinesLeaveTheScrollPositionWhereItIs) {
    view.setLines(numberedLines(100));
    bar().setValue(300);
    view.setLines(numberedLines(200));
    EXPECT_EQ(bar().value(), 300);
    view.setLines(numberedLines(1));
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(LogRowsViewTest, ScrollingToTheLastShowsItAtTheBottom) {
    view.setLines(numberedLines(100));
    view.scrollToLast();
    EXPECT_EQ(bar().value(), bar().maximum());
    EXPECT_EQ(view.caretRect(view.rows().end()).bottom() + LogRows::paddingPixels,
              view.viewport()->height() - 1);
}

TEST_F(LogRowsViewTest, NarrowerViewKeepsTheLineAtTheTop) {
    LogLines::List lines;
    for (int number = 0; number < 100; ++number)
        lines.push_back(logLine("0123456789 0123456789 0123456789 0123456789"));
    view.setLines(lines);
    bar().setValue(static_cast<int>(view.rows().top(40)));
    view.resize(150, 200);
    EXPECT_EQ(bar().value(), view.rows().top(40));
}

TEST_F(LogRowsViewTest, LowerViewKeepsTheEndAtTheBottom) {
    view.setLines(numberedLines(100));
    view.scrollToLast();
    view.resize(400, 120);
    EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(LogRowsViewTest, DraggingSelectsAcrossRows) {
    view.setLines(logLines({"first line", "second line", "third line"}));
    press(at(0, 6));
    dragTo(at(2, 5));
    EXPECT_EQ(selected(), "line\nsecond line\nthird");
    release(at(2, 5));
    EXPECT_EQ(selected(), "line\nsecond line\nthird");
    dragTo(at(0, 0));
    EXPECT_EQ(selected(), "line\nsecond line\nthird") << "the button is up";
}

TEST_F(LogRowsViewTest, ClickSelectsNothing) {
    view.setLines(logLines({"first line", "second line"}));
    view.selectAll();
    press(at(1, 3));
    release(at(1, 3));
    EXPECT_TRUE(view.selection().isEmpty());
    EXPECT_EQ(view.selection().caret(), (LogPosition{1, 3}));
    EXPECT_TRUE(pasteboard.selectedTexts.empty());
}

TEST_F(LogRowsViewTest, ClickWithShiftExtendsTheSelection) {
    view.setLines(logLines({"first line", "second line"}));
    press(at(0, 6));
    release(at(0, 6));
    press(at(1, 6), Qt::ShiftModifier);
    EXPECT_EQ(selected(), "line\nsecond");
}

TEST_F(LogRowsViewTest, DoubleClickSelectsAWordAndAThirdTheLine) {
    view.setLines(logLines({"first line", "second line"}));
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, at(1, 2));
    EXPECT_EQ(selected(), "second");
    press(at(1, 2));
    EXPECT_EQ(selected(), "second line");
}

TEST_F(LogRowsViewTest, DraggingAfterADoubleClickTakesWords) {
    view.setLines(logLines({"first line here", "second line"}));
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, at(0, 8));
    dragTo(at(0, 9));
    EXPECT_EQ(selected(), "line");
    dragTo(at(0, 13));
    EXPECT_EQ(selected(), "line here");
    dragTo(at(0, 2));
    EXPECT_EQ(selected(), "first line");
}

TEST_F(LogRowsViewTest, HandThatTremblesAfterATripleClickKeepsTheLine) {
    view.setLines(logLines({"first line here", "second line"}));
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, at(0, 8));
    press(at(0, 8));
    dragTo(at(0, 8) + QPoint(1, 1));
    EXPECT_EQ(selected(), "first line here");
    dragTo(at(1, 2));
    EXPECT_EQ(selected(), "first line here\nsecond line");
}

TEST_F(LogRowsViewTest, ThirdClickElsewhereIsAFirst) {
    view.setLines(logLines({"first line here", "second line"}));
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, at(0, 1));
    press(at(1, 8));
    EXPECT_EQ(selected(), "");
}

TEST_F(LogRowsViewTest, ThirdClickThatComesLateIsAFirst) {
    view.setLines(logLines({"first line", "second line"}));
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, at(1, 2));
    queue.advance(
        std::chrono::milliseconds(QGuiApplication::styleHints()->mouseDoubleClickInterval() + 1));
    press(at(1, 2));
    EXPECT_EQ(selected(), "");
}

TEST_F(LogRowsViewTest, OtherButtonsSelectNothing) {
    view.setLines(logLines({"first line"}));
    view.selectAll();
    QTest::mouseClick(view.viewport(), Qt::RightButton, {}, at(0, 3));
    EXPECT_EQ(selected(), "first line");
}

TEST_F(LogRowsViewTest, DraggingOutsideScrollsUntilTheButtonIsUp) {
    view.setLines(numberedLines(100));
    press(at(2, 0));
    dragTo(QPoint(20, 230));
    EXPECT_EQ(queue.armed(), 1U);
    const std::size_t lineBefore = view.selection().caret().line;
    queue.advance(500ms);
    EXPECT_GT(bar().value(), 100);
    EXPECT_GT(view.selection().caret().line, lineBefore + 5);
    const int reached = bar().value();
    dragTo(QPoint(20, 100));
    queue.advance(500ms);
    EXPECT_EQ(bar().value(), reached);
    dragTo(QPoint(20, -30));
    queue.advance(500ms);
    EXPECT_LT(bar().value(), reached);
    release(QPoint(20, -30));
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LogRowsViewTest, TremblingHandScrollsAsFast) {
    view.setLines(numberedLines(100));
    press(at(2, 0));
    for (int move = 0; move < 50; ++move) {
        dragTo(QPoint(20 + move, 230));
        queue.advance(10ms);
    }
    EXPECT_GT(bar().value(), 100);
    release(QPoint(20, 230));
}

TEST_F(LogRowsViewTest, DragEndsWithTheWindowOrTheFocus) {
    view.setLines(numberedLines(100));
    press(at(2, 0));
    dragTo(QPoint(20, 230));
    view.hide();
    EXPECT_EQ(queue.pending(), 0U);
    view.show();
    press(at(2, 0));
    dragTo(QPoint(20, 230));
    ASSERT_EQ(queue.pending(), 1U);
    QFocusEvent elsewhere(QEvent::FocusOut);
    QApplication::sendEvent(&view, &elsewhere);
    EXPECT_EQ(queue.pending(), 0U);
    release(QPoint(20, 100));
}

TEST_F(LogRowsViewTest, OtherFontOfTheDesktopIsTakenUp) {
    view.setLines(numberedLines(100));
    bar().setValue(static_cast<int>(view.rows().top(40)));
    Looks looks(Scheme::light);
    const int before = rowHeight();
    looks.change(Scheme::light, 20);
    EXPECT_GT(rowHeight(), before);
    EXPECT_EQ(bar().value(), view.rows().top(40));
    EXPECT_EQ(bar().singleStep(), rowHeight());
}

TEST_F(LogRowsViewTest, SelectedTextIsOfferedToAMiddleClick) {
    view.setLines(logLines({"first line", "second line"}));
    press(at(0, 6));
    dragTo(at(1, 6));
    release(at(1, 6));
    EXPECT_EQ(pasteboard.selectedTexts, std::vector<std::string>{"line\nsecond"});
    EXPECT_TRUE(pasteboard.texts.empty());
}

TEST_F(LogRowsViewTest, UsualKeysCopyAndSelectAll) {
    view.setLines(logLines({"first line", "second line"}));
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(pasteboard.texts.empty()) << "nothing is selected";
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(pasteboard.texts, std::vector<std::string>{"first line\nsecond line"});
}

TEST_F(LogRowsViewTest, KeysMoveTheCaretAndWithShiftSelect) {
    view.setLines(logLines({"first line", "second line", "third line"}));
    key(Qt::Key_Right);
    key(Qt::Key_Down, Qt::ShiftModifier);
    key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(selected(), "irst line\nse");
    key(Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(selected(), "irst line\nsecond");
    key(Qt::Key_End, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(selected(), "irst line\nsecond line\nthird line");
    key(Qt::Key_Home, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(selected(), "f");
    key(Qt::Key_End);
    EXPECT_EQ(view.selection().caret(), (LogPosition{0, 10}));
    EXPECT_TRUE(view.selection().isEmpty());
    key(Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(selected(), "first line");
    key(Qt::Key_Left);
    EXPECT_EQ(view.selection().caret(), (LogPosition{0, 0}));
}

TEST_F(LogRowsViewTest, MovingDownKeepsToItsColumnPastShortLines) {
    view.setLines(logLines({"first line", "x", "third line"}));
    view.select({0, 8}, {0, 8});
    key(Qt::Key_Down);
    EXPECT_EQ(view.selection().caret(), (LogPosition{1, 1}));
    key(Qt::Key_Down);
    EXPECT_EQ(view.selection().caret(), (LogPosition{2, 8}));
    key(Qt::Key_Home);
    key(Qt::Key_Up);
    EXPECT_EQ(view.selection().caret(), (LogPosition{1, 0}));
}

TEST_F(LogRowsViewTest, OtherPlaceForTheCaretIsAnotherColumn) {
    view.setLines(logLines({"first line", "x", "third line", "fourth line"}));
    view.select({0, 8}, {0, 8});
    key(Qt::Key_Down);
    press(at(2, 3));
    release(at(2, 3));
    key(Qt::Key_Down);
    EXPECT_EQ(view.selection().caret(), (LogPosition{3, 3}));
    view.select({0, 8}, {0, 8});
    key(Qt::Key_Down);
    view.select({2, 2}, {2, 2});
    key(Qt::Key_Down);
    EXPECT_EQ(view.selection().caret(), (LogPosition{3, 2}));
}

TEST_F(LogRowsViewTest, PageIsTheViewLessOneRow) {
    view.setLines(numberedLines(100));
    key(Qt::Key_PageDown);
    const int pitch = rowHeight() + LogRows::spacingPixels;
    EXPECT_EQ(view.selection().caret().line,
              static_cast<std::size_t>((view.viewport()->height() - rowHeight()) / pitch));
}

TEST_F(LogRowsViewTest, CaretThatWasLeftBehindComesToWhatIsRead) {
    view.setLines(numberedLines(100));
    view.scrollToLast();
    const int end = bar().value();
    key(Qt::Key_Up);
    EXPECT_GE(view.selection().caret().line, 95U);
    EXPECT_EQ(bar().value(), end);
    view.select({0, 0}, {0, 0});
    bar().setValue(300);
    key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_NEAR(bar().value(), 300, rowHeight());
    EXPECT_FALSE(view.selection().isEmpty());
}

TEST_F(LogRowsViewTest, CaretIsInViewWhenTheKeyboardComes) {
    view.setLines(numberedLines(100));
    view.scrollToLast();
    QFocusEvent tabbed(QEvent::FocusIn, Qt::TabFocusReason);
    QApplication::sendEvent(&view, &tabbed);
    EXPECT_GE(view.selection().caret().line, 95U);
    view.select({1, 0}, {1, 4});
    QApplication::sendEvent(&view, &tabbed);
    EXPECT_EQ(selected(), "line") << "a selection is not lost";
}

TEST_F(LogRowsViewTest, SelectionFollowsItsLinesWhenTheFirstAreDropped) {
    LogLines::List lines = numberedLines(5);
    view.setLines(lines);
    view.select({3, 0}, {3, 6});
    lines.erase(lines.begin(), lines.begin() + 2);
    view.setLines(lines);
    EXPECT_EQ(selected(), "line 3");
}

TEST_F(LogRowsViewTest, ViewThatFollowsKeepsTheEndWhenItBecomesTooLow) {
    view.setLines(numberedLines(10));
    ASSERT_EQ(bar().maximum(), 0);
    view.setKeepsEnd(true);
    view.resize(400, 100);
    ASSERT_GT(bar().maximum(), 0);
    EXPECT_EQ(bar().value(), bar().maximum());
    view.resize(400, 200);
    view.setKeepsEnd(false);
    view.resize(400, 100);
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(LogRowsViewTest, PlaceWithinALineStaysWhenTheViewIsResized) {
    view.setLines(numberedLines(100));
    bar().setValue(307);
    view.resize(390, 190);
    EXPECT_EQ(bar().value(), 307);
}

TEST_F(LogRowsViewTest, KeysForCopyingAreNotForTheWindow) {
    for (const Qt::Key each : {Qt::Key_C, Qt::Key_A}) {
        QKeyEvent asked(QEvent::ShortcutOverride, each, Qt::ControlModifier);
        asked.ignore();
        QApplication::sendEvent(&view, &asked);
        EXPECT_TRUE(asked.isAccepted());
    }
    QKeyEvent other(QEvent::ShortcutOverride, Qt::Key_F, Qt::ControlModifier);
    other.ignore();
    QApplication::sendEvent(&view, &other);
    EXPECT_FALSE(other.isAccepted());
}

TEST_F(LogRowsViewTest, TextFromTheRightBeginsAtTheLeft) {
    view.setLines(logLines({"\u05D0\u05D1\u05D2", "abc"}));
    const QImage image = view.viewport()->grab().toImage();
    const QRect row(0, view.caretRect({0, 0}).top(), image.width(), rowHeight());
    const QColor ground = view.palette().color(QPalette::Base);
    int drawnAtTheRight = 0;
    for (int y = row.top(); y <= row.bottom(); ++y) {
        for (int x = row.center().x(); x < row.right() - 2; ++x)
            drawnAtTheRight += image.pixelColor(x, y) == ground ? 0 : 1;
    }
    EXPECT_EQ(drawnAtTheRight, 0);
}

// Counts how often the view is painted.
class PaintCounter : public QObject {
public:
    int paints = 0;

    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

TEST_F(LogRowsViewTest, IsPaintedOnceForEachChange) {
    view.setLines(numberedLines(3));
    QCoreApplication::processEvents();
    PaintCounter counter;
    view.viewport()->installEventFilter(&counter);
    const auto paintsOf = [&counter](auto change) {
        counter.paints = 0;
        change();
        QCoreApplication::processEvents();
        return counter.paints;
    };
    EXPECT_EQ(paintsOf([] {}), 0);
    EXPECT_EQ(paintsOf([this] { view.setLines(numberedLines(4)); }), 1);
    EXPECT_EQ(paintsOf([this] { view.selectAll(); }), 1);
    EXPECT_EQ(paintsOf([this] { key(Qt::Key_Left); }), 1);
    EXPECT_EQ(paintsOf([this] { press(at(1, 2)); }), 1);
    EXPECT_EQ(paintsOf([this] { dragTo(at(2, 2)); }), 1);
    release(at(2, 2));
    EXPECT_GE(paintsOf([this] {
                  QFocusEvent gone(QEvent::FocusOut);
                  QApplication::sendEvent(&view, &gone);
              }),
              1);
}

TEST_F(LogRowsViewTest, CaretStaysInView) {
    view.setLines(numberedLines(100));
    key(Qt::Key_PageDown);
    EXPECT_GT(view.selection().caret().line, 5U);
    key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(bar().value(), bar().maximum());
    key(Qt::Key_Up);
    EXPECT_EQ(bar().value(), bar().maximum());
    key(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(bar().value(), 0);
    key(Qt::Key_PageUp);
    EXPECT_EQ(view.selection().caret(), (LogPosition{0, 0}));
}

TEST_F(LogRowsViewTest, EmptyLogTakesEveryKeyAndClick) {
    for (const Qt::Key each : {Qt::Key_Right, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_End})
        key(each, Qt::ShiftModifier);
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_C, Qt::ControlModifier);
    press(QPoint(10, 10));
    dragTo(QPoint(50, 300));
    release(QPoint(50, 300));
    EXPECT_TRUE(pasteboard.texts.empty());
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LogRowsViewTest, SelectionSurvivesNewLines) {
    LogLines::List lines = numberedLines(3);
    view.setLines(lines);
    view.select({0, 0}, {0, 6});
    lines.push_back(logLine("new"));
    view.setLines(lines);
    EXPECT_EQ(selected(), "line 0");
}

TEST_F(LogRowsViewTest, ContextMenuCopiesAndSelectsAll) {
    view.setLines(logLines({"first line", "second line"}));
    const auto openMenu = [this] {
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5),
                                view.viewport()->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(view.viewport(), &event);
        return view.findChildren<QMenu*>().last();
    };
    QMenu* menu = openMenu();
    ASSERT_EQ(menu->actions().size(), 2);
    EXPECT_TRUE(menu->testAttribute(Qt::WA_DeleteOnClose));
    EXPECT_FALSE(menu->actions().at(0)->isEnabled());
    menu->actions().at(1)->trigger();
    EXPECT_EQ(selected(), "first line\nsecond line");
    menu->close();
    menu = openMenu();
    menu->actions().at(0)->trigger();
    EXPECT_EQ(pasteboard.texts, std::vector<std::string>{"first line\nsecond line"});
    menu->close();
}

// The colours that are drawn in the row of a line, but for the ground's.
class LogRowsColorTest : public LogRowsViewTest {
protected:
    bool isDrawn(const QColor& color, std::size_t line) {
        const QImage image = view.viewport()->grab().toImage();
        const QRect row(0, view.caretRect({line, 0}).top(), image.width(), rowHeight());
        for (int y = row.top(); y <= row.bottom(); ++y) {
            for (int x = row.left(); x <= row.right(); ++x) {
                if (image.pixelColor(x, y) == color)
                    return true;
            }
        }
        return false;
    }
    QColor on(SystemColor color) const { return SystemPalette::textOnBase(color, view.palette()); }
};

// Characters that fill whole pixels.
const char blocks[] = "███";

TEST_F(LogRowsColorTest, LinesHaveTheColoursOfTheirLevels) {
    view.setLines({logLine(blocks), logLine(std::string("Error: ") + blocks),
                   logLine(std::string("level=warning ") + blocks)});
    view.clearFocus();
    EXPECT_TRUE(isDrawn(view.palette().color(QPalette::Text), 0));
    EXPECT_TRUE(isDrawn(on(SystemColor::red), 1));
    EXPECT_FALSE(isDrawn(view.palette().color(QPalette::Text), 1));
    EXPECT_TRUE(isDrawn(on(SystemColor::orange), 2));
    EXPECT_FALSE(isDrawn(on(SystemColor::red), 2));
}

TEST_F(LogRowsColorTest, ColoursCanBeReadOnTheGround) {
    for (const SystemColor color : {SystemColor::red, SystemColor::orange})
        EXPECT_GE(SystemPalette::contrast(on(color), view.palette().color(QPalette::Base)), 4.5);
}

TEST_F(LogRowsColorTest, SelectionIsDrawnUpToTheLineEndThatItHolds) {
    const QColor highlight = view.palette().color(QPalette::Highlight);
    view.setLines(logLines({"first", "", "third"}));
    EXPECT_FALSE(isDrawn(highlight, 0));
    view.select({0, 2}, {2, 0});
    EXPECT_TRUE(isDrawn(highlight, 0));
    EXPECT_TRUE(isDrawn(highlight, 1));
    EXPECT_FALSE(isDrawn(highlight, 2));
}

TEST_F(LogRowsColorTest, KeyboardIsSeen) {
    const QColor frame = view.palette().color(QPalette::Highlight);
    const auto corner = [this] { return view.viewport()->grab().toImage().pixelColor(0, 100); };
    QApplication::setActiveWindow(&view);
    view.setFocus();
    EXPECT_EQ(corner(), frame);
    view.setLines(logLines({blocks}));
    view.select({0, 3}, {0, 3});
    EXPECT_EQ(corner(), frame);
    const QRect caret = view.caretRect({0, 3});
    EXPECT_EQ(view.viewport()->grab().toImage().pixelColor(caret.center()),
              view.palette().color(QPalette::Text));
    view.clearFocus();
    EXPECT_NE(corner(), frame);
}

TEST_F(LogRowsColorTest, GroundIsTheOneOfText) {
    const QImage image = view.viewport()->grab().toImage();
    EXPECT_EQ(image.pixelColor(200, 100), view.palette().color(QPalette::Base));
}

TEST_F(LogRowsViewTest, PutsUpWithAnEndlessLine) {
    view.setLines({logLine(std::string(std::size_t{4} << 20, 'x')), logLine("last")});
    view.grab();
    view.scrollToLast();
    view.grab();
    key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(view.selection().caret(), (LogPosition{1, 4}));
}

}  // namespace
}  // namespace valdorn
