#pragma once

#include "ui/StyledLabel.h"

namespace valdorn {

// A text from outside in a few lines. It breaks between words, and within a word that is wider than
// the label; what is more than the lines hold ends in "…", and the whole text is the tooltip. Line
// breaks in it are blanks to the eye. A text of any length is kept, measured and read out as
// PlainText::shortened() has it. Main thread only.
class WrappedLabel : public StyledLabel {
    Q_OBJECT

public:
    // `mostLines`: at least 1.
    WrappedLabel(TextStyle style, int mostLines);

    void setText(const QString& text);

    // The lines that stand there now.
    QStringList shownLines() const { return laidOut(contentsRect().width()).lines; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Lines {
        QStringList lines;
        int width = 0;       // of the widest
        bool isCut = false;  // there is more than the lines hold
    };
    Lines laidOut(int width) const;

    const int mostLines_;
};

}  // namespace valdorn
