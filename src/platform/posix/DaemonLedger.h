#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "platform/FileSystem.h"
#include "platform/posix/BirthNote.h"
#include "platform/posix/ProcessFacts.h"

namespace valdorn {

// Remembers, across a crash of this program, which daemons it has launched, so that the next start
// can politely end those left behind: two daemons in one folder cancel each other's jobs.
//
// A daemon that nobody has noted yet is known from the note of its own birth.
//
// A small text file, replaced whole at each change. What cannot be read, or was not written to its
// end, counts as empty; what cannot be written is not reported: it costs only this tidying up.
// All members may be called from any thread. One instance at a time owns the file; whoever makes a
// ledger holds the instance lock.
class DaemonLedger {
public:
    // Stands for one launched daemon.
    using Entry = std::uint64_t;

    // Reads what an earlier instance left. `files` is borrowed and outlives the ledger.
    DaemonLedger(FileSystem& files, std::string path);

    // What the launcher's children are to write their births into: one at a time is enough, as each
    // launch of the one thread that launches is noted before the next.
    BirthNote birthNote() const { return BirthNote::at(birthPath_, boot_); }

    // A launch begins. Its child may write down its birth at any moment until note() or noteNobody()
    // tells what has come of it: meanwhile nobody takes that note away. It replaces the note of the
    // child before, which may be all that is known of one that could not be looked at: another look
    // is taken at that one first. Blocks for a small write at the most.
    void expectBirth();

    // Notes a child that has just been launched: its executable is the one that the kernel runs.
    // A child that has ended already is not written down. One that cannot be written down, or not
    // be looked at, keeps the note of its birth until it ends or the next one is born. Blocks for a
    // small write.
    Entry note(std::int64_t id);

    // The launch has come to nothing, or its child has ended already. The note of a birth stays
    // unless the process that it tells of has ended beyond doubt: it may be of an earlier child.
    void noteNobody();

    // The child was asked to end by whoever launched it.
    void noteAsked(Entry entry);

    // The child has ended, and been reaped: a note of its birth goes with it. Harmless when called
    // twice.
    void forget(Entry entry);

    // What became of the daemons of an earlier instance.
    struct Leftovers {
        std::size_t asked = 0;  // recognised without doubt and asked to end
        std::size_t ended = 0;  // of those, have ended in time
    };

    // Asks each daemon left by an earlier instance to end (SIGTERM, never more) and waits up to
    // `patience` for all of them together. Only a process that agrees with its record in id, start
    // time, owner, executable and folder, within the same boot, is asked; other records are
    // dropped. What has not ended in time, or could not be looked at or asked though nothing speaks
    // against it, stays written down, so that the next start asks again.
    Leftovers endLeftovers(std::chrono::milliseconds patience);

    // The program quits politely: asks those of its daemons to end that nobody has asked (a runner
    // that was launched twice has lost sight of its first daemon), and forgets them all. Those that
    // could not be looked at or asked stay written down, be it only in the note of a birth, and so do
    // leftovers that have not ended.
    void clear();

private:
    using Records = std::vector<ProcessFacts>;

    struct Noted {
        pid_t pid;
        std::optional<ProcessFacts> facts;  // nothing while it could not be looked at
        bool isAsked = false;
    };

    // mutex_ is held.
    bool write();         // false when it could not be written
    void writeForGood();  // and takes the note of a birth away, unless that is still needed
    bool lookAgain();     // true when that has told something
    bool isBirthNeeded(bool isWritten) const;  // `isWritten`: what write() has just answered
    void forgetBirth();                        // not during a launch
    void forgetEndedBirth();

    FileSystem& files_;
    const std::string path_;
    const std::string birthPath_;
    const std::string boot_;

    std::mutex mutex_;
    bool isBirthExpected_ = false;  // guarded by mutex_
    Entry lastEntry_ = 0;           // guarded by mutex_
    std::map<Entry, Noted> noted_;  // guarded by mutex_; launched by this instance
    Records leftovers_;             // guarded by mutex_; by an earlier one
};

}  // namespace valdorn
