#!/usr/bin/env python3
"""What idle children cost the process that holds them: holding.py BUILD-FOLDER [--short].

Beside one epoll loop and beside a thread for each, in C.
"""

import contextlib
import subprocess
import sys
import time

from support import harness, processes

ROUNDS = harness.rounds(5)
MANY = harness.scaled(1000, 50)
SETTLING = harness.scaled(1.0, 0.1)  # seconds
WATCHED = harness.scaled(3.0, 0.2)  # seconds
MEMORY_BAR = 3 << 20
THREADS_BAR = 2

TITLE = "Holding idle children"
INTRODUCTION = f"""\
The process that has launched them and reads their output, {SETTLING:.0f} s after the last launch; wake-ups are
the context switches of all its threads within {WATCHED:.0f} s. By turns, {ROUNDS} rounds; the kernel's own memory for
pipes and processes is not counted.

Bars: {MANY} children at most {MEMORY_BAR >> 20} MiB and {THREADS_BAR} threads above one child, and no wake-up.
"""

WAYS = {
    "ours": ["hold"],
    "C: one loop": ["hold_reference", "loop"],
    "C: a thread each": ["hold_reference", "threads"],
}


@contextlib.contextmanager
def holder(build, way, count):
    program, *kind = way
    child = [str(build / "bin/launched_child"), "idle"]
    process = subprocess.Popen([str(build / "bin" / program), *kind, str(count), *child],
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    with process:
        harness.expect("first word", process.stdout.readline(), b"held\n")
        yield process.pid
    harness.expect("exit status", process.returncode, 0)


def hold(build, way, count):
    """Resident and anonymous memory, threads and wake-ups of one holder."""
    with holder(build, way, count) as pid:
        time.sleep(SETTLING)
        before = processes.switches(pid)
        time.sleep(WATCHED)
        after = processes.switches(pid)
        return (*processes.memory(pid), len(after), processes.switches_between(before, after))


def main(build):
    found = {(name, count): [] for name in WAYS for count in (1, MANY)}
    for _ in range(ROUNDS):
        for (name, count), runs in found.items():
            runs.append(hold(build, WAYS[name], count))
    rows, misses = [], []
    for name in WAYS:
        one, many = (list(zip(*found[name, count])) for count in (1, MANY))
        growth = [harness.Figure(sizes).median - harness.Figure(first).median
                  for first, sizes in zip(one[:2], many[:2])]
        for count, (resident, anonymous, threads, wakes) in ((1, one), (MANY, many)):
            rows.append([name, count, processes.Memory(resident), processes.Memory(anonymous),
                         max(threads), max(wakes)])
        rows.append([name, "growth", *(f"{bytes_ / (1 << 20):.2f} MiB" for bytes_ in growth),
                     max(many[2]) - min(one[2]), ""])
        if name != "ours":
            continue
        if max(growth) > MEMORY_BAR:
            misses.append("memory")
        if max(many[2]) - min(one[2]) > THREADS_BAR:
            misses.append("threads")
        if max(*one[3], *many[3]) > 0:
            misses.append("wake-ups")
    heads = ["way", "children", "resident", "anonymous", "threads", "wake-ups"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
