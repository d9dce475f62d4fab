#include "ui/EndlessHeads.h"

#include <array>
#include <atomic>
#include <csignal>
#include <new>
#include <string_view>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ui/LoopbackListener.h"

namespace valdorn {

struct EndlessHeads::Shared {
    std::atomic<int> asked{0};
    std::atomic<bool> isWell{false};
};

namespace {

constexpr std::string_view headWithoutEnd = "HTTP/1.1 200 OK\r\nX: ";
constexpr std::string_view goodAnswer =
    "HTTP/1.1 200 OK\r\nContent-Length: 4\r\nConnection: close\r\n\r\nwell";

void* sharedMemory(std::size_t bytes) {
    void* const memory =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(memory, MAP_FAILED);
    return memory;
}

void goOnWithoutEnd(int connection) {
    std::array<char, 65536> more{};
    more.fill('a');
    while (sendAll(connection, {more.data(), more.size()}))
        continue;
}

}  // namespace

EndlessHeads::EndlessHeads() : shared_(new (sharedMemory(sizeof(Shared))) Shared) {
    sockaddr_in address{};
    const int listener = listenOnLoopback(address);
    port_ = ntohs(address.sin_port);
    server_ = fork();
    if (server_ == 0) {
        // In the children of a process with threads: system calls only.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        signal(SIGCHLD, SIG_IGN);
        int connection = -1;
        do
            connection = accept(listener, nullptr, nullptr);
        while (fork() != 0 && close(connection) == 0);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::array<char, 4096> request{};
        while (recv(connection, request.data(), request.size(), 0) > 0) {
            ++shared_->asked;
            const bool isWell = shared_->isWell;
            if (sendAll(connection, isWell ? goodAnswer : headWithoutEnd) && !isWell)
                goOnWithoutEnd(connection);
        }
        _exit(0);
    }
    EXPECT_GT(server_, 0);
    close(listener);
}

EndlessHeads::~EndlessHeads() {
    if (server_ > 0) {
        kill(server_, SIGKILL);
        waitpid(server_, nullptr, 0);
    }
    munmap(shared_, sizeof(Shared));
}

std::string EndlessHeads::url() const {
    return "http://127.0.0.1:" + std::to_string(port_) + "/";
}

int EndlessHeads::asked() const {
    return shared_->asked;
}

void EndlessHeads::answerWell() {
    shared_->isWell = true;
}

}  // namespace valdorn
