#include "platform/posix/ChildMailbox.h"

#include <utility>

#include <sys/eventfd.h>

#include "platform/posix/KernelCall.h"
#include "platform/posix/Uninterrupted.h"

namespace valdorn {

ChildMailbox::ChildMailbox()
    : wakeUp_(orThrow(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {}

void ChildMailbox::lookAt(ChildKey child) {
    const std::lock_guard lock(mutex_);
    letters_.children.push_back(child);
    wake();
}

void ChildMailbox::stop() {
    const std::lock_guard lock(mutex_);
    letters_.isStopping = true;
    wake();
}

ChildMailbox::Letters ChildMailbox::take() {
    const std::lock_guard lock(mutex_);
    // Fails only when nothing was told meanwhile, which take() then answers truthfully.
    eventfd_t told = 0;
    eventfd_read(wakeUp_.number(), &told);
    return {std::exchange(letters_.children, {}), letters_.isStopping};
}

// Fails only when the counter is full, and then it is readable already.
void ChildMailbox::wake() {
    uninterrupted([this] { return eventfd_write(wakeUp_.number(), 1); });
}

}  // namespace valdorn
