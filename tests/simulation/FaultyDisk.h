#pragma once

#include <memory>
#include <string>

#include "simulation/DiskFaults.h"
#include "support/MemoryFileSystem.h"

namespace valdorn::simulation {

// The files in memory, with faults by what is done rather than by its number, so that the model
// knows which operation fails without knowing how many there are. One thread only.
class FaultyDisk : public FileSystem {
public:
    // Both outlive this and every handle opened.
    FaultyDisk(MemoryFileSystem& inner, const DiskFaults& faults)
        : inner_(inner), faults_(faults) {}

    // How often the list was written, failures included.
    int listWrites() const { return listWrites_; }

    Result<std::string, FileError> read(const std::string& path) const override;
    Result<std::unique_ptr<ReadHandle>, FileError> openForReading(
        const std::string& path) const override;
    FileOutcome replaceContent(const std::string& path, std::string_view bytes) override;
    FileOutcome replaceAtomically(const std::string& path, std::string_view bytes) override;
    FileOutcome makeFolders(const std::string& path) override;
    FileOutcome removeTree(const std::string& path) override;
    bool exists(const std::string& path) const override { return inner_.exists(path); }
    Result<std::uint64_t, FileError> sizeBytes(const std::string& path) const override;
    Result<std::unique_ptr<AppendHandle>, FileError> openForAppending(
        const std::string& path) override;

private:
    class Appender;
    class Reader;

    MemoryFileSystem& inner_;
    const DiskFaults& faults_;
    int listWrites_ = 0;
};

}  // namespace valdorn::simulation
