#pragma once

#include <algorithm>
#include <iterator>
#include <random>
#include <string>

#include "ui/log/LogLines.h"

namespace valdorn {

// Changes a list of lines at random as a log, its filter and its window do.
class LogWalk {
public:
    explicit LogWalk(std::uint32_t seed) : random(seed) {}

    LogLines::List lines;
    std::mt19937 random;

    std::size_t below(std::size_t bound) { return random() % bound; }

    void step() {
        switch (below(8)) {
            case 0:
                return lines.clear();
            case 1:
                return std::shuffle(lines.begin(), lines.end(), random);
            case 2:
                std::erase_if(lines, [this](const LogLine&) { return below(3) == 0; });
                return;
            case 3:  // the same line once more
                if (!lines.empty())
                    lines.push_back(lines[below(lines.size())]);
                return;
            default:
                lines.erase(lines.begin(),
                            lines.begin() + static_cast<std::ptrdiff_t>(below(lines.size() + 1)));
                for (std::size_t left = below(6); left > 0; --left)
                    lines.push_back(logLine(text()));
        }
    }

private:
    std::string text() {
        static const std::string words[] = {
            "short",   "level=warning", "\t",
            "Error: ", "w\u00f6rter",   "0123456789012345678901234567890123456789"};
        std::string text;
        for (std::size_t left = below(8); left > 0; --left)
            text += words[below(std::size(words))] + ' ';
        return text;
    }
};

}  // namespace valdorn
