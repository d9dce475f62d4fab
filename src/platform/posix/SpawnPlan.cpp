#include "platform/posix/SpawnPlan.h"

#include <signal.h>
#include <unistd.h>

namespace valdorn {

SpawnPlan::SpawnPlan(int input, int output, int folder) {
    check(posix_spawn_file_actions_init(&actions_));
    check(posix_spawnattr_init(&attributes_));
    placeDescriptors(input, output, folder);
    resetSignals();
}

SpawnPlan::~SpawnPlan() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
}

// Close-on-exec covers the descriptors that we open ourselves. Libraries, and whoever started us,
// may have left others open: everything above the standard streams is closed by number as well.
void SpawnPlan::placeDescriptors(int input, int output, int folder) {
    check(posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO));
    check(posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO));
    check(posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO));
    check(posix_spawn_file_actions_addfchdir_np(&actions_, folder));
    check(posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1));
}

// Blocked and ignored signals outlive exec. Ours are our own business: a child that ignores
// SIGPIPE or has SIGTERM blocked because we do would not behave as in a terminal. The group, which
// is its own unless another is named, keeps a Ctrl-C in our terminal from it.
void SpawnPlan::resetSignals() {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    check(posix_spawnattr_setsigmask(&attributes_, &none));
    check(posix_spawnattr_setsigdefault(&attributes_, &all));
    check(posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
}

void SpawnPlan::check(int answer) {
    if (error_ == 0)
        error_ = answer;
}

}  // namespace valdorn
