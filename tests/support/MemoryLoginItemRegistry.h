#pragma once

#include <optional>
#include <string>

#include "platform/LoginItemRegistry.h"

namespace valdorn {

// A registry in memory that refuses changes when told to. Attempts are counted, refused or not.
class MemoryLoginItemRegistry : public LoginItemRegistry {
public:
    LoginItemStatus current = LoginItemStatus::notEnabled;
    std::optional<std::string> failWith;  // the reason that every change is refused with
    int registrations = 0;
    int unregistrations = 0;

    LoginItemStatus status() const override { return current; }

    std::optional<std::string> registerItem() override;
    std::optional<std::string> unregisterItem() override;

private:
    std::optional<std::string> change(LoginItemStatus wanted);
};

}  // namespace valdorn
