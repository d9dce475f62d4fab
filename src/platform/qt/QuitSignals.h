#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <array>
#include <csignal>
#include <functional>
#include <memory>

namespace valdorn {

// Tells once, on the main thread, that the program is asked to end from outside: by SIGTERM,
// SIGINT or SIGHUP, or because the desktop session ends. A logout is never held up.
//
// Some sessions end by simply taking the display away. Qt then leaves the process by std::exit(),
// past the event loop and whatever stands behind it: that is told as well.
//
// One object per process at a time. A SIGHUP that whoever started us had switched off (nohup)
// stays off. Destruction restores what the signals did before.
class QuitSignals : public QObject {
public:
    // `onQuit` is called from the event loop and is expected to end it, or from within std::exit().
    // The application object exists before and outlives this.
    explicit QuitSignals(std::function<void()> onQuit);
    ~QuitSignals() override;

    // The program is ending by its own decision: nothing is told any more, and further signals
    // change nothing.
    void disarm() { onQuit_ = nullptr; }

private:
    void openPipe();
    void installHandlers();
    void tell();

    static constexpr std::array<int, 3> signals_{SIGTERM, SIGINT, SIGHUP};

    std::function<void()> onQuit_;  // empty once told
    std::array<int, 2> pipe_{-1, -1};
    std::array<struct sigaction, 3> before_{};  // in the order of signals_
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace valdorn
