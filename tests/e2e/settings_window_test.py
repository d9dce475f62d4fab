"""The settings window: the list of runners, the form of the selected one, its registration, and
launching at login."""

import json
import os
import time
import unittest

from support import looks
from support.program import is_alive, run_once
from support.puppet import DECLARED, Puppets
from support.registering import SUCCEED, RegisteringTool
from support.settings_page import FIELDS, REGISTERED, SettingsPage
from support.waiting import spend, wait_until
from support.window_case import SETTINGS, STATUS, WindowCase

SIZE = (620, 400)
TOKEN = "tok-5e81-unheard-of"
BUILDER = {"name": "builder", "instanceURL": "http://one.invalid", "labels": "linux:host"}
SPARE = {"name": "spare", "instanceURL": "http://two.invalid", "labels": ""}
THIRD = {"name": "third", "instanceURL": "http://three.invalid"}

# What a window may take to answer while something else goes on.
PROMPTLY = 2.0


class SettingsCase(WindowCase):
    def prepare(self, *records, registered=False, script=SUCCEED):
        """A home with a tool and these runners."""
        self.tool = RegisteringTool(self.home, script)
        self.addCleanup(self.tool.close)
        self.records = self.home.add_runners(*records or (BUILDER,), script=None)
        self.folders = [self.home.data_folder(record) for record in self.records]
        self.puppets = [Puppets(folder, DECLARED) for folder in self.folders]
        for folder in () if registered else self.folders:
            self.home.unregister(folder)
        self.home.set_default("hasConnected", "true")

    def begin(self, *records, **options):
        """The program with an open settings window."""
        self.prepare(*records, **options)
        super().begin()
        self.page = SettingsPage(self)

    def reopen(self):
        self.close_window()
        self.page = SettingsPage(self)

    def file(self):
        """The records on disk."""
        return json.loads(self.home.read("runners.json"))

    def wait_for_record(self, place, **values):
        def matches():
            records = self.file()
            return len(records) > place and values.items() <= records[place].items()
        wait_until(matches, f"{values} in the file")

    def focused_name(self):
        thing = self.focused(self.page.window)
        return thing and thing.name()


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
        self.assertLess(time.monotonic() - begun, 5 * PROMPTLY)
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


class RegistrationCase(SettingsCase):
    def colour_of(self, text):
        """Of the letters."""
        picture = looks.take_picture(self.desktop, self.window_id, "settings-outcome")
        left, top, *_ = self.desktop.geometry(self.window_id)
        label = self.page.window.find("label", text)
        x, y, width, height = label.extents()
        return looks.colour_in(picture, (x - left, y - top, width, height))

    def assert_fails(self, script, message):
        self.tool.plays(script)
        self.page.register()
        self.page.wait_for_text(message)
        self.assertFalse(self.page.is_busy())
        self.assertTrue(self.page.can_register())
        self.assertEqual(self.page.token().length(), len(TOKEN))

    def assert_token_is_nowhere(self):
        for folder in (self.home.path, self.desktop.runtime):
            for parent, _, names in os.walk(folder):
                for path in filter(os.path.isfile, (os.path.join(parent, n) for n in names)):
                    with open(path, "rb") as file:
                        self.assertNotIn(TOKEN.encode(), file.read(), path)
        self.assertNotIn(TOKEN, self.program.stderr())

    def memory(self):
        """The most that the program has ever had, in MiB."""
        with open(f"/proc/{self.program.process.pid}/status") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("VmHWM")) / 1024

    def assert_lives(self):
        """The window answers, and no runner can be registered now."""
        begun = time.monotonic()
        for place in (1, 0):
            self.page.select(place)
            self.assertTrue(self.page.is_busy())
            self.assertFalse(self.page.can_register())
        self.assertLess(time.monotonic() - begun, PROMPTLY)


class ButtonTest(RegistrationCase):
    def test_needs_a_token_a_url_and_a_name(self):
        self.begin({**BUILDER, "name": "", "instanceURL": ""})
        self.assertFalse(self.page.can_register())
        self.page.type_token(" ")
        self.assertFalse(self.page.can_register())
        self.page.fill("Gitea URL", " ")
        self.assertFalse(self.page.can_register())
        self.page.fill("Name", " ")
        wait_until(self.page.can_register, "a button to register with")
        self.page.fill("Gitea URL", "")
        wait_until(lambda: not self.page.can_register(), "no way to register")
        self.click(self.page.token())
        self.press("Return")
        self.click(self.page.register_button())
        spend(0.3)
        self.assertFalse(self.tool.was_called())

    def test_the_return_key_in_the_token_does_nothing(self):
        self.begin()
        self.page.type_token(TOKEN)
        wait_until(self.page.can_register, "a button to register with")
        self.press("Return")
        spend(0.3)
        self.assertFalse(self.tool.was_called())
        self.assertEqual(self.page.token().length(), len(TOKEN))

    def test_says_whether_the_runner_is_registered_already(self):
        self.begin(BUILDER, SPARE, registered=True)
        self.assertEqual(self.page.register_button().name(), "Re-register")
        self.home.unregister(self.folders[1])
        self.page.select(1)
        self.assertEqual(self.page.register_button().name(), "Register")


class SuccessTest(RegistrationCase):
    def test_starts_the_runner_and_forgets_the_token(self):
        self.begin()
        self.tab_to(self.page.window, self.page.token())
        self.desktop.type(TOKEN)
        wait_until(self.page.can_register, "a button to register with")
        self.press("Tab", "space")
        self.page.wait_for_text(REGISTERED)
        self.assertEqual(self.colour_of(REGISTERED), "green")
        self.assertEqual(self.page.token().length(), 0)
        self.puppets[0].wait_for_one()
        wait_until(lambda: "Status: Connected — idle" in self.menu.labels(), "the status")
        self.assertEqual(self.page.register_button().name(), "Re-register")
        self.assertFalse(self.page.can_register())
        self.assert_token_is_nowhere()
        self.program.quit()
        self.assert_token_is_nowhere()

    def test_the_tool_gets_what_stands_in_the_fields(self):
        name, url, token = 'my "big"  runner\'s', "http://h:3000/a b", ' a "token" of 3 \\ parts '
        self.begin({**BUILDER, "labels": ""})
        self.page.fill("Gitea URL", url)
        self.page.fill("Name", name)
        self.page.register(token)
        self.page.wait_for_text(REGISTERED)
        self.assertEqual(self.tool.arguments(), [
            "register", "--no-interactive", "--instance", url, "--token", token, "--name", name,
            "--labels", "macos"])
        self.assertEqual(self.tool.folder(), self.folders[0])
        self.page.fill("Labels", " a:host, b ")
        self.tool.plays(SUCCEED)
        self.page.register("x")
        self.assertEqual(self.tool.arguments()[-2:], ["--labels", " a:host, b "])

    def test_belongs_to_the_runner_it_was_begun_for(self):
        self.begin(BUILDER, SPARE, script="sleep 0.5\n" + SUCCEED)
        self.page.register(TOKEN)
        wait_until(self.page.is_busy, "a busy form")
        self.page.select(1)
        self.page.wait_for_text(REGISTERED)
        self.assertEqual(self.page.register_button().name(), "Register")
        self.assertEqual(self.tool.arguments()[7], "builder")
        self.puppets[0].wait_for_one()
        self.assertEqual(self.puppets[1].pids(), [])


    def test_does_not_stop_a_daemon_that_runs_and_leaves_none_behind(self):
        self.begin(registered=True)
        daemon = self.puppets[0].wait_for_one()
        self.page.register(TOKEN)
        self.page.wait_for_text(REGISTERED)
        spend(0.3)
        self.assertEqual(self.puppets[0].signals(daemon), [])
        self.program.quit()
        self.puppets[0].wait_for_none()

    def test_a_tool_that_leaves_no_registration_starts_nothing(self):
        self.begin(script="exit 0")
        self.page.register(TOKEN)
        self.page.wait_for_text(REGISTERED)
        wait_until(lambda: "Status: Not registered" in self.menu.labels(), "the status")
        self.assertEqual(self.page.register_button().name(), "Register")
        self.assertEqual(self.puppets[0].pids(), [])

    def test_the_token_cannot_be_copied(self):
        self.begin()
        self.desktop.set_clipboard("something else")
        self.page.type_token(TOKEN)
        self.press("ctrl+a", "ctrl+c")
        spend(0.2)
        self.press("ctrl+a", "ctrl+x")
        spend(0.2)
        self.assertEqual(self.desktop.clipboard(), "something else")
        self.assertNotIn(TOKEN, self.page.token().text())


class FailureTest(RegistrationCase):
    def test_says_so_in_the_words_of_the_tool(self):
        self.begin(BUILDER, SPARE)
        self.page.type_token(TOKEN)
        self.assert_fails("echo INFO; echo 'Error: instance address is empty' >&2; echo; exit 1",
                          "Error: instance address is empty")
        self.assertEqual(self.colour_of("Error: instance address is empty"), "red")
        self.assertEqual(self.page.register_button().name(), "Register")
        self.page.select(1)
        self.assertIn("Error: instance address is empty", self.page.texts())
        self.assert_fails("echo 'Error: about to die'; kill -KILL $$", "Error: about to die")
        self.assert_fails(r"printf 'good\n\377\376 bad\n'; exit 3",
                          "act_runner register failed (exit 3)")
        self.assertEqual(self.puppets[0].pids(), [])
        self.assert_token_is_nowhere()
        self.program.quit()
        self.assert_token_is_nowhere()

    def test_a_silent_failure_has_no_words(self):
        self.begin(script="sleep 0.3; exit 1")
        before = sorted(self.page.texts())
        self.page.register(TOKEN)
        wait_until(self.page.is_busy, "a busy form")
        self.page.wait_for_outcome()
        self.assertEqual(sorted(text for text in self.page.texts() if text), before)
        self.assertTrue(self.page.can_register())
        self.assertEqual(self.page.token().length(), len(TOKEN))

    def test_a_missing_tool_is_named(self):
        self.begin()
        self.home.remove_runner()
        self.page.register(TOKEN)
        text = wait_until(lambda: next((text for text in self.page.texts()
                                        if "o such file or directory" in text), None), "the reason")
        self.assertIn(self.home.runner_path, text)
        self.assertEqual(self.colour_of(text), "red")
        self.assertEqual(self.page.token().length(), len(TOKEN))
        self.assertTrue(self.page.can_register())
        self.assertEqual(self.desktop.geometry(self.window_id)[2:], SIZE)

    def test_a_long_reason_stays_within_the_window(self):
        self.begin(script="echo Error: $(seq 500); exit 1")
        self.page.register(TOKEN)
        text = wait_until(lambda: next((text for text in self.page.texts()
                                        if text.startswith("Error: 1 2 3")), None), "the reason")
        self.assertEqual(self.desktop.geometry(self.window_id)[2:], SIZE)
        left, _, width, _ = self.page.window.extents()
        label, _, label_width, _ = self.page.window.find("label", text).extents()
        self.assertLessEqual(label + label_width, left + width)


class HangingTest(RegistrationCase):
    def test_a_tool_that_hangs_blocks_registering_and_nothing_else(self):
        self.begin(BUILDER, SPARE, script="exec sleep 1000")
        self.page.register(TOKEN)
        self.tool.wait_for_start()
        self.assert_lives()
        self.page.fill("Name", "renamed")
        self.reopen()
        self.assert_lives()
        begun = time.monotonic()
        self.menu.choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(), 0)
        self.assertLess(time.monotonic() - begun, PROMPTLY)
        self.assert_token_is_nowhere()

    def test_a_runner_may_be_removed_meanwhile(self):
        self.begin(BUILDER, SPARE, script="while [ ! -e ~/go ]; do sleep 0.05; done")
        self.page.register(TOKEN)
        self.tool.wait_for_start()
        self.click(self.page.remove_button())
        wait_until(lambda: self.page.runners() == ["spare"], "one runner")
        self.assertTrue(self.page.is_busy())
        with open(os.path.join(self.home.path, "go"), "w"):
            pass
        self.page.wait_for_text(REGISTERED)
        spend(0.3)
        self.assertEqual(self.program.children(), [])
        self.assertEqual([record["name"] for record in self.file()], ["spare"])

    def test_nothing_is_started_after_the_end(self):
        self.begin(script="sleep 0.5\n" + SUCCEED)
        self.page.register(TOKEN)
        self.tool.wait_for_start()
        self.program.quit()
        wait_until(lambda: os.path.exists(os.path.join(self.folders[0], ".runner")), "the tool's end")
        spend(0.3)
        self.assertEqual(self.puppets[0].pids(), [])

    def test_a_tool_that_floods_neither_blocks_nor_fills_the_memory(self):
        self.begin(BUILDER, SPARE, script="yes 'a line of the flood' | head -c 100000000\n"
                                          "while [ ! -e go ]; do yes more | head -c 1000000; done\n"
                                          "echo 'Error: enough'; exit 1")
        before = self.memory()
        self.page.register(TOKEN)
        self.tool.wait_for_start()
        self.assert_lives()
        with open(os.path.join(self.folders[0], "go"), "w"):
            pass
        self.page.wait_for_text("Error: enough", 30)
        self.assertLess(self.memory() - before, 32)


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
