#pragma once

namespace valdorn {

// The program's name among all programs of a desktop: the base name of its desktop entry, of its
// autostart entry and of its icon, and its name on the session bus.
inline constexpr char applicationId[] = "org.valdorn.valdorn";

}  // namespace valdorn
