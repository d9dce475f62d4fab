#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/RunnerOutput.h"
#include "support/MemoryFileSystem.h"
#include "support/PlainOutput.h"

namespace valdorn {
namespace {

using Lines = std::vector<std::string>;

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
