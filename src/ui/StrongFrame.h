#pragma once

#include <QColor>
#include <QObject>
#include <optional>

class QPalette;
class QWidget;

namespace valdorn {

// Gives one of the style's own controls a frame that can be seen. Qt's own style draws frames a
// shade darker than the window, which on black is nothing and on white next to nothing. Where
// contrast is high, what the control says can be read while it is disabled, too. Follows the
// desktop's palette. Main thread only.
class StrongFrame : public QObject {
    Q_OBJECT

public:
    enum class Where {
        highContrast,  // elsewhere the control's ground tells it from the window
        darkWindows,   // there, too: for what is nothing but its frame
    };

    // Owned by the control, whose palette's window colour becomes its own.
    explicit StrongFrame(QWidget& control, Where where = Where::highContrast);

    // The window colour that the style makes a good frame of on that palette, where there is need
    // of one.
    static std::optional<QColor> source(const QPalette& around, Where where);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void apply();

    QWidget& control_;
    const Where where_;
};

}  // namespace valdorn
