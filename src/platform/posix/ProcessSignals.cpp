#include "platform/posix/ProcessSignals.h"

#include <signal.h>

namespace valdorn {

void takeUsualSignals() {
    struct sigaction action {};
    sigaction(SIGPIPE, nullptr, &action);
    if (action.sa_handler == SIG_DFL) {
        action.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &action, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace valdorn
