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

    bool isEmpty() const { return anchor() == caret_; }
    // The ends of the selected text, in order; equal when nothing is selected.
    LogPosition first() const { return std::min(anchor(), caret_); }
    LogPosition last() const { return std::max(anchor(), caret_); }

    // Puts the caret somewhere and selects nothing.
    void place(LogPosition position) { begin(position, position); }

    // Selects a word or a line, which stays selected whichever way the selection is extended.
    void begin(LogPosition from, LogPosition to) {
        anchorBegin_ = from;
        anchorEnd_ = caret_ = to;
    }

    // Moves the caret; what lies between it and where the selection began is selected.
    void extendTo(LogPosition position) { caret_ = position; }

    // Extends by whole words or lines: up to the end of that one which is farther away.
    void extendTo(LogPosition from, LogPosition to) {
        caret_ = from < anchorBegin_ ? from : std::max(to, anchorEnd_);
    }

    // The list has changed: both ends stay with their lines. The end in a line that is gone moves
    // to the beginning of the next line that is left, or to the end of all.
    void keepUp(const LogLines& before, const LogRows& after);

    // The selected text as it stands in the log, lines joined by line feeds.
    QString text(const LogRows& rows) const;

private:
    LogPosition anchor() const { return caret_ < anchorBegin_ ? anchorEnd_ : anchorBegin_; }

    LogPosition anchorBegin_;  // what the selection began with, a word perhaps
    LogPosition anchorEnd_;
    LogPosition caret_;
};

}  // namespace valdorn
