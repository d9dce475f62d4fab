#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/DeferredUpdate.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "runner/RunnerStatus.h"
#include "ui/WindowView.h"

class QLayout;

namespace valdorn {

class Announcer;
class RowButton;
class RunnerManager;
class RunnersStore;
class StatusDot;
class StyledLabel;
class Workspace;

// What the onboarding window needs from outside; queue and workspace outlive the view.
struct OnboardingEnvironment {
    // Whose status is shown; it stays the same, also when it leaves the fleet.
    std::shared_ptr<RunnerManager> runner;
    // Asked, each time the runner has changed, whether the fleet's first runner is registered. It is
    // never empty then.
    std::shared_ptr<RunnersStore> store;
    MainQueue& queue;
    Workspace& workspace;
    // The second button and "Continue". The view itself opens and closes no window.
    std::function<void()> onRegister;
    std::function<void()> onClose;
};

// The onboarding window: why the runners are children of this program, how one of them fares, and
// where to go from here. Shows what the runner is when it is made and after each of its changes.
// Main thread only.
class OnboardingView : public WindowView {
    Q_OBJECT

public:
    explicit OnboardingView(OnboardingEnvironment environment);
    ~OnboardingView() override;

    // High enough for all texts at the width that the buttons need.
    QSize minimumSizeHint() const override;

protected:
    void appeared() override;

private:
    void layOut();
    QLayout* makeStatusRow();
    QLayout* makeButtonRow();
    void connectButtons();
    void refresh() VALDORN_ON_MAIN_THREAD;

    const OnboardingEnvironment environment_;
    Announcer* const announcer_;
    StyledLabel* const title_;
    StyledLabel* const explanation_;
    StatusDot* const dot_;
    StyledLabel* const status_;
    StyledLabel* const note_;
    RowButton* const networkButton_;
    RowButton* const settingsButton_;
    RowButton* const continueButton_;
    std::optional<RunnerStatus> shown_;
    DeferredUpdate update_;
    Subscription changes_;
};

}  // namespace valdorn
