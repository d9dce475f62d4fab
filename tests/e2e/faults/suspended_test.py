"""A program that stood still for a time, a computer that slept, a wall clock that was set: what was due
happens once, and no sooner than after its time; no duration is wrong; daemons are left alone."""

import mmap
import os
import re
import signal
import struct
import time

from amounts import amount
from fault_case import (CONNECTED, EARLY_SECONDS, LATE_SECONDS, NOBODY, RELAUNCH_SECONDS,
                        FaultCase)
from support.accessibility import VARIABLES
from support.program import VALDORN, kill
from support.puppet import JOB_FINISHED, JOB_STARTED, now
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import spend, stays_true, wait_until
from support.windows import STATUS

CLOCK = os.path.join(os.path.dirname(VALDORN), "libshifted_clock.so")
UPTIME = re.compile(r"· up (?:(\d+):)?(\d+):(\d\d)\b")
DAY = 24 * 3600.0
REVERT_SECONDS = 4.0
UPDATE_SECONDS = 1.0  # of what is shown, in whole seconds


class StillCase(FaultCase):
    def begin(self, **options):
        self.puppets = self.puppet_runners(*[{}] * 4)
        self.start_program(**options)
        self.wait_for_status(CONNECTED)
        self.daemons = [puppets.wait_for_one() for puppets in self.puppets]

    def kill_daemons(self):
        """All but the last, whose daemon is not to be touched; when."""
        begun = now()
        for pid in self.daemons[:-1]:
            kill(pid, signal.SIGKILL)
        wait_until(lambda: not self.program.zombies() and self.program.children() ==
                   self.daemons[-1:], "the end of the daemons")
        spend(0.7)  # for their ends to be heard of
        return begun

    def stand_still(self, seconds):
        kill(self.program.process.pid, signal.SIGSTOP)
        spend(seconds)
        kill(self.program.process.pid, signal.SIGCONT)

    def launches(self):
        return [len(puppets.pids()) for puppets in self.puppets]

    def assert_relaunched_once(self, begun, earliest, latest):
        wait_until(lambda: self.launches() == [2, 2, 2, 1], "the relaunches", 20)
        for puppets in self.puppets[:-1]:
            self.assert_relaunched(puppets, begun, earliest, latest)
        stays_true(lambda: self.launches() == [2, 2, 2, 1], "one relaunch",
                   amount(RELAUNCH_SECONDS + 1, 1.5))
        self.assertEqual(self.puppets[-1].living(), self.daemons[-1:])
        self.assertEqual(self.puppets[-1].signals(self.daemons[-1]), [])
        self.wait_for_status(CONNECTED)


    def assert_relaunched(self, puppets, begun, earliest, latest):
        """The last time; as the daemon itself says, however late the test gets its turn."""
        waited = puppets.started_at(puppets.pids()[-1]) - begun
        self.assertGreaterEqual(waited, earliest - EARLY_SECONDS)
        self.assertLessEqual(waited, latest + LATE_SECONDS)


class StandingStillTest(StillCase):
    def test_what_was_due_meanwhile_happens_once_afterwards(self):
        self.begin()
        begun = self.kill_daemons()
        self.stand_still(6)
        still = now() - begun
        self.assert_relaunched_once(begun, still, still)

    def test_what_is_due_later_keeps_its_time(self):
        self.begin()
        begun = self.kill_daemons()
        self.stand_still(2)
        self.assert_relaunched_once(begun, RELAUNCH_SECONDS, RELAUNCH_SECONDS)

    def test_what_daemons_said_meanwhile_counts(self):
        self.begin()
        self.puppets[0].say(JOB_STARTED)
        self.wait_for_status("Building a job")
        kill(self.program.process.pid, signal.SIGSTOP)
        self.puppets[0].say(JOB_FINISHED)
        spend(6)
        kill(self.program.process.pid, signal.SIGCONT)
        begun = time.monotonic()
        # The revert is counted from when the line was read.
        self.wait_for_status(CONNECTED, 10)
        self.assertGreaterEqual(time.monotonic() - begun, REVERT_SECONDS - EARLY_SECONDS)
        self.assertEqual(self.launches(), [1, 1, 1, 1])


class ClockCase(StillCase):
    def setUp(self):
        super().setUp()
        path = os.path.join(self.desktop.runtime, "clock")
        with open(path, "wb") as file:
            file.write(bytes(24))
        with open(path, "r+b") as file:
            self.clock = mmap.mmap(file.fileno(), 24)
        self.addCleanup(self.clock.close)
        self.shifts = {"LD_PRELOAD": CLOCK, "VALDORN_SHIFTED_CLOCK": path}

    def shift(self, wall=0.0, boot=0.0, steady=0.0):
        """In seconds."""
        self.clock[:] = struct.pack("=3q", *(int(shift * 1e9) for shift in (wall, boot, steady)))


class ClockTest(ClockCase):
    def test_a_wall_clock_that_was_set_changes_no_wait(self):
        self.begin(**self.shifts)
        for days in (10, -10):
            with self.subTest(days):
                before = self.launches()
                begun = now()
                kill(self.puppets[0].wait_for_one(), signal.SIGKILL)
                spend(1)
                self.shift(wall=days * DAY)
                wait_until(lambda: self.launches()[0] == before[0] + 1, "a relaunch", 10)
                self.assert_relaunched(self.puppets[0], begun, RELAUNCH_SECONDS,
                                       RELAUNCH_SECONDS)
        self.assertEqual(self.launches()[1:], [1, 1, 1])

    def test_a_computer_that_slept_waits_on_when_it_is_awake(self):
        """While it does, the steady clock stands and the others go on: by an hour, say."""
        self.begin(**self.shifts)
        begun = self.kill_daemons()
        asleep = 2
        kill(self.program.process.pid, signal.SIGSTOP)
        spend(asleep)
        self.shift(wall=3600 - asleep, boot=3600 - asleep, steady=-asleep)
        kill(self.program.process.pid, signal.SIGCONT)
        self.assert_relaunched_once(begun, RELAUNCH_SECONDS + asleep, RELAUNCH_SECONDS + asleep)


class DurationTest(ClockCase):
    has_windows = True

    def test_how_long_a_runner_runs_is_no_matter_of_the_wall_clock(self):
        earliest = time.monotonic()
        self.begin(**VARIABLES, **self.shifts, VALDORN_RELEASE_SERVICE=NOBODY)
        latest = time.monotonic()
        self.window = self.open(STATUS)
        for days in (10, -10):
            self.shift(wall=days * DAY, boot=DAY)
            spend(1.5)
            before = time.monotonic()
            uptimes = wait_until(self.uptimes, "an uptime")
            after = time.monotonic()
            for shown in uptimes:
                with self.subTest(days):
                    self.assertGreaterEqual(shown, before - latest - 2 * UPDATE_SECONDS)
                    self.assertLessEqual(shown, after - earliest)

    def uptimes(self):
        found = [UPTIME.search(text) for text in self.window.names("label")]
        return [int(match[1] or 0) * 3600 + int(match[2]) * 60 + int(match[3])
                for match in found if match]
