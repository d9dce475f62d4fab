// Feeds every file of a corpus to a fuzz target, without a fuzzer: what was ever found stays found.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesIn(const char* folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::uint8_t> bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const auto files = filesIn(argv[1]);
    for (const auto& path : files) {
        std::cout << path.filename().string()
                  << std::endl;  // the last one told is the one that fails
        const std::vector<std::uint8_t> bytes = bytesOf(path);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    return files.empty() ? 1 : 0;
}
