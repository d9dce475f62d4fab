#include "app/LoginItem.h"

#include "platform/LoginItemRegistry.h"
#include "platform/SystemLog.h"

namespace valdorn {

void LoginItem::set(bool enabled, LoginItemRegistry& registry, SystemLog& log) {
    if (!enabled && registry.status() != LoginItemStatus::enabled)
        return;
    const auto failure = enabled ? registry.registerItem() : registry.unregisterItem();
    if (failure)
        log.write("Valdorn: login-item toggle failed: " + *failure);
}

}  // namespace valdorn
