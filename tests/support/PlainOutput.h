#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "runner/RunnerOutput.h"
#include "support/PlainLines.h"
#include "text/Text.h"

namespace valdorn {

// The rules of RunnerOutput one after the other, each chunk copied and each line on its own. What the
// last characters of a text are is compared elsewhere (tests/fuzz/unicode_text.cpp).
class PlainOutput {
public:
    std::vector<std::string> ingest(const std::string& chunk) {
        std::vector<std::string> lines;
        if (plainText(chunk) != chunk)
            return lines;
        buffer += chunk;
        std::size_t start = 0;
        for (std::size_t at = 0; at < buffer.size(); ++at) {
            if (buffer[at] != '\n' || (at > 0 && buffer[at - 1] == '\r'))
                continue;
            lines.push_back(buffer.substr(start, at - start));
            keep(lines.back());
            start = at + 1;
        }
        buffer.erase(0, start);
        if (buffer.size() > RunnerOutput::maxLineBytes)
            buffer = Text::lastCharacters(buffer, RunnerOutput::keptTailCharacters);
        return lines;
    }

    std::string buffer;
    std::string log;

private:
    void keep(const std::string& line) {
        const bool structured = line.rfind("time=\"", 0) == 0;
        const bool debug = line.find("level=debug") != std::string::npos;
        if (line.rfind("Error:", 0) == 0 || (structured && !debug))
            log += line + "\n";
    }
};

}  // namespace valdorn
