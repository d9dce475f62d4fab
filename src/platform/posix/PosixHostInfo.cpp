#include "platform/posix/PosixHostInfo.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <pwd.h>
#include <unistd.h>

#include "platform/posix/PosixFileSystem.h"

namespace valdorn {

namespace {

std::string kernelHostName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    // The last byte stays zero even when the name is cut.
    if (::gethostname(name.data(), name.size() - 1) != 0)
        return {};
    return name.data();
}

std::string homeOfAccount() {
    // Entries outgrow any fixed size where directories of large organisations are asked.
    constexpr std::size_t maxEntryBytes = std::size_t{1024} * 1024;
    for (std::size_t size = 4096; size <= maxEntryBytes; size *= 2) {
        std::vector<char> buffer(size);
        passwd entry{};
        passwd* found = nullptr;
        const int error = ::getpwuid_r(::getuid(), &entry, buffer.data(), size, &found);
        if (error == 0 && found != nullptr && found->pw_dir != nullptr)
            return found->pw_dir;
        if (error != ERANGE && error != EINTR)
            return {};
    }
    return {};
}

// "/home/ada//" becomes "/home/ada"; the root stays.
std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

std::string homeFrom(const HostSources& sources) {
    const char* const variable = std::getenv("HOME");
    if (variable != nullptr && *variable == '/')
        return withoutTrailingSlashes(variable);
    const std::string account = sources.accountHome();
    if (account.starts_with('/'))
        return withoutTrailingSlashes(account);
    std::fputs("valdorn: neither $HOME nor the account names a home folder\n", stderr);
    std::abort();
}

// Takes the quotes and escapes of a shell word away. The file allows no expansions.
std::string unquoted(std::string_view word) {
    std::string text;
    char quote = 0;
    for (std::size_t at = 0; at < word.size(); ++at) {
        const char c = word[at];
        if (c == quote)
            quote = 0;
        else if (quote == 0 && (c == '"' || c == '\''))
            quote = c;
        else if (c == '\\' && quote != '\'' && at + 1 < word.size())
            text += word[++at];
        else
            text += c;
    }
    return text;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The value of the last PRETTY_HOSTNAME line, as a shell would see it; empty when there is none.
std::string prettyHostName(const std::string& machineInfoFile) {
    const auto content = PosixFileSystem().read(machineInfoFile);
    if (!content.ok())
        return {};
    constexpr std::string_view key = "PRETTY_HOSTNAME=";
    std::string name;
    std::string_view rest = content.value();
    while (!rest.empty()) {
        const std::string_view line = trimmed(rest.substr(0, rest.find('\n')));
        rest.remove_prefix(std::min(rest.size(), rest.find('\n')));
        rest.remove_prefix(std::min<std::size_t>(rest.size(), 1));
        if (line.starts_with(key))
            name = unquoted(line.substr(key.size()));
    }
    return name;
}

std::optional<std::string> nameFrom(const HostSources& sources) {
    if (std::string pretty = prettyHostName(sources.machineInfoFile); !pretty.empty())
        return pretty;
    std::string name = sources.hostName();
    // What the kernel and distributions put there when nobody has named the computer.
    if (name.empty() || name == "localhost" || name == "localhost.localdomain" || name == "(none)")
        return std::nullopt;
    return name;
}

std::vector<std::string> environmentNow() {
    std::vector<std::string> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        variables.emplace_back(*variable);
    return variables;
}

}  // namespace

HostSources HostSources::ofThisComputer() {
    return {"/etc/machine-info", kernelHostName, homeOfAccount};
}

PosixHostInfo::PosixHostInfo(const HostSources& sources)
    : homeFolder_(homeFrom(sources)),
      computerName_(nameFrom(sources)),
      environment_(environmentNow()) {}

}  // namespace valdorn
