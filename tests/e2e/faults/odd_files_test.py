"""Starts that find something else where a file should be."""

import json
import os
import subprocess
import unittest

from fault_case import (AS_ANYBODY, CONNECTED, NOT_REGISTERED, STARTING, STOPPED, FaultCase,
                        content, kind_of, make_fifo)
from support.program import VALDORN, environment
from support.puppet import DECLARED, PUPPET, Puppets
from support.settings_page import SettingsPage
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import wait_until
from support.window_case import WindowCase

BLANKS_BYTES = 100 * 1000 * 1000
REFUSAL = "Valdorn: login-item toggle failed: "


class ListTest(FaultCase):
    """What cannot be read as a list is migrated; what cannot be written stays as it is."""

    def setUp(self):
        super().setUp()
        self.path = os.path.join(self.home.support, "runners.json")
        self.puppet_runners({})
        self.home.register(self.home.support)
        self.legacy = Puppets(self.home.support)

    def start_migrated(self, **options):
        self.start_program(**options)
        self.legacy.wait_for_one()
        self.wait_for_status(CONNECTED)

    def assert_migrated(self):
        record, = json.loads(self.home.read("runners.json"))
        self.assertEqual((record["id"], record["legacy"]), ("legacy", True))

    def test_a_folder_in_its_place_stays_and_the_runner_is_migrated(self):
        os.remove(self.path)
        os.mkdir(self.path)
        self.start_migrated()
        self.assertEqual(os.listdir(self.path), [])
        self.quit()

    def test_a_named_pipe_in_its_place_stays_and_the_runner_is_migrated(self):
        make_fifo(self.path)
        self.start_migrated()
        self.assertEqual(kind_of(self.path), "pipe")
        self.quit()

    def test_one_that_nobody_may_read_stays_and_the_runner_is_migrated(self):
        before = self.home.read("runners.json")
        os.chmod(self.path, 0)
        self.start_migrated(command=AS_ANYBODY)
        os.chmod(self.path, 0o600)
        self.assertEqual(self.home.read("runners.json"), before)
        self.quit()

    def test_one_that_nobody_may_write_is_read(self):
        before = self.home.read("runners.json")
        os.chmod(self.path, 0o400)
        self.start_program(command=AS_ANYBODY)
        self.wait_for_status(CONNECTED)
        self.assertEqual(self.legacy.pids(), [])
        self.assertEqual(self.home.read("runners.json"), before)

    def test_blanks_without_end_are_replaced_by_the_migrated_runner(self):
        with open(self.path, "w") as file:
            file.write(" " * BLANKS_BYTES)
        self.start_migrated()
        self.assert_migrated()

    def test_blanks_without_end_before_the_list_are_skipped(self):
        records = self.home.read("runners.json")
        with open(self.path, "w") as file:
            file.write(" " * BLANKS_BYTES + records)
        self.start_program()
        self.wait_for_status(CONNECTED)
        self.assertEqual(self.legacy.pids(), [])
        self.assertEqual(os.path.getsize(self.path), BLANKS_BYTES + len(records))

    def test_a_list_with_a_zero_byte_is_replaced_by_the_migrated_runner(self):
        records = self.home.read("runners.json")
        with open(self.path, "w") as file:
            file.write(records.replace("runner 0", "runner\0 0"))
        self.start_migrated()
        self.assert_migrated()


class MarkerTest(FaultCase):
    """Whatever stands there is a registration; what the runner makes of it is for the runner."""

    def start_with_marker(self, make):
        self.puppets, = self.puppet_runners({})
        self.marker = os.path.join(self.puppets.data_folder, ".runner")
        os.remove(self.marker)
        make(self.marker)
        self.start_program()

    def assert_registered(self):
        self.puppets.wait_for_one()
        self.wait_for_status(CONNECTED)

    def test_a_folder_is_a_registration(self):
        self.start_with_marker(os.mkdir)
        self.assert_registered()

    def test_a_named_pipe_is_a_registration(self):
        self.start_with_marker(os.mkfifo)
        self.assert_registered()
        self.quit()

    def test_a_link_that_leads_nowhere_is_none(self):
        self.start_with_marker(lambda path: os.symlink("nowhere", path))
        self.wait_for_status(NOT_REGISTERED)
        self.assertEqual(self.puppets.pids(), [])

    def test_a_runner_that_cannot_read_it_says_so_in_the_log(self):
        self.home.install_runner()
        (record,) = self.home.add_runners({})
        self.home.set_default("hasConnected", "true")
        marker = os.path.join(self.home.data_folder(record), ".runner")
        os.remove(marker)
        os.mkdir(marker)
        self.start_program()
        self.wait_for_status(STARTING)
        log = os.path.join(self.home.data_folder(record), "valdorn.log")
        wait_until(lambda: os.path.exists(log) and "Error: " in content(log), "a complaint")
        self.wait_for_status(STARTING)


class ExecutableTest(FaultCase):
    """Of what cannot be launched nothing is said, and it is not tried again."""

    def start_with(self, make):
        self.puppets, = self.puppet_runners({})
        self.home.remove_runner()
        make(self.home.runner_path)
        self.start_program()
        self.wait_for_status(STOPPED)

    def mend(self):
        self.home.remove_runner()
        self.home.install_runner(PUPPET)
        self.menu.choose("Start Runner")
        self.wait_for_status(CONNECTED)

    def test_a_named_pipe_is_not_launched(self):
        self.start_with(os.mkfifo)
        self.mend()

    def test_a_text_that_names_no_interpreter_is_not_launched(self):
        def make(path):
            with open(path, "w") as file:
                file.write("touch puppet/launched\n")
            os.chmod(path, 0o755)
        self.start_with(make)
        self.assertEqual(os.listdir(os.path.join(self.puppets.data_folder, "puppet")), ["first"])
        self.mend()

    def test_a_link_to_itself_is_not_launched(self):
        self.start_with(lambda path: os.symlink(path, path))
        os.remove(self.home.runner_path)
        self.mend()


class RegistrationTest(FaultCase):
    has_windows = True

    def test_says_why_the_executable_cannot_be_launched(self):
        self.prepare()
        WindowCase.begin(self)
        self.page = SettingsPage(self)
        self.page.type_token("t")
        path = self.home.runner_path
        for make, reason in ((os.mkdir, "ermission denied"), (os.mkfifo, "ermission denied"),
                             (self.make_text, "xec format error")):
            with self.subTest(make):
                self.home.remove_runner()
                make(path)
                self.page.register()
                self.page.wait_for_outcome()
                wait_until(lambda: [text for text in self.page.texts() if reason in text and
                                    path in text], f"{reason} in {self.page.texts()}", 5)
        self.assertFalse(os.path.exists(os.path.join(self.folders[0], ".runner")))

    @staticmethod
    def make_text(path):
        with open(path, "w") as file:
            file.write("true\n")
        os.chmod(path, 0o755)


class SettingsFileTest(FaultCase):
    """Then nothing is remembered beyond the end."""

    has_windows = True  # the introduction

    def run_with(self, make, name, comes_later=False):
        """That the runner has connected is to be remembered, but cannot be."""
        self.home = self.new_home()
        puppets, = self.puppet_runners({}, connected=False, first="")
        self.home.set_default("labels", "linux")
        path = os.path.join(os.path.dirname(self.settings()), name)
        if not comes_later:
            self.put(make, path)
        self.start_program()
        self.wait_for_status(STARTING)
        if comes_later:
            self.put(make, path)
        puppets.say(DECLARED)
        self.wait_for_status(CONNECTED)
        self.quit()
        self.assertNotEqual(kind_of(path), "file")

    @staticmethod
    def put(make, path):
        if os.path.exists(path):
            os.remove(path)
        make(path)

    def test_what_is_no_file_is_done_without(self):
        for make in (os.mkdir, os.mkfifo):
            for comes_later in (False, True):
                with self.subTest(make, comes_later=comes_later):
                    self.run_with(make, "valdorn.ini", comes_later)

    def test_what_is_no_lock_is_done_without(self):
        for make in (os.mkdir, os.mkfifo):
            with self.subTest(make):
                self.run_with(make, "valdorn.ini.lock")
                self.assertNotIn("hasConnected", content(self.settings()))

    def settings(self):
        return os.path.join(self.home.path, ".config/valdorn/valdorn.ini")


class AutostartTest(FaultCase):
    def setUp(self):
        super().setUp()
        self.puppet_runners({})
        folder = os.path.join(self.home.path, ".config/autostart")
        os.makedirs(folder)
        self.path = os.path.join(folder, "org.valdorn.valdorn.desktop")

    def switch(self, name):
        done = subprocess.run([VALDORN, name], env=environment(self.desktop, self.home), timeout=20,
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 0)
        return done.stdout, done.stderr

    def assert_not_enabled(self):
        """And starting the program does not change it."""
        self.start_program()
        self.wait_for_status(CONNECTED)
        self.assertEqual(self.switch("--login-status"), ("not-enabled\n", ""))
        printed, said = self.switch("--enable-login")
        self.assertEqual(printed, "failed\n")
        self.assertRegex(said, f"^{REFUSAL}.+\n$")
        self.assertEqual(self.switch("--disable-login"), ("disabled\n", ""))
        self.quit()

    def test_a_folder_stays_and_enables_nothing(self):
        os.mkdir(self.path)
        self.assert_not_enabled()
        self.assertEqual(os.listdir(self.path), [])

    def test_a_named_pipe_stays_and_enables_nothing(self):
        os.mkfifo(self.path)
        self.assert_not_enabled()
        self.assertEqual(kind_of(self.path), "pipe")

    def test_a_link_to_a_device_stays_and_enables_nothing(self):
        os.symlink("/dev/zero", self.path)
        self.assert_not_enabled()
        self.assertEqual(os.readlink(self.path), "/dev/zero")


class PlaceTest(FaultCase):
    """Where the instance keeps its lock and the list of its daemons."""

    def setUp(self):
        super().setUp()
        self.puppets, = self.puppet_runners({})
        # Their names are found out by a start.
        self.start_program()
        self.wait_for_status(CONNECTED)
        self.folder = os.path.join(self.desktop.runtime, "valdorn")
        self.lock, = (os.path.join(self.folder, name) for name in os.listdir(self.folder)
                      if name.endswith(".lock"))
        self.ledger = self.lock.replace(".lock", ".daemons")
        self.quit()

    def test_a_lock_that_is_none_is_done_without(self):
        make_fifo(self.lock)
        self.start_program()
        self.expect_stderr(self.program)
        self.wait_for_status(CONNECTED)
        self.assertRegex(self.program.stderr(), f"^valdorn: The lock file {self.lock} cannot be "
                                                "used: .+\n$")
        self.quit()
        self.puppets.wait_for_none()

    def test_a_ledger_that_is_none_is_done_without(self):
        for make in (os.mkfifo, os.mkdir):
            make(self.ledger)
            with self.subTest(make):
                self.start_program()
                self.wait_for_status(CONNECTED)
                self.quit()
                self.puppets.wait_for_none()
            if os.path.isdir(self.ledger):
                os.rmdir(self.ledger)
            elif os.path.exists(self.ledger):
                os.remove(self.ledger)


if __name__ == "__main__":
    unittest.main()
