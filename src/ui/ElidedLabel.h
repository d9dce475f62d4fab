#pragma once

#include "ui/StyledLabel.h"

namespace valdorn {

// One line of text that gives way: where it does not fit, its middle is left out and the whole text
// is the tooltip. Line breaks in it are blanks to the eye; the accessible text is the whole text as
// it is. Main thread only.
class ElidedLabel : public StyledLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(TextStyle style, std::optional<SystemColor> color = std::nullopt,
                         QFont::Weight weight = QFont::Normal);

    // What stands there now, with "…" where something is left out.
    QString shownText() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    int widthOf(const QString& line) const;
};

}  // namespace valdorn
