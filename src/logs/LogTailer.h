#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "logs/LogLine.h"
#include "logs/LogTail.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"

namespace valdorn {

// Follows a log file and publishes its last lines. Main thread only; files are read where it stands:
// a look costs the new bytes only, and reading anew the last maxLines lines at most; bench/ measures
// how little that is.
//
// Observers are told before a change is stored, and only when there are new lines or the list is
// replaced. While nobody has started it, nothing is armed.
class LogTailer : public Observable, public std::enable_shared_from_this<LogTailer> {
    struct Key {};

public:
    // The bound on lines(): what a window can usefully scroll through.
    static constexpr std::size_t maxLines = 5000;

    // How often a followed file is looked at.
    static constexpr std::chrono::milliseconds pollPeriod{1000};

    // Reads nothing yet. The queue and the files outlive it.
    static std::shared_ptr<LogTailer> create(MainQueue& queue, const FileSystem& files,
                                             std::string path);

    LogTailer(Key, MainQueue& queue, const FileSystem& files, std::string path);
    LogTailer(const LogTailer&) = delete;
    LogTailer& operator=(const LogTailer&) = delete;

    const LogLines& lines() const VALDORN_ON_MAIN_THREAD { return lines_.get(); }

    // Reads the file as a whole, then looks every pollPeriod for what is new, for as long as the
    // tailer lives or until stop(). The owner stops a started tailer before starting it again:
    // otherwise the earlier polling goes on beside the new one. A tailer does not end what it was not
    // asked to end; the owner alone knows whether that polling is still wanted.
    void start() VALDORN_ON_MAIN_THREAD;

    // Ends the polling that was started last; harmless when there is none. The lines stay.
    void stop() VALDORN_ON_MAIN_THREAD;

    // Replaces the lines by the last of the file.
    void reload() VALDORN_ON_MAIN_THREAD;

    // Takes in what was appended to the file since.
    void poll() VALDORN_ON_MAIN_THREAD;

    // Empties the list. The file is not touched, and what was read stays read.
    void clear() VALDORN_ON_MAIN_THREAD;

private:
    MainQueue& queue_;
    LogTail tail_ VALDORN_MAIN_THREAD_ONLY;
    Published<LogLines> lines_;
    ScheduledTask timer_ VALDORN_MAIN_THREAD_ONLY;
};

}  // namespace valdorn
