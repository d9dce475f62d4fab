#include <gtest/gtest.h>

#include "contracts/PasteboardContract.h"
#include "contracts/SystemLogContract.h"
#include "contracts/WindowHostContract.h"
#include "contracts/WorkspaceContract.h"
#include "support/RecordingPasteboard.h"
#include "support/RecordingSystemLog.h"
#include "support/RecordingWindowHost.h"
#include "support/RecordingWorkspace.h"

namespace valdorn {
namespace {

class RecordedPasteboard {
public:
    Pasteboard& pasteboard() { return pasteboard_; }
    std::string content() const { return pasteboard_.texts.back(); }

private:
    RecordingPasteboard pasteboard_;
};

class RecordedWorkspace {
public:
    Workspace& workspace() { return workspace_; }
    void removePrograms() { workspace_.answer = false; }
    std::vector<std::string> filesOpened() const { return workspace_.filesOpened; }
    std::vector<std::string> urlsOpened() const { return workspace_.urlsOpened; }

private:
    RecordingWorkspace workspace_;
};

class RecordedSystemLog {
public:
    SystemLog& log() { return log_; }
    std::vector<std::string> lines() const { return log_.lines; }

private:
    RecordingSystemLog log_;
};

class RecordedWindowHost {
public:
    WindowHost& host() { return host_; }
    int windowsMade() const { return static_cast<int>(host_.windows.size()); }
    bool isShown(WindowKind kind) const { return host_.open.count(kind) > 0; }
    bool hasKeyboard(WindowKind kind) const { return host_.front() == kind; }
    WindowDescription look(WindowKind kind) const { return host_.windows.at(kind); }
    void closeAsUser(WindowKind kind) { host_.closeAsUser(kind); }

private:
    RecordingWindowHost host_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Recording, PasteboardContract, RecordedPasteboard);
INSTANTIATE_TYPED_TEST_SUITE_P(Recording, WorkspaceContract, RecordedWorkspace);
INSTANTIATE_TYPED_TEST_SUITE_P(Recording, SystemLogContract, RecordedSystemLog);
INSTANTIATE_TYPED_TEST_SUITE_P(Recording, WindowHostContract, RecordedWindowHost);

TEST(RecordingWorkspaceTest, KeepsWhatWasAskedForWhateverTheAnswer) {
    RecordingWorkspace workspace;
    workspace.answer = false;
    EXPECT_FALSE(workspace.openFile("/tmp/log"));
    EXPECT_FALSE(workspace.openUrl("x:y"));
    EXPECT_EQ(workspace.filesOpened, std::vector<std::string>{"/tmp/log"});
    EXPECT_EQ(workspace.urlsOpened, std::vector<std::string>{"x:y"});
}

}  // namespace
}  // namespace valdorn
