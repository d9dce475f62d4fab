#include <QAccessible>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <algorithm>
#include <map>

#include <gtest/gtest.h>

#include "ui/ElidedLabel.h"
#include "ui/Pictures.h"
#include "ui/SymbolButton.h"
#include "ui/SystemPalette.h"
#include "ui/TabularLabel.h"
#include "ui/status/RunnerRow.h"
#include "ui/status/RunnerStatusView.h"
#include "ui/status/StatusDot.h"
#include "ui/status/StatusStage.h"
#include "update/UpdateChecker.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

// Counts how often widgets are painted.
class PaintCounter : public QObject {
public:
    std::map<const QObject*, int> paints;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            ++paints[watched];
        return false;
    }
};

class RunnerStatusViewTest : public testing::Test {
protected:
    void show(const std::vector<std::string>& names) {
        stage.makeFleet(names);
        stage.show();
    }

    // From top to bottom, as they are seen.
    std::vector<RunnerRow*> rows() {
        const auto found = stage.window->findChildren<RunnerRow*>(QStringLiteral("runnerRow"));
        std::vector<RunnerRow*> rows(found.begin(), found.end());
        std::sort(rows.begin(), rows.end(),
                  [](const auto* one, const auto* other) { return one->y() < other->y(); });
        return rows;
    }
    template <typename Widget = ElidedLabel>
    Widget* part(std::size_t row, const char* name) {
        return rows().at(row)->findChild<Widget*>(QLatin1String(name));
    }
    SymbolButton* button(std::size_t row) { return part<SymbolButton>(row, "startStop"); }

    // The text of a part, or "-" where it is not there.
    std::string text(std::size_t row, const char* name) {
        const auto* const label = part(row, name);
        return label->isVisible() ? label->text().toStdString() : "-";
    }
    std::string uptime(std::size_t row) {
        const auto* const label = part<TabularLabel>(row, "uptime");
        return label->isVisible() ? label->text().toStdString() : "-";
    }
    QString heading() {
        return stage.window->findChild<QLabel*>(QStringLiteral("heading"))->text();
    }
    QLabel* footnote() { return stage.window->findChild<QLabel*>(QStringLiteral("footnote")); }
    std::vector<std::string> names() {
        std::vector<std::string> result;
        for (std::size_t row = 0; row < rows().size(); ++row)
            result.push_back(text(row, "name"));
        return result;
    }
    void click(std::size_t row) {
        QTest::mouseClick(button(row), Qt::LeftButton);
        stage.settle();
    }
    QRect placeOf(QWidget* widget, QWidget* ancestor) {
        return {widget->mapTo(ancestor, QPoint()), widget->size()};
    }
    // As after the window system has painted all.
    void paintAll() {
        stage.settle();
        QTest::qWait(0);
        stage.settle();
    }

    const Looks looks{Scheme::light};
    StatusStage stage;
};

using Names = std::vector<std::string>;

// The list.

TEST_F(RunnerStatusViewTest, HeadingCountsInWords) {
    show({"one"});
    EXPECT_EQ(heading(), QStringLiteral("Runner"));
    stage.store->add("two");
    stage.settle();
    EXPECT_EQ(heading(), QStringLiteral("Runners"));
    stage.store->remove(stage.store->runners().back());
    stage.settle();
    EXPECT_EQ(heading(), QStringLiteral("Runner"));
}

TEST_F(RunnerStatusViewTest, EmptyFleetShowsHeadingAndFootnote) {
    stage.emptyFleet();
    stage.show();
    EXPECT_EQ(heading(), QStringLiteral("Runners"));
    EXPECT_TRUE(rows().empty());
    EXPECT_TRUE(footnote()->isVisible());
    EXPECT_EQ(footnote()->text(), QStringLiteral("Add or remove runners in Settings → Runners."));
}

TEST_F(RunnerStatusViewTest, RowsStandInTheOrderOfTheList) {
    show({"c", "a", "b"});
    EXPECT_EQ(names(), (Names{"c", "a", "b"}));
    stage.store->add("aa");
    stage.settle();
    EXPECT_EQ(names(), (Names{"c", "a", "b", "aa"}));
}

TEST_F(RunnerStatusViewTest, RowStaysWithItsRunnerWhenOthersComeAndGo) {
    show({"a", "b", "c"});
    RunnerRow* const row = rows()[1];
    button(1)->setFocus();
    stage.store->remove(stage.store->runners().front());
    stage.store->add("d");
    stage.settle();
    EXPECT_EQ(names(), (Names{"b", "c", "d"}));
    EXPECT_EQ(rows()[0], row);
    EXPECT_TRUE(button(0)->hasFocus());
}

TEST_F(RunnerStatusViewTest, KeyboardGoesToANeighbourWhenItsRowGoes) {
    show({"a", "b", "c"});
    button(1)->setFocus();
    stage.store->remove(stage.store->runners()[1]);
    stage.settle();
    EXPECT_TRUE(button(0)->hasFocus() || button(1)->hasFocus());
}

TEST_F(RunnerStatusViewTest, RowGoesWithItsRunnerInTheTurnOfTheChange) {
    show({"a", "b"});
    const std::weak_ptr<RunnerManager> gone = stage.store->runners()[0];
    stage.store->remove(stage.store->runners()[0]);
    EXPECT_EQ(rows().size(), 2U);
    stage.settle();
    EXPECT_EQ(rows().size(), 1U);
    EXPECT_TRUE(gone.expired());
}

TEST_F(RunnerStatusViewTest, RunnerThatTakesAnIdOverGetsARowOfItsOwn) {
    show({"a"});
    const auto* const row = rows()[0];
    RunnerConfig record = stage.runner(0).config();
    record.id = "other";
    stage.runner(0).setConfig(record);
    stage.store->add("b");
    stage.settle();
    EXPECT_EQ(names(), (Names{"a", "b"}));
    EXPECT_NE(rows()[0], row);
}

TEST_F(RunnerStatusViewTest, TabFindsARowThatCameBetweenTheOthers) {
    show({"a", "b", "c"});
    RunnerConfig record = stage.runner(1).config();
    record.id = "other";
    stage.runner(1).setConfig(record);
    stage.store->add("d");
    stage.settle();
    EXPECT_EQ(names(), (Names{"a", "b", "c", "d"}));
    button(0)->setFocus();
    QTest::keyClick(button(0), Qt::Key_Tab);
    EXPECT_TRUE(button(1)->hasFocus());
}

TEST_F(RunnerStatusViewTest, RunnersOfOneIdKeepTheirOwnRows) {
    stage.makeFleet({"a", "b"});
    RunnerConfig record = stage.runner(1).config();
    record.id = stage.runner(0).id();
    stage.runner(1).setConfig(record);
    stage.show();
    const auto* const row = rows()[1];
    stage.store->remove(stage.store->runners().front());
    stage.settle();
    ASSERT_EQ(names(), (Names{"b"}));
    EXPECT_EQ(rows()[0], row);
}

TEST_F(RunnerStatusViewTest, AScreenReaderReadsFromTopToBottom) {
    show({"a", "b"});
    stage.store->add("c");
    stage.settle();
    std::vector<std::string> read;
    const std::function<void(QAccessibleInterface*)> walk = [&](QAccessibleInterface* thing) {
        const QString name = thing->text(QAccessible::Name);
        const bool isLanding = thing->role() == QAccessible::Heading ||
                               name.startsWith(QLatin1String("Add or")) ||
                               qobject_cast<RunnerRow*>(thing->object());
        if (isLanding)
            read.push_back(name.toStdString());
        for (int child = 0; child < thing->childCount(); ++child)
            walk(thing->child(child));
    };
    walk(QAccessible::queryAccessibleInterface(stage.view));
    EXPECT_EQ(read, (std::vector<std::string>{"Runners", "a", "b", "c",
                                              "Add or remove runners in Settings → Runners."}));
}

TEST_F(RunnerStatusViewTest, StrayKeyStopsNoRunnerWhenTheWindowOpens) {
    stage.makeFleet({"a"});
    stage.start(0);
    stage.show();
    QApplication::setActiveWindow(stage.window.get());
    ASSERT_TRUE(stage.window->focusWidget());
    QTest::keyClick(stage.window->focusWidget(), Qt::Key_Space);
    stage.settle();
    EXPECT_TRUE(stage.runner(0).isRunning());
    EXPECT_TRUE(stage.runner(0).keepRunning());
    QTest::keyClick(stage.window->focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(stage.window->focusWidget(), button(0));
}

TEST_F(RunnerStatusViewTest, KeyboardStaysWhereItWasWhenTheWindowComesBack) {
    show({"a", "b"});
    button(1)->setFocus();
    stage.window->hide();
    stage.window->show();
    EXPECT_EQ(stage.window->focusWidget(), button(1));
}

TEST_F(RunnerStatusViewTest, TabWalksTheRowsFromTopToBottom) {
    show({"a", "b"});
    stage.store->add("c");
    stage.settle();
    button(0)->setFocus();
    for (std::size_t row = 1; row <= 2; ++row) {
        QTest::keyClick(stage.window->focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(button(row)->hasFocus()) << row;
    }
}

// A row.

TEST_F(RunnerStatusViewTest, RowTellsAboutItsRunner) {
    show({"mini", "spare"});
    stage.print(stage.start(0), StatusStage::declared("v1.0.7"));
    stage.releaseIs("v1.0.8");
    EXPECT_EQ(text(0, "name"), "mini");
    EXPECT_EQ(text(0, "status"), "Connected — idle");
    EXPECT_EQ(text(0, "version"), "· runner v1.0.7");
    EXPECT_EQ(uptime(0), "· up 0:00");
    EXPECT_EQ(text(0, "updateHint"), "update: v1.0.8 available");
    EXPECT_EQ(text(0, "build"), "-");
    stage.print(0, StatusStage::building("acme/site", "ci/test"));
    EXPECT_EQ(text(0, "build"), "Building acme/site (ci/test)");
    EXPECT_EQ(text(1, "status"), "Stopped");
    EXPECT_EQ(text(1, "version"), "-");
    EXPECT_EQ(uptime(1), "-");
    EXPECT_EQ(text(1, "updateHint"), "-");
}

TEST_F(RunnerStatusViewTest, RenamedRunnerIsRenamedHere) {
    show({"mini"});
    RunnerConfig record = stage.runner(0).config();
    record.name = "";
    stage.runner(0).setConfig(record);
    stage.settle();
    EXPECT_EQ(text(0, "name"), "runner");
}

TEST_F(RunnerStatusViewTest, PartThatIsGoneLeavesNoGap) {
    show({"mini"});
    const int height = rows()[0]->height();
    const std::size_t child = stage.start(0);
    stage.print(child, StatusStage::declared("v1"));
    EXPECT_EQ(part<TabularLabel>(0, "uptime")->x(), part(0, "version")->geometry().right() + 7);
    EXPECT_EQ(part(0, "version")->x(), part(0, "status")->geometry().right() + 7);
    stage.print(child, StatusStage::building("a/b", "w/j"));
    EXPECT_GT(rows()[0]->height(), height);
    stage.runner(0).stop();
    stage.settle();
    EXPECT_EQ(rows()[0]->height(), height);
}

TEST_F(RunnerStatusViewTest, UptimeWithoutAVersionStandsBesideTheStatus) {
    show({"mini"});
    stage.start(0);
    EXPECT_EQ(text(0, "version"), "-");
    EXPECT_EQ(part<TabularLabel>(0, "uptime")->x(), part(0, "status")->geometry().right() + 7);
}

TEST_F(RunnerStatusViewTest, DotHasTheStatussColourAndTitle) {
    show({"mini"});
    stage.start(0);
    auto* const dot = part<StatusDot>(0, "statusDot");
    const auto* const seen = QAccessible::queryAccessibleInterface(dot);
    EXPECT_EQ(seen->role(), QAccessible::Graphic);
    EXPECT_EQ(seen->text(QAccessible::Name), QStringLiteral("Starting…"));
    const QColor middle = Pictures::render(*dot).pixelColor(5, 5);
    EXPECT_EQ(middle, SystemPalette::dot(SystemColor::yellow, rows()[0]->palette()));
    stage.print(0, "permission denied\n");
    EXPECT_EQ(Pictures::render(*dot).pixelColor(5, 5),
              SystemPalette::dot(SystemColor::red, rows()[0]->palette()));
}

TEST_F(RunnerStatusViewTest, DotStandsBesideTheMiddleOfTheFirstLine) {
    Looks large(Scheme::light);
    show({"mini"});
    for (const double points : {10.0, 18.0}) {
        large.change(Scheme::light, points);
        paintAll();
        const QRect dot = placeOf(part<StatusDot>(0, "statusDot"), rows()[0]);
        const QRect name = placeOf(part(0, "name"), rows()[0]);
        EXPECT_NEAR(dot.center().y(), name.center().y(), 1) << points;
        EXPECT_EQ(dot.size(), QSize(10, 10));
        if (points == 10.0) {
            EXPECT_EQ(dot.top(), 4 + 6 + 5);  // the panel's own edge, the padding, above the dot
        }
    }
}

// The button.

TEST_F(RunnerStatusViewTest, ButtonStartsAndStopsThisRunnerAlone) {
    show({"a", "b"});
    EXPECT_EQ(button(1)->toolTip(), QStringLiteral("Start runner"));
    EXPECT_EQ(button(1)->symbol(), QStringLiteral("play.circle.fill"));
    click(1);
    EXPECT_EQ(stage.world.launcher.launches.size(), 1U);
    EXPECT_TRUE(stage.runner(1).isRunning());
    EXPECT_FALSE(stage.runner(0).isRunning());
    EXPECT_EQ(button(1)->toolTip(), QStringLiteral("Stop runner"));
    EXPECT_EQ(button(1)->accessibleName(), QStringLiteral("Stop runner"));
    EXPECT_EQ(button(1)->symbol(), QStringLiteral("stop.circle.fill"));
    EXPECT_EQ(button(0)->toolTip(), QStringLiteral("Start runner"));
    click(1);
    EXPECT_EQ(stage.child(0).terminateRequests(), 1);
    EXPECT_FALSE(stage.runner(1).keepRunning());
    EXPECT_EQ(text(1, "status"), "Stopped");
}

TEST_F(RunnerStatusViewTest, ClickDecidesByWhatRunsThen) {
    show({"a"});
    stage.start(0);
    stage.child(0).end({});  // not shown yet
    EXPECT_EQ(button(0)->toolTip(), QStringLiteral("Stop runner"));
    click(0);
    EXPECT_EQ(stage.world.launcher.launches.size(), 2U);
    EXPECT_EQ(stage.child(0).terminateRequests(), 0);
}

TEST_F(RunnerStatusViewTest, UnregisteredRunnerThatIsStartedSaysSo) {
    show({"a"});
    stage.world.files.files.clear();
    click(0);
    EXPECT_TRUE(stage.world.launcher.launches.empty());
    EXPECT_EQ(text(0, "status"), "Not registered");
    EXPECT_TRUE(button(0)->isEnabled());
    click(0);
    EXPECT_EQ(text(0, "status"), "Not registered");
}

TEST_F(RunnerStatusViewTest, DeadChildOfAStartingRunnerShowsWithinASecond) {
    show({"a"});
    stage.start(0);
    stage.pass(500ms);
    stage.end(0);
    stage.pass(500ms);
    EXPECT_EQ(text(0, "status"), "Starting…");
    EXPECT_EQ(part<StatusDot>(0, "statusDot")->accessibleName(), QStringLiteral("Starting…"));
    EXPECT_EQ(button(0)->toolTip(), QStringLiteral("Start runner"));
    EXPECT_EQ(uptime(0), "-");
}

// Time.

TEST_F(RunnerStatusViewTest, UptimeTicksAtEachFullSecond) {
    stage.makeFleet({"a"});
    stage.start(0);
    stage.pass(300ms);
    stage.show();
    EXPECT_EQ(stage.world.queue.armed(), 1U);
    EXPECT_EQ(uptime(0), "· up 0:00");
    stage.pass(699ms);
    EXPECT_EQ(uptime(0), "· up 0:00");
    stage.pass(1ms);
    EXPECT_EQ(uptime(0), "· up 0:01");
    stage.pass(1s);
    EXPECT_EQ(uptime(0), "· up 0:02");
    EXPECT_EQ(stage.world.queue.armed(), 1U);
}

TEST_F(RunnerStatusViewTest, NothingIsArmedWhereNothingRuns) {
    show({"a", "b"});
    EXPECT_EQ(stage.world.queue.pending(), 0U);
}

TEST_F(RunnerStatusViewTest, NothingIsArmedWhereNobodyLooks) {
    show({"a"});
    stage.start(0);
    EXPECT_EQ(stage.world.queue.pending(), 1U);
    stage.window->hide();
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    stage.print(0, StatusStage::declared("v1"));
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    stage.pass(10s);
    stage.window->show();
    EXPECT_EQ(uptime(0), "· up 0:10");
    EXPECT_EQ(stage.world.queue.pending(), 1U);
}

TEST_F(RunnerStatusViewTest, ViewThatWasNeverShownArmsNothing) {
    stage.makeFleet({"a"});
    stage.start(0);
    const RunnerStatusView view(
        stage.store, stage.world.queue,
        std::make_unique<UpdateChecker>(stage.http, "https://release.test"));
    stage.settle();
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    EXPECT_TRUE(stage.http.queries.empty());
}

TEST_F(RunnerStatusViewTest, UptimesStandStillWhileTheWindowIsMinimised) {
    show({"a"});
    stage.start(0);
    stage.window->showMinimized();
    paintAll();
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    stage.pass(5s);
    stage.window->showNormal();
    paintAll();
    EXPECT_EQ(uptime(0), "· up 0:05");
    EXPECT_EQ(stage.world.queue.pending(), 1U);
}

TEST_F(RunnerStatusViewTest, RunnerAddedLaterTicksToo) {
    show({"a"});
    stage.world.markRegistered(stage.store->add("b")->id());
    stage.settle();
    stage.start(1);
    stage.pass(2s);
    EXPECT_EQ(uptime(1), "· up 0:02");
}

TEST_F(RunnerStatusViewTest, DestroyedViewLeavesNothingBehind) {
    show({"a"});
    stage.start(0);
    stage.runner(0).stop();  // announces changes that nobody looks at any more
    stage.store->add("b");
    stage.window.reset();
    stage.world.queue.runPosted();
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    stage.start(0);
}

// What is drawn again.

TEST_F(RunnerStatusViewTest, OnlyTheRowThatChangesIsPainted) {
    show({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"});
    stage.window->resize(480, 1200);
    paintAll();
    PaintCounter counter;
    for (RunnerRow* const row : rows())
        row->installEventFilter(&counter);
    stage.start(3);
    paintAll();
    EXPECT_GT(counter.paints[rows()[3]], 0);
    EXPECT_EQ(counter.paints.size(), 1U);
}

TEST_F(RunnerStatusViewTest, TickPaintsTheCounterAloneAndMovesNothing) {
    show({"a"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    paintAll();
    PaintCounter counter;
    for (QWidget* const widget : rows()[0]->findChildren<QWidget*>())
        widget->installEventFilter(&counter);
    const QRect before = part<TabularLabel>(0, "uptime")->geometry();
    stage.pass(1s);
    paintAll();
    EXPECT_EQ(part<TabularLabel>(0, "uptime")->geometry(), before);
    EXPECT_EQ(counter.paints.size(), 1U);
    EXPECT_EQ(counter.paints[part<TabularLabel>(0, "uptime")], 1);
}

// The release check.

TEST_F(RunnerStatusViewTest, AsksForTheReleaseEachTimeItAppearsUntilItKnows) {
    show({"a"});
    EXPECT_EQ(stage.http.queries.size(), 1U);
    stage.window->hide();
    stage.window->show();
    EXPECT_EQ(stage.http.queries.size(), 2U);
    stage.pass(24h);
    EXPECT_EQ(stage.http.queries.size(), 2U);
    stage.releaseIs("v1");
    stage.window->hide();
    stage.window->show();
    EXPECT_EQ(stage.http.queries.size(), 2U);
}

TEST_F(RunnerStatusViewTest, ComingBackFromMinimisedIsNoNewAppearance) {
    show({"a"});
    stage.window->showMinimized();
    paintAll();
    stage.window->showNormal();
    paintAll();
    EXPECT_EQ(stage.http.queries.size(), 1U);
}

TEST_F(RunnerStatusViewTest, AnswerReachesEveryRowAndThoseThatComeLater) {
    show({"a", "b"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.print(stage.start(1), StatusStage::declared("v2"));
    EXPECT_EQ(text(0, "updateHint"), "-");
    stage.releaseIs("v2");
    EXPECT_EQ(text(0, "updateHint"), "update: v2 available");
    EXPECT_EQ(text(1, "updateHint"), "runner is up to date");
    const auto& palette = rows()[0]->palette();
    EXPECT_EQ(part(0, "updateHint")->palette().color(QPalette::WindowText),
              SystemPalette::text(SystemColor::orange, palette));
    EXPECT_EQ(part(1, "updateHint")->palette().color(QPalette::WindowText),
              SystemPalette::text(SystemColor::secondary, palette));
    stage.world.markRegistered(stage.store->add("c")->id());
    stage.print(stage.start(2), StatusStage::declared("v1"));
    EXPECT_EQ(text(2, "updateHint"), "update: v2 available");
    stage.window->hide();
    stage.window->show();
    EXPECT_EQ(text(0, "updateHint"), "update: v2 available");
}

TEST_F(RunnerStatusViewTest, FailedCheckShowsNothing) {
    show({"a"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.http.answer(0, HttpError{HttpError::Kind::network, "no network"});
    stage.settle();
    EXPECT_EQ(text(0, "updateHint"), "-");
}

// Room.

TEST_F(RunnerStatusViewTest, PartsStandApartEvenly) {
    show({"a", "b"});
    stage.start(0);
    QWidget* const window = stage.window.get();
    QWidget* const heading = window->findChild<QLabel*>(QStringLiteral("heading"));
    EXPECT_EQ(placeOf(heading, window).topLeft(), QPoint(16, 16));
    EXPECT_EQ(placeOf(rows()[0], window).top() - placeOf(heading, window).bottom() - 1, 12);
    EXPECT_EQ(placeOf(rows()[0], window).left(), 16);
    EXPECT_EQ(placeOf(rows()[0], window).right(), window->width() - 16 - 1);
    EXPECT_EQ(rows()[1]->y() - rows()[0]->geometry().bottom() - 1, 12);
    EXPECT_EQ(placeOf(footnote(), window).top() - placeOf(rows()[1], window).bottom() - 1, 12);
    const QRect dot = placeOf(part<StatusDot>(0, "statusDot"), rows()[0]);
    EXPECT_EQ(dot.left(), 4 + 6);
    EXPECT_EQ(placeOf(part(0, "name"), rows()[0]).left() - dot.right() - 1, 10);
    // The symbol ends where the padding begins.
    EXPECT_EQ(placeOf(button(0), rows()[0]).right() - SymbolButton::margin,
              rows()[0]->width() - 1 - 4 - 6);
}

TEST_F(RunnerStatusViewTest, HasALeastSizeThatGrowsWithTheFont) {
    Looks large(Scheme::light);
    show({"a"});
    EXPECT_EQ(stage.view->minimumSizeHint(), QSize(460, 200));
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.print(0, "no route to host\n");
    large.change(Scheme::light, 30);
    paintAll();
    EXPECT_GT(stage.view->minimumSizeHint().width(), 460);
}

TEST_F(RunnerStatusViewTest, LongTextsAreElidedInTheMiddleAndNeverClipped) {
    const std::string name = "begin" + std::string(200, 'x') + "end";
    show({name});
    stage.window->resize(460, 260);
    stage.print(stage.start(0), StatusStage::declared(std::string(300, '1')));
    stage.print(0, StatusStage::building(std::string(300, 'y'), "w/j"));
    stage.settle();
    for (const char* const line : {"name", "version", "build"}) {
        const QString shown = part(0, line)->shownText();
        EXPECT_TRUE(shown.contains(QChar(0x2026))) << line;
        EXPECT_LE(placeOf(part(0, line), rows()[0]).right(), rows()[0]->width() - 10) << line;
    }
    EXPECT_TRUE(part(0, "name")->shownText().startsWith(QStringLiteral("begin")));
    EXPECT_TRUE(part(0, "name")->shownText().endsWith(QStringLiteral("end")));
    EXPECT_EQ(part(0, "name")->text().toStdString(), name);
    EXPECT_EQ(uptime(0), "· up 0:00");
    EXPECT_EQ(part(0, "status")->shownText(), QStringLiteral("Building a job"));
    EXPECT_LE(placeOf(rows()[0], stage.window.get()).right(), 460 - 16);
    EXPECT_LE(placeOf(button(0), stage.window.get()).right(), 460 - 16 - 4);
    EXPECT_LT(part(0, "name")->geometry().right(), button(0)->x());
}

TEST_F(RunnerStatusViewTest, ScrollsWhereTheRowsDoNotFitAndFollowsTheKeyboard) {
    show({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"});
    auto* const area = stage.window->findChild<QScrollArea*>();
    EXPECT_TRUE(area->verticalScrollBar()->isVisible());
    EXPECT_FALSE(area->horizontalScrollBar()->isVisible());
    EXPECT_EQ(area->horizontalScrollBar()->maximum(), 0);
    button(0)->setFocus();
    for (int step = 1; step < 12; ++step)
        QTest::keyClick(stage.window->focusWidget(), Qt::Key_Tab);
    ASSERT_TRUE(button(11)->hasFocus());
    EXPECT_TRUE(area->viewport()->rect().contains(placeOf(button(11), area->viewport())));
    stage.window->resize(480, 1200);
    paintAll();
    EXPECT_FALSE(area->verticalScrollBar()->isVisible());
}

// Names and texts as they come.

TEST_F(RunnerStatusViewTest, NamesAreNeverMarkup) {
    for (const char* const name : {"R&D", "<b>bold</b>", "two\nlines", "שרת", "🏗️ builder"}) {
        show({name});
        EXPECT_EQ(part(0, "name")->textFormat(), Qt::PlainText);
        EXPECT_EQ(text(0, "name"), name);
        EXPECT_EQ(rows()[0]->accessibleName().toStdString(), name);
        EXPECT_FALSE(part(0, "name")->shownText().contains(QLatin1Char('\n')));
        EXPECT_LT(part(0, "name")->height(), 24);
    }
}

// Those who do not see.

TEST_F(RunnerStatusViewTest, RowIsAGroupWithTheRunnersNameAndItsStateInWords) {
    show({"mini"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.releaseIs("v2");
    stage.print(0, StatusStage::building("a/b", "w/j"));
    const auto* const row = QAccessible::queryAccessibleInterface(rows()[0]);
    EXPECT_EQ(row->role(), QAccessible::Grouping);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("mini"));
    EXPECT_EQ(row->text(QAccessible::Description),
              QStringLiteral("Building a job · runner v1, update: v2 available, "
                             "Building a/b (w/j)"));
    QWidget* const heading = stage.window->findChild<QLabel*>(QStringLiteral("heading"));
    const auto* const head = QAccessible::queryAccessibleInterface(heading);
    EXPECT_EQ(head->role(), QAccessible::Heading);
    EXPECT_EQ(head->text(QAccessible::Name), QStringLiteral("Runner"));
    const auto* const counter =
        QAccessible::queryAccessibleInterface(part<TabularLabel>(0, "uptime"));
    EXPECT_EQ(counter->role(), QAccessible::StaticText);
    EXPECT_EQ(counter->text(QAccessible::Name), QStringLiteral("· up 0:00"));
}

TEST_F(RunnerStatusViewTest, NewStatusIsReadOut) {
    show({"mini"});
    const auto* const status = QAccessible::queryAccessibleInterface(part(0, "status"));
    EXPECT_EQ(status->role(), QAccessible::StaticText);
    EXPECT_EQ(status->text(QAccessible::Name), QStringLiteral("Stopped"));
    stage.start(0);
    EXPECT_EQ(status->text(QAccessible::Name), QStringLiteral("Starting…"));
}

// Light and dark.

TEST_F(RunnerStatusViewTest, TextsStandOutOnTheirPanelsInEachLight) {
    Looks changing(Scheme::light);
    show({"mini"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.releaseIs("v2");
    for (const Scheme scheme : {Scheme::light, Scheme::dark, Scheme::light}) {
        changing.change(scheme);
        const QPalette window = stage.window->palette();
        const QColor panel = Pictures::render(*rows()[0]).pixelColor(30, 4);
        EXPECT_EQ(panel, rows()[0]->palette().color(QPalette::Window));
        EXPECT_NE(panel, window.color(QPalette::Window));
        for (const char* const line : {"name", "status", "version", "updateHint"})
            EXPECT_GE(SystemPalette::contrast(part(0, line)->palette().color(QPalette::WindowText),
                                              panel),
                      4.5)
                << line;
        EXPECT_GE(SystemPalette::contrast(footnote()->palette().color(QPalette::WindowText),
                                          window.color(QPalette::Window)),
                  4.5);
        EXPECT_EQ(part(0, "name")->palette().color(QPalette::WindowText),
                  window.color(QPalette::WindowText));
    }
}

TEST_F(RunnerStatusViewTest, FontsFollowTheDesktop) {
    Looks changing(Scheme::light);
    show({"mini"});
    changing.change(Scheme::light, 20);
    EXPECT_NEAR(part(0, "name")->font().pointSizeF(), 20, 0.01);
    EXPECT_EQ(part(0, "name")->font().weight(), QFont::DemiBold);
    EXPECT_NEAR(part(0, "status")->font().pointSizeF(), 20 * 12.0 / 13, 0.01);
    EXPECT_NEAR(part<TabularLabel>(0, "uptime")->font().pointSizeF(), 20 * 12.0 / 13, 0.01);
    EXPECT_NEAR(footnote()->font().pointSizeF(), 20 * 10.0 / 13, 0.01);
}

}  // namespace
}  // namespace valdorn
