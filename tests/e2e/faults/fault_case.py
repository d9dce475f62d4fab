"""What the tests of faults have in common: in files and folders, kills, stops, clocks."""

import os
import stat
import subprocess

from support.accessibility import Accessibility
from support.desktop import Desktop, usual_window_manager
from support.settings_case import SettingsCase
from support.skipping import skip
from support.waiting import spend, wait_until

CONNECTED = "Connected — idle"
BLOCKED = "No local-network access"
BUILDING = "Building a job"
STARTING = "Starting…"
STOPPED = "Stopped"
NOT_REGISTERED = "Not registered"

RELAUNCH_SECONDS = 5.0
EARLY_SECONDS = 0.1  # what the clocks of files may be behind
LATE_SECONDS = 5.0  # what it may take a busy computer beyond that

# Where no server is, for a program that asks for news.
NOBODY = "http://127.0.0.1:9"

# A mount namespace of one's own, whoever one is.
OWN_SPACE = ("unshare", "--map-current-user", "--keep-caps", "--mount")
# The superuser may read and write whatever its mode, unless it gives that up.
AS_ANYBODY = ("setpriv", "--bounding-set=-all", "--inh-caps=-all") if os.geteuid() == 0 else ()


def in_own_space(preparation):
    """The command in front of a program for which a few lines of shell have mounted something."""
    return (*OWN_SPACE, "sh", "-c", preparation + 'exec "$@" 3<&-', "sh")


def require_own_space():
    if subprocess.run([*OWN_SPACE, "true"], capture_output=True).returncode:
        skip("no file systems of one's own here")


def content(path):
    with open(path, encoding="utf-8", newline="") as file:
        return file.read()


def make_fifo(path):
    """In place of what stands there, if anything does."""
    if os.path.exists(path):
        os.remove(path)
    os.mkfifo(path)


def kind_of(path):
    mode = os.lstat(path).st_mode
    kinds = {stat.S_ISFIFO: "pipe", stat.S_ISDIR: "folder", stat.S_ISLNK: "link",
             stat.S_ISREG: "file"}
    return next(name for is_one, name in kinds.items() if is_one(mode))


class FaultCase(SettingsCase):
    """A desktop for each test, so that tests can run side by side. Without windows there is no
    display."""

    has_windows = False

    @classmethod
    def setUpClass(cls):
        pass

    def setUp(self):
        super().setUp()
        self.desktop = Desktop(display=self.has_windows,
                               window_manager=self.has_windows and usual_window_manager)
        self.addCleanup(self.desktop.close)
        if self.has_windows:
            self.reader = Accessibility(self.desktop)
            self.addCleanup(self.reader.close)
        else:
            self.desktop.environment["QT_QPA_PLATFORM"] = "offscreen"

    def start_program(self, **options):
        """With whatever the home has."""
        self.program, self.item = self.start_with_item(**options)
        self.menu = self.item.menu()

    def wait_for_status(self, status, seconds=20.0):
        wait_until(lambda: self.status() == status, f"{status!r} in the menu", seconds)

    def status(self):
        """Of the fleet, however many there are in it."""
        line = next(label for label in self.menu.labels() if label.startswith("Status: "))
        return line.removeprefix("Status: ").partition(" · ")[0]

    def wait_for_relaunch(self, puppets, launches):
        wait_until(lambda: len(puppets.pids()) == launches, f"launch {launches}",
                   RELAUNCH_SECONDS + LATE_SECONDS)

    def stop_runner(self):
        """The only one; its end has been seen by Valdorn as well."""
        self.menu.choose("Stop Runner")
        self.wait_for_status(STOPPED)
        wait_until(lambda: not self.program.children() and not self.program.zombies(), "its end")
        spend(0.5)

    def quit(self):
        """As the menu does it; there is to be nothing that hinders it."""
        self.menu.choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(5), 0)
