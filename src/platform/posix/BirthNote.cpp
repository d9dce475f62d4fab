#include "platform/posix/BirthNote.h"

#include <cerrno>
#include <charconv>
#include <utility>

#include <signal.h>
#include <unistd.h>

#include "platform/posix/DaemonRecords.h"

namespace valdorn {

BirthNote BirthNote::at(std::string path, const std::string& boot) {
    return {std::move(path), bootLine(boot)};
}

std::optional<ProcessFacts> birthIn(const std::string& birthNote, const std::string& boot) {
    const std::string heading = bootLine(boot);
    if (boot.empty() || !birthNote.starts_with(heading))
        return std::nullopt;
    const std::string stat = birthNote.substr(heading.size());
    ProcessFacts born;
    std::from_chars(stat.data(), stat.data() + stat.size(), born.pid);
    const auto startTicks = startTicksIn(stat);
    if (born.pid <= 0 || !startTicks)
        return std::nullopt;
    born.startTicks = *startTicks;
    born.owner = geteuid();
    return born;
}

std::optional<ProcessFacts> livingProcessOf(const std::string& birthNote, const std::string& boot) {
    const auto born = birthIn(birthNote, boot);
    auto facts = born ? factsAbout(born->pid) : std::nullopt;
    if (!facts || !facts->hasSameBirthAs(*born))
        return std::nullopt;
    return facts;
}

// The owner is no sign: the process may have taken another user's rights since.
bool hasSurelyEnded(const std::string& birthNote, const std::string& boot) {
    const auto born = birthIn(birthNote, boot);
    if (!born || !birthNote.ends_with('\n'))  // half a time of birth is another one
        return false;
    if (kill(born->pid, 0) != 0 && errno == ESRCH)
        return true;
    const auto now = birthOf(born->pid);
    return now && now->startTicks != born->startTicks;
}

}  // namespace valdorn
