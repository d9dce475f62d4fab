#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/DeferredUpdate.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "ui/GroupPanel.h"
#include "ui/status/RunnerRowContent.h"

class QLayout;
class QVBoxLayout;

namespace valdorn {

class Announcer;
class ElidedLabel;
class RunnerManager;
class StatusDot;
class SymbolButton;
class TabularLabel;
class UpdateHints;

// One runner in the status window. Shows what the runner says of itself and what differs from what
// stands there, no more; its button starts or stops this runner alone. Main thread only.
class RunnerRow : public GroupPanel {
    Q_OBJECT

public:
    // The queue outlives this; hints and announcer are asked until the destructor is called.
    RunnerRow(std::shared_ptr<RunnerManager> runner, MainQueue& queue, UpdateHints& hints,
              Announcer& announcer);
    ~RunnerRow() override;

    const std::shared_ptr<RunnerManager>& runner() const { return runner_; }
    // The record's id when the row was made.
    const std::string& id() const { return id_; }
    QWidget& button() const;

    // Looks at the runner and at the hints now.
    void refresh() VALDORN_ON_MAIN_THREAD;

    // Whether anybody can see the row. While somebody does and the runner's uptime is shown, the row
    // looks each time another second of it is full; otherwise nothing is armed.
    void setSeen(bool seen) VALDORN_ON_MAIN_THREAD;

protected:
    void changeEvent(QEvent* event) override;

private:
    void layOut();
    QLayout* makeNameLine();
    QLayout* makeStatusLine();
    void toggle() VALDORN_ON_MAIN_THREAD;

    void apply(const RunnerRowContent& content);
    void applyWords(const std::optional<RunnerRowContent>& before);
    void applyButton();
    void describe();
    void announce(const RunnerRowContent& before);
    void armTick() VALDORN_ON_MAIN_THREAD;

    void alignDot();

    const std::shared_ptr<RunnerManager> runner_;
    const std::string id_;
    MainQueue& queue_;
    UpdateHints& hints_;
    Announcer& announcer_;

    StatusDot* const dot_;
    ElidedLabel* const name_;
    SymbolButton* const button_;
    ElidedLabel* const status_;
    ElidedLabel* const version_;
    TabularLabel* const uptime_;
    ElidedLabel* const hint_;
    ElidedLabel* const build_;
    QVBoxLayout* const dotColumn_;

    std::optional<RunnerRowContent> shown_;
    bool isSeen_ = false;
    ScheduledTask tick_;
    DeferredUpdate update_;
    Subscription changes_;
};

}  // namespace valdorn
