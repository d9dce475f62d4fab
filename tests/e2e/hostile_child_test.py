"""Children that do what no child should, under the whole program."""

import os
import subprocess
import time
import unittest

from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.icon import colour
from support.program import is_alive
from support.skipping import skip
from support.waiting import spend, stays_true, wait_until

MIB = 1024 * 1024
FLOOD_BYTES = 1000 * 1000 * 1000
FLOOD_SECONDS = 120
MORE_MEMORY_BYTES = 64 * MIB  # what a flood may cost
MENU_SECONDS = 2.0
RELAUNCH_SECONDS = 5.0
LATE_SECONDS = 2.5  # what it may take a busy computer to notice, and to launch a daemon

STARTING = "Status: Starting…"
CONNECTED = "Status: Connected — idle"
BLOCKED = "Status: No local-network access"


def memory_bytes(pid):
    with open(f"/proc/{pid}/status") as file:
        line = next(line for line in file if line.startswith("VmRSS:"))
    return int(line.split()[1]) * 1024


def written_bytes(pid):
    with open(f"/proc/{pid}/io") as file:
        line = next(line for line in file if line.startswith("wchar:"))
    return int(line.split()[1])


class HostileChildCase(ProgramCase):
    def begin(self, *script, connected=True, **options):
        self.home.install_runner()
        (record,) = self.home.add_runners({}, script="\n".join(script) + "\n")
        self.log_path = os.path.join(self.home.data_folder(record), "valdorn.log")
        if connected:
            self.home.set_default("hasConnected", "true")
        self.program, self.item = self.start_with_item(**options)
        self.menu = self.item.menu()

    def sees(self, label):
        return label in self.menu.labels()

    def wait_for(self, label, seconds=20.0):
        wait_until(lambda: self.sees(label), f"{label!r} in the menu", seconds)

    def raw_log(self):
        with open(self.log_path, encoding="utf-8", newline="") as file:
            return file.read()

    def log(self):
        """The lines of the runner's log, which is whole at every moment."""
        text = self.raw_log()
        self.assertTrue(text.endswith("\n") or not text, text[-200:])
        return text.split("\n")[:-1]

    def declarations(self):
        return sum("declare successfully" in line for line in self.log())

    def moments_of_declaration(self, count):
        """When each of the first `count` was seen in the log."""
        moments = []

        def look():
            if self.declarations() > len(moments):
                moments.append(time.monotonic())
            return len(moments) == count
        wait_until(look, f"{count} declarations", count * (RELAUNCH_SECONDS + LATE_SECONDS))
        return moments

    def check_pauses(self, moments):
        for before, after in zip(moments, moments[1:]):
            # The first of two may have been seen late, too.
            self.assertGreaterEqual(after - before, RELAUNCH_SECONDS - 0.5)
            self.assertLessEqual(after - before, RELAUNCH_SECONDS + LATE_SECONDS)


class FloodTest(HostileChildCase):
    def flood(self, form):
        # What comes in one piece with bytes that are no text is lost with them, hence the pauses.
        self.begin("line Error: before", "wait 2s", f"flood 1GB {form}", "wait 500ms", "line",
                   "line Error: after", "declare", "hang")
        (daemon,) = self.program.children()
        spend(0.7)
        self.menu.labels()
        before = memory_bytes(self.program.process.pid)
        peak, slowest, answers = self.watch(daemon)
        print(f"{form}: {before / MIB:.1f} MiB before, {peak / MIB:.1f} MiB at most, menu within "
              f"{slowest:.3f} s, {answers} answers during the flood")
        self.assertGreaterEqual(written_bytes(daemon), FLOOD_BYTES)
        self.assertLessEqual(peak - before, MORE_MEMORY_BYTES)
        self.assertLessEqual(slowest, MENU_SECONDS)
        self.assertGreater(answers, 5)
        lines = self.log()
        self.assertEqual(["Error: before", "Error: after"], lines[:2])
        self.assertIn("declare successfully", lines[2])
        self.assertEqual(3, len(lines))

    def watch(self, daemon):
        """Until the flood is over and what follows it has arrived: the most memory, the longest
        time for a menu, and how many menus came while the flood ran."""
        peak, slowest, answers = 0, 0.0, 0

        def look():
            nonlocal peak, slowest, answers
            asked = time.monotonic()
            labels = self.menu.labels()
            slowest = max(slowest, time.monotonic() - asked)
            answers += 0 < written_bytes(daemon) - len("Error: before\n") < FLOOD_BYTES
            peak = max(peak, memory_bytes(self.program.process.pid))
            return CONNECTED in labels
        wait_until(look, "the end of the flood", FLOOD_SECONDS)
        return peak, slowest, answers

    def test_short_lines(self):
        self.flood("lines")

    def test_no_line_end(self):
        self.flood("no-line-end")

    def test_binary(self):
        self.flood("binary")

    def test_a_burst_of_lines_worth_keeping_is_kept_whole_and_in_order(self):
        burst = [f"Error: {number}" for number in range(50000)]
        self.begin(*("line " + line for line in burst), "declare", "hang")
        self.wait_for(CONNECTED, 60)
        lines = self.log()
        self.assertTrue(burst == lines[:-1], f"{len(lines)} lines")
        self.assertIn("declare successfully", lines[-1])


class EndTest(HostileChildCase):
    def test_a_daemon_that_ignores_termination_is_let_alone(self):
        self.begin("ignore-term", "declare", "hang")
        self.wait_for(CONNECTED)
        (daemon,) = self.program.children()
        self.menu.choose("Stop Runner")
        self.wait_for("Status: Stopped")
        self.wait_for("Start Runner")
        spend(1)
        self.assertTrue(is_alive(daemon))
        self.menu.choose("Quit Valdorn")
        self.assertEqual(0, self.program.wait_for_end(5))
        self.assertTrue(is_alive(daemon))

    def test_a_daemon_that_crashes_each_time_comes_back_every_five_seconds(self):
        self.begin("declare", "crash segv")
        moments = self.moments_of_declaration(4)
        self.check_pauses(moments)
        # Between its crash and the relaunch nothing tells that it is gone.
        self.assertTrue(self.sees(CONNECTED))
        stays_true(lambda: self.declarations() == 4, "four launches", 1)
        self.assertEqual([], self.program.zombies())

    def test_a_grandchild_that_keeps_the_pipe_delays_nothing(self):
        self.begin("grandchild 60s", "declare", "exit 3")
        self.check_pauses(self.moments_of_declaration(2))
        wait_until(lambda: not self.program.children(), "the end of the second daemon", 2)
        wait_until(lambda: len(self.home.processes()) == 2, "two grandchildren alone", 2)


class OutputTest(HostileChildCase):
    def test_cr_lf_ends_no_line(self):
        self.begin("crlf on", "declare", "line Error: inside", "wait 1500ms", "crlf off", "line x",
                   "hang")
        self.wait_for(STARTING)
        stays_true(lambda: self.sees(STARTING) and not self.log(), STARTING, 0.7)
        self.wait_for(CONNECTED)
        self.assertRegex(self.raw_log(), r'\Atime="[^\r\n]+ declare successfully"[^\r\n]*\r\n'
                                         r'Error: inside\r\nx\n\Z')

    def test_single_bytes_make_the_same_lines(self):
        self.begin("split-writes 1", "start", "line Error: a", "declare", "hang")
        self.wait_for(CONNECTED)
        lines = self.log()
        self.assertEqual("Error: a", lines[-2])
        for line in lines[:-2] + lines[-1:]:
            self.assertRegex(line, r'^time="[^"]+" level=info msg=".+"')

    def test_a_network_out_of_reach_turns_the_bird_red(self):
        self.begin("no-route-to-host", "wait 3s", "declare", "hang")
        self.wait_for(BLOCKED)
        wait_until(lambda: colour(self.item.pixmaps()) == "red", "the red bird")
        self.assertEqual({}, self.desktop.windows())
        self.wait_for(CONNECTED)
        wait_until(lambda: colour(self.item.pixmaps()) == "green", "the green bird")


class IntroductionTest(HostileChildCase):
    window_manager = usual_window_manager

    def introduction(self):
        return [window for window, title in self.desktop.windows().items() if title == "Valdorn"]

    def test_a_network_out_of_reach_brings_the_introduction_up_until_something_has_connected(self):
        self.begin("wait 6s", "no-route-to-host", "wait 3s", "declare", "wait 1s",
                   "no-route-to-host", "hang", connected=False)
        wait_until(self.introduction, "the introduction at the first start")
        self.close_introduction()
        self.wait_for(BLOCKED)
        wait_until(self.introduction, "the introduction again")
        self.close_introduction()
        self.wait_for(CONNECTED)
        self.wait_for(BLOCKED)
        stays_true(lambda: not self.introduction(), "no introduction", 1)

    def close_introduction(self):
        (window,) = self.introduction()
        self.desktop.xdotool("windowactivate", "--sync", window, "key", "alt+F4")
        wait_until(lambda: not self.introduction(), "the end of the introduction")


class FullDiskTest(HostileChildCase):
    LINES = 500
    LINE_BYTES = 1000

    # Starts a command with the home as it is, on a file system that has 128 KiB left.
    HARDLY_ANY_ROOM = """
        exec 3<"$HOME"
        mount -t tmpfs -o size=8m none "$HOME" && cp -a /proc/self/fd/3/. "$HOME" || exit
        dd if=/dev/zero of="$HOME/ballast" bs=64k 2>/dev/null
        truncate -s -128K "$HOME/ballast"
        exec "$@" 3<&-
    """

    def fill(self, **options):
        """More lines than there is room for; then two changes that must show all the same."""
        line = "line Error: " + "x" * (self.LINE_BYTES - len("Error: \n"))
        self.begin(*[line] * self.LINES, "no-route-to-host", "wait 2s", "declare", "hang", **options)
        self.wait_for(BLOCKED)
        self.wait_for(CONNECTED)
        self.assertTrue(self.program.is_running())

    def test_a_log_that_reaches_the_size_limit_ends_nothing(self):
        limit = 100 * 1000
        self.fill(command=("prlimit", f"--fsize={limit}"))
        self.assertEqual(limit, os.path.getsize(self.log_path))

    def test_a_size_limit_that_no_file_fits_in_ends_nothing(self):
        self.begin("hang", connected=False, command=("prlimit", "--fsize=10"))
        # Its configuration could not be written, and so the daemon says.
        wait_until(lambda: self.raw_log() == "Error: inv", "a complaint that was cut", 20)
        stays_true(lambda: self.sees(STARTING), STARTING, 1)

    def test_a_full_file_system_ends_nothing(self):
        space = ("unshare", "--map-current-user", "--keep-caps", "--mount")
        if subprocess.run([*space, "true"], capture_output=True).returncode:
            skip("no file systems of one's own here")
        self.fill(command=(*space, "sh", "-c", self.HARDLY_ANY_ROOM, "sh"))
        inside = f"/proc/{self.program.process.pid}/root{self.log_path}"
        self.assertLess(os.path.getsize(inside), self.LINES * self.LINE_BYTES)
        facts = os.statvfs(f"/proc/{self.program.process.pid}/root{self.home.path}")
        self.assertEqual(0, facts.f_bavail)


if __name__ == "__main__":
    unittest.main()
