#include "simulation/Schedule.h"

#include <numeric>
#include <utility>

#include "simulation/Agreement.h"

namespace valdorn::simulation {

namespace {

// An index, each as often as its weight says.
template <typename Weights>
std::size_t weighed(Random& random, const Weights& weights) {
    std::size_t left =
        random.below(std::accumulate(weights.begin(), weights.end(), std::size_t{0}));
    std::size_t index = 0;
    while (left >= weights[index])
        left -= weights[index++];
    return index;
}

std::size_t kindOf(Random& random, Field field) {
    std::vector<std::size_t> weights;
    for (const StepKind& kind : stepKinds())
        weights.push_back(kind.field == field ? kind.weight : 0);
    return weighed(random, weights);
}

// Names are part of what seeds a schedule, so that campaigns do not repeat one another.
std::uint64_t mixed(const Campaign& campaign, std::uint64_t seed) {
    for (const char* letter = campaign.name; *letter != '\0'; ++letter)
        seed = seed * 31 + static_cast<std::uint64_t>(*letter);
    return seed;
}

std::optional<Parting> partingAt(std::size_t step, Stage& stage) {
    auto found = disagreements(stage);
    if (found.empty())
        return std::nullopt;
    return Parting{step, std::move(found), {}};
}

// Without `count` steps from `first` on.
Schedule without(Schedule schedule, std::size_t first, std::size_t count) {
    const auto begin = schedule.steps.begin() + static_cast<std::ptrdiff_t>(first);
    schedule.steps.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
    return schedule;
}

}  // namespace

const std::vector<Campaign>& campaigns() {
    // child, runner, edit, registration, time, disk, log, outside, program
    static const std::vector<Campaign> all = {
        {"Everything", {40, 15, 8, 6, 25, 8, 8, 5, 3}, 60},
        {"Supervision", {50, 20, 2, 0, 30, 3, 0, 0, 1}, 60},
        {"Fleet", {15, 10, 40, 5, 10, 15, 0, 0, 8}, 50},
        {"Registering", {15, 10, 10, 45, 10, 8, 0, 0, 2}, 40},
        {"LogWindow", {40, 10, 4, 0, 25, 12, 30, 0, 2}, 50},
        {"BrokenDisk", {35, 15, 15, 5, 15, 35, 10, 0, 6}, 50},
        {"Outside", {10, 5, 2, 2, 35, 0, 0, 60, 4}, 50},
    };
    return all;
}

Schedule draw(const Campaign& campaign, std::uint64_t seed) {
    Random random(mixed(campaign, seed));
    Schedule schedule{random.next(), {}};
    const std::size_t steps = 1 + random.below(campaign.mostSteps);
    for (std::size_t step = 0; step < steps; ++step) {
        const auto field = static_cast<Field>(weighed(random, campaign.weights));
        const std::size_t kind = kindOf(random, field);
        schedule.steps.push_back({kind, random.next()});
    }
    return schedule;
}

std::optional<Parting> play(const Schedule& schedule, Telling telling) {
    Stage stage(schedule.setUp);
    stage.isTelling = telling == Telling::on;
    std::vector<std::string> story;
    auto parting = partingAt(0, stage);
    for (std::size_t step = 0; step < schedule.steps.size() && !parting; ++step) {
        perform(schedule.steps[step], stage);
        story.push_back(std::exchange(stage.story, {}));
        parting = partingAt(step + 1, stage);
    }
    if (parting)
        parting->story = std::move(story);
    return parting;
}

Schedule shrunk(Schedule schedule, const std::function<bool(const Schedule&)>& fails) {
    for (std::size_t size = schedule.steps.size(); size > 0; size /= 2) {
        for (std::size_t first = 0; first + size <= schedule.steps.size();) {
            Schedule shorter = without(schedule, first, size);
            if (fails(shorter))
                schedule = std::move(shorter);
            else
                first += size;
        }
    }
    return schedule;
}

std::string report(const Campaign& campaign, std::uint64_t seed) {
    const Schedule whole = draw(campaign, seed);
    const Schedule least =
        shrunk(whole, [](const Schedule& shorter) { return play(shorter).has_value(); });
    const auto parting = play(least, Telling::on);
    if (!parting)
        return "seed " + std::to_string(seed) + " of " + campaign.name + " does not fail again";
    std::string text = "campaign " + std::string(campaign.name) + ", seed " + std::to_string(seed) +
                       ", parted at step " + std::to_string(play(whole)->step) + " of " +
                       std::to_string(whole.steps.size()) + "; what is needed of it:\n";
    for (std::size_t step = 0; step < parting->story.size(); ++step)
        text += "  " + std::to_string(step + 1) + ". " + parting->story[step] + "\n";
    for (const std::string& disagreement : parting->disagreements)
        text += "  * " + disagreement + "\n";
    return text;
}

}  // namespace valdorn::simulation
