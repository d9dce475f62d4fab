#pragma once

#include <QLabel>
#include <QPushButton>
#include <memory>
#include <string>

#include "fleet/RunnersStore.h"
#include "platform/qt/HostedWindow.h"
#include "support/FakeWorld.h"
#include "support/RecordingWorkspace.h"

namespace valdorn {

class OnboardingView;

// A fleet of two runners under a test's hand, and the onboarding window about the first of them.
class OnboardingStage {
public:
    OnboardingStage();
    ~OnboardingStage();

    // The window as the program opens it; once more after it was closed.
    void show();
    void close() { window->close(); }
    void settle();

    // What a runner may go through. A child is launched where it needs one.
    void become(RunnerStatus status);
    void unregister(const std::string& id);
    RunnerManager& runner() { return *store->runners().front(); }

    template <typename Widget>
    Widget* part(const char* name) const {
        return window->findChild<Widget*>(QLatin1String(name));
    }
    QPushButton* button(const char* name) const { return part<QPushButton>(name); }
    std::string text(const char* label) const { return part<QLabel>(label)->text().toStdString(); }
    std::string title(const char* name) const { return button(name)->text().toStdString(); }

    FakeWorld world;
    RecordingWorkspace workspace;
    std::shared_ptr<RunnersStore> store;
    int registrations = 0;
    int closings = 0;
    std::unique_ptr<HostedWindow> window;
    OnboardingView* view = nullptr;  // the window's

private:
    void launchAndPrint(const std::string& text);
};

}  // namespace valdorn
