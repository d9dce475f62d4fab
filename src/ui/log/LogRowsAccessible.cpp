#include "ui/log/LogRowsAccessible.h"

#include <algorithm>
#include <limits>

#include "ui/log/LogRowsView.h"

namespace valdorn {

namespace {

QAccessibleInterface* make(const QString&, QObject* object) {
    auto* const view = qobject_cast<LogRowsView*>(object);
    return view ? new LogRowsAccessible(*view) : nullptr;
}

}  // namespace

void LogRowsAccessible::install() {
    QAccessible::installFactory(make);
}

LogRowsAccessible::LogRowsAccessible(LogRowsView& view)
    : QAccessibleWidget(&view, QAccessible::EditableText), view_(view) {}

void* LogRowsAccessible::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State LogRowsAccessible::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

const std::vector<int>& LogRowsAccessible::lineOffsets() const {
    const LogRows& rows = view_.rows();
    if (revision_ == rows.revision())
        return lineOffsets_;
    lineOffsets_.assign(1, 0);
    // Offsets are what they are in Qt: beyond their range there is no further text to be read out.
    constexpr qsizetype furthest = std::numeric_limits<int>::max();
    for (std::size_t line = 0; line < rows.lines().size(); ++line) {
        const qsizetype end = lineOffsets_.back() + rows.shown(line).size() + 1;
        lineOffsets_.push_back(static_cast<int>(std::min(end, furthest)));
    }
    revision_ = rows.revision();
    return lineOffsets_;
}

int LogRowsAccessible::offsetOf(LogPosition position) const {
    const qsizetype offset = lineOffsets().at(position.line) + position.at;
    return static_cast<int>(std::min<qsizetype>(offset, std::numeric_limits<int>::max()));
}

LogPosition LogRowsAccessible::positionOf(int offset) const {
    const std::vector<int>& offsets = lineOffsets();
    const int within = std::clamp(offset, 0, characterCount());
    const auto next = std::upper_bound(offsets.begin() + 1, offsets.end(), within);
    const LogPosition last = view_.rows().end();
    return std::min(last,
                    {static_cast<std::size_t>(next - offsets.begin()) - 1, within - *(next - 1)});
}

int LogRowsAccessible::characterCount() const {
    return std::max(lineOffsets().back() - 1, 0);
}

QString LogRowsAccessible::text(int startOffset, int endOffset) const {
    const LogRows& rows = view_.rows();
    if (rows.lines().empty() || startOffset >= endOffset)
        return {};
    const LogPosition first = positionOf(startOffset);
    const LogPosition last = positionOf(endOffset);
    QString text;
    for (std::size_t line = first.line; line <= last.line; ++line) {
        const QString shown = rows.shown(line);
        const qsizetype from = line == first.line ? first.at : 0;
        text += line == last.line ? shown.mid(from, last.at - from)
                                  : shown.mid(from) + QLatin1Char('\n');
    }
    return text;
}

int LogRowsAccessible::cursorPosition() const {
    return offsetOf(view_.selection().caret());
}

void LogRowsAccessible::setCursorPosition(int position) {
    view_.select(positionOf(position), positionOf(position));
    view_.ensureVisible(positionOf(position));
}

int LogRowsAccessible::selectionCount() const {
    return view_.selection().isEmpty() ? 0 : 1;
}

void LogRowsAccessible::selection(int selectionIndex, int* startOffset, int* endOffset) const {
    const bool isThere = selectionIndex == 0 && selectionCount() > 0;
    *startOffset = isThere ? offsetOf(view_.selection().first()) : 0;
    *endOffset = isThere ? offsetOf(view_.selection().last()) : 0;
}

void LogRowsAccessible::addSelection(int startOffset, int endOffset) {
    setSelection(0, startOffset, endOffset);
}

void LogRowsAccessible::removeSelection(int selectionIndex) {
    if (selectionIndex == 0)
        view_.select(view_.selection().caret(), view_.selection().caret());
}

void LogRowsAccessible::setSelection(int selectionIndex, int startOffset, int endOffset) {
    if (selectionIndex == 0)
        view_.select(positionOf(startOffset), positionOf(endOffset));
}

QRect LogRowsAccessible::characterRect(int offset) const {
    const QRect begin = view_.caretRect(positionOf(offset));
    const QRect end = view_.caretRect(positionOf(offset + 1));
    QRect character = begin;
    if (end.top() == begin.top())
        character.setRight(std::max(end.left() - 1, begin.left()));
    return character.translated(view_.viewport()->mapToGlobal(QPoint()));
}

int LogRowsAccessible::offsetAtPoint(const QPoint& point) const {
    const auto position = view_.positionAt(view_.viewport()->mapFromGlobal(point));
    return position ? offsetOf(*position) : 0;
}

void LogRowsAccessible::scrollToSubstring(int startIndex, int endIndex) {
    view_.ensureVisible(positionOf(endIndex));
    view_.ensureVisible(positionOf(startIndex));
}

QString LogRowsAccessible::attributes(int, int* startOffset, int* endOffset) const {
    *startOffset = 0;
    *endOffset = characterCount();
    return {};
}

}  // namespace valdorn
