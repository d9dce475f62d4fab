#include "platform/posix/BirthNote.h"

#include <charconv>
#include <utility>

#include <unistd.h>

#include "platform/posix/DaemonRecords.h"

namespace valdorn {

BirthNote BirthNote::at(std::string path, const std::string& boot) {
    return {std::move(path), bootLine(boot)};
}

std::optional<ProcessFacts> livingProcessOf(const std::string& birthNote, const std::string& boot) {
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
    auto facts = factsAbout(born.pid);
    if (!facts || !facts->hasSameBirthAs(born))
        return std::nullopt;
    return facts;
}

}  // namespace valdorn
