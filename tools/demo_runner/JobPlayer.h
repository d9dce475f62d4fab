#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "DaemonLog.h"
#include "Script.h"
#include "StopSignals.h"

namespace valdorn::demo {

struct JobStep;

// Plays whole jobs: what act_runner prints while it runs one.
class JobPlayer {
public:
    JobPlayer(DaemonLog& log, StopSignals& signals) : log_(log), signals_(signals) {}

    void setPadding(std::size_t width) { padding_ = width; }

    // Takes the job's time. When a stop is requested meanwhile, calls `onStop` and ends the job as
    // cancelled.
    void play(const Job& job, const std::string& address, const std::function<void()>& onStop);

private:
    void begin(const Job& job, const std::string& address);
    const JobStep* playSteps(const std::string& label, std::chrono::milliseconds time);
    void beginStep(const std::string& label, const JobStep& step);
    void cancelStep(const std::string& label, const JobStep& step);
    void finish(const std::string& label, const std::string& jobName);
    std::string padded(std::string label) const;

    DaemonLog& log_;
    StopSignals& signals_;
    std::size_t padding_ = 0;
    std::uint64_t taskNumber_ = 0;
};

}  // namespace valdorn::demo
