// Supervises a command as a runner's child until it has ended and all it printed has been applied:
// stream HOME [--hold MILLISECONDS] [--keys] -- COMMAND ARGUMENT...
//
// HOME is a folder of the caller's, which becomes the home folder of all that is made. Prints how
// many bytes the child's output had; how many lines were kept in the log; how many versions, jobs,
// builds and states were announced and how many finished jobs were noted; by how many KiB the
// resident memory has been above that of the idle process at its highest. --hold stops the main
// thread once, for so long. --keys presses a key every few milliseconds and prints in addition how
// many were answered and after how many microseconds: each of them.
#include <QApplication>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/ChildLauncher.h"
#include "platform/Services.h"
#include "platform/posix/InstalledResources.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/QtMainQueue.h"
#include "runner/RunnerManager.h"
#include "support/Keyboard.h"
#include "support/ResidentPeak.h"

namespace valdorn {
namespace {

using std::chrono::milliseconds;

struct Order {
    std::string home;
    milliseconds hold{0};
    bool keys = false;
    std::vector<std::string> command;
};

std::optional<Order> orderOf(const std::vector<std::string>& arguments) {
    Order order;
    if (arguments.size() < 2)
        return std::nullopt;
    order.home = arguments[1];
    for (std::size_t at = 2; at < arguments.size(); ++at) {
        if (arguments[at] == "--keys") {
            order.keys = true;
        } else if (arguments[at] == "--hold" && at + 1 < arguments.size()) {
            order.hold = milliseconds(std::atol(arguments[++at].c_str()));
        } else if (arguments[at] == "--") {
            order.command.assign(arguments.begin() + static_cast<long>(at) + 1, arguments.end());
            return order;
        }
    }
    return std::nullopt;
}

// Tells when a finished job is noted, and when a runner waits to be launched again.
class ObservedQueue : public MainQueue {
public:
    int finishedJobs = 0;
    std::function<void()> onEnd;

    void post(Task task) override { queue_.post(std::move(task)); }
    ScheduledTask after(milliseconds delay, Task task) override {
        if (delay == milliseconds(4000))
            ++finishedJobs;
        else if (delay == milliseconds(5000))
            queue_.post([this] { queue_.post(onEnd); });  // behind what the last lines have posted
        return queue_.after(delay, std::move(task));
    }
    ScheduledTask every(milliseconds period, Task task) override {
        return queue_.every(period, std::move(task));
    }
    TimePoint now() const override { return queue_.now(); }

private:
    QtMainQueue queue_;
};

// Counts what the child printed, before it is handed on.
class CountingLauncher : public ChildLauncher {
public:
    std::atomic<std::size_t> bytes = 0;

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand& command,
                                                              ChildHandlers handlers) override {
        auto counted = [this, next = std::move(handlers.onOutput)](std::string_view chunk,
                                                                   OutputCredit credit) {
            bytes += chunk.size();
            next(chunk, std::move(credit));
        };
        return launcher_.launch(command, {std::move(counted), std::move(handlers.onExit)});
    }
    Result<ChildExit, LaunchError> run(const ChildCommand& command,
                                       const std::function<void(std::string_view)>& out) override {
        return launcher_.run(command, out);
    }
    void shutDown() override { launcher_.shutDown(); }

private:
    PosixChildLauncher launcher_;
};

// How often each published field of a runner has changed. A change is announced before it is
// stored, so each is seen at the next one.
class Changes {
public:
    int versions = 0, jobs = 0, builds = 0, states = 0;

    explicit Changes(RunnerManager& runner)
        : runner_(runner), subscription_(runner.onWillChange([this] { look(); })) {}

    void look() {
        versions += replaced(version_, runner_.runnerVersion());
        jobs += replaced(job_, runner_.currentJob());
        builds += replaced(build_, runner_.currentBuild());
        states += replaced(state_, runner_.status());
    }

private:
    template <typename Value>
    static int replaced(Value& seen, const Value& now) {
        const bool differs = seen != now;
        if (differs)
            seen = now;
        return differs ? 1 : 0;
    }

    RunnerManager& runner_;
    std::optional<std::string> version_, job_, build_;
    RunnerStatus state_ = RunnerStatus::stopped;
    Subscription subscription_;
};

std::string quoted(const std::string& argument) {
    std::string text = "'";
    for (const char c : argument)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

// An act_runner that is the command.
void install(const Order& order) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(order.home) / "actrunner";
    fs::create_directories(folder);
    std::ofstream script(folder / "act_runner");
    script << "#!/bin/sh\nexec";
    for (const std::string& argument : order.command)
        script << ' ' << quoted(argument);
    script << '\n';
    script.close();
    fs::permissions(folder / "act_runner", fs::perms::owner_all);
}

long linesIn(const std::string& path) {
    std::ifstream file(path);
    std::vector<char> block(1 << 16);
    long lines = 0;
    while (file.read(block.data(), static_cast<long>(block.size())) || file.gcount() > 0)
        lines += std::count(block.begin(), block.begin() + file.gcount(), '\n');
    return lines;
}

int run(const Order& order) {
    install(order);
    ObservedQueue queue;
    CountingLauncher launcher;
    PosixFileSystem files;
    PosixHostInfo host;
    ThreadBackgroundQueue background;
    IniUserDefaults defaults(order.home + "/valdorn.ini");
    InstalledResources resources(order.home + "/valdorn");
    const Services services{queue, background, launcher, files, defaults, resources, host};
    const auto runner = RunnerManager::create({"bench", "", "", "", "", false}, services);
    std::filesystem::create_directories(runner->dataDir());
    std::ofstream(runner->dataDir() + "/.runner");

    Changes changes(*runner);
    std::optional<Keyboard> keyboard;
    if (order.keys)
        keyboard.emplace();
    queue.onEnd = [] { QCoreApplication::quit(); };
    const ResidentPeak peak;
    runner->start();
    if (order.hold.count() > 0)
        queue.after(milliseconds(100), [&] { std::this_thread::sleep_for(order.hold); }).detach();
    QApplication::exec();

    const long grown = peak.grownKiB();
    changes.look();
    std::printf("%zu %ld %d %d %d %d %d %ld", launcher.bytes.load(),
                linesIn(runner->dataDir() + "/valdorn.log"), changes.versions, changes.jobs,
                changes.builds, changes.states, queue.finishedJobs, grown);
    if (keyboard) {
        const auto answers = keyboard->stop();
        std::printf(" %zu", answers.size());
        for (const auto& answer : answers)
            std::printf(" %lld", static_cast<long long>(answer.count()));
    }
    std::printf("\n");
    return 0;
}

}  // namespace
}  // namespace valdorn

int main(int count, char** arguments) {
    const auto order = valdorn::orderOf({arguments, arguments + count});
    if (!order)
        return 2;
    setenv("HOME", order->home.c_str(), 1);
    QApplication application(count, arguments);
    return valdorn::run(*order);
}
