#pragma once

#include <optional>
#include <string>

namespace valdorn {

// Only `enabled` means that the program starts at the next login.
enum class LoginItemStatus { notEnabled, enabled };

// The desktop's registry of what starts at login. Main thread only; calls block for the disk.
//
// The registry belongs to the user: it is read afresh on each call, and what the user or another
// program wrote into our entry is kept.
class LoginItemRegistry {
public:
    LoginItemRegistry() = default;
    LoginItemRegistry(const LoginItemRegistry&) = delete;
    LoginItemRegistry& operator=(const LoginItemRegistry&) = delete;
    virtual ~LoginItemRegistry() = default;

    // What the registry says now. An unreadable registry is `notEnabled`.
    virtual LoginItemStatus status() const = 0;

    // Makes the program start at login; entering it again renews the entry. The result is nothing,
    // or one readable line that says why it failed; then the old entry stands.
    [[nodiscard]] virtual std::optional<std::string> registerItem() = 0;

    // Undoes registerItem(); errors as there.
    [[nodiscard]] virtual std::optional<std::string> unregisterItem() = 0;
};

}  // namespace valdorn
