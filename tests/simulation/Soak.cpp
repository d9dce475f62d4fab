#include "simulation/Soak.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "simulation/CrashNote.h"
#include "simulation/Marks.h"
#include "simulation/Schedule.h"

namespace valdorn::simulation {

namespace {

using Clock = std::chrono::steady_clock;

// What the threads share.
struct Progress {
    std::atomic<std::uint64_t> next{0};
    std::atomic<std::uint64_t> steps{0};
    std::atomic<bool> hasFailed{false};
};

void say(const std::string& line) {
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

// Each campaign has its turn, with the same seed for all.
void playTurn(const SoakPlan& plan, std::uint64_t turn, Progress& progress) {
    const auto& all = campaigns();
    const Campaign& campaign = all[turn % all.size()];
    const std::uint64_t seed = plan.firstSeed + turn / all.size();
    const Schedule schedule = draw(campaign, seed);
    progress.steps += schedule.steps.size();
    CrashNote::playing(campaign, seed);
    if (play(schedule) && !progress.hasFailed.exchange(true))
        say("FAILED: " + report(campaign, seed));
}

void playAll(const SoakPlan& plan, Progress& progress) {
    while (!progress.hasFailed) {
        const std::uint64_t turn = progress.next++;
        if (turn >= plan.schedules)
            return;
        playTurn(plan, turn, progress);
        if ((turn + 1) % 100000 == 0)
            say(std::to_string(turn + 1) + " schedules");
    }
}

bool tellMarks() {
    for (const MarkCounter* mark : allMarks())
        say("  " + std::to_string(mark->times()) + " x " + mark->name());
    for (const std::string& name : neverReached())
        say("NEVER REACHED: " + name);
    return neverReached().empty();
}

std::optional<std::string> valueOf(std::string_view argument, std::string_view name) {
    if (!argument.starts_with(name))
        return std::nullopt;
    return std::string(argument.substr(name.size()));
}

std::uint64_t numberIn(const std::string& text) {
    return std::strtoull(text.c_str(), nullptr, 10);
}

}  // namespace

bool soak(const SoakPlan& plan) {
    say(std::to_string(plan.schedules) + " schedules from seed " + std::to_string(plan.firstSeed) +
        " on, on " + std::to_string(plan.threads) + " threads");
    Progress progress;
    const auto start = Clock::now();
    std::vector<std::thread> threads;
    for (unsigned index = 0; index < plan.threads; ++index)
        threads.emplace_back([&] { playAll(plan, progress); });
    for (std::thread& thread : threads)
        thread.join();
    const std::chrono::duration<double> taken = Clock::now() - start;
    const auto speed =
        static_cast<std::uint64_t>(static_cast<double>(plan.schedules) / taken.count());
    say(std::to_string(progress.steps) + " steps, " + std::to_string(speed) +
        " schedules a second");
    return !progress.hasFailed && tellMarks();
}

std::optional<SoakPlan> soakPlan(int count, char** arguments) {
    SoakPlan plan;
    plan.threads = std::max(1U, std::thread::hardware_concurrency());
    bool isWanted = false;
    for (int index = 1; index < count; ++index) {
        const std::string_view argument = arguments[index];
        if (const auto schedules = valueOf(argument, "--soak=")) {
            isWanted = true;
            plan.schedules = numberIn(*schedules);
        } else if (const auto seed = valueOf(argument, "--seed=")) {
            plan.firstSeed = numberIn(*seed);
        } else if (const auto threads = valueOf(argument, "--threads=")) {
            plan.threads = static_cast<unsigned>(numberIn(*threads));
        }
    }
    return isWanted ? std::optional(plan) : std::nullopt;
}

}  // namespace valdorn::simulation
