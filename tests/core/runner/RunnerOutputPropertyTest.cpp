#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/RunnerOutput.h"
#include "support/MemoryFileSystem.h"
#include "text/Text.h"
#include "text/Utf8.h"

namespace valdorn {
namespace {

using Lines = std::vector<std::string>;

// The rules of RunnerOutput one after the other, each chunk copied and each line on its own.
class PlainOutput {
public:
    Lines ingest(const std::string& chunk) {
        Lines lines;
        if (decodedUtf8(chunk) != chunk)
            return lines;
        buffer += chunk;
        for (std::size_t from = 0; from < buffer.size();) {
            const std::size_t end = buffer.find('\n', from);
            if (end == std::string::npos)
                break;
            from = end + 1;
            if (end > 0 && buffer[end - 1] == '\r')
                continue;
            lines.push_back(buffer.substr(0, end));
            buffer.erase(0, end + 1);
            from = 0;
            keep(lines.back());
        }
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

class RandomChunks {
public:
    explicit RandomChunks(unsigned seed) : random_(seed) {}

    std::string next() {
        std::string chunk;
        for (std::size_t parts = random_() % 12; parts > 0; --parts)
            chunk += part();
        return chunk;
    }

private:
    std::string part() {
        static const Lines parts{
            "\n",      "\n",          "\n",           "\r",        "\r\n",
            "Error:",  "time=\"x\" ", "level=",       "debug",     "level=debug",
            "time=\"", "Error",       "\xE2\x80\xA6", "e\xCC\x81", "x"};
        const std::size_t dice = random_() % 200;
        if (dice == 0)
            return "\xFF";
        if (dice == 1)
            return "\xE2\x80";  // cut off
        if (dice == 2)
            return std::string(random_() % 70000, 'y');
        return parts[dice % parts.size()];
    }

    std::mt19937 random_;
};

TEST(RunnerOutputProperty, LinesAreCutAndKeptAsThePlainRulesDoIt) {
    for (unsigned seed = 0; seed < 400; ++seed) {
        MemoryFileSystem files;
        RunnerOutput output(std::move(files.openForAppending("/log").value()));
        PlainOutput plain;
        RandomChunks random(seed);
        for (int count = 0; count < 40; ++count) {
            const std::string chunk = random.next();
            const LineBatch batch = output.ingest(chunk);
            ASSERT_EQ(Lines(batch.begin(), batch.end()), plain.ingest(chunk)) << "seed " << seed;
            ASSERT_EQ(output.lineBuffer(), plain.buffer) << "seed " << seed;
        }
        ASSERT_EQ(files.files["/log"], plain.log) << "seed " << seed;
    }
}

}  // namespace
}  // namespace valdorn
