#include "platform/posix/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/Uninterrupted.h"

namespace valdorn {

void openMissingStandardStreams() {
    // The kernel gives the lowest free number.
    int opened = 0;
    do
        opened = uninterrupted([] { return open("/dev/null", O_RDWR); });
    while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0)
        close(opened);
}

}  // namespace valdorn
