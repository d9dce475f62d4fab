#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <thread>

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
    // Says `word` to the one who comes, and what that one has said before.
    std::string heardWhileAnswering(const std::string& word) {
        const Descriptor listener = listenAt(path);
        std::string heard;
        std::thread bus([&] {
            const Descriptor guest(accept(listener.number(), nullptr, nullptr));
            std::array<char, 100> buffer{};
            const ssize_t count = read(guest.number(), buffer.data(), buffer.size());
            heard.assign(buffer.data(), static_cast<std::size_t>(count));
            EXPECT_EQ(write(guest.number(), word.data(), word.size()),
                      static_cast<ssize_t>(word.size()));
        });
        EXPECT_FALSE(SessionBusSocket::isSilent("unix:path=" + path, patience));
        bus.join();
        return heard;
    }

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
    EXPECT_TRUE(SessionBusSocket::isSilent("unix:path=" + path, brief));
    EXPECT_TRUE(SessionBusSocket::isSilent("unix:guid=12,path=" + path, brief));
}

TEST_F(SessionBusSocketTest, BusThatHasNoRoomForAConnectionIsSilent) {
    const Descriptor listener = listenAt(path, 0);
    for (int full = 0; full < 3; ++full)
        EXPECT_TRUE(SessionBusSocket::isSilent("unix:path=" + path, brief));
}

TEST_F(SessionBusSocketTest, AnyAnswerWillDo) {
    const std::string digits = std::to_string(geteuid());
    std::string hexadecimal;
    for (const char digit : digits)
        hexadecimal += std::string("3") + digit;
    EXPECT_EQ(heardWhileAnswering("OK 1234\r\n"),
              std::string(1, '\0') + "AUTH EXTERNAL " + hexadecimal + "\r\n");
}

TEST_F(SessionBusSocketTest, SoWillHangingUp) {
    heardWhileAnswering("");
}

TEST_F(SessionBusSocketTest, WhereNobodyListensThereIsNoSilence) {
    EXPECT_FALSE(SessionBusSocket::isSilent("unix:path=" + path, brief));
    { const Descriptor gone = listenAt(path); }
    EXPECT_FALSE(SessionBusSocket::isSilent("unix:path=" + path, brief));
    EXPECT_FALSE(SessionBusSocket::isSilent("unix:path=" + path + std::string(200, 'x'), brief));
}

TEST_F(SessionBusSocketTest, AddressesThatNameNoSocketAreNotAsked) {
    for (const char* const address : {"", ";", "unix:", "unix:guid=12", "autolaunch:",
                                      "tcp:host=127.0.0.1,port=1", "nonsense", "unix:path="})
        EXPECT_FALSE(SessionBusSocket::isSilent(address, brief)) << address;
}

TEST_F(SessionBusSocketTest, FirstOfAListThatListensCounts) {
    const Descriptor listener = listenAt(path);
    EXPECT_TRUE(
        SessionBusSocket::isSilent("autolaunch:;unix:path=/nonexistent;unix:path=" + path, brief));
}

TEST_F(SessionBusSocketTest, EscapedBytesAndAbstractNamesAreUnderstood) {
    const Descriptor listener = listenAt(path);
    std::string escaped = path;
    escaped.replace(0, 1, "%2f");
    EXPECT_TRUE(SessionBusSocket::isSilent("unix:path=" + escaped, brief));
    EXPECT_FALSE(SessionBusSocket::isSilent("unix:path=" + path + "%2", brief));

    const std::string name = "valdorn-test-" + std::to_string(getpid());
    const Descriptor other = listenAt(std::string(1, '\0') + name);
    EXPECT_TRUE(SessionBusSocket::isSilent("unix:abstract=" + name, brief));
}

}  // namespace
}  // namespace valdorn
