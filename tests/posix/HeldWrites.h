#pragma once

#include <array>
#include <cstddef>
#include <functional>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"

namespace valdorn {

// Holds every write() of a thread, and of the children and threads that it begins, until another
// thread lets it go on. For the rest of their lives, which is how long they are answered: without an
// answer their writes would fail, and a sanitizer's own with them, which ends the process with 0.
namespace HeldWrites {

// On the thread to be held. Gives what the other one needs; nothing where the kernel refuses.
inline Descriptor hold() {
    std::array<sock_filter, 4> rules{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_write, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog program{rules.size(), rules.data()};
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    return Descriptor(static_cast<int>(
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program)));
}

// On the other one, until all of them have ended: `before` is called before each write, with its
// length.
inline void letGoOn(const Descriptor& held, const std::function<void(std::size_t)>& before) {
    for (;;) {
        pollfd next{held.number(), POLLIN, 0};
        poll(&next, 1, -1);
        if ((next.revents & POLLIN) == 0 && (next.revents & POLLHUP) != 0)
            return;
        seccomp_notif write{};
        if (ioctl(held.number(), SECCOMP_IOCTL_NOTIF_RECV, &write) != 0)
            continue;  // interrupted, or the writer has been killed
        before(write.data.args[2]);
        seccomp_notif_resp answer{};
        answer.id = write.id;
        answer.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
        ioctl(held.number(), SECCOMP_IOCTL_NOTIF_SEND, &answer);
    }
}

}  // namespace HeldWrites

}  // namespace valdorn
