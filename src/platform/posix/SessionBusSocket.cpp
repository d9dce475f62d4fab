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
#include <sys/un.h>
#include <unistd.h>

#include "platform/Environment.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Uninterrupted.h"

namespace valdorn::SessionBusSocket {

namespace {

using std::chrono::milliseconds;

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

// The first call that a guest has to make, as it stands on the wire: little-endian, each header
// field aligned to 8 bytes.
std::string hello() {
    std::string fields;
    const auto add = [&fields](char code, char type, std::string_view text) {
        fields.resize((fields.size() + 7) / 8 * 8);
        fields += {code, '\1', type, '\0', static_cast<char>(text.size()), '\0', '\0', '\0'};
        fields.append(text).push_back('\0');
    };
    add(1, 'o', "/org/freedesktop/DBus");
    add(2, 's', "org.freedesktop.DBus");
    add(3, 's', "Hello");
    add(6, 's', "org.freedesktop.DBus");
    // A call without flags, version 1, no body, number 1, and how long the fields are.
    std::string message{'l', 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, static_cast<char>(fields.size())};
    message.resize(16);
    message += fields;
    message.resize((message.size() + 7) / 8 * 8);
    return message;
}

// What the bus says, until a time.
class Conversation {
public:
    Conversation(const Descriptor& connection, milliseconds patience)
        : connection_(connection), end_(std::chrono::steady_clock::now() + patience) {}

    // False when it has hung up, and when its buffer is full, which our few words do not fill: then
    // it counts as refusing.
    bool say(const std::string& words) const {
        std::string_view rest = words;
        while (!rest.empty()) {
            const ssize_t sent = uninterrupted(
                [&] { return send(connection_.number(), rest.data(), rest.size(), MSG_NOSIGNAL); });
            if (sent <= 0)
                return false;
            rest.remove_prefix(static_cast<std::size_t>(sent));
        }
        return true;
    }

    // The next byte; nothing when it has hung up, or when the time is over.
    std::optional<char> next() {
        char byte = 0;
        const auto take = [&] { return recv(connection_.number(), &byte, 1, 0); };
        if (!waitForMore() || uninterrupted(take) != 1)
            return std::nullopt;
        return byte;
    }

    bool isTimeOver() const { return isTimeOver_; }

private:
    bool waitForMore() {
        pollfd listening{connection_.number(), POLLIN, 0};
        const int ready = uninterrupted([&] {
            const auto left =
                std::chrono::ceil<milliseconds>(end_ - std::chrono::steady_clock::now());
            return poll(&listening, 1, static_cast<int>(std::max(left, milliseconds{0}).count()));
        });
        isTimeOver_ = ready == 0;
        return ready > 0;
    }

    const Descriptor& connection_;
    const std::chrono::steady_clock::time_point end_;
    bool isTimeOver_ = false;
};

// "OK" and a line end; anything else is a refusal.
bool isAuthenticated(Conversation& bus) {
    std::string line;
    for (auto byte = bus.next(); byte; byte = bus.next()) {
        if (*byte == '\n')
            return line.starts_with("OK ");
        line += *byte;
    }
    return false;
}

// The answer begins with a letter for the order of its bytes, and then its kind.
bool isWelcome(Conversation& bus) {
    constexpr char methodReturn = 2;
    return bus.next() && bus.next() == methodReturn;
}

State stateOf(const Descriptor& connection, milliseconds patience) {
    Conversation bus(connection, patience);
    const bool isOpen = bus.say(greeting()) && isAuthenticated(bus) &&
                        bus.say("BEGIN\r\n" + hello()) && isWelcome(bus);
    if (isOpen)
        return State::open;
    return bus.isTimeOver() ? State::silent : State::refusing;
}

State stateAt(const std::string& name, milliseconds patience) {
    sockaddr_un place{};
    if (name.size() >= sizeof place.sun_path)
        return State::unknown;
    place.sun_family = AF_UNIX;
    std::memcpy(place.sun_path, name.data(), name.size());
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    const Descriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // Where too many wait already, it has not taken anybody in for long.
    const auto goIn = [&] {
        return connect(connection.number(), reinterpret_cast<const sockaddr*>(&place), size);
    };
    if (uninterrupted(goIn) != 0)
        return errno == EAGAIN ? State::silent : State::unknown;
    return stateOf(connection, patience);
}

}  // namespace

std::string address(const std::vector<std::string>& environment) {
    if (auto named = Environment::value(environment, "DBUS_SESSION_BUS_ADDRESS"))
        return *named;
    const auto runtime = Environment::value(environment, "XDG_RUNTIME_DIR");
    return runtime ? "unix:path=" + *runtime + "/bus" : std::string();
}

// libdbus tries the addresses of a list one by one, and settles for the first that it reaches.
State ask(const std::string& address, milliseconds patience) {
    std::string_view rest = address;
    while (!rest.empty()) {
        const std::string_view entry = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(rest.size(), entry.size() + 1));
        const auto name = socketName(entry);
        const State state = name ? stateAt(*name, patience) : State::unknown;
        if (state != State::unknown)
            return state;
    }
    return State::unknown;
}

}  // namespace valdorn::SessionBusSocket
