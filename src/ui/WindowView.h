#pragma once

#include <QSize>
#include <QWidget>

namespace valdorn {

// The content of one of the program's windows. The window is made once and then closed and opened
// again; being minimised in between is neither. Main thread only.
class WindowView : public QWidget {
    Q_OBJECT

public:
    // At least that large, in device-independent pixels, and larger where its content needs it.
    explicit WindowView(QSize leastSize);

    QSize minimumSizeHint() const override;

protected:
    // Called each time the window has been opened, and each time it has been closed.
    virtual void appeared() {}
    virtual void vanished() {}

    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    const QSize leastSize_;
};

}  // namespace valdorn
