#!/usr/bin/env python3
"""What launching a child costs, and learning of its end: launching.py BUILD-FOLDER [--short].

Beside the ways that C and Qt have.
"""

import pathlib
import sys
import tempfile

from support import harness

ROUNDS = harness.rounds(11)
LAUNCHES = harness.scaled(60, 5)
FORKS = harness.scaled(10, 2)  # each of them copies the tables of all that memory
UNCOUNTED = harness.scaled(5, 0)  # the first launches of a process
MEBIBYTES = 200
LAUNCH_BAR = 1.05
EXIT_BAR = 1.5

TITLE = "Launching a child, and learning of its end"
INTRODUCTION = f"""\
From a process with {MEBIBYTES} MiB resident, one child after the other with 1 ms of rest between two. By
turns, {ROUNDS} rounds of {LAUNCHES - UNCOUNTED} launches. Ours gives a child what every runner gets: a pipe of its own that is
read, null as its input, its folder, default signals, a group of its own; the ways of C give it nothing.

- launch call: until the child runs its executable
- exit known: from the call until the end of `/bin/true` is known
- known after exit: a child notes the time and exits at once, 2 ms after its launch; from then on

Bars: exit known at most {LAUNCH_BAR} times `vfork`, `exec` and `waitpid` in C; known after exit at most
{EXIT_BAR} times a pidfd in an epoll in C.
"""

FORK = "C: fork, waitpid"
WAYS = {
    "ours": ["spawn"],
    "C: vfork, waitpid": ["spawn_reference", "vfork"],
    "C: posix_spawn, waitpid": ["spawn_reference", "posix_spawn"],
    "C: vfork, pidfd, epoll": ["spawn_reference", "pidfd"],
    FORK: ["spawn_reference", "fork"],
    "QProcess": ["spawn_qprocess"],
}


def launches_of(name):
    return FORKS if name == FORK else LAUNCHES


def measure(build, stamp, child):
    """Of each way the launches in their three figures."""
    commands = [[str(build / "bin" / program), *way, str(launches_of(name)), str(MEBIBYTES), stamp,
                 *child] for name, (program, *way) in WAYS.items()]
    found = {}
    for name, runs in zip(WAYS, harness.all_by_turns(commands, ROUNDS)):
        for _, numbers in runs:
            harness.expect("launches", len(numbers), 3 * launches_of(name))
        launches = [numbers[at:at + 3] for _, numbers in runs
                    for at in range(3 * UNCOUNTED, len(numbers), 3)]
        found[name] = [harness.Figure(figures) for figures in zip(*launches)]
    return found


def main(build):
    with tempfile.TemporaryDirectory(dir=build) as folder:
        stamp = str(pathlib.Path(folder) / "stamp")
        launching = measure(build, stamp, ["/bin/true"])
        ending = measure(build, stamp, [str(build / "bin/launched_child"), "stamp", stamp])
    least = launching["C: vfork, waitpid"][1].median
    told = ending["C: vfork, pidfd, epoll"][2].median
    rows = []
    for name in WAYS:
        call, known, _ = launching[name]
        after = ending[name][2]
        harness.expect(f"exit known before it happened, {name}", after.lowest < 0, False)
        rows.append([name, call, known, f"{known.median / least:.2f}",
                     after, f"{after.median / told:.2f}"])
    misses = []
    if launching["ours"][1].median > LAUNCH_BAR * least:
        misses.append("exit known")
    if ending["ours"][2].median > EXIT_BAR * told:
        misses.append("known after exit")
    heads = ["way", "launch call", "exit known", "of vfork", "known after exit", "of pidfd"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
