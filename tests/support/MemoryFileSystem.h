#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/FileSystem.h"

namespace valdorn {

// Files in memory, with the errors of real ones. One thread only.
//
// Tests set the scene by writing to `files` and `folders`; the folders above an entry are there
// without being listed. What was asked for is recorded, failures included, for tests to look at.
class MemoryFileSystem : public FileSystem {
public:
    std::map<std::string, std::string> files;  // content by path
    std::set<std::string> folders;
    std::map<std::string, int> failures;  // errno by path: whatever is done there fails with it

    // The paths asked for, in call order.
    mutable std::vector<std::string> reads;
    std::vector<std::string> contentReplacements;
    std::vector<std::string> atomicReplacements;
    std::vector<std::string> foldersMade;
    std::vector<std::string> treesRemoved;
    std::vector<std::string> appendsOpened;

    // How many handles are alive. They may outlive the file system if unused.
    int openHandles() const { return *openHandles_; }

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
    class Handle;
    class Reader;
    // What a handle holds on to: the file it was opened on, which may lose its name.
    struct Node {
        bool named = true;
        std::string lastContent = {};  // once it has lost its name
    };

    bool isFolder(const std::string& path) const;
    FileOutcome failure(const std::string& path) const;
    FileOutcome reachable(const std::string& path) const;
    FileOutcome readable(const std::string& path) const;
    FileOutcome writable(const std::string& path) const;
    void keepFoldersAbove(const std::string& path);
    std::shared_ptr<Node> node(const std::string& path) const;
    void loseName(const std::string& path);

    mutable std::map<std::string, std::shared_ptr<Node>> nodes_;
    std::shared_ptr<int> openHandles_ = std::make_shared<int>(0);
};

}  // namespace valdorn
