#pragma once

#include <QFocusFrame>
#include <QObject>
#include <QPointer>

namespace valdorn {

// Where contrast is high, draws a ring in the text's colour around the control that has the
// keyboard: the style tells it by the tint of a frame, which is lost where all frames are strong.
// Elsewhere the style's own way stays. Follows the desktop's palette. Main thread only.
class FocusRing : public QObject {
    Q_OBJECT

public:
    // Looks after all controls in the window; owned by it.
    explicit FocusRing(QWidget& window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void surround(QWidget* control);

    QWidget& window_;
    QPointer<QFocusFrame> frame_;  // while there is need of one; goes with the control's parent
};

}  // namespace valdorn
