#include "Output.h"

#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace valdorn::demo {
namespace {

int descriptor(Stream stream) {
    return stream == Stream::standardOutput ? STDOUT_FILENO : STDERR_FILENO;
}

// Returns how much of the content was written, at least one byte.
std::size_t writeSome(int file, std::string_view content) {
    while (true) {
        const ssize_t written = ::write(file, content.data(), content.size());
        if (written > 0) {
            return static_cast<std::size_t>(written);
        }
        if (written < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "write");
        }
    }
}

}  // namespace

void Output::line(Stream stream, std::string text) {
    text += crlf_ ? "\r\n" : "\n";
    bytes(stream, text);
}

void Output::bytes(Stream stream, std::string_view content) const {
    const std::size_t most = pieceBytes_ > 0 ? pieceBytes_ : content.size();
    while (!content.empty()) {
        content.remove_prefix(writeSome(descriptor(stream), content.substr(0, most)));
    }
}

}  // namespace valdorn::demo
