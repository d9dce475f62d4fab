#pragma once

#include <QPushButton>

namespace valdorn {

// A button for a row in which room is short: as wide as its title and the same air on both sides of
// it, where styles leave a long title next to none and make a short one wider than it must be. Never
// narrower than the style can draw it. Main thread only.
class RowButton : public QPushButton {
    Q_OBJECT

public:
    explicit RowButton(const QString& title = {});

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
};

}  // namespace valdorn
