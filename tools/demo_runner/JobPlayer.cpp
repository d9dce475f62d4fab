#include "JobPlayer.h"

#include <array>

namespace valdorn::demo {

// A step that prints a line of output at each quarter of its time.
struct JobStep {
    int number;
    std::string command;
    std::array<std::string_view, 4> output;
};

namespace {

const std::array<JobStep, 3> jobSteps = {{
    {0,
     "./fetch",
     {"Fetching sources", "Receiving objects: 50%", "Receiving objects: 100%", "Done"}},
    {1,
     "./build",
     {"[1/3] compile main", "[2/3] compile site", "[3/3] link site", "Build finished"}},
    {2, "./test", {"running 12 tests", "test pages ... ok", "test links ... ok", "12 passed"}},
}};

constexpr Caller inPlan{"func1", "runner.go:226"};
constexpr Caller inWorker{"1", "executor.go:101"};

}  // namespace

void JobPlayer::play(const Job& job, const std::string& address,
                     const std::function<void()>& onStop) {
    const std::string label = padded(job.label);
    begin(job, address);
    if (const JobStep* interrupted = playSteps(label, job.time)) {
        onStop();
        cancelStep(label, *interrupted);
    }
    finish(label, job.label.substr(job.label.find('/') + 1));
}

void JobPlayer::begin(const Job& job, const std::string& address) {
    const std::string task = "task " + std::to_string(++taskNumber_) + " repo is ";
    log_.entry({Level::info,
                task + job.repository + " " + address + " " + address,
                {"run", "runner.go:264"}});
    log_.entry({Level::debug, "Job.Strategy: <nil>", {"func1", "runner.go:180"}});
    log_.entry({Level::debug, "Job Matrices: [map[]]", {"func1", "runner.go:209"}});
    log_.entry({Level::debug, "Adjusting maxParallel from 4 to 1 (number of matrix combinations)",
                inPlan});
    log_.entry({Level::info,
                "Running job with maxParallel=1 for 1 matrix combinations",
                {"func1", "runner.go:230"}});
    log_.entry({Level::info,
                "NewParallelExecutor: Creating 1 workers for 1 executors",
                {"4", "executor.go:97"}});
    log_.entry({Level::debug, "Worker 0 started", inWorker});
    log_.entry({Level::debug, "Worker 0 executing task 1", {"1", "executor.go:105"}});
}

// Returns the step during which a stop was requested, or null.
const JobStep* JobPlayer::playSteps(const std::string& label, std::chrono::milliseconds time) {
    const auto pause = time / static_cast<int>(jobSteps.size() * jobSteps.front().output.size());
    for (const JobStep& step : jobSteps) {
        beginStep(label, step);
        for (const std::string_view output : step.output) {
            signals_.wait(pause);
            if (signals_.isStopRequested()) {
                return &step;
            }
            log_.jobLine(jobOutput(label, output));
        }
        log_.jobLine(jobLine(label, "Success - Main " + step.command));
    }
    return nullptr;
}

void JobPlayer::beginStep(const std::string& label, const JobStep& step) {
    const std::string& run = step.command;
    log_.jobLine(jobLine(label, "[DEBUG] evaluating expression ''"));
    log_.jobLine(jobLine(label, "[DEBUG] expression '' evaluated to 'true'"));
    log_.jobLine(jobLine(label, "Run Main " + run));
    log_.jobLine(jobLine(label, "[DEBUG] Wrote command \n\n" + run + "\n\n to 'workflow/" +
                                    std::to_string(step.number) + ".sh'"));
    log_.jobLine(jobOutput(label, "::group::Run " + run));
    log_.jobLine(jobOutput(label, run));
    log_.jobLine(jobOutput(label, "shell: bash --noprofile --norc -e -o pipefail {0}"));
    log_.jobLine(jobOutput(label, "::endgroup::"));
}

void JobPlayer::cancelStep(const std::string& label, const JobStep& step) {
    log_.jobLine(jobLine(label, "Failure - Main " + step.command));
    log_.jobLine(jobOutput(
        label, "##[error]this step has been cancelled: Process completed with exit code -1."));
}

// A cancelled job, too, is said to have succeeded: that is how act_runner tells it.
void JobPlayer::finish(const std::string& label, const std::string& jobName) {
    log_.jobLine(jobLine(label, "Cleaning up container for job " + jobName));
    log_.jobLine(jobLine(label, "Job succeeded"));
    log_.entry({Level::debug, "Worker 0 finished (1 tasks executed)", {"1", "executor.go:119"}});
}

std::string JobPlayer::padded(std::string label) const {
    if (label.size() < padding_) {
        label.append(padding_ - label.size(), ' ');
    }
    return label;
}

}  // namespace valdorn::demo
