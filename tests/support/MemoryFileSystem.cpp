#include "support/MemoryFileSystem.h"

#include <cerrno>
#include <utility>

namespace valdorn {

namespace {

// The folder that holds the path; empty above the root.
std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || path == "/")
        return {};
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool isBelow(const std::string& path, const std::string& folder) {
    return path.starts_with(folder + "/");
}

template <typename Entries>
bool holdsAnyBelow(const Entries& entries, const std::string& folder) {
    const auto next = entries.lower_bound(folder + "/");
    if (next == entries.end())
        return false;
    if constexpr (std::is_same_v<Entries, std::set<std::string>>)
        return isBelow(*next, folder);
    else
        return isBelow(next->first, folder);
}

}  // namespace

class MemoryFileSystem::Handle : public AppendHandle {
public:
    Handle(MemoryFileSystem& fileSystem, std::string path, std::shared_ptr<Node> node)
        : fileSystem_(fileSystem),
          path_(std::move(path)),
          node_(std::move(node)),
          openHandles_(fileSystem.openHandles_) {
        ++*openHandles_;
    }
    ~Handle() override { --*openHandles_; }

    FileOutcome append(std::string_view bytes) override {
        if (FileOutcome failed = fileSystem_.failure(path_))
            return failed;
        const auto file = fileSystem_.files.find(path_);
        if (node_->named && file != fileSystem_.files.end())
            file->second.append(bytes);
        else
            node_->lastContent.append(bytes);
        return std::nullopt;
    }

private:
    MemoryFileSystem& fileSystem_;
    const std::string path_;
    const std::shared_ptr<Node> node_;
    const std::shared_ptr<int> openHandles_;
};

class MemoryFileSystem::Reader : public ReadHandle {
public:
    Reader(const MemoryFileSystem& fileSystem, std::string path, std::shared_ptr<Node> node)
        : fileSystem_(fileSystem),
          path_(std::move(path)),
          node_(std::move(node)),
          openHandles_(fileSystem.openHandles_) {
        ++*openHandles_;
    }
    ~Reader() override { --*openHandles_; }

    Result<std::uint64_t, FileError> sizeBytes() const override {
        if (const FileOutcome failed = fileSystem_.failure(path_))
            return *failed;
        return std::uint64_t{content().size()};
    }

    Result<std::string, FileError> readAt(std::uint64_t offset,
                                          std::size_t maxBytes) const override {
        if (const FileOutcome failed = fileSystem_.failure(path_))
            return *failed;
        return offset < content().size() ? content().substr(offset, maxBytes) : std::string();
    }

private:
    const std::string& content() const {
        const auto file = fileSystem_.files.find(path_);
        return node_->named && file != fileSystem_.files.end() ? file->second : node_->lastContent;
    }

    const MemoryFileSystem& fileSystem_;
    const std::string path_;
    const std::shared_ptr<Node> node_;
    const std::shared_ptr<int> openHandles_;
};

bool MemoryFileSystem::isFolder(const std::string& path) const {
    return path == "/" || folders.contains(path) || holdsAnyBelow(folders, path) ||
           holdsAnyBelow(files, path);
}

FileOutcome MemoryFileSystem::failure(const std::string& path) const {
    if (const auto failing = failures.find(path); failing != failures.end())
        return FileError{failing->second, path};
    if (path.find('\0') != std::string::npos)
        return FileError{EINVAL, path};
    return std::nullopt;
}

// An error when the path cannot be reached for lack of its folder.
FileOutcome MemoryFileSystem::reachable(const std::string& path) const {
    for (std::string above = folderOf(path); !above.empty(); above = folderOf(above)) {
        if (files.contains(above))
            return FileError{ENOTDIR, path};
    }
    if (const std::string folder = folderOf(path); !folder.empty() && !isFolder(folder))
        return FileError{ENOENT, path};
    return std::nullopt;
}

FileOutcome MemoryFileSystem::readable(const std::string& path) const {
    if (FileOutcome failed = failure(path))
        return failed;
    if (FileOutcome unreachable = reachable(path))
        return unreachable;
    if (files.contains(path))
        return std::nullopt;
    return FileError{isFolder(path) ? EISDIR : ENOENT, path};
}

FileOutcome MemoryFileSystem::writable(const std::string& path) const {
    FileOutcome refused = failure(path);
    if (!refused)
        refused = reachable(path);
    if (!refused && !files.contains(path) && isFolder(path))
        return FileError{EISDIR, path};
    return refused;
}

// Lists the folders that are there only by what they hold, before it goes.
void MemoryFileSystem::keepFoldersAbove(const std::string& path) {
    for (std::string above = folderOf(path); !above.empty(); above = folderOf(above))
        folders.insert(above);
}

std::shared_ptr<MemoryFileSystem::Node> MemoryFileSystem::node(const std::string& path) const {
    std::shared_ptr<Node>& node = nodes_[path];
    if (!node)
        node = std::make_shared<Node>();
    return node;
}

void MemoryFileSystem::loseName(const std::string& path) {
    const auto node = nodes_.find(path);
    if (node == nodes_.end())
        return;
    node->second->named = false;
    if (const auto file = files.find(path); file != files.end())
        node->second->lastContent = file->second;
    nodes_.erase(node);
}

Result<std::string, FileError> MemoryFileSystem::read(const std::string& path) const {
    reads.push_back(path);
    if (const FileOutcome failed = readable(path))
        return *failed;
    return files.at(path);
}

Result<std::unique_ptr<ReadHandle>, FileError> MemoryFileSystem::openForReading(
    const std::string& path) const {
    reads.push_back(path);
    if (const FileOutcome failed = readable(path))
        return *failed;
    return std::unique_ptr<ReadHandle>(std::make_unique<Reader>(*this, path, node(path)));
}

FileOutcome MemoryFileSystem::replaceContent(const std::string& path, std::string_view bytes) {
    contentReplacements.push_back(path);
    if (FileOutcome failed = writable(path))
        return failed;
    files[path] = bytes;
    return std::nullopt;
}

FileOutcome MemoryFileSystem::replaceAtomically(const std::string& path, std::string_view bytes) {
    atomicReplacements.push_back(path);
    if (FileOutcome failed = writable(path))
        return failed;
    loseName(path);
    files[path] = bytes;
    return std::nullopt;
}

FileOutcome MemoryFileSystem::makeFolders(const std::string& path) {
    foldersMade.push_back(path);
    if (FileOutcome failed = failure(path))
        return failed;
    if (files.contains(path))
        return FileError{EEXIST, path};
    if (FileOutcome unreachable = reachable(path);
        unreachable && unreachable->errorNumber == ENOTDIR)
        return unreachable;
    keepFoldersAbove(path);
    folders.insert(path);
    return std::nullopt;
}

FileOutcome MemoryFileSystem::removeTree(const std::string& path) {
    treesRemoved.push_back(path);
    if (FileOutcome failed = failure(path))
        return failed;
    // A file in place of a folder above: nothing stands at the path, which is what was asked for.
    if (!exists(path))
        return std::nullopt;
    keepFoldersAbove(path);
    const auto goes = [&path](const std::string& entry) {
        return entry == path || isBelow(entry, path);
    };
    std::erase_if(folders, goes);
    std::erase_if(files, [&](const auto& file) {
        if (!goes(file.first))
            return false;
        loseName(file.first);
        return true;
    });
    return std::nullopt;
}

bool MemoryFileSystem::exists(const std::string& path) const {
    return files.contains(path) || isFolder(path);
}

Result<std::uint64_t, FileError> MemoryFileSystem::sizeBytes(const std::string& path) const {
    if (const FileOutcome failed = readable(path))
        return *failed;
    return std::uint64_t{files.at(path).size()};
}

Result<std::unique_ptr<AppendHandle>, FileError> MemoryFileSystem::openForAppending(
    const std::string& path) {
    appendsOpened.push_back(path);
    if (const FileOutcome failed = writable(path))
        return *failed;
    files.try_emplace(path);
    return std::unique_ptr<AppendHandle>(std::make_unique<Handle>(*this, path, node(path)));
}

}  // namespace valdorn
