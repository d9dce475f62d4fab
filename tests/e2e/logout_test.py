"""The end of a desktop session: it is never held up, and each daemon is asked once, politely."""

import os
import signal
import time
import unittest

from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.program import is_alive
from support.session_manager import RESTART_NEVER, SessionManager
from support.settings_case import TOKEN, SettingsCase
from support.settings_page import SettingsPage
from support.waiting import spend, wait_until
from support.window_case import WindowCase

# Of the five seconds that a session made by systemd gives.
PROMPTLY = 3.0


class FleetCase(ProgramCase):
    """Three connected runners."""

    window_manager = usual_window_manager

    def begin(self, **options):
        self.puppets = self.puppet_runners({}, {}, {})
        self.program, self.item = self.start_with_item(**options)
        self.daemons = [puppet.wait_for_one() for puppet in self.puppets]

    def open_windows(self):
        for entry in ("Set Up…", "Settings…", "Show Log…", "Runner Status…"):
            self.item.menu().choose(entry)
        wait_until(lambda: len(self.desktop.windows_of(self.program)) == 4, "four windows")

    def assert_each_is_asked_once(self):
        for puppet in self.puppets:
            puppet.wait_for_none(5)
        spend(0.2)  # for a second signal to arrive
        self.assertEqual([puppet.signals(pid) for puppet, pid in zip(self.puppets, self.daemons)],
                         [["SIGTERM"]] * 3)
        self.assertEqual(self.home.processes(), [])


class ManagedSession:
    """A session manager as X11 desktops have it."""

    def setUp(self):
        super().setUp()
        self.manager = SessionManager()
        self.addCleanup(self.manager.close)

    def join(self):
        """The program as the manager knows it."""
        self.client, = wait_until(lambda: self.manager.clients, "the program in the session")
        wait_until(lambda: self.client.log == ["registered", "saved"], "a settled newcomer")

    def log_out(self):
        self.client.log.clear()
        begun = time.monotonic()
        self.client.save_yourself(shutdown=True)
        wait_until(lambda: "saved" in self.client.log, "the leave to go on", PROMPTLY)
        self.assertTrue(self.program.is_running())
        self.client.die()
        self.assertEqual(self.program.wait_for_end(5), 0)
        self.assertLess(time.monotonic() - begun, PROMPTLY)
        wait_until(lambda: "closed" in self.client.log, "a farewell", 1)
        self.assertEqual(self.client.log, ["saved", "closed"])


class SessionManagerTest(ManagedSession, FleetCase):
    def begin(self):
        super().begin(SESSION_MANAGER=self.manager.address)
        self.join()

    def test_ends_the_program_that_the_next_session_does_not_restart(self):
        self.begin()
        self.assertEqual(self.client.restart_style(), bytes([RESTART_NEVER]))
        self.log_out()
        self.assertEqual(self.client.restart_style(), bytes([RESTART_NEVER]))
        self.assert_each_is_asked_once()

    def test_ends_the_program_with_all_its_windows(self):
        self.begin()
        self.open_windows()
        self.log_out()
        self.assert_each_is_asked_once()

    def test_changes_nothing_when_it_is_cancelled(self):
        self.begin()
        self.open_windows()
        self.client.save_yourself(shutdown=True)
        wait_until(lambda: self.client.log.count("saved") == 2, "the leave to go on", PROMPTLY)
        self.client.cancel()
        spend(0.3)
        self.assertEqual(len(self.desktop.windows_of(self.program)), 4)
        self.assertEqual([puppet.living() for puppet in self.puppets],
                         [[pid] for pid in self.daemons])
        self.log_out()
        self.assert_each_is_asked_once()


class RegistrationTest(ManagedSession, SettingsCase):
    def test_is_not_waited_for(self):
        self.prepare(script="exec sleep 1000")
        WindowCase.begin(self, SESSION_MANAGER=self.manager.address)
        self.join()
        page = SettingsPage(self)
        page.register(TOKEN)
        tool = self.tool.process()
        self.log_out()
        wait_until(lambda: not is_alive(tool), "the end of the tool", 5)


class SignalledSessionTest(FleetCase):
    """Without a session manager: the programs of a session, or whole groups of them, are signalled
    and get five seconds."""

    def test_ends_the_program_with_all_its_windows(self):
        self.begin(command=("setsid",))
        self.open_windows()
        begun = time.monotonic()
        for number in (signal.SIGTERM, signal.SIGCONT, signal.SIGHUP):
            os.killpg(self.program.process.pid, number)
        self.assertEqual(self.program.wait_for_end(5), 0)
        self.assertLess(time.monotonic() - begun, PROMPTLY)
        self.assert_each_is_asked_once()


if __name__ == "__main__":
    unittest.main()
