#!/usr/bin/env python3
"""How often the program wakes up while nothing happens: idling.py BUILD-FOLDER [--short].

Beside a minimal program in the status bar, with and without a window.
"""

import contextlib
import statistics
import sys

from support import harness, processes
from support.bars import OURS, REFERENCE, RUNNERS, Bar, home_with_runners
from support.e2e import desktop, program, waiting, windows

ROUNDS = harness.rounds(3)
SECONDS = harness.scaled(60, 2)
SETTLING = harness.scaled(40, 1)  # seconds; Qt keeps the threads of a request for 30
WINDOW_BAR = 3  # a second

TITLE = "At rest"
INTRODUCTION = f"""\
Context switches of all threads, wanted and unwanted, in {SECONDS} s once nothing happens any more; each
program on a virtual display with a window manager, a bus and a status bar of its own, all at the
same time. {ROUNDS} rounds. Ours supervises {RUNNERS} quiet runners; its window is the runner status, which counts
how long each is up. The minimal program's window is one label.

Bars: none without a window, at most {WINDOW_BAR} a second with it.
"""


class Candidate:
    """A program on a desktop of its own, and how often it woke up."""

    def __init__(self, stack, name, command, make_home, window=None):
        self.name = name
        self.found = []
        bar = stack.enter_context(contextlib.closing(Bar(
            window_manager=desktop.usual_window_manager)))
        home = stack.enter_context(make_home())
        self._shown = stack.enter_context(bar.running(command, home))
        self._shown.settle(0)
        if window:
            self._shown.item.menu().choose(window.entry)
            bar.desktop.wait_for_active(window.title)

    def begin(self):
        self._before = processes.switches(self._shown.process.pid)

    def end(self):
        after = processes.switches(self._shown.process.pid)
        self.found.append(processes.switches_between(self._before, after))

    def median(self):
        return statistics.median(self.found)

    def row(self):
        return [self.name, f"{self.median():.0f} ({min(self.found)} to {max(self.found)})",
                f"{self.median() / SECONDS:.2f}"]


def empty_home():
    return contextlib.closing(program.Home())


def measure():
    with contextlib.ExitStack() as stack:
        candidates = [
            Candidate(stack, "ours", OURS, home_with_runners),
            Candidate(stack, "minimal program", REFERENCE, empty_home),
            Candidate(stack, "ours with its window", OURS, home_with_runners, windows.STATUS),
            Candidate(stack, "minimal program with a window", [*REFERENCE, "window"], empty_home),
        ]
        waiting.spend(SETTLING)
        for _ in range(ROUNDS):
            for candidate in candidates:
                candidate.begin()
            waiting.spend(SECONDS)
            for candidate in candidates:
                candidate.end()
    return candidates


def main():
    candidates = measure()
    quiet, _, window, _ = candidates
    misses = []
    if quiet.median() > 0:
        misses.append("none without a window")
    if round(window.median() / SECONDS) > WINDOW_BAR:  # a minute may have 61 ticks
        misses.append(f"{WINDOW_BAR} a second with a window")
    heads = ["program", f"switches in {SECONDS} s", "a second"]
    return harness.publish_table(TITLE, INTRODUCTION, heads,
                                 [candidate.row() for candidate in candidates], misses)


if __name__ == "__main__":
    sys.exit(main())
