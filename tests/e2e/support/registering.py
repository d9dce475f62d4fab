"""An act_runner that registers as a test tells it to."""

import os
import shlex
import shutil
import tempfile

from .puppet import PUPPET
from .waiting import wait_until

SUCCEED = "echo '{}' > .runner"

_TOOL = """#!/bin/sh
[ "$1" = register ] || exec {puppet} "$@"
notes={notes}
printf '%s\\0' "$@" > "$notes/arguments"
pwd > "$notes/folder"
touch "$notes/called"
. "$notes/script"
"""


class RegisteringTool:
    """Takes the executable's place in a home. `register` runs a few lines of shell in the runner's
    folder, `daemon` is a puppet. What it was given is noted outside of the home, where a test looks
    for what the program itself has left."""

    def __init__(self, home, script=SUCCEED):
        self._notes = tempfile.mkdtemp(prefix="valdorn-tool.")
        home.install_runner(PUPPET)
        with open(home.runner_path, "w") as file:
            file.write(_TOOL.format(puppet=shlex.quote(PUPPET), notes=shlex.quote(self._notes)))
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
            return file.read().split("\0")[:-1]

    def folder(self):
        """Where it was called."""
        self.wait_for_start()
        with open(self._path("folder")) as file:
            return file.read().rstrip("\n")

    def was_called(self):
        return os.path.exists(self._path("called"))

    def wait_for_start(self):
        wait_until(self.was_called, "a started tool")

    def _path(self, name):
        return os.path.join(self._notes, name)

    def close(self):
        shutil.rmtree(self._notes, ignore_errors=True)
