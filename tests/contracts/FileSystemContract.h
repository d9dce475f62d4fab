#pragma once

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"

namespace valdorn {

// What every FileSystem does. The fixture has:
//   FileSystem& files();
//   std::string folder();  // absolute; there, and empty
template <typename Fixture>
class FileSystemContract : public testing::Test {
protected:
    FileSystem& files() { return fixture_.files(); }
    std::string at(const std::string& name) { return fixture_.folder() + "/" + name; }

    void put(const std::string& name, std::string_view bytes) {
        ASSERT_FALSE(files().replaceContent(at(name), bytes));
    }

    void makeFolder(const std::string& name) { ASSERT_FALSE(files().makeFolders(at(name))); }

    std::string content(const std::string& name) {
        const auto read = files().read(at(name));
        return read.ok() ? read.value() : "(" + read.error().description() + ")";
    }

    std::unique_ptr<AppendHandle> open(const std::string& name) {
        auto opened = files().openForAppending(at(name));
        return opened.ok() ? std::move(opened.value()) : nullptr;
    }

    static int number(const FileOutcome& outcome) { return outcome ? outcome->errorNumber : 0; }

    template <typename Value>
    static int number(const Result<Value, FileError>& result) {
        return result.ok() ? 0 : result.error().errorNumber;
    }

    // The errors of reading and of writing at the name, in the order of the interface.
    std::vector<int> errorsOfReading(const std::string& path) {
        return {number(files().read(path)), number(files().sizeBytes(path))};
    }
    std::vector<int> errorsOfWriting(const std::string& path) {
        return {number(files().replaceContent(path, "x")),
                number(files().replaceAtomically(path, "x")),
                number(files().openForAppending(path))};
    }

private:
    Fixture fixture_;
};

TYPED_TEST_SUITE_P(FileSystemContract);

TYPED_TEST_P(FileSystemContract, ReadsBackEveryByte) {
    const std::string bytes("line\r\n\0\xff\xc3 end", 13);
    this->put("file", bytes);
    EXPECT_EQ(this->content("file"), bytes);
    const auto size = this->files().sizeBytes(this->at("file"));
    ASSERT_TRUE(size.ok());
    EXPECT_EQ(size.value(), bytes.size());
}

TYPED_TEST_P(FileSystemContract, ReadsBackMoreThanOneCallTakes) {
    std::string bytes;
    for (int i = 0; i < 40000; ++i)
        bytes += std::to_string(i);
    this->put("file", bytes);
    EXPECT_TRUE(this->content("file") == bytes);
}

TYPED_TEST_P(FileSystemContract, AMissingFileIsENOENT) {
    EXPECT_EQ(this->errorsOfReading(this->at("none")), (std::vector{ENOENT, ENOENT}));
    EXPECT_FALSE(this->files().exists(this->at("none")));
}

TYPED_TEST_P(FileSystemContract, AFolderInPlaceOfAFileIsEISDIR) {
    this->makeFolder("folder");
    EXPECT_EQ(this->errorsOfReading(this->at("folder")), (std::vector{EISDIR, EISDIR}));
    EXPECT_EQ(this->errorsOfWriting(this->at("folder")), (std::vector{EISDIR, EISDIR, EISDIR}));
}

TYPED_TEST_P(FileSystemContract, AFileInPlaceOfAFolderIsENOTDIR) {
    this->put("file", "kept");
    const std::string below = this->at("file/below");
    EXPECT_EQ(this->errorsOfReading(below), (std::vector{ENOTDIR, ENOTDIR}));
    EXPECT_EQ(this->errorsOfWriting(below), (std::vector{ENOTDIR, ENOTDIR, ENOTDIR}));
    EXPECT_EQ(this->number(this->files().makeFolders(below)), ENOTDIR);
    EXPECT_EQ(this->number(this->files().makeFolders(below + "/deeper")), ENOTDIR);
    EXPECT_FALSE(this->files().exists(below));
    EXPECT_EQ(this->content("file"), "kept");
}

TYPED_TEST_P(FileSystemContract, WritingMakesNoFolders) {
    const std::string below = this->at("none/file");
    EXPECT_EQ(this->errorsOfWriting(below), (std::vector{ENOENT, ENOENT, ENOENT}));
    EXPECT_FALSE(this->files().exists(this->at("none")));
}

TYPED_TEST_P(FileSystemContract, APathWithANulByteNamesNothing) {
    this->makeFolder("folder");
    this->put("folder/file", "kept");
    const std::string path = this->at("folder/") + std::string("\0file", 5);
    EXPECT_EQ(this->errorsOfReading(path), (std::vector{EINVAL, EINVAL}));
    EXPECT_EQ(this->errorsOfWriting(path), (std::vector{EINVAL, EINVAL, EINVAL}));
    EXPECT_EQ(this->number(this->files().makeFolders(path)), EINVAL);
    EXPECT_EQ(this->number(this->files().removeTree(path)), EINVAL);
    EXPECT_FALSE(this->files().exists(path));
    EXPECT_EQ(this->content("folder/file"), "kept");
}

TYPED_TEST_P(FileSystemContract, AnErrorNamesThePathAndTheReason) {
    const auto read = this->files().read(this->at("none"));
    ASSERT_FALSE(read.ok());
    EXPECT_EQ(read.error().path, this->at("none"));
    EXPECT_EQ(read.error().description(), this->at("none") + ": No such file or directory");
}

TYPED_TEST_P(FileSystemContract, ReplacingContentLeavesNothingOfTheOld) {
    this->put("file", "a long old content");
    this->put("file", "new");
    EXPECT_EQ(this->content("file"), "new");
    this->put("file", "");
    EXPECT_EQ(this->content("file"), "");
}

TYPED_TEST_P(FileSystemContract, ReplacingAtomicallyCreatesAndReplaces) {
    const std::string path = this->at("file");
    EXPECT_FALSE(this->files().replaceAtomically(path, "a long old content"));
    EXPECT_EQ(this->content("file"), "a long old content");
    EXPECT_FALSE(this->files().replaceAtomically(path, "new"));
    EXPECT_EQ(this->content("file"), "new");
}

TYPED_TEST_P(FileSystemContract, ReplacingContentKeepsTheFileThatAHandleHolds) {
    const auto handle = this->open("file");
    ASSERT_TRUE(handle);
    this->put("file", "new ");
    EXPECT_FALSE(handle->append("end"));
    EXPECT_EQ(this->content("file"), "new end");
}

TYPED_TEST_P(FileSystemContract, ReplacingAtomicallyPutsAnotherFileInPlace) {
    const auto handle = this->open("file");
    ASSERT_TRUE(handle);
    EXPECT_FALSE(this->files().replaceAtomically(this->at("file"), "new"));
    EXPECT_FALSE(handle->append("unseen"));
    EXPECT_EQ(this->content("file"), "new");
}

TYPED_TEST_P(FileSystemContract, MakesFoldersWithTheirParents) {
    const std::string path = this->at("a/b/c");
    EXPECT_FALSE(this->files().makeFolders(path));
    EXPECT_TRUE(this->files().exists(path));
    this->put("a/b/c/file", "there");
    EXPECT_EQ(this->content("a/b/c/file"), "there");
}

TYPED_TEST_P(FileSystemContract, AnExistingFolderIsNoError) {
    this->makeFolder("a");
    this->put("a/file", "kept");
    EXPECT_FALSE(this->files().makeFolders(this->at("a")));
    EXPECT_FALSE(this->files().makeFolders("/"));
    EXPECT_EQ(this->content("a/file"), "kept");
}

TYPED_TEST_P(FileSystemContract, AFileInPlaceOfTheFolderToMakeIsEEXIST) {
    this->put("file", "kept");
    EXPECT_EQ(this->number(this->files().makeFolders(this->at("file"))), EEXIST);
    EXPECT_EQ(this->content("file"), "kept");
}

TYPED_TEST_P(FileSystemContract, RemovesAFile) {
    this->put("file", "x");
    this->put("file2", "kept");
    EXPECT_FALSE(this->files().removeTree(this->at("file")));
    EXPECT_FALSE(this->files().exists(this->at("file")));
    EXPECT_EQ(this->content("file2"), "kept");
}

TYPED_TEST_P(FileSystemContract, RemovesAFolderWithAllItHolds) {
    this->makeFolder("a/b/c");
    this->put("a/b/file", "x");
    this->put("a/b.txt", "kept");
    EXPECT_FALSE(this->files().removeTree(this->at("a/b")));
    EXPECT_FALSE(this->files().exists(this->at("a/b")));
    EXPECT_FALSE(this->files().exists(this->at("a/b/c")));
    EXPECT_FALSE(this->files().exists(this->at("a/b/file")));
    EXPECT_EQ(this->content("a/b.txt"), "kept");
}

TYPED_TEST_P(FileSystemContract, RemovingTheLastEntryKeepsTheFolder) {
    this->makeFolder("a");
    this->put("a/file", "x");
    EXPECT_FALSE(this->files().removeTree(this->at("a/file")));
    EXPECT_TRUE(this->files().exists(this->at("a")));
}

TYPED_TEST_P(FileSystemContract, RemovingWhatIsMissingIsNoError) {
    EXPECT_FALSE(this->files().removeTree(this->at("none")));
    EXPECT_FALSE(this->files().removeTree(this->at("none/deeper")));
    this->put("file", "kept");
    EXPECT_FALSE(this->files().removeTree(this->at("file/below")));
    EXPECT_EQ(this->content("file"), "kept");
}

TYPED_TEST_P(FileSystemContract, EntriesOfEachKindExist) {
    this->makeFolder("folder");
    this->put("file", "");
    EXPECT_TRUE(this->files().exists(this->at("folder")));
    EXPECT_TRUE(this->files().exists(this->at("file")));
    EXPECT_FALSE(this->files().exists(this->at("fil")));
}

TYPED_TEST_P(FileSystemContract, OpeningForAppendingCreatesAnEmptyFile) {
    ASSERT_TRUE(this->open("file"));
    EXPECT_EQ(this->content("file"), "");
}

TYPED_TEST_P(FileSystemContract, AppendsAtTheEndOfWhatIsThere) {
    this->put("file", "one ");
    const auto handle = this->open("file");
    ASSERT_TRUE(handle);
    EXPECT_EQ(this->content("file"), "one ");
    EXPECT_FALSE(handle->append("two "));
    EXPECT_FALSE(handle->append(""));
    EXPECT_FALSE(handle->append("three"));
    EXPECT_EQ(this->content("file"), "one two three");
}

TYPED_TEST_P(FileSystemContract, TwoHandlesShareOneEnd) {
    const auto first = this->open("file");
    const auto second = this->open("file");
    ASSERT_TRUE(first && second);
    EXPECT_FALSE(first->append("1"));
    EXPECT_FALSE(second->append("2"));
    EXPECT_FALSE(first->append("3"));
    EXPECT_EQ(this->content("file"), "123");
}

TYPED_TEST_P(FileSystemContract, TruncationBySomebodyElseLeavesNoHole) {
    const auto handle = this->open("file");
    ASSERT_TRUE(handle);
    EXPECT_FALSE(handle->append("a long line\n"));
    this->put("file", "");
    EXPECT_FALSE(handle->append("next\n"));
    EXPECT_EQ(this->content("file"), "next\n");
}

TYPED_TEST_P(FileSystemContract, ARemovedFileGoesOnGrowingUnseen) {
    const auto handle = this->open("file");
    ASSERT_TRUE(handle);
    EXPECT_FALSE(this->files().removeTree(this->at("file")));
    EXPECT_FALSE(handle->append("unseen"));
    EXPECT_FALSE(this->files().exists(this->at("file")));
    const auto other = this->open("file");
    ASSERT_TRUE(other);
    EXPECT_FALSE(handle->append("unseen"));
    EXPECT_FALSE(other->append("seen"));
    EXPECT_EQ(this->content("file"), "seen");
}

REGISTER_TYPED_TEST_SUITE_P(
    FileSystemContract, ReadsBackEveryByte, ReadsBackMoreThanOneCallTakes, AMissingFileIsENOENT,
    AFolderInPlaceOfAFileIsEISDIR, AFileInPlaceOfAFolderIsENOTDIR, WritingMakesNoFolders,
    APathWithANulByteNamesNothing, AnErrorNamesThePathAndTheReason,
    ReplacingContentLeavesNothingOfTheOld, ReplacingAtomicallyCreatesAndReplaces,
    ReplacingContentKeepsTheFileThatAHandleHolds, ReplacingAtomicallyPutsAnotherFileInPlace,
    MakesFoldersWithTheirParents, AnExistingFolderIsNoError, AFileInPlaceOfTheFolderToMakeIsEEXIST,
    RemovesAFile, RemovesAFolderWithAllItHolds, RemovingTheLastEntryKeepsTheFolder,
    RemovingWhatIsMissingIsNoError, EntriesOfEachKindExist, OpeningForAppendingCreatesAnEmptyFile,
    AppendsAtTheEndOfWhatIsThere, TwoHandlesShareOneEnd, TruncationBySomebodyElseLeavesNoHole,
    ARemovedFileGoesOnGrowingUnseen);

}  // namespace valdorn
