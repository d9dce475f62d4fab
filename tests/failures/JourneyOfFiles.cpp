#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

#include "failures/Journey.h"
#include "failures/Seen.h"
#include "fleet/RunnerRecords.h"
#include "logs/LogTailer.h"
#include "platform/posix/StandardStreams.h"

namespace valdorn {

using failing::Quiet;

void Journey::missAStream() {
    {
        const Quiet quiet;
        close(STDIN_FILENO);
    }
    const auto opened = openPath("/dev/null", O_RDONLY);
    expect(opened && opened.value().number() > STDERR_FILENO, "a file takes no stream's number");
    openMissingStandardStreams();
    const Quiet quiet;
    expect(fcntl(STDIN_FILENO, F_GETFD) >= 0, "all streams are there");
    openMissingStandardStreams();
}

void Journey::followLog() {
    const std::string path = legacy()->dataDir() + "/valdorn.log";
    const auto tailer = LogTailer::create(now_->queue, now_->files, path);
    const auto agrees = [&] { return tailer->lines().size() == seen::lines(path).size(); };
    tailer->start();
    expect(agrees(), "the log shows");
    now_->queue.advance(LogTailer::pollPeriod);
    expect(agrees(), "the log shows at the next look");
    now_->queue.advance(LogTailer::pollPeriod);
    if (!agrees())
        wrong("the log does not show");
    tailer->stop();
}

// An edit writes what the records were before it.
bool Journey::edited(const std::string& name) {
    std::vector<RunnerConfig> records;
    for (const auto& runner : now_->store->runners())
        records.push_back(runner->config());
    const std::string before = seen::content(support() + "/runners.json");
    const std::string after = *RunnerRecords::encode(records);
    RunnerConfig changed = legacy()->config();
    changed.name = name;
    legacy()->setConfig(changed);
    std::string content = seen::content(support() + "/runners.json");
    // Blanks that cover what was longer may stay behind it.
    content.resize(content.find_last_not_of(' ') + 1);
    if (content != before && !after.starts_with(content))
        wrong("runners.json holds something else");
    if (legacy()->config().name != name)
        wrong("the edit is lost");
    return content == after;
}

void Journey::edit() {
    expect(edited("one"), "the list is written");
    expect(edited("two"), "the list is written again");
    if (!edited("three") && !hasFailed())
        wrong("the list is not written after all");
}

void Journey::login() {
    // Where it was not known at the start, it is asked for once more.
    const std::string& known = now_->executable;
    AutostartRegistry items(now_->files, now_->host, known.empty() ? executablePath() : known);
    const auto refused = items.registerItem();
    expect(!refused, "is entered");
    if (refused && (refused->empty() || !seen::content(items.entryPath()).empty()))
        wrong("a refusal without a reason, or with a change");
    if (refused && items.registerItem())
        wrong("cannot be entered after all");
    expect(items.status() == LoginItemStatus::enabled, "is on");
    fact("is moved", items.refreshMovedExecutable());
    std::string entry = seen::content(items.entryPath());
    {
        const Quiet quiet;
        std::ofstream(items.entryPath()) << (entry += "X-Own=1\n");
    }
    expect(!items.unregisterItem(), "is turned off");
    const std::string off = seen::content(items.entryPath());
    if (off != entry && off != entry + "Hidden=true\n")
        wrong("the entry is neither the old one nor the new one");
    {
        const Quiet quiet;
        std::ofstream(items.entryPath()) << "[Desktop Entry]\nExec=valdorn\n";
    }
    expect(!items.unregisterItem(), "is removed");
    if (items.unregisterItem() && !hasFailed())
        wrong("cannot be removed after all");
    expect(items.status() == LoginItemStatus::notEnabled, "is off");
}

void Journey::remove() {
    const std::string folder = second_->dataDir();
    const auto pids = seen::launches(folder);
    now_->store->remove(second_);
    now_->queue.runPosted();
    fact(statusOf(second_));
    awaitEndOf(pids);
    removeBelowAFile();
    const Quiet quiet;
    expect(!std::filesystem::exists(folder + "/valdorn.log"), "its folder is gone");
    const auto& runners = now_->store->runners();
    if (std::find(runners.begin(), runners.end(), second_) != runners.end())
        wrong("the removed runner is still there");
}

// Nothing can stand there, so nothing is left to be removed.
void Journey::removeBelowAFile() {
    expect(!now_->files.removeTree(support() + "/runners.json/below"), "nothing is there");
}

// What standard error gets of a line.
void Journey::writeLine() {
    std::array<int, 2> ends{};
    int before = -1;
    {
        const Quiet quiet;
        before = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
    }
    now_->log.write("a line");
    const Quiet quiet;
    dup2(before, STDERR_FILENO);
    close(before);
    std::array<char, 64> buffer{};
    const ssize_t got = read(ends[0], buffer.data(), buffer.size());
    close(ends[0]);
    const std::string line(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    expect(line == "a line\n", "the line is written");
}

}  // namespace valdorn
