#include "support/MemoryLoginItemRegistry.h"

namespace valdorn {

std::optional<std::string> MemoryLoginItemRegistry::change(LoginItemStatus wanted) {
    if (!failWith)
        current = wanted;
    return failWith;
}

std::optional<std::string> MemoryLoginItemRegistry::registerItem() {
    ++registrations;
    return change(LoginItemStatus::enabled);
}

std::optional<std::string> MemoryLoginItemRegistry::unregisterItem() {
    ++unregistrations;
    return change(LoginItemStatus::notEnabled);
}

}  // namespace valdorn
