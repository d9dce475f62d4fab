#include "failures/BusStandin.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "failures/calls/FailingCalls.h"

namespace valdorn {

namespace {

// Everything up to what ends like this; false when the guest has gone.
bool hear(int guest, std::string_view end) {
    std::string heard;
    std::array<char, 512> piece{};
    while (heard.find(end) == std::string::npos) {
        const ssize_t got = recv(guest, piece.data(), piece.size(), 0);
        if (got <= 0)
            return false;
        heard.append(piece.data(), static_cast<std::size_t>(got));
    }
    return true;
}

void require(bool isDone, const char* what) {
    if (!isDone)
        throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_un placeAt(const std::string& path) {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    if (path.size() >= sizeof place.sun_path)
        throw std::system_error(ENAMETOOLONG, std::generic_category(), path);
    std::memcpy(place.sun_path, path.data(), path.size());
    return place;
}

void say(int guest, std::string_view words) {
    send(guest, words.data(), words.size(), MSG_NOSIGNAL);
}

}  // namespace

BusStandin::BusStandin(const std::string& path) {
    const failing::Quiet quiet;
    const sockaddr_un place = placeAt(path);
    listening_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(listening_ >= 0, "socket");
    require(bind(listening_, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0, "bind");
    require(listen(listening_, 4) == 0, "listen");
    thread_ = std::thread([this] { serve(); });
}

BusStandin::~BusStandin() {
    const failing::Quiet quiet;
    shutdown(listening_, SHUT_RDWR);
    thread_.join();
    close(listening_);
}

void BusStandin::serve() const {
    const failing::Quiet quiet;
    for (int guest = accept(listening_, nullptr, nullptr); guest >= 0;
         guest = accept(listening_, nullptr, nullptr)) {
        if (hear(guest, "\r\n")) {
            say(guest, "OK 0123456789abcdef\r\n");
            if (hear(guest, "Hello"))
                say(guest, std::string_view("l\2", 2));
        }
        close(guest);
    }
}

}  // namespace valdorn
