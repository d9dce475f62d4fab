#include "runner/RunnerManager.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "platform/ChildLauncher.h"
#include "platform/FileSystem.h"
#include "platform/HostInfo.h"
#include "platform/Path.h"
#include "runner/Config.h"
#include "runner/RunnerLog.h"
#include "runner/RunnerOutput.h"

namespace valdorn {

namespace {

// The environment with the one variable set, in its old place if it was there.
std::vector<std::string> withPath(std::vector<std::string> environment, const std::string& path) {
    const auto isPath = [](const std::string& variable) { return variable.starts_with("PATH="); };
    const auto place = std::find_if(environment.begin(), environment.end(), isPath);
    if (place == environment.end()) {
        environment.push_back("PATH=" + path);
        return environment;
    }
    *place = "PATH=" + path;
    environment.erase(std::remove_if(place + 1, environment.end(), isPath), environment.end());
    return environment;
}

}  // namespace

std::shared_ptr<RunnerManager> RunnerManager::create(RunnerConfig config,
                                                     const Services& services) {
    return std::make_shared<RunnerManager>(Key{}, std::move(config), services);
}

RunnerManager::RunnerManager(Key, RunnerConfig config, const Services& services)
    : services_(services),
      config_(*this, std::move(config)),
      status_(*this, RunnerStatus::stopped),
      currentBuild_(*this, std::nullopt),
      currentJob_(*this, std::nullopt),
      runnerVersion_(*this, std::nullopt),
      startedAt_(*this, std::nullopt) {}

RunnerManager::~RunnerManager() = default;

void RunnerManager::setConfig(RunnerConfig config) {
    config_.set(std::move(config));
}

bool RunnerManager::isRunning() const {
    return process_ && process_->isRunning();
}

std::string RunnerManager::dataDir() const {
    std::string support = Config::applicationSupportFolder(services_.hostInfo.homeFolder());
    if (config().legacy)
        return support;
    return appendPathComponent(support, "runners/" + config().id);
}

bool RunnerManager::isRegistered() const {
    return services_.fileSystem.exists(
        appendPathComponent(dataDir(), Config::registrationMarkerName));
}

void RunnerManager::ensureDataDir() const {
    // A folder that cannot be made shows as a launch that fails.
    std::ignore = services_.fileSystem.makeFolders(dataDir());
}

void RunnerManager::ensureDaemonConfig() const {
    // Without it the daemon does not start, or runs with what was there before.
    std::ignore = services_.fileSystem.replaceAtomically(
        appendPathComponent(dataDir(), Config::daemonConfigurationName),
        Config::daemonConfiguration);
}

std::unique_ptr<AppendHandle> RunnerManager::openLog() const {
    auto log = services_.fileSystem.openForAppending(
        appendPathComponent(dataDir(), Config::runnerLogName));
    // A runner without a log still runs.
    return log ? std::move(log.value()) : nullptr;
}

void RunnerManager::start() {
    if (!isRegistered()) {
        setStatus(RunnerStatus::notRegistered);
        return;
    }
    keepRunning_ = true;
    spawn();
}

void RunnerManager::stop() {
    keepRunning_ = false;
    if (process_)
        process_->terminate();
    process_.reset();
    setBuild(std::nullopt);
    setJob(std::nullopt);
    setStarted(std::nullopt);
    setStatus(RunnerStatus::stopped);
}

void RunnerManager::restart() {
    if (keepRunning_ && isRunning()) {
        process_->terminate();
    } else {
        start();
    }
}

void RunnerManager::spawn() {
    ensureDataDir();
    ensureDaemonConfig();
    setStatus(RunnerStatus::starting);
    const auto output = std::make_shared<RunnerOutput>(openLog());
    auto launched = services_.childLauncher.launch(daemonCommand(), handlers(output));
    if (!launched) {
        setStatus(RunnerStatus::stopped);
        return;
    }
    process_ = std::move(launched.value());
    setStarted(services_.mainQueue.now());
}

ChildCommand RunnerManager::daemonCommand() const {
    const HostInfo& host = services_.hostInfo;
    const std::string folder = dataDir();
    return {Config::actRunnerPath(services_.bundleResources, host),
            {"daemon", "--config", appendPathComponent(folder, Config::daemonConfigurationName)},
            folder,
            withPath(host.environment(), Config::pathEnv(config().extraPath, host.homeFolder()))};
}

ChildHandlers RunnerManager::handlers(const std::shared_ptr<RunnerOutput>& output) {
    // These run on the reader thread: they touch only their launch's output and the queue. What the
    // lines say is found out there, too, and the main thread gets to know only that: it has windows
    // to show; nor is it woken to be told nothing. The credit travels with the news, so that a slow
    // main thread holds the child back before they fill the memory.
    MainQueue& queue = services_.mainQueue;
    const std::weak_ptr<RunnerManager> weak = weak_from_this();
    auto onOutput = [&queue, weak, output](std::string_view chunk, OutputCredit credit) {
        if (weak.expired())
            return;
        auto news = RunnerLog::news(output->ingest(chunk));
        if (news.empty())
            return;
        queue.post([weak, news = std::move(news), credit = std::move(credit)]()
                       VALDORN_ON_MAIN_THREAD {
                           const auto self = weak.lock();
                           if (!self)
                               return;
                           for (const RunnerNews& one : news)
                               self->apply(one);
                       });
    };
    auto onExit = [&queue, weak, output](ChildExit) {
        queue.post([weak, output]() VALDORN_ON_MAIN_THREAD {
            output->closeLog();
            if (const auto self = weak.lock())
                self->childEnded();
        });
    };
    return {std::move(onOutput), std::move(onExit)};
}

void RunnerManager::childEnded() {
    if (!keepRunning_) {
        setStatus(RunnerStatus::stopped);
        return;
    }
    services_.mainQueue
        .after(relaunchDelay,
               [self = shared_from_this()]() VALDORN_ON_MAIN_THREAD { self->spawn(); })
        .detach();
}

void RunnerManager::apply(const RunnerNews& news) {
    if (news.version)
        setVersion(*news.version);
    if (news.job)
        setJob(news.job);
    applyEvent(news.event);
}

void RunnerManager::applyEvent(const RunnerLogEvent& event) {
    switch (event.kind) {
        case RunnerLogEvent::Kind::repository:
            setBuild(event.repository);
            break;
        case RunnerLogEvent::Kind::jobStarted:
            idleRevert_.cancel();
            setStatus(RunnerStatus::building);
            break;
        case RunnerLogEvent::Kind::jobFinished:
            armIdleRevert();
            break;
        case RunnerLogEvent::Kind::declared:
            idleRevert_.cancel();
            setBuild(std::nullopt);
            setJob(std::nullopt);
            if (status() != RunnerStatus::building)
                setStatus(RunnerStatus::connected);
            break;
        case RunnerLogEvent::Kind::networkBlocked:
            setStatus(RunnerStatus::noNetwork);
            break;
        case RunnerLogEvent::Kind::unrelated:
            break;
    }
}

void RunnerManager::armIdleRevert() {
    idleRevert_ = services_.mainQueue.after(idleRevertDelay,
                                            [weak = weak_from_this()]() VALDORN_ON_MAIN_THREAD {
                                                if (const auto self = weak.lock())
                                                    self->revertToIdle();
                                            });
}

void RunnerManager::revertToIdle() {
    if (status() == RunnerStatus::building)
        setStatus(RunnerStatus::connected);
    setBuild(std::nullopt);
    setJob(std::nullopt);
}

void RunnerManager::setStatus(RunnerStatus status) {
    publish(&RunnerManager::status_, status);
}

void RunnerManager::setBuild(std::optional<std::string> build) {
    publish(&RunnerManager::currentBuild_, std::move(build));
}

void RunnerManager::setJob(std::optional<std::string> job) {
    publish(&RunnerManager::currentJob_, std::move(job));
}

void RunnerManager::setVersion(std::string version) {
    publish(&RunnerManager::runnerVersion_, std::optional(std::move(version)));
}

template <typename Value>
void RunnerManager::publish(Published<Value> RunnerManager::*field, Value value) {
    services_.mainQueue.post([weak = weak_from_this(), field, value = std::move(value)]()
                                 VALDORN_ON_MAIN_THREAD {
                                     const auto self = weak.lock();
                                     if (self && (*self.*field).get() != value)
                                         (*self.*field).set(value);
                                 });
}

void RunnerManager::setStarted(std::optional<MainQueue::TimePoint> time) {
    services_.mainQueue.post([weak = weak_from_this(), time]() VALDORN_ON_MAIN_THREAD {
        if (const auto self = weak.lock())
            self->startedAt_.set(time);
    });
}

Registration RunnerManager::registration(const std::string& token) const {
    ensureDataDir();
    const std::string labels = config().labels.empty() ? defaultLabels : config().labels;
    return {services_.childLauncher,
            {Config::actRunnerPath(services_.bundleResources, services_.hostInfo),
             {"register", "--no-interactive", "--instance", config().instanceURL, "--token", token,
              "--name", config().name, "--labels", labels},
             dataDir(),
             services_.hostInfo.environment()}};
}

}  // namespace valdorn
