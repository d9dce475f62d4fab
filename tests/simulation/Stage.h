#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulation/Model.h"
#include "simulation/Random.h"
#include "simulation/World.h"

namespace valdorn::simulation {

// The world and the model side by side. Steps do the same to both.
class Stage {
public:
    // A computer set up by the seed, on which the program has been launched.
    explicit Stage(std::uint64_t seed);

    Model model;
    Machine machine{model.disk.faults};

    Program& program() { return *program_; }
    ModelProcess& process() { return model.process(); }
    ModelFleet& fleet() { return *process().fleet; }
    VirtualMainQueue& queue() { return program().queue; }

    // Runs what is posted. Until the next thing that somebody does, nothing is left to do.
    void settle();
    bool isSettled() const { return isSettled_; }
    void unsettle() { isSettled_ = false; }
    void advance(Millis step);

    // The program is gone, and begins anew.
    void restart();

    // The same for a runner in the world and the model.
    struct Runner {
        std::shared_ptr<RunnerManager> real;
        std::shared_ptr<ModelRunner> expected;
    };
    std::optional<Runner> anyRunner(Random& random);
    // The index of a child, most often of one that runs.
    std::optional<std::size_t> anyChild(Random& random);

    // What happens, told only when somebody listens.
    bool isTelling = false;
    std::string story;
    void tell(const std::string& what) {
        if (isTelling)
            story += (story.empty() ? "" : "; ") + what;
    }

    // What a step itself finds amiss.
    std::vector<std::string> faults;
    void fail(const std::string& what) { faults.push_back(what); }

private:
    void setUpHost(Random& random);
    void setUpDefaults(Random& random);
    void setUpList(Random& random);
    void begin();

    std::unique_ptr<Program> program_;
    bool isSettled_ = false;
};

// Text for people: control characters and what is not ASCII by their numbers, long ones shortened.
std::string shown(std::string_view text);

}  // namespace valdorn::simulation
