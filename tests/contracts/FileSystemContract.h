#pragma once

#include <cerrno>
#include <cstdint>
#include <limits>
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

    std::unique_ptr<ReadHandle> openForReading(const std::string& name) {
        auto opened = files().openForReading(at(name));
        return opened.ok() ? std::move(opened.value()) : nullptr;
    }

    static std::string part(const ReadHandle& handle, std::uint64_t offset, std::size_t maxBytes) {
        const auto read = handle.readAt(offset, maxBytes);
        return read.ok() ? read.value() : "(" + read.error().description() + ")";
    }

    // The size as the handle sees it, and all that it reads.
    static std::string seen(const ReadHandle& handle) {
        const auto size = handle.sizeBytes();
        return (size.ok() ? std::to_string(size.value()) : "(" + size.error().description() + ")") +
               " " + part(handle, 0, 1000);
    }

    static int number(const FileOutcome& outcome) { return outcome ? outcome->errorNumber : 0; }

    template <typename Value>
    static int number(const Result<Value, FileError>& result) {
        return result.ok() ? 0 : result.error().errorNumber;
    }

    // The errors of reading and of writing at the name, in the order of the interface.
    std::vector<int> errorsOfReading(const std::string& path) {
        return {number(files().read(path)), number(files().openForReading(path)),
                number(files().sizeBytes(path))};
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
    EXPECT_EQ(this->errorsOfReading(this->at("none")), (std::vector{ENOENT, ENOENT, ENOENT}));
    EXPECT_FALSE(this->files().exists(this->at("none")));
}

TYPED_TEST_P(FileSystemContract, AFolderInPlaceOfAFileIsEISDIR) {
    this->makeFolder("folder");
    EXPECT_EQ(this->errorsOfReading(this->at("folder")), (std::vector{EISDIR, EISDIR, EISDIR}));
    EXPECT_EQ(this->errorsOfWriting(this->at("folder")), (std::vector{EISDIR, EISDIR, EISDIR}));
}

TYPED_TEST_P(FileSystemContract, AFileInPlaceOfAFolderIsENOTDIR) {
    this->put("file", "kept");
    const std::string below = this->at("file/below");
    EXPECT_EQ(this->errorsOfReading(below), (std::vector{ENOTDIR, ENOTDIR, ENOTDIR}));
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
    EXPECT_EQ(this->errorsOfReading(path), (std::vector{EINVAL, EINVAL, EINVAL}));
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

TYPED_TEST_P(FileSystemContract, ReadsTheAskedForPartOfAFile) {
    const std::string bytes("0123\n\0\xff\r89", 10);
    this->put("file", bytes);
    const auto handle = this->openForReading("file");
    ASSERT_TRUE(handle);
    for (std::size_t offset = 0; offset <= bytes.size(); ++offset) {
        for (std::size_t count = 0; count <= bytes.size() + 1; ++count)
            EXPECT_EQ(this->part(*handle, offset, count), bytes.substr(offset, count));
    }
    EXPECT_EQ(handle->sizeBytes().value(), bytes.size());
}

TYPED_TEST_P(FileSystemContract, ReadsPartsLargerThanOneCallTakes) {
    std::string bytes;
    for (int i = 0; i < 40000; ++i)
        bytes += std::to_string(i);
    this->put("file", bytes);
    const auto handle = this->openForReading("file");
    ASSERT_TRUE(handle);
    EXPECT_TRUE(this->part(*handle, 1, bytes.size() - 2) == bytes.substr(1, bytes.size() - 2));
}

TYPED_TEST_P(FileSystemContract, BeyondTheEndThereIsNothingHoweverFar) {
    this->put("file", "1234");
    const auto handle = this->openForReading("file");
    ASSERT_TRUE(handle);
    constexpr auto furthest = std::numeric_limits<std::uint64_t>::max();
    for (const std::uint64_t offset : {std::uint64_t{4}, std::uint64_t{5}, furthest / 2,
                                       furthest / 2 + 1, furthest - 1, furthest})
        EXPECT_EQ(this->part(*handle, offset, 10), "") << offset;
    EXPECT_EQ(this->part(*handle, 1, std::numeric_limits<std::size_t>::max()), "234");
}

TYPED_TEST_P(FileSystemContract, AnEmptyFileIsReadAsNothing) {
    this->put("file", "");
    const auto handle = this->openForReading("file");
    ASSERT_TRUE(handle);
    EXPECT_EQ(this->seen(*handle), "0 ");
}

TYPED_TEST_P(FileSystemContract, AReaderSeesTheFileGrowAndShrink) {
    const auto writer = this->open("file");
    const auto reader = this->openForReading("file");
    ASSERT_TRUE(writer && reader);
    EXPECT_FALSE(writer->append("one"));
    EXPECT_EQ(this->seen(*reader), "3 one");
    EXPECT_FALSE(writer->append("two"));
    EXPECT_EQ(this->seen(*reader), "6 onetwo");
    this->put("file", "1");
    EXPECT_EQ(this->seen(*reader), "1 1");
    EXPECT_EQ(this->part(*reader, 3, 3), "");
    EXPECT_FALSE(writer->append("2"));
    EXPECT_EQ(this->seen(*reader), "2 12");
}

TYPED_TEST_P(FileSystemContract, AReaderKeepsTheFileThatWasReplacedAtomically) {
    this->put("file", "old");
    const auto before = this->openForReading("file");
    const auto writer = this->open("file");
    ASSERT_TRUE(before && writer);
    EXPECT_FALSE(this->files().replaceAtomically(this->at("file"), "newer"));
    EXPECT_FALSE(writer->append(" end"));
    EXPECT_EQ(this->seen(*before), "7 old end");
    const auto after = this->openForReading("file");
    ASSERT_TRUE(after);
    EXPECT_EQ(this->seen(*after), "5 newer");
}

TYPED_TEST_P(FileSystemContract, AReaderKeepsTheFileThatWasRemoved) {
    this->makeFolder("folder");
    this->put("folder/file", "kept");
    const auto handle = this->openForReading("folder/file");
    ASSERT_TRUE(handle);
    EXPECT_FALSE(this->files().removeTree(this->at("folder")));
    EXPECT_EQ(this->seen(*handle), "4 kept");
    this->makeFolder("folder");
    this->put("folder/file", "another");
    EXPECT_EQ(this->seen(*handle), "4 kept");
}

TYPED_TEST_P(FileSystemContract, OpeningForReadingMakesNoFile) {
    EXPECT_EQ(this->number(this->files().openForReading(this->at("none"))), ENOENT);
    EXPECT_FALSE(this->files().exists(this->at("none")));
}

TYPED_TEST_P(FileSystemContract, ReadersDoNotDisturbEachOther) {
    this->put("file", "1234");
    const auto first = this->openForReading("file");
    const auto second = this->openForReading("file");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(this->part(*first, 2, 2), "34");
    EXPECT_EQ(this->part(*second, 0, 2), "12");
    EXPECT_EQ(this->part(*first, 0, 2), "12");
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
    ARemovedFileGoesOnGrowingUnseen, ReadsTheAskedForPartOfAFile, ReadsPartsLargerThanOneCallTakes,
    BeyondTheEndThereIsNothingHoweverFar, AnEmptyFileIsReadAsNothing,
    AReaderSeesTheFileGrowAndShrink, AReaderKeepsTheFileThatWasReplacedAtomically,
    AReaderKeepsTheFileThatWasRemoved, OpeningForReadingMakesNoFile, ReadersDoNotDisturbEachOther);

}  // namespace valdorn
