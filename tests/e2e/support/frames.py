"""A window manager for pictures: frames that are flat and quiet, the same on every machine."""

import os

_THEME = """border.width: 1
padding.width: 8
padding.height: 6
window.handle.width: 0
window.client.padding.width: 0
window.client.padding.height: 0
window.label.text.justify: center
window.active.border.color: #9a9a9a
window.inactive.border.color: #b4b4b4
window.active.title.bg: flat solid
window.active.title.bg.color: #dedede
window.inactive.title.bg: flat solid
window.inactive.title.bg.color: #ececec
window.active.title.separator.color: #c8c8c8
window.inactive.title.separator.color: #d8d8d8
window.active.label.bg: parentrelative
window.inactive.label.bg: parentrelative
window.active.label.text.color: #2b2b2b
window.inactive.label.text.color: #8a8a8a
window.active.button.*.bg: parentrelative
window.inactive.button.*.bg: parentrelative
window.active.button.*.image.color: #4a4a4a
window.inactive.button.*.image.color: #a0a0a0
"""
_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew></focus>
  <theme>
    <name>pictures</name>
    <titleLayout>LC</titleLayout>
    <font place="ActiveWindow"><name>DejaVu Sans</name><size>9</size><weight>Bold</weight></font>
    <font place="InactiveWindow"><name>DejaVu Sans</name><size>9</size><weight>Bold</weight></font>
  </theme>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
  </mouse>
</openbox_config>
"""
TITLE_HEIGHT = 28


def window_manager(folder):
    """The command that starts it; its files go into the folder."""
    _write(os.path.join(folder, "themes/pictures/openbox-3/themerc"), _THEME)
    settings = os.path.join(folder, "rc.xml")
    _write(settings, _SETTINGS)
    return ("env", f"XDG_DATA_HOME={folder}", "openbox", "--config-file", settings)


def _write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as file:
        file.write(text)
