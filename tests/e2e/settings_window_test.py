"""The settings window: the list of runners, the form of the selected one, and launching at
login."""

import os
import time
import unittest

from support import looks
from support.program import is_alive, run_once
from support.settings_case import BUILDER, PROMPTLY, SIZE, SPARE, THIRD, TOKEN, SettingsCase
from support.settings_page import FIELDS, SettingsPage
from support.waiting import spend, wait_until
from support.window_case import WindowCase
from support.windows import SETTINGS, STATUS


class OpeningTest(SettingsCase):
    def test_shows_the_fleet_and_the_form_of_its_first_runner(self):
        self.begin(BUILDER, {**SPARE, "name": ""}, THIRD)
        self.assertEqual(self.desktop.geometry(self.window_id)[2:], SIZE)
        self.assertEqual(self.page.runners(), ["builder", "runner", "third"])
        self.assertEqual(self.page.selected(), [0])
        self.assertEqual([self.page.field(name).text() for name in FIELDS],
                         ["http://one.invalid", "builder", "linux:host", ""])
        places = [self.page.field(name).place() for name in FIELDS]
        self.assertEqual(places, sorted(places))
        self.assertIn("Token: <gitea>/-/admin/actions/runners (or an org/repo → Settings → "
                      "Runners).", self.page.texts())
        self.assertEqual(self.page.register_button().name(), "Register")
        self.assertNotIn("checked", self.page.launch_box().states())

    def test_the_keyboard_reaches_all_of_it_in_the_order_of_the_eye(self):
        self.begin(BUILDER, SPARE)
        self.page.type_token("x")
        self.click(self.page.field("Gitea URL"))
        wait_until(lambda: self.focused_name() == "Gitea URL", "the focus in the first field")
        passed = ["Gitea URL"]
        for name in (*FIELDS[1:], "Registration token", "Register", "Launch Valdorn at login",
                     "Runners", "Add a runner", "Remove the selected runner", "Gitea URL"):
            self.press("Tab")
            wait_until(lambda: self.focused_name() not in (None, passed[-1]), "another focus", 5)
            passed.append(self.focused_name())
            self.assertEqual(passed[-1], name, passed)

    def test_a_new_form_stands_where_the_old_one_stood(self):
        self.begin()
        self.click(self.page.add_button())
        wait_until(lambda: self.page.selected() == [1], "the new runner")
        self.click(self.page.list())
        for name in ("Add a runner", "Remove the selected runner", *FIELDS, "Registration token",
                     "Launch Valdorn at login", "Runners"):
            self.press("Tab")
            wait_until(lambda: self.focused_name() == name, f"the focus in {name!r}", 5)

    def test_the_arrow_keys_walk_the_list(self):
        self.begin(BUILDER, SPARE, THIRD)
        self.click(self.page.window.find_all("list item")[0])
        self.press("Down")
        wait_until(lambda: self.page.field("Name").text() == "spare", "the second runner")
        self.press("End")
        wait_until(lambda: self.page.field("Name").text() == "third", "the third runner")
        self.assertEqual(self.page.selected(), [2])

    def test_what_was_chosen_and_typed_is_kept_while_it_is_closed(self):
        self.begin(BUILDER, SPARE, script="echo 'Error: no'; exit 1")
        self.page.select(1)
        self.page.register(TOKEN)
        self.page.wait_for_text("Error: no")
        self.click(self.page.launch_box())
        wait_until(lambda: "checked" in self.page.launch_box().states(), "the check")
        self.reopen()
        self.assertEqual(self.page.selected(), [1])
        self.assertEqual(self.page.field("Name").text(), "spare")
        self.assertEqual(self.page.token().length(), len(TOKEN))
        self.assertIn("Error: no", self.page.texts())
        self.assertIn("checked", self.page.launch_box().states())


class ListTest(SettingsCase):
    def test_adding_twice_gives_two_of_one_name_and_selects_the_second(self):
        self.begin()
        self.click(self.page.add_button())
        wait_until(lambda: self.page.selected() == [1], "the new runner")
        self.tab_to(self.page.window, self.page.add_button())
        self.press("space")
        wait_until(lambda: self.page.selected() == [2], "the next new runner")
        self.assertEqual(self.page.runners(), ["builder", "new-runner", "new-runner"])
        self.assertEqual(self.page.field("Name").text(), "new-runner")
        records = self.file()
        self.assertEqual([record["name"] for record in records],
                         ["builder", "new-runner", "new-runner"])
        self.assertEqual(len({record["id"] for record in records}), 3)
        self.assertIn("Start All", self.menu.labels())

    def test_the_last_one_cannot_be_removed(self):
        self.begin(BUILDER, SPARE)
        self.assertIn("enabled", self.page.remove_button().states())
        self.click(self.page.remove_button())
        wait_until(lambda: self.page.runners() == ["spare"], "one runner")
        self.assertNotIn("enabled", self.page.remove_button().states())
        self.click(self.page.remove_button())
        self.press("space")
        spend(0.3)
        self.assertEqual(self.page.runners(), ["spare"])
        self.click(self.page.add_button())
        wait_until(lambda: "enabled" in self.page.remove_button().states(), "a way to remove")

    def test_removing_ends_the_daemon_deletes_the_folder_and_selects_the_first(self):
        self.begin(BUILDER, SPARE, THIRD, registered=True)
        daemons = [puppets.wait_for_one() for puppets in self.puppets]
        self.page.select(2)
        self.click(self.page.remove_button())
        wait_until(lambda: self.page.runners() == ["builder", "spare"], "two runners")
        self.assertEqual(self.page.selected(), [0])
        self.assertEqual(self.page.field("Name").text(), "builder")
        wait_until(lambda: not is_alive(daemons[2]), "the end of the daemon")
        wait_until(lambda: not os.path.exists(self.folders[2]), "a deleted folder")
        self.assertTrue(is_alive(daemons[0]) and is_alive(daemons[1]))
        self.assertTrue(all(map(os.path.exists, self.folders[:2])))
        self.assertEqual([record["name"] for record in self.file()], ["builder", "spare"])

    def test_without_a_highlighted_one_it_is_about_the_first(self):
        self.begin(BUILDER, SPARE, THIRD)
        self.page.select(1)
        self.press("ctrl+space")
        wait_until(lambda: self.page.selected() == [], "no highlighted runner")
        wait_until(lambda: self.page.field("Name").text() == "builder", "the first runner")
        self.click(self.page.remove_button())
        wait_until(lambda: self.page.runners() == ["spare", "third"], "two runners")
        self.assertEqual(self.page.selected(), [0])

    def test_the_folder_of_the_legacy_runner_stays(self):
        self.begin({**BUILDER, "legacy": True}, SPARE, registered=True)
        daemon = self.puppets[0].wait_for_one()
        self.click(self.page.remove_button())
        wait_until(lambda: self.page.runners() == ["spare"], "one runner")
        wait_until(lambda: not is_alive(daemon), "the end of the daemon")
        self.assertTrue(self.home.has_file(".runner"))
        self.assertTrue(os.path.exists(self.folders[1]))


class EditingTest(SettingsCase):
    def test_each_keystroke_is_saved_with_the_next_one(self):
        self.begin()
        self.click(self.page.field("Name"))
        self.press("End")
        self.desktop.type("xyz")
        self.wait_for_record(0, name="builderxy")
        spend(0.2)
        self.assertEqual(self.file()[0]["name"], "builderxy")
        self.page.fill("Extra PATH", "/opt/x:/y")
        self.wait_for_record(0, name="builderxyz", extraPath="/opt/x:/")

    def test_a_rename_shows_at_once_in_the_status_window_and_later_in_the_list(self):
        self.begin(BUILDER, SPARE)
        settings = self.page
        status = self.open(STATUS)
        self.open(SETTINGS)
        settings.fill("Name", "renamed")
        wait_until(lambda: "renamed" in status.names("label"), "the name in the status window")
        self.assertEqual(settings.runners(), ["builder", "spare"])
        settings.select(1)
        wait_until(lambda: settings.runners() == ["renamed", "spare"], "the name in the list")
        settings.fill("Name", "other")
        self.assertEqual(settings.runners(), ["renamed", "spare"])
        self.click(settings.add_button())
        wait_until(lambda: settings.runners() == ["renamed", "other", "new-runner"], "the names")
        settings.fill("Name", "gone")
        self.click(settings.remove_button())
        wait_until(lambda: settings.runners() == ["renamed", "other"], "the names")

    def test_an_empty_name_is_listed_as_runner(self):
        self.begin(BUILDER, SPARE)
        self.page.fill("Name", "")
        self.page.select(1)
        wait_until(lambda: self.page.runners() == ["runner", "spare"], "the stand-in")

    def test_edits_leave_the_daemon_alone(self):
        self.begin(registered=True)
        daemon = self.puppets[0].wait_for_one()
        for name in FIELDS:
            self.page.fill(name, "changed")
        self.assertEqual(self.puppets[0].wait_for_one(), daemon)
        self.assertEqual(self.puppets[0].signals(daemon), [])

    def test_any_text_comes_through_the_file(self):
        self.begin()
        for text in ('a "quoted" \\ back/slash', "жук 日本 שלום مرحبا", "👩‍👩‍👧 e\u0301 🇩🇪",
                     "bell\x07 escape\x1b tab\t delete\x7f"):
            with self.subTest(text):
                self.page.paste("Name", text)
                self.page.paste("Labels", text)
                self.press("space")  # an edit reaches the disk with the next one
                self.wait_for_record(0, name=text, labels=text)
        self.reopen()
        self.assertEqual(self.page.field("Name").text(), text)

    def test_a_very_long_text_does_no_harm(self):
        self.begin()
        text = "".join(f"label{number}:host," for number in range(1000))[:10000]
        begun = time.monotonic()
        for name in FIELDS:
            self.page.paste(name, text)
        self.page.type_token("y")
        self.assertLess(time.monotonic() - begun, PROMPTLY)
        self.assertEqual(self.desktop.geometry(self.window_id)[2:], SIZE)
        self.wait_for_record(0, name=text, labels=text)
        self.click(self.page.add_button())
        wait_until(lambda: self.page.selected() == [1], "the new runner")
        left, _, width, _ = self.page.list().extents()
        self.assertLess(left + width, self.page.field("Name").extents()[0])


class LaunchAtLoginTest(SettingsCase):
    def status(self):
        return run_once(self.desktop, self.home, "--login-status").stdout.rstrip("\n")

    def is_checked(self):
        return "checked" in self.page.launch_box().states()

    def has_entry(self):
        return os.path.exists(os.path.join(self.home.path,
                                           ".config/autostart/org.valdorn.valdorn.desktop"))

    def test_agrees_with_the_switches_of_the_command_line(self):
        self.begin()
        self.assertFalse(self.is_checked() or self.has_entry())
        self.click(self.page.launch_box())
        wait_until(self.has_entry, "the autostart entry")
        self.assertEqual(self.status(), "enabled")
        self.assertTrue(self.is_checked())
        self.press("space")
        wait_until(lambda: not self.has_entry(), "no autostart entry")
        self.assertEqual(self.status(), "not-enabled")
        self.assertFalse(self.is_checked())

    def test_is_read_once(self):
        self.prepare()
        run_once(self.desktop, self.home, "--enable-login")
        WindowCase.begin(self)
        self.page = SettingsPage(self)
        self.assertTrue(self.is_checked())
        run_once(self.desktop, self.home, "--disable-login")
        self.reopen()
        self.assertTrue(self.is_checked())
        self.assertFalse(self.has_entry())
        self.program.quit()
        WindowCase.begin(self)
        self.page = SettingsPage(self)
        self.assertFalse(self.is_checked())

    def test_stays_where_the_user_put_it_when_the_desktop_refuses(self):
        self.begin()
        folder = os.path.join(self.home.path, ".config/autostart")
        with open(folder, "w"):
            pass
        self.expect_stderr(self.program)
        self.click(self.page.launch_box())
        wait_until(self.program.stderr, "the reason")
        self.assertTrue(self.program.stderr().startswith("Valdorn: login-item toggle failed: "))
        self.assertEqual(self.program.stderr().count("\n"), 1)
        self.assertTrue(self.is_checked())
        self.assertEqual(self.status(), "not-enabled")


class LooksTest(SettingsCase):
    screen = "2560x1600x24"

    def test_light_and_dark_at_both_scales(self):
        self.prepare(BUILDER, {**SPARE, "name": "a spare one with a rather long name"},
                     {**THIRD, "name": ""}, script="echo 'Error: Failed to register runner: "
                     "unauthenticated: runner registration token not found'; exit 1")
        for name, is_dark, scale in looks.LOOKS:
            with self.subTest(name):
                self.scale = scale
                WindowCase.begin(self, **looks.prepare(self.home, is_dark, scale))
                self.page = SettingsPage(self)
                self.page.register(TOKEN)
                self.page.wait_for_text("Error: Failed to register runner: unauthenticated: "
                                        "runner registration token not found")
                picture = looks.take_picture(self.desktop, self.window_id, "settings-" + name)
                self.assertEqual(looks.size(picture), (SIZE[0] * scale, SIZE[1] * scale))
                looks.assert_brightness(self, picture, is_dark)
                self.program.quit()

    def test_busy(self):
        self.prepare(BUILDER, SPARE, script="exec sleep 1000")
        WindowCase.begin(self, **looks.prepare(self.home, False, 1))
        self.page = SettingsPage(self)
        self.page.register(TOKEN)
        wait_until(self.page.is_busy, "a busy form")
        self.tool.wait_for_start()
        picture = looks.take_picture(self.desktop, self.window_id, "settings-busy")
        self.assertEqual(looks.size(picture), SIZE)

    def test_with_a_larger_font_nothing_is_cut(self):
        self.prepare(BUILDER, SPARE)
        WindowCase.begin(self, **looks.prepare_large_font(self.home))
        self.page = SettingsPage(self)
        picture = looks.take_picture(self.desktop, self.window_id, "settings-large-font")
        width, height = looks.size(picture)
        self.assertGreaterEqual((width, height), SIZE)
        left, top, width, height = self.page.window.extents()
        for thing in self.page.window.everything():
            x, y, thing_width, thing_height = thing.extents()
            self.assertGreaterEqual(x, left, thing.name())
            self.assertLessEqual(x + thing_width, left + width, thing.name())
            self.assertLessEqual(y + thing_height, top + height, thing.name())


if __name__ == "__main__":
    unittest.main()
