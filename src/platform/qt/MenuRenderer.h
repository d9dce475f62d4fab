#pragma once

#include <map>
#include <string>

#include "platform/MenuModel.h"

class QAction;
class QMenu;

namespace valdorn {

// Keeps a QMenu equal to a MenuModel: the actions are made once, later only their text and
// visibility change. Choosing an entry activates it in the model.
//
// Main thread only. The model and the menu, which should be empty at first, outlive the renderer's
// use; the actions belong to the menu.
class MenuRenderer {
public:
    MenuRenderer(MenuModel& model, QMenu& menu);

private:
    void add(const MenuItem& item);
    void update(const MenuItem& item);

    MenuModel& model_;
    QMenu& menu_;
    std::map<std::string, QAction*> actions_;  // by id
    Subscription changes_;
};

}  // namespace valdorn
