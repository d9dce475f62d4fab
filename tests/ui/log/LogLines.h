#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "ui/log/LogRows.h"

namespace valdorn {

inline LogLine logLine(std::string_view text) {
    struct Line {
        explicit Line(std::string_view text) : bytes(text) {}
        const std::string bytes;
        const std::string_view view = bytes;
    };
    // Not made together with the count of its holders: its place is free for another when it is gone.
    const std::shared_ptr<const Line> line(new Line(text));
    return {line, &line->view};
}

inline LogLines::List logLines(std::initializer_list<std::string_view> texts) {
    LogLines::List lines;
    for (const std::string_view text : texts)
        lines.push_back(logLine(text));
    return lines;
}

// "line 0" and so on.
inline LogLines::List numberedLines(int count) {
    LogLines::List lines;
    for (int number = 0; number < count; ++number)
        lines.push_back(logLine("line " + std::to_string(number)));
    return lines;
}

}  // namespace valdorn
