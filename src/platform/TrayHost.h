#pragma once

namespace valdorn {

// The two kinds of status bar: one that shows notifier items from the session bus, and the older
// tray of X11.
enum class TrayHost { notifier, xembed };

}  // namespace valdorn
