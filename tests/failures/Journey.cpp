#include "failures/Journey.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include "failures/BusStandin.h"
#include "failures/KeptLines.h"
#include "failures/Seen.h"
#include "fleet/RunnerRecords.h"
#include "logs/LogTailer.h"
#include "platform/posix/DaemonRecords.h"
#include "platform/posix/SessionBusSocket.h"
#include "platform/posix/SpawnProcess.h"
#include "platform/posix/StandardStreams.h"
#include "runner/RunnerStatus.h"

namespace valdorn {

namespace {

using failing::Call;
using failing::Quiet;

// The program hangs: nothing comes any more of what has to come.
struct Stuck : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What hangs where nothing can be thrown ends the test by a signal.
constexpr unsigned patienceSeconds = 60;

constexpr rlim_t fewDescriptors = 200;

constexpr char supportFolder[] = "Library/Application Support/Valdorn";

std::string text(RunnerStatus status) {
    return std::string(rawValue(status));
}

std::string yesNo(bool is) {
    return is ? "yes" : "no";
}

}  // namespace

Journey::Journey(const std::vector<failing::Fault>& faults) : faults_(faults) {
    prepareHome();
}

Journey::~Journey() {
    failing::disarm();
}

std::string Journey::support() const {
    return home_ / supportFolder;
}

void Journey::prepareHome() {
    namespace fs = std::filesystem;
    setenv("HOME", home_.path().c_str(), 1);
    setenv("XDG_RUNTIME_DIR", (home_ / "session").c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_STATE_HOME");
    openMissingStandardStreams();
    // So few that a launch asks for more.
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = fewDescriptors;
    setrlimit(RLIMIT_NOFILE, &limit);
    fs::create_directories(support() + "/runners/b");
    fs::create_directories(home_ / "left");
    fs::create_directories(home_ / "session");
    fs::create_directories(home_ / "actrunner");
    fs::create_symlink(VALDORN_FAILING_RUNNER, home_ / "actrunner/act_runner");
    std::ofstream(support() + "/.runner");
    std::ofstream(support() + "/runners.json")
        << *RunnerRecords::encode({{"legacy", "first", "http://x.invalid", "macos", "", true},
                                   {"b", "other", "http://x.invalid", "macos", "", false}});
}

// As a killed instance does.
void Journey::leaveDaemonBehind() {
    const std::string path = VALDORN_FAILING_RUNNER;
    const std::string folder = home_ / "left";
    std::string name = path;
    std::string verb = "daemon";
    const std::array<char*, 3> arguments{name.data(), verb.data(), nullptr};
    const std::array<char*, 1> environment{nullptr};
    auto nowhere = openPath("/dev/null", O_RDWR);
    const auto spawned = spawnProcess({.executable = path.c_str(),
                                       .arguments = arguments.data(),
                                       .environment = environment.data(),
                                       .folder = folder.c_str(),
                                       .input = nowhere.value().number(),
                                       .output = nowhere.value().number()});
    leftBehind_ = spawned.value().pid;
    PosixFileSystem files;
    const PosixHostInfo host;
    const auto place = InstancePlace::forHome(host.environment(), host.homeFolder());
    DaemonLedger(files, place.value().ledgerPath()).note(leftBehind_);
}

Story Journey::tell() {
    alarm(patienceSeconds);
    const std::size_t descriptors = seen::descriptors();
    const std::size_t threads = seen::threads();
    leaveDaemonBehind();
    try {
        failing::arm(faults_.data(), faults_.size());
        live();
    } catch (const Stuck& hang) {
        wrong(std::string("hangs: ") + hang.what());
    }
    story_.hasFailed = !faults_.empty() && failing::hasFired(0);
    second_.reset();
    now_.reset();
    failing::disarm();
    if (const std::size_t left = seen::endAll(allDaemons()); left > 0)
        wrong(std::to_string(left) + " children are left");
    if (seen::descriptors() != descriptors)
        wrong("descriptors: " + std::to_string(seen::descriptors()) + " instead of " +
              std::to_string(descriptors));
    if (seen::threads() != threads)
        wrong("threads: " + std::to_string(seen::threads()));
    checkLog();
    checkNames();
    alarm(0);
    return std::move(story_);
}

void Journey::live() {
    chapter("begin", &Journey::begin);
    chapter("load", &Journey::load);
    chapter("run", &Journey::run);
    chapter("follow the log", &Journey::followLog);
    chapter("die", &Journey::die);
    chapter("edit", &Journey::edit);
    chapter("login item", &Journey::login);
    chapter("register", &Journey::registerRunner);
    chapter("greet the bus", &Journey::greetBus);
    chapter("stop", &Journey::stop);
    chapter("run again", &Journey::runAgain);
    chapter("remove", &Journey::remove);
    chapter("system log", &Journey::say);
    chapter("quit", &Journey::quit);
    chapter("start and quit in haste", &Journey::startAndQuitInHaste);
}

void Journey::chapter(const char* name, void (Journey::*part)()) {
    if (isOver_)
        return;
    wasFailedBefore_ = hasFailed();
    story_.chapters.push_back({name, {}, false});
    (this->*part)();
    story_.chapters.back().hasFailed = hasFailed();
}

void Journey::fact(const std::string& text) {
    story_.chapters.back().facts.push_back(text);
}

void Journey::wrong(const std::string& text) {
    const std::string where = story_.chapters.empty() ? "" : story_.chapters.back().name + ": ";
    story_.wrongs.push_back(where + text);
}

void Journey::expect(bool isAsPlanned, const std::string& what) {
    fact(what + ": " + yesNo(isAsPlanned));
    if (!isAsPlanned && (!hasFailed() || hasFailedBefore()))
        wrong(what + " is not so");
}

bool Journey::hasFailed() const {
    bool has = false;
    for (std::size_t at = 0; at < faults_.size(); ++at)
        has = has || failing::hasFired(at);
    return has;
}

bool Journey::hasFailedBefore() const {
    return wasFailedBefore_;
}

bool Journey::mayBeHurt() const {
    return std::any_of(faults_.begin(), faults_.end(),
                       [](const failing::Fault& fault) { return !fault.failure.isTransparent; });
}

bool Journey::mayBeHurt(std::initializer_list<Call> calls) const {
    return std::any_of(faults_.begin(), faults_.end(), [&](const failing::Fault& fault) {
        return !fault.failure.isTransparent &&
               std::find(calls.begin(), calls.end(), fault.call) != calls.end();
    });
}

void Journey::begin() {
    try {
        now_ = std::make_unique<Instance>();
    } catch (const std::system_error&) {
        expect(false, "starts");
        isOver_ = true;
    }
    if (now_ && now_->isHeldByAnother()) {
        expect(false, "holds the lock");
        isOver_ = true;
    }
    const HostSources host = HostSources::ofThisComputer();
    fact("name: " + host.hostName());
    fact("account: " + host.accountHome());
    if (!isOver_) {
        expect(now_->host.homeFolder() == home_.path(), "knows its home");
        expect(!now_->executable.empty(), "knows its executable");
        expect(now_->ledger.has_value(), "has a ledger");
    }
    if (!isOver_ && now_->ledger) {
        const auto outcome = now_->ledger->endLeftovers(std::chrono::seconds(10));
        expect(outcome.asked == 1 && outcome.ended == 1, "ends what was left behind");
    }
    checkLeftover();
    seen::waitFor(leftBehind_);
    missAStream();
}

void Journey::missAStream() {
    {
        const Quiet quiet;
        close(STDIN_FILENO);
    }
    const auto opened = openPath("/dev/null", O_RDONLY);
    expect(opened && opened.value().number() > STDERR_FILENO, "a file takes no stream's number");
    openMissingStandardStreams();
    const Quiet quiet;
    expect(fcntl(STDIN_FILENO, F_GETFD) >= 0, "all streams are there");
    openMissingStandardStreams();
}

// What could not be ended is for the next start to end, unless the ledger could not be read or
// written.
void Journey::checkLeftover() {
    if (!hasFailed())
        return;
    const auto noted = isOver_ || !now_->ledger ? std::vector<pid_t>{} : notedDaemons();
    const bool isNoted = std::find(noted.begin(), noted.end(), leftBehind_) != noted.end();
    // The first file that is opened like this tells the boot, without which no record means anything.
    const bool isBootKnown = faults_.front().call != Call::fopen || faults_.front().nth > 1;
    const bool mustBe =
        isBootKnown && mayBeHurt({Call::pidfdOpen, Call::pidfdSendSignal, Call::fopen,
                                  Call::readlink, Call::stat, Call::poll});
    if (mustBe && seen::isRunningChild(leftBehind_) && !isNoted)
        wrong("a daemon that was left behind is forgotten");
    const Quiet quiet;
    kill(leftBehind_, SIGTERM);
}

void Journey::load() {
    now_->load();
    const auto& runners = now_->store->runners();
    expect(runners.size() == 2 && runners[1]->id() == "b", "finds all runners");
    if (runners.empty() || !legacy()->config().legacy)
        wrong("no legacy runner");
}

void Journey::run() {
    now_->store->startAllRegistered();
    for (const auto& runner : now_->store->runners())
        settle(runner);
    fact(text(legacy()->status()));
    if (now_->store->runners().size() > 1 &&
        now_->store->runners()[1]->status() != RunnerStatus::notRegistered)
        wrong("the other runner is not unregistered");
    bringUp(legacy());
    endAbandoned();
}

// One that could not be killed goes on, and nobody waits for it.
void Journey::endAbandoned() const {
    if (!mayBeHurt({Call::kill}) || !failing::hasFired(0))
        return;
    while (seen::launches(support()).size() < 2)
        std::this_thread::yield();
    const auto pids = seen::launches(support());
    const pid_t abandoned = *std::min_element(pids.begin(), pids.end());
    {
        const Quiet quiet;
        kill(abandoned, SIGKILL);
    }
    seen::waitFor(abandoned);
}

void Journey::followLog() {
    const std::string path = legacy()->dataDir() + "/valdorn.log";
    const auto tailer = LogTailer::create(now_->queue, now_->files, path);
    const auto agrees = [&] { return tailer->lines().size() == seen::lines(path).size(); };
    tailer->start();
    expect(agrees(), "the log shows");
    now_->queue.advance(LogTailer::pollPeriod);
    expect(agrees(), "the log shows at the next look");
    now_->queue.advance(LogTailer::pollPeriod);
    if (!agrees())
        wrong("the log does not show");
    tailer->stop();
}

void Journey::die() {
    died_.push_back(seen::daemonIn(support()));
    {
        const Quiet quiet;
        kill(died_.back(), SIGUSR1);
    }
    if (!now_->queue.runUntil([this] { return now_->queue.armed() > 0; }))
        throw Stuck("no relaunch is due");
    if (seen::isChild(died_.back()))
        wrong("a zombie");
    fact(text(legacy()->status()));
    now_->queue.advance(std::chrono::seconds(5));
    settle(legacy());
    fact(text(legacy()->status()));
    if (legacy()->status() == RunnerStatus::stopped && now_->queue.armed() > 0)
        wrong("a failed launch is tried again");
    bringUp(legacy());
}

// An edit writes what the records were before it.
bool Journey::edited(const std::string& name) {
    std::vector<RunnerConfig> records;
    for (const auto& runner : now_->store->runners())
        records.push_back(runner->config());
    const std::string before = seen::content(support() + "/runners.json");
    const std::string after = *RunnerRecords::encode(records);
    RunnerConfig changed = legacy()->config();
    changed.name = name;
    legacy()->setConfig(changed);
    std::string content = seen::content(support() + "/runners.json");
    // Blanks that cover what was longer may stay behind it.
    content.resize(content.find_last_not_of(' ') + 1);
    if (content != before && !after.starts_with(content))
        wrong("runners.json holds something else");
    if (legacy()->config().name != name)
        wrong("the edit is lost");
    return content == after;
}

void Journey::edit() {
    expect(edited("one"), "the list is written");
    expect(edited("two"), "the list is written again");
    if (!edited("three") && !hasFailed())
        wrong("the list is not written after all");
}

void Journey::login() {
    // Where it was not known at the start, it is asked for once more.
    const std::string& known = now_->executable;
    AutostartRegistry items(now_->files, now_->host, known.empty() ? executablePath() : known);
    const auto refused = items.registerItem();
    expect(!refused, "is entered");
    if (refused && (refused->empty() || !seen::content(items.entryPath()).empty()))
        wrong("a refusal without a reason, or with a change");
    if (refused && items.registerItem())
        wrong("cannot be entered after all");
    expect(items.status() == LoginItemStatus::enabled, "is on");
    fact("moved: " + yesNo(items.refreshMovedExecutable()));
    std::string entry = seen::content(items.entryPath());
    {
        const Quiet quiet;
        std::ofstream(items.entryPath()) << (entry += "X-Own=1\n");
    }
    expect(!items.unregisterItem(), "is turned off");
    const std::string off = seen::content(items.entryPath());
    if (off != entry && off != entry + "Hidden=true\n")
        wrong("the entry is neither the old one nor the new one");
    {
        const Quiet quiet;
        std::ofstream(items.entryPath()) << "[Desktop Entry]\nExec=valdorn\n";
    }
    expect(!items.unregisterItem(), "is removed");
    if (items.unregisterItem() && !hasFailed())
        wrong("cannot be removed after all");
    expect(items.status() == LoginItemStatus::notEnabled, "is off");
}

// One try, until its outcome is known.
void Journey::tryToRegister() {
    now_->form->setToken("token");
    now_->form->doRegister(second_);
    // The task of a thread that could not be had waits for the next one.
    if (now_->background.threads() == 0)
        now_->background.run([] {});
    if (!now_->queue.runUntil([this] { return !now_->form->busy(); }))
        throw Stuck("the registration");
    if (now_->form->message().value_or("").empty())
        wrong("no outcome is told");
}

void Journey::registerRunner() {
    second_ = now_->store->add("second");
    RunnerConfig record = second_->config();
    record.instanceURL = "http://x.invalid";
    second_->setConfig(record);
    tryToRegister();
    expect(now_->form->ok(), "is registered");
    fact(now_->form->message().value_or(""));
    if (now_->form->ok() != second_->isRegistered() && (!hasFailed() || hasFailedBefore()))
        wrong("says what is not so");
    if (!now_->form->ok()) {
        tryToRegister();
        if (!now_->form->ok())
            wrong("cannot be registered after all");
    }
    settle(second_);
    bringUp(second_);
    if (!mayBeHurt() && !doesLedgerAgree())
        wrong("the ledger does not agree");
}

std::vector<pid_t> Journey::notedDaemons() const {
    const auto records = daemonRecordsIn(seen::content(now_->place.value().ledgerPath()));
    std::vector<pid_t> noted;
    for (const ProcessFacts& one : records.value_or(DaemonRecords{}).daemons)
        noted.push_back(one.pid);
    return noted;
}

// Whether all that run, and nobody else, are written down.
bool Journey::doesLedgerAgree() {
    std::vector<pid_t> noted;
    for (const pid_t pid : notedDaemons()) {
        if (pid != leftBehind_)
            noted.push_back(pid);
    }
    std::vector<pid_t> running;
    for (RunnerRef runner : {legacy(), second_})
        running.push_back(seen::daemonIn(runner->dataDir()));
    return std::is_permutation(noted.begin(), noted.end(), running.begin(), running.end());
}

void Journey::greetBus() {
    using namespace SessionBusSocket;
    const BusStandin bus(home_ / "bus");
    const State state = ask("unix:path=" + (home_ / "bus"), std::chrono::milliseconds(500));
    expect(state == State::open, "is let in");
}

// Those that could not be asked to end are ended here.
void Journey::awaitEndOfDaemons(RunnerRef runner) {
    for (const pid_t pid : seen::launches(runner->dataDir())) {
        if (mayBeHurt({Call::pidfdSendSignal}) && hasFailed() && seen::isChild(pid)) {
            const Quiet quiet;
            kill(pid, SIGTERM);
        }
        if (!now_->queue.runUntil([pid] { return !seen::isChild(pid); }))
            throw Stuck("a daemon does not end, or is not waited for");
    }
}

void Journey::stop() {
    for (RunnerRef runner : {legacy(), second_}) {
        runner->stop();
        now_->queue.runPosted();
        if (runner->status() != RunnerStatus::stopped || runner->startedAt())
            wrong("a runner that was stopped is not");
        awaitEndOfDaemons(runner);
        if (runner->status() != RunnerStatus::stopped)
            wrong("a runner that was stopped has come back");
    }
    // What tells of an end may just be coming.
    now_->queue.runPosted();
    if (now_->queue.armed() != 0)
        wrong("something is still armed");
}

void Journey::runAgain() {
    for (RunnerRef runner : {legacy(), second_})
        bringUp(runner);
    expect(!now_->ledger || doesLedgerAgree(), "the ledger agrees");
}

void Journey::remove() {
    const std::string folder = second_->dataDir();
    const auto pids = seen::launches(folder);
    now_->store->remove(second_);
    now_->queue.runPosted();
    fact(text(second_->status()));
    for (const pid_t pid : pids) {
        if (mayBeHurt({Call::pidfdSendSignal}) && hasFailed() && seen::isChild(pid)) {
            const Quiet quiet;
            kill(pid, SIGTERM);
        }
        if (!now_->queue.runUntil([pid] { return !seen::isChild(pid); }))
            throw Stuck("a removed daemon does not end");
    }
    removeBelowAFile();
    const Quiet quiet;
    expect(!std::filesystem::exists(folder + "/valdorn.log"), "its folder is gone");
    const auto& runners = now_->store->runners();
    if (std::find(runners.begin(), runners.end(), second_) != runners.end())
        wrong("the removed runner is still there");
}

// Nothing can stand there, so nothing is left to be removed.
void Journey::removeBelowAFile() {
    expect(!now_->files.removeTree(support() + "/runners.json/below"), "nothing is there");
}

// What standard error gets of a line.
void Journey::writeLine() {
    std::array<int, 2> ends{};
    int before = -1;
    {
        const Quiet quiet;
        before = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
    }
    now_->log.write("a line");
    const Quiet quiet;
    dup2(before, STDERR_FILENO);
    close(before);
    std::array<char, 64> buffer{};
    const ssize_t got = read(ends[0], buffer.data(), buffer.size());
    close(ends[0]);
    const std::string line(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    expect(line == "a line\n", "the line is written");
}

void Journey::say() {
    writeLine();
}

void Journey::quit() {
    const auto runner = legacy();
    now_->quit();
    now_->queue.runPosted();
    if (runner->status() != RunnerStatus::stopped)
        wrong("a runner that was stopped is not");
    awaitEndOfDaemons(runner);
    const auto noted = now_->ledger ? notedDaemons() : std::vector<pid_t>{};
    expect(std::count(noted.begin(), noted.end(), leftBehind_) ==
               static_cast<std::ptrdiff_t>(noted.size()),
           "the ledger is empty");
    runner->start();
    now_->queue.runPosted();
    if (runner->isRunning())
        wrong("a launch while quitting");
    second_.reset();
    now_.reset();
    if (seen::hasAnyChild())
        wrong("a child is left");
}

void Journey::startAndQuitInHaste() {
    try {
        now_ = std::make_unique<Instance>();
    } catch (const std::system_error&) {
        expect(false, "starts");
        isOver_ = true;
        return;
    }
    expect(!now_->isHeldByAnother(), "holds the lock");
    if (now_->ledger && now_->ledger->endLeftovers(std::chrono::seconds(1)).asked != 0)
        wrong("asks somebody who was not left behind");
    now_->load();
    bringUp(legacy());
    const pid_t daemon = seen::daemonIn(support());
    now_->quit();
    now_.reset();
    if (mayBeHurt({Call::pidfdSendSignal}) && hasFailed()) {
        const Quiet quiet;
        kill(daemon, SIGTERM);
    }
    // It had to say that it ends, and somebody took it.
    expect(!seen::isChild(daemon) || seen::waitFor(daemon) == 0,
           "what it says at its end is taken");
    // Whoever took it ends with it.
    seen::endAll({});
}

bool Journey::isUp(RunnerRef runner) const {
    const Quiet quiet;
    return runner->status() == RunnerStatus::connected && runner->isRunning();
}

void Journey::settle(RunnerRef runner) {
    if (!now_->queue.runUntil([&] { return runner->status() != RunnerStatus::starting; }))
        throw Stuck("a runner is starting for ever");
    const bool isConnected = runner->status() == RunnerStatus::connected;
    const Quiet quiet;
    if (isConnected != runner->isRunning())
        wrong("the status is " + text(runner->status()) + ", which is not so");
}

void Journey::bringUp(RunnerRef runner) {
    if (isUp(runner))
        return;
    runner->start();
    settle(runner);
    expect(isUp(runner), "comes up");
    if (isUp(runner))
        return;
    if (now_->queue.armed() > 0)
        wrong("a failed launch is tried again");
    runner->start();
    settle(runner);
    if (!isUp(runner))
        wrong("does not come up after all");
}

std::vector<pid_t> Journey::allDaemons() const {
    auto all = seen::launches(support());
    all.push_back(leftBehind_);
    const Quiet quiet;
    for (const auto& folder : std::filesystem::directory_iterator(support() + "/runners")) {
        const auto some = seen::launches(folder.path());
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

void Journey::checkLog() {
    KeptLines kept(seen::lines(support() + "/valdorn.log"));
    const auto pids = seen::launches(support());
    for (const pid_t pid : pids)
        kept.expect(pid, std::count(died_.begin(), died_.end(), pid) > 0, pid == pids.back());
    const bool isLogHurt =
        mayBeHurt({Call::open, Call::fstat, Call::writeFile, Call::mkdir, Call::epollControl});
    // Half a line takes the next one with it, which may be of the next launch.
    const bool isLineCut = std::any_of(faults_.begin(), faults_.end(), [](const auto& fault) {
        return fault.failure.manner == failing::Manner::cut;
    });
    if (kept.hurtLaunches() > (isLineCut ? 2 : isLogHurt ? 1 : 0))
        wrong("lines of " + std::to_string(kept.hurtLaunches()) + " launches are lost");
    if (kept.strangeLines() > (mayBeHurt({Call::writeFile}) ? 1 : 0))
        wrong("the log holds " + std::to_string(kept.strangeLines()) + " strange lines");
}

// No temporary file stays, unless it could not be removed.
void Journey::checkNames() {
    if (mayBeHurt({Call::unlink}))
        return;
    for (const std::string& name : seen::namesBelow(home_.path())) {
        if (name.starts_with(".valdorn-"))
            wrong(name + " is left");
    }
}

}  // namespace valdorn
