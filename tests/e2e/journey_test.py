"""The whole way as a user goes it, by mouse and keyboard alone: from an empty home to a fleet that
has run a job, with a real act_runner, in a real panel. It leaves the pictures that the documents
show; `./dev demo` is this very tour."""

import os
import re
import unittest

from support import album, frames, looks
from support.accessibility import VARIABLES
from support.gitea import TOKEN, Gitea, usual_port
from support.icon import colour
from support.panel import Panel
from support.program import is_alive
from support.real_runner import REAL_RUNNER, build_or_skip
from support.release_service import ReleaseService
from support.settings_page import REGISTERED, SettingsPage
from support.waiting import PATIENCE, stays_true, wait_until
from support.window_case import WindowCase
from support.windows import LOG, ONBOARDING, SETTINGS, STATUS

ALL_SET = "Local network access is working — you're all set."
BAD_TOKEN = ("Error: Failed to register runner: unauthenticated: runner registration token not "
             "found")
DESKTOP = "#2f4d68"

# Where the windows stand without hiding each other, or what is to be clicked next.
SETTINGS_PLACE = (18, 49)
ONBOARDING_PLACE = (656, 49)
LOG_PLACE = (398, 158)
STATUS_PLACE = (644, 49)
STATUS_SIZE = (480, 310)
ASIDE = ("1000", "640")  # where the pointer brings up no tooltip

# What passes by itself has to last longer where everything is slow.
SLOWNESS = min(PATIENCE, 3)

# In ms, of the server, so that the eye can follow: while it registers, and while it starts.
SLOW_ANSWER = round(700 * SLOWNESS)
SLOWER_ANSWER = round(2000 * SLOWNESS)
NEXT_RELEASE = "v1.1.0"
FILM_BYTES = 1_500_000
STILL_BYTES = 150_000

WORKFLOW = """
name: Site
on: push
jobs:
  build:
    runs-on: linux
    steps:
      - name: Build
        run: echo "building the site"; sleep {seconds}; echo "the site is built"
"""


def readme_workflow():
    """What people are told to try first."""
    with open(os.path.join(os.environ["VALDORN_SOURCE"], "README.md"), encoding="utf-8") as file:
        return re.search(r"^```yaml\n(.*?)^```$", file.read(), re.MULTILINE | re.DOTALL)[1]


def setUpModule():
    build_or_skip()


class JourneyTest(WindowCase):
    screen = "1136x660x24"
    window_manager = frames.window_manager

    def setUp(self):
        super().setUp()
        self.home.install_runner(REAL_RUNNER)
        # In place of the computer's name, so that the pictures are the same everywhere.
        self.home.set_default("runnerName", "mini")
        self.server = Gitea(usual_port())
        self.addCleanup(self.server.close)
        self.releases = ReleaseService()
        self.addCleanup(self.releases.close)
        self.releases.publish(NEXT_RELEASE)
        self.desktop.paint(DESKTOP)
        self.panel = Panel(self.desktop)
        self.addCleanup(self.panel.close)
        self.album = album.Album(self.desktop, os.path.join(looks.ARTEFACTS, "pictures"))

    def launch(self):
        self.program = self.start(VALDORN_RELEASE_SERVICE=self.releases.url, **VARIABLES)
        self.item = self.panel.item()
        self.menu = self.item.menu()

    def put(self, window, place, size=None):
        """The window at its place, in a size of the user's if one is given, once it is there."""
        self.desktop.move(window, *place)
        if size:
            self.desktop.resize(window, *size)
        wait_until(lambda: abs(self.desktop.geometry(window)[0] - place[0]) < 20, "the new place")
        wait_until(lambda: not size or self.desktop.geometry(window)[2:] == size, "the new size")

    def still_of_window(self, name, window):
        left, top, width, height = self.desktop.geometry(window)
        self.album.still(name, (left - 1, top - frames.TITLE_HEIGHT, width + 2,
                                height + frames.TITLE_HEIGHT + 1))

    def still_of_menu(self, name, menu):
        """The menu and what is above it, to the right edge of the screen."""
        left, top, width, height = self.desktop.geometry(menu)
        self.album.still(name, (left - 24, 0, width + 24, top + height + 16))

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
        self.work_with_two()
        self.remove_one()
        self.quit()
        self.come_back()
        self.run_the_first_workflow()
        self.check_pictures()

    def begin_with_the_introduction(self):
        self.launch()
        self.introduction = self.wait_for_window(ONBOARDING)
        self.put(self.window_id, ONBOARDING_PLACE)
        self.assertIn("Status: Not registered", self.introduction.names("label"))
        self.wait_for_bird("gray")
        self.album.frame("welcome", "The first start: no runner is registered yet")
        self.click(self.introduction.find("push button", "Register a Runner…"))
        self.page = SettingsPage(self, self.wait_for_window(SETTINGS))
        self.put(self.page.id, SETTINGS_PLACE)

    def register_the_first_runner(self):
        self.fill_form("mini", TOKEN)
        self.album.frame("form", "The Gitea instance, a name, labels, and a registration token")
        self.server.answer_after(SLOW_ANSWER)
        self.click(self.page.register_button())
        wait_until(self.page.is_busy, "a busy form")
        self.album.frame("registering", "act_runner registers itself …")
        self.server.answer_after(SLOWER_ANSWER)
        self.page.wait_for_text(REGISTERED)
        self.wait_for_bird("yellow")
        self.album.frame("starting", "… and Valdorn starts it: the bird turns yellow …")
        self.server.answer_after(0)
        self.wait_for_bird("green")
        self.wait_for_status("Connected — idle")
        self.assertEqual(self.page.token().length(), 0)
        self.assertEqual(self.page.register_button().name(), "Re-register")
        wait_until(lambda: ALL_SET in self.introduction.names("label"), "good news")
        self.assertEqual(self.introduction.find_all("push button", "Register a Runner…"), [])
        self.album.frame("connected", "… and green once it is connected")
        self.click(self.introduction.find("push button", "Continue"))
        wait_until(lambda: not self.shown(ONBOARDING), "no introduction")

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
        self.panel.choose("Show Log…", lambda _: self.album.frame("menu", "The menu of the bird"))
        log = self.wait_for_window(LOG)
        self.put(self.window_id, LOG_PLACE)
        job = self.give_job("mini", seconds=2)
        self.wait_for_status("Building a job")
        wait_until(lambda: "Building: acme/site" in " ".join(self.menu.labels()), "the job's line")
        seen = set()
        wait_until(lambda: seen.add(max(self.item.pixmaps())) or len(seen) > 2, "a turning spinner")
        wait_until(lambda: "repo is acme/site" in log.find("text", "Log").text(), "its log line")
        self.album.frame("building", "A push brings a job: a spinner turns while it runs")
        self.assertEqual(self.server.wait_for_result(job)["result"], "success")
        self.wait_for_status("Connected — idle")
        self.wait_for_bird("green")
        self.still_of_window("log.png", self.window_id)
        self.close_window()

    def give_job(self, runner, seconds):
        workflow = WORKFLOW.format(seconds=round(seconds * SLOWNESS))
        return self.server.give_job("acme/site", workflow, runner)

    def add_another_runner(self):
        self.click(self.page.add_button())
        wait_until(lambda: self.page.selected() == [1], "the new runner")
        self.fill_form("spare", "a-bad-token")
        self.click(self.page.register_button())
        self.page.wait_for_text(BAD_TOKEN)
        self.assertEqual(self.page.token().length(), len("a-bad-token"))
        self.assertEqual(len(self.server.runners()), 1)
        self.album.frame("bad-token", "A second runner: why a token was refused stands beside the button")
        self.page.register(TOKEN)
        self.page.wait_for_text(REGISTERED)
        wait_until(lambda: len(self.program.children()) == 2, "two daemons")
        self.wait_for_status("Connected — idle · 2 runners")
        self.page.select(0)
        wait_until(lambda: self.page.runners() == ["mini", "spare"], "both names")
        self.still_of_window("settings.png", self.page.id)

    def work_with_two(self):
        job = self.give_job("mini", seconds=5)
        self.wait_for_status("Building a job · 2 runners")
        wait_until(lambda: "acme/site" in " ".join(self.menu.labels()), "the job's line")
        self.panel.choose("Runner Status…",
                          lambda menu: self.still_of_menu("status-menu.png", menu))
        status = self.wait_for_window(STATUS)
        self.put(self.window_id, STATUS_PLACE, STATUS_SIZE)
        wait_until(lambda: sorted(set(status.names("label")) & {"Connected — idle", "Building a job"})
                   == ["Building a job", "Connected — idle"], "two rows")
        self.assertIn("spare", status.names("label"))
        wait_until(lambda: f"update: {NEXT_RELEASE} available" in status.names("label"), "the hint")
        self.desktop.xdotool("mousemove", *ASIDE)
        self.album.frame("two-runners", "Two runners: one works, the other waits")
        self.still_of_window("status.png", self.window_id)
        self.assertEqual(self.server.wait_for_result(job)["result"], "success")
        self.wait_for_status("Connected — idle · 2 runners")

    def remove_one(self):
        before = self.program.children()
        self.page.select(1)
        self.click(self.page.remove_button())
        wait_until(lambda: self.page.runners() == ["mini"], "one runner")
        self.assertEqual(self.page.selected(), [0])
        wait_until(lambda: len(self.program.children()) == 1, "one daemon")
        self.assertIn(self.program.children()[0], before)
        self.wait_for_status("Connected — idle")
        self.album.frame("removed", "A runner that is removed ends, and its folder goes with it")

    def quit(self):
        (daemon,) = self.program.children()
        self.panel.choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(), 0)
        wait_until(lambda: not is_alive(daemon), "the end of the daemon")
        wait_until(lambda: not self.home.processes(), "the end of all that worked in the home")
        self.panel.wait_for_none()

    def come_back(self):
        self.launch()
        self.wait_for_bird("green")
        self.wait_for_status("Connected — idle")
        stays_true(lambda: not self.desktop.windows_of(self.program), "no window", 0.5)
        self.panel.choose("Runner Status…")
        status = self.wait_for_window(STATUS)
        self.put(self.window_id, STATUS_PLACE)
        wait_until(lambda: "Connected — idle" in status.names("label"), "its row")
        self.desktop.xdotool("mousemove", *ASIDE)
        self.album.frame("back-again", "At the next start everything comes back by itself")

    def run_the_first_workflow(self):
        job = self.server.give_job("acme/site", readme_workflow())
        task = self.server.wait_for_result(job)
        self.assertEqual(task["result"], "success")
        self.assertIn("Hello from ", str(task["logs"]))

    def check_pictures(self):
        self.album.make_film()
        self.assertEqual(self.album.names(), sorted((album.FILM, *album.STILLS)))
        self.assertLess(os.path.getsize(self.album.path(album.FILM)), FILM_BYTES)
        for name in album.STILLS:
            self.assertLess(os.path.getsize(self.album.path(name)), STILL_BYTES, name)


if __name__ == "__main__":
    unittest.main()
