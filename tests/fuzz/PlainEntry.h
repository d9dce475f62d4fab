#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace valdorn {

// What a desktop entry file says, line by line and without places in it.
namespace PlainEntry {

inline std::string trimmed(std::string text) {
    const std::string blanks = " \t\r\n";
    while (!text.empty() && blanks.find(text.front()) != std::string::npos)
        text.erase(text.begin());
    while (!text.empty() && blanks.find(text.back()) != std::string::npos)
        text.pop_back();
    return text;
}

// With their line ends.
inline std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> lines;
    bool isWhole = true;
    for (const char c : text) {
        if (isWhole)
            lines.emplace_back();
        lines.back() += c;
        isWhole = c == '\n';
    }
    return lines;
}

struct Reading {
    bool isWellFormed = true;
    std::vector<std::pair<std::string, std::string>> values;  // of the one group, trimmed

    // The last of that key.
    std::optional<std::string> value(const std::string& key) const {
        std::optional<std::string> found;
        for (const auto& [name, value] : values) {
            if (name == key)
                found = value;
        }
        return found;
    }
};

inline Reading read(const std::string& text) {
    Reading reading;
    std::string group;
    for (const std::string& whole : lines(text)) {
        const std::string line = trimmed(whole);
        const std::size_t equals = line.find('=');
        if (line.empty() || line[0] == '#')
            continue;
        if (line.front() == '[' && line.back() == ']')
            group = line;
        else if (group.empty() || equals == 0 || equals == std::string::npos)
            reading.isWellFormed = false;
        else if (group == "[Desktop Entry]")
            reading.values.emplace_back(trimmed(line.substr(0, equals)),
                                        trimmed(line.substr(equals + 1)));
    }
    return reading;
}

}  // namespace PlainEntry

}  // namespace valdorn
