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

std::string StarterMarks::activationToken() {
    for (const char* const name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        if (const char* const token = std::getenv(name); token != nullptr && *token != '\0')
            return token;
    }
    return {};
}

}  // namespace valdorn
