#pragma once

#include <optional>
#include <string>

#include "DaemonLog.h"
#include "JobPlayer.h"
#include "Output.h"
#include "RunnerFile.h"
#include "Script.h"
#include "StepPlayer.h"
#include "StopSignals.h"

namespace valdorn::demo {

// The command `daemon`: plays the script, then idles; ends with 0 when it is asked to stop.
// Without steps of its own in the script it plays ordinaryLife().
class Daemon {
public:
    Daemon(Level level, Script script, Output& output, StopSignals& signals);

    int run();  // returns the exit code

private:
    std::optional<int> playScript();
    std::optional<int> play(const Step& step);
    std::size_t loopStart(std::size_t index) const;
    void start();
    void updateLabels();
    void declare();
    void failToFetch(const std::string& reason);
    void beginStop();
    int stop();

    const Script script_;
    StopSignals& signals_;
    DaemonLog log_;
    StepPlayer player_;
    JobPlayer jobs_;
    RunnerFile runner_;  // once loaded
    bool stopBegun_ = false;
};

}  // namespace valdorn::demo
