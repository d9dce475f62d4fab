#pragma once

namespace valdorn {

class LoginItemRegistry;
class SystemLog;

// The one place that changes whether the program starts at login. Main thread only.
namespace LoginItem {

// Registers the program, or unregisters it if it is registered. A failure is written to the system
// log in one line and nowhere else: who needs the outcome reads the registry's status.
void set(bool enabled, LoginItemRegistry& registry, SystemLog& log);

}  // namespace LoginItem

}  // namespace valdorn
