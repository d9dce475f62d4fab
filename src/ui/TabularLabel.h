#pragma once

#include <QWidget>

#include "platform/SystemColor.h"
#include "ui/TextStyle.h"

namespace valdorn {

// A counter: one line of plain text whose digits all take the same room, so that nothing moves while
// it counts, not even what it leaves to its neighbours. A change that keeps the room repaints this
// widget and nothing else. Main thread only.
class TabularLabel : public QWidget {
    Q_OBJECT

public:
    TabularLabel(TextStyle style, SystemColor color);

    const QString& text() const { return text_; }
    // The text is the accessible name, too.
    void setText(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const SystemColor color_;
    QString text_;
};

}  // namespace valdorn
