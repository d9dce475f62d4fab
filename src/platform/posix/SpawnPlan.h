#pragma once

#include <spawn.h>

namespace valdorn {

// What the child does between its birth and its executable: streams, folder, signals, group. One
// thread; the descriptors are borrowed and stay open until the child is spawned.
class SpawnPlan {
public:
    // All descriptors are above 2. `output` becomes standard output and standard error, `input`
    // standard input, `folder` (a descriptor of a folder) the working folder; no other descriptor
    // reaches the child.
    SpawnPlan(int input, int output, int folder);
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan();

    // Nonzero (an errno) when memory did not suffice to write the plan down.
    int error() const { return error_; }

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    void placeDescriptors(int input, int output, int folder);
    void resetSignals();
    void check(int answer);

    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
    int error_ = 0;
};

}  // namespace valdorn
