#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

// The programs in which people settle how this computer reaches its networks. Pure; any thread.
namespace NetworkSettings {

// A program, looked up on $PATH, and what it is told.
struct Command {
    std::string program;
    std::vector<std::string> arguments;

    friend bool operator==(const Command&, const Command&) = default;
};

// What to try, in this order, on the desktops that $XDG_CURRENT_DESKTOP names: a list with colons
// between them, the closest first, in any case. First each desktop's own control centre, at its page
// for networks, then the editors that run everywhere. The control centre of a desktop that is not
// named never comes: elsewhere it shows an empty page, or refuses to start.
std::vector<Command> commands(std::string_view desktops);

}  // namespace NetworkSettings

}  // namespace valdorn
