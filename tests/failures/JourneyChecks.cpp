#include <algorithm>

#include <signal.h>

#include "failures/Journey.h"
#include "failures/KeptLines.h"
#include "failures/Seen.h"
#include "platform/posix/DaemonRecords.h"

namespace valdorn {

using failing::Call;

// What could not be ended is for the next start to end, unless the ledger could not be read or
// written.
void Journey::checkLeftover() {
    if (!hasFailed())
        return;
    const auto noted = isOver_ || !now_->ledger ? std::vector<pid_t>{} : notedDaemons();
    const bool isNoted = std::find(noted.begin(), noted.end(), leftBehind_) != noted.end();
    // The first file that is opened like this tells the boot, without which no record means anything.
    const bool isBootKnown = faults_.front().call != Call::fopen || faults_.front().nth > 1;
    const bool mustBe =
        isBootKnown && mayBeHurt({Call::pidfdOpen, Call::pidfdSendSignal, Call::fopen,
                                  Call::readlink, Call::stat, Call::poll});
    if (mustBe && seen::isRunningChild(leftBehind_) && !isNoted)
        wrong("a daemon that was left behind is forgotten");
    seen::signal(leftBehind_, SIGTERM);
}

std::vector<pid_t> Journey::notedDaemons() const {
    const auto records = daemonRecordsIn(seen::content(now_->place.value().ledgerPath()));
    std::vector<pid_t> noted;
    for (const ProcessFacts& one : records.value_or(DaemonRecords{}).daemons)
        noted.push_back(one.pid);
    return noted;
}

// Whether all that run, and nobody else, are written down.
bool Journey::doesLedgerAgree() {
    std::vector<pid_t> noted;
    for (const pid_t pid : notedDaemons()) {
        if (pid != leftBehind_)
            noted.push_back(pid);
    }
    std::vector<pid_t> running;
    for (RunnerRef runner : {legacy(), second_})
        running.push_back(seen::daemonIn(runner->dataDir()));
    return std::is_permutation(noted.begin(), noted.end(), running.begin(), running.end());
}

void Journey::checkLog() {
    KeptLines kept(seen::lines(support() + "/valdorn.log"));
    const auto pids = seen::launches(support());
    for (const pid_t pid : pids)
        kept.expect(pid, std::count(died_.begin(), died_.end(), pid) > 0, pid == pids.back());
    const bool isLogHurt =
        mayBeHurt({Call::open, Call::fstat, Call::writeFile, Call::mkdir, Call::epollControl});
    // Half a line takes the next one with it, which may be of the next launch.
    const bool isLineCut = std::any_of(faults_.begin(), faults_.end(), [](const auto& fault) {
        return fault.failure.manner == failing::Manner::cut;
    });
    if (kept.hurtLaunches() > (isLineCut ? 2 : isLogHurt ? 1 : 0))
        wrong("lines of " + std::to_string(kept.hurtLaunches()) + " launches are lost");
    if (kept.strangeLines() > (mayBeHurt({Call::writeFile}) ? 1 : 0))
        wrong("the log holds " + std::to_string(kept.strangeLines()) + " strange lines");
}

// No temporary file stays, unless it could not be removed.
void Journey::checkNames() {
    if (mayBeHurt({Call::unlink}))
        return;
    for (const std::string& name : seen::namesBelow(home_.path())) {
        if (name.starts_with(".valdorn-"))
            wrong(name + " is left");
    }
}

}  // namespace valdorn
