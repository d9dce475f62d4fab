"""What the tests of the whole program have in common."""

import unittest

from .desktop import Desktop
from .program import FOUND, UNDER, Home, Program, run_once
from .puppet import DECLARED, PUPPET, Puppets
from .tray import TrayHost
from .waiting import AT_ONCE, wait_until
from .windows import SETTINGS


class ProgramCase(unittest.TestCase):
    """One desktop for the class, one home for each test. Valdorn is to keep its standard error
    empty: whoever expects it to speak takes the text with `expect_stderr`."""

    window_manager = None
    screen = "1280x800x24"

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.make_desktop()
        cls.addClassCleanup(cls.desktop.close)

    @classmethod
    def make_desktop(cls):
        return Desktop(window_manager=cls.window_manager, size=cls.screen)

    def setUp(self):
        self.home = self.new_home()
        self._outspoken = set()
        self._host = None

    def new_home(self):
        home = Home()
        self.addCleanup(home.close)
        return home

    def new_host(self, desktop=None, **options):
        """A status bar that has just come; the options are those of `TrayHost`."""
        host = TrayHost((desktop or self.desktop).bus, **options)
        self.addCleanup(host.close)
        return host

    def host(self):
        """The test's status bar."""
        if not self._host:
            self._host = self.new_host()
        return self._host

    def start(self, *arguments, home=None, desktop=None, **options):
        """Valdorn with arguments; the options are those of `Program`."""
        program = Program(desktop or self.desktop, home or self.home, *arguments, **options)
        self.addCleanup(self._close, program)
        return program

    def _close(self, program):
        try:
            program.quit()
            self.assertFalse(UNDER and program.process.returncode == FOUND, " ".join(UNDER))
            if program not in self._outspoken:
                self.assertEqual(program.stderr(), "")
        finally:
            program.close()

    def expect_stderr(self, program):
        self._outspoken.add(program)

    def start_with_item(self, **options):
        """The program, and its item in a status bar."""
        host = self.host()
        before = len(host.items)
        program = self.start(**options)
        wait_until(lambda: len(host.items) > before, "a status item")
        return program, host.items[-1]

    def assert_item_in(self, host, entry="Status: Connected — idle", seconds=AT_ONCE):
        """The only item in the bar, with that entry in its menu, and its icon in each size."""
        item = host.wait_for_item(seconds)
        wait_until(lambda: entry in item.menu().labels(), f"{entry!r} in its menu", AT_ONCE)
        self.assertEqual(len(host.items), 1)
        spins = entry == "Status: Building a job"
        self.assertEqual(len(item.pixmaps()), 4 if spins else 5)
        return item

    def second_start(self, home=None, desktop=None, **more):
        """Beside a running instance: it hands over to that one and has nothing to say. `more` goes
        into its environment."""
        self.assert_went_quietly(run_once(desktop or self.desktop, home or self.home, **more))

    def assert_went_quietly(self, done):
        """What has ended, as `subprocess.run` tells of it."""
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""), done.args)

    def work_elsewhere(self):
        """In the settings of another home: another program, as any window manager sees it."""
        home = self.new_home()
        self.puppet_runners({}, home=home)
        _, item = self.start_with_item(home=home)
        item.menu().choose(SETTINGS.entry)
        self.desktop.wait_for_active(SETTINGS.title)

    def puppet_runners(self, *records, home=None, first=DECLARED, stubborn=False, connected=True):
        """Registered runners that are puppets; `connected` spares the introduction."""
        home = home or self.home
        home.install_runner(PUPPET)
        records = home.add_runners(*records, script=None)
        if connected:
            home.set_default("hasConnected", "true")
        return [Puppets(home.data_folder(record), first, stubborn) for record in records]
