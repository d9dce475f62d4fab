#include <cerrno>

#include <gtest/gtest.h>

#include "platform/ChildLauncher.h"

namespace valdorn {
namespace {

using Step = LaunchError::Step;

TEST(LaunchErrorTest, TellsTheStepItsSubjectAndTheReason) {
    EXPECT_EQ((LaunchError{Step::execute, ENOENT, "/a/b"}).description(),
              "The executable could not be started: /a/b: No such file or directory");
    EXPECT_EQ((LaunchError{Step::workingFolder, EACCES, "/a"}).description(),
              "The working folder could not be entered: /a: Permission denied");
}

TEST(LaunchErrorTest, LeavesOutWhatIsNotKnown) {
    EXPECT_EQ((LaunchError{Step::prepare, EMFILE, ""}).description(),
              "The process could not be created: Too many open files");
    EXPECT_EQ((LaunchError{Step::interrupted, 0, ""}).description(), "The program is quitting");
}

}  // namespace
}  // namespace valdorn
