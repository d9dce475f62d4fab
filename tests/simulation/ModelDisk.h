#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "simulation/DiskFaults.h"

namespace valdorn::simulation {

// The files as the model expects them: names that lead to contents, which live on without a name
// for as long as somebody has them open. `faults` is set by the steps.
class ModelDisk {
public:
    using Content = std::shared_ptr<std::string>;

    static constexpr char support[] = "/home/ada/Library/Application Support/Valdorn";
    static std::string listPath() { return std::string(support) + "/runners.json"; }

    DiskFaults faults;
    std::map<std::string, Content> files;

    bool exists(const std::string& path) const;
    bool isFolder(const std::string& path) const;
    const std::set<std::string>& folders() const { return folders_; }

    // Each as the program does it, faults included.
    void makeFolders(const std::string& path);
    void removeTree(const std::string& path);
    void writeList(const std::string& bytes);
    int listWrites() const { return listWrites_; }  // failures included
    std::optional<std::string> readList() const;
    void replaceConfiguration(const std::string& path, const std::string& bytes);
    Content openLog(const std::string& path);  // none when it cannot be opened

    // What happens behind the program's back; always works, as far as the path allows it.
    void plantFolder(const std::string& path);
    void plantFile(const std::string& path, const std::string& bytes);
    void overwrite(const std::string& path, const std::string& bytes);
    void unlink(const std::string& path);

private:
    bool canHold(const std::string& path) const;

    std::set<std::string> folders_;
    int listWrites_ = 0;
};

}  // namespace valdorn::simulation
