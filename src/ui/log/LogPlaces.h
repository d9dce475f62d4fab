#pragma once

#include <cstdint>
#include <utility>

#include "ui/log/LogRows.h"

namespace valdorn {

// The ways in which the keyboard moves the caret.
enum class LogMotion {
    left,
    right,
    wordLeft,
    wordRight,
    up,
    down,
    pageUp,
    pageDown,
    rowStart,
    rowEnd,
    start,
    end
};

// By what the mouse selects: a double click takes words, a triple click lines.
enum class LogUnit { character, word, line };

// Where places in the text stand on the screen, and where motions lead. Pure functions of the rows;
// places are device-independent pixels from the top left of all. Main thread only.
namespace LogPlaces {

// The row of a line that the position is in: where it stands and which part of the line it shows.
struct Row {
    QString shown;  // the whole line
    qsizetype begin = 0;
    qsizetype end = 0;
    std::int64_t top = 0;
};

// There must be a line.
Row rowOf(const LogRows& rows, LogPosition position);

// How far right the position stands.
qreal xOf(const LogRows& rows, LogPosition position);

// The position nearest to the place.
LogPosition positionAt(const LogRows& rows, qreal x, std::int64_t y);

// The beginning and the end of what stands around the position.
std::pair<LogPosition, LogPosition> unitAt(const LogRows& rows, LogPosition position, LogUnit unit);

// Where the motion leads from there. Up and down keep to `x`; a page is `pagePixels` high.
LogPosition moved(const LogRows& rows, LogPosition position, LogMotion motion, qreal x,
                  int pagePixels);

}  // namespace LogPlaces

}  // namespace valdorn
