"""What a screen reader finds in each window, and what it says of changes without being asked."""

import unittest

from support.puppet import BLOCKED, DECLARED, JOB_STARTED, task
from support.release_service import ReleaseService
from support.settings_case import BUILDER, SPARE, TOKEN, SettingsCase
from support.settings_page import FIELDS, SettingsPage
from support.waiting import spend, wait_until
from support.window_case import WindowCase
from support.windows import LOG, ONBOARDING, SETTINGS, STATUS

# What only holds other things together; nobody is told of it.
STUFFING = "filler"

# Things that say all there is to say by being there.
NAMELESS = ("separator", "scroll bar")

UNTOLD = (STUFFING, *NAMELESS)

# Comes and goes with what is announced.
NEWS = "notification"

REFUSAL = "Error: runner registration token not found"

ALL_SET = "Local network access is working — you're all set."
REFUSED = ("The runner can't reach Gitea over the local network. If you dismissed the “find devices "
           "on your local network” prompt, re-enable Valdorn in Local Network settings.")


class ScreenReaderCase(SettingsCase):
    """A fleet of two, with all that its windows can show."""

    def setUp(self):
        super().setUp()
        self.service = ReleaseService()
        self.addCleanup(self.service.close)
        self.service.publish("v9.9.9")
        self.prepare(BUILDER, SPARE, registered=True)
        WindowCase.begin(self, VALDORN_RELEASE_SERVICE=self.service.url)
        for puppets in self.puppets:
            puppets.wait_for_one()

    def expect(self, window, *expected):
        """Exactly these, by role and name, in the order in which one comes to them; and all of them
        such as a screen reader can make something of."""
        def told():
            # What ticks has another name at each look.
            return [(role, name) for role, name in window.described()
                    if role not in (NEWS, *UNTOLD) and not name.startswith("· up ")]
        try:
            wait_until(lambda: told() == list(expected), "what is expected", 10)
        except AssertionError:
            self.assertEqual(told(), list(expected))
        self.assert_all_usable(window)

    def assert_all_usable(self, window):
        for thing in window.everything():
            self.assert_usable(thing)

    def assert_usable(self, thing):
        role, name, states = thing.role(), thing.name(), thing.states()
        is_told = role not in UNTOLD
        self.assertTrue(name or thing.labels() or not is_told, f"a nameless {role}")
        if "focusable" in states:
            self.assertTrue(is_told and name, f"the keyboard comes to a nameless {role}")
        if role in ("push button", "check box", "combo box", "text", "list"):
            self.assertIn("focusable", states, f"{role} {name!r}")
        if role == "text":
            self.assertTrue({"editable", "read-only"} & states, name)

    def states(self, window, role, name):
        return window.find(role, name).states()


class ContentTest(ScreenReaderCase):
    def test_status_window(self):
        window = self.open(STATUS)
        self.puppets[0].say(task("acme/site"), JOB_STARTED, "[CI/lint] | step\n")
        self.puppets[1].say(BLOCKED)
        window.find("label", "Building acme/site (CI/lint)")
        window.find("label", "No local-network access")
        self.expect(
            window,
            ("frame", STATUS.title),
            ("panel", "Runners"),
            ("heading", "Runners"),
            ("panel", "builder"),
            ("graphic", "Building a job"),
            ("label", "builder"),
            ("label", "Building a job"),
            ("label", "· runner v1.0.8"),
            ("label", "update: v9.9.9 available"),
            ("label", "Building acme/site (CI/lint)"),
            ("push button", "Stop runner"),
            ("panel", "spare"),
            ("graphic", "No local-network access"),
            ("label", "spare"),
            ("label", "No local-network access"),
            ("label", "· runner v1.0.8"),
            ("label", "update: v9.9.9 available"),
            ("push button", "Stop runner"),
            ("label", "Add or remove runners in Settings → Runners."))
        self.assertEqual([panel.description() for panel in window.find_all("panel")][1:], [
            "Building a job · runner v1.0.8, update: v9.9.9 available, Building acme/site (CI/lint)",
            "No local-network access · runner v1.0.8, update: v9.9.9 available"])
        self.assertEqual(self.focused(window).name(), "Runners")
        self.press("Tab")
        wait_until(lambda: self.focused(window).name() == "Stop runner", "a button")

    def test_settings_window(self):
        self.tool.plays("echo '" + REFUSAL + "'; exit 1")
        window = self.open(SETTINGS)
        page = SettingsPage(self, window)
        self.assertEqual(self.focused(window).name(), "Runners")
        page.register(TOKEN)
        self.expect(
            window,
            ("frame", SETTINGS.title),
            ("list", "Runners"),
            ("list item", "builder"),
            ("list item", "spare"),
            ("push button", "Add a runner"),
            ("push button", "Remove the selected runner"),
            ("heading", "Runner"),
            ("panel", "Runner"),
            *[thing for name in FIELDS for thing in (("label", name), ("text", name))],
            ("heading", "Register"),
            ("panel", "Register"),
            ("label", "Registration token"),
            ("text", "Registration token"),
            ("label", "Token: <gitea>/-/admin/actions/runners (or an org/repo → Settings → "
                      "Runners)."),
            ("push button", "Re-register"),
            ("label", REFUSAL),
            ("check box", "Launch Valdorn at login"))
        self.assertIn("selected", self.states(window, "list item", "builder"))
        self.assertNotIn("selected", self.states(window, "list item", "spare"))
        self.assertNotIn("checked", self.states(window, "check box", "Launch Valdorn at login"))
        for name in (*FIELDS, "Registration token"):
            self.assertEqual(window.find("text", name).labels(), [name])
            self.assertIn("editable", self.states(window, "text", name))

    def test_settings_window_while_a_runner_registers(self):
        self.tool.plays("sleep 60")
        window = self.open(SETTINGS)
        page = SettingsPage(self, window)
        page.register(TOKEN)
        window.find("animation", "Registering")
        self.assertNotIn("enabled", self.states(window, "push button", "Re-register"))
        self.assert_all_usable(window)

    def test_log_window(self):
        window = self.open(LOG)
        self.assertEqual(self.focused(window).name(), "Filter")
        self.expect(
            window,
            ("frame", LOG.title),
            ("text", "Filter"),
            ("combo box", "All"),
            ("check box", "Follow"),
            ("push button", "Copy"),
            ("push button", "Clear"),
            ("push button", "Open File"),
            ("text", "Log"))
        self.assertEqual(window.find("combo box").labels(), ["Level"])
        self.assertIn("checked", self.states(window, "check box", "Follow"))
        self.assertLessEqual({"multi-line", "read-only", "focusable"},
                             self.states(window, "text", "Log"))

    def test_onboarding_window(self):
        window = self.open(ONBOARDING)
        self.assertEqual(self.focused(window).name(), "Continue")
        self.expect(
            window,
            ("frame", ONBOARDING.title),
            ("panel", "Welcome to Valdorn"),
            ("heading", "Welcome to Valdorn"),
            ("label", window.names("label")[0]),
            ("graphic", "Connected — idle"),
            ("label", "Status: Connected — idle"),
            ("label", ALL_SET),
            ("push button", "Open Local Network Settings…"),
            ("push button", "Runner Settings…"),
            ("push button", "Continue"))


class NewsTest(ScreenReaderCase):
    def setUp(self):
        super().setUp()
        self.listener = self.reader.listen()
        self.addCleanup(self.listener.close)

    def test_status_window_says_what_its_runners_go_through(self):
        self.puppets[0].say(BLOCKED)
        wait_until(lambda: "Status: Connected — idle · 2 runners" in self.menu.labels(), "a status")
        self.open(STATUS)
        for name in ("builder", "spare"):
            wait_until(lambda: any(f"{name}: update: v9.9.9 available" in text
                                   for text in self.listener.said), f"a hint for {name}")
        self.listener.take()
        self.puppets[1].say(BLOCKED)
        self.listener.wait_for("spare: No local-network access")
        self.puppets[1].say(DECLARED)
        self.listener.wait_for("spare: Connected — idle")
        spend(2.5)  # of uptime
        self.assertEqual(self.listener.take(),
                         ["spare: No local-network access", "spare: Connected — idle"])
        self.close_window()
        self.puppets[1].say(BLOCKED)
        spend(0.5)
        self.open(STATUS)
        spend(0.5)
        self.assertEqual(self.listener.take(), [])

    def test_settings_window_says_how_a_registration_goes(self):
        page = SettingsPage(self)
        self.tool.plays("sleep 1; echo '" + REFUSAL + "'; exit 1")
        page.register(TOKEN)
        self.listener.wait_for("Registering")
        self.listener.wait_for(REFUSAL)
        self.tool.plays("echo '{}' > .runner")
        page.register()
        self.listener.wait_for("Registered ✓")

    def test_onboarding_window_says_how_its_runner_fares(self):
        self.open(ONBOARDING)
        self.puppets[0].say(BLOCKED)
        self.listener.wait_for("Status: No local-network access. " + REFUSED)
        self.puppets[0].say(DECLARED)
        self.listener.wait_for("Status: Connected — idle. " + ALL_SET)


if __name__ == "__main__":
    unittest.main()
