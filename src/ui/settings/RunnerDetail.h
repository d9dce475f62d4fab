#pragma once

#include <QWidget>
#include <memory>

#include "platform/ThreadAnnotations.h"

namespace valdorn {

class MainQueue;
class RegistrationForm;
class RunnerForm;
class RunnerManager;
class VerticalScrollArea;

// The pane in which the selected runner is edited and registered. What is typed to register a
// runner, and how that went, stays when the pane is given another one; its rows do not. Main thread
// only.
class RunnerDetail : public QWidget {
    Q_OBJECT

public:
    // At least `leastWidth` points wide. The queue outlives this.
    RunnerDetail(std::shared_ptr<RunnerManager> runner,
                 std::shared_ptr<RegistrationForm> registration, MainQueue& queue, int leastWidth);
    ~RunnerDetail() override;

    // Shows that runner, in new rows: no half-finished edit is carried over. For the runner that is
    // shown already nothing changes.
    void setRunner(std::shared_ptr<RunnerManager> runner) VALDORN_ON_MAIN_THREAD;

    // The rows shown now.
    RunnerForm& form() const { return *form_; }

    QSize minimumSizeHint() const override;

private:
    void makeForm(std::shared_ptr<RunnerManager> runner);

    const std::shared_ptr<RegistrationForm> registration_;
    MainQueue& queue_;
    const int leastWidth_;
    QWidget* const content_;
    VerticalScrollArea* const scrolling_;
    RunnerForm* form_ = nullptr;
};

}  // namespace valdorn
