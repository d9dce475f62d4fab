#include "platform/posix/ExecutablePath.h"

#include <array>
#include <climits>
#include <cstddef>

#include <unistd.h>

namespace valdorn {

std::string executablePath() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    return {path.data(), length < 0 ? 0 : static_cast<std::size_t>(length)};
}

}  // namespace valdorn
