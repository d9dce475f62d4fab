#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "ui/TextStyle.h"

namespace valdorn {

// Keeps a widget in one of our text styles when the desktop's font changes: a widget with a font of
// its own is not told, but its parent is. Main thread only.
class StyledFont : public QObject {
    Q_OBJECT

public:
    // Owned by the widget.
    StyledFont(QWidget& widget, TextStyle style, QFont::Weight weight = QFont::Normal);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void followParent();
    void apply();

    QWidget& widget_;
    const TextStyle style_;
    const QFont::Weight weight_;
    QPointer<QWidget> parent_;
};

}  // namespace valdorn
