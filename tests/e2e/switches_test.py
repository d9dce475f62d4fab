"""The three switches: a word on standard output, exit status 0, and nothing else needed."""

import os
import subprocess
import unittest

from support.case import ProgramCase
from support.program import VALDORN, Home
from support.skipping import skip
from support.waiting import wait_until

REFUSAL = "Valdorn: login-item toggle failed: "


class SwitchesCase(unittest.TestCase):
    def setUp(self):
        self.home = Home()
        self.addCleanup(self.home.close)

    @property
    def folder(self):
        return os.path.join(self.home.path, ".config/autostart")

    @property
    def path(self):
        return os.path.join(self.folder, "org.valdorn.valdorn.desktop")

    def run_with(self, *arguments, command=(), **more):
        """What it prints, and on standard error; nothing but HOME is in the environment."""
        done = subprocess.run([*command, VALDORN, *arguments],
                              env={**more, "HOME": self.home.path}, capture_output=True, text=True,
                              stdin=subprocess.DEVNULL, timeout=30)
        self.assertEqual(done.returncode, 0)
        return done.stdout, done.stderr

    def assert_answers(self, word, *arguments, **more):
        self.assertEqual(self.run_with(*arguments, **more), (word + "\n", ""))

    def assert_refused(self, word, *arguments):
        """One line that gives a reason; which one depends on what is in the way."""
        printed, said = self.run_with(*arguments)
        self.assertEqual(printed, word + "\n")
        self.assertEqual(said.count("\n"), 1, said)
        self.assertTrue(said.endswith("\n") and len(said) > len(REFUSAL) + 5, said)
        self.assertTrue(said.startswith(REFUSAL), said)

    def write(self, text):
        os.makedirs(self.folder, exist_ok=True)
        with open(self.path, "w", encoding="utf-8") as file:
            file.write(text)

    def read(self):
        with open(self.path, encoding="utf-8") as file:
            return file.read()

    def keys(self):
        return dict(line.split("=", 1) for line in self.read().splitlines() if "=" in line)


class AnswerTest(SwitchesCase):
    def test_a_new_home_is_not_enabled(self):
        self.assert_answers("not-enabled", "--login-status")
        self.assertEqual(os.listdir(self.home.path), [])

    def test_enabling_and_disabling_are_seen_afterwards(self):
        self.assert_answers("enabled", "--enable-login")
        self.assert_answers("enabled", "--login-status")
        self.assert_answers("enabled", "--enable-login")
        self.assert_answers("disabled", "--disable-login")
        self.assert_answers("not-enabled", "--login-status")
        self.assert_answers("disabled", "--disable-login")

    def test_disabling_what_is_not_enabled_touches_nothing(self):
        self.assert_answers("disabled", "--disable-login")
        self.assertEqual(os.listdir(self.home.path), [])

    def test_the_status_comes_before_enabling_and_that_before_disabling(self):
        for arguments in (("--enable-login", "--login-status"), ("--login-status", "--enable-login"),
                          ("--disable-login", "x", "--enable-login", "--login-status")):
            self.assert_answers("not-enabled", *arguments)
        self.assertFalse(os.path.exists(self.path))
        self.assert_answers("enabled", "--disable-login", "--enable-login")
        self.assert_answers("enabled", "--disable-login", "--login-status")
        self.assert_answers("disabled", "anything", "--disable-login", "--else")

    def test_the_name_under_which_it_is_called_counts_as_well(self):
        called = ("/bin/bash", "-c", 'exec -a --login-status "$0" "$@"')
        self.assert_answers("not-enabled", command=called)

    def test_ends_well_where_nobody_reads_the_answer(self):
        for word in ("--enable-login", "--login-status", "--disable-login"):
            reader, writer = os.pipe()
            os.close(reader)
            with self.subTest(word), os.fdopen(writer) as answer:
                done = subprocess.run([VALDORN, word], env={"HOME": self.home.path}, stdout=answer,
                                      stdin=subprocess.DEVNULL, timeout=30)
                self.assertEqual(done.returncode, 0)

    def test_only_whole_words_are_switches(self):
        # Without a display the program itself cannot start: that tells it from an answer.
        for argument in ("--Login-Status", "--login-statusx", "-login-status", " --login-status",
                         "--login-status=1", ""):
            with self.subTest(argument):
                done = subprocess.run([VALDORN, argument], env={"HOME": self.home.path},
                                      capture_output=True, text=True, timeout=30)
                self.assertEqual((done.returncode, done.stdout), (1, ""))


class EntryTest(SwitchesCase):
    def test_writes_an_entry_that_starts_the_program(self):
        self.assert_answers("enabled", "--enable-login")
        self.assertEqual(self.read().splitlines()[0], "[Desktop Entry]")
        self.assertEqual(self.keys(), {
            "Type": "Application", "Name": "Valdorn", "Exec": f'"{os.path.realpath(VALDORN)}"',
            "Icon": "org.valdorn.valdorn", "Terminal": "false"})

    def test_the_entry_is_a_valid_one(self):
        self.assert_answers("enabled", "--enable-login")
        done = subprocess.run(["desktop-file-validate", self.path], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout), (0, ""))

    def test_follows_the_configuration_folder(self):
        folder = os.path.join(self.home.path, "elsewhere")
        self.assert_answers("enabled", "--enable-login", XDG_CONFIG_HOME=folder)
        self.assertEqual(os.listdir(os.path.join(folder, "autostart")),
                         ["org.valdorn.valdorn.desktop"])
        self.assert_answers("not-enabled", "--login-status")
        # A relative one is to be ignored.
        self.assert_answers("not-enabled", "--login-status", XDG_CONFIG_HOME="elsewhere")

    def test_an_entry_of_its_own_is_removed(self):
        self.assert_answers("enabled", "--enable-login")
        self.assert_answers("disabled", "--disable-login")
        self.assertEqual(os.listdir(self.folder), [])

    def test_foreign_keys_are_kept(self):
        self.write("# mine\n[Desktop Entry]\nType=Application\nName=Mein Valdorn\n"
                   f'Exec="{VALDORN}" --x\nX-KDE-autostart-after=panel\nComment[de]=Läufer\n'
                   "\n[Desktop Action A]\nName=A\n")
        self.assert_answers("enabled", "--login-status")
        self.assert_answers("disabled", "--disable-login")
        for line in ("# mine", "X-KDE-autostart-after=panel", "Comment[de]=Läufer",
                     "[Desktop Action A]", "Name=A"):
            self.assertIn(line, self.read().splitlines())
        self.assertIn("Hidden=true", self.read().splitlines())
        self.assert_answers("not-enabled", "--login-status")
        self.assert_answers("enabled", "--enable-login")
        for line in ("# mine", "X-KDE-autostart-after=panel", "Comment[de]=Läufer",
                     "[Desktop Action A]", "Name=A", "Hidden=false"):
            self.assertIn(line, self.read().splitlines())

    def test_what_the_desktop_has_switched_off_is_not_enabled(self):
        for line in ("Hidden=true", "X-GNOME-Autostart-enabled=false"):
            with self.subTest(line):
                self.write(f'[Desktop Entry]\nType=Application\nName=Valdorn\nExec="/x"\n{line}\n')
                self.assert_answers("not-enabled", "--login-status")
                self.assert_answers("disabled", "--disable-login")
                self.assertIn(line, self.read())
                self.assert_answers("enabled", "--enable-login")
                self.assert_answers("enabled", "--login-status")
        for line in ("Hidden=false", "X-GNOME-Autostart-enabled=true"):
            with self.subTest(line):
                self.write(f'[Desktop Entry]\nType=Application\nName=Valdorn\nExec="/x"\n{line}\n')
                self.assert_answers("enabled", "--login-status")


class RefusalTest(SwitchesCase):
    def test_enabling_fails_where_no_folder_can_be_made(self):
        open(os.path.join(self.home.path, ".config"), "w").close()
        self.assert_refused("failed", "--enable-login")
        self.assert_answers("not-enabled", "--login-status")
        self.assert_answers("disabled", "--disable-login")

    def test_enabling_fails_where_the_entry_is_a_folder(self):
        os.makedirs(os.path.join(self.path, "x"))
        self.assert_refused("failed", "--enable-login")

    def test_a_full_disk_leaves_what_was_there(self):
        if not os.path.exists("/dev/full"):
            skip("needs a device that is always full")
        text = '[Desktop Entry]\nType=Application\nName=Valdorn\nExec="/x"\nX-Mine=1\n'
        self.write(text)
        # No byte may be written to any file.
        limited = ("/bin/bash", "-c", 'ulimit -f 0; trap "" XFSZ; exec "$0" "$@" 2>&1 | cat')
        printed, _ = self.run_with("--disable-login", command=limited)
        self.assertIn("still-enabled\n", printed)
        self.assertEqual(printed.count(REFUSAL), 1, printed)
        self.assertEqual(self.read(), text)
        self.assertEqual(os.listdir(self.folder), [os.path.basename(self.path)])


class BesideTest(ProgramCase):
    def test_the_running_instance_is_no_hindrance(self):
        self.puppet_runners({})
        program, item = self.start_with_item()
        case = SwitchesCase()
        case.home = self.home
        case.assert_answers("enabled", "--enable-login")
        case.assert_answers("enabled", "--login-status", **self.desktop.environment)
        case.assert_answers("disabled", "--disable-login")
        self.assertTrue(program.is_running())
        self.assertEqual(self.desktop.windows_of(program), [])
        wait_until(lambda: "Quit Valdorn" in item.menu().labels(), "the menu")


if __name__ == "__main__":
    unittest.main()
