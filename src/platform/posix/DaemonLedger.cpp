#include "platform/posix/DaemonLedger.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include <poll.h>
#include <signal.h>

#include "platform/posix/DaemonRecords.h"
#include "platform/posix/PidDescriptor.h"
#include "platform/posix/Shortage.h"

namespace valdorn {

namespace {

using Clock = std::chrono::steady_clock;

std::vector<ProcessFacts> noted(const FileSystem& files, const std::string& path,
                                const std::string& boot) {
    const auto text = files.read(path);
    const auto records = text ? daemonRecordsIn(text.value()) : std::nullopt;
    if (!records || records->boot.empty() || records->boot != boot)
        return {};
    return records->daemons;
}

std::vector<ProcessFacts> leftBehind(const FileSystem& files, const std::string& path,
                                     const std::string& birthPath, const std::string& boot) {
    auto daemons = noted(files, path, boot);
    const auto note = files.read(birthPath);
    const auto last = note ? livingProcessOf(note.value(), boot) : std::nullopt;
    const auto isLast = [&last](const ProcessFacts& one) { return last->hasSameBirthAs(one); };
    if (last && std::none_of(daemons.begin(), daemons.end(), isLast))
        daemons.push_back(*last);
    return daemons;
}

// A daemon that was asked to end.
struct Asked {
    ProcessFacts facts;
    std::unique_ptr<PidDescriptor> process;
};

// How a process is compared with its record.
using Likeness = bool (ProcessFacts::*)(const ProcessFacts&) const;

// What a look at the process of a record has shown.
struct Sight {
    std::unique_ptr<PidDescriptor> process;  // the very one
    bool mayBeThere = false;                 // it could not be looked at
};

// True also where that cannot be seen.
bool mayBeBornAs(const ProcessFacts& record) {
    const auto birth = birthOf(record.pid);
    return !birth || birth->hasSameBirthAs(record);
}

// The descriptor is opened first and the process looked at then: if it ends meanwhile and its id
// goes to another, the descriptor still means the old one, and nobody is hit.
Sight lookFor(const ProcessFacts& record, Likeness isLike) {
    auto descriptor = PidDescriptor::open(record.pid);
    if (!descriptor)
        return {nullptr, isShortage(descriptor.error())};
    auto process = std::make_unique<PidDescriptor>(record.pid, std::move(descriptor.value()));
    const auto facts = factsAbout(record.pid);
    if (!facts)
        return {nullptr, mayBeBornAs(record) && process->isRunning()};
    if (!((*facts).*isLike)(record))
        return {};
    return {std::move(process)};
}

struct Asking {
    std::vector<Asked> asked;
    std::vector<ProcessFacts> unasked;  // may be there and run
};

Asking askToEnd(const std::vector<ProcessFacts>& records, Likeness isLike) {
    Asking asking;
    for (const ProcessFacts& record : records) {
        auto [process, mayBeThere] = lookFor(record, isLike);
        if (process && process->send(SIGTERM))
            asking.asked.push_back({record, std::move(process)});
        else if (mayBeThere || (process && process->isRunning()))
            asking.unasked.push_back(record);
    }
    return asking;
}

std::vector<pollfd> runningAmong(const std::vector<Asked>& asked) {
    std::vector<pollfd> running;
    for (const Asked& daemon : asked) {
        if (daemon.process->isRunning())
            running.push_back({daemon.process->number(), POLLIN, 0});
    }
    return running;
}

void waitForAll(const std::vector<Asked>& asked, Clock::time_point deadline) {
    for (auto running = runningAmong(asked); !running.empty(); running = runningAmong(asked)) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            return;
        const int answer = poll(running.data(), running.size(), static_cast<int>(left.count()));
        if (answer < 0 && errno != EINTR)
            return;
    }
}

}  // namespace

DaemonLedger::DaemonLedger(FileSystem& files, std::string path)
    : files_(files),
      path_(std::move(path)),
      birthPath_(path_ + ".birth"),
      boot_(bootId()),
      leftovers_(leftBehind(files_, path_, birthPath_, boot_)) {}

void DaemonLedger::expectBirth() {
    const std::lock_guard lock(mutex_);
    isBirthExpected_ = true;
    if (lookAgain())
        write();
}

DaemonLedger::Entry DaemonLedger::note(std::int64_t id) {
    const auto pid = static_cast<pid_t>(id);
    const auto facts = factsAbout(pid);
    const std::lock_guard lock(mutex_);
    isBirthExpected_ = false;
    const Entry entry = ++lastEntry_;
    noted_.emplace(entry, Noted{pid, facts});
    if (facts)
        writeForGood();
    return entry;
}

void DaemonLedger::noteNobody() {
    const std::lock_guard lock(mutex_);
    isBirthExpected_ = false;
    forgetEndedBirth();
}

void DaemonLedger::noteAsked(Entry entry) {
    const std::lock_guard lock(mutex_);
    if (const auto found = noted_.find(entry); found != noted_.end())
        found->second.isAsked = true;
}

void DaemonLedger::forget(Entry entry) {
    const std::lock_guard lock(mutex_);
    if (noted_.erase(entry) > 0)
        write();
    forgetEndedBirth();
}

DaemonLedger::Leftovers DaemonLedger::endLeftovers(std::chrono::milliseconds patience) {
    Records records;
    {
        const std::lock_guard lock(mutex_);
        records = leftovers_;
    }
    auto [asked, remaining] = askToEnd(records, &ProcessFacts::isSameProcessAs);
    waitForAll(asked, Clock::now() + patience);
    std::size_t ended = 0;
    for (const Asked& daemon : asked) {
        if (daemon.process->isRunning())
            remaining.push_back(daemon.facts);
        else
            ++ended;
    }
    const std::lock_guard lock(mutex_);
    leftovers_ = remaining;
    writeForGood();
    return {asked.size(), ended};
}

void DaemonLedger::clear() {
    const std::lock_guard lock(mutex_);
    lookAgain();
    Records unasked;
    for (const auto& [entry, daemon] : noted_) {
        if (daemon.facts && !daemon.isAsked)
            unasked.push_back(*daemon.facts);
    }
    // A wrapper may have become the real program since it was noted.
    const Asking asking = askToEnd(unasked, &ProcessFacts::hasSameBirthAs);
    leftovers_.insert(leftovers_.end(), asking.unasked.begin(), asking.unasked.end());
    std::erase_if(noted_, [](const auto& one) { return one.second.facts || one.second.isAsked; });
    writeForGood();
}

// Of those that could not be looked at, the one that the note of a birth tells of: other children of
// ours may have gone by the same id since.
bool DaemonLedger::lookAgain() {
    const auto isUnseen = [](const auto& one) { return !one.second.facts; };
    if (std::none_of(noted_.begin(), noted_.end(), isUnseen))
        return false;
    const auto note = files_.read(birthPath_);
    const auto facts = note ? livingProcessOf(note.value(), boot_) : std::nullopt;
    bool isTold = false;
    for (auto& [entry, daemon] : noted_) {
        if (daemon.facts || !facts || daemon.pid != facts->pid)
            continue;
        daemon.facts = facts;
        isTold = true;
    }
    return isTold;
}

void DaemonLedger::writeForGood() {
    if (!isBirthNeeded(write()))
        forgetBirth();
}

// Whether the note of a birth tells of a daemon that may run and is not in the ledger.
bool DaemonLedger::isBirthNeeded(bool isWritten) const {
    std::vector<pid_t> missing;
    for (const auto& [entry, daemon] : noted_) {
        if (!isWritten || !daemon.facts)
            missing.push_back(daemon.pid);
    }
    for (const ProcessFacts& daemon : isWritten ? Records{} : leftovers_)
        missing.push_back(daemon.pid);
    if (missing.empty())
        return false;
    const auto note = files_.read(birthPath_);
    if (!note)
        return true;
    const auto born = birthIn(note.value(), boot_);
    return born && std::find(missing.begin(), missing.end(), born->pid) != missing.end() &&
           !hasSurelyEnded(note.value(), boot_);
}

// One that cannot be removed costs little: the next start asks the daemon that it tells of, if that
// one still runs, once more.
void DaemonLedger::forgetBirth() {
    if (!isBirthExpected_)
        std::ignore = files_.removeTree(birthPath_);
}

void DaemonLedger::forgetEndedBirth() {
    const auto note = files_.read(birthPath_);
    if (note && hasSurelyEnded(note.value(), boot_))
        forgetBirth();
}

// Nobody to tell when it fails, and nothing to do about it: the daemons run just as well.
bool DaemonLedger::write() {
    DaemonRecords records{boot_, leftovers_};
    for (const auto& [entry, daemon] : noted_) {
        if (daemon.facts)
            records.daemons.push_back(*daemon.facts);
    }
    const auto failed = records.daemons.empty() ? files_.removeTree(path_)
                                                : files_.replaceAtomically(path_, textOf(records));
    return !failed;
}

}  // namespace valdorn
