#include "ui/onboarding/OnboardingStage.h"

#include <QCoreApplication>
#include <QTest>

#include <gtest/gtest.h>

#include "app/Windows.h"
#include "ui/onboarding/OnboardingView.h"

namespace valdorn {

OnboardingStage::OnboardingStage() {
    world.saveFleet({FakeWorld::record("r0"), FakeWorld::record("r1")});
    world.markRegistered("r0");
    store = RunnersStore::create(world.services());
}

OnboardingStage::~OnboardingStage() = default;

void OnboardingStage::show() {
    if (!window) {
        view = new OnboardingView({store->runners().front(), store, world.queue, workspace,
                                   [this] { ++registrations; }, [this] { ++closings; }});
        window = std::make_unique<HostedWindow>(Windows::onboarding(), view);
    }
    window->present();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    settle();
}

void OnboardingStage::settle() {
    world.queue.runPosted();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
}

void OnboardingStage::unregister(const std::string& id) {
    world.files.files.erase(FakeWorld::dataFolder(id) + "/.runner");
}

void OnboardingStage::launchAndPrint(const std::string& text) {
    if (!runner().isRunning()) {
        runner().start();
        world.queue.runPosted();
    }
    world.launcher.child(world.launcher.childCount() - 1).print(text);
}

void OnboardingStage::become(RunnerStatus status) {
    switch (status) {
        case RunnerStatus::notRegistered:
            unregister("r0");
            runner().start();
            break;
        case RunnerStatus::stopped:
            runner().stop();
            break;
        case RunnerStatus::starting:
            launchAndPrint("");
            break;
        case RunnerStatus::noNetwork:
            launchAndPrint("dial tcp: connect: no route to host\n");
            break;
        case RunnerStatus::connected:
            launchAndPrint("msg=\"runner: mini, with version: v1, declare successfully\"\n");
            break;
        case RunnerStatus::building:
            launchAndPrint("msg=\"Running job with maxParallel=1\"\n");
            break;
    }
    settle();
    ASSERT_EQ(runner().status(), status);
}

}  // namespace valdorn
