#pragma once

#include <QString>
#include <string_view>

namespace valdorn {

// Texts from outside (names, labels, what a child printed), shown as the characters they are.
// Lengths are in UTF-16 units. Pure functions; any thread.
namespace PlainText {

// What is kept of a line at either end. Even narrow letters take 3 points: twice as many fill a
// line of 6000, which is wider than any window.
inline constexpr qsizetype endLength = 1000;

// The most of a text that a tooltip tells: a dozen lines, which still is less than a screen.
inline constexpr qsizetype toolTipLength = 1000;

// The text of UTF-8, with every character that is in it.
QString fromUtf8(std::string_view text);

// The text on one line: each line break becomes a blank.
QString oneLine(QString text);

// The text, or of one that is longer than both ends together just these, with "…" between them.
// Cuts between two characters, unless a single one is longer than an end.
QString shortened(const QString& text);

// The text, or its beginning with "…", as a tooltip, in which Qt would take "<b>" for markup. A
// long one wraps.
QString toolTip(const QString& text);

}  // namespace PlainText

}  // namespace valdorn
