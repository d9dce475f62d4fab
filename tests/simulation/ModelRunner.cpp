#include "simulation/ModelRunner.h"

#include <algorithm>
#include <utility>

#include "simulation/Marks.h"

namespace valdorn::simulation {

namespace {

constexpr Millis relaunchDelay = 5000;
constexpr Millis revertDelay = 4000;
constexpr std::size_t longestIncompleteBytes = 64000;
constexpr std::size_t keptCharacters = 8000;

// Those that are not empty.
std::vector<std::string> piecesOf(const std::string& text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char letter : text) {
        if (letter == separator)
            pieces.emplace_back();
        else
            pieces.back() += letter;
    }
    std::erase(pieces, "");
    return pieces;
}

std::string pathVariable(const std::string& extra) {
    std::string joined = "PATH=";
    for (const std::string& piece : piecesOf(extra, ':'))
        joined += piece + ":";
    return joined +
           "/home/ada/.cargo/bin:/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin";
}

}  // namespace

ModelRunner::ModelRunner(ModelMachine& machine, std::size_t number, RunnerConfig config)
    : machine_(machine), view_{number, std::move(config), {}, {}, {}, {}, {}} {
    view_.status = RunnerStatus::stopped;
}

ModelRunner::~ModelRunner() {
    ModelLoop::cancel(revert_);
}

std::string ModelRunner::dataFolder() const {
    return dataFolder(view_.config);
}

std::string ModelRunner::dataFolder(const RunnerConfig& record) {
    std::string folder = ModelDisk::support;
    if (record.legacy)
        return folder;
    for (const std::string& piece : piecesOf("runners/" + record.id, '/'))
        folder += "/" + piece;
    return folder;
}

bool ModelRunner::isRegistered() const {
    return machine_.disk.exists(dataFolder() + "/.runner");
}

// -- what somebody asks for

void ModelRunner::setConfig(const RunnerConfig& config) {
    announce();
    recordWillChange();
    view_.config = config;
}

void ModelRunner::start() {
    if (!isRegistered()) {
        reached<"start without the marker">();
        return setStatus(RunnerStatus::notRegistered);
    }
    keepRunning_ = true;
    spawn();
}

void ModelRunner::stop() {
    keepRunning_ = false;
    if (process_)
        ++process_->terminateRequests;
    process_.reset();
    if (relaunchesDue_ > 0)
        reached<"stop while a relaunch is due">();
    setBuild(std::nullopt);
    setJob(std::nullopt);
    setStarted(std::nullopt);
    setStatus(RunnerStatus::stopped);
}

void ModelRunner::restart() {
    if (keepRunning_ && isRunning()) {
        reached<"restart asks the child to end">();
        ++process_->terminateRequests;
    } else {
        reached<"restart starts">();
        start();
    }
}

// -- launching

LaunchRecord ModelRunner::command() const {
    LaunchRecord record{machine_.loop.now(), machine_.executable(), {}, dataFolder(), {}};
    record.arguments = {"daemon", "--config", dataFolder() + "/runner-config.yaml"};
    for (const std::string& variable : machine_.environment) {
        if (!variable.starts_with("PATH="))
            record.environment.push_back(variable);
    }
    record.environment.push_back(pathVariable(view_.config.extraPath));
    std::sort(record.environment.begin(), record.environment.end());
    return record;
}

bool ModelRunner::failsToLaunch() {
    return std::exchange(machine_.nextLaunchFails, false) || machine_.everyLaunchFails;
}

void ModelRunner::spawn() {
    machine_.disk.makeFolders(dataFolder());
    machine_.disk.replaceConfiguration(dataFolder() + "/runner-config.yaml",
                                       "log:\n  level: debug\n");
    setStatus(RunnerStatus::starting);
    const ModelDisk::Content log = machine_.disk.openLog(dataFolder() + "/valdorn.log");
    if (!log)
        reached<"log not opened">();
    machine_.launches.push_back(command());
    if (failsToLaunch()) {
        reached<"launch failed">();
        return setStatus(RunnerStatus::stopped);
    }
    if (isRunning())
        reached<"second child beside the first">();
    process_ = std::make_shared<ModelChild>();
    process_->runner = weak_from_this();
    process_->log = log;
    machine_.children.push_back(process_);
    setStarted(machine_.loop.now());
}

// -- what the child does

void ModelRunner::print(ModelChild& child, std::string_view chunk) {
    if (!child.isRunning)
        return;
    const auto runner = child.runner.lock();
    if (!runner)
        return reached<"output for a runner that is gone">();
    if (!ModelText::isUtf8(chunk))
        return reached<"chunk that is not UTF-8">();
    runner->ingest(child, chunk);
}

void ModelRunner::ingest(ModelChild& child, std::string_view chunk) {
    std::string& buffer = child.incompleteLine;
    if (!buffer.empty() && !chunk.empty())
        reached<"line over two chunks">();
    buffer += chunk;
    for (std::size_t end = ModelText::findLineFeed(buffer); end != std::string::npos;
         end = ModelText::findLineFeed(buffer)) {
        const std::string line = buffer.substr(0, end);
        buffer.erase(0, end + 1);
        keep(child, line);
        machine_.loop.post([weak = weak_from_this(), said = ModelLine(line)] {
            if (const auto runner = weak.lock())
                runner->apply(said);
            else
                reached<"line for a runner that is gone">();
        });
    }
    if (buffer.size() > longestIncompleteBytes) {
        reached<"incomplete line cut">();
        buffer = ModelText::lastCharacters(buffer, keptCharacters);
    }
}

void ModelRunner::keep(ModelChild& child, const std::string& line) {
    if (line.find("\r\n") != std::string::npos)
        reached<"CR LF within a line">();
    if (!ModelLine(line).isKept || !child.log)
        return;
    if (machine_.disk.faults.appending)
        return reached<"log line lost">();
    if (child.log.use_count() > 1)
        reached<"log line kept">();
    else
        reached<"log line kept in a file without a name">();
    *child.log += line + "\n";
}

void ModelRunner::end(ModelMachine& machine, const std::shared_ptr<ModelChild>& child) {
    if (!child->isRunning)
        return;
    child->isRunning = false;
    if (!child->incompleteLine.empty())
        reached<"end within a line">();
    machine.loop.post([child] {
        child->log.reset();
        if (const auto runner = child->runner.lock())
            runner->childEnded(*child);
        else
            reached<"end of a child whose runner is gone">();
    });
}

void ModelRunner::childEnded(ModelChild& child) {
    if (process_.get() != &child)
        reached<"end of a child that was let go">();
    if (!keepRunning_)
        return setStatus(RunnerStatus::stopped);
    ++relaunchesDue_;
    machine_.loop.after(relaunchDelay, [self = shared_from_this()] { self->relaunch(); });
}

void ModelRunner::relaunch() {
    --relaunchesDue_;
    if (!keepRunning_)
        reached<"relaunch after a stop">();
    if (weak_from_this().use_count() == 1)
        reached<"relaunch of a runner that nobody has any more">();
    if (machine_.nextLaunchFails || machine_.everyLaunchFails)
        reached<"relaunch fails">();
    reached<"relaunch">();
    spawn();
}

// -- what a line says

void ModelRunner::apply(const ModelLine& line) {
    if (line.version)
        set(&RunnerView::version, line.version);
    if (line.job)
        setJob(line.job);
    switch (line.says) {
        case ModelLine::Says::repository:
            return setBuild(line.repository);
        case ModelLine::Says::jobStarted:
            if (view_.status == RunnerStatus::noNetwork)
                reached<"job started without a network">();
            cancelRevert();
            return setStatus(RunnerStatus::building);
        case ModelLine::Says::jobFinished:
            return armRevert();
        case ModelLine::Says::declared:
            return declared();
        case ModelLine::Says::blocked:
            if (view_.status == RunnerStatus::building)
                reached<"network lost while building">();
            return setStatus(RunnerStatus::noNetwork);
        case ModelLine::Says::nothing:
            return;
    }
}

void ModelRunner::declared() {
    cancelRevert();
    setBuild(std::nullopt);
    setJob(std::nullopt);
    if (view_.status == RunnerStatus::building)
        reached<"declared while building">();
    else
        setStatus(RunnerStatus::connected);
}

void ModelRunner::cancelRevert() {
    if (revert_)
        reached<"revert called off">();
    ModelLoop::cancel(revert_);
}

void ModelRunner::armRevert() {
    if (revert_)
        reached<"revert put off">();
    ModelLoop::cancel(revert_);
    revert_ = machine_.loop.after(revertDelay, [weak = weak_from_this()] {
        if (const auto runner = weak.lock())
            runner->revert();
    });
}

void ModelRunner::revert() {
    if (view_.status == RunnerStatus::building) {
        reached<"revert while building">();
        setStatus(RunnerStatus::connected);
    } else {
        reached<"revert while not building">();
    }
    setBuild(std::nullopt);
    setJob(std::nullopt);
    revert_.reset();
}

// -- publishing

void ModelRunner::announce() {
    machine_.announcements.push_back(view_);
    willChange();
}

template <typename Value>
void ModelRunner::assign(Value RunnerView::*field, const Value& value) {
    announce();
    view_.*field = value;
}

template <typename Value>
void ModelRunner::set(Value RunnerView::*field, const Value& value) {
    machine_.loop.post([weak = weak_from_this(), field, value] {
        const auto runner = weak.lock();
        if (runner && runner->view_.*field != value)
            runner->assign(field, value);
        else if (runner)
            reached<"equal value, not announced">();
    });
}

void ModelRunner::setStarted(std::optional<Millis> time) {
    machine_.loop.post([weak = weak_from_this(), time] {
        if (const auto runner = weak.lock())
            runner->assign(&RunnerView::startedAt, time);
    });
}

}  // namespace valdorn::simulation
