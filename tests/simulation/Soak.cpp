#include "simulation/Soak.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <limits>
#include <string>
#include <system_error>
#include <thread>

#include "simulation/CrashNote.h"
#include "simulation/Marks.h"
#include "simulation/Schedule.h"

namespace valdorn::simulation {

namespace {

using Clock = std::chrono::steady_clock;

// What the threads share.
struct Progress {
    std::atomic<std::uint64_t> next{0};
    std::atomic<std::uint64_t> played{0};
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
        ++progress.played;
        if ((turn + 1) % 100000 == 0)
            say(std::to_string(turn + 1) + " schedules");
    }
}

// Whether all were reached.
bool tellMarks() {
    for (const MarkCounter* mark : allMarks())
        say("  " + std::to_string(mark->times()) + " x " + mark->name());
    for (const std::string& name : neverReached())
        say("NEVER REACHED: " + name);
    return neverReached().empty();
}

// So many schedules come by the rarest of the marked situations, whatever the seed: some arise once
// in ten thousand.
constexpr std::uint64_t enoughForAllMarks = 250000;

constexpr std::string_view countOption = "--soak=";
constexpr std::uint64_t mostThreads = 1000;  // far more than anybody has processors

// The number that follows the option, if it is one that fits and nothing else.
std::optional<std::uint64_t> numberBehind(std::string_view argument, std::string_view option,
                                          std::uint64_t most) {
    if (!argument.starts_with(option))
        return std::nullopt;
    const std::string_view digits = argument.substr(option.size());
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number);
    const bool isRight = error == std::errc() && end == digits.end() && number <= most;
    return isRight ? std::optional(number) : std::nullopt;
}

bool take(std::string_view argument, SoakPlan& plan) {
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    if (const auto schedules = numberBehind(argument, countOption, most))
        plan.schedules = *schedules;
    else if (const auto seed = numberBehind(argument, "--seed=", most))
        plan.firstSeed = *seed;
    else if (const auto threads = numberBehind(argument, "--threads=", mostThreads))
        plan.threads = static_cast<unsigned>(*threads);
    else
        return false;
    return plan.schedules > 0 && plan.threads > 0;
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
        static_cast<std::uint64_t>(static_cast<double>(progress.played) / taken.count());
    say(std::to_string(progress.played) + " schedules of " + std::to_string(progress.steps) +
        " steps, " + std::to_string(speed) + " schedules a second");
    if (progress.hasFailed)
        return false;
    return tellMarks() || plan.schedules < enoughForAllMarks;
}

bool asksForSoak(const std::vector<std::string_view>& arguments) {
    return std::any_of(arguments.begin(), arguments.end(), [](std::string_view argument) {
        return argument.starts_with("--soak") || argument.starts_with("--seed") ||
               argument.starts_with("--threads");
    });
}

std::optional<SoakPlan> soakPlan(const std::vector<std::string_view>& arguments) {
    SoakPlan plan;
    plan.threads = std::max(1U, std::thread::hardware_concurrency());
    const bool isRight =
        std::all_of(arguments.begin() + 1, arguments.end(),
                    [&](std::string_view argument) { return take(argument, plan); });
    const bool hasCount =
        std::any_of(arguments.begin() + 1, arguments.end(),
                    [](std::string_view argument) { return argument.starts_with(countOption); });
    return isRight && hasCount ? std::optional(plan) : std::nullopt;
}

}  // namespace valdorn::simulation
