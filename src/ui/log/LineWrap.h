#pragma once

#include <QFont>
#include <QString>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace valdorn {

// Breaks long lines of a log into rows that fit a width: after blanks where there are any, else
// anywhere between perceived characters. Main thread only.
//
// Made for fixed-pitch fonts, where most characters need not be measured; the others count as wide
// as the font draws them on their own. Widths are device-independent pixels.
class LineWrap {
public:
    // How far apart tab stops are, in characters, counted from the beginning of a row.
    static constexpr int tabColumns = 8;

    // What is shown of a line at the most, in UTF-16 units, "…" at the end of what is cut short. Pages
    // of one line help nobody, and thousands of them would take seconds to be laid out.
    static constexpr qsizetype longestShown = qsizetype{16} * 1024;

    // So many marks on one letter are shown; no writing needs as many, and a font takes seconds for
    // thousands.
    static constexpr int mostMarks = 30;

    explicit LineWrap(const QFont& font);

    const QFont& font() const { return font_; }
    int rowHeight() const { return rowHeight_; }
    // From the top of a row to its base line.
    int ascent() const { return ascent_; }
    qreal columnWidth() const { return column_; }

    // A line as it is drawn, unit by unit the same text: control characters are shown by their
    // symbols, but for tabs and the line ends inside the line, where a new row begins; what would
    // reorder the text, or pile up marks, by U+FFFD.
    static QString shown(std::string_view line);

    // Where the rows of a shown line begin; the first begins at 0. A row has one character at least.
    std::vector<qsizetype> rowStarts(const QString& shown, qreal width) const;

private:
    class Breaker;

    qsizetype passCharacters(const QString& shown, qsizetype at, Breaker& breaker) const;
    qreal advance(const QString& character) const;

    QFont font_;
    qreal column_;
    int rowHeight_;
    int ascent_;
    mutable std::unordered_map<QString, qreal>
        advances_;  // of perceived characters that are not plain ASCII
};

}  // namespace valdorn
