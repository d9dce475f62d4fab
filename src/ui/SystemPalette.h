#pragma once

#include <QColor>

#include "platform/SystemColor.h"

class QPalette;
class QWidget;

namespace valdorn {

// The named colours on the desktop's own palette, light or dark. Pure functions, but for the first;
// any thread.
namespace SystemPalette {

// What the widget stands on: the palette that it would have if none were set on it. Main thread only.
QPalette around(const QWidget& widget);

// True when the palette writes light text on dark windows.
bool isDark(const QPalette& palette);

// True when the palette has next to nothing but black and white, as people choose it who need all the
// contrast there is: then nothing is to be quiet.
bool isHighContrast(const QPalette& palette);

// The colour as it is on something dark, whatever the palette; `secondary` is a middle grey.
QColor darkVariant(SystemColor color);

// The colour for dots and symbols on a window of that palette: the named one, moved towards the
// text's until it stands out by at least 3:1, with high contrast 4.5:1.
QColor dot(SystemColor color, const QPalette& palette);

// The colour for text: the same, until it stands out by at least 4.5:1, with high contrast 7:1.
QColor text(SystemColor color, const QPalette& palette);

// The colour for what is disabled where contrast is high; desktops leave it as good as invisible.
QColor disabledText(const QPalette& palette);

// The colour for lines and edges that part things, at that share (0 to 1) of the way from the
// window's colour to the text's; with high contrast it is the text's.
QColor line(const QPalette& palette, double share);

// The colour for text on the ground of text fields and lists.
QColor textOnBase(SystemColor color, const QPalette& palette);

// What lies that share (0 to 1) of the way from one colour to the other.
QColor mixed(const QColor& from, const QColor& to, double share);

// How much two opaque colours stand out from each other, 1 to 21 (relative luminance as in WCAG 2).
double contrast(const QColor& one, const QColor& other);

}  // namespace SystemPalette

}  // namespace valdorn
