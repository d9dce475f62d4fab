"""Every way of quitting asks each daemon once, politely, and waits for none."""

import os
import signal
import time
import unittest

from support.case import ProgramCase
from support.desktop import Desktop
from support.program import kill
from support.waiting import spend, wait_until

PROMPTLY = 2.0


class QuitTest(ProgramCase):
    def begin(self, **options):
        """The program with three connected runners."""
        command = options.pop("command", ())
        self.puppets = self.puppet_runners({}, {}, {}, **options)
        self.program, self.item = self.start_with_item(command=command)
        self.daemons = [puppet.wait_for_one() for puppet in self.puppets]
        wait_until(lambda: "Status: Connected — idle · 3 runners" in self.item.menu().labels(),
                   "three connected runners")

    def signals(self):
        return [puppet.signals(pid) for puppet, pid in zip(self.puppets, self.daemons)]

    def ledger(self):
        folder = os.path.join(self.desktop.runtime, "valdorn")
        names = [name for name in os.listdir(folder) if name.endswith(".daemons")]
        texts = []
        for name in names:
            with open(os.path.join(folder, name)) as file:
                texts.append(file.read())
        return "".join(texts)

    def assert_quits(self, ask):
        for pid in self.daemons:
            self.assertIn(f"\t{pid}\t", self.ledger())
        begun = time.monotonic()
        ask()
        self.assertEqual(self.program.wait_for_end(10), 0)
        self.assertLess(time.monotonic() - begun, PROMPTLY)
        wait_until(lambda: all(self.signals()), "the daemons' signals", 5)
        spend(0.2)  # for a second signal to arrive
        self.assertEqual(self.signals(), [["SIGTERM"]] * 3)
        for pid in self.daemons:
            self.assertNotIn(f"\t{pid}\t", self.ledger())

    def assert_nothing_left(self):
        for puppet in self.puppets:
            puppet.wait_for_none(5)
        self.assertEqual(self.home.processes(), [])

    def test_from_the_menu(self):
        self.begin()
        self.assert_quits(lambda: self.item.menu().choose("Quit Valdorn"))
        self.assert_nothing_left()

    def test_by_each_signal(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name):
                self.home = self.new_home()
                self.begin()
                self.assert_quits(lambda: self.program.process.send_signal(number))
                self.assert_nothing_left()

    def test_by_many_signals_at_once(self):
        self.begin()

        def ask():
            for number in (signal.SIGTERM, signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                kill(self.program.process.pid, number)
        self.assert_quits(ask)
        self.assert_nothing_left()

    def test_waits_for_no_daemon_that_does_not_end(self):
        self.begin(stubborn=True)
        self.assert_quits(lambda: self.program.process.send_signal(signal.SIGTERM))
        self.assertEqual([puppet.living() for puppet in self.puppets],
                         [[pid] for pid in self.daemons])

    def test_what_goes_on_after_a_quit_is_not_asked_again(self):
        self.begin(stubborn=True)
        self.assert_quits(lambda: self.item.menu().choose("Quit Valdorn"))
        self.start()
        wait_until(lambda: all(len(puppet.pids()) == 2 for puppet in self.puppets),
                   "the next daemons")
        self.assertEqual(self.signals(), [["SIGTERM"]] * 3)

    def test_within_the_wait_for_a_relaunch(self):
        self.begin()
        kill(self.daemons[0], signal.SIGKILL)
        self.puppets[0].wait_for_none()
        self.item.menu().choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(PROMPTLY), 0)
        self.assertEqual(len(self.puppets[0].pids()), 1)

    def test_a_hangup_that_was_ignored_stays_so(self):
        self.begin(command=("env", "--ignore-signal=HUP"))
        kill(self.program.process.pid, signal.SIGHUP)
        spend(0.5)
        self.assertTrue(self.program.is_running())
        self.assertEqual(self.signals(), [[]] * 3)

    def test_by_a_signal_that_was_blocked_at_the_start(self):
        self.begin(command=("env", "--block-signal"))
        self.assert_quits(lambda: self.program.process.send_signal(signal.SIGTERM))

    def test_of_a_daemon_that_was_lost_sight_of(self):
        puppets, = self.puppet_runners({})
        program, item = self.start_with_item()
        kill(puppets.wait_for_one(), signal.SIGKILL)
        puppets.wait_for_none()
        spend(0.2)  # for its end to be noticed
        item.menu().choose("Restart Runner")
        wait_until(lambda: len(puppets.living()) == 2, "the restart and the relaunch", 10)
        both = puppets.living()
        item.menu().choose("Quit Valdorn")
        self.assertEqual(program.wait_for_end(PROMPTLY), 0)
        puppets.wait_for_none(5)
        self.assertEqual([puppets.signals(pid) for pid in both], [["SIGTERM"]] * 2)

    def test_with_its_windows_open(self):
        self.begin(connected=False)
        for entry in ("Settings…", "Show Log…", "Runner Status…"):
            self.item.menu().choose(entry)
        wait_until(lambda: len(self.desktop.windows_of(self.program)) == 4, "four windows")
        self.assert_quits(lambda: self.item.menu().choose("Quit Valdorn"))

    def test_while_a_job_is_being_built(self):
        self.begin()
        self.puppets[1].say('time="x" level=info msg="Running job with maxParallel=1"\n')
        wait_until(lambda: "Status: Building a job · 3 runners" in self.item.menu().labels(),
                   "the job")
        self.assert_quits(lambda: self.item.menu().choose("Quit Valdorn"))
        self.assert_nothing_left()


# Takes half a second to end, and speaks before it is done.
SLOW_TO_LEAVE = """#!/bin/sh
trap 'sleep 0.5; echo leaving; echo left >left; exit 0' TERM
echo up >up
while :; do sleep 0.05; done
"""


class SlowDaemonCase(ProgramCase):
    """A daemon that is still speaking when the program has ended is not cut short."""

    def begin(self):
        record, = self.home.add_runners({}, script=None)
        runner = os.path.join(self.home.path, "actrunner/act_runner")
        os.makedirs(os.path.dirname(runner), exist_ok=True)
        with open(runner, "w") as file:
            file.write(SLOW_TO_LEAVE)
        os.chmod(runner, 0o755)
        self.folder = self.home.data_folder(record)
        self.program, _ = self.start_with_item()
        self.wait_for_file("up")

    def wait_for_file(self, name):
        wait_until(lambda: os.path.exists(os.path.join(self.folder, name)), name, 5)


class GoodbyeTest(SlowDaemonCase):
    def test_after_a_signal(self):
        self.begin()
        kill(self.program.process.pid, signal.SIGTERM)
        self.assertEqual(self.program.wait_for_end(PROMPTLY), 0)
        self.wait_for_file("left")
        wait_until(lambda: self.home.processes() == [], "the end of all", 5)

    def test_after_signals_that_keep_coming(self):
        self.begin()
        while self.program.is_running():
            for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
                kill(self.program.process.pid, number)
            time.sleep(0.001)
        self.assertEqual(self.program.process.returncode, 0)
        self.wait_for_file("left")


class GoodbyeWithoutDisplayTest(SlowDaemonCase):
    def test_after_the_display_is_taken_away(self):
        self.begin()
        self.expect_stderr(self.program)
        self.desktop.end_display()
        self.assertEqual(self.program.wait_for_end(5), 1)
        self.wait_for_file("left")


class LostDisplayTest(ProgramCase):
    def test_when_the_display_is_taken_away(self):
        puppets, = self.puppet_runners({})
        program, item = self.start_with_item()
        daemon = puppets.wait_for_one()
        item.menu().choose("Settings…")
        wait_until(lambda: self.desktop.windows_of(program), "a window")
        # Qt leaves that way, and says why in one of several manners.
        self.expect_stderr(program)
        self.desktop.end_display()
        self.assertEqual(program.wait_for_end(5), 1)
        puppets.wait_for_none(5)
        self.assertEqual(puppets.signals(daemon), ["SIGTERM"])

    def test_not_when_only_the_bus_goes(self):
        puppets, = self.puppet_runners({})
        desktop = Desktop()
        self.addCleanup(desktop.close)
        program = self.start(desktop=desktop)
        daemon = puppets.wait_for_one()
        desktop.bus.end()
        spend(0.5)
        self.assertTrue(program.is_running())
        self.assertEqual(puppets.living(), [daemon])


class ChildrenTest(ProgramCase):
    def test_no_zombie_stays_while_it_runs(self):
        puppets = self.puppet_runners({}, {})
        program, item = self.start_with_item()
        for puppet in puppets:
            puppet.wait_for_one()
        for _ in range(3):
            item.menu().choose("Stop All")
            for puppet in puppets:
                puppet.wait_for_none()
            wait_until(lambda: not program.zombies(), "the last rites", 2)
            item.menu().choose("Start All")
            for puppet in puppets:
                puppet.wait_for_one()
        self.assertEqual(len(program.children()), 2)


if __name__ == "__main__":
    unittest.main()
