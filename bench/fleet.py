#!/usr/bin/env python3
"""What an idle fleet costs at the start, by its size: fleet.py BUILD-FOLDER [--short].

The fleet alone, and the whole program on a virtual display. The reference is the same with one runner.
"""

import contextlib
import json
import sys
import uuid

from support import harness, processes
from support.bars import OURS, Bar
from support.e2e import program

ROUNDS = harness.rounds(9)
SIZES = [1, 100, harness.scaled(1000, 200), harness.scaled(4000, 400)]
SETTLING = harness.scaled(1.0, 0.2)  # seconds
MICROSECONDS_BAR = 50
KIBIBYTES_BAR = 16
LINEAR = 1.5

TITLE = "A fleet at rest, by its size"
INTRODUCTION = f"""\
Runners that are not registered, as "runners.json" lists them. By turns, {ROUNDS} rounds.

- fleet: reading the list, making the runners, the menu, and all that follows until nothing is left to
  do, in a process that has neither windows nor a status bar
- program: from fork until its item registers at a status bar, on a virtual display; its memory {SETTLING:.0f} s
  later

A runner's part is what a size costs more than one runner, by the number of the others.

Bars: a runner's part at most {MICROSECONDS_BAR} µs and {KIBIBYTES_BAR} KiB, and for the fleet linear: between the two largest
at most {LINEAR} times what it is between the smallest and the largest but one.
"""


def home_with(count):
    home = program.Home()
    home.write_list(json.dumps([
        {"id": str(uuid.UUID(int=number)), "name": f"runner {number}", "labels": "ubuntu-latest:host",
         "instanceURL": "https://gitea.example.com", "extraPath": "", "legacy": False}
        for number in range(count)]))
    home.set_default("hasConnected", "true")
    return home


def run_fleet(build, home, count):
    """Nanoseconds and bytes of one start without a program around it."""
    _, (found, _, took, grown) = harness.run([str(build / "bin/fleet"), home.path])
    harness.expect("runners", found, count)
    return took, grown


def run_program(bar, home):
    with bar.running(OURS, home) as shown:
        shown.settle(SETTLING)
        return shown.took, processes.memory(shown.process.pid)[0]


def part(figures, small, large):
    """What each runner adds between two sizes: microseconds and KiB."""
    (few_took, few_bytes), (took, size) = figures[small], figures[large]
    others = large - small
    return ((took.median - few_took.median) / 1e3 / others,
            (size.median - few_bytes.median) / 1024 / others)


def judge(name, figures, rows, misses):
    for count in SIZES:
        took, size = figures[count]
        parts = part(figures, 1, count) if count > 1 else ("", "")
        rows.append([name, count, took, size, *(f"{value:.2f}" if value != "" else ""
                                                for value in parts)])
        if count >= SIZES[-2] and (parts[0] > MICROSECONDS_BAR or parts[1] > KIBIBYTES_BAR):
            misses.append(f"{name} of {count}")


def judge_growth(figures, misses):
    for what, few, many in zip(("time", "memory"), part(figures, 1, SIZES[-2]),
                               part(figures, *SIZES[-2:])):
        if many > LINEAR * few:
            misses.append(f"{what} of the fleet, linear")


def main(build):
    found = {}
    with contextlib.ExitStack() as stack:
        homes = {count: stack.enter_context(contextlib.closing(home_with(count))) for count in SIZES}
        bar = stack.enter_context(contextlib.closing(Bar()))
        for _ in range(ROUNDS):
            for count, home in homes.items():
                found.setdefault(("fleet", count), []).append(run_fleet(build, home, count))
                found.setdefault(("program", count), []).append(run_program(bar, home))
    rows, misses = [], []
    for name in ("fleet", "program"):
        figures = {}
        for count in SIZES:
            took, size = zip(*found[name, count])
            figures[count] = harness.Figure(took), processes.Memory(size)
        judge(name, figures, rows, misses)
        if name == "fleet":
            judge_growth(figures, misses)
    heads = ["what", "runners", "start", "memory", "µs a runner", "KiB a runner"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
