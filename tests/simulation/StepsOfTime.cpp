#include <algorithm>

#include "simulation/Marks.h"
#include "simulation/Steps.h"

namespace valdorn::simulation {

namespace {

std::string milliseconds(Millis time) {
    return std::to_string(time) + " ms";
}

void passes(Stage& stage, Random& random) {
    Millis step = random.pick<Millis>({0, 1, 999, 1000, 1001, 3999, 4000, 4001, 4999, 5000, 5001});
    if (random.chance(30))
        step = static_cast<Millis>(random.below(12000));
    stage.advance(step);
    stage.tell(milliseconds(step) + " pass");
}

// To the moment before, at or after the next deadline.
void passesToAnEdge(Stage& stage, Random& random) {
    stage.settle();
    const ModelLoop& loop = stage.process().machine.loop;
    const auto next = loop.next();
    if (!next)
        return;
    const auto beside = static_cast<Millis>(random.below(3)) - 1;
    if (beside < 0)
        reached<"a millisecond before a deadline">();
    else if (beside == 0)
        reached<"right at a deadline">();
    else
        reached<"a millisecond after a deadline">();
    const Millis step = std::max<Millis>(0, *next - loop.now() + beside);
    stage.advance(step);
    stage.tell(milliseconds(step) + " pass, to an edge");
}

// The main thread is held up: what is due meanwhile runs late and in order.
void stalls(Stage& stage, Random& random) {
    const auto step = static_cast<Millis>(random.below(12000));
    reached<"main thread held up">();
    if (stage.process().machine.loop.dueWithin(step) > 1)
        reached<"main thread held up over two deadlines">();
    stage.queue().stall(std::chrono::milliseconds(step));
    stage.process().machine.loop.stall(step);
    stage.tell("the main thread stalls for " + milliseconds(step));
}

}  // namespace

void Steps::addTimeSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::time, 50, passes});
    kinds.push_back({Field::time, 40, passesToAnEdge});
    kinds.push_back({Field::time, 10, stalls});
}

}  // namespace valdorn::simulation
