#pragma once

#include <atomic>

#include "platform/FileSystem.h"

namespace valdorn {

// The kernel's files.
//
// Beyond the contract: whatever is neither a regular file nor a folder is ENXIO, and never waited
// for. Files are made with mode 0666 less the umask, folders with 0700: what is in them is nobody
// else's business. replaceAtomically() replaces a link itself, not what it leads to. Every
// descriptor is close-on-exec from birth.
//
// A write beyond the file size limit of the process fails with EFBIG.
class PosixFileSystem : public FileSystem {
public:
    // Makes the process ignore SIGXFSZ, unless somebody handles it: a file that reaches the limit
    // would otherwise end the program, on any thread that does not block signals.
    PosixFileSystem();

    Result<std::string, FileError> read(const std::string& path) const override;
    Result<std::unique_ptr<ReadHandle>, FileError> openForReading(
        const std::string& path) const override;
    FileOutcome replaceContent(const std::string& path, std::string_view bytes) override;
    FileOutcome replaceAtomically(const std::string& path, std::string_view bytes) override;
    FileOutcome makeFolders(const std::string& path) override;
    FileOutcome removeTree(const std::string& path) override;
    bool exists(const std::string& path) const override;
    Result<std::uint64_t, FileError> sizeBytes(const std::string& path) const override;
    Result<std::unique_ptr<AppendHandle>, FileError> openForAppending(
        const std::string& path) override;

private:
    std::atomic<unsigned> temporaries_{0};  // how many temporary names were tried
};

}  // namespace valdorn
