// Writes each open descriptor and what it leads to, one a line.
#include <array>
#include <cstdlib>
#include <string>

#include <dirent.h>
#include <unistd.h>

#include "ChildTools.h"

namespace {

std::string target(const std::string& link) {
    std::array<char, 4096> text{};
    const ssize_t length = readlink(link.c_str(), text.data(), text.size());
    return length < 0 ? "?" : std::string(text.data(), static_cast<std::size_t>(length));
}

}  // namespace

int main() {
    const std::string folder = "/proc/self/fd/";
    DIR* listing = opendir(folder.c_str());
    std::string found;
    while (const dirent* entry = readdir(listing)) {
        const std::string name = entry->d_name;
        if (name.front() != '.' && std::stoi(name) != dirfd(listing))
            found += name + " " + target(folder + name) + "\n";
    }
    closedir(listing);
    children::print(found);
}
