#include "ui/status/StatusStage.h"

#include <QApplication>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>

#include <gtest/gtest.h>

#include "ui/status/RunnerStatusView.h"
#include "update/UpdateChecker.h"

namespace valdorn {

using namespace std::chrono_literals;

StatusStage::StatusStage() = default;

StatusStage::~StatusStage() = default;

void StatusStage::makeFleet(const std::vector<std::string>& names) {
    std::vector<RunnerConfig> records;
    for (const std::string& name : names) {
        records.push_back(FakeWorld::record("r" + std::to_string(records.size())));
        records.back().name = name;
        world.markRegistered(records.back().id);
    }
    world.saveFleet(records);
    store = RunnersStore::create(world.services());
}

void StatusStage::emptyFleet() {
    makeFleet({"last"});
    store->remove(store->runners().front());
    settle();
}

void StatusStage::show(int width, int height) {
    window = std::make_unique<QWidget>();
    view = new RunnerStatusView(store, world.queue,
                                std::make_unique<UpdateChecker>(http, "https://release.test"));
    auto* const layout = new QVBoxLayout(window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view);
    window->resize(width, height);
    window->show();
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    settle();
}

std::size_t StatusStage::start(std::size_t index) {
    const std::size_t child = world.launcher.childCount();
    runner(index).start();
    settle();
    return child;
}

void StatusStage::print(std::size_t child, const std::string& text) {
    world.launcher.child(child).print(text);
    settle();
}

void StatusStage::end(std::size_t child) {
    world.launcher.child(child).end({});
    settle();
}

std::string StatusStage::declared(const std::string& version) {
    return "msg=\"runner: mini, with version: " + version +
           ", with labels: [macos], declare successfully\"\n";
}

std::string StatusStage::building(const std::string& repository, const std::string& job) {
    return "msg=\"task 3 repo is " + repository + " http://gitea.test\"\n" +
           "msg=\"Running job with maxParallel=1\"\n[" + job + "] start\n";
}

void StatusStage::releaseIs(const std::string& tag) {
    http.answer(http.queries.size() - 1, "{\"tag_name\":\"" + tag + "\"}");
    settle();
}

void StatusStage::settle() {
    world.queue.runPosted();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
}

void StatusStage::makeOneRunner() {
    makeFleet({"mac-mini"});
    print(start(0), declared("v1.0.8"));
    pass(245s);
}

void StatusStage::makeThreeRunners() {
    makeFleet({"mac-mini",
               "a studio runner with a name that nobody would give to a runner but does", "spare"});
    world.files.files.erase(FakeWorld::dataFolder("r2") + "/.runner");
    print(start(0), declared("v1.0.8"));
    const std::size_t builder = start(1);
    print(builder, declared("v1.0.7"));
    print(builder, building("acme/site-with-a-rather-long-name",
                            "Push and pull requests/build-test-publish-arm64"));
    pass(3 * 3600s + 4 * 60s + 5s);
    start(2);
}

void StatusStage::makeTwelveRunners() {
    std::vector<std::string> names;
    for (int index = 1; index <= 12; ++index)
        names.push_back("runner-" + std::to_string(index));
    makeFleet(names);
    for (std::size_t index = 0; index < 8; ++index)
        start(index);
    print(0, declared("v1.0.8"));
    print(1, "dial tcp: connect: no route to host\n");
    print(2, declared("v1.0.8"));
    print(2, building("acme/site", "ci/test"));
    pass(62s);
}

}  // namespace valdorn
