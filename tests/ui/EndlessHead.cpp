#include "ui/EndlessHead.h"

#include <array>
#include <csignal>
#include <string_view>

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ui/LoopbackListener.h"

namespace valdorn {

namespace {

constexpr std::size_t much = 1'000'000;

bool isReadable(int descriptor) {
    pollfd one{descriptor, POLLIN, 0};
    return poll(&one, 1, 0) == 1 && (one.revents & POLLIN) != 0;
}

// Once a request has come.
bool awaitStart(int connection, int control) {
    std::array<char, 4096> bytes{};
    return recv(connection, bytes.data(), bytes.size(), 0) > 0 && write(control, "x", 1) == 1 &&
           read(control, bytes.data(), 1) == 1;
}

// In the child of a process with threads: system calls only.
[[noreturn]] void serve(int listener, int progress, int control, std::string_view begin,
                        std::string_view more) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int connection = accept(listener, nullptr, nullptr);
    bool isTaken = awaitStart(connection, control) && sendAll(connection, begin);
    for (std::size_t untold = 0; isTaken; untold += more.size()) {
        if (untold >= much) {
            isTaken = write(progress, "x", 1) == 1;
            untold = 0;
        }
        isTaken = isTaken && sendAll(connection, more);
    }
    _exit(0);
}

}  // namespace

EndlessHead::EndlessHead(const std::string& begin, const std::string& more, Start start) {
    sockaddr_in address{};
    const int listener = listenOnLoopback(address);
    port_ = ntohs(address.sin_port);
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    std::array<int, 2> controls{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, controls.data()), 0);
    control_ = controls[0];
    if (start == Start::atOnce)
        this->start();
    server_ = fork();
    if (server_ == 0)
        serve(listener, ends[1], controls[1], begin, more);
    EXPECT_GT(server_, 0);
    progress_ = ends[0];
    close(ends[1]);
    close(controls[1]);
    close(listener);
}

EndlessHead::~EndlessHead() {
    if (!isOver()) {
        kill(server_, SIGKILL);
        waitpid(server_, nullptr, 0);
    }
    close(progress_);
    close(control_);
}

std::string EndlessHead::url() const {
    return "http://127.0.0.1:" + std::to_string(port_) + "/";
}

bool EndlessHead::isAsked() const {
    return isReadable(control_);
}

void EndlessHead::start() const {
    EXPECT_EQ(write(control_, "x", 1), 1);
}

bool EndlessHead::hasSentMuch() const {
    return isReadable(progress_);
}

void EndlessHead::countAnew() const {
    std::array<char, 4096> counted{};
    if (hasSentMuch()) {
        EXPECT_GT(read(progress_, counted.data(), counted.size()), 0);
    }
}

bool EndlessHead::isOver() {
    if (server_ > 0 && waitpid(server_, nullptr, WNOHANG) == server_)
        server_ = -1;
    return server_ < 0;
}

}  // namespace valdorn
