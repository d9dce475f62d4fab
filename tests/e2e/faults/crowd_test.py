"""A hundred runners at once: all run, all are stopped, none is lost."""

import os
import time
import unittest

from amounts import amount
from support.case import ProgramCase
from support.program import is_alive
from support.waiting import spend, wait_until

RUNNERS = 100
ROUNDS = amount(10, 1)
QUIT_SECONDS = amount(2.0, 10.0)  # on other days beside other tests
PATIENCE_SECONDS = 60.0


class CrowdTest(ProgramCase):
    def test_all_run_all_are_stopped_and_none_is_lost(self):
        self.begin()
        for launches in range(1, ROUNDS + 1):
            children = self.wait_for_all()
            self.assert_logs(launches)
            self.assertEqual(self.program.zombies(), [])
            self.choose("Stop All", "Stopped")
            self.wait_for_none(children)
            self.choose("Start All", "Connected — idle")
        self.quit(self.wait_for_all())

    def begin(self):
        self.home.install_runner()
        self.home.set_default("hasConnected", "true")
        records = self.home.add_runners(*[{}] * RUNNERS, script=None)
        self.folders = [self.home.data_folder(record) for record in records]
        for number, folder in enumerate(self.folders):
            with open(os.path.join(folder, "demo_runner.script"), "w") as file:
                file.write(f"declare\nline {self.line(number)}\n")
        begun = time.monotonic()
        self.program, self.item = self.start_with_item()
        self.menu = self.item.menu()
        self.wait_for_all()
        print(f"{RUNNERS} runners launched within {time.monotonic() - begun:.1f} s", flush=True)

    @staticmethod
    def line(number):
        return f'time="x" level=info msg="number {number} speaks"'

    def choose(self, entry, status):
        begun = time.monotonic()
        self.menu.choose(entry)
        self.wait_for_status(status)
        print(f"{entry}: {time.monotonic() - begun:.1f} s", flush=True)

    def wait_for_status(self, status):
        wait_until(lambda: f"Status: {status} · {RUNNERS} runners" in self.menu.labels(), status,
                   PATIENCE_SECONDS)

    def wait_for_all(self):
        self.wait_for_status("Connected — idle")
        wait_until(lambda: len(self.program.children()) == RUNNERS, "as many daemons as runners",
                   PATIENCE_SECONDS)
        children = self.program.children()
        folders = [os.readlink(f"/proc/{pid}/cwd") for pid in children]
        self.assertEqual(sorted(folders), sorted(self.folders))
        return children

    def wait_for_none(self, children):
        wait_until(lambda: not any(map(is_alive, children)), "the end of all", PATIENCE_SECONDS)
        wait_until(lambda: not self.program.zombies(), "the last rites")
        self.assertEqual(self.program.children(), [])
        wait_until(lambda: not self.ledgers(), "nobody in the list of daemons")
        # For the ends to be heard of: one that is heard of after a start is followed by a relaunch.
        spend(1)

    def ledgers(self):
        names = os.listdir(os.path.join(self.desktop.runtime, "valdorn"))
        return [name for name in names if not name.endswith(".lock")]

    def assert_logs(self, launches):
        """Each folder has what its own daemons have said."""
        for number, folder in enumerate(self.folders):
            path = os.path.join(folder, "valdorn.log")
            wait_until(lambda: self.home.read(path).count(self.line(number)) == launches,
                       f"the log of {number}", 5)
            self.assertEqual(self.home.read(path).count(" speaks"), launches)

    def quit(self, children):
        begun = time.monotonic()
        self.menu.choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(PATIENCE_SECONDS), 0)
        seconds = time.monotonic() - begun
        print(f"quit within {seconds:.2f} s", flush=True)
        self.assertLess(seconds, QUIT_SECONDS)
        wait_until(lambda: not any(map(is_alive, children)), "the end of all", PATIENCE_SECONDS)
        wait_until(lambda: self.home.processes() == [], "nothing left")
        self.assertEqual(self.ledgers(), [])


if __name__ == "__main__":
    unittest.main()
