#pragma once

#include <QString>
#include <algorithm>

#include "ui/log/LogRows.h"

namespace valdorn {

// The text caret in a log and the text between it and where the selection began. Knows lines by their
// number and keeps up with them when the list changes. Main thread only.
class LogSelection {
public:
    // Where the next movement or selection goes out from.
    LogPosition caret() const { return caret_; }

    bool isEmpty() const { return anchor_ == caret_; }
    // The ends of the selected text, in order; equal when nothing is selected.
    LogPosition first() const { return std::min(anchor_, caret_); }
    LogPosition last() const { return std::max(anchor_, caret_); }

    // Puts the caret somewhere and selects nothing.
    void place(LogPosition position) { anchor_ = caret_ = position; }

    // Moves the caret; what lies between it and where the selection began is selected.
    void extendTo(LogPosition position) { caret_ = position; }

    // The list has changed: both ends stay with their lines. The end in a line that is gone moves
    // to the beginning of the next line that is left, or to the end of all.
    void keepUp(const LogLines& before, const LogRows& after);

    // The selected text as it stands in the log, lines joined by line feeds.
    QString text(const LogRows& rows) const;

private:
    LogPosition anchor_;
    LogPosition caret_;
};

}  // namespace valdorn
