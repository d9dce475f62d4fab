#!/usr/bin/env python3
"""What the program costs to start and to keep in memory: starting.py BUILD-FOLDER [--short].

Beside a minimal program in the status bar.
"""

import contextlib
import os
import shutil
import sys

from support import harness, processes
from support.bars import OURS, REFERENCE, RUNNERS, Bar, home_with_runners
from support.e2e import program

ROUNDS = harness.rounds(21)
SETTLING = harness.scaled(2.0, 0.2)  # seconds
START_BAR = 1.20
RESIDENT_BAR = 1.15
ANONYMOUS_BAR = 1.50

# Programs of others that people leave in the bar, with what makes each show itself there.
PEERS = {
    "flameshot": {},
    "copyq": {},
    "keepassxc": {".config/keepassxc/keepassxc.ini":
                  "[General]\nUpdateCheckMessageShown=true\n"
                  "[GUI]\nShowTrayIcon=true\nMinimizeOnStartup=true\nMinimizeToTray=true\n"},
}

TITLE = "Starting, and memory at rest"
INTRODUCTION = f"""\
On a virtual display with a bus and a status bar of its own, files in the kernel's memory. By turns,
{ROUNDS} rounds: from fork until the item registers at the bar; memory {SETTLING:.0f} s later, in which the bar
has read the icons and the menu. Ours supervises {RUNNERS} quiet runners and has shown no window; the minimal program
is a `QSystemTrayIcon` with a menu of as many rows as ours. Programs of others, where they are
installed, stand below for scale.

Bars, each beside the minimal program: start at most {START_BAR:.2f}, resident memory at most {RESIDENT_BAR:.2f},
anonymous memory at most {ANONYMOUS_BAR:.2f}.
"""


class Candidate:
    """A program, and what its runs have cost."""

    def __init__(self, name, command, home):
        self.name = name
        self._command = command
        self._home = home
        self._costs = []

    def run(self, bar, counts=True):
        with bar.running(self._command, self._home) as shown:
            shown.settle(SETTLING)
            if counts:
                self._costs.append((shown.took, *processes.memory(shown.process.pid)))

    def figures(self):
        """Time, resident and anonymous memory."""
        took, resident, anonymous = zip(*self._costs)
        return [harness.Figure(took), processes.Memory(resident), processes.Memory(anonymous)]


def peers(stack):
    """Those that are installed, each in a home of its own."""
    found = []
    for name, files in harness.scaled(PEERS, {}).items():
        path = shutil.which(name)
        if path:
            home = stack.enter_context(contextlib.closing(program.Home()))
            for file, text in files.items():
                os.makedirs(os.path.dirname(os.path.join(home.path, file)), exist_ok=True)
                with open(os.path.join(home.path, file), "w") as out:
                    out.write(text)
            found.append(Candidate(name, [path], home))
    return found


def measure():
    with contextlib.ExitStack() as stack:
        bar = stack.enter_context(contextlib.closing(Bar()))
        ours = Candidate("ours", OURS, stack.enter_context(home_with_runners()))
        reference = Candidate("minimal program", REFERENCE,
                              stack.enter_context(contextlib.closing(program.Home())))
        others = peers(stack)
        for number in range(harness.scaled(-1, 0), ROUNDS):
            for candidate in (ours, reference, *others):
                candidate.run(bar, number >= 0)
    return ours, reference, others


def row(candidate, reference):
    cells = [candidate.name]
    for figure, beside in zip(candidate.figures(), reference.figures()):
        cells += [figure, f"{figure.median / beside.median:.2f}"]
    return cells


def main():
    ours, reference, others = measure()
    misses = [what for what, bar, figure, beside in zip(
        ("start", "resident memory", "anonymous memory"),
        (START_BAR, RESIDENT_BAR, ANONYMOUS_BAR), ours.figures(), reference.figures())
        if figure.median > bar * beside.median]
    heads = ["program", "start", "ratio", "resident", "ratio", "anonymous", "ratio"]
    rows = [row(candidate, reference) for candidate in (ours, reference, *others)]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main())
