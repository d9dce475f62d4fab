#!/usr/bin/env python3
"""Whether the output of children that exit right after it is whole: last_words.py BUILD-FOLDER [--short].

This one has no reference: nothing may be lost.
"""

import sys

from support import harness

LAUNCHES = harness.scaled(200, 10)
SIZES = [1, 100, 4096, 65_535, 65_536, 65_537, 262_144, 1 << 20]

TITLE = "The last words of children"
INTRODUCTION = f"""\
{LAUNCHES} children of each size print a pattern and exit at once; a pipe holds 65536 bytes. What is
handed over until the exit is told is compared byte by byte.

Bar: no byte is lost.
"""


def main(build):
    _, numbers = harness.run([str(build / "bin/last_words"), str(LAUNCHES),
                              str(build / "bin/launched_child"), *map(str, SIZES)])
    harness.expect("sizes", len(numbers), 2 * len(SIZES))
    counts = list(zip(SIZES, numbers[::2], numbers[1::2]))
    rows = [[size, LAUNCHES, came, wanted - came] for size, came, wanted in counts]
    for size, came, wanted in counts:
        harness.expect(f"bytes of {LAUNCHES} children with {size} bytes each", came, wanted)
    heads = ["bytes of a child", "launches", "bytes", "lost"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, [])


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
