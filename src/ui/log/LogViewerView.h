#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "logs/LogViewer.h"
#include "platform/Observable.h"

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
    // Where the log is at this moment, for opening it with another program.
    std::function<std::string()> logPath;
};

// The log window: the last lines of a log, narrowed down by a text and a level, the newest kept in
// view. While it is shown, it follows the file; each time it appears, it reads the file anew. What
// was chosen is kept while it is hidden. Main thread only.
class LogViewerView : public QWidget {
    Q_OBJECT

public:
    LogViewerView(LogViewerEnvironment environment, std::unique_ptr<LogViewer> viewer,
                  QWidget* parent = nullptr);
    ~LogViewerView() override;

    // 660 by 400 points at the usual font.
    QSize minimumSizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void addFilter(QHBoxLayout& bar);
    void addButtons(QHBoxLayout& bar);
    void showFiltered(LogViewer::Scrolling scrolling);

    const LogViewerEnvironment environment_;
    const std::unique_ptr<LogViewer> viewer_;
    LogRowsView* const rows_;  // a child
    Subscription subscription_;
};

}  // namespace valdorn
