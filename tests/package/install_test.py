"""The package in a Debian that has nothing else: what it brings, whether it runs for an ordinary
user, and what is left when it goes."""

import os
import shutil
import subprocess
import unittest

import clean_debian
from clean_debian import AS_USER, HOME, Session, apt_get, give_to_user, inside
from support.program import DEMO_RUNNER, Home, Program
from support.tray import TrayHost
from support.waiting import wait_until

ID = "org.valdorn.valdorn"
ICONS = "/usr/share/icons/hicolor"
BUNDLED_RUNNER = "/usr/lib/valdorn/act_runner"
PACKAGE = os.environ["VALDORN_PACKAGE"]


def install():
    # Recommended ones are left out: what it cannot do without, it has to depend on.
    apt_get("install", "--no-install-recommends", "/tmp/" + os.path.basename(PACKAGE))


def setUpModule():
    clean_debian.prepare()
    shutil.copy(PACKAGE, inside("/tmp"))
    apt_get("update")
    install()


class FilesTest(unittest.TestCase):
    def test_all_are_as_the_package_has_them(self):
        self.assertEqual(clean_debian.run("dpkg", "--verify", "valdorn"), "")

    def test_what_desktops_look_for_is_where_they_look(self):
        for path in ("/usr/bin/valdorn", f"/usr/share/applications/{ID}.desktop",
                     f"/usr/share/metainfo/{ID}.metainfo.xml",
                     f"/usr/share/dbus-1/services/{ID}.service",
                     "/usr/share/man/man1/valdorn.1.gz", "/usr/share/doc/valdorn/copyright",
                     "/usr/share/doc/valdorn/changelog.gz",
                     f"{ICONS}/scalable/apps/{ID}.svg", f"{ICONS}/symbolic/apps/{ID}-symbolic.svg"):
            self.assertTrue(os.path.isfile(inside(path)), path)

    def test_each_size_of_the_icon_has_its_size(self):
        for size in (16, 22, 24, 32, 48, 64, 128, 256):
            picture = inside(f"{ICONS}/{size}x{size}/apps/{ID}.png")
            shown = subprocess.run(["identify", "-format", "%wx%h", picture], check=True,
                                   capture_output=True, text=True).stdout
            self.assertEqual(shown, f"{size}x{size}")

    def test_the_bus_service_starts_the_program(self):
        with open(inside(f"/usr/share/dbus-1/services/{ID}.service")) as file:
            self.assertIn("Exec=/usr/bin/valdorn\n", file.readlines())


class UserTest(unittest.TestCase):
    def setUp(self):
        self.session = Session()
        self.addCleanup(self.session.close)
        self.home = Home(inside(HOME))
        self.addCleanup(self.empty_home)

    def empty_home(self):
        shutil.rmtree(self.home.path)
        os.mkdir(self.home.path)
        give_to_user(self.home.path)

    def start(self):
        """The program, and its item in the status bar."""
        host = TrayHost(self.session)
        self.addCleanup(host.close)
        program = Program(self.session, self.home, command=AS_USER, HOME=HOME)
        self.addCleanup(program.close)
        return program, host.wait_for_item()

    def test_launch_at_login_starts_what_is_installed(self):
        self.assertEqual(self.session.run("valdorn", "--enable-login"), (0, "enabled\n", ""))
        with open(inside(f"{HOME}/.config/autostart/{ID}.desktop")) as file:
            lines = file.read().splitlines()
        self.assertIn('Exec="/usr/bin/valdorn"', lines)
        self.assertIn(f"Icon={ID}", lines)
        self.assertEqual(self.session.run("valdorn", "--login-status"), (0, "enabled\n", ""))
        self.assertEqual(self.session.run("valdorn", "--disable-login"), (0, "disabled\n", ""))

    def test_runs_a_bundled_runner_and_answers_the_actions(self):
        os.makedirs(os.path.dirname(inside(BUNDLED_RUNNER)))
        self.addCleanup(shutil.rmtree, os.path.dirname(inside(BUNDLED_RUNNER)))
        shutil.copy(DEMO_RUNNER, inside(BUNDLED_RUNNER))
        self.home.add_runners({})
        self.home.set_default("hasConnected", "true")
        give_to_user(self.home.path)
        program, item = self.start()
        self.assertEqual(item.property("Id"), "Valdorn")
        wait_until(lambda: "Status: Connected — idle" in item.menu().labels(), "a connected runner")
        daemon, = program.children()
        self.assertEqual(os.path.realpath(f"/proc/{daemon}/exe"), inside(BUNDLED_RUNNER))
        self.assertEqual(os.stat(f"/proc/{daemon}").st_uid, clean_debian.USER_ID)

        quitting = ("gapplication", "action", ID, "quit")
        self.assertEqual(self.session.run(*quitting), (0, "", ""))
        self.assertEqual(program.wait_for_end(), 0)
        self.assertEqual(program.stderr(), "")
        wait_until(lambda: not os.path.exists(f"/proc/{daemon}"), "the end of the daemon")

    def test_nothing_is_left_when_it_goes_but_what_is_the_users(self):
        self.assertEqual(self.session.run("valdorn", "--enable-login")[0], 0)
        program, _ = self.start()
        wait_until(lambda: self.home.has_file("runners.json"), "the list of runners")
        program.quit()
        theirs = self.files(self.home.path)
        ours = [path for path in clean_debian.run("dpkg", "--listfiles", "valdorn").splitlines()
                if not os.path.isdir(inside(path))]
        self.assertGreater(len(ours), 15)
        for removal in ("remove", "purge"):
            apt_get(removal, "valdorn")
            try:
                self.assertEqual([path for path in ours if os.path.lexists(inside(path))], [])
                # Of the folders, those that were the package's alone.
                self.assertFalse(os.path.exists(inside("/usr/share/doc/valdorn")))
                self.assertEqual(self.named_after_it(), [])
                self.assertEqual(self.files(self.home.path), theirs)
            finally:
                install()

    @staticmethod
    def files(folder):
        return sorted(os.path.join(at, name) for at, _, names in os.walk(folder) for name in names)

    @staticmethod
    def named_after_it():
        """What bears its name anywhere in the system."""
        return [path for top in ("/etc", "/usr", "/var") for path in UserTest.files(inside(top))
                if "valdorn" in path[len(inside("")):]]


if __name__ == "__main__":
    unittest.main()
