#include "platform/posix/PosixFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"
#include "platform/posix/Uninterrupted.h"

namespace valdorn {

namespace {

constexpr mode_t fileMode = 0666;
// Closed to others, as the XDG base directories ask: registrations and logs are in there.
constexpr mode_t folderMode = 0700;

// One call reads at most this much: large enough that a log's tail takes a few calls only.
constexpr std::size_t readBytes = std::size_t{64} * 1024;

// A longer text is none that we have written: no memory is spent to write blanks over it.
constexpr off_t maxCoveredBytes = off_t{1024} * 1024;

// A stale temporary file of a killed process is stepped over; so many cannot be by accident.
constexpr int maxTemporaryNames = 100;

// The kernel would cut such a path short and work on another file.
bool isCutShort(const std::string& path) {
    return path.find('\0') != std::string::npos;
}

int openRetrying(const std::string& path, int flags) {
    if (isCutShort(path)) {
        errno = EINVAL;
        return -1;
    }
    // Not blocking: opening a named pipe would otherwise wait for its other end.
    const int all = flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    return uninterrupted([&path, all] { return ::open(path.c_str(), all, fileMode); });
}

int errorOfKind(const struct stat& status) {
    if (S_ISREG(status.st_mode))
        return 0;
    return S_ISDIR(status.st_mode) ? EISDIR : ENXIO;
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

Result<Descriptor, FileError> openRegular(const std::string& path, int flags) {
    Descriptor file(openRetrying(path, flags));
    struct stat status {};
    if (!file || ::fstat(file.number(), &status) != 0)
        return FileError{errno, path};
    if (const int error = errorOfKind(status); error != 0)
        return FileError{error, path};
    return file;
}

// Returns 0 or errno.
int writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written > 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0)
            return EIO;  // no progress and no reason: not to be tried for ever
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

// Keeps room on the disk for the content that is to come. Returns 0, or errno where there is none.
int reserve(int descriptor, std::size_t bytes) {
    const auto length = static_cast<off_t>(bytes);
    const auto keep = [=] { return ::fallocate(descriptor, FALLOC_FL_KEEP_SIZE, 0, length); };
    if (bytes == 0 || uninterrupted(keep) == 0)
        return 0;
    // A file system that cannot do so shows later whether there is room.
    return errno == ENOSPC || errno == EDQUOT ? errno : 0;
}

// The bytes, and blanks over what is longer in the old content: killed before it is cut off, the
// program leaves a text that means the same.
std::string covering(std::string_view bytes, int descriptor) {
    struct stat old {};
    std::string text(bytes);
    const bool isKnown = ::fstat(descriptor, &old) == 0 && old.st_size <= maxCoveredBytes;
    if (isKnown && static_cast<std::size_t>(old.st_size) > bytes.size())
        text.resize(static_cast<std::size_t>(old.st_size), ' ');
    return text;
}

// Writes from the beginning and cuts off what is left of the old content, also behind a part that
// was all that could be written; if that is nothing, the old content stays. Returns 0 or errno.
int overwrite(int descriptor, std::string_view bytes) {
    const auto whole = static_cast<off_t>(bytes.size());
    const int written = writeAll(descriptor, covering(bytes, descriptor));
    const off_t reached = ::lseek(descriptor, 0, SEEK_CUR);
    if (reached < 0)
        return written != 0 ? written : errno;
    if (reached == 0 && whole > 0)
        return written;
    const off_t end = std::min(reached, whole);
    const int cut = uninterrupted([=] { return ::ftruncate(descriptor, end); }) == 0 ? 0 : errno;
    // Nobody needs the blanks.
    return reached < whole ? written : cut;
}

// Returns 0 or errno. A disk may refuse as late as here; EINTR is no refusal, Linux has closed the
// file by then.
int close(Descriptor file) {
    return ::close(file.release()) == 0 || errno == EINTR ? 0 : errno;
}

// Writes and closes; returns 0 or the first errno.
int writeAndClose(Descriptor file, std::string_view bytes) {
    const int written = writeAll(file.number(), bytes);
    const int closed = close(std::move(file));
    return written != 0 ? written : closed;
}

std::string folderOf(const std::string& path) {
    std::size_t end = path.find_last_not_of('/');
    end = path.find_last_of('/', end);
    end = path.find_last_not_of('/', end);
    return end == std::string::npos ? "/" : path.substr(0, end + 1);
}

void surviveTheSizeLimit() {
    struct sigaction action {};
    sigaction(SIGXFSZ, nullptr, &action);
    if (action.sa_handler != SIG_DFL)
        return;
    action.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &action, nullptr);
}

class PosixReadHandle : public ReadHandle {
public:
    PosixReadHandle(Descriptor file, std::string path)
        : file_(std::move(file)), path_(std::move(path)) {}

    Result<std::uint64_t, FileError> sizeBytes() const override {
        struct stat status {};
        if (::fstat(file_.number(), &status) != 0)
            return FileError{errno, path_};
        return static_cast<std::uint64_t>(status.st_size);
    }

    Result<std::string, FileError> readAt(std::uint64_t offset,
                                          std::size_t maxBytes) const override {
        const auto size = sizeBytes();
        if (!size.ok())
            return size.error();
        // Room for what is there only, whatever was asked for.
        const std::uint64_t there = size.value() - std::min(size.value(), offset);
        std::string bytes(std::min<std::uint64_t>(maxBytes, there), '\0');
        std::size_t had = 0;
        while (had < bytes.size()) {
            const ssize_t got = uninterrupted([&] {
                return ::pread(file_.number(), bytes.data() + had, bytes.size() - had,
                               static_cast<off_t>(offset + had));
            });
            if (got < 0)
                return FileError{errno, path_};
            if (got == 0)
                break;  // it has become shorter meanwhile
            had += static_cast<std::size_t>(got);
        }
        bytes.resize(had);
        return bytes;
    }

private:
    const Descriptor file_;
    const std::string path_;
};

class PosixAppendHandle : public AppendHandle {
public:
    PosixAppendHandle(Descriptor file, std::string path)
        : file_(std::move(file)), path_(std::move(path)) {}

    FileOutcome append(std::string_view bytes) override {
        if (const int error = writeAll(file_.number(), bytes); error != 0)
            return FileError{error, path_};
        return std::nullopt;
    }

private:
    const Descriptor file_;
    const std::string path_;
};

}  // namespace

PosixFileSystem::PosixFileSystem() {
    surviveTheSizeLimit();
}

Result<std::string, FileError> PosixFileSystem::read(const std::string& path) const try {
    auto opened = openRegular(path, O_RDONLY);
    if (!opened.ok())
        return opened.error();
    std::string content;
    while (true) {
        const std::size_t had = content.size();
        content.resize(had + readBytes);
        const ssize_t got = uninterrupted(
            [&] { return ::read(opened.value().number(), content.data() + had, readBytes); });
        if (got < 0)
            return FileError{errno, path};
        content.resize(had + static_cast<std::size_t>(got));
        if (got == 0)
            return content;
    }
} catch (const std::bad_alloc&) {
    return FileError{ENOMEM, path};  // larger than what there is room for: not to be read
}

Result<std::unique_ptr<ReadHandle>, FileError> PosixFileSystem::openForReading(
    const std::string& path) const {
    auto opened = openRegular(path, O_RDONLY);
    if (!opened.ok())
        return opened.error();
    return std::unique_ptr<ReadHandle>(
        std::make_unique<PosixReadHandle>(std::move(opened.value()), path));
}

FileOutcome PosixFileSystem::replaceContent(const std::string& path, std::string_view bytes) {
    auto opened = openRegular(path, O_WRONLY | O_CREAT);
    if (!opened.ok())
        return opened.error();
    Descriptor& file = opened.value();
    // Over the old content, which would give its room away if it were cut first.
    int error = reserve(file.number(), bytes.size());
    if (error == 0)
        error = overwrite(file.number(), bytes);
    const int closed = close(std::move(file));
    if (error == 0)
        error = closed;
    return error == 0 ? FileOutcome() : FileError{error, path};
}

FileOutcome PosixFileSystem::replaceAtomically(const std::string& path, std::string_view bytes) {
    struct stat status {};
    if (isCutShort(path))
        return FileError{EINVAL, path};
    if (::stat(path.c_str(), &status) == 0 && errorOfKind(status) != 0)
        return FileError{errorOfKind(status), path};

    // A short name of our own: the target's name may be as long as names can be.
    const std::string prefix =
        path.substr(0, path.rfind('/') + 1) + ".valdorn-" + std::to_string(::getpid()) + "-";
    std::string temporary;
    Descriptor file;
    for (int attempt = 1; !file; ++attempt) {
        temporary = prefix + std::to_string(temporaries_++);
        file = Descriptor(openRetrying(temporary, O_WRONLY | O_CREAT | O_EXCL));
        if (!file && (errno != EEXIST || attempt == maxTemporaryNames))
            return FileError{errno, path};
    }

    int error = writeAndClose(std::move(file), bytes);
    if (error == 0 && ::rename(temporary.c_str(), path.c_str()) != 0)
        error = errno;
    if (error == 0)
        return std::nullopt;
    ::unlink(temporary.c_str());
    return FileError{error, path};
}

FileOutcome PosixFileSystem::makeFolders(const std::string& path) {
    if (isCutShort(path))
        return FileError{EINVAL, path};
    if (::mkdir(path.c_str(), folderMode) == 0)
        return std::nullopt;
    const int error = errno;
    if (isFolder(path))
        return std::nullopt;
    // A relative path is an error of the caller; it has no folder to go on with.
    if (error != ENOENT || !path.starts_with('/'))
        return FileError{error, path};
    if (const FileOutcome failed = makeFolders(folderOf(path)))
        return FileError{failed->errorNumber, path};
    // Somebody else may have made it meanwhile.
    const bool made = ::mkdir(path.c_str(), folderMode) == 0;
    const int laterError = errno;
    if (made || isFolder(path))
        return std::nullopt;
    return FileError{laterError, path};
}

FileOutcome PosixFileSystem::removeTree(const std::string& path) {
    if (isCutShort(path))
        return FileError{EINVAL, path};
    std::error_code error;
    do
        std::filesystem::remove_all(path, error);
    while (error == std::errc::interrupted);
    struct stat status {};
    // A file in place of a folder above: nothing stands at the path, which is what was asked for.
    if (error == std::errc::not_a_directory && ::lstat(path.c_str(), &status) != 0 &&
        errno == ENOTDIR)
        return std::nullopt;
    if (error)
        return FileError{error.value(), path};
    return std::nullopt;
}

bool PosixFileSystem::exists(const std::string& path) const {
    struct stat status {};
    return !isCutShort(path) && ::stat(path.c_str(), &status) == 0;
}

Result<std::uint64_t, FileError> PosixFileSystem::sizeBytes(const std::string& path) const {
    struct stat status {};
    if (isCutShort(path))
        return FileError{EINVAL, path};
    if (::stat(path.c_str(), &status) != 0)
        return FileError{errno, path};
    if (const int error = errorOfKind(status); error != 0)
        return FileError{error, path};
    return static_cast<std::uint64_t>(status.st_size);
}

Result<std::unique_ptr<AppendHandle>, FileError> PosixFileSystem::openForAppending(
    const std::string& path) {
    auto opened = openRegular(path, O_WRONLY | O_APPEND | O_CREAT);
    if (!opened.ok())
        return opened.error();
    return std::unique_ptr<AppendHandle>(
        std::make_unique<PosixAppendHandle>(std::move(opened.value()), path));
}

}  // namespace valdorn
