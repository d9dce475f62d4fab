#include "ui/log/LogStage.h"

#include <QTest>
#include <string>

#include <gtest/gtest.h>

#include "app/Windows.h"
#include "ui/log/LogViewerView.h"

namespace valdorn {

namespace {

const std::string path = "/logs/valdorn.log";

const char lines[] =
    "time=\"2026-11-21T10:00:00Z\" level=info msg=\"Starting runner daemon\"\n"
    "time=\"2026-11-21T10:00:01Z\" level=info msg=\"runner: mac-mini, with version: v1.0.8, with "
    "labels: [macos linux], declare successfully\"\n"
    "time=\"2026-11-21T10:02:11Z\" level=info msg=\"task 7 repo is acme/site\"\n"
    "time=\"2026-11-21T10:02:12Z\" level=info msg=\"Running job with maxParallel=1 for 1 matrix "
    "combinations\"\n"
    "time=\"2026-11-21T10:02:19Z\" level=info msg=\"\u2714 finished in 7 s\"\n"
    "time=\"2026-11-21T10:03:40Z\" level=warning msg=\"failed to fetch task\" "
    "error=\"unavailable: dial tcp 10.0.0.7:3000: connect: connection refused\"\n"
    "time=\"2026-11-21T10:03:45Z\" level=error msg=\"cannot report the result\"\n"
    "Error: the runner has stopped\n";

}  // namespace

LogStage::LogStage() {
    files.folders.insert("/logs");
    files.files[path] = lines;
}

LogStage::~LogStage() = default;

void LogStage::show() {
    auto viewer =
        std::make_unique<LogViewer>(queue, LogTailer::create(queue, files, path), CaseFold(""));
    view = new LogViewerView(
        LogViewerEnvironment{queue, pasteboard, workspace, [] { return path; }}, std::move(viewer));
    window = std::make_unique<HostedWindow>(Windows::log(), view);
    window->present();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    queue.runPosted();
}

}  // namespace valdorn
