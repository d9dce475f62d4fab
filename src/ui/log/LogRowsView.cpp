#include "ui/log/LogRowsView.h"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QRegion>
#include <QScrollBar>
#include <QStyleHints>
#include <QStyleOptionFrame>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/Pasteboard.h"
#include "ui/StrongFrame.h"
#include "ui/SystemPalette.h"
#include "ui/TextStyle.h"
#include "ui/log/LogPainter.h"
#include "ui/log/LogRowsAccessible.h"

namespace valdorn {

namespace {

QFont rowFont() {
    return TextStyles::monospaced(TextStyle::caption);
}

struct KeyMotion {
    QKeySequence::StandardKey moving;
    QKeySequence::StandardKey selecting;
    LogMotion motion;
};

constexpr std::array keyMotions{
    KeyMotion{QKeySequence::MoveToPreviousChar, QKeySequence::SelectPreviousChar, LogMotion::left},
    KeyMotion{QKeySequence::MoveToNextChar, QKeySequence::SelectNextChar, LogMotion::right},
    KeyMotion{QKeySequence::MoveToPreviousWord, QKeySequence::SelectPreviousWord,
              LogMotion::wordLeft},
    KeyMotion{QKeySequence::MoveToNextWord, QKeySequence::SelectNextWord, LogMotion::wordRight},
    KeyMotion{QKeySequence::MoveToPreviousLine, QKeySequence::SelectPreviousLine, LogMotion::up},
    KeyMotion{QKeySequence::MoveToNextLine, QKeySequence::SelectNextLine, LogMotion::down},
    KeyMotion{QKeySequence::MoveToPreviousPage, QKeySequence::SelectPreviousPage,
              LogMotion::pageUp},
    KeyMotion{QKeySequence::MoveToNextPage, QKeySequence::SelectNextPage, LogMotion::pageDown},
    KeyMotion{QKeySequence::MoveToStartOfLine, QKeySequence::SelectStartOfLine,
              LogMotion::rowStart},
    KeyMotion{QKeySequence::MoveToEndOfLine, QKeySequence::SelectEndOfLine, LogMotion::rowEnd},
    KeyMotion{QKeySequence::MoveToStartOfDocument, QKeySequence::SelectStartOfDocument,
              LogMotion::start},
    KeyMotion{QKeySequence::MoveToEndOfDocument, QKeySequence::SelectEndOfDocument,
              LogMotion::end}};

bool keepsColumn(LogMotion motion) {
    return motion == LogMotion::up || motion == LogMotion::down || motion == LogMotion::pageUp ||
           motion == LogMotion::pageDown;
}

int toInt(std::int64_t pixels) {
    return static_cast<int>(std::clamp<std::int64_t>(pixels, 0, std::numeric_limits<int>::max()));
}

}  // namespace

LogRowsView::LogRowsView(MainQueue& queue, Pasteboard& pasteboard, QWidget* parent)
    : QAbstractScrollArea(parent),
      queue_(queue),
      pasteboard_(pasteboard),
      rows_(rowFont()),
      drag_(queue, [this](int pixels) {
          verticalScrollBar()->setValue(verticalScrollBar()->value() + pixels);
          extendToDrag();
      }) {
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setBackgroundRole(QPalette::Base);
    verticalScrollBar()->setSingleStep(rows_.wrap().rowHeight());
    new StrongFrame(*verticalScrollBar());
    LogRowsAccessible::install();
}

LogRowsView::~LogRowsView() = default;

void LogRowsView::setLines(LogLines lines) {
    const LogLines before = rows_.setLines(std::move(lines));
    selection_.keepUp(before, rows_);
    updateScrollBar();
    viewport()->update();
}

void LogRowsView::scrollToLast() {
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void LogRowsView::copySelection() {
    if (!selection_.isEmpty())
        pasteboard_.setText(selection_.text(rows_).toStdString());
}

void LogRowsView::selectAll() {
    select({}, rows_.end());
}

void LogRowsView::select(LogPosition anchor, LogPosition caret) {
    selection_.place(anchor);
    selection_.extendTo(caret);
    columnX_.reset();
    viewport()->update();
}

QRect LogRowsView::caretRect(LogPosition position) const {
    if (rows_.lines().empty())
        return {LogRows::paddingPixels, LogRows::paddingPixels, 1, rows_.wrap().rowHeight()};
    const LogPlaces::Row row = LogPlaces::rowOf(rows_, position);
    return {static_cast<int>(LogPlaces::xOf(rows_, position)),
            static_cast<int>(row.top - scrolled()), 1, rows_.wrap().rowHeight()};
}

std::optional<LogPosition> LogRowsView::positionAt(QPointF place) const {
    if (rows_.lines().empty())
        return std::nullopt;
    return LogPlaces::positionAt(rows_, place.x(),
                                 scrolled() + static_cast<std::int64_t>(place.y()));
}

std::int64_t LogRowsView::scrolled() const {
    return verticalScrollBar()->value();
}

void LogRowsView::updateScrollBar() {
    QScrollBar* const bar = verticalScrollBar();
    bar->setPageStep(viewport()->height());
    bar->setRange(0, toInt(rows_.height() - viewport()->height()));
}

// Changes the layout of the same lines; the one at the top stays there, the end stays at the bottom.
void LogRowsView::layOutAnew(const std::function<void()>& change) {
    const bool wasAtEnd =
        scrolled() == verticalScrollBar()->maximum() && (scrolled() > 0 || keepsEnd_);
    const std::size_t line = rows_.lines().empty() ? 0 : rows_.lineAt(scrolled());
    const std::int64_t within = scrolled() - rows_.top(line);
    change();
    layouts_.clear();
    updateScrollBar();
    if (wasAtEnd)
        scrollToLast();
    else
        verticalScrollBar()->setValue(toInt(rows_.top(line) + within));
    viewport()->update();
}

void LogRowsView::initStyleOption(QStyleOptionFrame* option) const {
    QAbstractScrollArea::initStyleOption(option);
    if (const auto source = StrongFrame::source(palette(), StrongFrame::Where::highContrast))
        option->palette.setColor(QPalette::Window, *source);
}

bool LogRowsView::event(QEvent* event) {
    // The usual keys for copying mean the text here, whatever else has them in this window.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* const key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::SelectAll))
            event->accept();
    }
    const bool handled = QAbstractScrollArea::event(event);
    if (event->type() == QEvent::Paint)
        completeFrame();
    return handled;
}

// Where a point is no whole number of pixels, the style's lines lie half outside, and the half that
// is left goes under what the frame is around.
void LogRowsView::completeFrame() {
    constexpr double share = 0.25;  // about as dark as the style's own
    if (devicePixelRatioF() == std::floor(devicePixelRatioF()))
        return;
    const QRect outer = rect();
    const QRect inner = outer.adjusted(1, 1, -1, -1);
    QPainter painter(this);
    for (const QRect& side : QRegion(outer).subtracted(inner))
        painter.fillRect(side, SystemPalette::line(palette(), share));
}

void LogRowsView::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() != QEvent::FontChange)
        return;
    layOutAnew([this] { rows_.setFont(rowFont()); });
    verticalScrollBar()->setSingleStep(rows_.wrap().rowHeight());
}

void LogRowsView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    layOutAnew([this] { rows_.setWidth(viewport()->width()); });
}

void LogRowsView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    LogPainter(painter, palette(), rows_, layouts_, selection_).draw(event->rect(), scrolled());
    if (event->rect().contains(viewport()->rect()))
        layouts_.forgetUnused();
    if (!hasFocus())
        return;
    drawFocusFrame(painter);
    if (!rows_.lines().empty())
        drawCaret(painter);
}

void LogRowsView::drawFocusFrame(QPainter& painter) const {
    // Inside by half its width: on a screen with a fractional scale a line that a pen draws along
    // the edge would lie beyond it in part.
    constexpr double half = 0.5;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2 * half));
    painter.drawRect(QRectF(viewport()->rect()).adjusted(half, half, -half, -half));
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void LogRowsView::drawCaret(QPainter& painter) const {
    const QRect caret = caretRect(selection_.caret());
    painter.fillRect(caret, palette().color(QPalette::Text));
}

void LogRowsView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        return copySelection();
    if (event->matches(QKeySequence::SelectAll))
        return selectAll();
    for (const KeyMotion& key : keyMotions) {
        if (event->matches(key.moving))
            return move(key.motion, false);
        if (event->matches(key.selecting))
            return move(key.motion, true);
    }
    event->ignore();
}

void LogRowsView::move(LogMotion motion, bool extend) {
    if (rows_.lines().empty())
        return;
    if (!extend || selection_.isEmpty())
        fetchCaret(motion == LogMotion::up || motion == LogMotion::pageUp);
    const LogPosition from = selection_.caret();
    const qreal x = columnX_.value_or(LogPlaces::xOf(rows_, from));
    const int page = std::max(viewport()->height() - rows_.wrap().rowHeight(), 1);
    const LogPosition to = LogPlaces::moved(rows_, from, motion, x, page);
    if (extend)
        selection_.extendTo(to);
    else
        selection_.place(to);
    if (keepsColumn(motion))
        columnX_ = x;
    else
        columnX_.reset();
    ensureVisible(to);
    announceCaret();
    viewport()->update();
}

bool LogRowsView::isInView(LogPosition position) const {
    const QRect place = caretRect(position);
    return place.top() < viewport()->height() && place.bottom() >= 0;
}

// A caret that was left behind comes to what is being read, at its nearer end.
void LogRowsView::fetchCaret(bool fromBelow) {
    if (rows_.lines().empty() || isInView(selection_.caret()))
        return;
    const int rowHeight = rows_.wrap().rowHeight();
    const int y =
        fromBelow ? viewport()->height() - LogRows::paddingPixels - rowHeight / 2 : rowHeight / 2;
    selection_.place(*positionAt(QPointF(0, y)));
}

void LogRowsView::ensureVisible(LogPosition position) {
    const QRect place = caretRect(position);
    QScrollBar* const bar = verticalScrollBar();
    const int below = place.bottom() + 1 + LogRows::paddingPixels - viewport()->height();
    if (place.top() < LogRows::paddingPixels)
        bar->setValue(bar->value() + place.top() - LogRows::paddingPixels);
    else if (below > 0)
        bar->setValue(bar->value() + below);
}

// Screen readers speak what the caret comes to.
void LogRowsView::announceCaret() {
    if (!QAccessible::isActive())
        return;
    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(this);
    const QAccessibleTextInterface& text = *accessible->textInterface();
    QAccessibleTextCursorEvent moved(this, text.cursorPosition());
    QAccessible::updateAccessibility(&moved);
    int start = 0;
    int end = 0;
    text.selection(0, &start, &end);
    QAccessibleTextSelectionEvent selected(this, start, end);
    QAccessible::updateAccessibility(&selected);
}

void LogRowsView::mousePressEvent(QMouseEvent* event) {
    const auto position = positionAt(event->position());
    if (event->button() != Qt::LeftButton || !position)
        return;
    if (isTripleClick(*event))
        return beginDrag(event->position(), *position, LogUnit::line);
    if (!event->modifiers().testFlag(Qt::ShiftModifier))
        return beginDrag(event->position(), *position, LogUnit::character);
    drag_.begin(event->position());
    extendToDrag();
}

void LogRowsView::beginDrag(QPointF place, LogPosition position, LogUnit unit) {
    const auto [begin, end] = LogPlaces::unitAt(rows_, position, unit);
    selection_.begin(begin, end);
    dragUnit_ = unit;
    drag_.begin(place);
    columnX_.reset();
    announceCaret();
    viewport()->update();
}

bool LogRowsView::isTripleClick(const QMouseEvent& event) const {
    const std::chrono::milliseconds interval(
        QGuiApplication::styleHints()->mouseDoubleClickInterval());
    return doubleClicked_ && queue_.now() - *doubleClicked_ <= interval &&
           (event.position() - doubleClickPlace_).manhattanLength() <
               QApplication::startDragDistance();
}

void LogRowsView::mouseDoubleClickEvent(QMouseEvent* event) {
    const auto position = positionAt(event->position());
    if (event->button() != Qt::LeftButton || !position)
        return;
    beginDrag(event->position(), *position, LogUnit::word);
    doubleClicked_ = queue_.now();
    doubleClickPlace_ = event->position();
}

void LogRowsView::mouseMoveEvent(QMouseEvent* event) {
    if (!drag_.isUnderWay())
        return;
    drag_.moveTo(event->position(), viewport()->height());
    extendToDrag();
}

void LogRowsView::extendToDrag() {
    const auto position = positionAt(drag_.place());
    if (!position)
        return;
    const auto [begin, end] = LogPlaces::unitAt(rows_, *position, dragUnit_);
    const LogPosition before = selection_.caret();
    selection_.extendTo(begin, end);
    columnX_.reset();
    if (selection_.caret() == before)
        return;
    announceCaret();
    viewport()->update();
}

void LogRowsView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    drag_.end();
    if (!selection_.isEmpty())
        pasteboard_.setSelectedText(selection_.text(rows_).toStdString());
}

void LogRowsView::contextMenuEvent(QContextMenuEvent* event) {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction* const copying =
        menu->addAction(QStringLiteral("Copy"), this, [this] { copySelection(); });
    copying->setShortcut(QKeySequence::Copy);
    copying->setEnabled(!selection_.isEmpty());
    QAction* const selecting =
        menu->addAction(QStringLiteral("Select All"), this, [this] { selectAll(); });
    selecting->setShortcut(QKeySequence::SelectAll);
    selecting->setEnabled(!rows_.lines().empty());
    const bool isAtCaret =
        event->reason() == QContextMenuEvent::Keyboard && isInView(selection_.caret());
    menu->popup(isAtCaret ? viewport()->mapToGlobal(caretRect(selection_.caret()).bottomLeft())
                          : event->globalPos());
}

void LogRowsView::hideEvent(QHideEvent* event) {
    QAbstractScrollArea::hideEvent(event);
    drag_.end();
    layouts_.clear();
}

void LogRowsView::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    const bool isByKey =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isByKey && selection_.isEmpty())
        fetchCaret(true);
    viewport()->update();
}

void LogRowsView::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    drag_.end();  // whoever has the keyboard now may take the mouse as well
    viewport()->update();
}

}  // namespace valdorn
