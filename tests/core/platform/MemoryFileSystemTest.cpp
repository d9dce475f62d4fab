#include <cerrno>

#include <gtest/gtest.h>

#include "contracts/FileSystemContract.h"
#include "support/MemoryFileSystem.h"

namespace valdorn {
namespace {

class MemoryFixture {
public:
    MemoryFixture() { files_.folders.insert("/home/ada"); }
    FileSystem& files() { return files_; }
    std::string folder() { return "/home/ada"; }

private:
    MemoryFileSystem files_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, FileSystemContract, MemoryFixture);

using Paths = std::vector<std::string>;

TEST(MemoryFileSystemTest, TheFoldersAboveAnEntryAreThere) {
    MemoryFileSystem files;
    files.files["/a/b/file"] = "x";
    EXPECT_TRUE(files.exists("/a/b"));
    EXPECT_FALSE(files.replaceContent("/a/b/other", "y"));
    EXPECT_EQ(files.files["/a/b/other"], "y");
    EXPECT_FALSE(files.removeTree("/a/b/other"));
    EXPECT_FALSE(files.removeTree("/a/b/file"));
    EXPECT_TRUE(files.exists("/a/b"));
}

TEST(MemoryFileSystemTest, RecordsWhatIsAskedForInOrder) {
    MemoryFileSystem files;
    files.folders.insert("/a");
    EXPECT_FALSE(files.read("/a/1").ok());
    EXPECT_FALSE(files.openForReading("/a/1b").ok());
    EXPECT_FALSE(files.replaceContent("/a/2", ""));
    EXPECT_FALSE(files.replaceAtomically("/a/3", ""));
    EXPECT_TRUE(files.replaceAtomically("/none/4", ""));
    EXPECT_FALSE(files.makeFolders("/a/5"));
    EXPECT_FALSE(files.removeTree("/a/6"));
    EXPECT_TRUE(files.openForAppending("/a/7").ok());
    EXPECT_EQ(files.reads, (Paths{"/a/1", "/a/1b"}));
    EXPECT_EQ(files.contentReplacements, Paths{"/a/2"});
    EXPECT_EQ(files.atomicReplacements, (Paths{"/a/3", "/none/4"}));
    EXPECT_EQ(files.foldersMade, Paths{"/a/5"});
    EXPECT_EQ(files.treesRemoved, Paths{"/a/6"});
    EXPECT_EQ(files.appendsOpened, Paths{"/a/7"});
}

TEST(MemoryFileSystemTest, WhateverIsDoneAtAFailingPathFails) {
    MemoryFileSystem files;
    files.files["/a/file"] = "kept";
    auto opened = files.openForAppending("/a/file");
    const auto reader = files.openForReading("/a/file");
    ASSERT_TRUE(opened.ok() && reader.ok());
    files.failures["/a/file"] = EIO;
    EXPECT_EQ(files.openForReading("/a/file").error().errorNumber, EIO);
    EXPECT_EQ(reader.value()->sizeBytes().error().errorNumber, EIO);
    EXPECT_EQ(reader.value()->readAt(0, 1).error().errorNumber, EIO);
    EXPECT_EQ(files.read("/a/file").error().errorNumber, EIO);
    EXPECT_EQ(files.sizeBytes("/a/file").error().errorNumber, EIO);
    EXPECT_EQ(files.openForAppending("/a/file").error().errorNumber, EIO);
    EXPECT_EQ(files.replaceContent("/a/file", "x")->errorNumber, EIO);
    EXPECT_EQ(files.replaceAtomically("/a/file", "x")->errorNumber, EIO);
    EXPECT_EQ(files.makeFolders("/a/file")->errorNumber, EIO);
    EXPECT_EQ(files.removeTree("/a/file")->errorNumber, EIO);
    EXPECT_EQ(opened.value()->append("x")->errorNumber, EIO);
    EXPECT_EQ(files.files["/a/file"], "kept");
}

TEST(MemoryFileSystemTest, CountsOpenHandles) {
    MemoryFileSystem files;
    {
        const auto first = files.openForAppending("/file");
        const auto second = files.openForAppending("/file");
        const auto reader = files.openForReading("/file");
        EXPECT_EQ(files.openHandles(), 3);
    }
    EXPECT_EQ(files.openHandles(), 0);
    EXPECT_FALSE(files.openForAppending("/none/file").ok());
    EXPECT_EQ(files.openHandles(), 0);
}

TEST(MemoryFileSystemTest, AHandleAppendsUnseenWhenATestTakesTheFileAway) {
    MemoryFileSystem files;
    const auto opened = files.openForAppending("/file");
    ASSERT_TRUE(opened.ok());
    files.files.erase("/file");
    EXPECT_FALSE(opened.value()->append("unseen"));
    EXPECT_FALSE(files.exists("/file"));
}

TEST(MemoryFileSystemTest, AReaderFindsNothingWhenATestTakesTheFileAway) {
    MemoryFileSystem files;
    files.files["/file"] = "taken";
    const auto opened = files.openForReading("/file");
    ASSERT_TRUE(opened.ok());
    files.files.erase("/file");
    EXPECT_EQ(opened.value()->sizeBytes().value(), 0U);
    EXPECT_EQ(opened.value()->readAt(0, 10).value(), "");
    EXPECT_FALSE(files.replaceAtomically("/file", "another"));
    EXPECT_EQ(opened.value()->readAt(0, 10).value(), "");
}

}  // namespace
}  // namespace valdorn
