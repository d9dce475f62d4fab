#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "ui/log/LogRows.h"

namespace valdorn {

inline LogLine logLine(std::string_view text) {
    return std::make_shared<const std::string>(text);
}

inline LogRows::Lines logLines(std::initializer_list<std::string_view> texts) {
    LogRows::Lines lines;
    for (const std::string_view text : texts)
        lines.push_back(logLine(text));
    return lines;
}

// "line 0" and so on.
inline LogRows::Lines numberedLines(int count) {
    LogRows::Lines lines;
    for (int number = 0; number < count; ++number)
        lines.push_back(logLine("line " + std::to_string(number)));
    return lines;
}

}  // namespace valdorn
