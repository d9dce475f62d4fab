#!/usr/bin/env python3
"""What reading the lines of the log window costs: log_reading.py BUILD-FOLDER [--short].

Beside a bare search for them.

The bar: as whole processes at most twice the search, and the same whether the log has 1 MiB or 4 GiB.
"""

import pathlib
import sys
import tempfile

from support import harness
from support.logs import LINE_BYTES, make_log

ROUNDS = harness.rounds(41)
READINGS = harness.scaled(21, 3)
LARGE = harness.scaled(4 << 30, 16 << 20)
LINES = 5000
BAR = 2.0
SAME = 1.05  # two sizes cost the same when they are within this: what runs differ by anyway

TITLE = "Reading the last lines of a log"
INTRODUCTION = f"""\
The last {LINES} lines of a log (mean {LINE_BYTES} bytes) that is in the kernel's memory, read as the
window keeps them (well-formed, told one by one), beside a C program that only searches for the line
feeds (`pread`, `memrchr`, 64 KiB blocks) and keeps nothing. {ROUNDS} rounds, programs and
sizes by turns.

- whole process: from fork to exit, with one reading
- first reading: the one in that process, into memory that the kernel has yet to give
- again: the median of {READINGS - 1} further readings in a process, the lines before let go of

Bar: as whole processes at most {BAR:.0f} times the search, and each of the three the same (within
{SAME:.2f}) for both sizes. Within one process the search, which keeps nothing, touches far less memory
and takes a third or a quarter of the time.
"""


PROGRAMS = ("log_reading", "log_reading_reference")


def runs_of(build, logs, readings):
    """The runs of both programs over each log, all by turns."""
    commands = [[str(build / "bin" / name), str(log), str(readings)]
                for log in logs for name in PROGRAMS]
    runs = harness.by_turns(commands, ROUNDS)
    return [runs[at:at + len(PROGRAMS)] for at in range(0, len(runs), len(PROGRAMS))]


def figures_of(once, often):
    """The figures of both programs over one log by name, and their growths of memory in bytes."""
    found = {tuple(numbers[:2]) for runs in (*once, *often) for _, numbers in runs}
    harness.expect("lines", {lines for lines, _ in found}, {LINES})
    harness.expect("different lines found", len(found), 1)
    figures = {
        "whole process": [harness.Figure([took for took, _ in runs]) for runs in once],
        "first reading": [harness.Figure([numbers[3] for _, numbers in runs]) for runs in once],
        "again": [harness.Figure([harness.Figure(numbers[4:]).median for _, numbers in runs])
                  for runs in often],
    }
    return figures, [max(numbers[2] for _, numbers in runs) for runs in once]


def measure(build):
    """By size what figures_of gives."""
    sizes = {"1 MiB": 1 << 20, "4 GiB": LARGE}
    with tempfile.TemporaryDirectory(dir=build) as folder:
        logs = [make_log(pathlib.Path(folder) / name, size) for name, size in sizes.items()]
        all_runs = zip(runs_of(build, logs, 1), runs_of(build, logs, READINGS))
        return {name: figures_of(*runs) for name, runs in zip(sizes, all_runs)}


def main(build):
    rows, medians, misses = [], {}, []
    for name, (figures, growths) in measure(build).items():
        for what, (ours, reference) in figures.items():
            ratio = ours.median / reference.median
            if what == "whole process" and ratio > BAR:
                misses.append(f"{what} of {name}")
            rows.append([name, what, ours, reference, f"{ratio:.2f}"])
            medians.setdefault(what, []).append(ours.median)
        rows.append([name, "resident growth", *(f"{growth // 1024} KiB" for growth in growths), ""])
    for what, (small, large) in medians.items():
        if large > SAME * small:
            misses.append(f"{what}, same for both sizes")
        rows.append(["4 GiB : 1 MiB", what, f"{large / small:.2f}", "", ""])
    heads = ["log", "what", "ours", "search alone", "ratio"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
