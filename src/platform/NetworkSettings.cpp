#include "platform/NetworkSettings.h"

#include <algorithm>
#include <cstddef>

#include "text/Ascii.h"

namespace valdorn::NetworkSettings {

namespace {

using Commands = std::vector<Command>;

struct Desktop {
    std::vector<std::string_view> names;  // in small letters
    Commands commands;
};

// As the desktops' own menus call them, the current version's program first.
const std::vector<Desktop>& desktops() {
    static const std::vector<Desktop> all = {
        {{"gnome", "gnome-classic", "gnome-flashback", "ubuntu", "pop"},
         {{"gnome-control-center", {"network"}}}},
        {{"unity"}, {{"unity-control-center", {"network"}}, {"gnome-control-center", {"network"}}}},
        {{"budgie"},
         {{"budgie-control-center", {"network"}}, {"gnome-control-center", {"network"}}}},
        {{"kde"},
         {{"systemsettings", {"kcm_networkmanagement"}},
          {"systemsettings5", {"kcm_networkmanagement"}},
          {"kcmshell6", {"kcm_networkmanagement"}},
          {"kcmshell5", {"kcm_networkmanagement"}}}},
        {{"x-cinnamon", "cinnamon"}, {{"cinnamon-settings", {"network"}}}},
        {{"pantheon"},
         {{"io.elementary.settings", {"settings://network"}},
          {"io.elementary.switchboard", {"settings://network"}}}},
    };
    return all;
}

// Xfce, LXQt, LXDE, MATE and the bare window managers have no page of their own.
const Commands& everywhere() {
    static const Commands all = {{"nm-connection-editor", {}}, {"cmst", {}}, {"connman-gtk", {}}};
    return all;
}

// Each command once, where it came first.
void append(Commands& list, const Commands& more) {
    for (const Command& command : more) {
        if (std::find(list.begin(), list.end(), command) == list.end())
            list.push_back(command);
    }
}

void appendOf(Commands& list, const std::string& name) {
    for (const Desktop& desktop : desktops()) {
        if (std::find(desktop.names.begin(), desktop.names.end(), name) != desktop.names.end())
            append(list, desktop.commands);
    }
}

}  // namespace

Commands commands(std::string_view desktops) {
    Commands list;
    while (!desktops.empty()) {
        const std::size_t end = std::min(desktops.find(':'), desktops.size());
        appendOf(list, asciiLowerCased(desktops.substr(0, end)));
        desktops.remove_prefix(std::min(end + 1, desktops.size()));
    }
    append(list, everywhere());
    return list;
}

}  // namespace valdorn::NetworkSettings
