#pragma once

#include <QApplication>
#include <QEvent>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>

#include <unistd.h>

#include "logs/LogTailer.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtWorkspace.h"
#include "ui/log/LogRowsView.h"
#include "ui/log/LogViewerView.h"

namespace valdorn {

// An open log window, as the program makes it, on the screen that Qt has. Counts its paintings.
class LogWindow : public QObject {
public:
    explicit LogWindow(const std::string& path) : tailer(LogTailer::create(queue, files, path)) {
        view = std::make_unique<LogViewerView>(
            LogViewerEnvironment{queue, pasteboard, workspace, [path] { return path; }},
            std::make_unique<LogViewer>(queue, tailer, CaseFold("")));
        rows = view->findChild<LogRowsView*>();
        rows->viewport()->installEventFilter(this);
        view->resize(720, 460);
        view->show();
        settle();
    }

    // Everything that is posted is done and painted.
    void settle() {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        paintings += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

    PosixFileSystem files;
    QtMainQueue queue;
    QtPasteboard pasteboard;
    PosixHostInfo host;
    QtWorkspace workspace{host};
    std::shared_ptr<LogTailer> tailer;
    std::unique_ptr<LogViewerView> view;
    LogRowsView* rows = nullptr;
    int paintings = 0;
};

// Nanoseconds that this thread has computed for.
inline long long computedFor() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

inline long residentBytes() {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE);
}

}  // namespace valdorn
