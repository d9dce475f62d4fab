#pragma once

#include <string>

#include <sys/types.h>

namespace valdorn {

// A server in a process of its own whose answer to a request begins like this and goes on like that
// without end. It serves one connection, and ends with it.
class EndlessHead {
public:
    enum class Start { atOnce, whenTold };

    EndlessHead(const std::string& begin, const std::string& more, Start start = Start::atOnce);
    EndlessHead(const EndlessHead&) = delete;
    EndlessHead& operator=(const EndlessHead&) = delete;
    ~EndlessHead();

    std::string url() const;
    bool isAsked() const;      // whether a request has come
    void start() const;        // tells it to
    bool hasSentMuch() const;  // a megabyte
    void countAnew() const;    // for hasSentMuch()
    bool isOver();

private:
    int port_ = 0;
    int progress_ = -1;  // a byte of it for each megabyte
    int control_ = -1;   // readable once it is asked; a byte written to it is the word to start
    pid_t server_ = -1;
};

}  // namespace valdorn
