#pragma once

#include <memory>
#include <string>

#include "platform/FileSystem.h"

namespace valdorn {

// Another file system in which chosen operations fail. One thread only.
//
// Every operation that can fail is counted, from 1: all members but exists(), and each call of
// a handle. A test loops over N until operations() stays below N, and looks at faults() to see
// that the fault was really met.
class FaultyFileSystem : public FileSystem {
public:
    // `inner` outlives this and every handle opened.
    explicit FaultyFileSystem(FileSystem& inner) : inner_(inner) {}

    // What a failing write leaves behind. Atomic replacement always leaves everything as it was.
    enum class Damage {
        none,  // nothing was written
        half,  // the first half of the bytes was written
    };

    // The Nth operation counted from now fails with that errno, the others succeed.
    void failOperation(int number, int errorNumber, Damage damage = Damage::none);

    // The Nth operation counted from now and all later ones fail.
    void failFrom(int number, int errorNumber, Damage damage = Damage::none);

    // Every operation that would change something fails from now on; reading goes on. Until the
    // next choice of a fault, number 0 being none.
    void failChanges(int errorNumber);

    // Operations since the last choice of a fault (or since construction).
    int operations() const { return operations_; }

    // How many of them failed by our doing.
    int faults() const { return faults_; }

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
    class Handle;
    class Reader;

    enum class Access { reads, changes };

    FileOutcome nextFault(const std::string& path, Access access) const;
    std::string_view leftBehind(std::string_view bytes) const;
    void choose(int first, int last, int errorNumber, Damage damage);

    FileSystem& inner_;
    int first_ = 0;  // the failing operations; 0 for none
    int last_ = 0;
    int errorNumber_ = 0;
    Damage damage_ = Damage::none;
    bool readingGoesOn_ = false;
    mutable int operations_ = 0;
    mutable int faults_ = 0;
};

}  // namespace valdorn
