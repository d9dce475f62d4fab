#pragma once

#include <memory>
#include <vector>

#include "platform/DeferredUpdate.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "ui/WindowView.h"
#include "ui/status/UpdateHints.h"

class QVBoxLayout;

namespace valdorn {

class Announcer;
class RunnerManager;
class RunnerRow;
class RunnersStore;
class StyledLabel;
class UpdateChecker;
class VerticalScrollArea;

// The content of the runner status window: one row per runner of the fleet, in its order. It shows
// the fleet and sends commands to its runners; runners are added and removed elsewhere.
//
// Thread: main thread only. The view looks at its runners from the moment it is made; uptimes count
// only while somebody can see them, and whenever it appears it asks whether there is a newer release.
// A row belongs to one runner for as long as that runner is on the list, wherever it stands there.
class RunnerStatusView : public WindowView {
    Q_OBJECT

public:
    // Takes over the checker, whose answer thereby outlives the closing of the window. The queue
    // outlives this.
    RunnerStatusView(std::shared_ptr<RunnersStore> store, MainQueue& queue,
                     std::unique_ptr<UpdateChecker> updates);
    ~RunnerStatusView() override;

protected:
    void appeared() override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* makeContent();
    void refresh() VALDORN_ON_MAIN_THREAD;
    void updateRows() VALDORN_ON_MAIN_THREAD;
    RunnerRow* takeRow(const std::shared_ptr<RunnerManager>& runner) VALDORN_ON_MAIN_THREAD;
    void placeRows();
    void setSeen(bool seen) VALDORN_ON_MAIN_THREAD;

    const std::shared_ptr<RunnersStore> store_;
    MainQueue& queue_;
    const std::unique_ptr<UpdateChecker> updates_;
    UpdateHints hints_;

    Announcer* const announcer_;
    StyledLabel* const heading_;
    QWidget* const
        rowArea_;  // apart, so that a screen reader comes to the rows before the footnote
    QVBoxLayout* const rowStack_;
    VerticalScrollArea* const scrolling_;
    std::vector<RunnerRow*> rows_;  // children, in list order
    bool isSeen_ = false;
    DeferredUpdate update_;
    Subscription listChanges_;
    Subscription updateChanges_;
};

}  // namespace valdorn
