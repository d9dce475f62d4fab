#pragma once

#include <QCheckBox>

namespace valdorn {

// A check box whose frame can be seen on dark windows, too. Main thread only.
class CheckBox : public QCheckBox {
    Q_OBJECT

public:
    explicit CheckBox(const QString& title);
};

}  // namespace valdorn
