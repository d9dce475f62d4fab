#!/usr/bin/env python3
"""What the log window costs to open, beside a bare search for its lines: log_reading.py BUILD-FOLDER [--short].

The bar: at most twice the search, and the same whether the log has 1 MiB or 4 GiB.
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
SAME = 1.25  # two sizes cost the same when they are within this: what runs differ by anyway

TITLE = "Opening the log window"
INTRODUCTION = f"""\
The last {LINES} lines of a log (mean {LINE_BYTES} bytes) that is in the kernel's memory, read as the
window keeps them (well-formed, told one by one), beside a C program that only searches for the line
feeds (`pread`, `memrchr`, 64 KiB blocks) and keeps nothing. By turns, {ROUNDS} rounds.

- whole process: from fork to exit, with one reading
- first reading: the one in that process, into memory that the kernel has yet to give
- again: the median of {READINGS - 1} further readings in a process, the lines before let go of

Bar: as whole processes at most {BAR:.0f} times the search, and the same (within {SAME:.2f}) for both
sizes. Within one process the search, which keeps nothing, touches far less memory.
"""


def measure(build, log):
    """The figures of both programs by name, and their growths of resident memory in bytes."""
    def command(name, readings):
        return [str(build / "bin" / name), str(log), str(readings)]

    once = harness.by_turns(command("log_reading", 1), command("log_reading_reference", 1), ROUNDS)
    often = harness.by_turns(command("log_reading", READINGS),
                             command("log_reading_reference", READINGS), ROUNDS)
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


def main(build):
    sizes = {"1 MiB": 1 << 20, "4 GiB": LARGE}
    rows, medians, misses = [], {}, []
    for name, size in sizes.items():
        with tempfile.TemporaryDirectory(dir=build) as folder:
            figures, growths = measure(build, make_log(pathlib.Path(folder) / "log", size))
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
