#include "platform/posix/StarterMarks.h"

#include <cstdlib>
#include <string_view>

namespace valdorn {

bool takeStarterMarks() {
    constexpr char busType[] = "DBUS_STARTER_BUS_TYPE";
    const char* starter = std::getenv(busType);
    const bool isSessionBus = starter != nullptr && std::string_view(starter) == "session";
    unsetenv(busType);
    unsetenv("DBUS_STARTER_ADDRESS");
    return isSessionBus;
}

}  // namespace valdorn
