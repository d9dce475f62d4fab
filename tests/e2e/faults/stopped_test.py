"""Daemons that are stopped (SIGSTOP) and go on later (SIGCONT): asked to end meanwhile, they do so then,
and nobody waits for them."""

import os
import signal
import time

from fault_case import CONNECTED, FaultCase
from support.program import kill
from support.puppet import DECLARED, JOB_STARTED
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import spend, stays_true, wait_until

PROMPTLY = 2.0
RELAUNCH_SECONDS = 5.0


class StoppedCase(FaultCase):
    def begin(self):
        self.puppets, = self.puppet_runners({})
        self.start_program()
        self.wait_for_status(CONNECTED)
        self.daemon = self.puppets.wait_for_one()

    def stop_daemon(self):
        # Whatever a test leaves behind is to be able to end.
        self.addCleanup(kill, self.daemon, signal.SIGCONT)
        kill(self.daemon, signal.SIGSTOP)
        wait_until(self.is_stopped, "a stopped daemon")

    def is_stopped(self):
        with open(f"/proc/{self.daemon}/stat") as file:
            return file.read().rpartition(")")[2].split()[0] == "T"

    def go_on(self):
        kill(self.daemon, signal.SIGCONT)

    def assert_ends_politely(self):
        """Once it goes on, and only then."""
        self.assertEqual(self.puppets.living()[:1], [self.daemon])
        self.assertEqual(self.puppets.signals(self.daemon), [])
        self.go_on()
        wait_until(lambda: self.daemon not in self.puppets.living(), "the end of the daemon", 5)
        self.assertEqual(self.puppets.signals(self.daemon), ["SIGTERM"])


class StoppedTest(StoppedCase):
    def test_one_that_is_stopped_for_a_while_has_not_ended(self):
        self.begin()
        self.stop_daemon()
        self.puppets.say(JOB_STARTED)
        stays_true(lambda: "Status: " + CONNECTED in self.menu.labels(), CONNECTED,
                   RELAUNCH_SECONDS + 1)
        self.go_on()
        self.wait_for_status("Building a job")
        self.assertEqual(self.puppets.pids(), [self.daemon])

    def test_the_runner_is_stopped(self):
        self.begin()
        self.stop_daemon()
        self.menu.choose("Stop Runner")
        self.wait_for_status("Stopped", PROMPTLY)
        spend(0.3)
        self.assert_ends_politely()
        spend(RELAUNCH_SECONDS + 1)
        self.assertEqual(self.puppets.pids(), [self.daemon])
        self.wait_for_status("Stopped", PROMPTLY)
        self.menu.choose("Start Runner")
        self.puppets.wait_for_one()
        self.wait_for_status(CONNECTED)

    def test_the_runner_is_restarted(self):
        self.begin()
        self.stop_daemon()
        self.menu.choose("Restart Runner")
        spend(1)
        begun = time.monotonic()
        self.assert_ends_politely()
        self.wait_for_relaunch(self.puppets, 2)
        self.assertGreaterEqual(time.monotonic() - begun, RELAUNCH_SECONDS - 0.1)

    def test_the_program_quits(self):
        self.begin()
        self.stop_daemon()
        begun = time.monotonic()
        self.quit()
        self.assertLess(time.monotonic() - begun, PROMPTLY)
        self.assert_was_hung_up()
        wait_until(lambda: self.home.processes() == [], "the end of all", 5)

    def test_the_program_is_killed(self):
        self.begin()
        self.stop_daemon()
        kill(self.program.process.pid, signal.SIGKILL)
        self.program.wait_for_end()
        self.assert_was_hung_up()
        self.start_program()
        self.puppets.wait_for_one()
        self.wait_for_status(CONNECTED)

    def assert_was_hung_up(self):
        """By the kernel: it lets a group go on that is stopped when its last relative ends."""
        self.puppets.wait_for_none(5)
        self.assertEqual(self.puppets.signals(self.daemon), ["SIGHUP"])

    def test_again_and_again(self):
        """As a debugger does, or somebody at a terminal."""
        self.begin()
        for _ in range(100):
            kill(self.daemon, signal.SIGSTOP)
            kill(self.daemon, signal.SIGCONT)
        self.puppets.say(DECLARED * 2)
        path = os.path.join(self.puppets.data_folder, "valdorn.log")
        wait_until(lambda: self.home.read(path) == DECLARED * 3, "what it says", 5)
        self.assertEqual(self.puppets.pids(), [self.daemon])
