#include <QAccessible>
#include <QTest>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/VirtualMainQueue.h"
#include "ui/Announcements.h"
#include "ui/Announcer.h"
#include "ui/EventLoop.h"

namespace valdorn {
namespace {

using std::chrono_literals::operator""ms;

using Said = std::vector<std::string>;

class AnnouncerTest : public testing::Test {
protected:
    AnnouncerTest() {
        window.show();
        QAccessible::setActive(true);
    }

    VirtualMainQueue queue;
    QWidget window;
    QWidget* const status = new QWidget(&window);
    QWidget* const hint = new QWidget(&window);
    Announcer* const announcer = new Announcer(window, queue);
    Announcements announcements;
};

TEST_F(AnnouncerTest, NewsAppearAsANotification) {
    announcer->say(*status, QStringLiteral("mini: Stopped"));
    EXPECT_EQ(announcements.take(), Said{});
    queue.advance(Announcer::gathering);
    EXPECT_EQ(announcements.take(), Said{"mini: Stopped"});
    EXPECT_EQ(QAccessible::queryAccessibleInterface(announcer)->role(), QAccessible::Notification);
}

TEST_F(AnnouncerTest, WhatComesTogetherIsSaidTogether) {
    announcer->say(*status, QStringLiteral("one"));
    queue.advance(50ms);
    announcer->say(*hint, QStringLiteral("two"));
    queue.advance(Announcer::gathering);
    EXPECT_EQ(announcements.take(), Said{"one. two"});
}

TEST_F(AnnouncerTest, OfOneSubjectOnlyTheLatestIsSaid) {
    for (const char* const text : {"Starting…", "Connected — idle"})
        announcer->say(*status, QString::fromUtf8(text));
    queue.advance(Announcer::gathering);
    EXPECT_EQ(announcements.take(), Said{"Connected — idle"});
}

TEST_F(AnnouncerTest, TheSameNewsAreSaidAgainWhenTheyComeAgain) {
    for (int time = 0; time < 2; ++time) {
        announcer->say(*status, QStringLiteral("refused"));
        queue.advance(Announcer::gathering);
    }
    EXPECT_EQ(announcements.take(), (Said{"refused", "refused"}));
}

TEST_F(AnnouncerTest, NothingIsSaidOfAWindowThatCannotBeSeen) {
    window.hide();
    announcer->say(*status, QStringLiteral("late"));
    EXPECT_EQ(queue.pending(), 0U);
    window.show();
    queue.advance(Announcer::gathering);
    EXPECT_EQ(announcements.take(), Said{});
}

TEST_F(AnnouncerTest, WhatHasNotBeenSaidWhenTheWindowGoesIsNotSaidAtAll) {
    announcer->say(*status, QStringLiteral("old"));
    window.hide();
    EXPECT_EQ(queue.pending(), 0U);
    window.show();
    queue.advance(Announcer::gathering);
    EXPECT_EQ(announcements.take(), Said{});
}

TEST_F(AnnouncerTest, NothingIsSaidOfAMinimisedWindow) {
    window.showMinimized();
    announcer->say(*status, QStringLiteral("late"));
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(AnnouncerTest, WhatHasNotBeenSaidWhenTheWindowIsMinimisedIsNotSaidAtAll) {
    announcer->say(*status, QStringLiteral("old"));
    window.showMinimized();
    EXPECT_TRUE(runUntil([this] { return queue.pending() == 0; }));
    window.showNormal();
    queue.advance(Announcer::gathering);
    EXPECT_EQ(announcements.take(), Said{});
}

TEST_F(AnnouncerTest, OldNewsAreNotSaidAgainWhenTheWindowComesBack) {
    announcer->say(*status, QStringLiteral("old"));
    queue.advance(Announcer::gathering);
    window.hide();
    window.show();
    EXPECT_EQ(announcements.take(), Said{"old"});
    EXPECT_FALSE(announcer->isVisible());
}

TEST_F(AnnouncerTest, NothingIsArmedWhileNobodyListens) {
    QAccessible::setActive(false);
    announcer->say(*status, QStringLiteral("mini: Stopped"));
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(AnnouncerTest, IsInNobodysWay) {
    announcer->say(*status, QStringLiteral("one"));
    queue.advance(Announcer::gathering);
    EXPECT_EQ(announcer->focusPolicy(), Qt::NoFocus);
    EXPECT_TRUE(announcer->testAttribute(Qt::WA_TransparentForMouseEvents));
}

TEST_F(AnnouncerTest, WhatStandsAtItsPlaceIsStillFound) {
    const QAccessibleInterface& whole = *QAccessible::queryAccessibleInterface(&window);
    hint->hide();
    status->hide();
    QWidget later(&window);
    later.setGeometry(0, 0, 100, 30);
    later.show();
    announcer->say(*status, QStringLiteral("one"));
    queue.advance(Announcer::gathering);
    const QRect own = QAccessible::queryAccessibleInterface(announcer)->rect();
    EXPECT_FALSE(own.isEmpty());
    const QPoint beside = own.topLeft() + QPoint(2, 2);
    EXPECT_EQ(whole.childAt(beside.x(), beside.y())->object(), &later);
}

}  // namespace
}  // namespace valdorn
