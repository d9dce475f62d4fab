#include <QCoreApplication>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "ui/WindowView.h"

namespace valdorn {
namespace {

class View : public WindowView {
public:
    View() : WindowView(QSize(200, 100)) {}

    int timesAppeared = 0;
    int timesVanished = 0;

protected:
    void appeared() override { ++timesAppeared; }
    void vanished() override { ++timesVanished; }
};

TEST(WindowViewTest, AppearsWhenTheWindowOpensAndVanishesWhenItCloses) {
    View view;
    EXPECT_EQ(view.timesAppeared, 0);
    view.show();
    EXPECT_EQ(view.timesAppeared, 1);
    EXPECT_EQ(view.timesVanished, 0);
    view.close();
    EXPECT_EQ(view.timesVanished, 1);
    view.show();
    EXPECT_EQ(view.timesAppeared, 2);
}

TEST(WindowViewTest, MinimisingIsNoClosing) {
    View view;
    view.show();
    view.showMinimized();
    QCoreApplication::processEvents();
    view.showNormal();
    QCoreApplication::processEvents();
    EXPECT_EQ(view.timesAppeared, 1);
    EXPECT_EQ(view.timesVanished, 0);
}

TEST(WindowViewTest, IsAsLargeAsItsContentNeedsAndNeverSmallerThanItsLeast) {
    View view;
    EXPECT_EQ(view.minimumSizeHint(), QSize(200, 100));
    auto* const layout = new QVBoxLayout(&view);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const content = new QWidget;
    content->setMinimumSize(300, 50);
    layout->addWidget(content);
    EXPECT_EQ(view.minimumSizeHint(), QSize(300, 100));
}

}  // namespace
}  // namespace valdorn
