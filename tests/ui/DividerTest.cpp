#include <QAccessible>
#include <QHBoxLayout>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "ui/Divider.h"
#include "ui/GroupPanel.h"
#include "ui/Pictures.h"
#include "ui/SystemPalette.h"

namespace valdorn {
namespace {

class DividerTest : public testing::Test {
protected:
    static QColor colorOf(Divider& divider) {
        return Pictures::render(divider).pixelColor(divider.rect().center());
    }

    Looks looks{Scheme::light};
    QWidget window;
};

TEST_F(DividerTest, LiesAcrossAStackOnePointHigh) {
    auto* const divider = new Divider(Qt::Horizontal);
    auto* const stack = new QVBoxLayout(&window);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->addWidget(divider);
    window.resize(200, 100);
    window.show();
    EXPECT_EQ(divider->size(), QSize(200, 1));
}

TEST_F(DividerTest, StandsInARowOnePointWide) {
    auto* const divider = new Divider(Qt::Vertical);
    auto* const row = new QHBoxLayout(&window);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(divider);
    window.resize(200, 100);
    window.show();
    EXPECT_EQ(divider->size(), QSize(1, 100));
}

TEST_F(DividerTest, IsAQuietLineInTheColoursOfWhatItStandsOn) {
    auto* const stack = new QVBoxLayout(&window);
    auto* const panel = new GroupPanel;
    auto* const onPanel = new Divider(Qt::Horizontal);
    auto* const onWindow = new Divider(Qt::Horizontal);
    (new QVBoxLayout(panel))->addWidget(onPanel);
    stack->addWidget(panel);
    stack->addWidget(onWindow);
    window.show();
    for (const Scheme scheme : {Scheme::light, Scheme::dark}) {
        looks.change(scheme);
        for (Divider* const divider : {onPanel, onWindow}) {
            const QColor ground = divider->parentWidget()->palette().color(QPalette::Window);
            EXPECT_GT(SystemPalette::contrast(colorOf(*divider), ground), 1.2);
            EXPECT_LT(SystemPalette::contrast(colorOf(*divider), ground), 2.0);
        }
        EXPECT_NE(colorOf(*onPanel), colorOf(*onWindow));
    }
}

TEST_F(DividerTest, HasNothingToSayAndNeverGetsTheKeyboard) {
    Divider divider(Qt::Horizontal);
    const auto* const seen = QAccessible::queryAccessibleInterface(&divider);
    EXPECT_EQ(seen->role(), QAccessible::Separator);
    EXPECT_EQ(seen->text(QAccessible::Name), QString());
    EXPECT_EQ(divider.focusPolicy(), Qt::NoFocus);
}

}  // namespace
}  // namespace valdorn
