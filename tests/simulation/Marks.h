#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace valdorn::simulation {

// How often something was come by. All that the program has are listed from its start on, reached
// or not. Any thread.
class MarkCounter {
public:
    explicit MarkCounter(const char* name);
    MarkCounter(const MarkCounter&) = delete;
    MarkCounter& operator=(const MarkCounter&) = delete;

    void count() { times_.fetch_add(1, std::memory_order_relaxed); }

    const std::string& name() const { return name_; }
    std::uint64_t times() const { return times_.load(std::memory_order_relaxed); }

private:
    const std::string name_;
    std::atomic<std::uint64_t> times_{0};
};

// A text that can be a template's argument.
template <std::size_t size>
struct MarkName {
    // Implicit, so that a literal will do.
    constexpr MarkName(const char (&literal)[size]) { std::copy_n(literal, size, text); }

    char text[size] = {};
};

template <MarkName name>
inline MarkCounter markCounter{name.text};

// Notes that a situation has arisen which a campaign has to come by, or its silence is worth
// nothing: `reached<"relaunch after stop">()`. To write it is to list it.
template <MarkName name>
void reached() {
    markCounter<name>.count();
}

// All of them, by name.
std::vector<const MarkCounter*> allMarks();

// The names of those that nobody has come by yet.
std::vector<std::string> neverReached();

}  // namespace valdorn::simulation
