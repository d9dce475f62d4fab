#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixSystemLog.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

// Sends this process's standard error to a file until the end of the scope.
class RedirectedStandardError {
public:
    explicit RedirectedStandardError(const std::string& path)
        : before_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    RedirectedStandardError(const RedirectedStandardError&) = delete;
    RedirectedStandardError& operator=(const RedirectedStandardError&) = delete;
    ~RedirectedStandardError() {
        dup2(before_, STDERR_FILENO);
        close(before_);
    }

private:
    const int before_;
};

std::string written(std::string_view line) {
    const TemporaryFolder folder;
    {
        const RedirectedStandardError redirected(folder / "stderr");
        PosixSystemLog().write(line);
    }
    const auto content = PosixFileSystem().read(folder / "stderr");
    return content.ok() ? content.value() : content.error().description();
}

TEST(PosixSystemLogTest, WritesOneLineToStandardError) {
    EXPECT_EQ(written("Valdorn: 100%s of é failed"), "Valdorn: 100%s of é failed\n");
    EXPECT_EQ(written(""), "\n");
}

TEST(PosixSystemLogTest, AControlCharacterDoesNotMakeTwoLines) {
    EXPECT_EQ(written(std::string_view("a\nb\r\tc\0d\x1b[1m\x7f", 13)), "a b  c d [1m \n");
}

TEST(PosixSystemLogTest, AFullStandardErrorIsNoFailure) {
    const RedirectedStandardError full("/dev/full");
    PosixSystemLog().write("lost");
}

}  // namespace
}  // namespace valdorn
