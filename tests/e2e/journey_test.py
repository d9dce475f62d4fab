"""The whole way as a user goes it, by mouse and keyboard alone: from an empty home to a fleet that
has run a job, with a real act_runner, in a real panel. It leaves pictures of each step."""

import os
import subprocess
import unittest

from support import looks
from support.accessibility import VARIABLES
from support.gitea import TOKEN, Gitea
from support.icon import colour
from support.panel import Panel
from support.program import is_alive
from support.real_runner import REAL_RUNNER, build_or_skip
from support.settings_page import REGISTERED, SettingsPage
from support.waiting import stays_true, wait_until
from support.window_case import LOG, ONBOARDING, SETTINGS, STATUS, WindowCase

ALL_SET = "Local network access is working — you're all set."
BAD_TOKEN = ("Error: Failed to register runner: unauthenticated: runner registration token not "
             "found")
DESKTOP = ("#3b5f80", "#182c40")

# Where the windows stand without hiding each other.
SETTINGS_PLACE = (30, 50)
ONBOARDING_PLACE = (30, 530)
LOG_PLACE = (690, 50)
STATUS_PLACE = (690, 570)
ASIDE = ("1000", "500")  # where the pointer brings up no tooltip

SLOW_ANSWER = 700  # ms: so that the eye can follow
FRAME_TIME = 220   # in hundredths of a second
FILM_WIDTH = 1080
FILM_BYTES = 1_500_000

WORKFLOW = """
name: Site
on: push
jobs:
  build:
    runs-on: linux
    steps:
      - name: Build
        run: echo "building the site"; sleep 2; echo "the site is built"
"""


def setUpModule():
    build_or_skip()


class JourneyTest(WindowCase):
    screen = "1440x900x24"

    def setUp(self):
        super().setUp()
        self.home.install_runner(REAL_RUNNER)
        self.server = Gitea()
        self.addCleanup(self.server.close)
        self.desktop.paint(*DESKTOP)
        self.panel = Panel(self.desktop)
        self.addCleanup(self.panel.close)
        self.pictures = []

    def launch(self):
        self.program = self.start(**VARIABLES)
        self.item = self.panel.item()
        self.menu = self.item.menu()

    def choose(self, label, picture=None):
        """From the menu that the panel shows."""
        x, y = self.panel.place()
        before = set(self.desktop.all_visible())
        self.desktop.xdotool("mousemove", str(x), str(y), "click", "3")
        opened = wait_until(lambda: set(self.desktop.all_visible()) - before, "the panel's menu")
        choices = [entry["label"] for entry in self.menu.entries()
                   if entry["enabled"] and entry["visible"] and entry["type"] == "standard"]
        self.press(*["Down"] * (choices.index(label) + 1))
        if picture:
            self.picture(picture)
        self.press("Return")
        wait_until(lambda: not opened & set(self.desktop.all_visible()), "a closed menu")

    def put(self, window, place):
        """The window at its place, once it is there."""
        self.desktop.move(window, *place)
        wait_until(lambda: abs(self.desktop.geometry(window)[0] - place[0]) < 20, "the new place")

    def picture(self, name):
        """The next of the whole screen."""
        path = looks.take_picture(self.desktop, "root", f"journey-{len(self.pictures) + 1:02}-{name}")
        self.pictures.append(path)

    def wait_for_bird(self, name):
        wait_until(lambda: colour(self.item.pixmaps()) == name, f"the {name} bird")
        wait_until(lambda: self.panel.colour() == name, f"the {name} bird in the panel")

    def wait_for_status(self, text):
        wait_until(lambda: "Status: " + text in self.menu.labels(), f"the status {text!r}")

    def test_from_an_empty_home_to_a_fleet_at_work(self):
        self.begin_with_the_introduction()
        self.register_the_first_runner()
        self.run_a_job()
        self.add_another_runner()
        self.remove_it()
        self.quit()
        self.come_back()
        self.make_film()

    def begin_with_the_introduction(self):
        self.launch()
        self.introduction = self.wait_for_window(ONBOARDING)
        self.put(self.window_id, ONBOARDING_PLACE)
        self.assertIn("Status: Not registered", self.introduction.names("label"))
        self.wait_for_bird("gray")
        self.picture("welcome")
        self.click(self.introduction.find("push button", "Register a Runner…"))
        self.page = SettingsPage(self, self.wait_for_window(SETTINGS))
        self.put(self.page.id, SETTINGS_PLACE)

    def register_the_first_runner(self):
        self.fill_form("mini", TOKEN)
        self.picture("form")
        self.server.answer_after(SLOW_ANSWER)
        self.click(self.page.register_button())
        wait_until(self.page.is_busy, "a busy form")
        self.picture("registering")
        self.page.wait_for_text(REGISTERED)
        self.wait_for_bird("yellow")
        self.picture("starting")
        self.server.answer_after(0)
        self.wait_for_bird("green")
        self.wait_for_status("Connected — idle")
        self.assertEqual(self.page.token().length(), 0)
        self.assertEqual(self.page.register_button().name(), "Re-register")
        wait_until(lambda: ALL_SET in self.introduction.names("label"), "good news")
        self.assertEqual(self.introduction.find_all("push button", "Register a Runner…"), [])
        self.picture("connected")

    def fill_form(self, name, token):
        """By the keyboard, from the first field on."""
        self.click(self.page.field("Gitea URL"))
        for text in (self.server.url, name, "linux:host"):
            self.press("ctrl+a")
            self.desktop.type(text)
            self.press("Tab")
        self.press("Tab", "ctrl+a")
        self.desktop.type(token)
        wait_until(lambda: self.page.token().length() == len(token), "the token")
        self.assertEqual([self.page.field(field).text() for field in
                          ("Gitea URL", "Name", "Labels")], [self.server.url, name, "linux:host"])

    def run_a_job(self):
        self.choose("Show Log…", picture="menu")
        log = self.wait_for_window(LOG)
        self.put(self.window_id, LOG_PLACE)
        job = self.server.give_job("acme/site", WORKFLOW)
        self.wait_for_status("Building a job")
        wait_until(lambda: "Building: acme/site" in " ".join(self.menu.labels()), "the job's line")
        seen = set()
        wait_until(lambda: seen.add(max(self.item.pixmaps())) or len(seen) > 2, "a turning spinner")
        wait_until(lambda: "repo is acme/site" in log.find("text", "Log").text(), "its log line")
        self.picture("building")
        self.assertEqual(self.server.wait_for_result(job)["result"], "success")
        self.wait_for_status("Connected — idle")
        self.wait_for_bird("green")
        self.picture("built")

    def add_another_runner(self):
        self.click(self.page.add_button())
        wait_until(lambda: self.page.selected() == [1], "the new runner")
        self.fill_form("spare", "a-bad-token")
        self.click(self.page.register_button())
        self.page.wait_for_text(BAD_TOKEN)
        self.assertEqual(self.page.token().length(), len("a-bad-token"))
        self.assertEqual(len(self.server.runners()), 1)
        self.picture("bad-token")
        self.page.register(TOKEN)
        self.page.wait_for_text(REGISTERED)
        wait_until(lambda: len(self.program.children()) == 2, "two daemons")
        self.wait_for_status("Connected — idle · 2 runners")
        self.choose("Runner Status…")
        status = self.wait_for_window(STATUS)
        self.put(self.window_id, STATUS_PLACE)
        wait_until(lambda: status.names("label").count("Connected — idle") == 2, "two rows")
        self.assertIn("spare", status.names("label"))
        self.picture("two-runners")

    def remove_it(self):
        before = self.program.children()
        self.click(self.page.remove_button())
        wait_until(lambda: self.page.runners() == ["mini"], "one runner")
        self.assertEqual(self.page.selected(), [0])
        wait_until(lambda: len(self.program.children()) == 1, "one daemon")
        self.assertIn(self.program.children()[0], before)
        self.wait_for_status("Connected — idle")
        self.picture("removed")

    def quit(self):
        (daemon,) = self.program.children()
        self.choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(), 0)
        wait_until(lambda: not is_alive(daemon), "the end of the daemon")
        wait_until(lambda: not self.home.processes(), "the end of all that worked in the home")
        self.panel.wait_for_none()

    def come_back(self):
        self.launch()
        self.wait_for_bird("green")
        self.wait_for_status("Connected — idle")
        stays_true(lambda: not self.desktop.windows_of(self.program), "no window", 0.5)
        self.choose("Runner Status…")
        self.wait_for_window(STATUS)
        self.put(self.window_id, SETTINGS_PLACE)
        self.desktop.xdotool("mousemove", *ASIDE)
        self.picture("back-again")

    def make_film(self):
        film = os.path.join(looks.ARTEFACTS, "journey.gif")
        subprocess.run(["convert", "-delay", str(FRAME_TIME), *self.pictures,
                        "-resize", str(FILM_WIDTH), "-dither", "None", "-colors", "96",
                        "-layers", "optimize", "-loop", "0", film], check=True, timeout=120)
        self.assertLess(os.path.getsize(film), FILM_BYTES)


if __name__ == "__main__":
    unittest.main()
