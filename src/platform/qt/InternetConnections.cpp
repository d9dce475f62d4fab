#include "platform/qt/InternetConnections.h"

#include <charconv>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace valdorn {

namespace {

// Of the whole process.
std::vector<int> openDescriptors() {
    std::vector<int> numbers;
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc/self/fd", error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        int number = -1;
        if (std::from_chars(name.data(), name.data() + name.size(), number).ec == std::errc())
            numbers.push_back(number);
    }
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

// Drops what was received as well. After shutdown() it could be read still, and be megabytes.
void disconnect(int descriptor) {
    sockaddr nobody{};
    nobody.sa_family = AF_UNSPEC;
    // Fails only where nothing is connected.
    std::ignore = ::connect(descriptor, &nobody, sizeof nobody);
}

// Its owner may close it meanwhile and open another one in its place: ours stays the same socket.
void cutUnlessIn(const std::set<ino_t>& spared, int descriptor) {
    if (!socketAt(descriptor))
        return;
    const int own = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (own < 0)
        return;
    const auto socket = socketAt(own);
    if (socket && !spared.contains(*socket) && isInternetConnection(own))
        disconnect(own);
    ::close(own);
}

std::set<ino_t> openSockets() {
    std::set<ino_t> sockets;
    for (const int descriptor : openDescriptors()) {
        if (const auto socket = socketAt(descriptor))
            sockets.insert(*socket);
    }
    return sockets;
}

}  // namespace

InternetConnections::InternetConnections() : before_(openSockets()) {}

void InternetConnections::cut() const {
    for (const int descriptor : openDescriptors())
        cutUnlessIn(before_, descriptor);
}

}  // namespace valdorn
