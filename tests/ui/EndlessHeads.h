#pragma once

#include <string>

#include <sys/types.h>

namespace valdorn {

// A server in processes of its own, one for each connection: the head of each answer goes on without
// end, until it is told to answer well.
class EndlessHeads {
public:
    EndlessHeads();
    EndlessHeads(const EndlessHeads&) = delete;
    EndlessHeads& operator=(const EndlessHeads&) = delete;
    ~EndlessHeads();

    std::string url() const;
    int asked() const;  // how many requests have come
    void answerWell();  // the next ones, with the body "well"

private:
    struct Shared;

    Shared* const shared_;  // with the processes
    int port_ = 0;
    pid_t server_ = -1;
};

}  // namespace valdorn
