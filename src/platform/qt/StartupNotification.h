#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

// Tells an X11 desktop that what it has launched is up, so that the pointer stops looking busy.
// Qt says so only when it shows a window, which ours may not do for days, or not in this process.
// The protocol is freedesktop.org's startup notification, from where the sizes are.
namespace StartupNotification {

// What one X11 client message carries.
using Chunk = std::array<char, 20>;

// The message of the end of that launch, with its final zero byte, and zeros up to a whole chunk.
std::vector<Chunk> completion(std::string_view id);

// Says over a connection of its own that the launch with that id is over; to say it twice does no
// harm. Nothing happens without an id or without X11: a process with windows knows where they are,
// one without does not look for X11 on a Wayland desktop, which might start it for that alone. Main
// thread only, with an application object; takes as long as an X server takes to answer.
void complete(const std::string& id);

}  // namespace StartupNotification

}  // namespace valdorn
