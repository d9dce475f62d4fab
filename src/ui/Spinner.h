#pragma once

#include <QWidget>

#include "platform/MainQueue.h"

namespace valdorn {

// A small wheel that turns for as long as it is shown: something goes on, nobody knows how long.
// Main thread only.
class Spinner : public QWidget {
    Q_OBJECT

public:
    static constexpr int diameter = 16;  // points

    // The queue outlives this.
    explicit Spinner(MainQueue& queue);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void advance();

    MainQueue& queue_;
    ScheduledTask tick_;
    int position_ = 0;
};

}  // namespace valdorn
