"""A home that cannot be written to, and folders of it that go away while the program runs."""

import os
import shutil
import time
import unittest

from fault_case import (BLOCKED, BUILDING, CONNECTED, LATE_SECONDS, NOT_REGISTERED,
                        RELAUNCH_SECONDS, STARTING, FaultCase, content, in_own_space,
                        require_own_space)
from support.log_page import LogPage
from support.puppet import DECLARED
from support.settings_page import SettingsPage
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import spend, wait_until
from support.window_case import WindowCase

READ_ONLY = """
    mount --bind "$HOME" "$HOME" && mount -o remount,bind,ro "$HOME" || exit
"""
CONFIGURATION = "log:\n  level: debug\n"


def snapshot(folder):
    """Everything in it: where, of which kind, when it was changed, and what it holds."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(place, name)
            facts = os.lstat(path)
            text = None
            if name in files:
                with open(path, "rb") as file:
                    text = file.read()
            found[os.path.relpath(path, folder)] = (facts.st_mode, facts.st_mtime_ns, text)
    return found


class HomeCase(FaultCase):
    has_windows = True

    def begin(self, **options):
        WindowCase.begin(self, **options)
        self.wait_for_status(CONNECTED)

    def add_runners(self, *records, script):
        self.home.install_runner()
        self.records = self.home.add_runners(*records, script=script)
        self.folders = [self.home.data_folder(record) for record in self.records]
        self.home.set_default("hasConnected", "true")


class ReadOnlyTest(HomeCase):
    def setUp(self):
        super().setUp()
        require_own_space()
        self.add_runners({}, {"name": "spare"}, script="start\ndeclare\nhang\n")
        self.home.unregister(self.folders[1])
        for name, text in (("runner-config.yaml", CONFIGURATION), ("valdorn.log", DECLARED)):
            with open(os.path.join(self.folders[0], name), "w") as file:
                file.write(text)
        self.before = snapshot(self.home.path)

    def test_all_but_remembering_works(self):
        self.begin(command=in_own_space(READ_ONLY))
        log = LogPage(self)
        log.wait_for_lines(DECLARED)
        page = SettingsPage(self)
        page.fill("Name", "renamed")
        self.click(page.add_button())
        wait_until(lambda: len(page.runners()) == 3, "a third runner")
        page.select(1)
        page.register("token")
        page.wait_for_outcome()
        wait_until(lambda: [text for text in page.texts() if "ead-only file system" in text],
                   f"the reason in {page.texts()}", 5)
        page.select(0)
        self.assertEqual(page.field("Name").text(), "renamed")
        self.assertEqual(log.lines(), [DECLARED])
        self.quit()
        self.assertEqual(snapshot(self.home.path), self.before)

    def test_without_a_place_for_its_lock_it_says_so_and_runs(self):
        self.begin(command=in_own_space(READ_ONLY), XDG_RUNTIME_DIR=self.home.path + "/none")
        self.expect_stderr(self.program)
        self.assertIn(f"valdorn: No private folder can be had at {self.home.path}/.local/state/"
                      "valdorn: ", self.program.stderr())
        self.quit()
        self.assertEqual(snapshot(self.home.path), self.before)


class RemovedTest(HomeCase):
    def begin_without(self, *parts):
        """A runner whose folder, or one above it, goes away while it runs."""
        self.add_runners({}, script="declare\nwait 3s\nno-route-to-host\nhang\n")
        self.folder = self.folders[0]
        WindowCase.begin(self)
        log = os.path.join(self.folder, "valdorn.log")
        wait_until(lambda: os.path.exists(log) and content(log), "a daemon that has begun")
        self.page = SettingsPage(self)
        self.before = set(snapshot(self.home.path))
        shutil.rmtree(os.path.join(self.home.path, *parts))
        # What the daemon says still counts, though its log grows unseen.
        self.wait_for_status(BLOCKED)

    def launch_anew(self):
        """The next launch makes the folder, and what belongs into it."""
        due = time.monotonic() + RELAUNCH_SECONDS
        self.menu.choose("Restart Runner")
        spend(1)
        # By then it may be due on a busy machine.
        self.assertTrue(not os.path.exists(self.folder) or time.monotonic() > due)
        log = os.path.join(self.folder, "valdorn.log")
        wait_until(lambda: os.path.exists(log), "a launch", RELAUNCH_SECONDS + LATE_SECONDS)
        wait_until(lambda: "Error: " in content(log), "a complaint")
        self.wait_for_status(STARTING)
        self.assertEqual(content(os.path.join(self.folder, "runner-config.yaml")), CONFIGURATION)

    def register(self):
        """After that it runs as before."""
        self.page.register("token")
        wait_until(lambda: os.path.exists(os.path.join(self.folder, ".runner")), "a registration")
        wait_until(lambda: self.status() in (CONNECTED, BUILDING), "a runner at work")

    def written(self):
        """What has come that was not there before."""
        return set(snapshot(self.home.path)) - self.before

    def names(self):
        return [record["name"] for record in self.file()]

    def test_the_folder_of_the_runner_is_made_by_the_next_launch(self):
        self.begin_without("Library/Application Support/Valdorn/runners/r0")
        self.page.fill("Name", "ab")
        wait_until(lambda: self.names() == ["a"], "the list")
        self.launch_anew()
        self.register()
        self.quit()
        self.assertEqual(self.written(), set())

    def test_the_support_folder_is_made_by_the_next_launch(self):
        self.begin_without("Library/Application Support/Valdorn")
        self.page.fill("Name", "ab")
        spend(0.2)
        # An edit does not make the folder.
        self.assertFalse(os.path.exists(self.home.support))
        self.launch_anew()
        self.assertFalse(self.home.has_file("runners.json"))
        self.page.fill("Name", "cd")
        wait_until(lambda: self.home.has_file("runners.json") and self.names() == ["c"], "the list")
        self.register()
        self.quit()
        self.assertEqual(self.written(), set())

    def test_all_of_the_library_is_made_by_a_registration(self):
        self.begin_without("Library")
        self.stop_runner()
        self.menu.choose("Start Runner")
        self.wait_for_status(NOT_REGISTERED)
        self.assertEqual(self.written(), set())
        # The tool has a folder to leave the registration in.
        self.register()
        self.quit()
        self.assertEqual(self.written(), set())


if __name__ == "__main__":
    unittest.main()
