#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ui/StatusMark.h"
#include "ui/SystemPalette.h"
#include "ui/TrayDrawing.h"

namespace valdorn {
namespace {

constexpr int sizes[] = {16, 22, 24};  // what bars usually ask for

struct State {
    std::string name;
    QIcon icon;
};

std::vector<State> allStates() {
    return {{"stopped", TrayDrawing::icon({"bird", SystemColor::secondary, ""})},
            {"starting", TrayDrawing::icon({"bird", SystemColor::yellow, ""})},
            {"no network", TrayDrawing::icon({"bird", SystemColor::red, ""})},
            {"connected", TrayDrawing::icon({"bird.fill", SystemColor::green, ""})},
            {"building", TrayDrawing::spinner(0, 24)}};
}

QImage drawn(const QIcon& icon, int pixels) {
    return icon.pixmap(QSize(pixels, pixels)).toImage().convertToFormat(QImage::Format_ARGB32);
}

QImage onPanel(const QIcon& icon, int pixels, const QColor& panel) {
    QImage image(pixels, pixels, QImage::Format_RGB32);
    image.fill(panel);
    QPainter(&image).drawImage(0, 0, drawn(icon, pixels));
    return image;
}

template <typename Predicate>
double shareOfPixels(const QImage& image, Predicate holds) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += holds(x, y) ? 1 : 0;
    }
    return static_cast<double>(count) / (image.width() * image.height());
}

// Without any colour: what is more solid than not in one of them, and not in the other.
double differenceInShape(const QIcon& one, const QIcon& other, int pixels) {
    const QImage first = drawn(one, pixels);
    const QImage second = drawn(other, pixels);
    const auto isSolid = [](const QImage& image, int x, int y) {
        return qAlpha(image.pixel(x, y)) >= 128;
    };
    return shareOfPixels(
        first, [&](int x, int y) { return isSolid(first, x, y) != isSolid(second, x, y); });
}

TEST(TrayDrawingTest, StatesAreToldApartByTheirShapeAlone) {
    constexpr double plainlyAnother = 0.05;  // a dozen pixels on the smallest
    const std::vector<State> states = allStates();
    for (const int pixels : sizes) {
        for (std::size_t one = 0; one < states.size(); ++one) {
            for (std::size_t other = one + 1; other < states.size(); ++other)
                EXPECT_GE(differenceInShape(states[one].icon, states[other].icon, pixels),
                          plainlyAnother)
                    << states[one].name << " and " << states[other].name << " at " << pixels;
        }
    }
}

TEST(TrayDrawingTest, EveryStateStandsOutFromLightAndDarkBars) {
    // The thin lines of a little bird; of the spinner, most spokes fade.
    constexpr double bird = 0.08;
    constexpr double spinner = 0.03;
    constexpr double contrast = 3.0;
    for (const QColor panel : {QColor(Qt::white), QColor(0xEF, 0xEF, 0xEF),
                               QColor(0x20, 0x20, 0x24), QColor(Qt::black)}) {
        for (const auto& [name, icon] : allStates()) {
            for (const int pixels : sizes) {
                const QImage seen = onPanel(icon, pixels, panel);
                EXPECT_GE(shareOfPixels(seen,
                                        [&](int x, int y) {
                                            return SystemPalette::contrast(seen.pixelColor(x, y),
                                                                           panel) >= contrast;
                                        }),
                          name == "building" ? spinner : bird)
                    << name << " at " << pixels << " on " << panel.name().toStdString();
            }
        }
    }
}

TEST(TrayDrawingTest, MarksAreSharpAndKeepClearOfTheBird) {
    for (const auto& [color, symbol] :
         {std::pair(SystemColor::yellow, "bird"), std::pair(SystemColor::red, "bird")}) {
        const QIcon icon = TrayDrawing::icon({symbol, color, ""});
        for (const int pixels : sizes) {
            const QImage image = drawn(icon, pixels);
            const StatusMark mark = StatusMark::of(color, pixels);
            ASSERT_GE(mark.parts.size(), 2U);
            for (const QRect& part : mark.parts) {
                EXPECT_TRUE(image.rect().contains(part));
                for (int y = part.top(); y <= part.bottom(); ++y) {
                    for (int x = part.left(); x <= part.right(); ++x)
                        EXPECT_EQ(image.pixelColor(x, y), SystemPalette::darkVariant(color));
                }
            }
            // The corner of the room around it, which is the bird's where there is no mark.
            EXPECT_LT(qAlpha(image.pixel(mark.ground.topLeft())), 128);
        }
    }
}

TEST(TrayDrawingTest, PartsOfAMarkStayApart) {
    for (const SystemColor color : {SystemColor::yellow, SystemColor::red}) {
        for (const int pixels : {16, 22, 24, 32, 48}) {
            const std::vector<QRect> parts = StatusMark::of(color, pixels).parts;
            for (std::size_t index = 1; index < parts.size(); ++index)
                EXPECT_FALSE(parts[index].adjusted(-1, -1, 1, 1).intersects(parts[index - 1]));
        }
    }
}

TEST(TrayDrawingTest, StatusThatAsksForNothingHasNoMark) {
    for (const SystemColor color : {SystemColor::secondary, SystemColor::green})
        EXPECT_TRUE(StatusMark::of(color, 16).parts.empty());
}

}  // namespace
}  // namespace valdorn
