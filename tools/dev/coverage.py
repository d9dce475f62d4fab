"""Tells from clang's coverage of the core (llvm-cov export) how much of each folder's lines and
branches the tests reach, and which branches they do not. Fails when it is too little.

A branch is one outcome of one condition as it stands in the source. Clang counts no others: none
for exceptions. Left out is also what it makes up itself: what is decided when it is compiled (while
(true)), the comparisons of a defaulted operator, a switch that none of its cases takes (a warning
sees to it that an enumeration has all), and what a macro brings along: assertions are there not to
fail. Code of a template counts as reached when any of its instances is."""

import bisect
import collections
import glob
import json
import os
import sys
from typing import NamedTuple

LEAST_BRANCHES = 95  # of a hundred, for the core as a whole

_FOLDERS = ("app", "fleet", "logs", "platform", "runner", "text", "update")
_BRANCH_REGION = 4


class Place(NamedTuple):
    line: int
    column: int


class Share:
    """So many of so many."""

    def __init__(self, reached=0, all_=0):
        self.reached = reached
        self.all = all_

    def __add__(self, other):
        return Share(self.reached + other.reached, self.all + other.all)

    def percent(self):
        return 100 * self.reached / self.all if self.all else 100.0

    def __str__(self):
        return f"{self.percent():6.1f} % ({self.reached} of {self.all})"


class File:
    """The coverage of one file of the sources, out of the exported JSON."""

    def __init__(self, data, root):
        self.name = os.path.relpath(os.path.normpath(data["filename"]), root)
        lines = data["summary"]["lines"]
        self.lines = Share(lines["covered"], lines["count"])
        self._segments = data["segments"]
        self._starts = [Place(*segment[:2]) for segment in self._segments]
        self._counts = collections.defaultdict(lambda: (0, 0))
        for line, column, _, _, true, false, _, _, kind in data["branches"]:
            if kind == _BRANCH_REGION:
                before = self._counts[Place(line, column)]
                self._counts[Place(line, column)] = (before[0] + true, before[1] + false)
        with open(os.path.join(root, self.name), encoding="utf-8") as source:
            self._source = source.read().splitlines()
        self._counts = {place: counts for place, counts in self._counts.items()
                        if not self._is_decided(place, counts) and not self._is_made_up(place)}

    def _is_decided(self, place, counts):
        """Whether the compiler knows the outcome: passed, and yet counted nowhere."""
        at = bisect.bisect_right(self._starts, place) - 1
        return counts == (0, 0) and at >= 0 and self._segments[at][2] > 0

    def _is_made_up(self, place):
        code = self._source[place.line - 1]
        return (code.endswith(" = default;")
                or code[:place.column - 1].lstrip() == "switch (")

    @property
    def branches(self):
        reached = sum((true > 0) + (false > 0) for true, false in self._counts.values())
        return Share(reached, 2 * len(self._counts))

    def missing(self):
        for place, (true, false) in sorted(self._counts.items()):
            for outcome, count in (("true", true), ("false", false)):
                if not count:
                    yield f"{self.name}:{place.line}:{place.column}: never {outcome}"


def folder_of(name):
    return name.split(os.sep)[1]


def is_core(name):
    """The core's own folders; of the platform, what is pure."""
    parts = name.split(os.sep)
    return (len(parts) > 2 and parts[0] == "src" and parts[1] in _FOLDERS
            and (parts[1] != "platform" or len(parts) == 3))


def expect_all(files, root):
    """A source that nothing of the tests was linked with would simply be missing."""
    known = {file.name for file in files}
    sources = [os.path.relpath(path, root)
               for path in glob.glob(os.path.join(root, "src/**/*.cpp"), recursive=True)]
    unknown = sorted(name for name in sources if is_core(name) and name not in known)
    if unknown:
        sys.exit("./dev coverage: no test is linked with " + ", ".join(unknown))


def print_row(name, files):
    """Returns how many branches are reached."""
    lines = sum((file.lines for file in files), Share())
    branches = sum((file.branches for file in files), Share())
    print(f"{name:<14}{lines!s:<26}{branches}")
    return branches


def main(export):
    root = os.getcwd()
    with open(export, encoding="utf-8") as file:
        data = json.load(file)["data"][0]["files"]
    files = [file for file in (File(entry, root) for entry in data) if is_core(file.name)]
    expect_all(files, root)
    for file in files:
        for line in file.missing():
            print(line)
    print(f"\n{'folder':<14}{'lines':<26}branches")
    for folder in _FOLDERS:
        print_row(f"src/{folder}", [file for file in files if folder_of(file.name) == folder])
    total = print_row("all", files)
    if total.percent() < LEAST_BRANCHES:
        print(f"\nToo few branches are reached: {LEAST_BRANCHES} % is the least.")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
