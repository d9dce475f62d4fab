#pragma once

#include <memory>

#include "platform/qt/HostedWindow.h"
#include "support/MemoryFileSystem.h"
#include "support/RecordingPasteboard.h"
#include "support/RecordingWorkspace.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {

class LogViewerView;

// The log window as the program opens it, with a log of some lines of every level.
class LogStage {
public:
    LogStage();
    ~LogStage();

    void show();

    VirtualMainQueue queue;
    MemoryFileSystem files;
    RecordingPasteboard pasteboard;
    RecordingWorkspace workspace;
    std::unique_ptr<HostedWindow> window;
    LogViewerView* view = nullptr;  // the window's
};

}  // namespace valdorn
