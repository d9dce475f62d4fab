#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "contracts/FileSystemContract.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/PosixFileSystem.h"
#include "support/OpenDescriptors.h"
#include "support/Skipping.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

class PosixFixture {
public:
    FileSystem& files() { return files_; }
    std::string folder() { return folder_.path(); }

private:
    TemporaryFolder folder_;
    PosixFileSystem files_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileSystemContract, PosixFixture);

// Lowers one of the process's limits until the end of the scope.
class LoweredLimit {
public:
    LoweredLimit(__rlimit_resource resource, rlim_t limit) : resource_(resource) {
        getrlimit(resource_, &before_);
        const rlimit lowered{limit, before_.rlim_max};
        setrlimit(resource_, &lowered);
    }
    LoweredLimit(const LoweredLimit&) = delete;
    LoweredLimit& operator=(const LoweredLimit&) = delete;
    ~LoweredLimit() { setrlimit(resource_, &before_); }

private:
    const __rlimit_resource resource_;
    rlimit before_{};
};

constexpr int notPossibleHere = 77;

// Who has more than one thread may not leave the file systems of all.
constexpr bool hasThreadOfItsOwn = std::string_view(VALDORN_SANITIZE) == "thread";

// The exit code of a child process that does only that.
int inChild(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child < 0)
        return -1;
    if (child == 0)
        _exit(work());
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// For a child process: a file system of its own, of that many bytes. False where nobody may do so.
bool mountOwn(const std::string& folder, const std::string& bytes) {
    const auto write = [](const std::string& file, const std::string& text) {
        std::ofstream(file) << text;
    };
    const std::string users = "0 " + std::to_string(getuid()) + " 1";
    const std::string groups = "0 " + std::to_string(getgid()) + " 1";
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    write("/proc/self/setgroups", "deny");
    write("/proc/self/uid_map", users);
    write("/proc/self/gid_map", groups);
    return mount("none", folder.c_str(), "tmpfs", 0, ("size=" + bytes).c_str()) == 0;
}

class PosixFileSystemTest : public testing::Test {
protected:
    std::string content(const std::string& name) const {
        const auto read = files.read(folder / name);
        return read.ok() ? read.value() : "(" + read.error().description() + ")";
    }

    void put(const std::string& name, std::string_view bytes) {
        ASSERT_FALSE(files.replaceContent(folder / name, bytes));
    }

    // Names of what is in the folder, sorted.
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    mode_t mode(const std::string& name) const {
        struct stat status {};
        stat((folder / name).c_str(), &status);
        return status.st_mode & 07777U;
    }

    static int number(const FileOutcome& outcome) { return outcome ? outcome->errorNumber : 0; }

    // What every operation on a file answers at that path.
    std::vector<int> errorsAt(const std::string& path) {
        const auto read = files.read(path);
        const auto reader = files.openForReading(path);
        const auto size = files.sizeBytes(path);
        const auto opened = files.openForAppending(path);
        return {
            read.ok() ? 0 : read.error().errorNumber, reader.ok() ? 0 : reader.error().errorNumber,
            size.ok() ? 0 : size.error().errorNumber, opened.ok() ? 0 : opened.error().errorNumber,
            number(files.replaceContent(path, "x")),  number(files.replaceAtomically(path, "x"))};
    }

    TemporaryFolder folder;
    PosixFileSystem files;
};

using Names = std::vector<std::string>;

TEST_F(PosixFileSystemTest, ANamedPipeIsAnErrorAndNotAWait) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorsAt(folder / "pipe"), std::vector(6, ENXIO));
    // With somebody at the other end it can be opened, and still must not be written to.
    const int reader = open((folder / "pipe").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(errorsAt(folder / "pipe"), std::vector(6, ENXIO));
    char byte = 0;
    EXPECT_EQ(read(reader, &byte, 1), -1);
    close(reader);
    EXPECT_TRUE(files.exists(folder / "pipe"));
}

TEST_F(PosixFileSystemTest, ADeviceIsAnErrorAndNotAFile) {
    std::filesystem::create_symlink("/dev/zero", folder / "device");
    EXPECT_EQ(errorsAt(folder / "device"), std::vector(6, ENXIO));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "device"));
}

TEST_F(PosixFileSystemTest, ALinkThatLeadsNowhereDoesNotExist) {
    std::filesystem::create_symlink(folder / "none", folder / "link");
    EXPECT_FALSE(files.exists(folder / "link"));
    EXPECT_EQ(number(files.makeFolders(folder / "link")), EEXIST);
    put("none", "there");
    EXPECT_TRUE(files.exists(folder / "link"));
    EXPECT_EQ(content("link"), "there");
}

TEST_F(PosixFileSystemTest, RemovingATreeFollowsNoLinks) {
    ASSERT_FALSE(files.makeFolders(folder / "tree/sub"));
    ASSERT_FALSE(files.makeFolders(folder / "outside"));
    put("outside/file", "kept");
    std::filesystem::create_directory_symlink(folder / "outside", folder / "tree/sub/link");
    ASSERT_EQ(mkfifo((folder / "tree/pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files.removeTree(folder / "tree"));
    EXPECT_EQ(entries(), Names{"outside"});
    EXPECT_EQ(content("outside/file"), "kept");

    std::filesystem::create_directory_symlink(folder / "outside", folder / "link");
    EXPECT_FALSE(files.removeTree(folder / "link"));
    EXPECT_EQ(entries(), Names{"outside"});
    EXPECT_EQ(content("outside/file"), "kept");
}

TEST_F(PosixFileSystemTest, ReplacingAtomicallyReplacesTheLinkItself) {
    put("target", "kept");
    std::filesystem::create_symlink(folder / "target", folder / "link");
    EXPECT_FALSE(files.replaceAtomically(folder / "link", "new"));
    EXPECT_EQ(content("target"), "kept");
    EXPECT_EQ(content("link"), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "link"));
}

TEST_F(PosixFileSystemTest, NewFilesHonourTheUmaskAndNewFoldersAreClosedToOthers) {
    const mode_t before = umask(027);
    put("plain", "");
    EXPECT_FALSE(files.replaceAtomically(folder / "atomic", ""));
    EXPECT_TRUE(files.openForAppending(folder / "log").ok());
    EXPECT_FALSE(files.makeFolders(folder / "a/b"));
    umask(0);
    EXPECT_FALSE(files.makeFolders(folder / "c/d"));
    umask(before);
    EXPECT_EQ(mode("plain"), 0640U);
    EXPECT_EQ(mode("atomic"), 0640U);
    EXPECT_EQ(mode("log"), 0640U);
    for (const char* const made : {"a", "a/b", "c", "c/d"})
        EXPECT_EQ(mode(made), 0700U) << made;
}

TEST_F(PosixFileSystemTest, TheDescriptorsOfHandlesAreNotInherited) {
    const auto opened = files.openForAppending(folder / "log");
    const auto reader = files.openForReading(folder / "log");
    ASSERT_TRUE(opened.ok() && reader.ok());
    int found = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;  // the listing's own descriptor
        if (std::filesystem::read_symlink(entry.path(), gone) != folder / "log")
            continue;
        ++found;
        const int flags = fcntl(std::stoi(entry.path().filename()), F_GETFD);
        EXPECT_TRUE((flags & FD_CLOEXEC) != 0);
    }
    EXPECT_EQ(found, 2);
}

TEST_F(PosixFileSystemTest, AReadersDescriptorIsClosedWithIt) {
    put("log", "x");
    const std::size_t before = openDescriptors();
    {
        const auto reader = files.openForReading(folder / "log");
        EXPECT_EQ(openDescriptors(), before + 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PosixFileSystemTest, ReadsBeyondFourGigabytes) {
    put("log", "begin");
    constexpr std::uint64_t far = std::uint64_t{5} << 30U;
    std::filesystem::resize_file(folder / "log", far);  // a hole takes no room on the disk
    const auto writer = files.openForAppending(folder / "log");
    ASSERT_TRUE(writer.ok());
    EXPECT_FALSE(writer.value()->append("end"));
    const auto reader = files.openForReading(folder / "log");
    ASSERT_TRUE(reader.ok());
    EXPECT_EQ(reader.value()->sizeBytes().value(), far + 3);
    EXPECT_EQ(reader.value()->readAt(far - 1, 100).value(), std::string("\0end", 4));
}

TEST_F(PosixFileSystemTest, MakingFoldersIgnoresExtraSlashes) {
    EXPECT_FALSE(files.makeFolders((folder / "a//b/") + "/c//"));
    EXPECT_TRUE(files.exists(folder / "a/b/c"));
}

TEST_F(PosixFileSystemTest, MakingFoldersGivesUpOnARelativePath) {
    EXPECT_EQ(number(files.makeFolders("valdorn-none/deeper")), ENOENT);
    EXPECT_EQ(number(files.makeFolders("")), ENOENT);
}

TEST_F(PosixFileSystemTest, ReplacingAtomicallyLeavesOnlyTheFile) {
    EXPECT_FALSE(files.replaceAtomically(folder / "file", "one"));
    EXPECT_FALSE(files.replaceAtomically(folder / "file", "two"));
    EXPECT_EQ(entries(), Names{"file"});
}

TEST_F(PosixFileSystemTest, TheLongestNameCanBeReplacedAtomically) {
    const std::string name(255, 'n');
    EXPECT_FALSE(files.replaceAtomically(folder / name, "one"));
    EXPECT_EQ(entries(), Names{name});
}

TEST_F(PosixFileSystemTest, ATemporaryFileOfAKilledProcessIsSteppedOver) {
    const std::string stale = ".valdorn-" + std::to_string(getpid()) + "-0";
    put(stale, "somebody's");
    EXPECT_FALSE(files.replaceAtomically(folder / "file", "new"));
    EXPECT_EQ(content("file"), "new");
    EXPECT_EQ(content(stale), "somebody's");
}

TEST_F(PosixFileSystemTest, AHundredNamesAreTriedForATemporaryFile) {
    const std::string stale = ".valdorn-" + std::to_string(getpid()) + "-";
    for (int name = 0; name < 100; ++name)
        put(stale + std::to_string(name), "somebody's");
    PosixFileSystem other;
    EXPECT_EQ(number(other.replaceAtomically(folder / "file", "new")), EEXIST);
    std::filesystem::remove(folder / (stale + "99"));
    EXPECT_FALSE(files.replaceAtomically(folder / "file", "new"));
    EXPECT_EQ(content("file"), "new");
}

TEST_F(PosixFileSystemTest, AFailingRenameLeavesNoTemporaryFile) {
    const std::string tooLong(256, 'n');
    EXPECT_EQ(number(files.replaceAtomically(folder / tooLong, "x")), ENAMETOOLONG);
    EXPECT_EQ(entries(), Names{});
}

TEST_F(PosixFileSystemTest, WhereverAnAtomicWriteFailsTheOldFileStands) {
    const std::string old = "old content";
    const std::string fresh = "new content, a bit longer";
    put("file", old);
    for (rlim_t limit = 0; limit < fresh.size(); ++limit) {
        const LoweredLimit full(RLIMIT_FSIZE, limit);
        EXPECT_EQ(number(files.replaceAtomically(folder / "file", fresh)), EFBIG) << limit;
        EXPECT_EQ(content("file"), old) << limit;
        EXPECT_EQ(entries(), Names{"file"}) << limit;
    }
    const LoweredLimit enough(RLIMIT_FSIZE, fresh.size());
    EXPECT_FALSE(files.replaceAtomically(folder / "file", fresh));
    EXPECT_EQ(content("file"), fresh);
}

// A sanitizer has taken all addresses there are.
bool isMemoryCountable() {
    constexpr std::uint64_t bytes = std::uint64_t{1} << 36;
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * 4096 < bytes;
}

TEST_F(PosixFileSystemTest, WhatMemoryHasNoRoomForIsNotRead) {
    if (!isMemoryCountable())
        GTEST_SKIP() << "A sanitizer has all the memory there could be.";
    put("file", "");
    std::filesystem::resize_file(folder / "file", std::uintmax_t{1} << 28);
    EXPECT_EQ(inChild([this] {
                  const LoweredLimit little(RLIMIT_AS, rlim_t{1} << 27);
                  const auto outcome = files.read(folder / "file");
                  return outcome.ok() ? 0 : outcome.error().errorNumber;
              }),
              ENOMEM);
}

TEST_F(PosixFileSystemTest, WithoutDescriptorsNothingChanges) {
    put("file", "kept");
    {
        const LoweredLimit none(RLIMIT_NOFILE, 0);
        EXPECT_EQ(errorsAt(folder / "file"),
                  (std::vector{EMFILE, EMFILE, 0, EMFILE, EMFILE, EMFILE}));
        EXPECT_EQ(number(files.replaceAtomically(folder / "other", "x")), EMFILE);
    }
    EXPECT_EQ(content("file"), "kept");
    EXPECT_EQ(entries(), Names{"file"});
}

TEST_F(PosixFileSystemTest, APlainWriteThatFailsLeavesAPartOfTheNewContent) {
    put("file", "old content");
    {
        const LoweredLimit full(RLIMIT_FSIZE, 4);
        EXPECT_EQ(number(files.replaceContent(folder / "file", "12345678")), EFBIG);
    }
    EXPECT_EQ(content("file"), "1234");
}

TEST_F(PosixFileSystemTest, APlainWriteThatFailsAtOnceLeavesTheOldContent) {
    put("file", "old content");
    {
        const LoweredLimit full(RLIMIT_FSIZE, 0);
        EXPECT_EQ(number(files.replaceContent(folder / "file", "new")), EFBIG);
    }
    EXPECT_EQ(content("file"), "old content");
}

TEST_F(PosixFileSystemTest, APlainWriteSucceedsWhereOnlyTheEndOfTheOldContentIsOutOfReach) {
    put("file", "old content");
    {
        const LoweredLimit full(RLIMIT_FSIZE, 6);
        EXPECT_EQ(number(files.replaceContent(folder / "file", "new")), 0);
    }
    EXPECT_EQ(content("file"), "new");
}

TEST_F(PosixFileSystemTest, APlainWriteOverAHugeFileIsAsSmallAsItsText) {
    put("file", "");
    std::filesystem::resize_file(folder / "file", std::uintmax_t{1} << 40);
    EXPECT_EQ(number(files.replaceContent(folder / "file", "new")), 0);
    EXPECT_EQ(content("file"), "new");
}

TEST_F(PosixFileSystemTest, APlainWriteThatFindsNoRoomLeavesTheOldContent) {
    const std::string old(5000, 'o');
    const std::string fresh(9000, 'f');
    const auto fill = [&] {
        if (!mountOwn(folder.path(), "8k"))
            return notPossibleHere;
        put("file", old);
        const int tooMuch = number(files.replaceContent(folder / "file", fresh));
        const bool isOld = content("file") == old;
        // There is room for what was there before, though for no more.
        put("file", fresh.substr(0, 8192));
        const bool isNew = content("file") == fresh.substr(0, 8192);
        return tooMuch == ENOSPC && isOld && isNew ? 0 : 1;
    };
    const int outcome = inChild(fill);
    if (outcome == notPossibleHere && hasThreadOfItsOwn)
        GTEST_SKIP() << "ThreadSanitizer's thread keeps us in the file systems of all";
    if (outcome == notPossibleHere)
        return leaveOut("no file systems of one's own here");
    EXPECT_EQ(outcome, 0);
}

// Rewrites the file with one text and the other by turns until it is killed.
[[noreturn]] void rewriteForEver(PosixFileSystem& files, const std::string& path, int progress,
                                 const std::array<std::string, 2>& texts) {
    for (std::size_t turn = 0;; ++turn) {
        if (files.replaceContent(path, texts[turn % 2]) || write(progress, "", 1) != 1)
            _exit(1);
    }
}

void awaitWrites(int progress, std::size_t count) {
    for (std::size_t write = 0; write < count; ++write) {
        pollfd next{progress, POLLIN, 0};
        EXPECT_EQ(poll(&next, 1, 60'000), 1);
        char byte = 0;
        EXPECT_EQ(read(progress, &byte, 1), 1);
    }
}

TEST_F(PosixFileSystemTest, AProgramThatIsKilledAtAPlainWriteLeavesTheOldTextOrTheNew) {
    const std::array texts{std::string(900, 'a'), std::string(300, 'b')};
    put("file", texts[1]);
    std::array<int, 2> seen{};
    for (std::size_t round = 0; round < 200; ++round) {
        auto progress = openPipe();
        ASSERT_TRUE(progress.ok());
        const pid_t writer = fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            progress.value().readEnd.reset();
            rewriteForEver(files, folder / "file", progress.value().writeEnd.number(), texts);
        }
        progress.value().writeEnd.reset();
        awaitWrites(progress.value().readEnd.number(), 1 + round % 7);
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        std::string left = content("file");
        left.erase(left.find_last_not_of(' ') + 1);
        ASSERT_TRUE(left == texts[0] || left == texts[1]) << left;
        ++seen[left == texts[0] ? 0 : 1];
    }
    EXPECT_GT(seen[0], 0);
    EXPECT_GT(seen[1], 0);
}

TEST_F(PosixFileSystemTest, AnAppendThatFailsSaysSoAndTheHandleStaysUsable) {
    const auto opened = files.openForAppending(folder / "log");
    ASSERT_TRUE(opened.ok());
    EXPECT_FALSE(opened.value()->append("12"));
    {
        const LoweredLimit full(RLIMIT_FSIZE, 4);
        const FileOutcome failed = opened.value()->append("345678");
        ASSERT_TRUE(failed);
        EXPECT_EQ(failed->errorNumber, EFBIG);
        EXPECT_EQ(failed->path, folder / "log");
    }
    EXPECT_EQ(content("log"), "1234");
    EXPECT_FALSE(opened.value()->append("!"));
    EXPECT_EQ(content("log"), "1234!");
}

TEST_F(PosixFileSystemTest, AFileThatReachesTheSizeLimitDoesNotEndTheProgram) {
    const auto writeTooMuch = [this] {
        std::signal(SIGXFSZ, SIG_DFL);  // as a program finds it
        PosixFileSystem own;
        const LoweredLimit full(RLIMIT_FSIZE, 4);
        return number(own.replaceContent(folder / "file", "12345678"));
    };
    EXPECT_EXIT(_exit(writeTooMuch()), testing::ExitedWithCode(EFBIG), "");
}

TEST_F(PosixFileSystemTest, SomebodysHandlerOfTheSizeLimitStays) {
    const auto handler = [](int) {};
    const auto before = std::signal(SIGXFSZ, handler);
    const PosixFileSystem own;
    EXPECT_EQ(std::signal(SIGXFSZ, before), +handler);
}

TEST_F(PosixFileSystemTest, ReadersSeeTheOldContentOrTheNewWhole) {
    const std::string first(100000, 'a');
    const std::string second(70000, 'b');
    ASSERT_FALSE(files.replaceAtomically(folder / "file", first));
    std::vector<std::thread> writers;
    for (const std::string& text : {first, second}) {
        writers.emplace_back([this, text] {
            for (int i = 0; i < 50; ++i)
                EXPECT_FALSE(files.replaceAtomically(folder / "file", text));
        });
    }
    for (int i = 0; i < 100; ++i) {
        const std::string seen = content("file");
        EXPECT_TRUE(seen == first || seen == second);
    }
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(entries(), Names{"file"});
}

TEST_F(PosixFileSystemTest, SeveralThreadsMayMakeTheSameFolders) {
    std::vector<std::thread> makers;
    makers.reserve(4);
    for (int i = 0; i < 4; ++i) {
        makers.emplace_back([this] {
            for (int n = 0; n < 50; ++n)
                EXPECT_FALSE(files.makeFolders(folder / ("a/" + std::to_string(n) + "/b/c")));
        });
    }
    for (std::thread& maker : makers)
        maker.join();
    EXPECT_TRUE(files.exists(folder / "a/49/b/c"));
}

}  // namespace
}  // namespace valdorn
