#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/ChildLauncher.h"
#include "platform/posix/LargePipes.h"
#include "platform/posix/OutputBudget.h"
#include "platform/posix/SpawnedChild.h"

namespace valdorn {

// One child as the reading thread sees it: its pipe, how much of it is still to be read, its exit,
// and whom to tell. The descriptors are fixed at birth; all other members belong to that thread.
//
//   the pipe \ the child   runs                          has ended
//   open                   read, unless overdrawn        read what was there at the end, unless
//                                                        overdrawn; then finished
//   at its end             nothing to do                 finished
//
// Where the output of a flood is cut, lines and characters are left whole: what is begun at the end
// of a chunk is kept for the next one, until the pipe is empty. All else is handed over as it is read.
class WatchedChild {
public:
    // `largePipes` belongs to the reading thread and outlives this.
    WatchedChild(SpawnedChild child, ChildHandlers handlers, std::shared_ptr<OutputBudget> budget,
                 LargePipes& largePipes);

    // What one turn has come to.
    enum class Turn {
        again,     // there may be more to read
        wait,      // nothing to do until the kernel or a credit says so
        finished,  // the exit is reported and the handlers are released
    };

    // Reads at most one buffer and hands it over, or reports the exit when that is due.
    Turn takeTurn(std::span<char> buffer);

    // To be called when something has changed. When the child has ended: reaps it and measures what
    // is left to read, so that a grandchild which goes on writing cannot put off the exit.
    void noteEnd();

    // Nobody reads here any more: a child that still runs gets somebody else to print to.
    void leave();

    // What the kernel is asked about; fixed until the first turn.
    const SpawnedChild& child() const { return child_; }

private:
    Turn readOnce(std::span<char> buffer);
    void take(std::string_view chunk, std::size_t bufferBytes);
    void handOver(std::string_view chunk);
    void endFlood();
    Turn reportExit();
    void endOutput();

    SpawnedChild child_;
    std::optional<ChildHandlers> handlers_;  // nothing once the exit is reported
    const std::shared_ptr<OutputBudget> budget_;
    std::optional<ChildExit> exit_;
    std::size_t leftAtExitBytes_ = 0;  // once exit_ is known
    std::string begun_;                // read already; the next chunk begins with it
    LargePipes& largePipes_;
    bool isFlooding_ = false;
};

}  // namespace valdorn
