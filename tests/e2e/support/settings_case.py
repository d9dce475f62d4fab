"""What the tests of the settings window have in common."""

import json

from .puppet import DECLARED, Puppets
from .registering import SUCCEED, RegisteringTool
from .settings_page import SettingsPage
from .waiting import wait_until
from .window_case import WindowCase

SIZE = (620, 400)
TOKEN = "tok-5e81-unheard-of"
BUILDER = {"name": "builder", "instanceURL": "http://one.invalid", "labels": "linux:host"}
SPARE = {"name": "spare", "instanceURL": "http://two.invalid", "labels": ""}
THIRD = {"name": "third", "instanceURL": "http://three.invalid"}

# What a window may take to answer while something else goes on: far less than a tool that hangs, but
# to ask a window over the bus takes a while where the computer is busy.
PROMPTLY = 10.0


class SettingsCase(WindowCase):
    def prepare(self, *records, registered=False, script=SUCCEED):
        """A home with a tool and these runners."""
        self.tool = RegisteringTool(self.home, script)
        self.addCleanup(self.tool.close)
        self.records = self.home.add_runners(*records or (BUILDER,), script=None)
        self.folders = [self.home.data_folder(record) for record in self.records]
        self.puppets = [Puppets(folder, DECLARED) for folder in self.folders]
        for folder in () if registered else self.folders:
            self.home.unregister(folder)
        self.home.set_default("hasConnected", "true")

    def begin(self, *records, **options):
        """The program with an open settings window."""
        self.prepare(*records, **options)
        super().begin()
        self.page = SettingsPage(self)

    def reopen(self):
        self.close_window()
        self.page = SettingsPage(self)

    def file(self):
        """The records on disk. They are rewritten in place: half a list is read once more."""
        def whole():
            try:
                return json.loads(self.home.read("runners.json"))
            except json.JSONDecodeError:
                return None
        return wait_until(whole, "a whole list")

    def wait_for_record(self, place, **values):
        def matches():
            records = self.file()
            return len(records) > place and values.items() <= records[place].items()
        wait_until(matches, f"{values} in the file")

    def focused_name(self):
        thing = self.focused(self.page.window)
        return thing and thing.name()
