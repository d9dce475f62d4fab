#include "failures/Journey.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "failures/Seen.h"
#include "fleet/RunnerRecords.h"
#include "platform/posix/SpawnProcess.h"
#include "platform/posix/StandardStreams.h"

namespace valdorn {

namespace {

using failing::Call;

// What hangs where nothing can be thrown ends the test by a signal: long after patience, which says
// more, has come to its end.
constexpr unsigned alarmSeconds = 120;

constexpr rlim_t fewDescriptors = 200;

constexpr char supportFolder[] = "Library/Application Support/Valdorn";

}  // namespace

Journey::Journey(std::vector<failing::Fault> faults) : faults_(std::move(faults)) {
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
    alarm(alarmSeconds);
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
    if (const std::size_t left = seen::endAll(); left > 0)
        wrong(std::to_string(left) + " children are left");
    if (seen::descriptors() != descriptors)
        wrong("descriptors: " + std::to_string(seen::descriptors()) + " instead of " +
              std::to_string(descriptors));
    // One that has been joined may still be on its way out.
    if (!seen::soon([threads] { return seen::threads() == threads; }))
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
    chapter("system log", &Journey::writeLine);
    chapter("quit", &Journey::quit);
    chapter("start and quit in haste", &Journey::startAndQuitInHaste);
}

void Journey::chapter(const char* name, void (Journey::*part)()) {
    if (isOver_)
        return;
    hadFailed_ = hasFailed();
    story_.chapters.push_back({name, {}, false});
    (this->*part)();
    story_.chapters.back().hasFailed = hasFailed();
}

void Journey::fact(const std::string& text) {
    story_.chapters.back().facts.push_back(text);
}

void Journey::fact(const std::string& what, bool isSo) {
    fact(what + (isSo ? ": yes" : ": no"));
}

void Journey::wrong(const std::string& text) {
    const std::string where = story_.chapters.empty() ? "" : story_.chapters.back().name + ": ";
    story_.wrongs.push_back(where + text);
}

void Journey::expect(bool isAsPlanned, const std::string& what) {
    fact(what, isAsPlanned);
    if (!isAsPlanned && (!hasFailed() || hadFailed_))
        wrong(what + " is not so");
}

bool Journey::hasFailed() const {
    bool has = false;
    for (std::size_t at = 0; at < faults_.size(); ++at)
        has = has || failing::hasFired(at);
    return has;
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

}  // namespace valdorn
