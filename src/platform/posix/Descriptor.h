#pragma once

#include <string>

#include "platform/Result.h"

namespace valdorn {

// Owns one file descriptor and closes it. One thread at a time.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    // The kernel's number, or -1 when nothing is owned.
    int number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

    // Gives the number away; the caller closes it.
    int release();

    // Closes what is owned, if anything, and owns `number` from here.
    void reset(int number = -1);

private:
    int number_ = -1;
};

// The two ends of a pipe, both close-on-exec, neither of them 0, 1 or 2.
struct Pipe {
    Descriptor readEnd;  // never blocks
    Descriptor writeEnd;
};

// Any thread. The errno of the failing call on failure.
Result<Pipe, int> openPipe();

// Any thread. Opens an existing path close-on-exec; never answers with 0, 1 or 2. `flags` as for
// open(2), without O_CREAT.
Result<Descriptor, int> openPath(const std::string& path, int flags);

}  // namespace valdorn
