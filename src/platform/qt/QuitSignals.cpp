#include "platform/qt/QuitSignals.h"

#include <QGuiApplication>
#include <QSessionManager>
#include <QThread>
#include <atomic>
#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace valdorn {

namespace {

// Where the handler writes to; a signal handler has nothing but globals to know it from.
std::atomic<int> wakeUpPipe{-1};
static_assert(std::atomic<int>::is_always_lock_free);

// Where Qt's messages go to.
std::atomic<QtMessageHandler> handlerBefore;

// Whom the end of the process is told to; null while there is nobody. Changed on the main thread
// and with the lock.
QuitSignals* present = nullptr;
std::mutex presence;

// A thread of Qt's has said farewell and waits for the main thread to leave. With the lock.
bool isLeaving = false;

void onSignal(int) {
    const int savedError = errno;
    const char byte = 0;
    // A full pipe means that the wake-up is already on its way.
    [[maybe_unused]] const auto written = write(wakeUpPipe, &byte, 1);
    errno = savedError;
}

// Qt's last words (those of 6.4) when the Wayland compositor has gone. It leaves by _exit() then, so
// there is nothing else to know it from.
bool isFarewell(const QString& text) {
    return text.startsWith(QLatin1String("The Wayland connection broke.")) ||
           text.startsWith(QLatin1String("The Wayland connection experienced a fatal error"));
}

// From now on nobody is told. Returns whether somebody has been before, and waits.
bool withdraw() {
    const std::lock_guard lock(presence);
    present = nullptr;
    return isLeaving;
}

}  // namespace

QuitSignals::QuitSignals(std::function<void()> onQuit, std::function<void()> onExit)
    : onQuit_(std::move(onQuit)), onExit_(std::move(onExit)) {
    // First, as it may throw: an object that never was must not stand in `present`.
    openPipe();
    {
        const std::lock_guard lock(presence);
        assert(!present);
        present = this;
    }
    [[maybe_unused]] static const int registered = std::atexit([] {
        if (present)
            present->leave();
    });
    installHandlers();
    // Known before ours is called, which may be at once: Qt's threads speak, too.
    handlerBefore = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(onMessage);
    // The session manager asks first whether all is saved (nothing to do, nothing to object to)
    // and ends the program afterwards, when no other program has cancelled the logout. With the
    // autostart entry there is no need to be restored as well; it hears that at its first question
    // already, which comes at the start and counts for a session that ends without another one.
    const auto refuseRestart = [](QSessionManager& manager) {
        manager.setRestartHint(QSessionManager::RestartNever);
    };
    connect(qGuiApp, &QGuiApplication::saveStateRequest, this, refuseRestart, Qt::DirectConnection);
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, refuseRestart,
            Qt::DirectConnection);
    connect(qGuiApp, &QGuiApplication::aboutToQuit, this, [this] { tell(); });
}

QuitSignals::~QuitSignals() {
    for (const int number : signals_)
        std::signal(number, SIG_IGN);
    qInstallMessageHandler(handlerBefore);
    if (withdraw())
        leave();
    wakeUpPipe = -1;
    notifier_.reset();
    close(pipe_[0]);
    close(pipe_[1]);
}

void QuitSignals::openPipe() {
    if (pipe2(pipe_.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    wakeUpPipe = pipe_[1];
    notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> bytes{};
        while (read(pipe_[0], bytes.data(), bytes.size()) > 0) {
        }
        tell();
    });
}

void QuitSignals::installHandlers() {
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : signals_) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        if (number != SIGHUP || before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

void QuitSignals::tell() {
    if (const auto onQuit = std::exchange(onQuit_, nullptr))
        onQuit();
}

// On the thread that has something to say. Qt's farewell comes from the main one, or from the one
// that reads from the compositor, which would end the process as soon as this returned.
void QuitSignals::onMessage(QtMsgType type, const QMessageLogContext& context,
                            const QString& text) {
    handlerBefore.load()(type, context, text);
    if (!isFarewell(text))
        return;
    if (QThread::currentThread() == qGuiApp->thread()) {
        if (present)
            present->leave();
        return;
    }
    {
        const std::lock_guard lock(presence);
        if (!present)
            return;
        isLeaving = true;
        QMetaObject::invokeMethod(
            present, [] { present->leave(); }, Qt::QueuedConnection);
    }
    for (;;)
        pause();
}

void QuitSignals::leave() {
    isPastEventLoop_ = true;
    tell();
    onExit_();
    // What is still to be destroyed belongs to an event loop that will not come back.
    std::_Exit(EXIT_FAILURE);
}

}  // namespace valdorn
