#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "logs/LevelFilter.h"
#include "logs/LogLine.h"
#include "logs/LogTailer.h"
#include "platform/DeferredUpdate.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "text/CaseFold.h"

namespace valdorn {

// What the log window shows of a tailer's lines: the ones that pass a text and a level, and whether
// the newest is to be kept in view. Main thread only.
//
// The tailer announces a change before it is stored; this one takes it in by a task on the queue,
// once for all changes of a turn. A change of the query or the level applies at once.
class LogViewer {
public:
    enum class Scrolling {
        keep,    // the place stays as it is
        toLast,  // the last line comes into view, at the bottom
    };
    // Called after filtered() has changed.
    using Observer = std::function<void(Scrolling)>;

    // The queue outlives it.
    LogViewer(MainQueue& queue, std::shared_ptr<LogTailer> tailer,
              CaseFold fold) VALDORN_ON_MAIN_THREAD;
    LogViewer(const LogViewer&) = delete;
    LogViewer& operator=(const LogViewer&) = delete;

    // The lines that pass, in the tailer's order.
    const LogLines& filtered() const VALDORN_ON_MAIN_THREAD { return filtered_; }

    // The last line comes into view when the number of filtered lines has changed, is not zero, and
    // following is on. Turning it on scrolls nothing by itself. Lines that replace as many others keep
    // the place: the rows move up beneath the reader, and while rows are equally high the end stays
    // where it is, so that whoever looks at it goes on seeing the newest line.
    [[nodiscard]] Subscription onFilteredChanged(Observer observer) VALDORN_ON_MAIN_THREAD {
        return observers_.subscribe(std::move(observer));
    }

    const std::string& query() const VALDORN_ON_MAIN_THREAD { return query_; }
    LevelFilter level() const VALDORN_ON_MAIN_THREAD { return level_; }
    bool follow() const VALDORN_ON_MAIN_THREAD { return follow_; }

    // The text to look for, whatever its case; the empty one is in every line.
    void setQuery(std::string query) VALDORN_ON_MAIN_THREAD;
    void setLevel(LevelFilter level) VALDORN_ON_MAIN_THREAD;
    void setFollow(bool follow) VALDORN_ON_MAIN_THREAD { follow_ = follow; }

    // Begins and ends following the file.
    void start() VALDORN_ON_MAIN_THREAD { tailer_->start(); }
    void stop() VALDORN_ON_MAIN_THREAD { tailer_->stop(); }

    // Takes all lines away until new ones come or start() reads the file again.
    void clear() VALDORN_ON_MAIN_THREAD { tailer_->clear(); }

    // The lines of the tailer that pass now, joined by line feeds, without one at the end.
    std::string text() const VALDORN_ON_MAIN_THREAD;

private:
    // Takes in what has become of the tailer's lines; looks at the new ones only.
    void update() VALDORN_ON_MAIN_THREAD;
    // Looks at every line of the tailer.
    void filterAnew() VALDORN_ON_MAIN_THREAD;

    // How many of lines_, from the first, the tailer has no more. What it has got follows the rest.
    std::size_t droppedLines() const VALDORN_ON_MAIN_THREAD;
    // How many of the first `count` of lines_ are in filtered_.
    std::ptrdiff_t filteredAmongFirst(std::size_t count) const VALDORN_ON_MAIN_THREAD;
    // Makes lines_ the tailer's, and keys_ theirs.
    void takeLines(std::size_t dropped) VALDORN_ON_MAIN_THREAD;
    bool everyLinePasses() const VALDORN_ON_MAIN_THREAD;
    // Adds those of lines_, beginning with the one at `first`, that pass.
    void appendPassing(LogLines::List& shown, std::size_t first) const VALDORN_ON_MAIN_THREAD;
    void show(LogLines shown) VALDORN_ON_MAIN_THREAD;

    const std::shared_ptr<LogTailer> tailer_;
    const CaseFold fold_;
    std::string query_ VALDORN_MAIN_THREAD_ONLY;
    CaseFold::Key queryKey_ VALDORN_MAIN_THREAD_ONLY;
    LevelFilter level_ VALDORN_MAIN_THREAD_ONLY = LevelFilter::all;
    bool follow_ VALDORN_MAIN_THREAD_ONLY = true;
    LogLines lines_ VALDORN_MAIN_THREAD_ONLY;                   // what filtered_ was taken from
    std::vector<CaseFold::Key> keys_ VALDORN_MAIN_THREAD_ONLY;  // of lines_, while there is a query
    LogLines filtered_ VALDORN_MAIN_THREAD_ONLY;
    ObserverList<Scrolling> observers_;
    DeferredUpdate update_;
    Subscription linesSubscription_;
};

}  // namespace valdorn
