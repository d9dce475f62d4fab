"""`./dev run` on a machine without a display and without an act_runner."""

import os
import re
import shutil
import signal
import subprocess
import tempfile
import unittest

import dbus.bus

from support.icon import colour
from support.tray import item_of_panel
from support.waiting import wait_until

SOURCE = os.environ["VALDORN_SOURCE"]
DEV = os.path.join(SOURCE, "dev")
DEMO_RUNNER = os.environ["VALDORN_DEMO_RUNNER"]
GREEN = bytes((0x30, 0xD1, 0x58))  # of the bird that is connected
PANEL_HEIGHT = 31


def environment_of(pid):
    try:
        with open(f"/proc/{pid}/environ", "rb") as file:
            return file.read()
    except OSError:
        return b""


def executable_of(pid):
    """Nothing for a process that has ended meanwhile."""
    try:
        return os.readlink(f"/proc/{pid}/exe")
    except OSError:
        return None


class DemoRunTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="valdorn-demo-run.")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.home = os.path.join(self.folder, "home")
        self.temporary = os.path.join(self.folder, "tmp")
        self.runtime = os.path.join(self.folder, "runtime")
        os.mkdir(self.home)
        os.mkdir(self.temporary)
        os.mkdir(self.runtime, 0o700)

    def start(self):
        environment = {name: value for name, value in os.environ.items()
                       if not name.startswith(("XDG_", "QT_", "DBUS_"))
                       and name not in ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY")}
        environment.update(HOME=self.home, TMPDIR=self.temporary, LC_ALL="C.UTF-8",
                           XDG_RUNTIME_DIR=self.runtime,
                           VALDORN_BUILD=os.environ["VALDORN_BUILD"])
        self.output = tempfile.TemporaryFile("w+", dir=self.folder)
        self.addCleanup(self.output.close)
        self.dev = subprocess.Popen([DEV, "run"], env=environment, stdin=subprocess.DEVNULL,
                                    stdout=self.output, stderr=subprocess.STDOUT,
                                    start_new_session=True)
        self.addCleanup(self.end_whatever_is_left)
        wait_until(lambda: "Ctrl+C ends it" in self.said() or self.dev.poll() is not None,
                   "the start", 60)
        self.assertIsNone(self.dev.poll(), self.said())

    def said(self):
        return os.pread(self.output.fileno(), 100000, 0).decode()

    def processes(self):
        """All that was started, to the last service of the session bus: they have the folder in
        their environment."""
        return [int(name) for name in os.listdir("/proc")
                if name.isdigit() and self.temporary.encode() in environment_of(name)]

    def end_whatever_is_left(self):
        for pid in self.processes():
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        self.dev.wait()

    def throw_away_home(self):
        (name,) = (name for name in os.listdir(self.temporary) if name.startswith("valdorn-demo."))
        return os.path.join(self.temporary, name)

    def display(self):
        """What it says about looking at the display, taken literally."""
        return re.search(r"DISPLAY=(:\d+) import -window root", self.said())[1]

    def valdorns(self):
        return [pid for pid in self.processes()
                if executable_of(pid) == os.environ["VALDORN_PROGRAM"]]

    def item(self):
        """The status item as the panel has it."""
        (valdorn,) = wait_until(self.valdorns, "Valdorn")
        address = re.search(rb"DBUS_SESSION_BUS_ADDRESS=([^\0]+)", environment_of(valdorn))[1]
        connection = dbus.bus.BusConnection(address.decode())
        connection.set_exit_on_disconnect(False)
        self.addCleanup(connection.close)
        return item_of_panel(connection)

    def panel_shows(self, rgb):
        shot = subprocess.run(["import", "-window", "root", "-crop", f"1280x{PANEL_HEIGHT}+0+0",
                               "-depth", "8", "rgb:-"], env={**os.environ, "DISPLAY": self.display()},
                              check=True, capture_output=True, timeout=30).stdout
        return any(shot[at:at + 3] == rgb for at in range(0, len(shot), 3))

    def check_end(self):
        self.assertEqual(0, self.dev.wait(30), self.said())
        # The services of the bus see its end a moment later.
        wait_until(lambda: not self.processes(), "the end of all that was started", 10)
        self.assertEqual([], os.listdir(self.temporary))
        self.assertTrue(self.said().endswith("Ctrl+C ends it.\n"), self.said())

    def test_plays_a_job_on_a_virtual_desktop_until_ctrl_c(self):
        self.start()
        self.assertIn(self.throw_away_home(), self.said())
        item = self.item()
        menu = item.menu()
        wait_until(lambda: "Status: Connected — idle" in menu.labels(), "the connection")
        wait_until(lambda: self.panel_shows(GREEN), "the bird in the panel", 60)
        wait_until(lambda: "Building: acme/site" in menu.labels(), "a job")
        wait_until(lambda: colour(item.pixmaps()) == "gray", "the spinner")
        wait_until(lambda: not self.panel_shows(GREEN), "the spinner in the panel")
        os.killpg(self.dev.pid, signal.SIGINT)
        self.check_end()
        self.assertEqual([], os.listdir(self.home))
        self.assertEqual([], os.listdir(self.runtime))

    def test_ends_everything_when_only_the_script_is_told_to(self):
        self.start()
        self.item()
        self.dev.terminate()
        self.check_end()

    def test_takes_the_act_runner_that_is_there(self):
        os.mkdir(os.path.join(self.home, "actrunner"))
        shutil.copy(DEMO_RUNNER, os.path.join(self.home, "actrunner/act_runner"))
        self.start()
        self.assertIn(f"your own act_runner: {self.home}/actrunner/act_runner\n", self.said())
        menu = self.item().menu()
        wait_until(lambda: "Status: Not registered" in menu.labels(), "no registration")
        # The lock is where any other Valdorn of this home looks for it.
        locks = os.listdir(os.path.join(self.runtime, "valdorn"))
        self.assertTrue(any(name.endswith(".lock") for name in locks), locks)
        self.dev.terminate()
        self.check_end()
        self.assertTrue(os.path.exists(
            os.path.join(self.home, "Library/Application Support/Valdorn/runners.json")))


if __name__ == "__main__":
    unittest.main()
