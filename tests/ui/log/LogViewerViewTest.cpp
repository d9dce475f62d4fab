#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include "support/MemoryFileSystem.h"
#include "support/RecordingPasteboard.h"
#include "support/RecordingWorkspace.h"
#include "support/VirtualMainQueue.h"
#include "ui/EventCounter.h"
#include "ui/Pictures.h"
#include "ui/log/LogRowsView.h"
#include "ui/log/LogViewerView.h"

namespace valdorn {
namespace {

using std::chrono_literals::operator""s;

const std::string path = "/logs/valdorn.log";

class LogViewerViewTest : public testing::Test {
protected:
    LogViewerViewTest() { files.folders.insert("/logs"); }

    LogViewerView& view() {
        if (!view_) {
            auto viewer = std::make_unique<LogViewer>(queue, LogTailer::create(queue, files, path),
                                                      CaseFold(""));
            view_ = std::make_unique<LogViewerView>(
                LogViewerEnvironment{queue, pasteboard, workspace, [this] { return logPath; }},
                std::move(viewer));
            view_->resize(720, 460);
        }
        return *view_;
    }

    void show() {
        view().show();
        queue.runPosted();
    }
    void write(const std::string& text) { files.files[path] += text; }
    // What a second brings.
    void writeAndWait(const std::string& text) {
        write(text);
        queue.advance(1s);
    }

    template <typename Widget>
    Widget& find(const char* name) {
        auto* const found = view().findChild<Widget*>(QString::fromLatin1(name));
        EXPECT_TRUE(found) << name;
        return *found;
    }
    QLineEdit& filter() { return find<QLineEdit>("logFilter"); }
    QComboBox& level() { return find<QComboBox>("logLevel"); }
    QAbstractButton& follow() { return find<QAbstractButton>("logFollow"); }
    QAbstractButton& button(const char* name) { return find<QAbstractButton>(name); }
    LogRowsView& rows() { return find<LogRowsView>("logRows"); }
    QScrollBar& bar() { return *rows().verticalScrollBar(); }

    std::vector<std::string> lines() {
        std::vector<std::string> texts;
        for (const LogLine& line : rows().rows().lines())
            texts.emplace_back(*line);
        return texts;
    }
    using Lines = std::vector<std::string>;

    static std::string numbered(int first, int count) {
        std::string text;
        for (int number = first; number < first + count; ++number)
            text += "line " + std::to_string(number) + "\n";
        return text;
    }

    VirtualMainQueue queue;
    MemoryFileSystem files;
    RecordingPasteboard pasteboard;
    RecordingWorkspace workspace;
    std::string logPath = path;

private:
    std::unique_ptr<LogViewerView> view_;
};

TEST_F(LogViewerViewTest, ShowsTheWholeFileWhenItAppears) {
    write("one\ntwo\n");
    EXPECT_TRUE(lines().empty());
    show();
    EXPECT_EQ(lines(), (Lines{"one", "two"}));
}

TEST_F(LogViewerViewTest, FollowsTheFileOnceASecondWhileItIsShown) {
    show();
    EXPECT_TRUE(lines().empty());
    writeAndWait("one\n");
    EXPECT_EQ(lines(), Lines{"one"});
    writeAndWait("two\n");
    EXPECT_EQ(lines(), (Lines{"one", "two"}));
}

TEST_F(LogViewerViewTest, SleepsWhileItIsHidden) {
    view();
    EXPECT_EQ(queue.pending(), 0U);
    show();
    EXPECT_EQ(queue.pending(), 1U);
    view().hide();
    EXPECT_EQ(queue.pending(), 0U);
    writeAndWait("one\n");
    EXPECT_TRUE(lines().empty());
}

TEST_F(LogViewerViewTest, GoesOnFollowingWhileItIsMinimised) {
    show();
    view().showMinimized();
    QCoreApplication::processEvents();
    EXPECT_EQ(queue.pending(), 1U);
    view().showNormal();
    QCoreApplication::processEvents();
    EXPECT_EQ(queue.pending(), 1U) << "not twice";
}

TEST_F(LogViewerViewTest, BatchesOfOneFrameArePaintedOnce) {
    show();
    QCoreApplication::processEvents();
    EventCounter paintings(QEvent::Paint);
    rows().viewport()->installEventFilter(&paintings);
    for (int batch = 0; batch < 20; ++batch)
        writeAndWait(numbered(1000 * batch, 1000));
    QCoreApplication::processEvents();
    EXPECT_EQ(lines().size(), LogTailer::maxLines);
    EXPECT_EQ(paintings.counts[rows().viewport()], 1);
}

TEST_F(LogViewerViewTest, NeitherReadsNorPaintsWhileItIsHidden) {
    show();
    QCoreApplication::processEvents();
    EventCounter paintings(QEvent::Paint);
    rows().viewport()->installEventFilter(&paintings);
    view().hide();
    files.reads.clear();
    for (int batch = 0; batch < 20; ++batch)
        writeAndWait("one\n");
    QCoreApplication::processEvents();
    EXPECT_TRUE(files.reads.empty());
    EXPECT_EQ(paintings.counts[rows().viewport()], 0);
}

TEST_F(LogViewerViewTest, ReadsTheFileAnewWhenItReappears) {
    write("one\n");
    show();
    button("logClear").click();
    queue.runPosted();
    view().hide();
    write("two\n");
    show();
    EXPECT_EQ(lines(), (Lines{"one", "two"}));
}

TEST_F(LogViewerViewTest, KeepsItsChoicesWhileItIsHidden) {
    write("Error: job\nlevel=error job\n");
    show();
    filter().setText(QStringLiteral("JOB"));
    level().setCurrentIndex(3);
    follow().click();
    view().hide();
    show();
    EXPECT_EQ(filter().text(), QStringLiteral("JOB"));
    EXPECT_EQ(level().currentText(), QStringLiteral("Error"));
    EXPECT_FALSE(follow().isChecked());
    EXPECT_EQ(lines(), Lines{"level=error job"});
}

TEST_F(LogViewerViewTest, FilterNarrowsWhateverTheCase) {
    write("level=warning the job\nlevel=Warning the job\nlevel=warning\n");
    show();
    level().setCurrentIndex(2);
    QTest::keyClicks(&filter(), QStringLiteral("JOB"));
    EXPECT_EQ(lines(), Lines{"level=warning the job"});
    filter().clear();
    EXPECT_EQ(lines(), (Lines{"level=warning the job", "level=warning"}));
    level().setCurrentIndex(0);
    EXPECT_EQ(lines().size(), 3U);
}

TEST_F(LogViewerViewTest, LevelsAreOfferedInTheirOrder) {
    QStringList titles;
    for (int index = 0; index < level().count(); ++index)
        titles << level().itemText(index);
    EXPECT_EQ(titles.join(QLatin1Char(' ')), QStringLiteral("All Info Warning Error"));
    EXPECT_EQ(level().currentText(), QStringLiteral("All"));
}

TEST_F(LogViewerViewTest, CopyTakesTheFilteredLines) {
    write("a\nother\nb\n");
    show();
    button("logCopy").click();
    EXPECT_EQ(pasteboard.texts.back(), "a\nother\nb");
    filter().setText(QStringLiteral("other"));
    button("logCopy").click();
    EXPECT_EQ(pasteboard.texts.back(), "other");
    filter().setText(QStringLiteral("nothing"));
    button("logCopy").click();
    EXPECT_EQ(pasteboard.texts.back(), "");
}

TEST_F(LogViewerViewTest, ClearLeavesOnlyWhatIsWrittenAfterwards) {
    write("one\ntwo\n");
    show();
    button("logClear").click();
    queue.runPosted();
    EXPECT_TRUE(lines().empty());
    EXPECT_EQ(files.files.at(path), "one\ntwo\n");
    writeAndWait("three\n");
    EXPECT_EQ(lines(), Lines{"three"});
}

TEST_F(LogViewerViewTest, OpensTheFileThatIsTheLogAtThatMoment) {
    show();
    logPath = "/logs/other.log";
    button("logOpenFile").click();
    EXPECT_EQ(workspace.filesOpened, std::vector<std::string>{"/logs/other.log"});
}

TEST_F(LogViewerViewTest, FollowingKeepsTheNewestLineAtTheBottom) {
    EXPECT_TRUE(follow().isChecked());
    write(numbered(0, 200));
    show();
    ASSERT_GT(bar().maximum(), 0);
    EXPECT_EQ(bar().value(), bar().maximum());
    writeAndWait(numbered(200, 50));
    EXPECT_EQ(bar().value(), bar().maximum());
    bar().setValue(10);
    writeAndWait("new\n");
    EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(LogViewerViewTest, ChangedFilterScrollsToTheEndWhileFollowing) {
    write(numbered(0, 400));
    show();
    bar().setValue(0);
    filter().setText(QStringLiteral("line 1"));
    EXPECT_EQ(bar().value(), bar().maximum());
    ASSERT_GT(bar().maximum(), 0);
}

TEST_F(LogViewerViewTest, WithoutFollowingTheScrollPositionStays) {
    write(numbered(0, 200));
    show();
    follow().click();
    bar().setValue(100);
    writeAndWait(numbered(200, 50));
    EXPECT_EQ(bar().value(), 100);
}

TEST_F(LogViewerViewTest, SwitchingFollowOnScrollsWithTheNextLine) {
    write(numbered(0, 200));
    show();
    follow().click();
    bar().setValue(100);
    follow().click();
    queue.runPosted();
    EXPECT_EQ(bar().value(), 100);
    writeAndWait("new\n");
    EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(LogViewerViewTest, LinesThatReplaceAsManyOthersScrollNothing) {
    write(numbered(0, 5000));
    show();
    bar().setValue(100);
    writeAndWait(numbered(5000, 30));
    EXPECT_EQ(lines().back(), "line 5029");
    EXPECT_EQ(bar().value(), 100);
}

TEST_F(LogViewerViewTest, MissingFileShowsNothing) {
    show();
    queue.advance(5s);
    EXPECT_TRUE(lines().empty());
    button("logCopy").click();
    button("logClear").click();
    queue.runPosted();
    EXPECT_EQ(pasteboard.texts.back(), "");
}

TEST_F(LogViewerViewTest, BurstBetweenTwoPollsIsTakenInAtOnce) {
    show();
    writeAndWait(numbered(0, 100000));
    EXPECT_EQ(lines().size(), 5000U);
    EXPECT_EQ(lines().back(), "line 99999");
    EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(LogViewerViewTest, ControlsStandInOneRowAboveTheLines) {
    Looks looks(Scheme::light);
    show();
    EXPECT_EQ(view().minimumSizeHint(), QSize(660, 400));
    EXPECT_EQ(level().width(), 110);
    EXPECT_EQ(filter().width(), 220);
    EXPECT_EQ(rows().geometry().left(), 10);
    EXPECT_EQ(rows().geometry().right(), 720 - 10 - 1);
    EXPECT_EQ(rows().geometry().bottom(), 460 - 10 - 1);
    EXPECT_EQ(filter().geometry().left(), 10);
    EXPECT_EQ(level().geometry().left() - filter().geometry().right() - 1, 10);
    EXPECT_EQ(follow().geometry().left() - level().geometry().right() - 1, 10);
    EXPECT_EQ(button("logOpenFile").geometry().right(), 720 - 10 - 1);
    EXPECT_EQ(button("logOpenFile").geometry().left() - button("logClear").geometry().right() - 1,
              10);
    view().resize(1000, 460);
    EXPECT_EQ(filter().width(), 220);
    EXPECT_EQ(button("logOpenFile").geometry().right(), 1000 - 10 - 1);
    EXPECT_GT(button("logCopy").geometry().left(), follow().geometry().right() + 200);
}

TEST_F(LogViewerViewTest, LargeFontClipsNothing) {
    Looks looks(Scheme::light, 20);
    show();
    EXPECT_GT(view().minimumSizeHint().width(), 660);
    view().resize(view().minimumSizeHint());
    EXPECT_GE(level().width(), level().sizeHint().width());
    for (const char* name : {"logCopy", "logClear", "logOpenFile", "logFollow"})
        EXPECT_GE(button(name).width(), button(name).minimumSizeHint().width()) << name;
}

TEST_F(LogViewerViewTest, PickerGrowsWithTheDesktopsFont) {
    Looks looks(Scheme::light);
    show();
    EXPECT_EQ(level().width(), 110);
    looks.change(Scheme::light, 20);
    view().resize(1200, 460);
    QCoreApplication::processEvents();
    EXPECT_GT(level().sizeHint().width(), 110);
    EXPECT_EQ(level().width(), level().sizeHint().width());
}

TEST_F(LogViewerViewTest, LowWindowKeepsTheNewestLineWhileFollowing) {
    write(numbered(0, 20));
    show();
    ASSERT_EQ(bar().maximum(), 0);
    view().resize(720, 250);
    EXPECT_EQ(bar().value(), bar().maximum());
    ASSERT_GT(bar().maximum(), 0);
}

TEST_F(LogViewerViewTest, TabGoesFromLeftToRightThenDown) {
    show();
    const std::vector<std::string> wanted{"logFilter", "logLevel",    "logFollow", "logCopy",
                                          "logClear",  "logOpenFile", "logRows"};
    std::vector<std::string> order;
    QWidget* widget = &filter();
    for (std::size_t step = 0; step < wanted.size(); ++step) {
        order.push_back(widget->objectName().toStdString());
        do {
            widget = widget->nextInFocusChain();
        } while (!(widget->focusPolicy() & Qt::TabFocus) || !widget->isVisibleTo(&view()) ||
                 widget->objectName().isEmpty());
    }
    EXPECT_EQ(order, wanted);
}

TEST_F(LogViewerViewTest, ControlsHaveNames) {
    EXPECT_EQ(filter().placeholderText(), QStringLiteral("Filter"));
    EXPECT_EQ(filter().accessibleName(), QStringLiteral("Filter"));
    EXPECT_EQ(level().accessibleName(), QStringLiteral("Level"));
    const auto labels =
        QAccessible::queryAccessibleInterface(&level())->relations(QAccessible::Label);
    ASSERT_EQ(labels.size(), 1);
    EXPECT_EQ(labels.at(0).first->text(QAccessible::Name), QStringLiteral("Level"));
    EXPECT_FALSE(view().findChild<QLabel*>()->isVisibleTo(&view()));
    EXPECT_EQ(follow().text(), QStringLiteral("Follow"));
    EXPECT_EQ(button("logCopy").text(), QStringLiteral("Copy"));
    EXPECT_EQ(button("logClear").text(), QStringLiteral("Clear"));
    EXPECT_EQ(button("logOpenFile").text(), QStringLiteral("Open File"));
    EXPECT_EQ(rows().accessibleName(), QStringLiteral("Log"));
    EXPECT_EQ(filter().findChild<QToolButton*>()->accessibleName(), QStringLiteral("Clear Filter"));
}

TEST_F(LogViewerViewTest, EscapeEmptiesTheFilter) {
    show();
    QApplication::setActiveWindow(&view());
    filter().setFocus();
    filter().setText(QStringLiteral("job"));
    QTest::keyClick(&filter(), Qt::Key_Escape);
    EXPECT_EQ(filter().text(), QString());
}

TEST_F(LogViewerViewTest, UsualKeyLeadsToTheFilter) {
    show();
    QApplication::setActiveWindow(&view());
    rows().setFocus();
    filter().setText(QStringLiteral("old"));
    QTest::keyClick(&rows(), Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(filter().hasFocus());
    QTest::keyClicks(&filter(), QStringLiteral("new"));
    EXPECT_EQ(filter().text(), QStringLiteral("new"));
}

}  // namespace
}  // namespace valdorn
