#pragma once

#include <QFont>

namespace valdorn {

// The sizes of text by which views speak; each follows the desktop's own font, and none is ever
// smaller than 8 points. Main thread only.
enum class TextStyle { body, title2, title3, callout, caption };

namespace TextStyles {

// The desktop's font in that style.
QFont font(TextStyle style, QFont::Weight weight = QFont::Normal);

// The desktop's fixed-pitch family in the size of that style.
QFont monospaced(TextStyle style);

}  // namespace TextStyles

}  // namespace valdorn
