#pragma once

#include <string>

#include <sys/types.h>

namespace valdorn {

// A server in a process of its own whose answer begins like this and goes on like that without end.
// It serves one connection, and ends with it.
class EndlessHead {
public:
    EndlessHead(const std::string& begin, const std::string& more);
    EndlessHead(const EndlessHead&) = delete;
    EndlessHead& operator=(const EndlessHead&) = delete;
    ~EndlessHead();

    std::string url() const;
    bool hasSentMuch() const;  // a megabyte
    bool isOver();

private:
    int port_ = 0;
    int progress_ = -1;  // readable once it has sent much
    pid_t server_ = -1;
};

}  // namespace valdorn
