#pragma once

#include <QWidget>

namespace valdorn {

// A line of one point between what stands above and below it, or left and right of it: a quiet shade
// between the window and its text. It says nothing, so it has no name to be read out and never gets
// the keyboard. Main thread only.
class Divider : public QWidget {
    Q_OBJECT

public:
    // A horizontal one lies between what is above and below it. As long as there is room.
    explicit Divider(Qt::Orientation orientation);

    static constexpr int thickness = 1;

    QSize sizeHint() const override { return {thickness, thickness}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace valdorn
