#pragma once

#include <optional>

#include <sys/resource.h>

namespace valdorn {

// Keeps what is in our memory out of core dumps: a registration token that somebody has typed stays
// there, in places of Qt's that nobody can wipe. Main thread, before there is another; for the rest
// of the process's life.
//
// Only the soft limit goes down: whoever wants a dump of a running instance raises it again from
// outside (prlimit). Not PR_SET_DUMPABLE: its user and the desktop could then not look at the process
// in /proc either.
//
// What a dump handler does with the limit is its own affair: that of systemd keeps to it.
class CoreDumpLimit {
public:
    CoreDumpLimit();

    // The limits that we were started with, which our children are to have; nothing where the
    // kernel has not told.
    const std::optional<rlimit>& before() const { return before_; }

private:
    std::optional<rlimit> before_;
};

}  // namespace valdorn
