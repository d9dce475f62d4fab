#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "simulation/ModelMachine.h"
#include "simulation/ModelText.h"

namespace valdorn::simulation {

// One supervised runner by the rules of supervision: a table of what each event does, and no more.
class ModelRunner : public std::enable_shared_from_this<ModelRunner> {
public:
    ModelRunner(ModelMachine& machine, std::size_t number, RunnerConfig config);
    ModelRunner(const ModelRunner&) = delete;
    ModelRunner& operator=(const ModelRunner&) = delete;
    ~ModelRunner();

    // Called before each change of any published field.
    std::function<void()> willChange = [] {};
    // Called before each change of the record.
    std::function<void()> recordWillChange = [] {};

    const RunnerView& view() const { return view_; }
    bool keepRunning() const { return keepRunning_; }
    bool isRunning() const { return process_ && process_->isRunning; }
    bool isRegistered() const;
    std::string dataFolder() const;
    static std::string dataFolder(const RunnerConfig& record);
    int relaunchesDue() const { return relaunchesDue_; }

    void setConfig(const RunnerConfig& config);
    void start();
    void stop();
    void restart();

    // What the daemon prints, and its end, which is told on the main thread.
    static void print(ModelChild& child, std::string_view chunk);
    static void end(ModelMachine& machine, const std::shared_ptr<ModelChild>& child);

private:
    void spawn();
    LaunchRecord command() const;
    bool failsToLaunch();
    void ingest(ModelChild& child, std::string_view chunk);
    void keep(ModelChild& child, const std::string& line);
    void apply(const ModelLine& line);
    void declared();
    void armRevert();
    void cancelRevert();
    void revert();
    void childEnded(ModelChild& child);
    void relaunch();

    void setStatus(RunnerStatus status) { set(&RunnerView::status, status); }
    void setBuild(const std::optional<std::string>& build) { set(&RunnerView::build, build); }
    void setJob(const std::optional<std::string>& job) { set(&RunnerView::job, job); }
    void setStarted(std::optional<Millis> time);
    template <typename Value>
    void set(Value RunnerView::*field, const Value& value);
    template <typename Value>
    void assign(Value RunnerView::*field, const Value& value);
    void announce();

    ModelMachine& machine_;
    RunnerView view_;
    std::shared_ptr<ModelChild> process_;
    bool keepRunning_ = false;
    ModelLoop::Handle revert_;
    int relaunchesDue_ = 0;
};

}  // namespace valdorn::simulation
