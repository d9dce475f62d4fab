#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include <sys/types.h>

namespace valdorn {

// What there was of the process's sockets when this was made, to tell from them the TCP connections
// over the internet protocols that have come up since. Any thread. Needs /proc; where it cannot be
// read, none seems to have come up.
//
// A connection that is cut ends at once, whatever waits in it: whoever reads it, on any thread, meets
// an error with the next byte. The descriptors stay their owners'.
class InternetConnections {
public:
    InternetConnections();

    // Cuts all that have come up since. False where some may have been left: for want of a descriptor
    // to look at them by, or of what there was.
    bool cut() const;

    // Of those, cuts the ones that were there when `later` was made, were sent nothing since, and have
    // received something all the same, or have it still to be read.
    void cutUnasked(const InternetConnections& later) const;

private:
    struct Traffic {
        std::uint64_t sentBytes = 0;
        std::uint64_t receivedBytes = 0;
    };
    using Sockets = std::map<ino_t, Traffic>;  // by their numbers in the kernel

    static std::optional<Sockets> look();
    static Traffic trafficOf(int descriptor);

    bool isNew(ino_t socket) const;
    bool isUnasked(int descriptor, ino_t socket) const;

    const std::optional<Sockets> seen_;  // none where nothing could be read
};

}  // namespace valdorn
