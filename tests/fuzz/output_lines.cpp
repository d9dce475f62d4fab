// What a child prints, in chunks (one for each piece of the input): how it is cut into lines, which
// of them are kept, and what they say.

#include <cstddef>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "Fuzzed.h"
#include "PlainLog.h"
#include "runner/LineHints.h"
#include "runner/RunnerOutput.h"
#include "support/MemoryFileSystem.h"
#include "support/PlainNews.h"
#include "support/PlainOutput.h"
#include "text/Utf8.h"

namespace valdorn {

namespace {

using Lines = std::vector<std::string>;

void checkLine(const std::string& line) {
    const RunnerNews news = plainNews(line);
    require(news.version == PlainLog::version(line), "the version is the one of the plain rules");
    require(news.job == PlainLog::workflowJob(line), "the label is the one of the plain rules");
    require(news.event == PlainLog::event(line), "the event is the one of the plain rules");
    const bool tells = news.version || news.event != RunnerLogEvent{};
    require(!tells || LineHints::mayTell(line), "a line that tells something is not overlooked");
}

void checkNews(LineBatch lines) {
    for (const char* const shown : {"", "a/b"}) {
        AppliedNews quick(shown);
        AppliedNews plain(shown);
        for (const RunnerNews& news : RunnerLog::news(lines))
            quick.apply(news);
        for (const std::string_view line : lines)
            plain.apply(plainNews(line));
        require(quick.steps == plain.steps, "the news of all lines are those of each");
    }
}

bool areCutOnlyBetweenCharacters(const Lines& chunks) {
    for (const std::string& chunk : chunks) {
        if (!isWellFormedUtf8(chunk))
            return false;
    }
    return true;
}

// As long as nothing is dropped or shortened, it does not matter how the output comes in chunks.
void checkChunking(const Lines& chunks, const Lines& lines) {
    const std::string whole = std::accumulate(chunks.begin(), chunks.end(), std::string());
    if (whole.size() > RunnerOutput::maxLineBytes || !areCutOnlyBetweenCharacters(chunks))
        return;
    RunnerOutput output(nullptr);
    const LineBatch batch = output.ingest(whole);
    require(Lines(batch.begin(), batch.end()) == lines, "chunks do not change the lines");
}

}  // namespace

void fuzzed(std::string_view input) {
    MemoryFileSystem files;
    RunnerOutput output(std::move(files.openForAppending("/log").value()));
    PlainOutput plain;
    Lines all;
    const Lines chunks = piecesWithRunsOf(input);
    for (const std::string& chunk : chunks) {
        const LineBatch batch = output.ingest(chunk);
        const Lines lines(batch.begin(), batch.end());
        require(lines == plain.ingest(chunk), "lines are cut by the plain rules");
        require(output.lineBuffer() == plain.buffer, "what is left over is what the rules leave");
        for (const std::string& line : lines)
            checkLine(line);
        checkNews(batch);
        all.insert(all.end(), lines.begin(), lines.end());
    }
    require(files.files["/log"] == plain.log, "lines are kept by the plain rules");
    checkChunking(chunks, all);
}

}  // namespace valdorn
