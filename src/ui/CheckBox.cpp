#include "ui/CheckBox.h"

#include "ui/StrongFrame.h"

namespace valdorn {

CheckBox::CheckBox(const QString& title) : QCheckBox(title) {
    new StrongFrame(*this, StrongFrame::Where::darkWindows);
}

}  // namespace valdorn
