#pragma once

#include <QAbstractScrollArea>
#include <QPoint>
#include <functional>
#include <optional>

#include "platform/MainQueue.h"
#include "ui/log/LogDrag.h"
#include "ui/log/LogLineLayouts.h"
#include "ui/log/LogPlaces.h"
#include "ui/log/LogRows.h"
#include "ui/log/LogSelection.h"

class QPainter;

namespace valdorn {

class Pasteboard;

// Lines of a log as coloured rows of small fixed-pitch text, of which only the visible ones are laid
// out. Text is selected with the mouse and the keyboard across rows, and copied by the usual keys or
// the context menu. Main thread only.
class LogRowsView : public QAbstractScrollArea {
    Q_OBJECT

public:
    // The queue and the pasteboard outlive it.
    LogRowsView(MainQueue& queue, Pasteboard& pasteboard, QWidget* parent = nullptr);
    ~LogRowsView() override;

    const LogRows& rows() const { return rows_; }
    const LogSelection& selection() const { return selection_; }

    // Replaces the lines. The scroll position stays where it is, in pixels from the top, as far as
    // there are that many; the selection stays with its lines.
    void setLines(LogLines lines);

    // Brings the last line to the bottom of what is visible.
    void scrollToLast();

    // Whether the end stays in view when the view becomes too low for all of it.
    void setKeepsEnd(bool keepsEnd) { keepsEnd_ = keepsEnd; }

    void copySelection();
    void selectAll();
    // Selects from one position to another, and puts the caret there.
    void select(LogPosition anchor, LogPosition caret);

    // Scrolls no further than it takes to see the position.
    void ensureVisible(LogPosition position);

    // Where a position stands, and which one stands at a place, both in the viewport.
    QRect caretRect(LogPosition position) const;
    std::optional<LogPosition> positionAt(QPointF place) const;

protected:
    void initStyleOption(QStyleOptionFrame* option) const override;
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    std::int64_t scrolled() const;
    void layOutAnew(const std::function<void()>& change);
    void updateScrollBar();
    void completeFrame();
    void drawFocusFrame(QPainter& painter) const;
    void drawCaret(QPainter& painter) const;
    void move(LogMotion motion, bool extend);
    bool isInView(LogPosition position) const;
    void fetchCaret(bool fromBelow);
    void announceCaret();
    void beginDrag(QPointF place, LogPosition position, LogUnit unit);
    void extendToDrag();
    bool isTripleClick(const QMouseEvent& event) const;

    MainQueue& queue_;  // for its clock
    Pasteboard& pasteboard_;
    LogRows rows_;
    LogLineLayouts layouts_;  // of rows_, as they are seen
    LogSelection selection_;
    std::optional<qreal> columnX_;  // what moving up and down keeps to
    LogDrag drag_;
    LogUnit dragUnit_ = LogUnit::character;
    bool keepsEnd_ = false;
    std::optional<MainQueue::TimePoint> doubleClicked_;
    QPointF doubleClickPlace_;
};

}  // namespace valdorn
