#pragma once

#include <QString>
#include <Qt>

namespace valdorn {

// Texts of a language that is written from left to right, on a desktop that is read from right to
// left: the layout turns, and the texts are not to be garbled by it. Pure functions; any thread.
namespace TextFlow {

// What a text begins with that follows another one in a line: a middle dot and a blank.
inline constexpr QLatin1String separator("\xb7 ");

// The text as it stands in a layout of that direction, from left to right: its separator is on the
// side of what it follows.
QString inPlace(Qt::LayoutDirection layout, const QString& text);

// How to draw it, among QPainter's flags: with `alignment` as the layout has it, and the text the way
// it is written, so that its full stop stays at its end.
int flags(Qt::LayoutDirection layout, Qt::Alignment alignment, const QString& text);

// For who draws as the layout goes and takes no flags: the same text, held together by marks that
// nobody sees.
QString marked(Qt::LayoutDirection layout, const QString& text);

}  // namespace TextFlow

}  // namespace valdorn
