"""The X server is killed, or stands still: daemons are asked to end, and the program ends; it says why
when nobody has asked it to."""

import contextlib
import signal
import threading

from amounts import amount, dice
from fault_case import CONNECTED, NOBODY, FaultCase
from support.desktop import Desktop
from support.processes import kill
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import wait_until
from support.windows import LOG, STATUS

BROKEN = "The X11 connection broke (error 1). Did the X11 server die?"
# Of the program, or of a library that was just about to say hello.
LAST_WORDS = (BROKEN, "valdorn: There is no display to show anything on", "XIO:  fatal IO error",
              "X connection to ")


class KilledServerCase(FaultCase):
    def assert_left(self, program, puppets):
        """With a line of why, each daemon asked once, and none left."""
        self.expect_stderr(program)
        self.assertEqual(program.wait_for_end(10), 1)
        said = program.stderr()
        self.assertTrue(any(words in said for words in LAST_WORDS), said)
        for one in puppets:
            one.wait_for_none(5)
        wait_until(lambda: self.home.processes() == [], "the end of all", 5)


class KilledServerTest(KilledServerCase):
    has_windows = True

    def test_a_kill_while_it_runs_ends_it_with_a_reason(self):
        puppets = self.puppet_runners({}, {}, {})
        self.start_program(VALDORN_RELEASE_SERVICE=NOBODY)
        self.wait_for_status(CONNECTED)
        # The keyboard is in a text field of the log then, which must not notice.
        for kind in (STATUS, LOG):
            self.menu.choose(kind.entry)
            self.desktop.wait_for_active(kind.title)
        daemons = [one.wait_for_one() for one in puppets]
        self.desktop.kill_display()
        self.assert_left(self.program, puppets)
        self.assertEqual(self.program.stderr().splitlines(), [BROKEN])
        self.assertEqual([one.signals(pid) for one, pid in zip(puppets, daemons)],
                         [["SIGTERM"]] * 3)


class StillServerTest(FaultCase):
    has_windows = True

    def test_the_end_does_not_wait_for_a_server_that_stands_still(self):
        puppets = self.puppet_runners({}, {})
        self.start_program()
        self.wait_for_status(CONNECTED)
        self.menu.choose(STATUS.entry)
        self.desktop.wait_for_active(STATUS.title)
        daemons = [one.wait_for_one() for one in puppets]
        self.addCleanup(self.desktop.let_display_go_on)
        self.desktop.stop_display()
        kill(self.program.process.pid, signal.SIGTERM)
        for one in puppets:
            one.wait_for_none(2)
        self.assertEqual(self.program.wait_for_end(8), 0)
        self.assertEqual([one.signals(pid) for one, pid in zip(puppets, daemons)],
                         [["SIGTERM"]] * 2)


class KilledServerAtAStartTest(KilledServerCase):
    """Each time with a server that is killed at a moment of chance."""

    def test_a_kill_while_it_starts_leaves_no_daemon(self):
        chance = dice(self.id())
        puppets = self.puppet_runners({}, {}, {})
        for _ in range(amount(50, 3)):
            with contextlib.closing(Desktop()) as desktop:
                program = self.start(desktop=desktop)
                threading.Timer(chance.uniform(0, 0.2), desktop.kill_display).start()
                self.assert_left(program, puppets)
