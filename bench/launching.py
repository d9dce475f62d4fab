#!/usr/bin/env python3
"""What launching a child costs, and learning of its end: launching.py BUILD-FOLDER [--short].

Beside the ways that C and Qt have.
"""

import pathlib
import statistics
import sys
import tempfile

from support import harness

ROUNDS = harness.rounds(41)
LAUNCHES = harness.scaled(25, 5)
FORKS = harness.scaled(7, 2)  # each of them copies the tables of all that memory
UNCOUNTED = harness.scaled(5, 0)  # the first launches of a process
MEBIBYTES = 200
CALL, KNOWN, AFTER = range(3)  # the figures of a launch
LAUNCH_BAR = 1.05
EXIT_BAR = 1.5

TITLE = "Launching a child, and learning of its end"
INTRODUCTION = f"""\
From a process with {MEBIBYTES} MiB resident, one child after the other with 1 ms of rest between two. By
turns, {ROUNDS} rounds of {LAUNCHES - UNCOUNTED} launches. Ours gives a child what every runner gets: a pipe of its own that is
read, null as its input, its folder, default signals, a group of its own; the ways of C give it
nothing, but for the one with a thread: a pipe that the thread reads, null and a group, which is the
least that whoever keeps daemons has to do. Ratios are those of the medians of each round, and of these the
median.

- launch call: until the child runs its executable
- exit known: from the call until the end of `/bin/true` is known
- known after exit: a child notes the time and exits at once, 2 ms after its launch; from then on

Bars: exit known at most {LAUNCH_BAR} times `vfork`, `exec` and `waitpid` in C; known after exit at most
{EXIT_BAR} times a pidfd in an epoll in C.
"""

FORK = "C: fork, waitpid"
OURS = "ours"
WAYS = {
    OURS: ["spawn", "--each"],
    "C: vfork, waitpid": ["spawn_reference", "vfork"],
    "C: posix_spawn, waitpid": ["spawn_reference", "posix_spawn"],
    "C: vfork, pidfd, epoll": ["spawn_reference", "pidfd"],
    "C: vfork, pidfd, epoll in a thread that reads": ["spawn_reader"],
    FORK: ["spawn_reference", "fork"],
    "QProcess": ["spawn_qprocess"],
}


def launches_of(name):
    return FORKS if name == FORK else LAUNCHES


class Way:
    """The launches of one way: in rounds, by turns with those of the others."""

    def __init__(self, rounds):
        self._rounds = rounds

    def figure(self, which):
        return harness.Figure([launch[which] for launches in self._rounds for launch in launches])

    def ratio(self, other, which):
        return harness.ratio_of_rounds(self._medians(which), other._medians(which))

    def _medians(self, which):
        return [statistics.median(launch[which] for launch in launches) for launches in self._rounds]


def launches_in(name, numbers):
    """Those that count, each in its three figures."""
    harness.expect("launches", len(numbers), 3 * launches_of(name))
    return [numbers[at:at + 3] for at in range(3 * UNCOUNTED, len(numbers), 3)]


def measure(build, stamp, child):
    commands = [[str(build / "bin" / program), *way, str(launches_of(name)), str(MEBIBYTES), stamp,
                 *child] for name, (program, *way) in WAYS.items()]
    return {name: Way([launches_in(name, numbers) for _, numbers in runs])
            for name, runs in zip(WAYS, harness.by_turns(commands, ROUNDS))}


def main(build):
    with tempfile.TemporaryDirectory(dir=build) as folder:
        stamp = str(pathlib.Path(folder) / "stamp")
        launching = measure(build, stamp, ["/bin/true"])
        ending = measure(build, stamp, [str(build / "bin/launched_child"), "stamp", stamp])
    harness.run([str(build / "bin/spawn"), "3", "/bin/true"])  # as a person would: it still works
    rows, ratios = [], {}
    for name in WAYS:
        after = ending[name].figure(AFTER)
        harness.expect(f"exit known after it happened, {name}", after.lowest > 0, True)
        ratios[name] = (launching[name].ratio(launching["C: vfork, waitpid"], KNOWN),
                        ending[name].ratio(ending["C: vfork, pidfd, epoll"], AFTER))
        known, told = (f"{ratio:.2f}" for ratio in ratios[name])
        rows.append([name, launching[name].figure(CALL), launching[name].figure(KNOWN), known,
                     after, told])
    misses = [what for what, ratio, bar in zip(("exit known", "known after exit"), ratios[OURS],
                                               (LAUNCH_BAR, EXIT_BAR)) if ratio > bar]
    heads = ["way", "launch call", "exit known", "of vfork", "known after exit", "of pidfd"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
