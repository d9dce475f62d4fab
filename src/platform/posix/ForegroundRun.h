#pragma once

#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/ChildLauncher.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SpawnedChild.h"

namespace valdorn {

// Waits for one child on the calling thread: for the end of its output, then for its exit. Borrows
// what it is given.
class ForegroundRun {
public:
    using OnOutput = std::function<void(std::string_view chunk)>;

    // `interrupt` becomes readable when the waiting is to end.
    ForegroundRun(SpawnedChild& child, const Descriptor& interrupt, const OnOutput& onOutput);

    // The exit, or LaunchError::interrupted; then the child still runs and its output may be open.
    Result<ChildExit, LaunchError> wait();

private:
    bool isReadable(int number);
    bool readOnce();

    SpawnedChild& child_;
    const Descriptor& interrupt_;
    const OnOutput& onOutput_;
    std::vector<char> buffer_;
};

}  // namespace valdorn
