#pragma once

#include <QColor>

#include "platform/SystemColor.h"

class QPalette;

namespace valdorn {

// The named colours on the desktop's own palette, light or dark. Pure functions; any thread.
namespace SystemPalette {

// True when the palette writes light text on dark windows.
bool isDark(const QPalette& palette);

// The colour as it is on something dark, whatever the palette; `secondary` is a middle grey.
QColor darkVariant(SystemColor color);

// The colour for dots and symbols on a window of that palette: the named one, moved towards the
// text's until it stands out by at least 3:1.
QColor dot(SystemColor color, const QPalette& palette);

// The colour for text: the same, until it stands out by at least 4.5:1.
QColor text(SystemColor color, const QPalette& palette);

// The palette for what stands on the ground of text fields and lists in place of the window's.
QPalette onBase(const QPalette& palette);

// What lies that share (0 to 1) of the way from one colour to the other.
QColor mixed(const QColor& from, const QColor& to, double share);

// How much two opaque colours stand out from each other, 1 to 21 (relative luminance as in WCAG 2).
double contrast(const QColor& one, const QColor& other);

}  // namespace SystemPalette

}  // namespace valdorn
