"""Registering a runner in the settings window: when it can be done, and how it may go."""

import os
import time
import unittest

from support import looks
from support.bus_view import told_by
from support.program import is_alive
from support.registering import SUCCEED
from support.settings_case import BUILDER, PROMPTLY, SIZE, SPARE, TOKEN, SettingsCase
from support.settings_page import REGISTERED
from support.waiting import spend, wait_until


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

    def told(self):
        """Whatever the program tells others of itself: on the session bus, to screen readers, and by
        the command lines and environments of its processes."""
        yield from told_by(self.desktop.bus.connect(), self.program.process.pid)
        yield from self.page.window.told()
        for pid in (self.program.process.pid, *self.program.children()):
            for name in ("cmdline", "environ"):
                with open(f"/proc/{pid}/{name}", encoding="utf-8", errors="replace") as file:
                    yield file.read()

    def assert_token_is_told_to_nobody(self):
        told = list(self.told())
        # It is where it would be that is looked at.
        for known in ("Quit Valdorn", "ApplicationStatus", "Registration token",
                      f"HOME={self.home.path}"):
            self.assertTrue(any(known in text for text in told), known)
        for text in told:
            self.assertNotIn(TOKEN, text)

    def assert_token_is_nowhere(self):
        if self.program.is_running():
            self.assert_token_is_told_to_nobody()
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
        self.assert_token_is_nowhere()
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
        wait_until(lambda: not is_alive(self.tool.process()), "the tool's end")
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
        self.begin(script="trap '' TERM\nsleep 0.5\n" + SUCCEED)  # a tool that will not be stopped
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


if __name__ == "__main__":
    unittest.main()
