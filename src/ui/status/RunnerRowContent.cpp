#include "ui/status/RunnerRowContent.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "runner/RunnerManager.h"
#include "runner/RunnerStatus.h"
#include "ui/StatusColor.h"
#include "ui/status/UpdateHints.h"

namespace valdorn {

namespace {

using OptionalText = std::optional<std::string>;

OptionalText uptimeOf(const RunnerManager& runner,
                      MainQueue::TimePoint now) VALDORN_ON_MAIN_THREAD {
    const auto& startedAt = runner.startedAt();
    if (!runner.isRunning() || !startedAt)
        return std::nullopt;
    return "· up " + elapsedText(std::chrono::floor<std::chrono::seconds>(now - *startedAt));
}

OptionalText buildLineOf(const OptionalText& build, const OptionalText& job) {
    if (!build)
        return std::nullopt;
    return "Building " + *build + (job ? " (" + *job + ")" : "");
}

}  // namespace

RunnerRowContent RunnerRowContent::of(const RunnerManager& runner, UpdateHints& hints,
                                      MainQueue::TimePoint now) {
    const OptionalText& version = runner.runnerVersion();
    RunnerRowContent content;
    content.name = displayName(runner.config());
    content.dotColor = statusColor(runner.status());
    content.statusText = rawValue(runner.status());
    content.version = version ? OptionalText("· runner " + *version) : std::nullopt;
    content.uptime = uptimeOf(runner, now);
    if (const Hint* const hint = hints.of(version))
        content.updateHint = *hint;
    content.buildLine = buildLineOf(runner.currentBuild(), runner.currentJob());
    content.isRunning = runner.isRunning();
    return content;
}

std::string elapsedText(std::chrono::seconds elapsed) {
    const long long total = std::max<long long>(elapsed.count(), 0);
    const long long hours = total / 3600;
    const long long minutes = total / 60 % 60;
    const long long seconds = total % 60;
    std::array<char, 40> text{};
    if (hours > 0)
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", hours, minutes, seconds);
    else
        std::snprintf(text.data(), text.size(), "%lld:%02lld", minutes, seconds);
    return text.data();
}

}  // namespace valdorn
