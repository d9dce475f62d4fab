"""Daemons that are stopped (SIGSTOP) and go on later (SIGCONT): asked to end meanwhile, they do so then,
and nobody waits for them."""

import contextlib
import os
import signal

from fault_case import CONNECTED, EARLY_SECONDS, RELAUNCH_SECONDS, FaultCase
from support.processes import kill, state
from support.puppet import DECLARED, JOB_STARTED, now
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import TimedOut, spend, stays_true, wait_until

PROMPTLY = 2.0


class StoppedCase(FaultCase):
    def begin(self):
        self.puppets, = self.puppet_runners({})
        self.start_program()
        self.wait_for_status(CONNECTED)
        self.daemon = self.puppets.wait_for_one()
        # Whatever a test leaves behind is to be able to end.
        self.addCleanup(kill, self.daemon, signal.SIGCONT)

    def stop_daemon(self):
        kill(self.daemon, signal.SIGSTOP)
        wait_until(self.is_stopped, "a stopped daemon")

    def is_stopped(self):
        return state(self.daemon) == "T"

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

    def test_one_whose_runner_is_stopped_ends_when_it_goes_on(self):
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

    def test_one_whose_runner_is_restarted_ends_when_it_goes_on(self):
        self.begin()
        self.stop_daemon()
        self.menu.choose("Restart Runner")
        spend(1)
        self.assert_ends_politely()
        self.wait_for_relaunch(self.puppets, 2)
        waited = (self.puppets.started_at(self.puppets.pids()[1])
                  - self.puppets.ended_at(self.daemon))
        self.assertGreaterEqual(waited, RELAUNCH_SECONDS - EARLY_SECONDS)

    def test_a_quit_does_not_wait_for_it(self):
        self.begin()
        self.stop_daemon()
        begun = now()
        self.quit()
        self.assert_was_hung_up()
        self.assertLess(self.puppets.ended_at(self.daemon) - begun, PROMPTLY)
        wait_until(lambda: self.home.processes() == [], "the end of all", 5)

    def test_one_whose_program_is_killed_is_hung_up(self):
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

    def test_one_that_is_stopped_again_and_again_loses_nothing(self):
        """As a debugger does, or somebody at a terminal."""
        self.begin()
        for _ in range(20):
            # A stop that has not come yet would be called off.
            self.stop_daemon()
            self.go_on()
        self.puppets.say(DECLARED * 2)
        path = os.path.join(self.puppets.data_folder, "valdorn.log")
        self.wait_for_status(CONNECTED)
        with contextlib.suppress(TimedOut):
            wait_until(lambda: len(self.home.read(path)) >= len(DECLARED * 3), "what it says", 10)
        self.assertEqual(self.home.read(path), DECLARED * 3)
        self.assertEqual(self.puppets.pids(), [self.daemon])
