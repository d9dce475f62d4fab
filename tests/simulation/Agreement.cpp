#include "simulation/Agreement.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <type_traits>

namespace valdorn::simulation {

namespace {

// -- how people read it

std::string text(const std::string& value) {
    return shown(value);
}

template <typename Number>
requires std::is_arithmetic_v<Number> std::string text(Number value) {
    return std::to_string(value);
}

std::string text(RunnerStatus status) {
    return std::string(rawValue(status));
}

std::string text(const WindowView& window) {
    return "window " + text(static_cast<int>(window.kind)) + " " + text(window.title) + " " +
           text(window.width) + " x " + text(window.height) +
           (window.isResizable ? " resizable" : "");
}

template <typename Value>
std::string text(const std::optional<Value>& value) {
    return value ? text(*value) : "nothing";
}

std::string text(const RunnerConfig& config) {
    return config.id + "|" + config.name + "|" + config.instanceURL + "|" + config.labels + "|" +
           config.extraPath + (config.legacy ? "|legacy" : "");
}

std::string text(const RunnerView& view) {
    return "runner " + text(view.number) + " " + text(view.status) + ", build " + text(view.build) +
           ", job " + text(view.job) + ", version " + text(view.version) + ", since " +
           text(view.startedAt) + ", record " + text(view.config);
}

std::string text(const MenuLine& line) {
    return shown(line.title) + (line.isHidden ? " hidden" : "") +
           (line.isEnabled ? "" : " disabled") + (line.isSeparator ? " separator" : "") + " " +
           std::string(1, line.shortcut == 0 ? '-' : line.shortcut);
}

std::string text(const IconView& icon) {
    return text(icon.symbol) + " colour " + text(static_cast<int>(icon.color)) +
           (icon.isSpinning ? " spinning" : "") + " length " + text(icon.length);
}

template <typename Item>
std::string text(const std::vector<Item>& items);

std::string text(const ListView& view) {
    return "list of runners " + text(view.runners) +
           (view.coming ? ", coming " + text(*view.coming) : "");
}

std::string text(const SelectionView& view) {
    return "selection " + text(view.id);
}

std::string text(const FormView& view) {
    return "form " + text(view.number) + " token " + text(view.token) +
           (view.isBusy ? " busy" : "") + (view.isOk ? " ok" : "") + " message " +
           text(view.message);
}

std::string text(const LogView& view) {
    return "log of " + text(view.count) + " lines, the last " + text(view.last);
}

std::string text(const ReleaseView& view) {
    return "release " + text(view.latest);
}

std::string text(const Announcement& announcement) {
    return std::visit([](const auto& view) { return text(view); }, announcement);
}

std::string text(const LaunchRecord& launch) {
    return text(launch.time) + " ms: " + launch.executable + " " + text(launch.arguments) + " in " +
           launch.folder + " with " + text(launch.environment);
}

std::string text(const ToolCall& call) {
    return call.executable + " " + text(call.arguments) + " in " + call.folder + " with " +
           text(call.environment);
}

template <typename Value>
std::string text(const std::map<std::string, Value>& values) {
    std::string all;
    for (const auto& [key, value] : values)
        all += (all.empty() ? "" : ", ") + key + "=" + text(value);
    return "{" + all + "}";
}

template <typename Item>
std::string text(const std::vector<Item>& items) {
    std::string all;
    for (const Item& item : items)
        all += (all.empty() ? "" : "\n      ") + text(item);
    return "[" + all + "]";
}

// -- comparing

class Comparison {
public:
    explicit Comparison(Stage& stage)
        : stage_(stage), program_(stage.program()), process_(stage.process()) {}

    std::vector<std::string> result() {
        compareRunners();
        compareAnnouncements();
        compareLaunches();
        compareChildren();
        compareFiles();
        compareMenu();
        compareWindows();
        compareDefaults();
        compareRegistration();
        compareOutside();
        compareLog();
        if (stage_.isSettled())
            compareIdleness();
        found_.insert(found_.end(), stage_.faults.begin(), stage_.faults.end());
        return found_;
    }

private:
    template <typename Value>
    void compare(const char* what, const Value& real, const Value& expected) {
        if (!(real == expected))
            found_.push_back(std::string(what) + " is\n      " + text(real) +
                             "\n    instead of\n      " + text(expected));
    }

    void require(bool holds, const char* what) {
        if (!holds)
            found_.emplace_back(what);
    }

    // The fields of every runner that is alive, and that the others are gone.
    void compareRunners() {
        const auto& real = program_.everMade();
        const auto& expected = stage_.fleet().everMade();
        compare("the number of runners made", real.size(), expected.size());
        for (std::size_t number = 0; number < std::min(real.size(), expected.size()); ++number) {
            const auto one = real[number].lock();
            const auto other = expected[number].lock();
            if (one && other)
                compareRunner(*one, *other);
            else if (one)
                found_.push_back("runner " + text(number) + " is alive still");
            else if (other)
                found_.push_back("runner " + text(number) + " is gone");
        }
        if (real.size() == expected.size())
            compareList();
    }

    void compareRunner(const RunnerManager& real, const ModelRunner& expected) {
        const RunnerView& view = expected.view();
        const bool isSame = real.status() == view.status && real.currentBuild() == view.build &&
                            real.currentJob() == view.job && real.runnerVersion() == view.version &&
                            real.startedAt().has_value() == view.startedAt.has_value() &&
                            (!view.startedAt || millisOf(*real.startedAt()) == *view.startedAt) &&
                            real.config() == view.config;
        if (!isSame)
            compare("a runner", viewOf(real, view.number), view);
        compare("whether a runner is meant to run", real.keepRunning(), expected.keepRunning());
        compare("whether a runner's child runs", real.isRunning(), expected.isRunning());
        compare("whether a runner is registered", real.isRegistered(), expected.isRegistered());
    }

    void compareList() {
        const auto& real = program_.store->runners();
        const auto& expected = stage_.fleet().runners();
        compare("the length of the list", real.size(), expected.size());
        for (std::size_t index = 0; index < std::min(real.size(), expected.size()); ++index)
            require(real[index] == program_.everMade()[expected[index]->view().number].lock(),
                    "the list has another order");
        compare("the fleet's status", program_.store->aggregateStatus(),
                stage_.fleet().aggregate());
        compare("the selected id", program_.selection->selectedID(), process_.selection->id());
        if (!real.empty() && real.size() == expected.size())
            require(program_.selection->selected() ==
                        program_.everMade()[process_.selection->selected()->view().number].lock(),
                    "another runner is selected");
    }

    void compareAnnouncements() {
        compare("what was announced", program_.announcements, process_.machine.announcements);
        program_.announcements.clear();
        process_.machine.announcements.clear();
    }

    void compareLaunches() {
        TimedLauncher& launcher = program_.launcher;
        if (launcher.launches.empty() && process_.machine.launches.empty())
            return;
        std::vector<LaunchRecord> real;
        for (std::size_t index = 0; index < launcher.launches.size(); ++index) {
            const ChildCommand& command = launcher.launches[index];
            real.push_back({launcher.times[index], command.executable, command.arguments,
                            command.workingFolder, command.environment});
            std::sort(real.back().environment.begin(), real.back().environment.end());
        }
        compare("what was launched", real, process_.machine.launches);
        launcher.launches.clear();
        launcher.times.clear();
        process_.machine.launches.clear();
    }

    void compareChildren() {
        const auto& expected = process_.machine.children;
        TimedLauncher& launcher = program_.launcher;
        compare("the number of children", launcher.childCount(), expected.size());
        for (std::size_t index = 0; index < std::min(launcher.childCount(), expected.size());
             ++index)
            compare("how often a child was asked to end", launcher.child(index).terminateRequests(),
                    expected[index]->terminateRequests);
    }

    void compareFiles() {
        const auto& real = stage_.machine.files.files;
        const auto& expected = stage_.model.disk.files;
        auto other = expected.begin();
        for (const auto& [path, bytes] : real) {
            if (other == expected.end() || other->first != path)
                return reportFileNames();
            if (*other->second != bytes)
                found_.push_back(
                    "file " + path + " is\n      " + text(tailFrom(bytes, *other->second)) +
                    "\n    instead of\n      " + text(tailFrom(*other->second, bytes)));
            ++other;
        }
        if (other != expected.end())
            return reportFileNames();
        compareFolders();
        compare("how often the list was written", stage_.machine.disk.listWrites(),
                stage_.model.disk.listWrites());
    }

    // Also those that hold nothing.
    void compareFolders() {
        const std::set<std::string>& real = stage_.machine.files.folders;
        const std::set<std::string>& expected = stage_.model.disk.folders();
        if (real != expected)
            compare("the folders", std::vector(real.begin(), real.end()),
                    std::vector(expected.begin(), expected.end()));
    }

    // From a little before where the two part.
    static std::string tailFrom(const std::string& one, const std::string& other) {
        const auto parted = std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first;
        const auto at = static_cast<std::size_t>(parted - one.begin());
        return one.substr(at < 40 ? 0 : at - 40);
    }

    void reportFileNames() {
        std::vector<std::string> real;
        std::vector<std::string> expected;
        for (const auto& file : stage_.machine.files.files)
            real.push_back(file.first);
        for (const auto& file : stage_.model.disk.files)
            expected.push_back(file.first);
        compare("the files", real, expected);
    }

    void compareMenu() {
        const auto& items = program_.statusItem.menu->items();
        const auto& expected = process_.shell.menu;
        const auto isSame = [](const MenuItem& item, const MenuLine& line) {
            return item.title == line.title && item.hidden == line.isHidden &&
                   item.enabled == line.isEnabled && item.separator == line.isSeparator &&
                   item.shortcut == line.shortcut;
        };
        if (!std::equal(items.begin(), items.end(), expected.begin(), expected.end(), isSame)) {
            std::vector<MenuLine> real;
            for (const MenuItem& item : items)
                real.push_back(
                    {item.title, item.hidden, item.enabled, item.separator, item.shortcut});
            compare("the menu", real, expected);
        }
        const RecordingStatusItem& item = program_.statusItem;
        IconView icon{std::nullopt, SystemColor::secondary, item.spinning, item.length};
        if (item.icon) {
            icon.symbol = item.icon->symbol;
            icon.color = item.icon->color;
            require(item.icon->accessibilityDescription == "Valdorn", "the icon says another name");
        }
        compare("the launches before the item was shown", program_.launchesWhenShown,
                std::vector<std::size_t>{0});
        compare("the icon", icon, process_.shell.icon);
    }

    void compareWindows() {
        std::vector<WindowView> real;
        for (const WindowDescription& window : program_.windows.shown)
            real.push_back({window.kind, window.title, window.contentWidthPoints,
                            window.contentHeightPoints, window.resizable});
        compare("the windows shown", real, process_.shell.shown);
        program_.windows.shown.clear();
        process_.shell.shown.clear();
        require(program_.windows.closed.empty(), "the program has closed a window");
        require(program_.windows.open == process_.shell.open, "other windows are open");
        compare("how often the loop was ended", program_.terminations, process_.shell.terminations);
    }

    void compareDefaults() {
        const MemoryUserDefaults& real = stage_.machine.defaults;
        const ModelDefaults& expected = stage_.model.defaults;
        compare("the settings' texts", real.strings, expected.texts);
        compare("the settings' fallbacks", real.fallbacks, expected.fallbacks);
        compare("whether a runner has ever connected", real.boolean("hasConnected"),
                expected.hasConnected);
        compare("how many truths the settings hold", real.booleans.size(),
                std::size_t{expected.hasConnected ? 1U : 0U});
    }

    void compareRegistration() {
        std::vector<ToolCall> expected;
        for (std::size_t index = 0; index < formCount; ++index) {
            ModelForm& form = *process_.forms[index];
            compare("a form", viewOf(*program_.forms[index], index), form.view());
            expected.insert(expected.end(), form.calls.begin(), form.calls.end());
            form.calls.clear();
        }
        std::vector<ToolCall> real;
        for (const ChildCommand& command : program_.launcher.runs)
            real.push_back({command.executable, command.arguments, command.workingFolder,
                            command.environment});
        program_.launcher.runs.clear();
        compare("how the tool was called", real, expected);
        compare("the runs of the tool that wait", program_.background.count(),
                process_.background.size());
    }

    void compareOutside() {
        compare("the latest release", program_.updates->latest(), process_.updates.latest);
        compare("the requests made", program_.http.queries.size(), process_.updates.requests());
        for (const HttpQuery& query : program_.http.queries)
            require(query.url == "https://gitea.test/api/v1/repos/gitea/runner/releases/latest" &&
                        query.timeout == std::chrono::seconds(10),
                    "another request was made");
        compare("what the search for a tray told", program_.trayTold, process_.search.told);
        compare("what the launch gate let through", program_.gateDone, process_.gate.done);
        const MemoryLoginItemRegistry& registry = stage_.machine.loginItems;
        const ModelLoginItem& item = stage_.model.loginItem;
        compare("launch at login", registry.status() == LoginItemStatus::enabled, item.isEnabled);
        compare("registrations", registry.registrations, item.registrations);
        compare("unregistrations", registry.unregistrations, item.unregistrations);
        compare("the system log", stage_.machine.systemLog.lines, item.log);
    }

    static bool isSame(const LogLines& real, const std::vector<std::string>& expected) {
        return std::equal(
            real.begin(), real.end(), expected.begin(), expected.end(),
            [](const LogLine& line, const std::string& other) { return *line == other; });
    }

    void compareLog() {
        if (!process_.log)
            return;
        compareLines("the log's lines", program_.tailer->lines(), process_.log->lines());
        if (!stage_.isSettled())
            return;
        compareLines("the lines that pass", program_.viewer->filtered(), process_.log->filtered());
        compare("how often the log was scrolled", program_.scrolls, process_.log->scrolls());
    }

    void compareLines(const char* what, const LogLines& real,
                      const std::vector<std::string>& expected) {
        if (isSame(real, expected))
            return;
        std::vector<std::string> texts;
        for (const LogLine& line : real)
            texts.emplace_back(*line);
        compare(what, texts, expected);
    }

    // Nothing is left to do but what the rules have armed, and nothing is held that nobody needs.
    void compareIdleness() {
        const VirtualMainQueue& queue = program_.queue;
        compare("the number of armed tasks", queue.armed(), process_.machine.loop.armed());
        compare("the tasks that wait", queue.pending() - queue.armed(), std::size_t{0});
        for (std::size_t index = 0; index < program_.launcher.childCount(); ++index) {
            ScriptedChild& child = program_.launcher.child(index);
            require(child.pendingBytes() == 0 && child.heldBackBytes() == 0,
                    "output is kept for nobody");
        }
        const auto& children = process_.machine.children;
        const auto logs = std::count_if(children.begin(), children.end(), [](const auto& child) {
            return child->isRunning && child->log;
        });
        compare("the number of open files", stage_.machine.files.openHandles(),
                static_cast<int>(logs));
    }

    Stage& stage_;
    Program& program_;
    ModelProcess& process_;
    std::vector<std::string> found_;
};

}  // namespace

std::vector<std::string> disagreements(Stage& stage) {
    return Comparison(stage).result();
}

}  // namespace valdorn::simulation
