#pragma once

#include <set>

#include <sys/types.h>

namespace valdorn {

// The process's TCP connections over the internet protocols that have come up since this was made.
// Any thread. Needs /proc; without it there seem to be none.
class InternetConnections {
public:
    InternetConnections();

    // Ends them at once, whatever waits in them: whoever reads one, on any thread, meets an error
    // with the next byte. The descriptors stay their owners'.
    void cut() const;

private:
    const std::set<ino_t> before_;
};

}  // namespace valdorn
