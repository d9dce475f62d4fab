#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Result.h"

namespace valdorn {

// Why a file operation did not succeed.
struct FileError {
    int errorNumber = 0;  // errno of the failing step
    std::string path;     // the path asked for

    // One readable English line, without a line end.
    std::string description() const;
};

// Nothing when all went well. Callers that ignore a failure say why.
using FileOutcome = std::optional<FileError>;

// An open file that only grows at its end. Owned by the caller; closing is by destruction.
//
// One thread at a time. Each write goes to what is the end at that moment, so truncation by
// somebody else leaves no hole; a file that was removed meanwhile goes on growing unseen.
class AppendHandle {
public:
    AppendHandle() = default;
    AppendHandle(const AppendHandle&) = delete;
    AppendHandle& operator=(const AppendHandle&) = delete;
    virtual ~AppendHandle() = default;

    // Writes all bytes or says why not; then a part of them may have been written.
    [[nodiscard]] virtual FileOutcome append(std::string_view bytes) = 0;
};

// An open regular file, read at places of the reader's choosing while others may write to it. Owned
// by the caller; closing is by destruction. One thread at a time.
class ReadHandle {
public:
    ReadHandle() = default;
    ReadHandle(const ReadHandle&) = delete;
    ReadHandle& operator=(const ReadHandle&) = delete;
    virtual ~ReadHandle() = default;

    // The size at this moment, in bytes.
    virtual Result<std::uint64_t, FileError> sizeBytes() const = 0;

    // The bytes from `offset` on, `maxBytes` of them at the most; fewer where the file ends before,
    // none at or beyond its end.
    virtual Result<std::string, FileError> readAt(std::uint64_t offset,
                                                  std::size_t maxBytes) const = 0;
};

// The files. All paths are absolute; bytes are passed as they are. A path with a NUL byte, which
// the kernel would cut short, names nothing and is EINVAL.
//
// Every member may be called from any thread, at the same time as others. Calls block for as long
// as the disk takes, but never for somebody else: a named pipe or a device in place of a file is
// an error, not a wait.
class FileSystem {
public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    // The whole content of a regular file. A missing file is ENOENT, a folder EISDIR.
    virtual Result<std::string, FileError> read(const std::string& path) const = 0;

    // Opens a regular file for reading in parts; errors as for read().
    virtual Result<std::unique_ptr<ReadHandle>, FileError> openForReading(
        const std::string& path) const = 0;

    // Replaces the content in place, creating the file when it is missing; its folder must exist.
    // Not atomic: a failure half-way leaves a part of the new content, one before the first byte the
    // old content. A disk without room for all of it is noticed before, where the file system can
    // tell. For text only: a program that is killed meanwhile leaves the old content or the new, perhaps
    // with blanks behind it, where neither is longer than a page of memory (4 KiB); a longer one may
    // be left half old, half new.
    [[nodiscard]] virtual FileOutcome replaceContent(const std::string& path,
                                                     std::string_view bytes) = 0;

    // Writes a temporary file in the same folder and renames it over `path`: readers see the old
    // content or the new, whole. After a failure the old file stands and no temporary file stays.
    // Not synced to the disk: for files that are made again when the power fails.
    [[nodiscard]] virtual FileOutcome replaceAtomically(const std::string& path,
                                                        std::string_view bytes) = 0;

    // Creates a folder and its missing parents. An existing folder is no error.
    [[nodiscard]] virtual FileOutcome makeFolders(const std::string& path) = 0;

    // Removes a file, or a folder with all it holds, without following links. A missing path is no
    // error. After a failure a part may be gone.
    [[nodiscard]] virtual FileOutcome removeTree(const std::string& path) = 0;

    // True when an entry of any kind stands there (a link that leads nowhere does not count). False
    // also when the path cannot be looked at.
    virtual bool exists(const std::string& path) const = 0;

    // Size of a regular file in bytes; errors as for read().
    virtual Result<std::uint64_t, FileError> sizeBytes(const std::string& path) const = 0;

    // Opens a regular file for appending, creating it empty when it is missing.
    virtual Result<std::unique_ptr<AppendHandle>, FileError> openForAppending(
        const std::string& path) = 0;
};

}  // namespace valdorn
