"""The runner status window: what its rows say, its buttons, and the hint at a newer release."""

import re
import signal
import unittest

from support import looks
from support.program import kill
from support.puppet import BLOCKED, DECLARED, JOB_FINISHED, JOB_STARTED, task
from support.release_service import PATH, ReleaseService
from support.waiting import spend, stays_true, wait_until
from support.window_case import WindowCase
from support.windows import STATUS

FOOTNOTE = "Add or remove runners in Settings → Runners."
UPTIME = re.compile(r"· up (\d+):(\d\d)")


def read(pid, name):
    with open(f"/proc/{pid}/{name}", "rb") as file:
        return file.read()


class StatusWindowCase(WindowCase):
    def setUp(self):
        super().setUp()
        self.service = ReleaseService()
        self.addCleanup(self.service.close)

    def begin(self, *records, **options):
        self.puppets = self.puppet_runners(*records or ({},), **options)
        self.run_program()

    def run_program(self):
        super().begin(VALDORN_RELEASE_SERVICE=self.service.url)

    def texts(self):
        return self.window.names("heading", "label")

    def wait_for_text(self, text):
        wait_until(lambda: text in self.texts(), f"{text!r} in {self.texts()}")

    def wait_for_none(self, text):
        wait_until(lambda: text not in self.texts(), f"no {text!r} in {self.texts()}")

    def uptime(self):
        """In seconds, or nothing when none is shown."""
        found = [match for match in map(UPTIME.search, self.texts()) if match]
        return int(found[0][1]) * 60 + int(found[0][2]) if found else None

    def wait_for_button(self, name):
        return self.window.find("push button", name)


class AtRestTest(StatusWindowCase):
    def test_a_window_that_counts_does_not_wait_for_the_display(self):
        """As it would each time with pictures in memory that both share."""
        self.begin({})
        self.window = self.open(STATUS)
        self.wait_for_text("Connected — idle")
        shared = [line for line in read(self.program.process.pid, "maps").splitlines()
                  if b"/SYSV" in line or b"memfd" in line]
        self.assertEqual(shared, [])


class RowsTest(StatusWindowCase):
    def test_one_runner_has_its_row_under_a_heading(self):
        self.begin({"name": "builder"})
        self.window = self.open(STATUS)
        self.wait_for_text("Connected — idle")
        self.assertEqual([text for text in self.texts() if not UPTIME.match(text)],
                         ["Runner", "builder", "Connected — idle", "· runner v1.0.8", FOOTNOTE])

    def test_several_runners_stand_in_the_order_of_the_list(self):
        self.begin({"name": "zoe"}, {"name": ""}, {"name": "R&D <b>x</b>"})
        self.window = self.open(STATUS)
        texts = self.texts()
        self.assertEqual([text for text in texts if text in (
            "Runners", "Runner", "zoe", "runner", "R&D <b>x</b>", FOOTNOTE)],
            ["Runners", "zoe", "runner", "R&D <b>x</b>", FOOTNOTE])

    def test_a_row_follows_its_runner(self):
        self.begin(first="")
        self.window = self.open(STATUS)
        self.wait_for_text("Starting…")
        self.assertNotIn("· runner v1.0.8", self.texts())
        self.puppets[0].say(DECLARED)
        self.wait_for_text("Connected — idle")
        self.wait_for_text("· runner v1.0.8")
        self.puppets[0].say(task("acme/site"), JOB_STARTED)
        self.wait_for_text("Building a job")
        self.wait_for_text("Building acme/site")
        self.puppets[0].say("[CI/lint] | step\n")
        self.wait_for_text("Building acme/site (CI/lint)")
        self.puppets[0].say(JOB_FINISHED)
        self.wait_for_text("Connected — idle")
        self.wait_for_none("Building acme/site (CI/lint)")
        self.puppets[0].say(BLOCKED)
        self.wait_for_text("No local-network access")

    def test_the_dot_says_the_status_too(self):
        self.begin(first="")
        self.window = self.open(STATUS)
        for lines, status in (([], "Starting…"), ([DECLARED], "Connected — idle"),
                              ([BLOCKED], "No local-network access")):
            self.puppets[0].say(*lines)
            wait_until(lambda: [name for role, name in self.window.described()].count(status) == 2,
                       f"a dot and a text for {status!r}")

    def test_it_stays_up_to_date_while_it_is_closed(self):
        self.begin()
        self.window = self.open(STATUS)
        self.wait_for_text("Connected — idle")
        self.close_window()
        self.puppets[0].say(BLOCKED)
        wait_until(lambda: "Status: No local-network access" in self.menu.labels(), "the status")
        self.window = self.open(STATUS)
        self.assertIn("No local-network access", self.texts())
        self.assertNotIn("Connected — idle", self.texts())


class UptimeTest(StatusWindowCase):
    def test_counts_the_seconds_since_the_launch(self):
        self.begin()
        self.window = self.open(STATUS)
        begun = wait_until(self.uptime, "an uptime of a second or more")
        wait_until(lambda: self.uptime() >= begun + 2, "two seconds more", 4)
        self.assertLessEqual(self.uptime(), begun + 3)

    def test_begins_anew_with_the_next_launch_and_ends_with_the_stop(self):
        self.begin()
        self.window = self.open(STATUS)
        wait_until(lambda: (self.uptime() or 0) >= 2, "an uptime")
        self.click(self.wait_for_button("Stop runner"))
        self.wait_for_text("Stopped")
        stays_true(lambda: self.uptime() is None, "no uptime", 1.5)
        self.click(self.wait_for_button("Start runner"))
        wait_until(lambda: self.uptime() is not None, "an uptime")
        self.assertLessEqual(self.uptime(), 1)

    def test_ends_with_the_process_though_it_will_be_launched_again(self):
        self.begin()
        self.window = self.open(STATUS)
        wait_until(lambda: self.uptime() is not None, "an uptime")
        kill(self.puppets[0].wait_for_one(), signal.SIGKILL)
        wait_until(lambda: self.uptime() is None, "no uptime", 4)
        self.assertEqual(self.window.names("push button"), ["Start runner"])
        self.assertIn("Connected — idle", self.texts())
        self.puppets[0].wait_for_one()
        wait_until(lambda: self.uptime() is not None, "an uptime")

    def test_is_right_when_the_window_comes_back(self):
        self.begin()
        self.window = self.open(STATUS)
        wait_until(self.uptime, "an uptime")
        self.close_window()
        spend(2.0)
        self.window = self.open(STATUS)
        self.assertGreaterEqual(self.uptime(), 2)


class ButtonTest(StatusWindowCase):
    def test_the_mouse_stops_and_starts_that_runner_only(self):
        self.begin({"name": "one"}, {"name": "two"})
        self.window = self.open(STATUS)
        others = self.puppets[0].wait_for_one()
        wait_until(lambda: self.texts().count("Connected — idle") == 2, "two connected runners")
        daemon = self.puppets[1].wait_for_one()
        self.click(self.window.find_all("push button", "Stop runner")[1])
        self.wait_for_text("Stopped")
        self.puppets[1].wait_for_none()
        self.assertEqual(self.puppets[1].signals(daemon), ["SIGTERM"])
        self.assertEqual(self.window.names("push button"), ["Stop runner", "Start runner"])
        self.click(self.wait_for_button("Start runner"))
        wait_until(lambda: self.texts().count("Connected — idle") == 2, "two connected runners")
        self.puppets[1].wait_for_one()
        self.assertEqual(self.window.names("push button"), ["Stop runner"] * 2)
        self.assertEqual(self.puppets[0].wait_for_one(), others)

    def test_the_keyboard_does_it_too(self):
        self.begin({"name": "one"}, {"name": "two"})
        self.window = self.open(STATUS)
        wait_until(lambda: self.texts().count("Connected — idle") == 2, "two connected runners")
        buttons = self.window.find_all("push button", "Stop runner")
        self.tab_to(self.window, buttons[1])
        self.press("space")
        self.puppets[1].wait_for_none()
        self.wait_for_text("Stopped")
        self.assertIn("focused", buttons[1].states())
        self.press("Return")
        self.puppets[1].wait_for_one()
        self.wait_for_none("Stopped")
        self.assertEqual(len(self.puppets[0].pids()), 1)

    def test_a_runner_that_is_not_registered_only_says_so(self):
        self.puppets = self.puppet_runners({})
        self.home.unregister(self.puppets[0].data_folder)
        self.run_program()
        self.window = self.open(STATUS)
        self.wait_for_text("Not registered")
        self.click(self.wait_for_button("Start runner"))
        spend(0.5)
        self.assertIn("Not registered", self.texts())
        self.assertEqual(self.window.names("push button"), ["Start runner"])
        self.assertEqual(self.puppets[0].pids(), [])

    def test_it_goes_by_the_process_and_not_by_the_status(self):
        # A daemon that takes its time with ending is not the runner's any more.
        self.begin(stubborn=True)
        self.window = self.open(STATUS)
        self.wait_for_text("Connected — idle")
        self.click(self.wait_for_button("Stop runner"))
        self.wait_for_text("Stopped")
        self.wait_for_button("Start runner")
        self.assertEqual(len(self.puppets[0].living()), 1)


class UpdateHintTest(StatusWindowCase):
    def test_nobody_is_asked_before_the_window_is_open(self):
        self.begin()
        wait_until(lambda: "Status: Connected — idle" in self.menu.labels(), "the status")
        spend(0.5)
        self.assertEqual(self.service.asked(), [])

    def test_names_a_newer_release(self):
        self.service.publish("v1.10.0")
        self.begin()
        self.window = self.open(STATUS)
        self.wait_for_text("update: v1.10.0 available")
        self.assertEqual(self.service.asked(), [PATH])

    def test_says_so_when_there_is_none(self):
        self.service.publish("1.0.8")
        self.begin()
        self.window = self.open(STATUS)
        self.wait_for_text("runner is up to date")

    def test_says_nothing_while_the_runner_has_not_told_its_version(self):
        self.service.publish("v2.0.0")
        self.begin(first="")
        self.window = self.open(STATUS)
        wait_until(self.service.asked, "a question")
        spend(0.5)
        self.assertNotIn("update: v2.0.0 available", self.texts())
        self.puppets[0].say(DECLARED)
        self.wait_for_text("update: v2.0.0 available")

    def test_asks_again_at_each_opening_until_an_answer_has_come(self):
        self.begin()
        for count in (1, 2):
            self.window = self.open(STATUS)
            wait_until(lambda: len(self.service.asked()) == count, f"question {count}")
            self.close_window()
        self.service.publish("v1.1.0")
        self.window = self.open(STATUS)
        self.wait_for_text("update: v1.1.0 available")
        self.close_window()
        self.service.publish("v1.2.0")
        self.window = self.open(STATUS)
        spend(0.5)
        self.assertIn("update: v1.1.0 available", self.texts())
        self.assertEqual(len(self.service.asked()), 3)

    def test_a_window_that_stays_open_or_is_brought_up_again_asks_nothing_more(self):
        self.begin()
        self.window = self.open(STATUS)
        wait_until(self.service.asked, "a question")
        self.puppets[0].say(BLOCKED)
        self.wait_for_text("No local-network access")
        self.open(STATUS)
        spend(0.5)
        self.assertEqual(len(self.service.asked()), 1)

    def test_a_service_that_is_away_is_no_trouble(self):
        self.service.close()
        self.begin()
        self.window = self.open(STATUS)
        self.wait_for_text("Connected — idle")
        spend(0.5)
        self.assertFalse([text for text in self.texts() if "update" in text or "date" in text])


class LooksTest(StatusWindowCase):
    screen = "2560x1600x24"

    def test_light_and_dark_at_both_scales(self):
        self.service.publish("v9.9.9")
        self.puppets = self.puppet_runners({"name": "builder"}, {"name": "spare"})
        for name, is_dark, scale in looks.LOOKS:
            with self.subTest(name):
                super(StatusWindowCase, self).begin(VALDORN_RELEASE_SERVICE=self.service.url,
                                                    **looks.prepare(self.home, is_dark, scale))
                self.window = self.open(STATUS)
                self.puppets[0].say(task("acme/site"), JOB_STARTED, "[CI/lint] | step\n")
                self.puppets[1].say(BLOCKED)
                self.wait_for_text("update: v9.9.9 available")
                self.wait_for_text("Building acme/site (CI/lint)")
                picture = looks.take_picture(self.desktop, self.window_id, "status-" + name)
                self.assertEqual(looks.size(picture)[0], 480 * scale)
                looks.assert_brightness(self, picture, is_dark)
                self.program.quit()


if __name__ == "__main__":
    unittest.main()
