#include <QTest>

#include <gtest/gtest.h>

#include "ui/EventCounter.h"
#include "ui/Pictures.h"
#include "ui/StatusDot.h"

namespace valdorn {
namespace {

TEST(StatusDotTest, NewStatusIsPainted) {
    const Looks looks(Scheme::light);
    StatusDot dot;
    dot.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dot));
    QTest::qWait(0);
    EventCounter paints(QEvent::Paint);
    dot.installEventFilter(&paints);
    dot.setStatus(SystemColor::green, QStringLiteral("Connected"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return paints.counts[&dot] > 0; }));
}

}  // namespace
}  // namespace valdorn
