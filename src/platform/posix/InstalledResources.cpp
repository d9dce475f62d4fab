#include "platform/posix/InstalledResources.h"

#include <filesystem>
#include <system_error>

namespace valdorn {

InstalledResources::InstalledResources(const std::string& executable) {
    const std::filesystem::path folder = std::filesystem::path(executable).parent_path();
    if (!folder.is_absolute())
        return;
    folders_.push_back(folder / "resources");
    if (folder.filename() == "bin")
        folders_.push_back(folder.parent_path() / "lib" / "valdorn");
}

std::optional<std::string> InstalledResources::path(const std::string& name) const {
    for (const std::string& folder : folders_) {
        const std::filesystem::path candidate = std::filesystem::path(folder) / name;
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate, error))
            return candidate.string();
    }
    return std::nullopt;
}

}  // namespace valdorn
