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
    // With the usual fonts, in points; larger ones make it wider.
    static constexpr int usualWidth = 180;

    explicit RunnerSidebar(std::shared_ptr<RunnerSelection> selection);
    ~RunnerSidebar() override;

    // Shows the fleet and the selection as they are now. Names are looked at here and at no other
    // time: a runner that is being renamed changes its row when the user is done with it.
    void refresh() VALDORN_ON_MAIN_THREAD;

Q_SIGNALS:
    // The user has selected, added or removed a runner. Whoever shows more of it does so at once:
    // the next key may be meant for that already.
    void changed();

protected:
    void changeEvent(QEvent* event) override;

private:
    QWidget* makeButtonBar();
    void updateWidth();

    const std::shared_ptr<RunnerSelection> selection_;
    RunnerList* const list_;
    SymbolButton* const add_;
    SymbolButton* const remove_;
};

}  // namespace valdorn
