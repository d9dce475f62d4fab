#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "platform/Services.h"
#include "runner/Registration.h"
#include "runner/RunnerConfig.h"
#include "runner/RunnerStatus.h"

namespace valdorn {

class AppendHandle;
class ChildProcess;
class RunnerOutput;
struct RunnerLogEvent;
struct RunnerNews;

// Supervises one runner: launches `act_runner daemon`, turns what it prints into published state,
// and launches it again when it ends although it is meant to run.
//
// Thread: main thread only. Output is cut into lines and read on the launcher's reader thread, by an
// object that belongs to one launch; what lines say and exits come to the main thread by value, in
// order.
// Ownership: shared; everything handed to the outside holds it weakly, except a scheduled
// relaunch, which keeps it alive until it has happened. Dropping it does not end its child.
// Observers are told before a change is stored. Changes are published by tasks posted to the main
// queue, so they land after the operation that caused them has returned; equal values are not
// announced (the start time excepted).
//
//   event                          status becomes                also
//   start(), not registered        notRegistered                 keepRunning unchanged, no child
//   start(), registered            starting                      keepRunning, a child is launched
//   the launch fails               stopped                       keepRunning unchanged, no relaunch
//   line: declared                 connected unless building     build and job cleared, no revert
//   line: job started              building                      no revert
//   line: job finished             unchanged                     revert in 4.0 s
//   the revert                     connected if building         build and job cleared
//   line: network blocked          noNetwork                     build and job stay
//   line: repository               unchanged                     build set
//   the child ends, keepRunning    unchanged                     relaunch in 5.0 s
//   the child ends, not keepRunning  stopped                     build, job, start time stay
//   the relaunch                   starting                      whatever keepRunning is by then
//   stop()                         stopped                       build, job, start time cleared
//
// stop() does not call off a relaunch that is already scheduled.
class RunnerManager : public Observable, public std::enable_shared_from_this<RunnerManager> {
    struct Key {};

public:
    // Creates a stopped manager for the record; launches nothing. What `services` refers to
    // outlives it.
    static std::shared_ptr<RunnerManager> create(RunnerConfig config, const Services& services);

    RunnerManager(Key, RunnerConfig config, const Services& services);
    ~RunnerManager();
    RunnerManager(const RunnerManager&) = delete;
    RunnerManager& operator=(const RunnerManager&) = delete;

    // The record's identity.
    const std::string& id() const VALDORN_ON_MAIN_THREAD { return config().id; }

    // The record; edits apply from the next launch on.
    const RunnerConfig& config() const VALDORN_ON_MAIN_THREAD { return config_.get(); }
    // Replaces the record at once, after announcing it.
    void setConfig(RunnerConfig config) VALDORN_ON_MAIN_THREAD;
    // Calls `observer` with the coming record before each change of it.
    [[nodiscard]] Subscription onConfigWillSet(std::function<void(const RunnerConfig&)> observer)
        VALDORN_ON_MAIN_THREAD {
        return config_.onWillSet(std::move(observer));
    }

    RunnerStatus status() const VALDORN_ON_MAIN_THREAD { return status_.get(); }
    // Repository of the task that is being built.
    const std::optional<std::string>& currentBuild() const VALDORN_ON_MAIN_THREAD {
        return currentBuild_.get();
    }
    // "Workflow/job" label of the job that runs.
    const std::optional<std::string>& currentJob() const VALDORN_ON_MAIN_THREAD {
        return currentJob_.get();
    }
    // What the daemon last said about its version; never cleared.
    const std::optional<std::string>& runnerVersion() const VALDORN_ON_MAIN_THREAD {
        return runnerVersion_.get();
    }
    // When the current child was launched, on the main queue's clock.
    const std::optional<MainQueue::TimePoint>& startedAt() const VALDORN_ON_MAIN_THREAD {
        return startedAt_.get();
    }

    // True while the runner is meant to run: the end of its child leads to a relaunch.
    bool keepRunning() const VALDORN_ON_MAIN_THREAD { return keepRunning_; }
    // True while the child launched last runs.
    bool isRunning() const VALDORN_ON_MAIN_THREAD;

    // The runner's folder, from the record as it is now.
    std::string dataDir() const VALDORN_ON_MAIN_THREAD;
    // True when the registration marker stands in that folder, whatever it is.
    bool isRegistered() const VALDORN_ON_MAIN_THREAD;

    // Launches the daemon if the runner is registered. Does not look whether one runs already: a
    // second child is launched then and the first is forgotten.
    void start() VALDORN_ON_MAIN_THREAD;

    // Asks the child to end, without waiting and without force. It may go on for as long as it
    // likes; its end is then noted like any other.
    void stop() VALDORN_ON_MAIN_THREAD;

    // Asks a child that is meant to run to end, so that the relaunch follows; else does start().
    void restart() VALDORN_ON_MAIN_THREAD;

    // Prepares the registration of this runner with the record as it is now; running it changes
    // nothing here. The token is passed on as it is.
    Registration registration(const std::string& token) const VALDORN_ON_MAIN_THREAD;

private:
    void spawn() VALDORN_ON_MAIN_THREAD;
    ChildCommand daemonCommand() const VALDORN_ON_MAIN_THREAD;
    ChildHandlers handlers(const std::shared_ptr<RunnerOutput>& output) VALDORN_ON_MAIN_THREAD;
    std::unique_ptr<AppendHandle> openLog() const VALDORN_ON_MAIN_THREAD;
    void ensureDataDir() const VALDORN_ON_MAIN_THREAD;
    void ensureDaemonConfig() const VALDORN_ON_MAIN_THREAD;

    void apply(const RunnerNews& news) VALDORN_ON_MAIN_THREAD;
    void applyEvent(const RunnerLogEvent& event) VALDORN_ON_MAIN_THREAD;
    void armIdleRevert() VALDORN_ON_MAIN_THREAD;
    void revertToIdle() VALDORN_ON_MAIN_THREAD;
    void childEnded() VALDORN_ON_MAIN_THREAD;

    void setStatus(RunnerStatus status) VALDORN_ON_MAIN_THREAD;
    void setBuild(std::optional<std::string> build) VALDORN_ON_MAIN_THREAD;
    void setJob(std::optional<std::string> job) VALDORN_ON_MAIN_THREAD;
    void setVersion(std::string version) VALDORN_ON_MAIN_THREAD;
    void setStarted(std::optional<MainQueue::TimePoint> time) VALDORN_ON_MAIN_THREAD;
    template <typename Value>
    void publish(Published<Value> RunnerManager::*field, Value value) VALDORN_ON_MAIN_THREAD;

    const Services services_;
    Published<RunnerConfig> config_;
    Published<RunnerStatus> status_;
    Published<std::optional<std::string>> currentBuild_;
    Published<std::optional<std::string>> currentJob_;
    Published<std::optional<std::string>> runnerVersion_;
    Published<std::optional<MainQueue::TimePoint>> startedAt_;
    std::unique_ptr<ChildProcess> process_ VALDORN_MAIN_THREAD_ONLY;
    bool keepRunning_ VALDORN_MAIN_THREAD_ONLY = false;
    ScheduledTask idleRevert_ VALDORN_MAIN_THREAD_ONLY;
};

}  // namespace valdorn
