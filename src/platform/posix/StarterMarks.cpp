#include "platform/posix/StarterMarks.h"

#include <cstdlib>
#include <string_view>

namespace valdorn {

bool StarterMarks::takeSessionBus() {
    constexpr char busType[] = "DBUS_STARTER_BUS_TYPE";
    const char* starter = std::getenv(busType);
    const bool isSessionBus = starter != nullptr && std::string_view(starter) == "session";
    unsetenv(busType);
    unsetenv("DBUS_STARTER_ADDRESS");
    return isSessionBus;
}

std::string StarterMarks::takeActivationToken() {
    std::string token;
    for (const char* const name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        if (const char* const value = std::getenv(name); value != nullptr && token.empty())
            token = value;
        unsetenv(name);
    }
    return token;
}

}  // namespace valdorn
