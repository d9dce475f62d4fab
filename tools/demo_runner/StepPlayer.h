#pragma once

#include <optional>

#include "Output.h"
#include "Script.h"
#include "StopSignals.h"

namespace valdorn::demo {

// Plays the steps that both commands know. Never asked for the others.
//
// A step ends early when a stop is requested; the caller looks after each. play() returns an exit
// code when the process is to end at once, without another word.
class StepPlayer {
public:
    StepPlayer(Output& output, StopSignals& signals) : output_(output), signals_(signals) {}

    std::optional<int> play(const Step& step);

private:
    void print(const Print& step);
    void flood(const Flood& step);

    Output& output_;
    StopSignals& signals_;
};

}  // namespace valdorn::demo
