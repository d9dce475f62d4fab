#pragma once

#include <string>
#include <vector>

namespace valdorn::demo {

// The registration that register leaves in the working folder and the daemon needs: `.runner`, as
// JSON in act_runner's own form. A value.
struct RunnerFile {
    std::string name;
    std::string address;
    std::vector<std::string> labels;  // such as macos:host, or just macos

    // Reads and writes `.runner` in the working folder. Both throw std::runtime_error with the
    // text that act_runner prints after "Error: ".
    static RunnerFile load();
    void save() const;

    // The labels as the server knows them, in Go's form: [macos linux].
    std::string declaredLabels() const;
};

// "[a b c]"
std::string goList(const std::vector<std::string>& words);

}  // namespace valdorn::demo
