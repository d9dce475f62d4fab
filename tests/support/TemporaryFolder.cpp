#include "support/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace valdorn {

TemporaryFolder::TemporaryFolder() {
    std::string made = std::filesystem::temp_directory_path() / "valdorn-test-XXXXXX";
    if (mkdtemp(made.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), made);
    path_ = std::filesystem::canonical(made);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;  // what is left is the system's to clean
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::operator/(std::string_view name) const {
    return path_ + '/' + std::string(name);
}

}  // namespace valdorn
