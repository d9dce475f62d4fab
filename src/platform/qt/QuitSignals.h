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
// or on Wayland by a warning and _exit(), past the event loop and whatever stands behind it: that is
// told as well.
//
// One object per process at a time. A SIGHUP that whoever started us had switched off (nohup)
// stays off. From destruction on the signals are ignored: the program is about to end, and a second
// signal must not cut short how it lets go of its children.
class QuitSignals : public QObject {
public:
    // `onQuit` is called from the event loop and is expected to end it. When the process leaves in
    // one of the other ways instead, `onQuit` and then `onExit` are called from within that;
    // `onExit` lets go of what otherwise the end of main does, and the process ends there. The
    // application object exists before and outlives this, and so does whatever message handler
    // there is.
    QuitSignals(std::function<void()> onQuit, std::function<void()> onExit);
    ~QuitSignals() override;

    // The program is ending by its own decision: nothing is told any more, and further signals
    // change nothing.
    void disarm() { onQuit_ = nullptr; }

    // Whether the process is leaving in one of the other ways: then the event loop may not be asked
    // for anything any more, as what Qt keeps of it for each thread may be gone.
    bool isPastEventLoop() const { return isPastEventLoop_; }

private:
    void openPipe();
    void installHandlers();
    void tell();
    [[noreturn]] void leave();
    static void onMessage(QtMsgType type, const QMessageLogContext& context, const QString& text);

    static constexpr std::array<int, 3> signals_{SIGTERM, SIGINT, SIGHUP};

    std::function<void()> onQuit_;  // empty once told
    bool isPastEventLoop_ = false;
    const std::function<void()> onExit_;
    std::array<int, 2> pipe_{-1, -1};
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace valdorn
