#pragma once

#include <QApplication>
#include <QEvent>
#include <memory>
#include <string>

#include "logs/LogTailer.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtWorkspace.h"
#include "support/Measuring.h"
#include "support/Settling.h"
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

}  // namespace valdorn
