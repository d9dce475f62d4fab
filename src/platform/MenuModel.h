#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Observable.h"

namespace valdorn {

// One entry of a menu, as data.
struct MenuItem {
    std::string id;  // names the entry in this program; empty only for separators
    std::string title;
    bool enabled = true;
    bool hidden = false;
    bool separator = false;
    char shortcut = 0;  // the key that goes with Control, or 0
    std::function<void()> action;
};

// A menu whose entries are fixed when it is made; only title and visibility change later, so that
// a renderer builds its widgets once and updates them in place. Main thread only.
//
// Several renderers may show one model at the same time; the model outlives them.
class MenuModel {
public:
    explicit MenuModel(std::vector<MenuItem> items);

    // All entries, top to bottom, the hidden ones too. The references stay valid for life.
    const std::vector<MenuItem>& items() const { return items_; }

    // The entry of that id. An id that no entry has ends the program, here and below.
    const MenuItem& item(std::string_view id) const;

    // Change one entry. Tells the observers unless the value is equal.
    void setTitle(std::string_view id, std::string title) VALDORN_ON_MAIN_THREAD;
    void setHidden(std::string_view id, bool hidden) VALDORN_ON_MAIN_THREAD;

    // Runs the entry's action, if it has one and is enabled.
    void activate(std::string_view id) const;

    // Calls `observer` after each change, with the changed entry.
    [[nodiscard]] Subscription onDidChange(std::function<void(const MenuItem&)> observer)
        VALDORN_ON_MAIN_THREAD;

private:
    MenuItem& find(std::string_view id);

    std::vector<MenuItem> items_;
    ObserverList<const MenuItem&> observers_;
};

}  // namespace valdorn
