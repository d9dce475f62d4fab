#include "platform/qt/InternetConnections.h"

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace valdorn {

namespace {

// Of the whole process. None where they cannot all be told, as when no descriptor is free to read
// the folder by.
std::optional<std::vector<int>> openDescriptors() {
    std::vector<int> numbers;
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc/self/fd", error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        int number = -1;
        if (std::from_chars(name.data(), name.data() + name.size(), number).ec == std::errc())
            numbers.push_back(number);
    }
    if (error)
        return std::nullopt;
    return numbers;
}

// The socket's number in the kernel, where it is one.
std::optional<ino_t> socketAt(int descriptor) {
    struct stat facts {};
    if (::fstat(descriptor, &facts) != 0 || !S_ISSOCK(facts.st_mode))
        return std::nullopt;
    return facts.st_ino;
}

int option(int descriptor, int name) {
    int value = -1;
    socklen_t size = sizeof value;
    return ::getsockopt(descriptor, SOL_SOCKET, name, &value, &size) == 0 ? value : -1;
}

bool isInternetConnection(int descriptor) {
    const int domain = option(descriptor, SO_DOMAIN);
    return (domain == AF_INET || domain == AF_INET6) &&
           option(descriptor, SO_PROTOCOL) == IPPROTO_TCP && option(descriptor, SO_ACCEPTCONN) == 0;
}

bool hasUnread(int descriptor) {
    int bytes = 0;
    return ::ioctl(descriptor, FIONREAD, &bytes) == 0 && bytes > 0;
}

// Drops what was received as well. After shutdown() it could be read still, and be megabytes.
void disconnect(int descriptor) {
    sockaddr nobody{};
    nobody.sa_family = AF_UNSPEC;
    // Fails only where nothing is connected.
    std::ignore = ::connect(descriptor, &nobody, sizeof nobody);
}

// Its owner may close it meanwhile and open another one in its place: ours stays the same socket.
// False where it cannot be told what stands there.
bool cutIf(const std::function<bool(int descriptor, ino_t socket)>& isMeant, int descriptor) {
    if (!socketAt(descriptor))
        return true;
    const int own = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    // Closed meanwhile, which is as good; or no descriptor is free. Then it is read on, but nobody
    // waits for it, and the next exchange, which Qt cannot serve meanwhile, ends in a cut as well; at
    // the latest the client does.
    if (own < 0)
        return errno == EBADF;
    const auto socket = socketAt(own);
    if (socket && isInternetConnection(own) && isMeant(own, *socket))
        disconnect(own);
    ::close(own);
    return true;
}

// False where some may have been left.
bool cutThose(const std::function<bool(int descriptor, ino_t socket)>& areMeant) {
    const auto descriptors = openDescriptors();
    // As above: the next end is soon enough.
    if (!descriptors)
        return false;
    bool areAllCut = true;
    for (const int descriptor : *descriptors)
        areAllCut = cutIf(areMeant, descriptor) && areAllCut;
    return areAllCut;
}

}  // namespace

InternetConnections::InternetConnections() : seen_(look()) {}

// Where this cannot be told, nothing is cut for its sake: it could be anybody's.
std::optional<InternetConnections::Sockets> InternetConnections::look() {
    const auto descriptors = openDescriptors();
    if (!descriptors)
        return std::nullopt;
    Sockets sockets;
    for (const int descriptor : *descriptors) {
        if (const auto socket = socketAt(descriptor))
            sockets.emplace(*socket, trafficOf(descriptor));
    }
    return sockets;
}

// Nothing where it is no TCP connection.
InternetConnections::Traffic InternetConnections::trafficOf(int descriptor) {
    tcp_info facts{};
    socklen_t size = sizeof facts;
    if (::getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &facts, &size) != 0)
        return {};
    return {facts.tcpi_bytes_sent, facts.tcpi_bytes_received};
}

bool InternetConnections::isNew(ino_t socket) const {
    return seen_ && !seen_->contains(socket);
}

bool InternetConnections::isUnasked(int descriptor, ino_t socket) const {
    if (!seen_)
        return false;
    const auto then = seen_->find(socket);
    if (then == seen_->end())
        return false;
    const Traffic now = trafficOf(descriptor);
    return now.sentBytes == then->second.sentBytes &&
           (now.receivedBytes > then->second.receivedBytes || hasUnread(descriptor));
}

bool InternetConnections::cut() const {
    return seen_ && cutThose([this](int, ino_t socket) { return isNew(socket); });
}

void InternetConnections::cutUnasked(const InternetConnections& later) const {
    // What is left is tried again at the end of the next.
    std::ignore = cutThose([this, &later](int descriptor, ino_t socket) {
        return isNew(socket) && later.isUnasked(descriptor, socket);
    });
}

}  // namespace valdorn
