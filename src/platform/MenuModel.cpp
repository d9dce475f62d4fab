#include "platform/MenuModel.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace valdorn {

MenuModel::MenuModel(std::vector<MenuItem> items) : items_(std::move(items)) {}

MenuItem& MenuModel::find(std::string_view id) {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [id](const MenuItem& item) { return item.id == id; });
    if (found == items_.end())
        std::abort();  // our own mistake: ids are written in the program
    return *found;
}

const MenuItem& MenuModel::item(std::string_view id) const {
    return const_cast<MenuModel*>(this)->find(id);
}

void MenuModel::setTitle(std::string_view id, std::string title) {
    MenuItem& changed = find(id);
    if (changed.title == title)
        return;
    changed.title = std::move(title);
    observers_.notify(changed);
}

void MenuModel::setHidden(std::string_view id, bool hidden) {
    MenuItem& changed = find(id);
    if (changed.hidden == hidden)
        return;
    changed.hidden = hidden;
    observers_.notify(changed);
}

void MenuModel::activate(std::string_view id) const {
    const MenuItem& activated = item(id);
    if (activated.enabled && activated.action)
        activated.action();
}

Subscription MenuModel::onDidChange(std::function<void(const MenuItem&)> observer) {
    return observers_.subscribe(std::move(observer));
}

}  // namespace valdorn
