"""What all benchmarks share: running two programs by turns, figures, and the table of results.

With --short a benchmark only shows that its programs still work: few rounds, small sizes, and no
figure is judged or kept; a program that fails or counts wrongly fails it all the same.
"""

import os
import pathlib
import platform
import re
import statistics
import sys
import tempfile
import time

RESULTS = pathlib.Path(__file__).resolve().parent.parent / "results.md"
SHORT = "--short" in sys.argv[1:]
SHORT_ROUNDS = 2


def scaled(full, short):
    """A size, a peer, whatever costs time: as it is measured, and in the short form."""
    return short if SHORT else full


def rounds(full):
    return scaled(full, min(full, SHORT_ROUNDS))


def build_folder():
    """Where the programs were built: the script's one argument."""
    folders = [argument for argument in sys.argv[1:] if argument != "--short"]
    if len(folders) != 1:
        raise SystemExit(f"usage: {os.path.basename(sys.argv[0])} BUILD-FOLDER [--short]")
    return pathlib.Path(folders[0]).resolve()


def expect(what, found, wanted):
    """What a program counts is no matter of speed: when it is wrong, there is nothing to measure."""
    if found != wanted:
        raise SystemExit(f"{what}: {found}, not {wanted}")


def run(arguments):
    """Runs a program from fork to exit; returns its nanoseconds and the numbers that it printed."""
    with tempfile.TemporaryFile() as output:
        actions = [(os.POSIX_SPAWN_DUP2, output.fileno(), 1)]
        begin = time.perf_counter_ns()
        child = os.posix_spawn(arguments[0], arguments, os.environ, file_actions=actions)
        _, status = os.waitpid(child, 0)
        took = time.perf_counter_ns() - begin
        if status != 0:
            raise SystemExit(f"{os.path.basename(arguments[0])} failed: wait status {status}")
        output.seek(0)
        return took, [int(number) for number in output.read().split()]


def all_by_turns(commands, rounds):
    """Runs all as A B C A B C, after a few rounds that do not count; returns each one's runs."""
    results = [[] for _ in commands]
    for number in range(scaled(-3, 0), rounds):
        for arguments, runs in zip(commands, results):
            result = run(arguments)
            if number >= 0:
                runs.append(result)
    return results


def by_turns(ours, reference, rounds):
    """The same for two."""
    return all_by_turns((ours, reference), rounds)


class Figure:
    """Measured times in nanoseconds."""

    def __init__(self, times):
        self.median = statistics.median(times)
        self.lowest = min(times)
        self.highest = max(times)

    def __str__(self):
        return f"{self.median / 1e3:.0f} µs ({self.lowest / 1e3:.0f} to {self.highest / 1e3:.0f})"

    def precise(self):
        return f"{self.median / 1e3:.2f} µs ({self.lowest / 1e3:.2f} to {self.highest / 1e3:.2f})"


def table(heads, rows):
    lines = ["| " + " | ".join(heads) + " |", "|" + "---|" * len(heads)]
    return "\n".join(lines + ["| " + " | ".join(map(str, row)) + " |" for row in rows])


def machine():
    """One line that names what was measured on, and nobody."""
    def first(path, pattern):
        found = re.search(pattern, pathlib.Path(path).read_text(), re.MULTILINE)
        return found.group(1).strip() if found else "unknown"

    memory = int(first("/proc/meminfo", r"^MemTotal:\s*(\d+)")) / 1024 / 1024
    return (f"{first('/proc/cpuinfo', r'^model name.*?:(.*)$')}, {os.cpu_count()} cores, "
            f"{memory:.0f} GiB of memory, {first('/etc/os-release', r'^PRETTY_NAME=.(.*?).$')}, "
            f"Linux {platform.release().split('-')[0]}")


def publish(title, text):
    """Prints a benchmark's results and puts them in place of its earlier ones."""
    section = f"## {title}\n\nMeasured on {machine()}.\n\n{text}\n"
    print(section)
    head = "# Benchmarks\n\nWritten by `./dev bench`. Times are medians (lowest to highest).\n"
    before = RESULTS.read_text() if RESULTS.exists() else head
    sections = [part for part in re.split(r"^(?=## )", before, flags=re.MULTILINE)]
    kept = [part.rstrip() + "\n" for part in sections if not part.startswith(f"## {title}\n")]
    RESULTS.write_text("\n".join([kept[0], *sorted([*kept[1:], section])]))


def publish_table(title, introduction, heads, rows, misses):
    """The same for a table and what in it misses its bar; returns the script's exit status."""
    if SHORT:
        print(f"{title}, in short form\n\n{table(heads, rows)}\n")
        return 0
    verdict = f"**The bar is missed: {'; '.join(misses)}.**" if misses else "The bars are met."
    publish(title, f"{introduction}\n{table(heads, rows)}\n\n{verdict}")
    return 1 if misses else 0
