#!/usr/bin/env python3
"""What the log window costs as a whole: log_window.py BUILD-FOLDER [--short].

Opening it beside a minimal viewer, and typing into its filter; bench/log_feeding.py feeds it.
"""

import os
import pathlib
import shutil
import sys
import tempfile

from support import harness
from support.logs import make_log

ROUNDS = harness.rounds(25)
LARGE = harness.scaled(4 << 30, 16 << 20)
LINES = 5000
KEY_MILLISECONDS = 8
QUERY = "4711 do"
SAME = 1.05

TITLE = "The log window as a whole"
INTRODUCTION = f"""\
Offscreen, on one thread. Opening: whole processes by turns, {ROUNDS} rounds, the two sizes in turns as
well, beside a minimal viewer (a `QPlainTextEdit` with the last {LINES} lines, neither coloured nor
filtered). Typing: "{QUERY}", letter by letter and back, over {LINES} lines of 200 characters of which
each letter keeps fewer; from the key to the painted rows.

Bars: opening at most what the minimal viewer takes, the same for both sizes (within {SAME}); at most
32 MiB more than the idle process; {KEY_MILLISECONDS} ms a key.
"""


def command(build, name, *arguments):
    return [str(build / "bin" / name), *map(str, arguments)]


def opening(build, folder, rows, misses):
    logs = {"1 MiB": make_log(folder / "small", 1 << 20), "4 GiB": make_log(folder / "large", LARGE)}
    # Both logs are there before either is opened, or one would be opened by a calmer machine.
    runs = harness.all_by_turns([command(build, name, log) for log in logs.values()
                                 for name in ("open_log", "open_log_reference")], ROUNDS)
    harness.expect("lines", {numbers[0] for some in runs for _, numbers in some}, {LINES})
    figures = [harness.Figure([took for took, _ in some]) for some in runs]
    growths = [max(numbers[1] for _, numbers in some) / (1 << 20) for some in runs]
    for number, size in enumerate(logs):
        pair = slice(2 * number, 2 * number + 2)
        (ours, reference), growth = figures[pair], growths[pair]
        ratio = ours.median / reference.median
        rows.append([f"open {size}", ours, reference, f"{ratio:.2f}"])
        rows.append([f"memory of {size}", *(f"{each:.1f} MiB" for each in growth), ""])
        if ratio > 1:
            misses.append(f"opening {size}")
        if growth[0] > 32:
            misses.append(f"memory of {size}")
    ratio = figures[2].median / figures[0].median
    rows.append(["open 4 GiB : 1 MiB", f"{ratio:.2f}", "", ""])
    if ratio > SAME:
        misses.append("the same for both sizes")
    if not harness.SHORT:
        opening_of_peers(logs["4 GiB"], rows)
    for log in logs.values():
        log.unlink()


def opening_of_peers(log, rows):
    """How long another viewer takes until it has read the log, once: it reads all of it."""
    lnav = shutil.which("lnav")
    if not lnav:
        return rows.append(["open 4 GiB with lnav", "", "not installed", ""])
    took, _ = harness.run(["/usr/bin/env", f"HOME={log.parent}", lnav, "-n", "-N", "-q", str(log)])
    rows.append(["open 4 GiB with lnav (one run, no window)", "", f"{took / 1e9:.1f} s", ""])


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
        for part in (opening, typing):
            part(build, pathlib.Path(folder), rows, misses)
    heads = ["what", "ours", "minimal viewer", "ratio"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
