#include <sstream>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "contracts/SystemLogContract.h"
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

class CapturedSystemLog {
public:
    SystemLog& log() { return log_; }

    std::string written() const {
        const auto content = PosixFileSystem().read(folder_ / "stderr");
        return content.ok() ? content.value() : content.error().description();
    }

    std::vector<std::string> lines() const {
        std::vector<std::string> lines;
        std::istringstream text(written());
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    }

private:
    const TemporaryFolder folder_;
    const RedirectedStandardError redirected_{folder_ / "stderr"};
    PosixSystemLog log_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, SystemLogContract, CapturedSystemLog);

TEST(PosixSystemLogTest, AControlCharacterDoesNotMakeTwoLines) {
    CapturedSystemLog captured;
    captured.log().write(std::string_view("a\nb\r\tc\0d\x1b[1m\x7f", 13));
    EXPECT_EQ(captured.written(), "a b  c d [1m \n");
}

TEST(PosixSystemLogTest, AFullStandardErrorIsNoFailure) {
    const RedirectedStandardError full("/dev/full");
    PosixSystemLog().write("lost");
}

}  // namespace
}  // namespace valdorn
