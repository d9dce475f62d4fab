#include <QCoreApplication>
#include <QLabel>
#include <QScrollBar>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "ui/GroupPanel.h"
#include "ui/Pictures.h"
#include "ui/VerticalScrollArea.h"

namespace valdorn {
namespace {

class VerticalScrollAreaTest : public testing::Test {
protected:
    VerticalScrollAreaTest() {
        (new QVBoxLayout(content))->addWidget(label);
        (new QVBoxLayout(&panel))->addWidget(area);
        label->setFixedSize(200, 400);
        panel.show();
    }

    const Looks looks{Scheme::light};
    GroupPanel panel;
    QWidget* const content = new QWidget;
    QLabel* const label = new QLabel;
    VerticalScrollArea* const area = new VerticalScrollArea(content);
};

TEST_F(VerticalScrollAreaTest, NeverScrollsSideways) {
    panel.setFixedSize(120, 100);
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(area->horizontalScrollBar()->isVisible());
    EXPECT_TRUE(area->verticalScrollBar()->isVisible());
}

TEST_F(VerticalScrollAreaTest, NeedsTheWidthOfItsContentAndTheBar) {
    const int bar = area->verticalScrollBar()->sizeHint().width();
    EXPECT_EQ(area->minimumSizeHint().width(), content->minimumSizeHint().width() + bar);
    EXPECT_LT(area->minimumSizeHint().height(), 100);
    const int before = panel.minimumSizeHint().width();
    label->setFixedWidth(500);
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(panel.minimumSizeHint().width(), before + 300);
}

TEST_F(VerticalScrollAreaTest, ShowsTheGroundThatItStandsOn) {
    const QColor ground = panel.palette().color(QPalette::Window);
    QPalette odd = content->palette();
    odd.setColor(QPalette::Window, Qt::red);
    content->setPalette(odd);
    area->viewport()->setPalette(odd);
    const QImage seen = Pictures::render(panel);
    EXPECT_EQ(seen.pixelColor(seen.width() / 2, seen.height() / 2), ground);
}

}  // namespace
}  // namespace valdorn
