#!/usr/bin/env python3
"""What the log window costs while its log grows: log_feeding.py BUILD-FOLDER [--short].

Line by line and in batches, beside what Qt has for it; and under a flood, watched or not.
"""

import os
import sys
import tempfile

from support import harness

LINES = 5000
ROUNDS = harness.rounds(5)
BATCHES = {500: harness.scaled(20_000, 1500), 1: harness.scaled(500, 20)}  # lines in all, by batch
MOST_MICROSECONDS = {500: 15, 1: 400}  # a line
PHASE_MILLISECONDS = harness.scaled(10_000, 1200)
KEYS = harness.scaled(1000, 20)
KEY_MILLISECONDS = 16
FRAME_MILLISECONDS = 16
PAINTINGS_A_SECOND = 1  # as often as the log is looked at

TITLE = "The log window while its log grows"
INTRODUCTION = f"""\
Offscreen. Feeding a window of {LINES} lines, in batches: computing time of the main thread for each
line, reading the file and painting included, medians of {ROUNDS} processes by turns; beside a
`QPlainTextEdit` with a bound on its blocks and a `QListView` over a ring of lines, which are given
their lines without a file. Flood: another thread writes 100 MB a second; for {PHASE_MILLISECONDS} ms
each the window is watched and closed, then {KEYS} keys are typed into the filter at random times, from
the key to the painted field.

Bars: {MOST_MICROSECONDS[500]} µs a line in batches of 500 and {MOST_MICROSECONDS[1]} µs one by one; one painting a
batch; under the flood one painting each time the log is looked at and at most one in
{FRAME_MILLISECONDS} ms, while it is closed none and no wake-up; 99 of 100 keys seen within
{KEY_MILLISECONDS} ms.
"""


def feeding(programs, rows, misses):
    for batch, total in BATCHES.items():
        commands = [[str(programs / name), *mode, str(total), str(batch)]
                    for name, *mode in (("append",), ("append_reference", "text"),
                                        ("append_reference", "list"))]
        runs = harness.all_by_turns(commands, ROUNDS)
        counts = {tuple(numbers[:2]) for some in runs for _, numbers in some}
        harness.expect("lines and paintings", counts, {(LINES, total // batch)})
        figures = [harness.Figure([harness.Figure(numbers[2:]).median / batch
                                   for _, numbers in some]) for some in runs]
        rows.append([f"a line, in batches of {batch}", *(figure.precise() for figure in figures)])
        if figures[0].median > MOST_MICROSECONDS[batch] * 1e3:
            misses.append(f"a line, in batches of {batch}")


def flood(programs, rows, misses):
    _, (speed, watched, closed, wake_ups, gap, *keys) = harness.run(
        [str(programs / "log_flood"), str(PHASE_MILLISECONDS), str(KEYS)])
    harness.expect("paintings and wake-ups while closed", (closed, wake_ups), (0, 0))
    harness.expect("keys", len(keys), KEYS)
    slowest = sorted(keys)[len(keys) * 99 // 100]
    seconds = PHASE_MILLISECONDS / 1e3
    rows += [[f"flood of {speed} MiB/s, paintings in {seconds:.0f} s", watched, "", ""],
             ["shortest time between two", f"{gap / 1e6:.0f} ms" if watched > 1 else "", "", ""],
             ["a key in the filter", harness.Figure(keys), "", ""],
             ["99 of 100 keys within", f"{slowest / 1e6:.1f} ms", "", ""]]
    if not 0 < watched <= PAINTINGS_A_SECOND * seconds:
        misses.append("one painting for each look at the log")
    if gap < FRAME_MILLISECONDS * 1e6:
        misses.append("one painting a frame")
    if slowest > KEY_MILLISECONDS * 1e6:
        misses.append("keys under the flood")


def main(build):
    rows, misses = [], []
    with tempfile.TemporaryDirectory(dir=build) as folder:
        os.environ.update(QT_QPA_PLATFORM="offscreen", XDG_RUNTIME_DIR=folder, TMPDIR=folder,
                          QT_LOGGING_RULES="*=false")
        for part in (feeding, flood):
            part(build / "bin", rows, misses)
    heads = ["what", "ours", "plain-text editor", "list over a ring"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
