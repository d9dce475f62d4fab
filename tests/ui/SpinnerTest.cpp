#include <QAccessible>
#include <QImage>

#include <gtest/gtest.h>

#include "support/VirtualMainQueue.h"
#include "ui/Pictures.h"
#include "ui/Spinner.h"
#include "ui/Spokes.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

class SpinnerTest : public testing::Test {
protected:
    const Looks looks{Scheme::light};
    VirtualMainQueue queue;
    Spinner spinner{queue};
};

TEST_F(SpinnerTest, TurnsWhileItIsShown) {
    spinner.show();
    std::vector<QImage> positions{Pictures::render(spinner)};
    for (int step = 1; step < Spokes::count; ++step) {
        queue.advance(125ms);
        for (const QImage& before : positions)
            EXPECT_NE(Pictures::render(spinner), before) << step;
        positions.push_back(Pictures::render(spinner));
    }
    queue.advance(125ms);
    EXPECT_EQ(Pictures::render(spinner), positions.front()) << "a whole turn";
}

TEST_F(SpinnerTest, CostsNothingWhileItIsHidden) {
    EXPECT_EQ(queue.armed(), 0U);
    spinner.show();
    EXPECT_EQ(queue.armed(), 1U);
    spinner.hide();
    EXPECT_EQ(queue.armed(), 0U);
}

TEST_F(SpinnerTest, IsSmallAndAnAnimationToThoseWhoDoNotSeeIt) {
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&spinner)->role(), QAccessible::Animation);
    EXPECT_EQ(spinner.size(), QSize(16, 16));
}

}  // namespace
}  // namespace valdorn
