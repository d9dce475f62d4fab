#include "support/FaultyFileSystem.h"

#include <limits>
#include <utility>

namespace valdorn {

class FaultyFileSystem::Handle : public AppendHandle {
public:
    Handle(const FaultyFileSystem& owner, std::string path, std::unique_ptr<AppendHandle> inner)
        : owner_(owner), path_(std::move(path)), inner_(std::move(inner)) {}

    FileOutcome append(std::string_view bytes) override {
        FileOutcome fault = owner_.nextFault(path_, Access::changes);
        if (!fault)
            return inner_->append(bytes);
        if (const std::string_view left = owner_.leftBehind(bytes); !left.empty()) {
            if (FileOutcome failed = inner_->append(left))
                return failed;
        }
        return fault;
    }

private:
    const FaultyFileSystem& owner_;
    const std::string path_;
    const std::unique_ptr<AppendHandle> inner_;
};

class FaultyFileSystem::Reader : public ReadHandle {
public:
    Reader(const FaultyFileSystem& owner, std::string path, std::unique_ptr<ReadHandle> inner)
        : owner_(owner), path_(std::move(path)), inner_(std::move(inner)) {}

    Result<std::uint64_t, FileError> sizeBytes() const override {
        if (const FileOutcome fault = owner_.nextFault(path_, Access::reads))
            return *fault;
        return inner_->sizeBytes();
    }

    Result<std::string, FileError> readAt(std::uint64_t offset,
                                          std::size_t maxBytes) const override {
        if (const FileOutcome fault = owner_.nextFault(path_, Access::reads))
            return *fault;
        return inner_->readAt(offset, maxBytes);
    }

private:
    const FaultyFileSystem& owner_;
    const std::string path_;
    const std::unique_ptr<ReadHandle> inner_;
};

void FaultyFileSystem::choose(int first, int last, int errorNumber, Damage damage) {
    first_ = first;
    last_ = last;
    errorNumber_ = errorNumber;
    damage_ = damage;
    operations_ = 0;
    faults_ = 0;
    readingGoesOn_ = false;
}

void FaultyFileSystem::failOperation(int number, int errorNumber, Damage damage) {
    choose(number, number, errorNumber, damage);
}

void FaultyFileSystem::failFrom(int number, int errorNumber, Damage damage) {
    choose(number, std::numeric_limits<int>::max(), errorNumber, damage);
}

void FaultyFileSystem::failChanges(int errorNumber) {
    failFrom(1, errorNumber);
    readingGoesOn_ = true;
}

FileOutcome FaultyFileSystem::nextFault(const std::string& path, Access access) const {
    ++operations_;
    const bool spared = readingGoesOn_ && access == Access::reads;
    if (spared || first_ == 0 || operations_ < first_ || operations_ > last_)
        return std::nullopt;
    ++faults_;
    return FileError{errorNumber_, path};
}

std::string_view FaultyFileSystem::leftBehind(std::string_view bytes) const {
    return damage_ == Damage::half ? bytes.substr(0, bytes.size() / 2) : std::string_view();
}

Result<std::string, FileError> FaultyFileSystem::read(const std::string& path) const {
    if (const FileOutcome fault = nextFault(path, Access::reads))
        return *fault;
    return inner_.read(path);
}

Result<std::unique_ptr<ReadHandle>, FileError> FaultyFileSystem::openForReading(
    const std::string& path) const {
    if (const FileOutcome fault = nextFault(path, Access::reads))
        return *fault;
    auto opened = inner_.openForReading(path);
    if (!opened.ok())
        return opened;
    return std::unique_ptr<ReadHandle>(
        std::make_unique<Reader>(*this, path, std::move(opened.value())));
}

FileOutcome FaultyFileSystem::replaceContent(const std::string& path, std::string_view bytes) {
    FileOutcome fault = nextFault(path, Access::changes);
    if (!fault)
        return inner_.replaceContent(path, bytes);
    if (damage_ == Damage::half) {
        if (FileOutcome failed = inner_.replaceContent(path, leftBehind(bytes)))
            return failed;
    }
    return fault;
}

FileOutcome FaultyFileSystem::replaceAtomically(const std::string& path, std::string_view bytes) {
    if (FileOutcome fault = nextFault(path, Access::changes))
        return fault;
    return inner_.replaceAtomically(path, bytes);
}

FileOutcome FaultyFileSystem::makeFolders(const std::string& path) {
    if (FileOutcome fault = nextFault(path, Access::changes))
        return fault;
    return inner_.makeFolders(path);
}

FileOutcome FaultyFileSystem::removeTree(const std::string& path) {
    if (FileOutcome fault = nextFault(path, Access::changes))
        return fault;
    return inner_.removeTree(path);
}

Result<std::uint64_t, FileError> FaultyFileSystem::sizeBytes(const std::string& path) const {
    if (const FileOutcome fault = nextFault(path, Access::reads))
        return *fault;
    return inner_.sizeBytes(path);
}

Result<std::unique_ptr<AppendHandle>, FileError> FaultyFileSystem::openForAppending(
    const std::string& path) {
    if (const FileOutcome fault = nextFault(path, Access::changes))
        return *fault;
    auto opened = inner_.openForAppending(path);
    if (!opened.ok())
        return opened;
    return std::unique_ptr<AppendHandle>(
        std::make_unique<Handle>(*this, path, std::move(opened.value())));
}

}  // namespace valdorn
