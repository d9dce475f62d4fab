"""Programs in a status bar, on a desktop where nothing else happens."""

import contextlib
import subprocess
import time

from . import harness
from .e2e import desktop, program, tray, waiting

from gi.repository import GLib  # which needs the Python that the line above has seen to

OURS = [str(harness.build_folder() / "bin/valdorn")]
REFERENCE = [str(harness.build_folder() / "bin/tray_reference")]
RUNNERS = 3
PATIENCE = 20  # seconds
NOBODY = "http://127.0.0.1:9"  # what is measured asks nobody outside for anything


@contextlib.contextmanager
def home_with_runners(script="declare\n"):
    """A home whose runners are registered; each daemon plays the script and is quiet then."""
    home = program.Home()
    with contextlib.closing(home):
        home.install_runner()
        home.add_runners(*[{}] * RUNNERS, script=script)
        home.set_default("hasConnected", "true")
        yield home


class Bar:
    """A desktop of its own whose status bar is this process."""

    def __init__(self, **options):
        self.desktop = desktop.Desktop(**options)
        self._host = tray.TrayHost(self.desktop.bus)

    @contextlib.contextmanager
    def running(self, command, home):
        """The program, from its start to the end of the block, and what the bar has of it."""
        environment = program.environment(self.desktop, home, VALDORN_RELEASE_SERVICE=NOBODY)
        before = len(self._host.items)
        begin = time.perf_counter_ns()
        process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            answer_until(lambda: len(self._host.items) > before, process)
            yield Shown(process, time.perf_counter_ns() - begin, self._host.items[-1])
        finally:
            desktop.end_process(process)

    def close(self):
        self._host.close()
        self.desktop.close()


class Shown:
    """A program whose item the bar has, and the nanoseconds from its start until then."""

    def __init__(self, process, took, item):
        self.process = process
        self.took = took
        self.item = item

    def settle(self, seconds):
        """Lets it come to rest, with what a bar reads of an item in the middle."""
        waiting.spend(seconds / 2)
        self.item.pixmaps()
        self.item.menu().entries()
        waiting.spend(seconds / 2)


def answer_until(condition, process):
    """Answers what comes over the bus, at once, until that is so."""
    context = GLib.MainContext.default()
    over = []
    alarm = GLib.timeout_add_seconds(PATIENCE, lambda: over.append(True) or False)
    while not condition():
        if over or process.poll() is not None:
            raise SystemExit(f"{process.args[0]}: no status item, exit status {process.returncode}")
        context.iteration(True)
    GLib.source_remove(alarm)
