#pragma once

#include <QAccessible>

class QWidget;

namespace valdorn::AccessibleRole {

// What a widget of our own making is to those who do not see it: a group, a heading, a graphic. To
// be called before the widget gets a text or a name: from then on Qt keeps what it was. Its name is
// its accessible name; a label without one is called by its text. Main thread only.
void set(QWidget& widget, QAccessible::Role role);

}  // namespace valdorn::AccessibleRole
