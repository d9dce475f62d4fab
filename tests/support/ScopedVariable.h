#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace valdorn {

// Sets or removes a variable of this process's environment until the end of the scope. One thread
// only: nothing else may read the environment meanwhile.
class ScopedVariable {
public:
    ScopedVariable(std::string name, const std::optional<std::string>& value)
        : name_(std::move(name)) {
        if (const char* const before = std::getenv(name_.c_str()))
            before_ = before;
        put(value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable() { put(before_); }

private:
    void put(const std::optional<std::string>& value) const {
        if (value)
            setenv(name_.c_str(), value->c_str(), 1);
        else
            unsetenv(name_.c_str());
    }

    const std::string name_;
    std::optional<std::string> before_;
};

}  // namespace valdorn
