#pragma once

#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

#include <unistd.h>

// What the children of the tests share. A child that a failed test has forgotten ends by itself.
namespace children {

inline constexpr unsigned lifetimeSeconds = 120;

// Writes all of it to standard output, at once as far as the pipe takes it; gives up without a
// reader.
inline void print(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0)
            std::exit(1);
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

// Waits for a signal that ends the process.
[[noreturn]] inline void waitForEver() {
    alarm(lifetimeSeconds);
    for (;;)
        pause();
}

// Bytes that show when some are lost, doubled or swapped.
inline std::string pattern(std::size_t bytes) {
    std::string text(bytes, ' ');
    for (std::size_t at = 0; at < bytes; ++at)
        text[at] = static_cast<char>('a' + (at + at / 26 + at / 4099) % 26);
    return text;
}

}  // namespace children
