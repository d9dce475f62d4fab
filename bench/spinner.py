#!/usr/bin/env python3
"""What the turning spinner costs us, the bus and real panels: spinner.py BUILD-FOLDER [--short].

Beside a minimal program whose icon turns as fast.
"""

import contextlib
import struct
import subprocess
import sys
import tempfile
import time

from support import harness, processes
from support.bars import OURS, REFERENCE, RUNNERS, home_with_runners
from support.e2e import desktop, panel, program, tray, waiting

ROUNDS = harness.rounds(3)
SECONDS = harness.scaled(10, 1)
SETTLING = harness.scaled(3, 0.5)  # seconds
FRAMES_BAR = 8  # a second
BYTES_BAR = 16 * 1024  # a frame
COMPUTING_BAR = 0.01  # of a core

PANELS = {"xfce4-panel": panel.Panel, **harness.scaled({"lxqt-panel": panel.LxqtPanel}, {})}
BUILDING = """declare
line time="2026-11-21T08:00:00Z" level=info msg="Running job with maxParallel=1 for 1 matrix combinations"
"""

TITLE = "The spinner while a job runs"
INTRODUCTION = f"""\
With real panels on a virtual display and a bus of its own. {ROUNDS} rounds of {SECONDS} s, by turns. A frame is
a signal `NewIcon`; all bytes on the bus are counted, those of the panel's questions among them.
Computing time of program and panel, as a share of a core, in as many further seconds in which nobody
listens on the bus. Ours supervises {RUNNERS} runners that build without a word; the minimal program sets the
icon of a `QSystemTrayIcon` 5 times a second, in the five usual sizes.

Bars: at most {FRAMES_BAR} frames a second and {BYTES_BAR // 1024} KiB a frame; program and panel each below {COMPUTING_BAR:.0%} of a
core.
"""


class Monitor:
    """Listens to all on the bus of a desktop."""

    def __init__(self, place):
        self._file = tempfile.TemporaryFile()
        self._process = subprocess.Popen(["dbus-monitor", "--session", "--pcap"],
                                         env=place.environment, stdout=self._file,
                                         stderr=subprocess.DEVNULL)

    def counts(self):
        """Ends it: how many frames and how many bytes it has heard."""
        desktop.end_process(self._process)
        self._file.seek(0)
        messages = list(_messages(self._file.read()))
        self._file.close()
        return sum(map(_is_frame, messages)), sum(map(len, messages))


def _messages(capture):
    at = 24  # behind the head of the file
    while at + 16 <= len(capture):
        length, = struct.unpack_from("<I", capture, at + 8)
        yield capture[at + 16:at + 16 + length]
        at += 16 + length


def _is_frame(message):
    signal = 4
    return message[1] == signal and b"\0NewIcon\0" in message


def has_host(connection):
    """Qt looks for a tray only once, so there has to be one by then."""
    if not connection.name_has_owner(tray.WATCHER):
        return False
    watcher = connection.get_object(tray.WATCHER, "/StatusNotifierWatcher", introspect=False)
    return watcher.Get(tray.WATCHER, "IsStatusNotifierHostRegistered",
                       dbus_interface=tray.PROPERTIES)


class Candidate:
    """A program in a panel, both on a desktop of their own."""

    def __init__(self, stack, name, command, make_home, make_panel):
        self.name = name
        self._place = stack.enter_context(contextlib.closing(desktop.Desktop(
            window_manager=desktop.usual_window_manager)))
        self._panel = stack.enter_context(contextlib.closing(make_panel(self._place)))
        home = stack.enter_context(make_home())
        connection = self._place.bus.connect()
        waiting.wait_until(lambda: has_host(connection), "a panel with a tray")
        self._process = subprocess.Popen(
            command, env=program.environment(self._place, home), stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        stack.callback(desktop.end_process, self._process)
        self._panel.item()
        self._found = []

    def measure(self):
        self._found.append((*self._traffic(), *self._computing()))

    def _traffic(self):
        """Frames a second, bytes a frame."""
        monitor = Monitor(self._place)
        waiting.spend(SECONDS)
        frames, size = monitor.counts()
        harness.expect(f"{self.name} turns", frames > SECONDS, True)
        return frames / SECONDS, size / frames

    def _computing(self):
        """The shares of a core that the program and the panel take."""
        def spent():
            return (time.monotonic(), processes.computing([self._process.pid]),
                    processes.computing(processes.family(self._panel.process.pid)))

        before = spent()
        waiting.spend(SECONDS)
        elapsed, *shares = (after - start for start, after in zip(before, spent()))
        return [share / elapsed for share in shares]

    def figures(self):
        return [harness.Figure(values) for values in zip(*self._found)]


def write(figure, form):
    return "{} ({} to {})".format(*map(form, (figure.median, figure.lowest, figure.highest)))


def row(name, candidate):
    frames, size, ours, panels = candidate.figures()
    return [name, candidate.name, write(frames, "{:.1f}".format),
            write(size, lambda size: f"{size / 1024:.1f} KiB"),
            write(ours, "{:.2%}".format), write(panels, "{:.2%}".format)]


def misses_of(name, candidate):
    medians = [figure.median for figure in candidate.figures()]
    bars = [FRAMES_BAR, BYTES_BAR, COMPUTING_BAR, COMPUTING_BAR]
    kinds = ["frames a second", "bytes a frame", "computing of ours", "computing of the panel"]
    return [f"{kind}, {name}" for kind, median, bar in zip(kinds, medians, bars) if median > bar]


def empty_home():
    return contextlib.closing(program.Home())


def in_panel(make_panel):
    with contextlib.ExitStack() as stack:
        candidates = [
            Candidate(stack, "ours", OURS, lambda: home_with_runners(BUILDING), make_panel),
            Candidate(stack, "minimal program", [*REFERENCE, "spinner"], empty_home, make_panel)]
        waiting.spend(SETTLING)
        for _ in range(ROUNDS):
            for candidate in candidates:
                candidate.measure()
    return candidates


def main():
    rows, misses = [], []
    for name, make_panel in PANELS.items():
        ours, reference = in_panel(make_panel)
        rows += [row(name, ours), row(name, reference)]
        misses += misses_of(name, ours)
    heads = ["panel", "program", "frames a second", "on the bus a frame", "program", "panel"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main())
