#pragma once

#include <QLabel>
#include <optional>

#include "platform/SystemColor.h"
#include "ui/TextStyle.h"

namespace valdorn {

// Plain text in one of our styles and colours, which follows the desktop when font or palette
// change. The colour is made to stand out from what the parent stands on. Main thread only.
class StyledLabel : public QLabel {
    Q_OBJECT

public:
    // Without a colour the text is the palette's.
    explicit StyledLabel(TextStyle style, std::optional<SystemColor> color = std::nullopt,
                         QFont::Weight weight = QFont::Normal);

    void setColor(std::optional<SystemColor> color);

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void recolor();

    std::optional<SystemColor> color_;
};

}  // namespace valdorn
