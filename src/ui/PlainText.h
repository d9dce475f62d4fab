#pragma once

#include <QString>

namespace valdorn {

// Texts from outside (names, labels, what a child printed), shown as the characters they are.
// Pure functions; any thread.
namespace PlainText {

// The text on one line: each line break becomes a blank.
QString oneLine(QString text);

// The text as a tooltip, in which Qt would take "<b>" for markup.
QString toolTip(const QString& text);

}  // namespace PlainText

}  // namespace valdorn
