#pragma once

#include <QWidget>

#include "platform/SystemColor.h"

namespace valdorn {

// A runner's status as a coloured dot, for the eye that runs down the window. Those who cannot see
// the colour have the status's title, as its accessible name and beside it. Main thread only.
class StatusDot : public QWidget {
    Q_OBJECT

public:
    static constexpr int diameter = 10;

    StatusDot();

    void setStatus(SystemColor color, const QString& title);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SystemColor color_ = SystemColor::secondary;
};

}  // namespace valdorn
