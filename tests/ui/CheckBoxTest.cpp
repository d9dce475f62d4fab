#include <QVBoxLayout>
#include <algorithm>

#include <gtest/gtest.h>

#include "ui/CheckBox.h"
#include "ui/Pictures.h"
#include "ui/SystemPalette.h"

namespace valdorn {
namespace {

class CheckBoxTest : public testing::Test {
protected:
    CheckBoxTest() {
        layout->addWidget(box);
        window.show();
    }
    // How much the box's frame stands out from the window, at most.
    double frameContrast() {
        const QImage seen = Pictures::render(window);
        const QColor ground = window.palette().color(QPalette::Window);
        const int y = box->geometry().center().y();
        double most = 0;
        for (int x = box->x(); x < box->x() + 5; ++x)
            most = std::max(most, SystemPalette::contrast(seen.pixelColor(x, y), ground));
        return most;
    }

    Looks looks{Scheme::dark};
    QWidget window;
    QVBoxLayout* const layout = new QVBoxLayout(&window);
    CheckBox* const box = new CheckBox(QStringLiteral("Follow"));
};

TEST_F(CheckBoxTest, FrameCanBeSeenOnADarkWindow) {
    EXPECT_GE(frameContrast(), 3.0);
}

TEST_F(CheckBoxTest, FollowsTheDesktop) {
    looks.change(Scheme::light);
    EXPECT_FALSE(box->testAttribute(Qt::WA_SetPalette));
    EXPECT_GE(frameContrast(), 1.5);
    looks.change(Scheme::dark);
    EXPECT_GE(frameContrast(), 3.0);
}

TEST_F(CheckBoxTest, TextIsThatOfTheWindow) {
    EXPECT_EQ(box->palette().color(QPalette::WindowText),
              window.palette().color(QPalette::WindowText));
}

}  // namespace
}  // namespace valdorn
