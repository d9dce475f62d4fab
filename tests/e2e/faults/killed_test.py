"""The program killed at moments of chance, whatever it is about: the next start ends politely what was
left over, touches nobody else, launches its own, and finds the list of runners whole."""

import glob
import json
import os
import threading

from amounts import amount, dice
from fault_case import RELAUNCH_SECONDS, FaultCase
from support.accessibility import VARIABLES
from support.program import kill
from support.puppet import entry
from support.registering import RegisteringTool
from support.settings_page import SettingsPage
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import spend, wait_until

RUNNERS = 3
SIGKILL = 9


def works_in(pid, folder):
    try:
        return os.readlink(f"/proc/{pid}/cwd") == folder
    except OSError:
        return False


class KilledCase(FaultCase):
    are_speaking = False

    def setUp(self):
        super().setUp()
        self.dice = dice(self.id())
        self.left = 0
        self.killed_by_test = set()
        # They keep silent: whoever speaks when nobody listens any more ends by that.
        self.puppets = self.puppet_runners(*[{}] * RUNNERS, first="")
        # The same executable in the same folder, and none of ours.
        stranger = self.home.start_by_hand(self.desktop, self.puppets[0].data_folder)
        self.addCleanup(stranger.wait)
        self.addCleanup(stranger.kill)
        self.stranger = stranger.pid
        wait_until(lambda: self.stranger in self.puppets[0].pids(), "the stranger")
        self.listed = self.home.read("runners.json")

    def say(self, kills):
        print(f"{self.id()}: {kills} kills, {self.left} daemons left behind, all of them ended",
              flush=True)

    def daemons(self):
        """Those of the program, or left by it. Ids come round again."""
        return [pid for puppets in self.puppets for pid in puppets.living()
                if pid != self.stranger and works_in(pid, puppets.data_folder)]

    def is_settled(self, program):
        """Each runner has one daemon, which is this program's."""
        daemons = self.daemons()
        return (len(daemons) == len(self.puppets)
                and sorted(daemons) == program.children()
                and sorted(self.home.processes()) == sorted([*daemons, self.stranger]))

    def settle(self, **options):
        program = self.start(**options)
        self.wait_for_order(program)
        return program

    def wait_for_order(self, program):
        wait_until(lambda: self.is_settled(program), "one daemon for each runner")
        for puppets in self.puppets:
            ended = set(puppets.pids()) - set(self.daemons()) - self.killed_by_test
            for pid in ended - {self.stranger}:
                wanted = [{"SIGTERM"}, set()] if self.are_speaking else [{"SIGTERM"}]
                self.assertIn(set(puppets.signals(pid)), wanted, pid)
        self.assertEqual(self.puppets[0].signals(self.stranger), [])
        self.assertEqual(self.home.read("runners.json"), self.listed)

    def kill_within(self, program, seconds):
        """At a moment of chance; looked at by a thread of its own, which waits for nobody."""
        moment = self.dice.uniform(0, seconds)
        threading.Timer(moment, program.process.kill).start()
        self.assertEqual(program.wait_for_end(moment + 20), -SIGKILL)
        self.left += len(self.daemons())


class KilledTest(KilledCase):
    def test_a_kill_while_it_starts_is_mended_by_the_next_start(self):
        kills = amount(70, 10)
        for _ in range(kills):
            self.kill_within(self.start(), 0.25)
            if self.dice.random() < 0.4:
                self.kill_within(self.settle(), 0.1)
        self.settle()
        self.say(kills)

    def test_a_kill_while_it_runs_is_mended_by_the_next_start(self):
        kills = amount(30, 3)
        for _ in range(kills):
            self.kill_within(self.settle(), 0.5)
        self.settle()
        self.say(kills)

    def test_a_kill_while_it_relaunches_is_mended_by_the_next_start(self):
        kills = amount(30, 2)
        for _ in range(kills):
            program = self.settle()
            for pid in self.daemons():
                self.killed_by_test.add(pid)
                kill(pid, SIGKILL)
            spend(RELAUNCH_SECONDS - 0.1)
            self.kill_within(program, 0.3)
        self.settle()
        self.say(kills)

    def test_a_kill_while_its_logs_grow_cuts_a_line_at_most(self):
        kills = amount(30, 3)
        self.are_speaking = True
        said = []
        for number in range(kills):
            program = self.settle()
            lines = [entry(f"{number}-{line}") for line in range(2000)]
            said += lines
            for puppets in self.puppets[1:]:
                puppets.say(*lines)
            self.kill_within(program, 0.1)
        self.settle()
        for puppets in self.puppets[1:]:
            self.assert_in_order(puppets, said, kills)
        self.say(kills)

    def assert_in_order(self, puppets, said, kills):
        """What stands in the log was said, in that order; each kill may have cut one line."""
        with open(os.path.join(puppets.data_folder, "valdorn.log"), encoding="utf-8") as file:
            kept = file.readlines()
        places = {line: place for place, line in enumerate(said)}
        found = [places[line] for line in kept if line in places]
        self.assertTrue(found)
        self.assertEqual(found, sorted(set(found)))
        others = [line for line in kept if line not in places and "declare" not in line]
        self.assertLessEqual(len(others), kills, others)


class KilledWhileEditedTest(KilledCase):
    """The list of runners is rewritten with each keystroke: the old one is there, or the new."""

    has_windows = True
    TEXT = "a-name-that-somebody-types-in-a-hurry"

    def test_a_kill_leaves_the_old_list_or_the_new(self):
        kills = amount(25, 3)
        names = []
        for _ in range(kills):
            names.append(self.kill_while_typing())
        self.settle()
        self.say(kills)
        print(f"{self.id()}: left of the name: {names}", flush=True)

    def open_settings(self):
        self.program, self.item = self.start_with_item(**VARIABLES)
        self.menu = self.item.menu()
        self.wait_for_order(self.program)
        return SettingsPage(self)

    def kill_while_typing(self):
        page = self.open_settings()
        self.click(page.field("Name"))
        before = json.loads(self.listed)
        self.press("ctrl+a")
        keys = [*self.TEXT, *["BackSpace"] * len(self.TEXT)]
        typing = self.desktop.start("xdotool", "key", "--delay", "1",
                                    *("minus" if key == "-" else key for key in keys))
        self.kill_within(self.program, 0.3)
        wait_until(lambda: typing.poll() is not None, "the end of typing")
        self.listed = self.home.read("runners.json")
        after = json.loads(self.listed)
        name = after[0]["name"]
        if name != before[0]["name"]:
            self.assertTrue(self.TEXT.startswith(name), name)
        self.assertEqual(after[1:], before[1:])
        self.assertEqual({**after[0], "name": ""}, {**before[0], "name": ""})
        return name


class KilledWhileRegisteringTest(KilledCase):
    """Registering goes on by itself; the runner is registered then, or is not."""

    has_windows = True

    def test_a_kill_leaves_the_runner_registered_or_not(self):
        kills = amount(15, 1)
        registered = sum(self.kill_while_registering() for _ in range(kills))
        self.settle()
        self.say(kills)
        print(f"{self.id()}: {registered} times the runner was registered", flush=True)

    def setUp(self):
        super().setUp()
        self.tool = RegisteringTool(self.home, "sleep 0.1; echo '{}' >.runner; echo said")
        self.addCleanup(self.tool.close)

    def kill_while_registering(self):
        self.program, self.item = self.start_with_item(**VARIABLES)
        self.menu = self.item.menu()
        self.wait_for_order(self.program)
        page = SettingsPage(self)
        page.select(2)
        os.remove(os.path.join(self.puppets[2].data_folder, ".runner"))
        page.type_token("t")
        self.click(page.register_button())
        self.kill_within(self.program, 0.3)
        last = self.puppets[2]
        wait_until(lambda: set(self.home.processes()) <= {*self.daemons(), self.stranger},
                   "the end of the tool")
        is_registered = os.path.exists(os.path.join(last.data_folder, ".runner"))
        if not is_registered:
            self.home.register(last.data_folder)
        return is_registered


class ReusedIdTest(KilledCase):
    """The process id of a daemon that was left behind has gone to somebody else."""

    def test_a_process_that_got_the_id_of_a_daemon_is_left_alone(self):
        self.kill_within(self.settle(), 0.1)
        daemons = self.daemons()
        for pid in daemons:
            self.killed_by_test.add(pid)
            kill(pid, SIGKILL)
        wait_until(lambda: not self.daemons(), "the end of the daemons")
        self.forge(daemons[0], self.stranger)
        self.start()
        wait_until(lambda: len(self.daemons()) == RUNNERS, "the program's own daemons")
        self.assertEqual(self.puppets[0].signals(self.stranger), [])

    def forge(self, old, new):
        """As if the ids had been the same."""
        ledger, = glob.glob(os.path.join(self.desktop.runtime, "valdorn/*.daemons"))
        with open(ledger) as file:
            text = file.read()
        self.assertIn(f"\t{old}\t", text)
        with open(ledger, "w") as file:
            file.write(text.replace(f"\t{old}\t", f"\t{new}\t"))
