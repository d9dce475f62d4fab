"""One instance for each home, and what a second start does."""

import concurrent.futures
import contextlib
import fcntl
import glob
import os
import signal
import subprocess
import tempfile
import unittest

import dbus

from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.program import VALDORN, environment, kill, run_once
from support.puppet import DECLARED
from support.startup_listener import StartupListener
from support.waiting import spend, stays_true, wait_until
from support.windows import STATUS

NOT_REACHED = "valdorn: Valdorn runs already, and the session bus does not reach it\n"
NO_BUS = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}


def is_held(path):
    with open(path) as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            return True
    return False


class InstanceCase(ProgramCase):
    def listen_to_launches(self):
        listener = StartupListener(self.desktop)
        self.addCleanup(listener.close)
        return listener


class SecondStartTest(InstanceCase):
    window_manager = usual_window_manager

    def test_brings_up_the_status_window_of_the_first(self):
        puppets, = self.puppet_runners({})
        self.start_with_item()
        puppets.wait_for_one()
        self.assertEqual(self.desktop.windows(), {})
        for _ in range(2):
            self.second_start()
            self.desktop.wait_for_active(STATUS.title)
            self.assertEqual(list(self.desktop.windows().values()), [STATUS.title])
            self.desktop.close_last(STATUS.title)
        self.assertEqual(len(puppets.pids()), 1)

    def test_needs_no_display(self):
        self.puppet_runners({})
        self.start_with_item()
        variables = environment(self.desktop, self.home)
        for name in ("DISPLAY", "QT_QPA_PLATFORM"):
            del variables[name]
        self.assert_went_quietly(subprocess.run([VALDORN], env=variables, capture_output=True,
                                                text=True, timeout=30))

    def is_lock_held(self):
        folder = os.path.join(self.desktop.runtime, "valdorn")
        if not os.path.isdir(folder):
            return False
        files = [os.stat(os.path.join(folder, name)).st_ino for name in os.listdir(folder)]
        with open("/proc/locks") as locks:
            held = locks.read()
        return any(f":{file} " in held for file in files)

    def test_waits_for_a_first_one_that_has_just_begun(self):
        self.puppet_runners({})
        first = self.start()
        wait_until(self.is_lock_held, "the lock", 5)
        self.second_start()
        self.assertTrue(first.is_running())

    def test_finds_the_first_one_through_another_name_of_the_home(self):
        self.puppet_runners({})
        self.start_with_item()
        link = tempfile.mktemp(prefix="valdorn-link.")
        os.symlink(self.home.path, link)
        self.addCleanup(os.remove, link)
        self.second_start(HOME=link)

    def test_says_so_where_the_bus_does_not_reach_the_first(self):
        self.puppet_runners({})
        program, _ = self.start_with_item()
        launches = self.listen_to_launches()
        done = run_once(self.desktop, self.home, DESKTOP_STARTUP_ID="lost_TIME1", **NO_BUS)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        # The pointer does not go on looking busy.
        self.assertEqual(launches.ended(), ['remove: ID="lost_TIME1"'])
        self.assertEqual(done.stderr, NOT_REACHED)
        self.assertTrue(program.is_running())
        self.assertEqual(self.desktop.windows(), {})

    def test_many_that_give_up_at_once_each_say_that_and_no_more(self):
        """Qt's thread for the bus goes on while the process ends, and must find what it needs."""
        self.puppet_runners({})
        program, _ = self.start_with_item()
        held, = filter(is_held, glob.glob(os.path.join(self.desktop.runtime, "valdorn/*.lock")))
        program.quit()
        with open(held) as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            with concurrent.futures.ThreadPoolExecutor(12) as pool:
                ends = list(pool.map(lambda _: run_once(self.desktop, self.home), range(12)))
        self.assertEqual({(done.returncode, done.stderr) for done in ends}, {(1, NOT_REACHED)})

    def test_each_home_has_an_instance_of_its_own(self):
        other = self.new_home()
        first, = self.puppet_runners({}, home=self.home)
        second, = self.puppet_runners({}, home=other)
        programs = [self.start_with_item()[0], self.start_with_item(home=other)[0]]
        first.wait_for_one()
        second.wait_for_one()
        for home, program in zip((self.home, other), programs):
            self.second_start(home)
            wait_until(lambda: self.desktop.windows_of(program), "its status window")
            self.desktop.close_last(STATUS.title)
        programs[0].quit()
        self.assertTrue(programs[1].is_running())


class LockTest(InstanceCase):
    def connections_of(self, program):
        """How often it is on the bus."""
        bus = self.desktop.bus.connect().get_object("org.freedesktop.DBus",
                                                    "/org/freedesktop/DBus", introspect=False)
        owners = []
        for name in bus.ListNames():
            with contextlib.suppress(dbus.exceptions.DBusException):  # it may just have left
                owners += [bus.GetConnectionUnixProcessID(name)] if name.startswith(":") else []
        return owners.count(program.process.pid)

    def test_a_killed_instance_is_no_obstacle(self):
        puppets, = self.puppet_runners({})
        for launched in (1, 2, 3):
            program, _ = self.start_with_item()
            wait_until(lambda: len(puppets.pids()) == launched, "a daemon")
            wait_until(lambda: len(puppets.living()) == 1, "only one daemon")
            kill(program.process.pid, signal.SIGKILL)
            program.wait_for_end()
        self.start_with_item()

    def test_a_daemon_that_is_left_does_not_hold_the_lock(self):
        puppets, = self.puppet_runners({}, stubborn=True)
        program, item = self.start_with_item()
        puppets.wait_for_one()
        item.menu().choose("Quit Valdorn")
        program.wait_for_end()
        self.start_with_item()
        wait_until(lambda: len(puppets.living()) == 2, "the next daemon")

    def test_an_instance_that_is_ending_is_followed_by_the_next(self):
        puppets, = self.puppet_runners({})
        folder = os.path.join(self.desktop.runtime, "valdorn")
        others = os.listdir(folder) if os.path.isdir(folder) else []
        first, _ = self.start_with_item()
        usual = self.connections_of(first)
        first.quit()
        name, = [name for name in os.listdir(folder) if name not in others]
        # It has left the bus, and has not let go of the lock yet.
        with open(os.path.join(folder, name)) as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            host = self.host()
            before = len(host.items)
            launches = self.listen_to_launches()
            program = self.start(DESKTOP_STARTUP_ID="patient_TIME1")
            stays_true(program.is_running, "the waiting start", 0.5)
            self.assertEqual(len(host.items), before)
        wait_until(lambda: len(host.items) > before, "its status item")
        puppets.wait_for_one()
        wait_until(lambda: "Status: Connected — idle" in host.items[-1].menu().labels(),
                   "the launched fleet")
        # It is the launch that is over, and not the waiting.
        self.assertEqual(launches.ended(), ['remove: ID="patient_TIME1"'])
        self.assertEqual(self.connections_of(program), usual)

    def test_an_instance_that_has_been_told_to_quit_is_followed_by_the_next(self):
        """The second start has asked it before it came to quit: it opens no window any more."""
        puppets, = self.puppet_runners({})
        first, _ = self.start_with_item()
        daemon = puppets.wait_for_one()
        kill(first.process.pid, signal.SIGSTOP)
        self.desktop.bus.connect().call_async(
            "org.valdorn.valdorn", "/org/valdorn/valdorn", "org.freedesktop.Application",
            "ActivateAction", "sava{sv}",
            ("quit", dbus.Array([], "v"), dbus.Dictionary({}, "sv")), None, None)
        spend(0.3)
        second = self.start()
        spend(0.5)
        kill(first.process.pid, signal.SIGCONT)
        self.assertEqual(first.wait_for_end(), 0)
        wait_until(lambda: set(puppets.living()) - {daemon}, "the daemon of the second start")
        self.assertTrue(second.is_running())
        self.assertEqual(self.desktop.windows(), {})

    def test_an_instance_that_is_ending_is_followed_without_a_bus_too(self):
        self.puppet_runners({})
        folder = os.path.join(self.desktop.runtime, "valdorn")
        others = os.listdir(folder) if os.path.isdir(folder) else []
        self.start_with_item()[0].quit()
        name, = [name for name in os.listdir(folder) if name not in others]
        with open(os.path.join(folder, name)) as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            program = self.start(**NO_BUS)
            stays_true(program.is_running, "the waiting start", 0.5)
        stays_true(program.is_running, "the start that follows", 1)

    def test_the_lock_stands_in_the_state_folder_where_there_is_no_runtime_folder(self):
        self.puppet_runners({})
        host = self.host()
        variables = {"XDG_RUNTIME_DIR": ""}
        # Qt remarks on that.
        self.expect_stderr(self.start(**variables))
        host.wait_for_item()
        folder = os.path.join(self.home.path, ".local/state/valdorn")

        def endings():
            return sorted(name.partition(".")[2] for name in os.listdir(folder))
        # While a daemon is being launched its birth is noted there as well.
        wait_until(lambda: endings() == ["daemons", "lock"], "ledger and lock", 5)
        self.assertEqual(run_once(self.desktop, self.home, **variables).returncode, 0)

    def test_nothing_of_the_instance_stands_in_the_support_folder(self):
        self.puppet_runners({})
        self.start_with_item()
        self.assertEqual(sorted(os.listdir(self.home.support)), ["runners", "runners.json"])


class NoDisplayTest(ProgramCase):
    def test_says_so_and_dumps_no_core(self):
        puppets, = self.puppet_runners({}, first=DECLARED)
        for display in (None, ":1", self.desktop.display + "9"):
            with self.subTest(display):
                variables = environment(self.desktop, self.home)
                del variables["QT_QPA_PLATFORM"]
                variables.pop("DISPLAY")
                if display:
                    variables["DISPLAY"] = display + "0"
                done = subprocess.run([VALDORN], env=variables, capture_output=True, text=True,
                                      timeout=30)
                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertEqual(done.stderr.splitlines()[-1],
                                 "valdorn: There is no display to show anything on")
        spend(0.2)
        self.assertEqual(puppets.pids(), [])

    def test_is_no_obstacle_for_the_next_start(self):
        self.puppet_runners({})
        self.assertEqual(run_once(self.desktop, self.home, DISPLAY="").returncode, 1)
        self.start_with_item()


if __name__ == "__main__":
    unittest.main()
