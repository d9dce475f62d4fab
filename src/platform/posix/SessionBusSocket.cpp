#include "platform/posix/SessionBusSocket.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/Environment.h"
#include "platform/posix/Descriptor.h"

namespace valdorn::SessionBusSocket {

namespace {

using std::chrono::milliseconds;

enum class Listener { absent, talks, silent };

bool isSocket(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

// "%41" stands for "A".
std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned char byte = 0;
        const char* const digits = text.data() + at + 1;
        const bool isEscape = text[at] == '%' && at + 2 < text.size() &&
                              std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        result += isEscape ? static_cast<char>(byte) : text[at];
        at += isEscape ? 2 : 0;
    }
    return result;
}

// The name of the socket as the kernel has it, in which an abstract one begins with a zero.
std::optional<std::string> socketName(std::string_view address) {
    constexpr std::string_view transport = "unix:";
    if (!address.starts_with(transport))
        return std::nullopt;
    std::string_view rest = address.substr(transport.size());
    while (!rest.empty()) {
        const std::string_view pair = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(rest.size(), pair.size() + 1));
        if (pair.starts_with("path="))
            return unescaped(pair.substr(5));
        if (pair.starts_with("abstract="))
            return std::string(1, '\0').append(unescaped(pair.substr(9)));
    }
    return std::nullopt;
}

// What every client says first: a zero, and who it is, in hexadecimal digits of the decimal ones.
std::string greeting() {
    std::string words(1, '\0');
    words += "AUTH EXTERNAL ";
    for (const char digit : std::to_string(geteuid()))
        words += std::string("3") + digit;
    return words + "\r\n";
}

bool answers(const Descriptor& connection, milliseconds patience) {
    const std::string words = greeting();
    if (send(connection.number(), words.data(), words.size(), MSG_NOSIGNAL) < 0)
        return true;  // it has hung up
    pollfd listening{connection.number(), POLLIN, 0};
    int ready = -1;
    do
        ready = poll(&listening, 1, static_cast<int>(patience.count()));
    while (ready < 0 && errno == EINTR);
    return ready != 0;
}

Listener listenerAt(const std::string& name, milliseconds patience) {
    sockaddr_un place{};
    if (name.size() >= sizeof place.sun_path)
        return Listener::absent;
    place.sun_family = AF_UNIX;
    std::memcpy(place.sun_path, name.data(), name.size());
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    const Descriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (connect(connection.number(), reinterpret_cast<const sockaddr*>(&place), size) != 0)
        return errno == EAGAIN ? Listener::silent : Listener::absent;
    return answers(connection, patience) ? Listener::talks : Listener::silent;
}

}  // namespace

std::string address(const std::vector<std::string>& environment) {
    if (auto named = Environment::value(environment, "DBUS_SESSION_BUS_ADDRESS"))
        return *named;
    const auto runtime = Environment::value(environment, "XDG_RUNTIME_DIR");
    if (!runtime || !isSocket(*runtime + "/bus"))
        return {};
    return "unix:path=" + *runtime + "/bus";
}

// libdbus tries the addresses of a list one by one, and settles for the first that it reaches.
bool isSilent(const std::string& address, milliseconds patience) {
    std::string_view rest = address;
    while (!rest.empty()) {
        const std::string_view entry = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(rest.size(), entry.size() + 1));
        const auto name = socketName(entry);
        const Listener listener = name ? listenerAt(*name, patience) : Listener::absent;
        if (listener != Listener::absent)
            return listener == Listener::silent;
    }
    return false;
}

}  // namespace valdorn::SessionBusSocket
