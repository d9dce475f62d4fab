#pragma once

#include <string_view>

#include <sys/resource.h>

namespace valdorn {

// Takes the descriptors away until the end of the scope: what is open stays, nothing more can be had.
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit none{0, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

private:
    rlimit before_{};
};

constexpr bool canDoWithoutDescriptors = std::string_view(VALDORN_SANITIZE).empty();
constexpr char whyDescriptorsAreNeeded[] =
    "A sanitizer looks at objects through a pipe of its own.";

}  // namespace valdorn
