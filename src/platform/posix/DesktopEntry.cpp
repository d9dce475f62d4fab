#include "platform/posix/DesktopEntry.h"

#include <algorithm>
#include <utility>

namespace valdorn {

namespace {

constexpr std::string_view groupHeader = "[Desktop Entry]";
constexpr std::string_view blanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The line's own end: "\n", "\r\n" or nothing. A carriage return alone ends no line.
std::string_view endOf(std::string_view line) {
    if (!line.ends_with('\n'))
        return {};
    const std::size_t last = line.find_last_not_of("\r\n");
    return line.substr(last == std::string_view::npos ? 0 : last + 1);
}

}  // namespace

DesktopEntry::DesktopEntry(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        Line& line = lines_.emplace_back();
        line.bytes = text.substr(0, end);
        text.remove_prefix(end);
    }
    classify();
}

void DesktopEntry::classify() {
    std::string_view group;
    for (Line& line : lines_) {
        const std::string_view content = trimmed(line.bytes);
        const std::size_t equals = content.find('=');
        if (content.empty()) {
            line.kind = Line::Kind::blank;
        } else if (content.starts_with('#')) {
            line.kind = Line::Kind::comment;
        } else if (content.starts_with('[') && content.ends_with(']')) {
            line.kind = Line::Kind::group;
            group = content;
        } else if (equals != 0 && equals != std::string_view::npos && !group.empty()) {
            line.kind = Line::Kind::key;
            line.key = trimmed(content.substr(0, equals));
        }
        line.ours = group == groupHeader;
    }
}

std::optional<std::string> DesktopEntry::value(std::string_view key) const {
    const auto found = std::find_if(lines_.rbegin(), lines_.rend(), [key](const Line& line) {
        return line.ours && line.kind == Line::Kind::key && line.key == key;
    });
    if (found == lines_.rend())
        return std::nullopt;
    const std::string_view content = found->bytes;
    return std::string(trimmed(content.substr(content.find('=') + 1)));
}

// The index behind the last line of the group that says something; makes the group when needed.
std::size_t DesktopEntry::endOfGroup() {
    const auto last = std::find_if(lines_.rbegin(), lines_.rend(), [](const Line& line) {
        return line.ours && line.kind != Line::Kind::blank;
    });
    if (!lines_.empty() && endOf(lines_.back().bytes).empty())
        lines_.back().bytes += '\n';
    if (last != lines_.rend())
        return static_cast<std::size_t>(lines_.rend() - last);
    lines_.push_back({std::string(groupHeader) + '\n', Line::Kind::group, true, {}});
    return lines_.size();
}

void DesktopEntry::set(std::string_view key, std::string_view value) {
    const std::string assignment = std::string(key) + '=' + std::string(value);
    bool found = false;
    for (Line& line : lines_) {
        if (!line.ours || line.kind != Line::Kind::key || line.key != key)
            continue;
        line.bytes = assignment + std::string(endOf(line.bytes));
        found = true;
    }
    if (found)
        return;
    const std::size_t end = endOfGroup();
    const std::string lineEnd(endOf(lines_[end - 1].bytes));
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(end),
                  {assignment + lineEnd, Line::Kind::key, true, std::string(key)});
}

bool DesktopEntry::isWellFormed() const {
    return std::none_of(lines_.begin(), lines_.end(),
                        [](const Line& line) { return line.kind == Line::Kind::malformed; });
}

void DesktopEntry::dropMalformedLines() {
    std::erase_if(lines_, [](const Line& line) { return line.kind == Line::Kind::malformed; });
}

bool DesktopEntry::holdsOnly(const std::vector<std::string_view>& keys) const {
    return std::all_of(lines_.begin(), lines_.end(), [&keys](const Line& line) {
        if (line.kind == Line::Kind::key)
            return std::find(keys.begin(), keys.end(), line.key) != keys.end();
        return line.kind == Line::Kind::blank || (line.kind == Line::Kind::group && line.ours);
    });
}

std::string DesktopEntry::text() const {
    std::string text;
    for (const Line& line : lines_)
        text += line.bytes;
    return text;
}

std::string escapedValue(std::string_view text) {
    std::string value;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        switch (c) {
            case '\\':
                value += "\\\\";
                break;
            case '\n':
                value += "\\n";
                break;
            case '\t':
                value += "\\t";
                break;
            case '\r':
                value += "\\r";
                break;
            case ' ':
                value += at == 0 || at + 1 == text.size() ? "\\s" : " ";
                break;
            default:
                value += c;
        }
    }
    return value;
}

std::string unescapedValue(std::string_view value) {
    constexpr std::string_view letters = "sntr\\";
    constexpr std::string_view meanings = " \n\t\r\\";
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        const std::size_t escape =
            value[at] == '\\' && at + 1 < value.size() ? letters.find(value[at + 1]) : value.npos;
        if (escape == std::string_view::npos) {
            text += value[at];
        } else {
            text += meanings[escape];
            ++at;
        }
    }
    return text;
}

std::string execValue(std::string_view program) {
    std::string argument = "\"";
    for (const char c : program) {
        if (c == '"' || c == '`' || c == '$' || c == '\\')
            argument += '\\';
        if (c == '%')  // would begin a field code
            argument += '%';
        argument += c;
    }
    argument += '"';
    return escapedValue(argument);
}

std::string programOfExec(std::string_view value) {
    const std::string line = unescapedValue(value);
    std::string program;
    bool quoted = false;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char c = line[at];
        const bool more = at + 1 < line.size();
        if (c == '"')
            quoted = !quoted;
        else if (!quoted && blanks.find(c) != std::string_view::npos)
            break;
        else if (more && (c == '\\' || (c == '%' && line[at + 1] == '%')))
            program += line[++at];
        else
            program += c;
    }
    return program;
}

}  // namespace valdorn
