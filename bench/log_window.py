#!/usr/bin/env python3
"""What the log window costs as a whole: log_window.py BUILD-FOLDER [--short].

Opening it beside a minimal viewer, feeding it, and typing into its filter.
"""

import os
import pathlib
import sys
import tempfile

from support import harness
from support.logs import make_log

ROUNDS = harness.rounds(15)
LARGE = harness.scaled(4 << 30, 16 << 20)
LINES = 5000
BATCH = 500
APPENDED = harness.scaled(20_000, 2000)
MICROSECONDS_A_LINE = 15
KEY_MILLISECONDS = 8
QUERY = "4711 do"

TITLE = "The log window as a whole"
INTRODUCTION = f"""\
Offscreen, on one thread. Opening: whole processes by turns, {ROUNDS} rounds, beside a minimal viewer (a
`QPlainTextEdit` with the last {LINES} lines, neither coloured nor filtered). Feeding: {APPENDED} lines in
batches of {BATCH} on top of {LINES}, computing time of the main thread, painting included. Typing:
"{QUERY}", letter by letter and back, over {LINES} lines of 200 characters of which each letter keeps
fewer; from the key to the painted rows.

Bars: opening at most what the minimal viewer takes, the same for both sizes (within 1.25); at most
32 MiB more than the idle process; {MICROSECONDS_A_LINE} µs a line and one painting a batch; {KEY_MILLISECONDS} ms a key.
"""


def command(build, name, *arguments):
    return [str(build / "bin" / name), *map(str, arguments)]


def opening(build, folder, rows, misses):
    medians = []
    for name, size in {"1 MiB": 1 << 20, "4 GiB": LARGE}.items():
        log = make_log(folder / "log", size)
        ours, reference = harness.by_turns(command(build, "open_log", log),
                                           command(build, "open_log_reference", log), ROUNDS)
        log.unlink()
        harness.expect("lines", {numbers[0] for runs in (ours, reference) for _, numbers in runs},
                       {LINES})
        growths = [max(numbers[1] for _, numbers in runs) / (1 << 20) for runs in (ours, reference)]
        ours, reference = (harness.Figure([took for took, _ in runs]) for runs in (ours, reference))
        ratio = ours.median / reference.median
        medians.append(ours.median)
        rows.append([f"open {name}", ours, reference, f"{ratio:.2f}"])
        rows.append([f"memory of {name}", *(f"{growth:.1f} MiB" for growth in growths), ""])
        if ratio > 1:
            misses.append(f"opening {name}")
        if growths[0] > 32:
            misses.append(f"memory of {name}")
    if medians[1] > 1.25 * medians[0]:
        misses.append("the same for both sizes")


def feeding(build, folder, rows, misses):
    log = make_log(folder / "log", 1 << 20)
    _, (lines, paintings, *times) = harness.run(command(build, "append", log, APPENDED, BATCH))
    harness.expect("lines", lines, LINES)
    harness.expect("batches", len(times), APPENDED // BATCH)
    figure = harness.Figure([time / BATCH for time in times])
    rows.append([f"append, a line ({paintings} paintings for {len(times)} batches)",
                 figure.precise(), "", ""])
    if figure.median > MICROSECONDS_A_LINE * 1e3:
        misses.append("appending")
    if paintings > len(times):
        misses.append("one painting a batch")


def typing(build, folder, rows, misses):
    for kind, ending in {"plain": "", "with emoji": " \u2b50\U0001F426"}.items():
        log = folder / "log"
        text = "msg=\"step {} docker exec in the job container\" level=info, and so on; "
        lines = [(text.format(number) * 4)[:200] + ending for number in range(LINES)]
        log.write_text("\n".join(lines) + "\n", encoding="utf-8")
        _, (found, *times) = harness.run(command(build, "typing", log, QUERY, ROUNDS))
        harness.expect("lines", found, LINES)
        figure = harness.Figure(times)
        rows.append([f"a key in the filter, {kind}", figure, "", ""])
        if figure.median > KEY_MILLISECONDS * 1e6:
            misses.append(f"typing, {kind}")


def main(build):
    rows, misses = [], []
    with tempfile.TemporaryDirectory(dir=build) as folder:
        os.environ.update(QT_QPA_PLATFORM="offscreen", XDG_RUNTIME_DIR=folder,
                          QT_LOGGING_RULES="*=false")
        for part in (opening, feeding, typing):
            part(build, pathlib.Path(folder), rows, misses)
    heads = ["what", "ours", "minimal viewer", "ratio"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
