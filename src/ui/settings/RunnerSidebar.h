#pragma once

#include <QWidget>
#include <memory>

#include "platform/ThreadAnnotations.h"

namespace valdorn {

class RunnerList;
class RunnerSelection;
class SymbolButton;

// The list of runners, and the buttons that add one and remove the selected one. Main thread only.
class RunnerSidebar : public QWidget {
    Q_OBJECT

public:
    static constexpr int fixedWidth = 180;  // points

    explicit RunnerSidebar(std::shared_ptr<RunnerSelection> selection);
    ~RunnerSidebar() override;

    // Shows the fleet and the selection as they are now. Names are looked at here and at no other
    // time: a runner that is being renamed changes its row when the user is done with it.
    void refresh() VALDORN_ON_MAIN_THREAD;

Q_SIGNALS:
    // The user has selected, added or removed a runner. Whoever shows more of it does so at once:
    // the next key may be meant for that already.
    void changed();

private:
    QWidget* makeButtonBar();

    const std::shared_ptr<RunnerSelection> selection_;
    RunnerList* const list_;
    SymbolButton* const add_;
    SymbolButton* const remove_;
};

}  // namespace valdorn
