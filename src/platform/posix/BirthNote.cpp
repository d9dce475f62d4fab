#include "platform/posix/BirthNote.h"

#include <charconv>
#include <utility>

#include <unistd.h>

namespace valdorn {

namespace {

std::string headingFor(const std::string& boot) {
    return "boot " + boot + '\n';
}

}  // namespace

BirthNote BirthNote::at(std::string path) {
    return {std::move(path), headingFor(bootId())};
}

std::optional<ProcessFacts> livingProcessOf(const std::string& birthNote) {
    const std::string boot = bootId();
    const std::string heading = headingFor(boot);
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
