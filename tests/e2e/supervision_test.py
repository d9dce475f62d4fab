"""Daemons as Valdorn launches, watches and relaunches them."""

import contextlib
import json
import os
import signal
import time
import unittest

from support.case import ProgramCase
from support.program import Home, environment, kill
from support.puppet import DECLARED, PUPPET, Puppets, entry
from support.waiting import spend, wait_until

FIXED_FOLDERS = "/.cargo/bin:/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin"

# The wait before a relaunch is 5.0 s; the rest is what a busy machine may add.
RELAUNCH_EARLIEST = 4.9
RELAUNCH_LATEST = 5.9


def core_dump_limit(pid):
    """The soft one."""
    with open(f"/proc/{pid}/limits") as file:
        line = next(line for line in file if line.startswith("Max core file size"))
    return line.split()[4]


class SupervisionCase(ProgramCase):
    def begin(self, **options):
        """The program, its item and its menu; the runners are there already."""
        self.program, self.item = self.start_with_item(**options)
        self.menu = self.item.menu()

    def begin_with_puppet(self, record=None, **options):
        self.puppets, = self.puppet_runners(record or {}, **options)
        self.begin()
        return self.puppets.wait_for_one()

    def wait_for_label(self, label, seconds=20.0):
        wait_until(lambda: label in self.menu.labels(), f"{label!r} in the menu", seconds)

    def wait_for_status(self, status, seconds=20.0):
        self.wait_for_label("Status: " + status, seconds)

    def stop(self, puppets):
        """Stops the only runner; its daemon's end has been seen by Valdorn as well."""
        self.menu.choose("Stop Runner")
        self.wait_for_status("Stopped")
        puppets.wait_for_none()
        wait_until(lambda: not self.program.zombies(), "the last rites")
        spend(0.2)

    def assert_relaunch(self, begun, puppets, launches=2):
        """Waits for the launch after that and compares the time."""
        wait_until(lambda: len(puppets.pids()) == launches, "a relaunch", 10)
        waited = time.monotonic() - begun
        self.assertGreaterEqual(waited, RELAUNCH_EARLIEST)
        self.assertLessEqual(waited, RELAUNCH_LATEST)


class LaunchTest(SupervisionCase):
    def test_the_daemon_gets_its_command_line_folder_and_group(self):
        pid = self.begin_with_puppet({"id": "abc"})
        facts = self.puppets.facts(pid)
        folder = os.path.join(self.home.support, "runners/abc")
        self.assertEqual(facts["arguments"], ["daemon", "--config", folder + "/runner-config.yaml"])
        self.assertEqual(facts["folder"], folder)
        self.assertEqual(facts["group"], pid)

    def test_the_daemon_gets_the_environment_with_a_path_of_its_own(self):
        pid = self.begin_with_puppet({"extraPath": "::/a::/usr/bin: :"})
        expected = {**environment(self.desktop, self.home),
                    "PATH": "/a:/usr/bin: :" + self.home.path + FIXED_FOLDERS}
        self.assertEqual(self.puppets.facts(pid)["environment"], expected)

    def test_the_daemon_inherits_nothing_else(self):
        pid = self.begin_with_puppet()
        facts = self.puppets.facts(pid)
        descriptors = facts["descriptors"]
        self.assertEqual(sorted(descriptors), ["0", "1", "2"])
        self.assertEqual(descriptors["0"], "/dev/null")
        self.assertTrue(descriptors["1"].startswith("pipe:"), descriptors)
        self.assertEqual(descriptors["1"], descriptors["2"])
        self.assertEqual(facts["blocked"], 0)
        # Python ignores these two of its own accord, and the C library two beyond the usual 31.
        own = 1 << (signal.SIGPIPE - 1) | 1 << (signal.SIGXFSZ - 1)
        self.assertEqual(facts["ignored"] & ~own & (1 << 31) - 1, 0)

    def test_a_crash_leaves_no_memory_of_ours_on_the_disk_and_the_daemons_as_ever(self):
        puppets, = self.puppet_runners({})
        # AddressSanitizer would lower it before the program begins.
        options = os.environ.get("ASAN_OPTIONS", "") + ":disable_coredump=0"
        self.begin(command=("prlimit", "--core=4096:"), ASAN_OPTIONS=options)
        self.assertEqual(core_dump_limit(self.program.process.pid), "0")
        self.assertEqual(core_dump_limit(puppets.wait_for_one()), "4096")

    def test_writes_the_configuration_at_each_launch(self):
        puppets, = self.puppet_runners({})
        path = os.path.join(puppets.data_folder, "runner-config.yaml")
        with open(path, "w") as file:
            file.write("log:\n  level: info\n# mine\n")
        self.begin()
        puppets.wait_for_one()
        with open(path, "rb") as file:
            self.assertEqual(file.read(), b"log:\n  level: debug\n")

    def test_the_legacy_runner_lives_in_the_support_folder(self):
        pid = self.begin_with_puppet({"legacy": True})
        self.assertEqual(self.puppets.facts(pid)["folder"], self.home.support)
        self.assertEqual(self.puppets.data_folder, self.home.support)

    def test_remembers_that_it_has_connected(self):
        path = os.path.join(self.home.path, ".config/valdorn/valdorn.ini")
        self.begin_with_puppet(connected=False, first="")
        self.wait_for_status("Starting…")
        self.assertFalse(os.path.exists(path))
        self.puppets.say(DECLARED)
        self.wait_for_status("Connected — idle")
        with open(path) as file:
            self.assertEqual(file.read(), "[General]\nhasConnected=true\n")

    def test_what_cannot_be_launched_is_stopped_and_stays_so(self):
        homes = {"missing": self.home, "not executable": self.new_home(),
                 "a folder": self.new_home()}
        puppets = {}
        for name, home in homes.items():
            puppets[name], = self.puppet_runners({}, home=home)
            os.remove(home.runner_path)
        with open(homes["not executable"].runner_path, "w") as file:
            file.write("#!/bin/sh\n")
        os.mkdir(homes["a folder"].runner_path)
        host = self.host()
        menus = {}
        for index, (name, home) in enumerate(homes.items()):
            self.start(home=home)
            wait_until(lambda: len(host.items) > index, "a status item")
            menus[name] = host.items[-1].menu()
        for name, menu in menus.items():
            with self.subTest(name):
                wait_until(lambda: "Status: Stopped" in menu.labels(), "the status")
                self.assertIn("Start Runner", menu.labels())
        for home in homes.values():
            home.remove_runner()
            home.install_runner(PUPPET)
        spend(RELAUNCH_LATEST)
        for name, menu in menus.items():
            with self.subTest(name):
                self.assertEqual(puppets[name].pids(), [])
                self.assertIn("Status: Stopped", menu.labels())
                menu.choose("Start Runner")
                puppets[name].wait_for_one()


class RelaunchTest(SupervisionCase):
    def test_relaunches_five_seconds_after_whatever_end(self):
        puppets = self.puppet_runners({}, {}, {}, {})
        self.begin()
        pids = [puppet.wait_for_one() for puppet in puppets]
        self.wait_for_status("Connected — idle · 4 runners")
        # Killed, crashed, ended with exit code 0, left alone.
        for pid, number in zip(pids, (signal.SIGKILL, signal.SIGSEGV, signal.SIGTERM)):
            kill(pid, number)
        begun = time.monotonic()
        for puppet in puppets[:3]:
            puppet.wait_for_none(2)
        spend(0.3)
        self.assertEqual(self.program.zombies(), [])
        self.assertIn("Status: Connected — idle · 4 runners", self.menu.labels())
        for puppet in puppets[:3]:
            self.assert_relaunch(begun, puppet)
        self.assertEqual(puppets[3].pids(), pids[3:])

    def test_a_stop_within_the_wait_does_not_prevent_the_relaunch(self):
        # The second one is there so that something runs that can be stopped.
        puppets, others = self.puppet_runners({}, {})
        self.begin()
        others.wait_for_one()
        kill(puppets.wait_for_one(), signal.SIGKILL)
        begun = time.monotonic()
        puppets.wait_for_none(2)
        spend(0.3)
        self.menu.choose("Stop All")
        self.wait_for_status("Stopped · 2 runners", 2)
        self.assert_relaunch(begun, puppets)
        self.wait_for_status("Connected — idle · 2 runners")
        # Not wanted any more: its next end is the last.
        kill(puppets.wait_for_one(), signal.SIGKILL)
        self.wait_for_status("Stopped · 2 runners", 2)
        self.assertEqual(len(others.pids()), 1)

    def test_restart_ends_the_daemon_and_relaunches_it(self):
        first = self.begin_with_puppet()
        self.wait_for_status("Connected — idle")
        self.menu.choose("Restart Runner")
        begun = time.monotonic()
        self.puppets.wait_for_none(2)
        self.assertEqual(self.puppets.signals(first), ["SIGTERM"])
        spend(0.3)
        self.assertIn("Status: Connected — idle", self.menu.labels())
        self.assert_relaunch(begun, self.puppets)

    def test_restart_starts_what_does_not_run(self):
        self.begin_with_puppet()
        self.stop(self.puppets)
        self.menu.choose("Restart Runner")
        self.puppets.wait_for_one(3)

    def test_restart_leaves_an_unregistered_runner_alone(self):
        puppets, = self.puppet_runners({})
        marker = os.path.join(puppets.data_folder, ".runner")
        self.begin()
        puppets.wait_for_one()
        self.stop(puppets)
        os.remove(marker)
        self.menu.choose("Restart Runner")
        self.wait_for_status("Not registered")
        self.assertEqual(len(puppets.pids()), 1)
        # An empty marker is one.
        open(marker, "w").close()
        self.menu.choose("Restart Runner")
        puppets.wait_for_one()


class LogTest(SupervisionCase):
    def test_keeps_structured_lines_and_errors_only(self):
        kept = [DECLARED, entry("one"), "Error: unknown flag\n", "Error:\n",
                entry("a level=warning b", "warning")]
        dropped = [entry("two", "debug"), "[CI/build] | step output\n", "Worker 2 finished (ok)\n",
                   " Error: not at the start\n", "time=2026 level=info msg=x\n", "\n",
                   entry("says level=debug inside")]
        self.begin_with_puppet(first="".join(
            line for pair in zip(kept, dropped) for line in pair) + "".join(dropped[len(kept):]))
        self.puppets.say(entry("the last"))
        self.wait_for_log("".join(kept) + entry("the last"))

    def wait_for_log(self, text):
        path = os.path.join(self.puppets.data_folder, "valdorn.log")
        try:
            wait_until(lambda: os.path.exists(path) and self.log(path) == text, "the log", 5)
        except AssertionError:
            self.assertEqual(self.log(path), text)

    @staticmethod
    def log(path):
        with open(path, encoding="utf-8") as file:
            return file.read()

    def test_appends_across_launches_and_runs(self):
        self.puppets, = self.puppet_runners({})
        with open(os.path.join(self.puppets.data_folder, "valdorn.log"), "w") as file:
            file.write("earlier\n")
        self.begin()
        self.wait_for_log("earlier\n" + DECLARED)
        self.stop(self.puppets)
        self.menu.choose("Start Runner")
        self.wait_for_log("earlier\n" + DECLARED * 2)
        self.program.quit()
        self.begin()
        self.wait_for_log("earlier\n" + DECLARED * 3)

    def test_does_without_a_log_where_a_folder_has_its_name(self):
        puppets, = self.puppet_runners({})
        os.mkdir(os.path.join(puppets.data_folder, "valdorn.log"))
        self.begin()
        self.wait_for_status("Connected — idle")


class BrokenHomeTest(SupervisionCase):
    def test_a_damaged_list_becomes_the_migrated_runner(self):
        record = {"id": "a", "name": "n", "instanceURL": "", "labels": "", "extraPath": "",
                  "legacy": False}
        partial = {key: value for key, value in record.items() if key != "extraPath"}
        for text in ("{", "[]", "{}", json.dumps([record, partial]), "", "[1]"):
            with self.subTest(text), self.disposable_home() as home:
                home.write_list(text)
                home.set_default("runnerName", "Ada")
                self.migrate(home)
                self.assertEqual(home.read("runners.json"), json.dumps([{
                    "id": "legacy", "name": "Ada", "instanceURL": "", "labels": "macos",
                    "extraPath": "", "legacy": True}], separators=(",", ":")))

    def test_a_new_home_gets_the_migrated_runner(self):
        with self.disposable_home() as home:
            self.migrate(home)
            written, = json.loads(home.read("runners.json"))
            self.assertEqual((written["id"], written["labels"], written["legacy"]),
                             ("legacy", "macos", True))
            self.assertTrue(written["name"])
            self.assertEqual(written["name"], written["name"].lower().replace(" ", "-"))

    def migrate(self, home):
        program = self.start(home=home)
        wait_until(lambda: home.has_file("runners.json") and
                   home.read("runners.json").endswith('"legacy":true}]'), "the list")
        program.quit()

    @staticmethod
    def disposable_home():
        return contextlib.closing(Home())

    def test_the_migrated_runner_keeps_its_old_registration(self):
        self.home.install_runner(PUPPET)
        os.makedirs(self.home.support)
        Home.register(self.home.support)
        puppets = Puppets(self.home.support)
        self.begin()
        puppets.wait_for_one()
        self.wait_for_status("Connected — idle")

    def test_runs_where_the_support_folder_cannot_be_made(self):
        with open(os.path.join(self.home.path, "Library"), "w") as file:
            file.write("in the way")
        self.begin()
        self.wait_for_status("Not registered")
        self.menu.choose("Start Runner")
        self.menu.choose("Restart Runner")
        spend(0.3)
        self.assertTrue(self.program.is_running())

    def test_launches_though_the_configuration_cannot_be_written(self):
        puppets, = self.puppet_runners({})
        os.mkdir(os.path.join(puppets.data_folder, "runner-config.yaml"))
        self.begin()
        self.wait_for_status("Connected — idle")
        self.assertEqual(os.listdir(os.path.join(puppets.data_folder, "runner-config.yaml")), [])
        # No temporary file is left beside it.
        self.assertEqual(sorted(os.listdir(puppets.data_folder)),
                         [".runner", "puppet", "runner-config.yaml", "valdorn.log"])

    def test_does_without_settings_that_cannot_be_written(self):
        with open(os.path.join(self.home.path, ".config"), "w") as file:
            file.write("in the way")
        self.puppets, = self.puppet_runners({}, connected=False)
        self.begin()
        self.wait_for_status("Connected — idle")


class LeftoversTest(SupervisionCase):
    def leave_behind(self, **options):
        """Kills Valdorn, so that a daemon of it stays; its process id."""
        self.puppets, = self.puppet_runners({}, **options)
        self.begin()
        daemon = self.puppets.wait_for_one()
        kill(self.program.process.pid, signal.SIGKILL)
        self.program.wait_for_end()
        self.assertEqual(self.puppets.living(), [daemon])
        return daemon

    def test_what_a_killed_instance_left_is_ended_before_the_next_launch(self):
        daemon = self.leave_behind()
        stranger = self.home.start_by_hand(self.desktop, self.puppets.data_folder)
        self.addCleanup(stranger.wait)
        self.addCleanup(stranger.kill)
        wait_until(lambda: stranger.pid in self.puppets.pids(), "the stranger")
        self.begin()
        wait_until(lambda: len(self.puppets.pids()) == 3, "the next daemon")
        self.assertEqual(self.puppets.signals(daemon), ["SIGTERM"])
        new = self.puppets.pids()[-1]
        self.assertLess(self.puppets.ended_at(daemon), self.puppets.started_at(new))
        self.assertEqual(sorted(self.puppets.living()), sorted([stranger.pid, new]))
        self.assertEqual(self.puppets.signals(stranger.pid), [])

    def test_what_does_not_end_is_not_waited_for_long(self):
        daemon = self.leave_behind(stubborn=True)
        begun = time.monotonic()
        self.begin()
        wait_until(lambda: len(self.puppets.pids()) == 2, "the next daemon", 10)
        self.assertLess(time.monotonic() - begun, 4.5)
        self.assertEqual(self.puppets.signals(daemon), ["SIGTERM"])
        self.assertIn(daemon, self.puppets.living())


if __name__ == "__main__":
    unittest.main()
