#include <filesystem>
#include <optional>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/InstanceLock.h"
#include "posix/PosixStage.h"
#include "support/ChildRecorder.h"
#include "support/NoDescriptors.h"
#include "support/TemporaryFolder.h"

namespace valdorn {

namespace {

class InstanceLockTest : public testing::Test {
protected:
    std::string path() const { return folder / "instance.lock"; }

    std::optional<LockRefusal::Kind> refusal() const {
        const auto lock = InstanceLock::acquire(path());
        return lock ? std::nullopt : std::optional(lock.error().kind);
    }

    TemporaryFolder folder;
};

TEST_F(InstanceLockTest, IsHeldByOneOnlyAndGivenBack) {
    {
        const auto lock = InstanceLock::acquire(path());
        ASSERT_TRUE(lock.ok());
        EXPECT_EQ(refusal(), LockRefusal::Kind::held);
        EXPECT_EQ(refusal(), LockRefusal::Kind::held);
    }
    EXPECT_EQ(refusal(), std::nullopt);
}

TEST_F(InstanceLockTest, StaysHeldWhenMoved) {
    auto lock = InstanceLock::acquire(path());
    ASSERT_TRUE(lock.ok());
    const InstanceLock moved = std::move(lock.value());
    EXPECT_EQ(refusal(), LockRefusal::Kind::held);
}

TEST_F(InstanceLockTest, SaysReadablyWhoHoldsIt) {
    const auto lock = InstanceLock::acquire(path());
    const auto second = InstanceLock::acquire(path());
    ASSERT_FALSE(second.ok());
    EXPECT_EQ(second.error().description, "Another instance holds " + path());
}

// Calls between fork and _exit are the kernel's only: other threads may hold locks.
TEST_F(InstanceLockTest, IsNoObstacleOnceItsHolderWasKilled) {
    int ready[2];
    ASSERT_EQ(pipe2(ready, O_CLOEXEC), 0);
    const std::string where = path();
    const pid_t holder = fork();
    ASSERT_GE(holder, 0);
    if (holder == 0) {
        const auto lock = InstanceLock::acquire(where);
        const char answer = lock.ok() ? 'y' : 'n';
        const bool isTold = write(ready[1], &answer, 1) == 1;
        alarm(60);
        while (isTold)
            pause();
        _exit(1);
    }
    char answer = 0;
    ASSERT_EQ(read(ready[0], &answer, 1), 1);
    ASSERT_EQ(answer, 'y');
    EXPECT_EQ(refusal(), LockRefusal::Kind::held);
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    EXPECT_TRUE(std::filesystem::exists(where));
    EXPECT_EQ(refusal(), std::nullopt);
    close(ready[0]);
    close(ready[1]);
}

TEST_F(InstanceLockTest, IsNotKeptByChildrenThatLiveOn) {
    ChildRecorder recorder;
    PosixChildLauncher launcher;
    auto lock = std::make_optional(InstanceLock::acquire(path()));
    ASSERT_TRUE(lock->ok());
    const auto child = launcher.launch(childCommand("hang"), recorder.handlers());
    ASSERT_TRUE(recorder.waitForText("ready"));
    lock.reset();
    EXPECT_EQ(refusal(), std::nullopt);
    child.value()->terminate();
    EXPECT_TRUE(recorder.waitForRelease());
}

TEST_F(InstanceLockTest, IsPrivateAndMarkedToBeKept) {
    const auto lock = InstanceLock::acquire(path());
    struct stat status {};
    ASSERT_EQ(stat(path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 01600u);
}

TEST_F(InstanceLockTest, SaysReadablyWhenItCannotLock) {
    std::filesystem::create_directory(path());
    const auto lock = InstanceLock::acquire(path());
    ASSERT_FALSE(lock.ok());
    EXPECT_EQ(lock.error().kind, LockRefusal::Kind::failed);
    EXPECT_EQ(lock.error().description,
              "The lock file " + path() + " cannot be used: Is a directory");
}

TEST_F(InstanceLockTest, AShortageIsToldFromARefusalForGood) {
    if (!canDoWithoutDescriptors)
        GTEST_SKIP() << whyDescriptorsAreNeeded;
    std::optional<Result<InstanceLock, LockRefusal>> lock;
    {
        const NoDescriptors none;
        lock.emplace(InstanceLock::acquire(path()));
    }
    ASSERT_FALSE(lock->ok());
    EXPECT_TRUE(lock->error().isShortage);

    std::filesystem::create_directory(path());
    EXPECT_FALSE(InstanceLock::acquire(path()).error().isShortage);
}

TEST_F(InstanceLockTest, DoesNotWaitForANamedPipeOrFollowALink) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(refusal(), LockRefusal::Kind::failed);
    std::filesystem::remove(path());
    std::filesystem::create_symlink(folder / "elsewhere", path());
    EXPECT_EQ(refusal(), LockRefusal::Kind::failed);
}

}  // namespace

}  // namespace valdorn
