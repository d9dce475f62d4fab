#pragma once

class QHelpEvent;
class QString;
class QWidget;

namespace valdorn::ToolTips {

// The answer to the pointer that rests on a text from outside: the whole text, as
// PlainText::toolTip() has it, where the widget leaves something out, and else nothing. Main thread
// only.
void answer(const QHelpEvent& event, QWidget& widget, const QString& text, bool isCut);

}  // namespace valdorn::ToolTips
