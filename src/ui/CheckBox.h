#pragma once

#include <QCheckBox>

namespace valdorn {

// A check box whose frame can be seen on dark windows, too: Qt's own style frames it darker than the
// window, which on a dark one is next to nothing. Main thread only.
class CheckBox : public QCheckBox {
    Q_OBJECT

public:
    explicit CheckBox(const QString& title);

protected:
    void changeEvent(QEvent* event) override;

private:
    void reframe();
};

}  // namespace valdorn
