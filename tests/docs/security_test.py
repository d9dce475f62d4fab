"""Whether what SECURITY.md says of the sources is so."""

import glob
import os
import re
import unittest

from markdown import SOURCE

# In words of code: calls, and texts that such calls are given.
SHELL = re.compile(
    r'\b(?:system|popen|wordexp|startCommand)\s*\('
    r'|/(?:ba|da|k|z)?sh"|"(?:ba|da|k|z)?sh"|"-c"')
# The C library's ways to look a program up on PATH, or to run a script without "#!" by a shell.
LOOK_UP = re.compile(r'\b(?:exec[lv]pe?|posix_spawnp)\b')
START = re.compile(r'\bQProcess\s+\w|\bQProcess::(?:start|execute)|SYS_exec|\b(?:exec[lv]\w*|fexecve)\s*\('
                   r'|\bposix_spawn|\bv?fork\s*\(|\bcloneUnseen\s*\(|QDesktopServices::open')
# Who may start something: whatever is our child, and the desktop's own programs.
STARTERS = {"src/platform/posix/SpawnProcess.cpp", "src/platform/qt/QtWorkspace.cpp"}


def without_comments(code):
    """Ours are all of this kind. A text with two slashes in it, such as an address, is cut short."""
    return re.sub(r"//.*", "", code)


def sources():
    """The code of the product, by the files' paths."""
    found = {}
    for path in glob.glob("src/**/*.*", root_dir=SOURCE, recursive=True):
        with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
            found[path] = without_comments(file.read())
    return found


def files_with(pattern):
    return {path for path, code in sources().items() if pattern.search(code)}


class ShellTest(unittest.TestCase):
    def test_there_is_none(self):
        self.assertEqual(files_with(SHELL), set())

    def test_what_would_be_one_is_seen(self):
        for line in ('system("ls");', "std::system (text)", 'popen(text, "r")', "::popen(x)",
                     'run("/bin/sh")', 'run("/usr/bin/bash")', '{"sh", "-c"}', "wordexp(a, b)",
                     "process.startCommand(text)"):
            self.assertTrue(SHELL.search(without_comments(line)), line)
        for line in ("SystemLog log;", "filesystem::exists(x)", "subsystem_(x)", '"fresh"',
                     "// system(x) would", "fileSystem(x)"):
            self.assertFalse(SHELL.search(without_comments(line)), line)


class StartTest(unittest.TestCase):
    def test_nothing_is_looked_up_by_the_c_library(self):
        self.assertEqual(files_with(LOOK_UP), set())

    def test_processes_are_started_in_these_places_only(self):
        self.assertEqual(files_with(START), STARTERS)


class PrivilegeTest(unittest.TestCase):
    def test_nobody_asks_for_other_rights(self):
        asking = re.compile(r"\b(?:set(?:re|res|e)?[ug]id|setgroups|cap_set\w+|pkexec|sudo)\b")
        self.assertEqual(files_with(asking), set())


class CertificateTest(unittest.TestCase):
    def test_nobody_looks_away(self):
        careless = re.compile(r"ignoreSslErrors|VerifyNone|QueryPeer|setPeerVerifyMode"
                              r"|sslErrors|UserVerifiedRedirectPolicy")
        self.assertEqual(files_with(careless), set())


if __name__ == "__main__":
    unittest.main()
