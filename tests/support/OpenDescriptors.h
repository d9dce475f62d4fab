#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace valdorn {

// How many this process has, and the one more that counting takes.
inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

}  // namespace valdorn
