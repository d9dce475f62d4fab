"""The status item and its menu, as a bar on the session bus sees them."""

import signal
import unittest

from support.case import ProgramCase
from support.program import kill
from support.puppet import BLOCKED, DECLARED, JOB_FINISHED, JOB_STARTED, entry, task
from support.waiting import spend, wait_until

SPINNER_SIGNALS_A_SECOND = 10

BUILDING = (task("acme/site"), JOB_STARTED)


class StatusItemCase(ProgramCase):
    def begin(self, *records, **options):
        """The program with its puppets, one for each record."""
        self.puppets = self.puppet_runners(*records, **options)
        self.program, self.item = self.start_with_item()
        self.menu = self.item.menu()

    def wait_for_label(self, label):
        wait_until(lambda: label in self.menu.labels(), f"{label!r} in the menu")

    def wait_for_status(self, status):
        self.wait_for_label("Status: " + status)

    def watch(self):
        recorder = self.item.signals()
        self.addCleanup(recorder.close)
        return recorder

    def settled_icon(self):
        """The icon, once a spinner or a colour has had the time to arrive."""
        spend(0.3)
        return self.item.pixmaps()


class MenuTest(StatusItemCase):
    def test_has_the_thirteen_rows_in_order(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        rows = [(row["label"], row["enabled"], row["visible"], row["shortcut"])
                for row in self.menu.entries()]
        separator = ("", True, True, None)
        self.assertEqual(rows, [
            ("Valdorn — CI Runner", False, True, None),
            ("Status: Connected — idle", False, True, None),
            ("", False, False, None),
            separator,
            ("Stop Runner", True, True, None),
            ("Restart Runner", True, True, None),
            separator,
            ("Runner Status…", True, True, ["Control", "S"]),
            ("Set Up…", True, True, None),
            ("Settings…", True, True, ["Control", ","]),
            ("Show Log…", True, True, ["Control", "L"]),
            separator,
            ("Quit Valdorn", True, True, ["Control", "Q"]),
        ])
        self.assertEqual([index for index, row in enumerate(self.menu.entries())
                          if row["type"] == "separator"], [3, 6, 11])

    def test_names_the_commands_for_one_runner(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        self.assertIn("Stop Runner", self.menu.labels())
        self.assertIn("Restart Runner", self.menu.labels())

    def test_names_the_commands_and_counts_for_two_runners(self):
        self.begin({}, {})
        self.wait_for_status("Connected — idle · 2 runners")
        self.assertIn("Stop All", self.menu.labels())
        self.assertIn("Restart All", self.menu.labels())

    def test_counts_three_runners_and_shows_the_busiest(self):
        self.begin({}, {}, {}, first="")
        self.wait_for_status("Starting… · 3 runners")
        self.puppets[1].say(DECLARED)
        spend(0.3)
        self.assertIn("Status: Starting… · 3 runners", self.menu.labels())
        self.puppets[0].say(DECLARED)
        self.puppets[2].say(BLOCKED)
        self.wait_for_status("Connected — idle · 3 runners")
        self.puppets[2].say(JOB_STARTED)
        self.wait_for_status("Building a job · 3 runners")

    def test_shows_no_network(self):
        self.begin({}, first=DECLARED + BLOCKED)
        self.wait_for_status("No local-network access")

    def test_changes_arrive_as_property_updates_only(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        signals = self.watch()
        self.puppets[0].say(*BUILDING)
        self.wait_for_label("Building: acme/site")
        self.menu.choose("Stop Runner")
        self.wait_for_label("Start Runner")
        self.assertGreater(signals.count("ItemsPropertiesUpdated"), 0)
        # A row that appears or goes may lay the menu out anew, once each.
        self.assertLessEqual(signals.count("LayoutUpdated"), 2)

    def test_says_nothing_when_nothing_changes(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        spend(0.3)
        signals = self.watch()
        self.puppets[0].say(*[DECLARED, entry("idle", "debug")] * 50)
        spend(1.0)
        self.assertEqual(signals.seen, [])

    def test_says_nothing_of_changes_that_it_does_not_show(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        spend(0.3)
        signals = self.watch()
        for number in range(20):
            self.puppets[0].say(entry(f"x, with version: v1.0.{number}, y"),
                                f"[CI/build{number}] | step\n")
            spend(0.03)
        self.puppets[0].say(task("acme/site"))
        self.wait_for_label("Building: acme/site")
        spend(0.3)
        self.assertEqual(signals.count("NewIcon"), 0)
        self.assertEqual(signals.count("NewToolTip"), 0)
        self.assertLessEqual(signals.count("ItemsPropertiesUpdated"), 2)


class BuildLineTest(StatusItemCase):
    def test_names_the_build_of_the_only_runner(self):
        self.begin({})
        self.puppets[0].say(*BUILDING)
        self.wait_for_label("Building: acme/site")
        self.assertEqual(self.menu.labels()[:4], [
            "Valdorn — CI Runner", "Status: Building a job", "Building: acme/site", "---"])

    def test_names_the_runner_too_where_there_are_two(self):
        self.begin({"name": "first"}, {"name": "second"})
        self.wait_for_status("Connected — idle · 2 runners")
        self.puppets[1].say(*BUILDING)
        self.wait_for_label("Building: second — acme/site")
        self.wait_for_status("Building a job · 2 runners")

    def test_the_first_runner_in_the_list_wins(self):
        self.begin({"name": "first"}, {"name": "second"})
        self.puppets[1].say(task("b/b"), JOB_STARTED)
        self.wait_for_label("Building: second — b/b")
        self.puppets[0].say(task("a/a"), JOB_STARTED)
        self.wait_for_label("Building: first — a/a")

    def test_names_with_ampersands_and_underscores_arrive_unharmed(self):
        name = "__R&D_&&_x & y_"
        self.begin({"name": name}, {})
        self.puppets[0].say(task("a_b__c&d&/e_"), JOB_STARTED)
        self.wait_for_label(f"Building: {name} — a_b__c&d&/e_")

    def test_goes_away_four_seconds_after_the_job(self):
        self.begin({})
        self.puppets[0].say(*BUILDING)
        self.wait_for_label("Building: acme/site")
        self.puppets[0].say(JOB_FINISHED)
        spend(3.6)
        self.assertIn("Building: acme/site", self.menu.labels())
        wait_until(lambda: "Building: acme/site" not in self.menu.labels(),
                   "an end of the build line", 1.4)
        self.wait_for_status("Connected — idle")


class StartStopTest(StatusItemCase):
    def test_stops_and_starts_the_runner(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        daemon = self.puppets[0].wait_for_one()
        self.menu.choose("Stop Runner")
        self.wait_for_status("Stopped")
        self.puppets[0].wait_for_none()
        self.assertEqual(self.puppets[0].signals(daemon), ["SIGTERM"])
        self.menu.choose("Start Runner")
        self.wait_for_status("Connected — idle")
        self.assertEqual(len(self.puppets[0].pids()), 2)
        self.assertIn("Stop Runner", self.menu.labels())

    def test_stops_what_is_still_starting(self):
        self.begin({}, first="")
        self.wait_for_status("Starting…")
        self.wait_for_label("Stop Runner")

    def test_one_live_process_makes_it_stop_all(self):
        records = ({}, {}, {})
        puppets = self.puppet_runners(*records)
        for index in (0, 2):
            self.home.unregister(puppets[index].data_folder)
        self.program, self.item = self.start_with_item()
        self.menu = self.item.menu()
        self.wait_for_status("Connected — idle · 3 runners")
        self.menu.choose("Stop All")
        self.wait_for_label("Start All")
        puppets[1].wait_for_none()
        self.assertEqual([len(puppet.pids()) for puppet in puppets], [0, 1, 0])

    def test_starts_only_registered_runners(self):
        puppets = self.puppet_runners({}, {})
        self.home.unregister(puppets[0].data_folder)
        self.program, self.item = self.start_with_item()
        self.menu = self.item.menu()
        self.wait_for_status("Connected — idle · 2 runners")
        self.assertEqual(puppets[0].pids(), [])

    def test_goes_by_the_process_and_not_by_the_status(self):
        # A daemon that does not end keeps running, but is not the runner's any more.
        self.begin({}, stubborn=True)
        self.wait_for_status("Connected — idle")
        self.menu.choose("Stop Runner")
        self.wait_for_label("Start Runner")
        self.assertEqual(len(self.puppets[0].living()), 1)

    def test_starts_at_once_what_waits_for_its_relaunch(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        kill(self.puppets[0].wait_for_one(), signal.SIGKILL)
        self.puppets[0].wait_for_none()
        spend(0.3)
        # The text is as old as the last change of the runner; the choice looks at the process.
        self.menu.choose(next(label for label in self.menu.labels()
                              if label in ("Start Runner", "Stop Runner")))
        self.puppets[0].wait_for_one(2)


class LooksTest(StatusItemCase):
    def test_introduces_itself(self):
        self.begin({})
        self.assertEqual(str(self.item.property("Title")), "Valdorn")
        self.assertEqual(str(self.item.property("ToolTip")[2]), "Valdorn")
        self.assertEqual(str(self.item.property("Category")), "ApplicationStatus")
        self.assertEqual(str(self.item.property("Status")), "Active")
        self.assertEqual([size[:2] for size in self.item.pixmaps()],
                         [(side, side) for side in (16, 22, 24, 32, 48)])

    def test_has_a_picture_for_each_state(self):
        self.begin({}, first="")
        self.wait_for_status("Starting…")
        icons = {"starting": self.settled_icon()}
        for name, lines, status in (("connected", [DECLARED], "Connected — idle"),
                                    ("blocked", [BLOCKED], "No local-network access"),
                                    ("building", [JOB_STARTED], "Building a job")):
            self.puppets[0].say(*lines)
            self.wait_for_status(status)
            icons[name] = self.settled_icon()
        self.menu.choose("Stop Runner")
        self.wait_for_status("Stopped")
        icons["stopped"] = self.settled_icon()
        self.assertEqual(len({tuple(icon) for icon in icons.values()}), len(icons))
        self.assert_hue(icons["starting"], "yellow")
        self.assert_hue(icons["connected"], "green")
        self.assert_hue(icons["blocked"], "red")
        self.assert_hue(icons["stopped"], "gray")

    def assert_hue(self, icon, expected):
        """Looks at the strongest pixels of the largest picture (ARGB, big-endian)."""
        _, _, data = icon[-1]
        solid = [data[at + 1:at + 4] for at in range(0, len(data), 4) if data[at] == 255]
        brightest = max(solid, key=max)
        red, green, blue = brightest
        seen = ("gray" if max(brightest) - min(brightest) < 30 else
                "yellow" if min(red, green) > 1.5 * blue else
                "green" if green > 1.5 * red else
                "red" if red > 1.5 * green else "another")
        self.assertEqual(seen, expected, tuple(brightest))

    def test_an_unregistered_fleet_is_gray_like_a_stopped_one(self):
        puppets = self.puppet_runners({})
        self.home.unregister(puppets[0].data_folder)
        self.program, self.item = self.start_with_item()
        self.menu = self.item.menu()
        self.wait_for_status("Not registered")
        self.assertIn("Start Runner", self.menu.labels())
        self.assert_hue(self.settled_icon(), "gray")

    def test_the_spinner_turns_a_few_times_a_second_and_stops(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        idle = self.settled_icon()
        self.puppets[0].say(*BUILDING)
        self.wait_for_status("Building a job")
        signals = self.watch()
        spend(2.0)
        turns = signals.count("NewIcon")
        self.assertGreaterEqual(turns, 4)
        self.assertLessEqual(turns, 2 * SPINNER_SIGNALS_A_SECOND)
        self.puppets[0].say(DECLARED, JOB_FINISHED)
        self.wait_for_status("Connected — idle")
        self.assertEqual(self.settled_icon(), idle)
        signals.clear()
        spend(1.0)
        self.assertEqual(signals.count("NewIcon"), 0)

    def test_the_primary_click_opens_the_menu(self):
        self.begin({})
        self.wait_for_status("Connected — idle")
        self.assertEqual(self.desktop.windows_of(self.program), [])
        self.item.activate()
        wait_until(lambda: len(self.desktop.windows_of(self.program)) == 1, "the menu's window")
        self.desktop.xdotool("key", "Escape")
        wait_until(lambda: not self.desktop.windows_of(self.program), "the menu's end")
        self.item.activate()
        wait_until(lambda: len(self.desktop.windows_of(self.program)) == 1, "the menu once more")


if __name__ == "__main__":
    unittest.main()
