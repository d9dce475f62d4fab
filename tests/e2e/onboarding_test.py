"""The introduction: what it says of the first runner, and where its buttons lead."""

import os
import shutil
import tempfile
import unittest

from support import looks
from support.program import is_alive
from support.puppet import BLOCKED, DECLARED, JOB_FINISHED, JOB_STARTED, Puppets
from support.registering import RegisteringTool
from support.settings_page import REGISTERED, SettingsPage
from support.waiting import spend, wait_until
from support.window_case import WindowCase
from support.windows import ONBOARDING, SETTINGS

SIZE = (460, 300)
TITLE = "Welcome to Valdorn"
EXPLANATION = ("Valdorn runs a Gitea CI runner as a child process, so it inherits this app's macOS "
               "Local Network permission. That's the workaround for Sequoia's Local Network "
               "Privacy: a launchd-spawned runner can't get the grant, but a signed app — and its "
               "children — can.")
ALL_SET = "Local network access is working — you're all set."
REFUSED = ("The runner can't reach Gitea over the local network. If you dismissed the “find devices "
           "on your local network” prompt, re-enable Valdorn in Local Network settings.")
FIRST_CONNECT = ("On first connect, macOS asks to let Valdorn find devices on your local network — "
                 "choose Allow.")
OPEN_NETWORK = "Open Local Network Settings…"
REGISTER = "Register a Runner…"
EDIT = "Runner Settings…"
CONTINUE = "Continue"


class OnboardingCase(WindowCase):
    def begin(self, *records, first="", registered=True, **more):
        """The program with its introduction, as at a first launch."""
        self.prepare(*records, first=first, registered=registered)
        self.run_program(**more)

    def prepare(self, *records, first="", registered=True):
        self.tool = RegisteringTool(self.home)
        self.addCleanup(self.tool.close)
        records = self.home.add_runners(*records or ({"name": "builder"},), script=None)
        folders = [self.home.data_folder(record) for record in records]
        self.puppets = [Puppets(folder, first) for folder in folders]
        for folder in () if registered else folders:
            self.home.unregister(folder)

    def run_program(self, **more):
        super().begin(**more)
        self.window = self.wait_for_window(ONBOARDING)

    def texts(self):
        return self.window.names("heading", "label")

    def wait_for(self, status, note):
        wait_until(lambda: self.texts() == [TITLE, EXPLANATION, "Status: " + status, note],
                   f"{status!r} in {self.texts()}")

    def button(self, name):
        return self.window.find("push button", name)

    def wait_for_no_window(self):
        wait_until(lambda: not self.shown(ONBOARDING), "no introduction")


class ContentTest(OnboardingCase):
    def dot(self):
        """The colour of the dot in the row that tells the status."""
        picture = looks.take_picture(self.desktop, self.window_id, "onboarding-dot")
        left, top, *_ = self.desktop.geometry(self.window_id)
        status = next(label for label in self.window.find_all("label")
                      if label.name().startswith("Status: "))
        x, y, _, height = status.extents()
        window_left = self.window.extents()[0]
        return looks.colour_in(picture, (window_left - left, y - top, x - window_left, height))

    def wait_for_dot(self, colour):
        wait_until(lambda: self.dot() == colour, f"a {colour} dot")

    def test_follows_the_runner(self):
        self.begin()
        self.wait_for("Starting…", FIRST_CONNECT)
        self.assertEqual(self.desktop.geometry(self.window_id)[2:], SIZE)
        self.assertEqual(self.window.names("push button"), [OPEN_NETWORK, EDIT, CONTINUE])
        self.wait_for_dot("yellow")
        self.puppets[0].say(BLOCKED)
        self.wait_for("No local-network access", REFUSED)
        self.wait_for_dot("red")
        self.puppets[0].say(DECLARED)
        self.wait_for("Connected — idle", ALL_SET)
        self.wait_for_dot("green")
        self.puppets[0].say(JOB_STARTED)
        self.wait_for("Building a job", ALL_SET)
        self.wait_for_dot("blue")
        self.puppets[0].say(JOB_FINISHED)
        self.wait_for("Connected — idle", ALL_SET)
        self.menu.choose("Stop Runner")
        self.wait_for("Stopped", FIRST_CONNECT)
        self.wait_for_dot("gray")
        self.assertEqual(self.desktop.geometry(self.window_id)[2:], SIZE)

    def test_is_about_the_first_of_several(self):
        self.begin({"name": "one"}, {"name": "two"})
        self.puppets[1].say(DECLARED)
        wait_until(lambda: self.puppets[1].living(), "the other runner")
        spend(0.3)
        self.wait_for("Starting…", FIRST_CONNECT)

    def test_lives_on_when_its_runner_is_removed(self):
        self.begin({"name": "one"}, {"name": "two"}, first=DECLARED)
        daemon = self.puppets[0].wait_for_one()
        self.wait_for("Connected — idle", ALL_SET)
        self.click(self.button(EDIT))
        page = SettingsPage(self, self.wait_for_window(SETTINGS))
        self.click(page.remove_button())
        wait_until(lambda: page.runners() == ["two"], "one runner")
        wait_until(lambda: not is_alive(daemon), "the end of the daemon")
        self.close_window()
        self.window = self.open(ONBOARDING)
        self.assertEqual(self.window.names("push button"), [OPEN_NETWORK, EDIT, CONTINUE])


class ButtonTest(OnboardingCase):
    def test_return_and_the_mouse_continue(self):
        self.begin()
        self.press("Return")
        self.wait_for_no_window()
        self.window = self.open(ONBOARDING)
        self.click(self.button(CONTINUE))
        self.wait_for_no_window()
        self.window = self.open(ONBOARDING)
        self.tab_to(self.window, self.button(EDIT))
        self.press("Return")
        self.wait_for_no_window()
        self.assertEqual(self.shown(SETTINGS), [])
        self.window = self.open(ONBOARDING)
        self.tab_to(self.window, self.button(CONTINUE))
        self.press("space")
        self.wait_for_no_window()
        self.assertTrue(self.program.is_running())

    def test_the_second_one_opens_the_settings_beside_it(self):
        self.begin(registered=False)
        self.click(self.button(REGISTER))
        self.wait_for_window(SETTINGS)
        self.close_window()
        self.window = self.open(ONBOARDING)
        self.tab_to(self.window, self.button(REGISTER))
        self.press("space")
        self.wait_for_window(SETTINGS)
        self.assertEqual(len(self.shown(ONBOARDING)), 1)

    def test_the_second_one_changes_its_name_with_the_next_status(self):
        self.begin(registered=False)
        self.wait_for("Not registered", FIRST_CONNECT)
        self.assertEqual(self.window.names("push button"), [OPEN_NETWORK, REGISTER, CONTINUE])
        self.home.register(self.puppets[0].data_folder)
        spend(0.3)
        self.assertEqual(self.window.names("push button"), [OPEN_NETWORK, REGISTER, CONTINUE])
        self.menu.choose("Start Runner")
        self.wait_for("Starting…", FIRST_CONNECT)
        self.assertEqual(self.window.names("push button"), [OPEN_NETWORK, EDIT, CONTINUE])

    def test_follows_a_registration_in_the_settings(self):
        self.begin(registered=False, first=DECLARED)
        self.click(self.button(REGISTER))
        page = SettingsPage(self, self.wait_for_window(SETTINGS))
        page.register("token")
        page.wait_for_text(REGISTERED)
        self.wait_for("Connected — idle", ALL_SET)
        self.assertEqual(self.window.names("push button"), [OPEN_NETWORK, EDIT, CONTINUE])

    def test_does_not_come_back_on_its_own_after_a_connection(self):
        self.begin(first=DECLARED)
        self.wait_for("Connected — idle", ALL_SET)
        self.press("Return")
        self.wait_for_no_window()
        self.puppets[0].say(BLOCKED)
        wait_until(lambda: "Status: No local-network access" in self.menu.labels(), "the status")
        spend(0.3)
        self.assertEqual(self.shown(ONBOARDING), [])


class NetworkSettingsTest(OnboardingCase):
    def begin_on(self, desktop, *programs):
        """The program where these are all that it finds."""
        self.tools = tempfile.mkdtemp(prefix="valdorn-tools.")
        self.addCleanup(shutil.rmtree, self.tools)
        for name in programs:
            path = os.path.join(self.tools, name)
            with open(path, "w") as file:
                file.write(f'#!/bin/sh\necho {name} "$@" >> "{self.tools}/called"\n')
            os.chmod(path, 0o755)
        self.begin(PATH=self.tools, XDG_CURRENT_DESKTOP=desktop)
        self.click(self.button(OPEN_NETWORK))

    def called(self):
        """The commands that were run."""
        try:
            with open(os.path.join(self.tools, "called")) as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []

    def assert_open(self):
        self.assertEqual(len(self.shown(ONBOARDING)), 1)
        self.wait_for("Starting…", FIRST_CONNECT)

    def test_opens_the_page_of_the_desktops_own_settings(self):
        self.begin_on("ubuntu:GNOME", "systemsettings", "gnome-control-center",
                      "nm-connection-editor")
        wait_until(self.called, "opened settings")
        self.assertEqual(self.called(), ["gnome-control-center network"])
        self.assert_open()
        self.tab_to(self.window, self.button(OPEN_NETWORK))
        self.press("space")
        wait_until(lambda: self.called() == ["gnome-control-center network"] * 2, "them again")
        wait_until(lambda: not self.program.zombies(), "nothing left of them")

    def test_opens_the_editor_that_runs_everywhere(self):
        self.begin_on("XFCE", "gnome-control-center", "nm-connection-editor")
        wait_until(self.called, "opened settings")
        self.assertEqual(self.called(), ["nm-connection-editor"])
        self.assert_open()

    def test_does_nothing_where_there_is_none(self):
        self.begin_on("XFCE", "gnome-control-center", "systemsettings")
        spend(0.5)
        self.assertEqual(self.called(), [])
        self.assert_open()


class LooksTest(OnboardingCase):
    screen = "2560x1600x24"

    def test_light_and_dark_at_both_scales(self):
        self.prepare()
        for name, is_dark, scale in looks.LOOKS:
            with self.subTest(name):
                self.run_program(**looks.prepare(self.home, is_dark, scale))
                self.puppets[0].say(BLOCKED)
                self.wait_for("No local-network access", REFUSED)
                picture = looks.take_picture(self.desktop, self.window_id, "onboarding-" + name)
                self.assertEqual(looks.size(picture), (SIZE[0] * scale, SIZE[1] * scale))
                looks.assert_brightness(self, picture, is_dark)
                self.program.quit()


if __name__ == "__main__":
    unittest.main()
