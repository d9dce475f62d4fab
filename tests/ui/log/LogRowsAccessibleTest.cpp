#include <QAccessible>

#include <gtest/gtest.h>

#include "support/RecordingPasteboard.h"
#include "support/VirtualMainQueue.h"
#include "ui/log/LogLines.h"
#include "ui/log/LogRowsAccessible.h"
#include "ui/log/LogRowsView.h"

namespace valdorn {
namespace {

class LogRowsAccessibleTest : public testing::Test {
protected:
    void SetUp() override {
        view.resize(400, 200);
        view.show();
        view.setLines(logLines({"one", "", "thrée"}));
        ASSERT_TRUE(text_);
    }

    QAccessibleInterface& accessible() { return *QAccessible::queryAccessibleInterface(&view); }
    QAccessibleTextInterface& text() { return *text_; }

    VirtualMainQueue queue;
    RecordingPasteboard pasteboard;
    LogRowsView view{queue, pasteboard};

private:
    QAccessibleTextInterface* const text_ = accessible().textInterface();
};

TEST_F(LogRowsAccessibleTest, IsAReadOnlyTextOfManyLines) {
    EXPECT_EQ(accessible().role(), QAccessible::EditableText);
    EXPECT_TRUE(accessible().state().readOnly);
    EXPECT_TRUE(accessible().state().multiLine);
    EXPECT_TRUE(accessible().state().selectableText);
    EXPECT_FALSE(accessible().state().editable);
}

TEST_F(LogRowsAccessibleTest, TextIsAllLines) {
    EXPECT_EQ(text().characterCount(), 10);
    EXPECT_EQ(text().text(0, 10), QStringLiteral("one\n\nthrée"));
    EXPECT_EQ(text().text(2, 7), QStringLiteral("e\n\nth"));
    EXPECT_EQ(text().text(-5, 99), QStringLiteral("one\n\nthrée"));
    EXPECT_EQ(text().text(4, 4), QString());
}

TEST_F(LogRowsAccessibleTest, TextFollowsTheLines) {
    EXPECT_EQ(text().characterCount(), 10);
    view.setLines(logLines({"other"}));
    EXPECT_EQ(text().text(0, text().characterCount()), QStringLiteral("other"));
    view.setLines({});
    EXPECT_EQ(text().characterCount(), 0);
    EXPECT_EQ(text().text(0, 5), QString());
    EXPECT_EQ(text().cursorPosition(), 0);
}

TEST_F(LogRowsAccessibleTest, CaretAndSelectionAreThoseOfTheView) {
    view.select({0, 1}, {2, 2});
    EXPECT_EQ(text().cursorPosition(), 7);
    ASSERT_EQ(text().selectionCount(), 1);
    int start = 0;
    int end = 0;
    text().selection(0, &start, &end);
    EXPECT_EQ(start, 1);
    EXPECT_EQ(end, 7);
    text().removeSelection(0);
    EXPECT_EQ(text().selectionCount(), 0);
    text().addSelection(4, 10);
    EXPECT_EQ(view.selection().first(), (LogPosition{1, 0}));
    EXPECT_EQ(view.selection().last(), (LogPosition{2, 5}));
    text().setCursorPosition(3);
    EXPECT_EQ(view.selection().caret(), (LogPosition{0, 3}));
    EXPECT_TRUE(view.selection().isEmpty());
}

TEST_F(LogRowsAccessibleTest, CharactersAreFoundOnTheScreen) {
    for (const int offset : {0, 2, 5, 9}) {
        const QRect place = text().characterRect(offset);
        EXPECT_EQ(text().offsetAtPoint(place.topLeft() + QPoint(1, 3)), offset);
        EXPECT_GT(place.width(), 2) << offset;
    }
}

TEST_F(LogRowsAccessibleTest, ScrollsToWhatIsRead) {
    view.setLines(numberedLines(100));
    const int last = text().characterCount();
    text().scrollToSubstring(last - 1, last);
    EXPECT_GE(view.caretRect(view.rows().end()).top(), 0);
    EXPECT_LT(view.caretRect(view.rows().end()).top(), 200);
}

}  // namespace
}  // namespace valdorn
