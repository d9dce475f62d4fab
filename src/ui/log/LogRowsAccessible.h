#pragma once

#include <QAccessibleTextInterface>
#include <QAccessibleWidget>
#include <cstdint>
#include <optional>
#include <vector>

#include "ui/log/LogRows.h"

namespace valdorn {

class LogRowsView;

// The log as a screen reader sees it: one read-only text, line by line, with the caret and the
// selection. Main thread only.
class LogRowsAccessible : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    // Lets Qt find this for every LogRowsView; may be called again.
    static void install();

    explicit LogRowsAccessible(LogRowsView& view);

    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;

    int characterCount() const override;
    QString text(int startOffset, int endOffset) const override;
    using QAccessibleWidget::text;
    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    int selectionCount() const override;
    void selection(int selectionIndex, int* startOffset, int* endOffset) const override;
    void addSelection(int startOffset, int endOffset) override;
    void removeSelection(int selectionIndex) override;
    void setSelection(int selectionIndex, int startOffset, int endOffset) override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint& point) const override;
    void scrollToSubstring(int startIndex, int endIndex) override;
    QString attributes(int offset, int* startOffset, int* endOffset) const override;

private:
    const std::vector<int>& lineOffsets() const;
    int offsetOf(LogPosition position) const;
    LogPosition positionOf(int offset) const;

    LogRowsView& view_;
    mutable std::optional<std::uint64_t> revision_;  // of the rows that the offsets belong to
    mutable std::vector<int> lineOffsets_;           // where each line begins, and the end of all
};

}  // namespace valdorn
