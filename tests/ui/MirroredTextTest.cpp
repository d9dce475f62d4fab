#include <QImage>
#include <QVBoxLayout>
#include <QWidget>
#include <functional>

#include <gtest/gtest.h>

#include "ui/ElidedLabel.h"
#include "ui/Pictures.h"
#include "ui/StyledLabel.h"
#include "ui/WrappedLabel.h"
#include "ui/onboarding/RowButton.h"
#include "ui/settings/RunnerList.h"

namespace valdorn {
namespace {

// Where something is drawn on the ground that the picture has in its corner.
QRect inkIn(const QImage& image, const QRect& within) {
    const QRgb ground = image.pixel(within.center().x(), within.top());
    QRect ink;
    for (int y = within.top(); y <= within.bottom(); ++y) {
        for (int x = within.left(); x <= within.right(); ++x) {
            if (image.pixel(x, y) != ground)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

// Whether all that is dark in one has something near it in the other: letters at the other end of a
// line stand at other fractions of a pixel.
bool covers(const QImage& other, const QImage& one) {
    constexpr int dark = 110;
    constexpr int something = 225;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            bool isCovered = qGray(one.pixel(x, y)) > dark;
            for (int near = x - 1; near <= x + 1 && !isCovered; ++near)
                isCovered = other.valid(near, y) && qGray(other.pixel(near, y)) < something;
            if (!isCovered)
                return false;
        }
    }
    return true;
}

// Texts that a layout from right to left would turn inside out, were it to have its way.
class MirroredTextTest : public testing::Test {
protected:
    // The letters that the widget draws in each layout, cut out; `within` gives where they are.
    template <typename Widget>
    void expectTheSameLetters(Widget& widget, const std::function<QRect(bool isMirrored)>& within) {
        widget.resize(300, widget.sizeHint().height());
        const auto letters = [&](bool isMirrored) {
            const QImage image = Pictures::render(widget);
            return image.copy(inkIn(image, within(isMirrored)));
        };
        const QImage usual = letters(false);
        const RightToLeft mirrored;
        const QImage turned = letters(true);
        ASSERT_GT(usual.width(), 20);
        EXPECT_NEAR(turned.width(), usual.width(), 1);
        EXPECT_EQ(turned.height(), usual.height());
        EXPECT_TRUE(covers(turned, usual) && covers(usual, turned));
    }
    template <typename Widget>
    void expectTheSameLetters(Widget& widget) {
        expectTheSameLetters(widget, [&widget](bool) { return widget.rect(); });
    }

    const Looks looks{Scheme::light};
};

TEST_F(MirroredTextTest, PlainLabel) {
    StyledLabel label(TextStyle::body);
    label.setText(QStringLiteral("Add or remove runners (here)."));
    expectTheSameLetters(label);
}

TEST_F(MirroredTextTest, LabelThatGivesWay) {
    ElidedLabel label(TextStyle::body);
    label.setText(QStringLiteral("(nightly) build!"));
    expectTheSameLetters(label);
}

TEST_F(MirroredTextTest, LabelOfSomeLines) {
    WrappedLabel label(TextStyle::body, 3);
    label.setText(QStringLiteral("Error: refused (401)."));
    expectTheSameLetters(label);
}

TEST_F(MirroredTextTest, Button) {
    RowButton button(QStringLiteral("Runner Settings…"));
    expectTheSameLetters(button, [&button](bool) { return button.rect().adjusted(8, 6, -8, -6); });
}

TEST_F(MirroredTextTest, RunnerInTheList) {
    RunnerList list;
    list.setEntries({{"r0", "nightly build!"}}, std::nullopt);
    list.setFixedHeight(60);
    constexpr int symbol = 30;  // with what is around it
    expectTheSameLetters(list, [&list](bool isMirrored) {
        return list.rect().adjusted(isMirrored ? 0 : symbol, 0, isMirrored ? -symbol : 0, 0);
    });
}

}  // namespace
}  // namespace valdorn
