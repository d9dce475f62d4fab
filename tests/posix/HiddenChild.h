#pragma once

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace valdorn {

// A stopped child of ours that shows nobody but root its executable; where we are root, it has become
// another user's.
class HiddenChild {
public:
    HiddenChild() : id_(fork()) {
        if (id_ == 0)
            hide();
        EXPECT_GT(id_, 0);
        siginfo_t stopped{};
        EXPECT_EQ(waitid(P_PID, static_cast<id_t>(id_), &stopped, WSTOPPED), 0);
    }
    HiddenChild(const HiddenChild&) = delete;
    HiddenChild& operator=(const HiddenChild&) = delete;
    ~HiddenChild() {
        // Where there is no child, its id means everybody.
        if (id_ > 0) {
            kill(id_, SIGKILL);
            waitpid(id_, nullptr, 0);
        }
    }

    pid_t id() const { return id_; }

private:
    static constexpr unsigned nobody = 65534;

    [[noreturn]] static void hide() {
        if (geteuid() == 0)
            syscall(SYS_setuid, nobody);
        prctl(PR_SET_DUMPABLE, 0);
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // after the change of user, which forgets it
        for (;;)
            syscall(SYS_kill, syscall(SYS_getpid), SIGSTOP);
    }

    const pid_t id_;
};

// Until the end of the scope this thread may neither look at the processes of others nor send them
// signals, though it is root's.
class WithoutPower {
public:
    WithoutPower() {
        EXPECT_EQ(syscall(SYS_capget, &header_, before_), 0);
        __user_cap_data_struct fewer[2] = {before_[0], before_[1]};
        fewer[0].effective &= ~(1U << CAP_SYS_PTRACE | 1U << CAP_KILL);
        EXPECT_EQ(syscall(SYS_capset, &header_, fewer), 0);
    }
    WithoutPower(const WithoutPower&) = delete;
    WithoutPower& operator=(const WithoutPower&) = delete;
    ~WithoutPower() { EXPECT_EQ(syscall(SYS_capset, &header_, before_), 0); }

private:
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct before_[2]{};
};

}  // namespace valdorn
