#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"

namespace valdorn {

// Why there is no place.
struct PlaceRefusal {
    std::string description;  // one readable line
    bool isShortage = false;  // of the kernel's: the next try may succeed
};

// Where the instance that serves one home folder keeps what is about the instance and not about
// the fleet: outside the home's own data, private to the user, and the same for every start with
// that home in the same session. A start without the session's XDG_RUNTIME_DIR (over ssh, say) has
// another place and does not meet the first.
//
// The folder is `valdorn` in $XDG_RUNTIME_DIR; where that is unset or unusable, in $XDG_STATE_HOME,
// whose default is .local/state in the home folder. It is made, with mode 0700, when it is missing.
struct InstancePlace {
    std::string folder;  // absolute
    std::string key;     // 16 hexadecimal digits that stand for the home folder

    std::string lockPath() const { return folder + "/" + key + ".lock"; }
    std::string ledgerPath() const { return folder + "/" + key + ".daemons"; }

    // Any thread. `environment` as "NAME=value". Refused where no folder that only the user can write
    // to is to be had. A shortage at the first folder is no reason to take the other one: another
    // start would not meet this one there.
    static Result<InstancePlace, PlaceRefusal> forHome(const std::vector<std::string>& environment,
                                                       const std::string& home);
};

// Any thread. The key of a home folder: 64-bit FNV-1a of its path with all links resolved (as
// given when that fails), so that two ways to one home meet. Stable across versions and computers.
std::string instanceKeyOf(const std::string& home);

}  // namespace valdorn
