#include "platform/posix/ProcessFacts.h"

#include <array>
#include <climits>
#include <fstream>
#include <sstream>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

namespace valdorn {

namespace {

std::string folderOf(pid_t pid) {
    return "/proc/" + std::to_string(pid);
}

// Up to the end of the text or a zero byte: the kernel's answers are single lines, but a process
// may have a line feed in its name.
std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    std::string text;
    std::getline(file, text, '\0');
    return text;
}

std::optional<std::string> targetOf(const std::string& link) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlink(link.c_str(), text.data(), text.size());
    if (length <= 0)
        return std::nullopt;
    return std::string(text.data(), static_cast<std::size_t>(length));
}

// The kernel marks the path of what is not there any more.
std::string_view withoutMark(std::string_view path) {
    constexpr std::string_view mark = " (deleted)";
    if (path.ends_with(mark))
        path.remove_suffix(mark.size());
    return path;
}

}  // namespace

bool ProcessFacts::hasSameBirthAs(const ProcessFacts& other) const {
    return pid == other.pid && startTicks == other.startTicks && owner == other.owner;
}

bool ProcessFacts::isSameProcessAs(const ProcessFacts& other) const {
    return hasSameBirthAs(other) && withoutMark(executable) == withoutMark(other.executable) &&
           withoutMark(workingFolder) == withoutMark(other.workingFolder);
}

// Field 2 is the name in parentheses, which may hold blanks and parentheses itself, so the count
// starts behind the last of them, at field 3.
std::optional<std::uint64_t> startTicksIn(const std::string& stat) {
    const auto nameEnd = stat.rfind(')');
    if (nameEnd == std::string::npos)
        return std::nullopt;
    std::istringstream fields(stat.substr(nameEnd + 1));
    std::string field;
    for (int number = 3; number < 22; ++number)
        fields >> field;
    std::uint64_t ticks = 0;
    if (!(fields >> ticks))
        return std::nullopt;
    return ticks;
}

std::optional<ProcessFacts> birthOf(pid_t pid) {
    const std::string folder = folderOf(pid);
    struct stat status {};
    const auto startTicks = startTicksIn(contentOf(folder + "/stat"));
    if (!startTicks || stat(folder.c_str(), &status) != 0)
        return std::nullopt;
    return ProcessFacts{pid, *startTicks, status.st_uid, {}, {}};
}

std::optional<ProcessFacts> factsAbout(pid_t pid) {
    auto facts = birthOf(pid);
    const auto executable = targetOf(folderOf(pid) + "/exe");
    const auto workingFolder = targetOf(folderOf(pid) + "/cwd");
    if (!facts || !executable || !workingFolder)
        return std::nullopt;
    facts->executable = *executable;
    facts->workingFolder = *workingFolder;
    return facts;
}

std::string bootId() {
    std::string id = contentOf("/proc/sys/kernel/random/boot_id");
    while (!id.empty() && id.back() == '\n')
        id.pop_back();
    return id;
}

}  // namespace valdorn
