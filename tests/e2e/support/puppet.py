"""The strings of puppet_runner.py, and the lines that a daemon prints."""

import json
import os
import time

from .program import is_alive
from .waiting import wait_until

PUPPET = os.path.join(os.path.dirname(os.path.abspath(__file__)), "puppet_runner.py")


def now():
    """In seconds, by a clock that nobody sets."""
    return time.clock_gettime(time.CLOCK_MONOTONIC_RAW)


def entry(message, level="info"):
    return f'time="2026-11-21T08:00:00Z" level={level} msg="{message}"\n'


DECLARED = entry("runner: n, with version: v1.0.8, with labels: [macos], declare successfully")
JOB_STARTED = entry("Running job with maxParallel=1 for 1 matrix combinations")
JOB_FINISHED = entry("Worker 0 finished (1 tasks executed)", "debug")
BLOCKED = entry("failed to fetch task: dial tcp 10.0.0.5:443: connect: no route to host", "error")


def task(repository):
    return entry(f"task 7 repo is {repository} http://x.invalid http://x.invalid")


class Puppets:
    """The puppets of one runner, in the order of their launch."""

    def __init__(self, data_folder, first=DECLARED, stubborn=False):
        self.data_folder = data_folder
        self._folder = os.path.join(data_folder, "puppet")
        os.makedirs(self._folder, exist_ok=True)
        with open(os.path.join(self._folder, "first"), "w") as file:
            file.write(first)
        if stubborn:
            open(os.path.join(self._folder, "stubborn"), "w").close()

    def pids(self):
        """All that have ever lived."""
        pids = [int(name.partition(".")[0]) for name in os.listdir(self._folder)
                if name.endswith(".json")]
        return sorted(pids, key=self.started_at)

    def living(self):
        return [pid for pid in self.pids() if is_alive(pid)]

    def wait_for_one(self, seconds=20.0):
        """The process id of the only one that lives."""
        wait_until(lambda: len(self.living()) == 1, "a living daemon", seconds)
        return self.living()[0]

    def wait_for_none(self, seconds=20.0):
        wait_until(lambda: not self.living(), "the end of the daemon", seconds)

    def facts(self, pid):
        with open(os.path.join(self._folder, f"{pid}.json")) as file:
            return json.load(file)

    def started_at(self, pid):
        """In seconds, on the clock of `now`."""
        return self.facts(pid)["started"]

    def ended_at(self, pid):
        """When it has got the signal that ended it, on the same clock."""
        return self._got(pid)[-1][1]

    def signals(self, pid):
        """The names of the signals it has got, in order."""
        return [name for name, _ in self._got(pid)]

    def _got(self, pid):
        try:
            with open(os.path.join(self._folder, f"{pid}.signals")) as file:
                lines = [line.split() for line in file]
        except FileNotFoundError:
            return []
        return [(name, float(when)) for name, when in lines]

    def say(self, *lines):
        """Lets the living one print."""
        pid = self.wait_for_one()
        with open(os.path.join(self._folder, f"{pid}.says"), "a") as file:
            file.write("".join(lines))
