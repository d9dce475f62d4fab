"""What the kernel counts of a process."""

import os
import pathlib
import re

from . import harness

_TICKS = os.sysconf("SC_CLK_TCK")


class Memory(harness.Figure):
    """In bytes."""

    def __str__(self):
        median, lowest, highest = (value / (1 << 20) for value in (
            self.median, self.lowest, self.highest))
        return f"{median:.1f} MiB ({lowest:.1f} to {highest:.1f})"


def memory(pid):
    """Resident and anonymous memory in bytes."""
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return tuple(1024 * int(re.search(rf"^{name}:\s*(\d+)", status, re.MULTILINE)[1])
                 for name in ("VmRSS", "RssAnon"))


def switches(pid):
    """Context switches so far by thread, wanted and unwanted ones."""
    found = {}
    for thread in pathlib.Path(f"/proc/{pid}/task").iterdir():
        status = (thread / "status").read_text()
        counts = re.findall(r"^(?:non)?voluntary_ctxt_switches:\s*(\d+)", status, re.MULTILINE)
        found[thread.name] = sum(map(int, counts))
    return found


def switches_between(before, after):
    """Of all threads; one that has come or gone in the meantime counts as what it has left."""
    return sum(after.get(thread, before.get(thread, 0) + 1) - before.get(thread, 0)
               for thread in {*before, *after})


def _stat(pid):
    """The fields of /proc/PID/stat from the state on, or nothing."""
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    except (FileNotFoundError, ProcessLookupError):
        return None


def computing(pids):
    """Seconds of computing time that these have taken so far."""
    stats = [_stat(pid) for pid in pids]
    return sum(int(stat[11]) + int(stat[12]) for stat in stats if stat) / _TICKS


def family(pid):
    """A process and its descendants that live."""
    stats = {int(name): _stat(name) for name in os.listdir("/proc") if name.isdigit()}
    found, before = {pid}, 0
    while len(found) > before:
        before = len(found)
        found |= {number for number, stat in stats.items() if stat and int(stat[1]) in found}
    return found
