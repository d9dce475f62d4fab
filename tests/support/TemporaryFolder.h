#pragma once

#include <string>
#include <string_view>

namespace valdorn {

// A fresh empty folder on the disk, removed with all it holds at the end. Any thread.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    // Absolute, without a trailing slash and without links in it.
    const std::string& path() const { return path_; }

    // The path of an entry in the folder, which need not be there.
    std::string operator/(std::string_view name) const;

private:
    std::string path_;
};

}  // namespace valdorn
