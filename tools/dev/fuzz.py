"""Runs the fuzz targets of a build folder for some seconds each, as many at a time as there are
processors, and tells what they did.

Beside the corpus of the repository, which is only read, each has one of its own in the build
folder, where it keeps what it makes up and goes on from the next time. A finding stays there too."""

import concurrent.futures
import glob
import os
import re
import subprocess
import sys
import tempfile
from typing import NamedTuple

_CORPUS = "tests/fuzz/corpus"
_DEFAULT_SECONDS = 60

# So long an input may take at the most: everything here is to be quick, but the clock goes on while a
# busy computer does something else, or stands still itself.
_SLOW_SECONDS = 150


class Outcome(NamedTuple):
    target: str
    status: int
    said: str

    def number(self, pattern):
        """The last number that it told like this."""
        found = re.findall(pattern, self.said)
        return int(found[-1]) if found else 0

    def row(self):
        executions = self.number(r"stat::number_of_executed_units: (\d+)")
        rate = self.number(r"stat::average_exec_per_sec: +(\d+)")
        edges = self.number(r" cov: (\d+)")
        all_edges = self.number(r"\((\d+) inline 8-bit counters\)")
        inputs = self.number(r" corp: (\d+)")
        share = 100 * edges // max(all_edges, 1)
        return (f"{self.target:<16}{executions:>12}{rate:>10}{edges:>9}{share:>6} %{inputs:>9}"
                f"  {'FINDING' if self.status else 'nothing found'}")


def targets(build):
    names = [os.path.basename(path) for path in glob.glob(os.path.join(build, "bin", "fuzz_*"))]
    return sorted(name.removeprefix("fuzz_") for name in names)


def run(build, target, seconds):
    own = os.path.join(build, "fuzzing", target)
    os.makedirs(own, exist_ok=True)
    command = [os.path.join(build, "bin", "fuzz_" + target), f"-max_total_time={seconds}",
               f"-timeout={_SLOW_SECONDS}", "-print_final_stats=1",
               f"-artifact_prefix={os.path.join(build, 'fuzzing')}/{target}-"]
    words = f"tests/fuzz/{target}.dict"
    if os.path.exists(words):
        command.append("-dict=" + words)
    # Files that are written are on a disk of memory where there is one: each is waited for.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="valdorn-fuzz.", dir=memory) as folder:
        done = subprocess.run([*command, own, os.path.join(_CORPUS, target)], text=True,
                              errors="replace", stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env={**os.environ, "TMPDIR": folder})
    return Outcome(target, done.returncode, done.stdout)


def main(build, seconds=_DEFAULT_SECONDS, *names):
    known = targets(build)
    for name in names:
        if name not in known:
            sys.exit(f'./dev fuzz: there is no target "{name}", but: {", ".join(known)}')
    print(f"{'target':<16}{'executions':>12}{'a second':>10}{'edges':>9}{'of all':>8}"
          f"{'inputs':>9}", flush=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        outcomes = []
        for outcome in pool.map(lambda name: run(build, name, seconds), names or known):
            outcomes.append(outcome)
            print(outcome.row(), flush=True)
    findings = [outcome for outcome in outcomes if outcome.status]
    for outcome in findings:
        print(f"\n{outcome.target}:\n{outcome.said[-6000:]}")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], *map(int, sys.argv[2:3]), *sys.argv[3:]))
