#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "support/MemoryFileSystem.h"

namespace valdorn {

// Files in memory whose reading in parts is watched, and interfered with. One thread only.
class WatchedFileSystem : public MemoryFileSystem {
public:
    // Called before each call of a reader: what it does to `files`, the reader finds.
    std::function<void()> onReaderCall = [] {};

    mutable std::uint64_t bytesRead = 0;  // in parts

    Result<std::unique_ptr<ReadHandle>, FileError> openForReading(
        const std::string& path) const override {
        auto opened = MemoryFileSystem::openForReading(path);
        if (!opened.ok())
            return opened;
        return std::unique_ptr<ReadHandle>(
            std::make_unique<Reader>(*this, std::move(opened.value())));
    }

private:
    class Reader : public ReadHandle {
    public:
        Reader(const WatchedFileSystem& owner, std::unique_ptr<ReadHandle> inner)
            : owner_(owner), inner_(std::move(inner)) {}

        Result<std::uint64_t, FileError> sizeBytes() const override {
            owner_.onReaderCall();
            return inner_->sizeBytes();
        }

        Result<std::string, FileError> readAt(std::uint64_t offset,
                                              std::size_t maxBytes) const override {
            owner_.onReaderCall();
            auto read = inner_->readAt(offset, maxBytes);
            if (read.ok())
                owner_.bytesRead += read.value().size();
            return read;
        }

    private:
        const WatchedFileSystem& owner_;
        const std::unique_ptr<ReadHandle> inner_;
    };
};

}  // namespace valdorn
