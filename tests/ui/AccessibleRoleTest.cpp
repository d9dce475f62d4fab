#include <QLabel>
#include <QWidget>

#include <gtest/gtest.h>

#include "ui/AccessibleRole.h"

namespace valdorn {
namespace {

TEST(AccessibleRoleTest, WidgetIsWhatItIsSaidToBe) {
    QWidget widget;
    AccessibleRole::set(widget, QAccessible::Grouping);
    widget.setAccessibleName(QStringLiteral("box"));
    const auto* const seen = QAccessible::queryAccessibleInterface(&widget);
    EXPECT_EQ(seen->role(), QAccessible::Grouping);
    EXPECT_EQ(seen->text(QAccessible::Name), QStringLiteral("box"));
}

TEST(AccessibleRoleTest, LabelMayBeAHeading) {
    QLabel label;
    AccessibleRole::set(label, QAccessible::Heading);
    label.setText(QStringLiteral("Runners"));
    const auto* const seen = QAccessible::queryAccessibleInterface(&label);
    EXPECT_EQ(seen->role(), QAccessible::Heading);
    EXPECT_EQ(seen->text(QAccessible::Name), QStringLiteral("Runners"));
}

TEST(AccessibleRoleTest, OtherWidgetsStayWhatTheyAre) {
    QWidget widget;
    AccessibleRole::set(widget, QAccessible::Grouping);
    QLabel label(QStringLiteral("text"));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&label)->role(), QAccessible::StaticText);
}

}  // namespace
}  // namespace valdorn
