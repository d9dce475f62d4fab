#include "simulation/FaultyDisk.h"

#include <cerrno>
#include <utility>

namespace valdorn::simulation {

class FaultyDisk::Appender : public AppendHandle {
public:
    Appender(const DiskFaults& faults, std::string path, std::unique_ptr<AppendHandle> inner)
        : faults_(faults), path_(std::move(path)), inner_(std::move(inner)) {}

    FileOutcome append(std::string_view bytes) override {
        return faults_.appending ? FileError{ENOSPC, path_} : inner_->append(bytes);
    }

private:
    const DiskFaults& faults_;
    const std::string path_;
    const std::unique_ptr<AppendHandle> inner_;
};

class FaultyDisk::Reader : public ReadHandle {
public:
    Reader(const DiskFaults& faults, std::string path, std::unique_ptr<ReadHandle> inner)
        : faults_(faults), path_(std::move(path)), inner_(std::move(inner)) {}

    Result<std::uint64_t, FileError> sizeBytes() const override {
        if (faults_.measuringLog)
            return FileError{EIO, path_};
        return inner_->sizeBytes();
    }

    Result<std::string, FileError> readAt(std::uint64_t offset,
                                          std::size_t maxBytes) const override {
        if (faults_.readingLog)
            return FileError{EIO, path_};
        return inner_->readAt(offset, maxBytes);
    }

private:
    const DiskFaults& faults_;
    const std::string path_;
    const std::unique_ptr<ReadHandle> inner_;
};

Result<std::string, FileError> FaultyDisk::read(const std::string& path) const {
    if (faults_.readingList)
        return FileError{EACCES, path};
    return inner_.read(path);
}

Result<std::unique_ptr<ReadHandle>, FileError> FaultyDisk::openForReading(
    const std::string& path) const {
    if (faults_.findingLog)
        return FileError{EMFILE, path};
    auto opened = inner_.openForReading(path);
    if (!opened.ok())
        return opened;
    return std::unique_ptr<ReadHandle>(
        std::make_unique<Reader>(faults_, path, std::move(opened.value())));
}

FileOutcome FaultyDisk::replaceContent(const std::string& path, std::string_view bytes) {
    ++listWrites_;
    if (faults_.list == DiskFaults::Writing::works)
        return inner_.replaceContent(path, bytes);
    if (faults_.list == DiskFaults::Writing::leavesHalf) {
        if (FileOutcome failed = inner_.replaceContent(path, bytes.substr(0, bytes.size() / 2)))
            return failed;
    }
    return FileError{ENOSPC, path};
}

FileOutcome FaultyDisk::replaceAtomically(const std::string& path, std::string_view bytes) {
    return faults_.configuration ? FileError{ENOSPC, path} : inner_.replaceAtomically(path, bytes);
}

FileOutcome FaultyDisk::makeFolders(const std::string& path) {
    return faults_.makingFolders ? FileError{EROFS, path} : inner_.makeFolders(path);
}

FileOutcome FaultyDisk::removeTree(const std::string& path) {
    return faults_.removing ? FileError{EBUSY, path} : inner_.removeTree(path);
}

Result<std::uint64_t, FileError> FaultyDisk::sizeBytes(const std::string& path) const {
    if (faults_.measuringLog)
        return FileError{EIO, path};
    return inner_.sizeBytes(path);
}

Result<std::unique_ptr<AppendHandle>, FileError> FaultyDisk::openForAppending(
    const std::string& path) {
    if (faults_.openingLog)
        return FileError{EMFILE, path};
    auto opened = inner_.openForAppending(path);
    if (!opened.ok())
        return opened;
    return std::unique_ptr<AppendHandle>(
        std::make_unique<Appender>(faults_, path, std::move(opened.value())));
}

}  // namespace valdorn::simulation
