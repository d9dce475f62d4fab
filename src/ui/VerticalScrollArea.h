#pragma once

#include <QScrollArea>

namespace valdorn {

// Content that scrolls when it is higher than the window, without a frame or a ground of its own,
// and never sideways: the area is never narrower than its content can be. It follows the keyboard.
// Main thread only.
class VerticalScrollArea : public QScrollArea {
    Q_OBJECT

public:
    // Takes the content over.
    explicit VerticalScrollArea(QWidget* content);

    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace valdorn
