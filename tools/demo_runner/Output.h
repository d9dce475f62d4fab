#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Script.h"

namespace valdorn::demo {

// Writes to standard output and standard error, unbuffered and in order, as oddly as asked for.
// Throws std::system_error when a stream cannot be written; a pipe that nobody reads any more ends
// the process by SIGPIPE, like most programs.
class Output {
public:
    void setCrlf(bool on) { crlf_ = on; }
    void setPieceBytes(std::size_t bytes) { pieceBytes_ = bytes; }  // 0: whole writes

    void line(Stream stream, std::string text);                 // adds the line end
    void bytes(Stream stream, std::string_view content) const;  // as it is

private:
    bool crlf_ = false;
    std::size_t pieceBytes_ = 0;
};

}  // namespace valdorn::demo
