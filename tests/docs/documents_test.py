"""Whether what the documents say is there, and whether their commands do what they say."""

import glob
import os
import re
import unittest

from commands import COMMANDS, RunBy, RunHere
from markdown import SOURCE, document, documents
from sandbox import Sandbox
from support.album import FILM, STILLS
from version import VERSION

LANGUAGES = {"sh", "yaml", "json", "text"}
PROGRAMS = {"./dev", ".ci/run", "sudo", "valdorn", "act_runner", "demo_runner", "apt", "apt-get",
            "dpkg", "install", "rm", "mkdir", "mv", "cp", "chmod", "tail", "git", "go", "cmake",
            "ctest", "ninja", "python3"}
FOLDERS = ("src", "tests", "docs", "tools", "bench", "cmake", "resources", ".ci")


def without_comment(line):
    return re.sub(r"(?:^|\s+)#\s.*$", "", line).strip()


def comment(line):
    return line.partition(" # ")[2]


def is_command(code):
    """Whether this, in the middle of a text, is to be typed: a word alone only names a program."""
    program, *arguments = code.split()
    return bool(arguments) and (program in PROGRAMS
                                or program.endswith((".sh", "bin/valdorn")))


def shell_lines(page):
    return [line for block in page.blocks if block.language == "sh" for line in block.lines
            if without_comment(line)]


def commands_of(page):
    return [*map(without_comment, shell_lines(page)), *filter(is_command, page.inline_code())]


def read(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
        return file.read()


class CommandTableTest(unittest.TestCase):
    def test_every_command_of_a_document_is_run_by_a_test(self):
        for page in documents():
            self.assertEqual(set(commands_of(page)) - set(COMMANDS), set(), page.name)

    def test_every_command_that_is_run_stands_in_a_document(self):
        written = {command for page in documents() for command in commands_of(page)}
        self.assertEqual(set(COMMANDS) - written, set())

    def test_the_tests_run_them(self):
        for command, runner in COMMANDS.items():
            with self.subTest(command):
                if isinstance(runner, RunBy):
                    self.assertTrue(runner.call in read(runner.file), runner)
                else:
                    self.assertIsInstance(runner, RunHere)
                    self.assertTrue(hasattr(RunHereTest, runner.test), runner.test)

    def test_code_tells_its_language(self):
        """A command in any other block would be overlooked."""
        for page in documents():
            self.assertLessEqual({block.language for block in page.blocks}, LANGUAGES, page.name)
            self.assertFalse(page.has_indented_code(), page.name)


class RunHereTest(unittest.TestCase):
    def setUp(self):
        self.sandbox = Sandbox()
        self.addCleanup(self.sandbox.close)

    def lines(self, page, test):
        """Those that this test is to run, as they stand in the document."""
        found = [line for line in shell_lines(document(page))
                 if COMMANDS.get(without_comment(line)) == RunHere(test)]
        self.assertTrue(found)
        return found

    def run_line(self, line, folder=""):
        done = self.sandbox.run(without_comment(line), folder)
        self.assertEqual((done.returncode, done.stderr), (0, ""), line)
        return done.stdout

    def test_the_runner_comes_to_its_place(self):
        self.sandbox.write("Downloads/act_runner", "#!/bin/sh\necho it runs\n")
        for line in self.lines("README.md", "test_the_runner_comes_to_its_place"):
            self.run_line(line)
        self.assertEqual(self.run_line("~/actrunner/act_runner"), "it runs\n")

    def test_the_switches(self):
        status, enable, disable = [
            line for line in self.lines("README.md", "test_the_switches") if comment(line)]
        for line, word in ((status, "not-enabled"), (enable, "enabled"), (status, "enabled"),
                           (disable, "disabled"), (status, "not-enabled")):
            self.assertEqual(self.run_line(line), word + "\n")
            self.assertIn(word, comment(line).split())

    def test_nothing_is_left(self):
        self.run_line("valdorn --enable-login")
        for path in ("Library/Application Support/Valdorn/runners.json", "actrunner/act_runner",
                     ".config/valdorn/valdorn.ini", ".local/state/valdorn/0.lock",
                     ".cache/act/repository", ".cache/actcache/bolt.db"):
            self.sandbox.write(path, "")
        self.sandbox.write(".config/other/file", "")
        for line in (*self.lines("README.md", "test_the_switches")[-1:],
                     *self.lines("README.md", "test_nothing_is_left")):
            self.run_line(line)
        self.assertEqual([path for path in self.sandbox.files() if not path.startswith("bin/")],
                         [".config/other/file"])
        self.assertFalse(os.path.exists(os.path.join(self.sandbox.home, "Library")))

    def test_the_tag(self):
        self.sandbox.write(".gitconfig", "[user]\n\tname = Ada\n\temail = ada@example.org\n")
        self.sandbox.make_folder("tree")
        self.run_line("git init --quiet && git commit --quiet --allow-empty --message One", "tree")
        (line,) = [code for code in document("RELEASING.md").inline_code()
                   if COMMANDS.get(code) == RunHere("test_the_tag")]
        self.run_line(line, "tree")
        self.assertEqual(self.run_line("git tag --list", "tree"), f"v{VERSION}\n")


class PlaceTest(unittest.TestCase):
    def test_links_lead_somewhere(self):
        for page in documents():
            for link in page.links():
                if not link.startswith("https://"):
                    self.assertTrue(os.path.exists(page.path(link)), f"{page.name}: {link}")

    def test_paths_are_there(self):
        for page in documents():
            for code in page.inline_code():
                if code.startswith(tuple(folder + "/" for folder in FOLDERS)) and "<" not in code:
                    self.assertTrue(glob.glob(os.path.join(SOURCE, code)), f"{page.name}: {code}")

    def test_every_document_can_be_found_from_the_first(self):
        found, new = set(), {os.path.join(SOURCE, "README.md")}
        while new:
            found |= new
            pages = [document(path) for path in new if path.endswith(".md")]
            new = {page.path(link) for page in pages for link in page.links()
                   if not link.startswith("https://")} - found
        top = {os.path.join(SOURCE, page.name) for page in documents()
               if os.path.dirname(page.name) in ("", "docs")}
        self.assertEqual(top - found, set())

    def test_pictures_are_those_of_the_tour(self):
        taken = {"docs/pictures/" + name for name in (FILM, *STILLS)}
        self.assertEqual(set(document("README.md").pictures()), taken)
        there = os.listdir(os.path.join(SOURCE, "docs/pictures"))
        self.assertEqual({"docs/pictures/" + name for name in there}, taken)


def source_texts():
    """All code of the product, with the parts of a text that goes on in the next line together."""
    code = "".join(read(path) for path in glob.glob("src/**/*.*", root_dir=SOURCE, recursive=True))
    return re.sub(r'"\s*\n\s*"', "", code)


class FactTest(unittest.TestCase):
    def test_what_is_quoted_is_what_the_program_says(self):
        code = source_texts()
        for name in ("README.md", "SECURITY.md", "docs/using.md", "docs/platforms.md"):
            text = re.sub(r"`[^`]+`", "", document(name).prose)
            for quoted in re.findall(r'"([^"]+)"', text):
                self.assertTrue(" ".join(quoted.split()) in code, f"{name}: {quoted}")

    def test_a_port_is_told_of_every_contract(self):
        contracts = set(glob.glob("tests/contracts/*.h", root_dir=SOURCE))
        self.assertEqual(contracts - set(document("docs/porting.md").inline_code()), set())

    def test_packages(self):
        listed = re.findall(r"^\w+_packages=\(([^)]*)\)", read("tools/dev/packages.sh"),
                            re.MULTILINE)
        installed = {name for names in listed for name in names.split()}
        _, _, table = document("HACKING.md").text.partition("| package | why |")
        rows = re.findall(r"^\| (`[^|]*) \|", table, re.MULTILINE)
        named = [name for row in rows for name in re.findall(r"`([^`]+)`", row)]
        self.assertEqual(sorted(named), sorted(installed))

    def test_the_version_is_the_projects(self):
        """Commands that name it are compared above, the package's own files in tests/package."""
        changes = re.findall(r"^## (\d\S*)", read("CHANGELOG.md"), re.MULTILINE)
        self.assertEqual(changes[0], VERSION)

    def test_the_first_workflow_finds_the_runner(self):
        page = document("README.md")
        (workflow,) = ["\n".join(block.lines) for block in page.blocks if block.language == "yaml"]
        (label,) = re.findall(r"runs-on: (\S+)", workflow)
        self.assertIn(f"label `{label}:host`", page.text)


if __name__ == "__main__":
    unittest.main()
