#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QScrollBar>

#include <gtest/gtest.h>

#include "support/RecordingPasteboard.h"
#include "support/VirtualMainQueue.h"
#include "ui/TextStyle.h"
#include "ui/log/LogLineLayouts.h"
#include "ui/log/LogPainter.h"
#include "ui/log/LogRowsView.h"
#include "ui/log/LogWalk.h"

namespace valdorn {
namespace {

// What a painting with nothing laid out before would show.
class LogRowsPaintingTest : public testing::Test {
protected:
    LogRowsPaintingTest() {
        view.resize(300, 120);
        view.show();
    }

    QImage seen() {
        // A widget draws itself as a whole into a picture.
        return view.viewport()->grab().toImage();
    }

    QImage expected() {
        LogLineLayouts none;
        QImage image = view.viewport()->grab().toImage();
        image.fill(view.palette().color(QPalette::Base));
        QPainter painter(&image);
        LogPainter(painter, view.palette(), view.rows(), none, view.selection())
            .draw(view.viewport()->rect(), view.verticalScrollBar()->value());
        painter.end();
        return image;
    }

    LogPosition randomPosition(LogWalk& walk) {
        const std::size_t line = walk.below(view.rows().lines().size());
        const auto length = static_cast<std::size_t>(view.rows().shown(line).size());
        return {line, static_cast<qsizetype>(walk.below(length + 1))};
    }

    void step(LogWalk& walk) {
        switch (walk.below(6)) {
            case 0:
                return view.resize(200 + static_cast<int>(walk.below(3)) * 60, 120);
            case 1:
                return view.verticalScrollBar()->setValue(static_cast<int>(walk.below(400)));
            case 2:
                if (!view.rows().lines().empty())
                    view.select(randomPosition(walk), randomPosition(walk));
                return;
            default:
                walk.step();
                view.setLines(walk.lines);
        }
    }

    VirtualMainQueue queue;
    RecordingPasteboard pasteboard;
    LogRowsView view{queue, pasteboard};
};

TEST_F(LogRowsPaintingTest, ShowsWhatLayingOutEverythingAnewGives) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
        LogWalk walk(seed);
        for (int steps = 0; steps < 60; ++steps) {
            step(walk);
            ASSERT_EQ(seen(), expected()) << "seed " << seed << ", step " << steps;
        }
    }
}

TEST_F(LogRowsPaintingTest, OtherFontIsLaidOutAnew) {
    view.setLines(numberedLines(3));
    const QImage before = seen();
    const QFont font = QApplication::font();
    QFont larger = font;
    larger.setPointSize(2 * font.pointSize());
    QApplication::setFont(larger);
    QCoreApplication::sendPostedEvents();
    EXPECT_NE(seen(), before);
    EXPECT_EQ(seen(), expected());
    QApplication::setFont(font);
}

class LogLineLayoutsTest : public testing::Test {
protected:
    LogLineLayoutsTest() {
        rows.setWidth(400);
        rows.setLines(numberedLines(3));
    }
    const LogRowLayout* layout(std::size_t line) {
        return &layouts.line(rows, line).layout(0, rows.wrap());
    }

    LogRows rows{TextStyles::monospaced(TextStyle::caption)};
    LogLineLayouts layouts;
};

TEST_F(LogLineLayoutsTest, LineThatMovesIsNotLaidOutAgain) {
    const LogRowLayout* const before = layout(2);
    rows.setLines(LogLines::List(rows.lines().begin() + 1, rows.lines().end()));
    EXPECT_EQ(layout(1), before);
}

TEST_F(LogLineLayoutsTest, WhatWasNotDrawnIsForgotten) {
    layout(0);
    layout(1);
    EXPECT_EQ(layouts.size(), 2U);
    layouts.forgetUnused();
    layout(1);
    layouts.forgetUnused();
    EXPECT_EQ(layouts.size(), 1U);
    layouts.clear();
    EXPECT_EQ(layouts.size(), 0U);
}

TEST_F(LogLineLayoutsTest, HoldsOnToNoLineThatIsTakenAway) {
    layout(0);
    const LogLine::weak_type gone = rows.lines().front();
    rows.setLines({});
    EXPECT_TRUE(gone.expired());
}

TEST_F(LogLineLayoutsTest, LaysOutTheLineThatStandsWhereALostOneStood) {
    for (int round = 0; round < 100; ++round) {
        for (const char* const text : {"a", "longer"}) {
            rows.setLines(logLines({text}));
            const LogLineLayouts::Line& line = layouts.line(rows, 0);
            EXPECT_EQ(line.end(0), static_cast<qsizetype>(std::string_view(text).size()));
            rows.setLines({});
        }
    }
}

}  // namespace
}  // namespace valdorn
