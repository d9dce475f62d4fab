"""Launches a desktop entry as GLib's desktops do.

Usage: launcher.py ENTRY TOKEN [ACTION]"""

import sys

from gi.repository import Gio


class _Context(Gio.AppLaunchContext):
    def do_get_startup_notify_id(self, _entry, _files):
        return sys.argv[2]

    def do_get_display(self, _entry, _files):
        return None


def main():
    entry = Gio.DesktopAppInfo.new_from_filename(sys.argv[1])
    if len(sys.argv) > 3:
        entry.launch_action(sys.argv[3], _Context())
    else:
        entry.launch([], _Context())


if __name__ == "__main__":
    main()
