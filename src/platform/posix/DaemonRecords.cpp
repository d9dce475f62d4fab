#include "platform/posix/DaemonRecords.h"

#include <charconv>
#include <cstddef>

namespace valdorn {

namespace {

constexpr std::string_view heading = "valdorn daemons 1";
constexpr std::string_view bootMark = "boot ";
constexpr std::string_view daemonMark = "daemon";
constexpr std::string_view ending = "end";
constexpr std::size_t fieldsOfDaemon = 6;

std::string escaped(std::string_view path) {
    std::string text;
    for (const char byte : path) {
        if (byte == '\\')
            text += "\\\\";
        else if (byte == '\t')
            text += "\\t";
        else if (byte == '\n')
            text += "\\n";
        else
            text += byte;
    }
    return text;
}

std::optional<char> meaningOf(char letter) {
    switch (letter) {
        case '\\':
            return '\\';
        case 't':
            return '\t';
        case 'n':
            return '\n';
        default:
            return std::nullopt;
    }
}

std::optional<std::string> unescaped(std::string_view text) {
    std::string path;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\') {
            path += text[at];
            continue;
        }
        const auto meaning = ++at < text.size() ? meaningOf(text[at]) : std::nullopt;
        if (!meaning)
            return std::nullopt;
        path += *meaning;
    }
    return path;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (auto end = text.find(separator); end != std::string_view::npos;
         end = text.find(separator)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

template <typename Number>
bool parse(std::string_view text, Number& number) {
    const char* end = text.data() + text.size();
    const auto outcome = std::from_chars(text.data(), end, number);
    return outcome.ec == std::errc() && outcome.ptr == end;
}

std::string lineOf(const ProcessFacts& daemon) {
    return std::string(daemonMark) + '\t' + std::to_string(daemon.pid) + '\t' +
           std::to_string(daemon.startTicks) + '\t' + std::to_string(daemon.owner) + '\t' +
           escaped(daemon.executable) + '\t' + escaped(daemon.workingFolder) + '\n';
}

std::optional<ProcessFacts> daemonIn(std::string_view line) {
    const auto fields = split(line, '\t');
    if (fields.size() != fieldsOfDaemon || fields[0] != daemonMark)
        return std::nullopt;
    ProcessFacts daemon;
    const auto executable = unescaped(fields[4]);
    const auto folder = unescaped(fields[5]);
    if (!parse(fields[1], daemon.pid) || !parse(fields[2], daemon.startTicks) ||
        !parse(fields[3], daemon.owner) || !executable || !folder || daemon.pid <= 0)
        return std::nullopt;
    daemon.executable = *executable;
    daemon.workingFolder = *folder;
    return daemon;
}

}  // namespace

std::string bootLine(const std::string& boot) {
    return std::string(bootMark) + boot + '\n';
}

std::string textOf(const DaemonRecords& records) {
    std::string text = std::string(heading) + '\n';
    text += bootLine(records.boot);
    for (const ProcessFacts& daemon : records.daemons)
        text += lineOf(daemon);
    return text + std::string(ending) + '\n';
}

std::optional<DaemonRecords> daemonRecordsIn(std::string_view text) {
    const auto lines = split(text, '\n');  // the last one is what follows the last line end
    constexpr std::size_t frame = 4;       // heading, boot, end, nothing
    if (lines.size() < frame || lines[0] != heading || !lines[1].starts_with(bootMark) ||
        lines[lines.size() - 2] != ending || !lines.back().empty())
        return std::nullopt;
    DaemonRecords records{std::string(lines[1].substr(bootMark.size())), {}};
    for (std::size_t at = 2; at < lines.size() - 2; ++at) {
        const auto daemon = daemonIn(lines[at]);
        if (!daemon)
            return std::nullopt;
        records.daemons.push_back(*daemon);
    }
    return records;
}

}  // namespace valdorn
