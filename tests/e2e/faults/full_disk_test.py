"""A disk that is full while the program runs, and has room again later."""

import os
import shutil
import tempfile
import unittest

from fault_case import BLOCKED, CONNECTED, FaultCase, content, in_own_space, require_own_space
from support import puppet
from support.program import Home
from support.puppet import DECLARED, PUPPET, Puppets, entry
from support.settings_page import SettingsPage
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import wait_until
from support.window_case import WindowCase

PAGE_BYTES = os.sysconf("SC_PAGESIZE")

# The home as it is, on a file system of its own.
SMALL_DISK = """
    exec 3<"$HOME"
    mount -t tmpfs -o size=1m none "$HOME" && cp -a /proc/self/fd/3/. "$HOME" || exit
"""
FULL_DISK = SMALL_DISK + """
    dd if=/dev/zero of="$HOME/ballast" bs=4k 2>/dev/null
"""


class FullDiskCase(FaultCase):
    def setUp(self):
        super().setUp()
        require_own_space()

    def look_inside(self):
        """From now on the home is what the program sees of it."""
        self.home = Home(f"/proc/{self.program.process.pid}/root{self.home.path}")
        self.ballast = os.path.join(self.home.path, "ballast")

    def fill(self):
        """To the last page."""
        with open(self.ballast, "wb", buffering=0) as file:
            try:
                while True:
                    file.write(bytes(PAGE_BYTES))
            except OSError:
                pass
        self.assertEqual(os.statvfs(self.home.path).f_bavail, 0)

    def make_room(self):
        os.remove(self.ballast)

    def keep_apart(self, puppets):
        """What puppets leave and what they are told needs room, too."""
        elsewhere = tempfile.mkdtemp(prefix="valdorn-puppet.")
        self.addCleanup(shutil.rmtree, elsewhere)
        here = os.path.join(puppets.data_folder, "puppet")
        shutil.move(here, elsewhere)
        os.symlink(os.path.join(elsewhere, "puppet"), here)


class RunnerTest(FullDiskCase):
    def setUp(self):
        super().setUp()
        self.puppets, = self.puppet_runners({})
        self.keep_apart(self.puppets)
        self.start_program(command=in_own_space(SMALL_DISK))
        self.look_inside()
        self.puppets.wait_for_one()
        self.wait_for_status(CONNECTED)
        self.folder = self.home.data_folder({"id": "r0", "legacy": False})

    def log(self):
        return content(os.path.join(self.folder, "valdorn.log"))

    def test_the_log_loses_what_there_is_no_room_for_and_goes_on(self):
        said = DECLARED
        for _ in range(3):
            self.fill()
            lost = [entry(f"{number:01000}") for number in range(20)] + [puppet.BLOCKED]
            self.puppets.say(*lost)
            self.wait_for_status(BLOCKED)
            # As much of it as there was room for.
            self.assertTrue((said + "".join(lost)).startswith(self.log()))
            said = self.log()
            self.assertEqual(len(said) % PAGE_BYTES, 0)
            self.make_room()
            self.puppets.say(DECLARED)
            self.wait_for_status(CONNECTED)
            said += DECLARED
            self.assertEqual(self.log(), said)
        self.quit()

    def test_a_launch_keeps_the_configuration_that_was_there(self):
        self.fill()
        before = sorted(os.listdir(self.folder))
        self.menu.choose("Restart Runner")
        self.wait_for_relaunch(self.puppets, 2)
        self.wait_for_status(CONNECTED)
        self.assertEqual(content(os.path.join(self.folder, "runner-config.yaml")),
                         "log:\n  level: debug\n")
        self.assertEqual(sorted(os.listdir(self.folder)), before)
        self.quit()


class ListTest(FullDiskCase):
    has_windows = True

    def begin(self, disk):
        WindowCase.begin(self, command=in_own_space(disk))
        self.look_inside()
        self.page = SettingsPage(self)

    def add(self, count):
        self.click(self.page.add_button())
        wait_until(lambda: len(self.page.runners()) == count, f"{count} runners")

    def names(self):
        return [record["name"] for record in self.file()]

    def test_the_list_on_disk_is_the_old_one_until_there_is_room(self):
        record, = self.home.add_runners({"labels": ""})
        # The next record does not fit into the same page any more.
        spare = PAGE_BYTES - os.path.getsize(os.path.join(self.home.support, "runners.json"))
        self.home.add_runners({"labels": "x" * (spare - 50)})
        self.home.unregister(self.home.data_folder(record))
        self.home.set_default("hasConnected", "true")
        self.begin(SMALL_DISK)
        before = self.home.read("runners.json")
        self.fill()
        self.add(2)
        self.assertEqual(self.home.read("runners.json"), before)
        self.page.fill("Name", "second")
        self.assertEqual(self.home.read("runners.json"), before)
        self.assertEqual(self.page.field("Name").text(), "second")
        self.make_room()
        # What this adds reaches the disk with the save after it.
        self.page.fill("Name", "third")
        wait_until(lambda: self.names() == ["runner 0", "thir"], "the new list")
        self.quit()

    def test_a_first_start_remembers_nothing_until_there_is_room(self):
        self.home.install_runner(PUPPET)
        os.makedirs(self.home.support)
        self.home.register(self.home.support)
        puppets = Puppets(self.home.support)
        self.keep_apart(puppets)
        self.begin(FULL_DISK)
        puppets.wait_for_one()
        self.wait_for_status(CONNECTED)
        self.assertEqual(self.home.read("runners.json"), "")
        settings = os.path.join(self.home.path, ".config/valdorn")
        self.assertEqual(os.listdir(settings) if os.path.exists(settings) else [], [])
        self.make_room()
        self.add(2)
        wait_until(lambda: self.names()[1] == "new-runner", "a whole list")
        self.quit()


if __name__ == "__main__":
    unittest.main()
