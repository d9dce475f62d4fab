#include <QApplication>
#include <QImage>
#include <QWidget>
#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "support/RecordingPasteboard.h"
#include "support/VirtualMainQueue.h"
#include "ui/Pictures.h"
#include "ui/SystemPalette.h"
#include "ui/log/LogRowsView.h"

namespace valdorn {
namespace {

// Rows that believe to be on a screen of that scale.
class ScaledRows : public LogRowsView {
public:
    ScaledRows(MainQueue& queue, Pasteboard& pasteboard, double scale, QWidget* parent)
        : LogRowsView(queue, pasteboard, parent), scale_(scale) {}

protected:
    int metric(PaintDeviceMetric metric) const override {
        if (metric == PdmDevicePixelRatioScaled)
            return static_cast<int>(scale_ * devicePixelRatioFScale());
        return LogRowsView::metric(metric);
    }

private:
    const double scale_;
};

class LogRowsFrameTest : public testing::Test {
protected:
    // How much the line at each edge stands out from both its sides.
    std::array<double, 4> frame(double scale, QRect place) {
        QWidget window;
        window.resize(240, 140);
        auto* const rows = new ScaledRows(queue, pasteboard, scale, &window);
        rows->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        rows->setGeometry(place);
        window.show();
        const QImage seen = Pictures::render(window, scale);
        const auto across = [&](QPointF edge, QPoint step) {
            return lineAcross(seen, (edge * scale).toPoint(), step);
        };
        const QRectF around(place);
        const QPointF middle = around.center();
        return {across({around.left(), middle.y()}, {1, 0}),
                across({around.right(), middle.y()}, {1, 0}),
                across({middle.x(), around.top()}, {0, 1}),
                across({middle.x(), around.bottom()}, {0, 1})};
    }

    static double lineAcross(const QImage& seen, QPoint edge, QPoint step) {
        const QPalette palette = QApplication::palette();
        double most = 0;
        for (int at = -3; at <= 3; ++at) {
            const QColor pixel = seen.pixelColor(edge + at * step);
            most = std::max(
                most, std::min(SystemPalette::contrast(pixel, palette.color(QPalette::Window)),
                               SystemPalette::contrast(pixel, palette.color(QPalette::Base))));
        }
        return most;
    }

    // Edges on whole pixels of that scale, and between them.
    static constexpr QRect places[] = {{10, 10, 200, 100}, {11, 11, 201, 101}};

    VirtualMainQueue queue;
    RecordingPasteboard pasteboard;
};

TEST_F(LogRowsFrameTest, IsWholeWhereAPointIsNoWholeNumberOfPixels) {
    for (const Scheme scheme : {Scheme::light, Scheme::dark}) {
        const Looks looks(scheme);
        for (const QRect& place : places)
            for (const double edge : frame(1.5, place))
                EXPECT_GE(edge, 1.3) << suffixOf(scheme);
    }
}

TEST_F(LogRowsFrameTest, IsAboutAsDarkThereAsTheStylesOwn) {
    const Looks looks(Scheme::light);
    const double usual = frame(1, places[0])[0];
    for (const QRect& place : places)
        for (const double edge : frame(1.5, place))
            EXPECT_NEAR(edge, usual, 0.2 * usual);
}

}  // namespace
}  // namespace valdorn
