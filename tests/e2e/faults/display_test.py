"""The X server is killed: daemons are asked to end, the program says why and ends."""

import threading

from amounts import amount, dice
from fault_case import CONNECTED, FaultCase
from support.desktop import Desktop
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import wait_until
from support.windows import STATUS

BROKEN = "The X11 connection broke (error 1). Did the X11 server die?"
# Of the program, or of a library that was just about to say hello.
LAST_WORDS = (BROKEN, "valdorn: There is no display to show anything on", "XIO:  fatal IO error",
              "X connection to ")


NOBODY = "http://127.0.0.1:9"


class KilledServerTest(FaultCase):
    has_windows = True

    def assert_left(self, program, puppets):
        """With a line of why, each daemon asked once, and none left."""
        self.expect_stderr(program)
        self.assertEqual(program.wait_for_end(10), 1)
        said = program.stderr()
        self.assertTrue(any(words in said for words in LAST_WORDS), said)
        for one in puppets:
            one.wait_for_none(5)
        wait_until(lambda: self.home.processes() == [], "the end of all", 5)

    def test_while_it_runs(self):
        puppets = self.puppet_runners({}, {}, {})
        self.start_program(VALDORN_RELEASE_SERVICE=NOBODY)
        self.wait_for_status(CONNECTED)
        self.menu.choose(STATUS.entry)
        self.desktop.wait_for_active(STATUS.title)
        daemons = [one.wait_for_one() for one in puppets]
        self.desktop.kill_display()
        self.assert_left(self.program, puppets)
        self.assertEqual(self.program.stderr().splitlines(), [BROKEN])
        self.assertEqual([one.signals(pid) for one, pid in zip(puppets, daemons)],
                         [["SIGTERM"]] * 3)


class KilledServerAtAStartTest(KilledServerTest):
    """Each time with a server that is killed at a moment of chance."""

    test_while_it_runs = None

    def test_while_it_starts(self):
        chance = dice(self.id())
        puppets = self.puppet_runners({}, {}, {})
        for _ in range(amount(50, 3, 1)):
            desktop = Desktop()
            self.addCleanup(desktop.close)
            program = self.start(desktop=desktop)
            threading.Timer(chance.uniform(0, 0.2), desktop.kill_display).start()
            self.assert_left(program, puppets)
