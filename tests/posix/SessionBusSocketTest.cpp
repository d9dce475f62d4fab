#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"
#include "platform/posix/SessionBusSocket.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;
using SessionBusSocket::State;

// Generous where an answer comes, short where none does.
constexpr std::chrono::milliseconds patience = 20s;
constexpr std::chrono::milliseconds brief = 1ms;

// A socket that takes as many connections as the kernel keeps for it.
Descriptor listenAt(const std::string& name, int backlog = 5) {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::memcpy(place.sun_path, name.data(), name.size());
    Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    EXPECT_EQ(bind(listener.number(), reinterpret_cast<const sockaddr*>(&place), size), 0);
    EXPECT_EQ(listen(listener.number(), backlog), 0);
    return listener;
}

class SessionBusSocketTest : public testing::Test {
protected:
    // What the one who comes takes the bus for, when it answers his first words, and then his next
    // ones, with these, and says nothing more or hangs up.
    State stateWhile(const std::string& first, const std::string& second, bool hangsUp = false) {
        unlink(path.c_str());
        const Descriptor listener = listenAt(path);
        Descriptor guest;
        std::thread bus([&] {
            guest.reset(accept(listener.number(), nullptr, nullptr));
            heard = hear(guest);
            say(guest, first);
            if (!second.empty()) {
                call = hear(guest);
                say(guest, second);
            }
            if (hangsUp)
                guest.reset();
        });
        const bool isDecided = hangsUp || !second.empty();
        const State state =
            SessionBusSocket::ask("unix:path=" + path, isDecided ? patience : brief);
        bus.join();
        return state;
    }

    static std::string hear(const Descriptor& guest) {
        std::array<char, 400> buffer{};
        const ssize_t count = read(guest.number(), buffer.data(), buffer.size());
        return {buffer.data(), static_cast<std::size_t>(count)};
    }

    static void say(const Descriptor& guest, const std::string& words) {
        std::ignore = send(guest.number(), words.data(), words.size(), MSG_NOSIGNAL);
    }

    const std::string welcome{'l', 2};
    std::string heard;
    std::string call;
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/bus";
};

TEST_F(SessionBusSocketTest, AddressIsWhatTheEnvironmentSays) {
    EXPECT_EQ(SessionBusSocket::address(
                  {"XDG_RUNTIME_DIR=/run/user/7", "DBUS_SESSION_BUS_ADDRESS=unix:path=/there"}),
              "unix:path=/there");
}

TEST_F(SessionBusSocketTest, ElseItIsTheUsualSocketInTheRuntimeFolder) {
    EXPECT_EQ(SessionBusSocket::address({"XDG_RUNTIME_DIR=/run/user/7"}),
              "unix:path=/run/user/7/bus");
    EXPECT_EQ(SessionBusSocket::address({"XDG_RUNTIME_DIR=", "DBUS_SESSION_BUS_ADDRESS="}), "");
    EXPECT_EQ(SessionBusSocket::address({}), "");
}

TEST_F(SessionBusSocketTest, BusThatTakesAConnectionAndSaysNothingIsSilent) {
    const Descriptor listener = listenAt(path);
    EXPECT_EQ(State::silent, SessionBusSocket::ask("unix:path=" + path, brief));
    EXPECT_EQ(State::silent, SessionBusSocket::ask("unix:guid=12,path=" + path, brief));
}

TEST_F(SessionBusSocketTest, BusThatHasNoRoomForAConnectionIsSilent) {
    const Descriptor listener = listenAt(path, 0);
    for (int full = 0; full < 3; ++full)
        EXPECT_EQ(State::silent, SessionBusSocket::ask("unix:path=" + path, brief));
}

TEST_F(SessionBusSocketTest, BusThatLetsUsInIsOpen) {
    EXPECT_EQ(State::open, stateWhile("OK 1234\r\n", welcome));
    std::string hexadecimal;
    for (const char digit : std::to_string(geteuid()))
        hexadecimal += std::string("3") + digit;
    EXPECT_EQ(heard, std::string(1, '\0') + "AUTH EXTERNAL " + hexadecimal + "\r\n");
    EXPECT_EQ(call.substr(0, 8), std::string("BEGIN\r\nl"));
    EXPECT_NE(call.find("Hello"), std::string::npos);
}

TEST_F(SessionBusSocketTest, BusThatFallsSilentOnTheWayInIsSilent) {
    EXPECT_EQ(State::silent, stateWhile("", ""));
    EXPECT_EQ(State::silent, stateWhile("OK", ""));
    EXPECT_EQ(State::silent, stateWhile("OK 1234\r\n", ""));
}

TEST_F(SessionBusSocketTest, BusThatSaysNoIsRefusing) {
    EXPECT_EQ(State::refusing, stateWhile("REJECTED\r\n", "", true));
    EXPECT_EQ(State::refusing, stateWhile("", "", true));
    EXPECT_EQ(State::refusing, stateWhile("OK 1234\r\n", {'l', 3}));
    EXPECT_EQ(State::refusing, stateWhile("OK 1234\r\n", "l", true));
}

TEST_F(SessionBusSocketTest, WhereNobodyListensThereIsNoSilence) {
    EXPECT_EQ(State::unknown, SessionBusSocket::ask("unix:path=" + path, brief));
    { const Descriptor gone = listenAt(path); }
    EXPECT_EQ(State::unknown, SessionBusSocket::ask("unix:path=" + path, brief));
    EXPECT_EQ(State::unknown,
              SessionBusSocket::ask("unix:path=" + path + std::string(200, 'x'), brief));
}

TEST_F(SessionBusSocketTest, AddressesThatNameNoSocketAreNotAsked) {
    for (const char* const address : {"", ";", "unix:", "unix:guid=12", "autolaunch:",
                                      "tcp:host=127.0.0.1,port=1", "nonsense", "unix:path="})
        EXPECT_EQ(State::unknown, SessionBusSocket::ask(address, brief)) << address;
}

TEST_F(SessionBusSocketTest, FirstOfAListThatListensCounts) {
    const Descriptor listener = listenAt(path);
    EXPECT_EQ(State::silent,
              SessionBusSocket::ask("autolaunch:;unix:path=/nonexistent;unix:path=" + path, brief));
}

TEST_F(SessionBusSocketTest, EscapedBytesAndAbstractNamesAreUnderstood) {
    const Descriptor listener = listenAt(path);
    std::string escaped = path;
    escaped.replace(0, 1, "%2f");
    EXPECT_EQ(State::silent, SessionBusSocket::ask("unix:path=" + escaped, brief));
    EXPECT_EQ(State::unknown, SessionBusSocket::ask("unix:path=" + path + "%2", brief));

    const std::string name = "valdorn-test-" + std::to_string(getpid());
    const Descriptor other = listenAt(std::string(1, '\0') + name);
    EXPECT_EQ(State::silent, SessionBusSocket::ask("unix:abstract=" + name, brief));
}

}  // namespace
}  // namespace valdorn
