#pragma once

#include "ui/StyledLabel.h"

namespace valdorn {

// One line of text that gives way: where it does not fit, its middle is left out and the text itself
// is the tooltip. Line breaks in it are blanks to the eye; the accessible text is the text as it is.
// A text of any length is kept, measured and read out as PlainText::shortened() has it. Main thread
// only.
class ElidedLabel : public StyledLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(TextStyle style, std::optional<SystemColor> color = std::nullopt,
                         QFont::Weight weight = QFont::Normal);

    void setText(const QString& text);

    // Gives way no further than to so many characters; at first to a few.
    void setLeastCharacters(int count);

    // What stands there now, with "…" where something is left out.
    QString shownText() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    int widthOf(const QString& line) const;

    int leastCharacters_;
};

}  // namespace valdorn
