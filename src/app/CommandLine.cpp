#include "app/CommandLine.h"

#include <algorithm>

#include "app/LoginItem.h"
#include "platform/LoginItemRegistry.h"

namespace valdorn {

std::optional<std::string> CommandLine::answer(const std::vector<std::string>& arguments,
                                               LoginItemRegistry& registry, SystemLog& log) {
    const auto has = [&arguments](const char* option) {
        return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
    };
    const auto isEnabled = [&registry] { return registry.status() == LoginItemStatus::enabled; };
    if (has("--login-status"))
        return isEnabled() ? "enabled" : "not-enabled";
    if (has("--enable-login")) {
        LoginItem::set(true, registry, log);
        return isEnabled() ? "enabled" : "failed";
    }
    if (has("--disable-login")) {
        LoginItem::set(false, registry, log);
        return isEnabled() ? "still-enabled" : "disabled";
    }
    return std::nullopt;
}

}  // namespace valdorn
