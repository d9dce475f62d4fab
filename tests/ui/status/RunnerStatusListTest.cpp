#include <QAccessible>
#include <QTest>
#include <functional>

#include <gtest/gtest.h>

#include "ui/status/RunnerStatusTest.h"
#include "ui/status/RunnerStatusView.h"

namespace valdorn {
namespace {

using RunnerStatusListTest = RunnerStatusTest;
using Names = std::vector<std::string>;

TEST_F(RunnerStatusListTest, HeadingCountsInWords) {
    show({"one"});
    EXPECT_EQ(heading(), QStringLiteral("Runner"));
    stage.store->add("two");
    stage.settle();
    EXPECT_EQ(heading(), QStringLiteral("Runners"));
    stage.store->remove(stage.store->runners().back());
    stage.settle();
    EXPECT_EQ(heading(), QStringLiteral("Runner"));
}

TEST_F(RunnerStatusListTest, EmptyFleetShowsHeadingAndFootnote) {
    stage.emptyFleet();
    stage.show();
    EXPECT_EQ(heading(), QStringLiteral("Runners"));
    EXPECT_TRUE(rows().empty());
    EXPECT_TRUE(footnote()->isVisible());
    EXPECT_EQ(footnote()->text(), QStringLiteral("Add or remove runners in Settings → Runners."));
}

TEST_F(RunnerStatusListTest, RowsStandInTheOrderOfTheList) {
    show({"c", "a", "b"});
    EXPECT_EQ(names(), (Names{"c", "a", "b"}));
    stage.store->add("aa");
    stage.settle();
    EXPECT_EQ(names(), (Names{"c", "a", "b", "aa"}));
}

TEST_F(RunnerStatusListTest, RowStaysWithItsRunnerWhenOthersComeAndGo) {
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

TEST_F(RunnerStatusListTest, KeyboardGoesToANeighbourWhenItsRowGoes) {
    show({"a", "b", "c"});
    button(1)->setFocus();
    stage.store->remove(stage.store->runners()[1]);
    stage.settle();
    EXPECT_TRUE(button(0)->hasFocus() || button(1)->hasFocus());
}

TEST_F(RunnerStatusListTest, RowGoesWithItsRunnerInTheTurnOfTheChange) {
    show({"a", "b"});
    const std::weak_ptr<RunnerManager> gone = stage.store->runners()[0];
    stage.store->remove(stage.store->runners()[0]);
    EXPECT_EQ(rows().size(), 2U);
    stage.settle();
    EXPECT_EQ(rows().size(), 1U);
    EXPECT_TRUE(gone.expired());
}

TEST_F(RunnerStatusListTest, RunnerThatTakesAnIdOverGetsARowOfItsOwn) {
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

TEST_F(RunnerStatusListTest, TabFindsARowThatCameBetweenTheOthers) {
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

TEST_F(RunnerStatusListTest, RunnersOfOneIdKeepTheirOwnRows) {
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

TEST_F(RunnerStatusListTest, AScreenReaderReadsFromTopToBottom) {
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

TEST_F(RunnerStatusListTest, StrayKeyStopsNoRunnerWhenTheWindowOpens) {
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

TEST_F(RunnerStatusListTest, KeyboardStaysWhereItWasWhenTheWindowComesBack) {
    show({"a", "b"});
    button(1)->setFocus();
    stage.window->hide();
    stage.window->show();
    EXPECT_EQ(stage.window->focusWidget(), button(1));
}

TEST_F(RunnerStatusListTest, TabWalksTheRowsFromTopToBottom) {
    show({"a", "b"});
    stage.store->add("c");
    stage.settle();
    button(0)->setFocus();
    for (std::size_t row = 1; row <= 2; ++row) {
        QTest::keyClick(stage.window->focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(button(row)->hasFocus()) << row;
    }
}

}  // namespace
}  // namespace valdorn
