"""The whole way, with nothing played: an empty home, a real act_runner, a server that speaks its
protocol, a registration, jobs, a crash, and the end."""

import json
import os
import re
import signal
import time
import unittest

from support.case import ProgramCase
from support.gitea import TOKEN, Gitea
from support.icon import colour
from support.program import is_alive
from support.real_runner import REAL_RUNNER, build_or_skip, register
from support.waiting import stays_true, wait_until

RELAUNCH_SECONDS = 5.0
IDLE_SECONDS = 4.0
# How late something may come on a busy computer: what it takes to notice, and to launch a daemon.
LATE_SECONDS = 2.5

STARTING = "Status: Starting…"
CONNECTED = "Status: Connected — idle"
BUILDING = "Status: Building a job"
SPINNER_PICTURES = 3  # as many different ones prove that it turns

WORKFLOW = """
name: Site
on: push
jobs:
  build:
    runs-on: linux
    steps:
      - name: First
        run: echo "first step in $((40 + 2))"
      - name: Second
        run: sleep 1; echo "second step of job {job}"
"""


def setUpModule():
    build_or_skip()


class RealRunnerCase(ProgramCase):
    def setUp(self):
        super().setUp()
        self.home.install_runner(REAL_RUNNER)
        self.server = Gitea()
        self.addCleanup(self.server.close)

    def register(self, token=TOKEN):
        return register(self.home, self.server.url, token, "mini", "linux:host")

    def begin(self):
        self.program, self.item = self.start_with_item()
        self.menu = self.item.menu()

    def sees(self, label):
        return label in self.menu.labels()

    def wait_for(self, label, seconds=20.0):
        wait_until(lambda: self.sees(label), f"{label!r} in the menu", seconds)

    def log(self):
        """The lines of the runner's log."""
        try:
            text = self.home.read("valdorn.log")
        except FileNotFoundError:
            return []
        self.assertEqual("", text[text.rfind("\n") + 1:], "the last line is whole")
        return text.splitlines()

    def launches(self):
        return sum('msg="Starting runner daemon"' in line for line in self.log())


class RegistrationTest(RealRunnerCase):
    def test_a_good_token_registers_the_runner(self):
        self.assertEqual((0, "ok"), self.register())
        self.assertIn(self.server.url, self.home.read(".runner"))
        (runner,) = self.server.runners()
        self.assertEqual(("mini", ["linux"]), (runner["name"], runner["labels"]))
        (record,) = json.loads(self.home.read("runners.json"))
        self.assertEqual((self.server.url, "mini", "linux:host"),
                         (record["instanceURL"], record["name"], record["labels"]))

    def test_a_bad_token_is_refused_with_the_tools_own_words(self):
        self.assertEqual(
            (1, "refused: Error: Failed to register runner: unauthenticated: "
                "runner registration token not found"),
            self.register("bad"))
        self.assertEqual([], self.server.runners())
        self.begin()
        self.wait_for("Status: Not registered")
        self.assertEqual([], self.program.children())

    def test_without_the_tool_the_launch_fails(self):
        tool = os.path.join(self.home.path, "actrunner/act_runner")
        os.remove(tool)
        code, text = self.register()
        self.assertEqual(2, code)
        self.assertRegex(text, f"^launch error: .*{re.escape(tool)}.*[Nn]o such file or directory")


class LifeTest(RealRunnerCase):
    def test_from_the_first_start_to_the_end(self):
        self.assertEqual((0, "ok"), self.register())
        self.start_while_the_server_is_slow()
        self.run_job(1)
        self.check_log()
        self.kill_the_daemon()
        self.run_job(2)
        self.quit()
        self.check_log()

    def start_while_the_server_is_slow(self):
        self.server.answer_after(1000)
        self.begin()
        self.wait_for(STARTING)
        self.assertEqual("yellow", colour(self.item.pixmaps()))
        self.server.answer_after(0)
        self.wait_for(CONNECTED)
        wait_until(lambda: colour(self.item.pixmaps()) == "green", "the green bird")
        self.assertTrue(self.sees("Stop Runner"))
        self.assertTrue(self.server.runners()[0]["online"])
        with open(os.path.join(self.home.path, ".config/valdorn/valdorn.ini")) as file:
            self.assertIn("hasConnected=true", file.read())

    def run_job(self, number):
        job = self.server.give_job("acme/site", WORKFLOW.replace("{job}", str(number)))
        self.wait_for(BUILDING)
        self.wait_for("Building: acme/site", 2)
        pictures = set()
        wait_until(lambda: pictures.add(max(self.item.pixmaps())) or
                   len(pictures) >= SPINNER_PICTURES, "a turning spinner")
        self.assertTrue(self.sees(BUILDING))
        task = self.server.wait_for_result(job)
        end = time.monotonic()
        self.assertEqual("success", task["result"])
        output = "\n".join(task["logs"])
        self.assertIn("first step in 42", output)
        self.assertIn(f"second step of job {number}", output)
        self.returns_to_idle(end)

    def returns_to_idle(self, end):
        stays_true(lambda: self.sees(BUILDING), BUILDING,
                   IDLE_SECONDS - 0.7 - (time.monotonic() - end))
        self.wait_for(CONNECTED, 0.7 + LATE_SECONDS)
        wait_until(lambda: colour(self.item.pixmaps()) == "green", "the green bird")
        self.assertFalse(self.sees("Building: acme/site"))

    def kill_the_daemon(self):
        (daemon,) = self.program.children()
        killed = time.monotonic()
        os.kill(daemon, signal.SIGKILL)
        wait_until(lambda: not self.program.children(), "the end of the daemon", 2)
        wait_until(self.program.children, "the relaunch", RELAUNCH_SECONDS + LATE_SECONDS)
        self.assertGreaterEqual(time.monotonic() - killed, RELAUNCH_SECONDS)
        self.assertNotEqual([daemon], self.program.children())
        wait_until(lambda: sum("declare successfully" in line for line in self.log()) == 2,
                   "the second declaration")
        self.wait_for(CONNECTED)

    def quit(self):
        (daemon,) = self.program.children()
        self.menu.choose("Quit Valdorn")
        self.assertEqual(0, self.program.wait_for_end())
        wait_until(lambda: not is_alive(daemon), "the end of the daemon", 10)

    def check_log(self):
        """Nothing but the daemon's own lines above the debug level, among them its version."""
        lines = self.log()
        for line in lines:
            self.assertRegex(line, r'^(time="[^"]+" level=(info|warning|error) |Error:)')
            self.assertNotIn("level=debug", line)
        self.assertTrue(any(re.search(r"with version: v\d+\.\d+\.\d+, .*declare successfully", line)
                            for line in lines), lines)


class ServerAwayTest(RealRunnerCase):
    AWAY_SECONDS = 12.0

    def test_launches_every_five_seconds_until_the_server_is_back(self):
        self.assertEqual((0, "ok"), self.register())
        self.server.go_away(self.AWAY_SECONDS)
        wait_until(lambda: not self.server.is_there(), "the server's absence", 5)
        self.begin()
        moments = []

        def look():
            if self.launches() > len(moments):
                moments.append(time.monotonic())
            return self.sees(CONNECTED)
        wait_until(look, CONNECTED, 40)
        self.check_moments(moments)
        self.assertTrue(any(line.startswith("Error:") for line in self.log()), self.log())

    def check_moments(self, moments):
        self.assertIn(len(moments), (3, 4))
        for before, after in zip(moments, moments[1:]):
            self.assertGreaterEqual(after - before, RELAUNCH_SECONDS - 0.5)
            self.assertLessEqual(after - before, RELAUNCH_SECONDS + LATE_SECONDS)


if __name__ == "__main__":
    unittest.main()
