#include "simulation/ModelDisk.h"

#include <algorithm>
#include <cstddef>

#include "simulation/Marks.h"

namespace valdorn::simulation {

namespace {

// "/" is the folder of all, and in none.
std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return path == "/" ? "" : path.substr(0, std::max<std::size_t>(slash, 1));
}

bool isAtOrBelow(const std::string& path, const std::string& folder) {
    return path == folder || path.starts_with(folder + "/");
}

}  // namespace

bool ModelDisk::isFolder(const std::string& path) const {
    return folders_.contains(path);
}

bool ModelDisk::exists(const std::string& path) const {
    return files.contains(path) || isFolder(path);
}

// A file can stand there: its folder does, and no folder of its own name.
bool ModelDisk::canHold(const std::string& path) const {
    return isFolder(folderOf(path)) && !isFolder(path);
}

void ModelDisk::plantFolder(const std::string& path) {
    for (std::string above = path; !above.empty(); above = folderOf(above)) {
        if (files.contains(above))
            return;
    }
    for (std::string above = path; !above.empty(); above = folderOf(above))
        folders_.insert(above);
}

void ModelDisk::makeFolders(const std::string& path) {
    if (!faults.makingFolders)
        plantFolder(path);
}

void ModelDisk::unlink(const std::string& path) {
    std::erase_if(folders_, [&](const std::string& entry) { return isAtOrBelow(entry, path); });
    std::erase_if(files, [&](const auto& file) { return isAtOrBelow(file.first, path); });
}

void ModelDisk::removeTree(const std::string& path) {
    if (faults.removing)
        reached<"folder of a removed runner stays">();
    else
        unlink(path);
}

void ModelDisk::overwrite(const std::string& path, const std::string& bytes) {
    if (!canHold(path))
        return;
    Content& content = files[path];
    if (!content)
        content = std::make_shared<std::string>();
    *content = bytes;
}

void ModelDisk::plantFile(const std::string& path, const std::string& bytes) {
    if (canHold(path))
        files[path] = std::make_shared<std::string>(bytes);
}

void ModelDisk::writeList(const std::string& bytes) {
    ++listWrites_;
    switch (faults.list) {
        case DiskFaults::Writing::works:
            return overwrite(listPath(), bytes);
        case DiskFaults::Writing::fails:
            return reached<"list not written">();
        case DiskFaults::Writing::leavesHalf:
            reached<"list written by half">();
            return overwrite(listPath(), bytes.substr(0, bytes.size() / 2));
    }
}

std::optional<std::string> ModelDisk::readList() const {
    const auto file = files.find(listPath());
    if (faults.readingList || file == files.end())
        return std::nullopt;
    return *file->second;
}

void ModelDisk::replaceConfiguration(const std::string& path, const std::string& bytes) {
    if (!faults.configuration)
        plantFile(path, bytes);
}

ModelDisk::Content ModelDisk::openLog(const std::string& path) {
    if (faults.openingLog || !canHold(path))
        return nullptr;
    Content& content = files[path];
    if (!content)
        content = std::make_shared<std::string>();
    return content;
}

}  // namespace valdorn::simulation
