"""What a program holds while it runs, looked at again and again, and whether that stays flat."""

import os
import time

from .bus_view import connections_of

# What Valdorn holds for a living child: its process, the pipe it talks through, its log.
DESCRIPTORS_OF_CHILD = 3
# A child that has ended is seen dead by anybody who looks before its parent has; on a busy machine
# that may be a while, but not two seconds.
LAST_RITES = 2.0
DEBUG = "org.freedesktop.DBus.Debug.Stats"


def _lines_of(pid, name):
    with open(f"/proc/{pid}/{name}") as file:
        return dict(line.split(":", 1) for line in file if ":" in line)


class Samples:
    """Of one program. `take` costs some milliseconds; each sample becomes a line of the file at
    `path`, which is there whatever happens later."""

    def __init__(self, program, bus, x_view, path):
        self._program = program
        self._bus = bus
        self._daemon = bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                      introspect=False)
        self._x = x_view
        self._begun = time.monotonic()
        self._dead_since = {}
        self._names = []
        os.makedirs(os.path.dirname(path), exist_ok=True)
        self._file = open(path, "w")
        self.taken = []

    def seconds(self):
        """For how long it is being looked at."""
        return time.monotonic() - self._begun

    def take(self, doing):
        """`doing` says what is going on."""
        sample = {"seconds": round(self.seconds(), 2), "doing": doing,
                  **self._of_process(),
                  **self._on_display(), **self._on_bus()}
        if not self.taken:
            print(*sample, sep="\t", file=self._file)
        print(*sample.values(), sep="\t", file=self._file, flush=True)
        self.taken.append(sample)

    def _of_process(self):
        pid = self._program.process.pid
        status = _lines_of(pid, "status")
        children = len(self._program.children())
        descriptors = len(os.listdir(f"/proc/{pid}/fd"))
        return {"descriptors": descriptors, "children": children,
                "descriptors of its own": descriptors - DESCRIPTORS_OF_CHILD * children,
                "threads": int(status["Threads"]), "zombies": self._unburied(),
                "resident KiB": int(status["VmRSS"].split()[0]),
                "anonymous KiB": int(status["RssAnon"].split()[0])}

    def _unburied(self):
        """Children that have been dead for too long."""
        now = time.monotonic()
        self._dead_since = {pid: self._dead_since.get(pid, now) for pid in self._program.zombies()}
        return sum(now - since > LAST_RITES for since in self._dead_since.values())

    def _on_display(self):
        counts = self._x.resources(self._program.process.pid)
        windows, pictures = counts.pop("WINDOW", 0), counts.pop("PIXMAP", 0)
        return {"windows": windows, "pixmaps": pictures, "other X": sum(counts.values())}

    def _on_bus(self):
        self._names = self._names or list(connections_of(self._bus, self._program.process.pid))
        told = [self._daemon.GetConnectionStats(name, dbus_interface=DEBUG, timeout=10)
                for name in self._names]
        return {"match rules": sum(int(stats["MatchRules"]) for stats in told),
                "bus names": sum(int(stats["BusNames"]) for stats in told)}

    def close(self):
        self._file.close()


def _third(samples, number):
    """The first, second or last third in time."""
    begin, end = samples[0]["seconds"], samples[-1]["seconds"]
    length = (end - begin) / 3
    return [sample for sample in samples
            if begin + number * length <= sample["seconds"] <= begin + (number + 1) * length]


def lows(samples, column):
    """The least in the first third and in the last: what comes and goes is away at times, also on a
    machine that is too busy for many samples; what has leaked is always there."""
    return tuple(min(sample[column] for sample in _third(samples, number)) for number in (0, 2))


def faults(samples, allowed):
    """What is not flat, in words. `samples` are those after the warm-up. `allowed`: by how much the
    least of the last third may be greater than that of the first, by column."""
    found = []
    for column, most in allowed.items():
        first, last = lows(samples, column)
        if last - first > most:
            found.append(f"{column}: from {first:g} to {last:g}, {most:g} more allowed")
    unburied = max(sample["zombies"] for sample in samples)
    if unburied:
        found.append(f"zombies: {unburied}, none allowed")
    return found


def summary(samples):
    """A table of least and greatest, and of the least in the first and the last third."""
    lines = [f"{'':24}{'least':>10}{'greatest':>10}{'at first':>10}{'at last':>10}"]
    for column in samples[0]:
        if column not in ("seconds", "doing"):
            values = [sample[column] for sample in samples]
            first, last = lows(samples, column)
            lines.append(f"{column:24}{min(values):>10}{max(values):>10}{first:>10g}{last:>10g}")
    return "\n".join(lines)
