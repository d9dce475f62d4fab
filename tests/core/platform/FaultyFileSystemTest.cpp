#include <algorithm>
#include <cerrno>

#include <gtest/gtest.h>

#include "contracts/FileSystemContract.h"
#include "support/FaultyFileSystem.h"
#include "support/MemoryFileSystem.h"

namespace valdorn {
namespace {

// Without a fault chosen, the decorator is as good as what it decorates.
class FaultlessFixture {
public:
    FaultlessFixture() { memory_.folders.insert("/home/ada"); }
    FileSystem& files() { return files_; }
    std::string folder() { return "/home/ada"; }

private:
    MemoryFileSystem memory_;
    FaultyFileSystem files_{memory_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Faultless, FileSystemContract, FaultlessFixture);

class FaultyFileSystemTest : public testing::Test {
protected:
    // Every counted operation once, in a fixed order; returns the errno of each.
    std::vector<int> doEverything() {
        std::vector<int> errors;
        const auto note = [&errors](const FileOutcome& outcome) {
            errors.push_back(outcome ? outcome->errorNumber : 0);
        };
        const auto read = files.read("/a/file");
        errors.push_back(read.ok() ? 0 : read.error().errorNumber);
        const auto size = files.sizeBytes("/a/file");
        errors.push_back(size.ok() ? 0 : size.error().errorNumber);
        readInParts(errors);
        note(files.makeFolders("/a/b"));
        note(files.replaceContent("/a/plain", "12345678"));
        note(files.replaceAtomically("/a/atomic", "12345678"));
        const auto opened = files.openForAppending("/a/log");
        errors.push_back(opened.ok() ? 0 : opened.error().errorNumber);
        if (opened.ok())
            note(opened.value()->append("12345678"));
        note(files.removeTree("/a/gone"));
        return errors;
    }

    void readInParts(std::vector<int>& errors) {
        const auto reader = files.openForReading("/a/file");
        errors.push_back(reader.ok() ? 0 : reader.error().errorNumber);
        if (!reader.ok())
            return;
        const auto size = reader.value()->sizeBytes();
        errors.push_back(size.ok() ? 0 : size.error().errorNumber);
        const auto part = reader.value()->readAt(0, 4);
        errors.push_back(part.ok() ? 0 : part.error().errorNumber);
    }

    MemoryFileSystem memory;
    FaultyFileSystem files{memory};

    void SetUp() override { memory.files = {{"/a/file", "kept"}, {"/a/gone", ""}}; }
};

TEST_F(FaultyFileSystemTest, FailsJustTheChosenOperation) {
    const std::vector<int> none(11, 0);
    EXPECT_EQ(doEverything(), none);
    EXPECT_EQ(files.operations(), 11);
    EXPECT_EQ(files.faults(), 0);
    for (int number = 1; number <= 11; ++number) {
        SetUp();
        files.failOperation(number, ENOSPC);
        std::vector<int> errors = doEverything();
        ASSERT_GE(errors.size(), static_cast<std::size_t>(number));
        EXPECT_EQ(errors[static_cast<std::size_t>(number) - 1], ENOSPC);
        EXPECT_EQ(std::count(errors.begin(), errors.end(), 0), std::ssize(errors) - 1);
        EXPECT_EQ(files.faults(), 1);
    }
}

TEST_F(FaultyFileSystemTest, AFaultNumberBeyondTheEndIsNeverMet) {
    files.failOperation(12, EIO);
    doEverything();
    EXPECT_EQ(files.operations(), 11);
    EXPECT_EQ(files.faults(), 0);
}

TEST_F(FaultyFileSystemTest, AFullDiskStaysFull) {
    files.failFrom(7, ENOSPC);
    EXPECT_EQ(doEverything(), (std::vector{0, 0, 0, 0, 0, 0, ENOSPC, ENOSPC, ENOSPC, ENOSPC}));
    EXPECT_EQ(files.faults(), 4);
    EXPECT_FALSE(memory.exists("/a/plain"));
    EXPECT_TRUE(memory.exists("/a/gone"));
}

TEST_F(FaultyFileSystemTest, ARefusalOfChangesLetsReadingGoOn) {
    files.failChanges(EROFS);
    EXPECT_EQ(doEverything(), (std::vector{0, 0, 0, 0, 0, EROFS, EROFS, EROFS, EROFS, EROFS}));
    files.failOperation(0, 0);
    EXPECT_EQ(doEverything(), std::vector(11, 0));
}

TEST_F(FaultyFileSystemTest, AFailingWriteMayLeaveHalfOfItself) {
    files.failOperation(1, ENOSPC, FaultyFileSystem::Damage::half);
    EXPECT_TRUE(files.replaceContent("/a/plain", "12345678"));
    EXPECT_EQ(memory.files["/a/plain"], "1234");

    files.failOperation(2, ENOSPC, FaultyFileSystem::Damage::half);
    const auto opened = files.openForAppending("/a/log");
    ASSERT_TRUE(opened.ok());
    EXPECT_TRUE(opened.value()->append("12345678"));
    EXPECT_EQ(memory.files["/a/log"], "1234");
    EXPECT_FALSE(opened.value()->append("!"));
    EXPECT_EQ(memory.files["/a/log"], "1234!");
}

TEST_F(FaultyFileSystemTest, AFailingAtomicWriteLeavesTheOldFile) {
    files.failOperation(1, ENOSPC, FaultyFileSystem::Damage::half);
    EXPECT_TRUE(files.replaceAtomically("/a/file", "12345678"));
    EXPECT_EQ(memory.files["/a/file"], "kept");
}

}  // namespace
}  // namespace valdorn
