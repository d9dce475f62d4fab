#pragma once

#include <functional>
#include <memory>
#include <string>

#include "logs/LogViewer.h"
#include "platform/Observable.h"
#include "ui/WindowView.h"

class QHBoxLayout;

namespace valdorn {

class LogRowsView;
class MainQueue;
class Pasteboard;
class Workspace;

// What the log window needs from outside; all of it outlives the view.
struct LogViewerEnvironment {
    MainQueue& queue;
    Pasteboard& pasteboard;
    Workspace& workspace;
    // Where the log is at this moment, for opening it with another program: the window itself stays
    // with the file that it was made for.
    std::function<std::string()> logPath;
};

// The log window: the last lines of a log, narrowed down by a text and a level, the newest kept in
// view. While it is shown, it follows the file; each time it appears, it reads the file anew. What
// was chosen is kept while it is hidden. Main thread only.
class LogViewerView : public WindowView {
    Q_OBJECT

public:
    LogViewerView(LogViewerEnvironment environment, std::unique_ptr<LogViewer> viewer);
    ~LogViewerView() override;

protected:
    void appeared() override;
    void vanished() override;

private:
    void addFilter(QHBoxLayout& bar);
    void addLevel(QHBoxLayout& bar);
    void addFollow(QHBoxLayout& bar);
    void addButtons(QHBoxLayout& bar);
    void showFiltered(LogViewer::Scrolling scrolling);

    const LogViewerEnvironment environment_;
    const std::unique_ptr<LogViewer> viewer_;
    LogRowsView* const rows_;  // a child
    Subscription subscription_;
};

}  // namespace valdorn
