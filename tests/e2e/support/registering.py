"""An act_runner that registers as a test tells it to."""

import os
import shutil
import tempfile

from .puppet import PUPPET
from .waiting import wait_until

SUCCEED = "echo '{}' > .runner"

_TOOL = """#!/usr/bin/python3 -SEB
import os
import runpy
import sys

NOTES = {notes!r}


def note(name, text):
    with open(os.path.join(NOTES, name), "wb") as file:
        file.write(text)


if sys.argv[1] == "register":
    note("arguments", b"\\0".join(map(os.fsencode, sys.argv[1:])))
    note("folder", os.fsencode(os.getcwd()))
    note("process", str(os.getpid()).encode())
    note("called", b"")
    os.execv("/bin/sh", ["sh", os.path.join(NOTES, "script")])
# In this very process: a daemon is known by its executable.
runpy.run_path({puppet!r})
"""


class RegisteringTool:
    """Takes the executable's place in a home. `register` runs a few lines of shell in the runner's
    folder, `daemon` is a puppet. What it was given is noted outside of the home, where a test looks
    for what the program itself has left."""

    def __init__(self, home, script=SUCCEED):
        self._notes = tempfile.mkdtemp(prefix="valdorn-tool.")
        home.install_runner(PUPPET)
        with open(home.runner_path, "w") as file:
            file.write(_TOOL.format(puppet=PUPPET, notes=self._notes))
        self.plays(script)

    def plays(self, script):
        """What the next call does."""
        for name in ("arguments", "folder", "called"):
            if os.path.exists(self._path(name)):
                os.remove(self._path(name))
        with open(self._path("script"), "w") as file:
            file.write(script + "\n")

    def arguments(self):
        """Of the call."""
        self.wait_for_start()
        with open(self._path("arguments"), encoding="utf-8") as file:
            return file.read().split("\0")

    def folder(self):
        """Where it was called."""
        self.wait_for_start()
        with open(self._path("folder")) as file:
            return file.read()

    def process(self):
        """The process id of the call."""
        self.wait_for_start()
        with open(self._path("process")) as file:
            return int(file.read())

    def was_called(self):
        return os.path.exists(self._path("called"))

    def wait_for_start(self):
        wait_until(self.was_called, "a started tool")

    def _path(self, name):
        return os.path.join(self._notes, name)

    def close(self):
        shutil.rmtree(self._notes, ignore_errors=True)
