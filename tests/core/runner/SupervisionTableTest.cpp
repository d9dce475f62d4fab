#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/RunnerManager.h"
#include "support/FakeWorld.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

constexpr std::array statuses = {RunnerStatus::notRegistered, RunnerStatus::stopped,
                                 RunnerStatus::starting,      RunnerStatus::noNetwork,
                                 RunnerStatus::connected,     RunnerStatus::building};
constexpr std::array<const char*, statuses.size()> statusNames = {
    "notRegistered", "stopped", "starting", "noNetwork", "connected", "building"};
constexpr char kept[] = "–";

std::string nameOf(RunnerStatus status) {
    const auto place = std::find(statuses.begin(), statuses.end(), status) - statuses.begin();
    return statusNames.at(static_cast<std::size_t>(place));
}

// One cell of the document's table.
struct Cell {
    std::string event;
    RunnerStatus from;
    std::string to;  // a status, or `kept`

    friend std::ostream& operator<<(std::ostream& stream, const Cell& cell) {
        std::string name = cell.event;
        std::erase(name, '`');
        return stream << name << " while " << nameOf(cell.from);
    }
};

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// The cells of a line like "| a | b |".
std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    for (std::size_t at = 1; at < line.size();) {
        const std::size_t end = std::min(line.find('|', at), line.size());
        cells.push_back(trimmed(line.substr(at, end - at)));
        at = end + 1;
    }
    return cells;
}

std::vector<std::vector<std::string>> tableOf(const char* document) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream file(document);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("|") && !line.starts_with("|-"))
            rows.push_back(cellsOf(line));
    }
    return rows;
}

std::vector<Cell> cellsOfTheDocument() {
    std::vector<Cell> cells;
    auto rows = tableOf(VALDORN_SUPERVISION_TABLE);
    for (std::size_t row = 1; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < statuses.size(); ++column)
            cells.push_back({rows[row].at(0), statuses.at(column), rows[row].at(column + 1)});
    }
    return cells;
}

class SupervisionStage : public testing::Test {
protected:
    SupervisionStage() { world.markRegistered("abc"); }

    ScriptedChild& child() { return world.launcher.child(world.launcher.childCount() - 1); }

    void start() {
        runner->start();
        world.queue.runPosted();
    }

    void stop() {
        runner->stop();
        world.queue.runPosted();
    }

    void prints(const char* line) {
        child().print(std::string(line) + "\n");
        world.queue.runPosted();
    }

    void childEnds() {
        child().end({ChildExit::Kind::exited, 1});
        world.queue.runPosted();
    }

    void takeMarkerAway() { world.files.files.erase(FakeWorld::dataFolder("abc") + "/.runner"); }

    void failNextLaunch() {
        world.launcher.failNextLaunch = LaunchError{LaunchError::Step::execute, ENOENT, "x"};
    }

    // Starting, with a child that is wanted; or not, after a stop that came during the wait for a
    // relaunch.
    void launch(bool wanted) {
        start();
        if (wanted)
            return;
        childEnds();
        world.queue.advance(2s);
        stop();
        world.queue.advance(3s);
    }

    void stopShowing(bool wanted) {
        if (!wanted)
            return stop();
        failNextLaunch();  // of a second child: the first one goes on
        start();
    }

    // A runner of that status, with a child that runs unless the runner was stopped.
    void bringTo(RunnerStatus status, bool wanted) {
        launch(wanted);
        switch (status) {
            case RunnerStatus::notRegistered:
                takeMarkerAway();
                start();
                world.markRegistered("abc");
                break;
            case RunnerStatus::stopped:
                stopShowing(wanted);
                break;
            case RunnerStatus::starting:
                break;
            case RunnerStatus::noNetwork:
                prints("connect: no route to host");
                break;
            case RunnerStatus::connected:
                prints("declare successfully");
                break;
            case RunnerStatus::building:
                prints("Running job with maxParallel=1");
                break;
        }
        ASSERT_EQ(nameOf(runner->status()), nameOf(status));
        ASSERT_EQ(runner->keepRunning(), wanted);
    }

    FakeWorld world;
    std::shared_ptr<RunnerManager> runner =
        RunnerManager::create(FakeWorld::record("abc"), world.services());

    // By the words of the document.
    const std::map<std::string, std::function<void()>> events = {
        {"`start()`, no `.runner` there",
         [this] {
             takeMarkerAway();
             start();
         }},
        {"`start()`, `.runner` there", [this] { start(); }},
        {"`start()`, the launch fails",
         [this] {
             failNextLaunch();
             start();
         }},
        {"`restart()` of a wanted child",
         [this] {
             runner->restart();
             world.queue.runPosted();
             EXPECT_EQ(child().terminateRequests(), 1);
         }},
        {"`stop()`", [this] { stop(); }},
        {"line: declared", [this] { prints("declare successfully"); }},
        {"line: job started", [this] { prints("Running job with maxParallel=1"); }},
        {"line: job finished", [this] { prints("Worker 0 finished (1 tasks executed)"); }},
        {"the revert is due",
         [this] {
             prints("Worker 0 finished (1 tasks executed)");
             world.queue.advance(4s);
         }},
        {"line: no route, or permission denied", [this] { prints("socket: permission denied"); }},
        {"line: repository of a task", [this] { prints("task 7 repo is acme/site u u"); }},
        {"any other line", [this] { prints("[CI/build]   | hello"); }},
        {"the child ends, wanted", [this] { childEnds(); }},
        {"the child ends, not wanted", [this] { childEnds(); }},
        {"the relaunch is due",
         [this] {
             childEnds();
             world.queue.advance(5s);
         }},
        {"the relaunch fails",
         [this] {
             childEnds();
             failNextLaunch();
             world.queue.advance(5s);
         }},
    };
};

class SupervisionTable : public SupervisionStage, public testing::WithParamInterface<Cell> {};

TEST_P(SupervisionTable, SaysWhatHappens) {
    const Cell& cell = GetParam();
    ASSERT_TRUE(events.contains(cell.event)) << "nobody knows how to bring it about";
    bringTo(cell.from, !cell.event.ends_with("not wanted"));
    events.at(cell.event)();
    EXPECT_EQ(nameOf(runner->status()), cell.to == kept ? nameOf(cell.from) : cell.to);
}

INSTANTIATE_TEST_SUITE_P(OfTheDocument, SupervisionTable, testing::ValuesIn(cellsOfTheDocument()));

TEST_F(SupervisionStage, BringsAboutEveryEventOfTheTable) {
    const auto rows = tableOf(VALDORN_SUPERVISION_TABLE);
    ASSERT_EQ(rows.size(), events.size() + 1);
    for (std::size_t column = 0; column < statuses.size(); ++column)
        EXPECT_EQ(rows.front().at(column + 1), statusNames.at(column));
    for (const auto& [event, bringAbout] : events) {
        EXPECT_EQ(std::count_if(rows.begin(), rows.end(),
                                [&event = event](const auto& row) { return row.at(0) == event; }),
                  1)
            << event;
    }
}

}  // namespace
}  // namespace valdorn
