"""What a package for everybody's computer owes them: its files belong to root alone, and its program
is built to make a mistake in it hard to use."""

import io
import os
import re
import subprocess
import tarfile
import tempfile
import unittest

PACKAGE = os.environ["VALDORN_PACKAGE"]
PROGRAM = "./usr/bin/valdorn"
END_BRANCH = b"\xf3\x0f\x1e\xfa"  # where an indirect jump may lead, on x86-64


def archive(part):
    """One of the two archives that a package is made of."""
    packed = subprocess.run(["dpkg-deb", part, PACKAGE], check=True, capture_output=True).stdout
    return tarfile.open(fileobj=io.BytesIO(packed))


class FilesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.files = archive("--fsys-tarfile").getmembers()

    def test_are_roots(self):
        self.assertGreater(len(self.files), 15)
        self.assertEqual([file.name for file in self.files if (file.uid, file.gid) != (0, 0)], [])

    def test_only_root_may_change_them(self):
        self.assertEqual([file.name for file in self.files if file.mode & 0o022], [])

    def test_lend_nobody_more_rights(self):
        self.assertEqual([file.name for file in self.files if file.mode & 0o7000], [])
        self.assertEqual([file.name for file in self.files if "security.capability" in
                          "".join(file.pax_headers)], [])

    def test_only_the_program_is_one(self):
        programs = [file.name for file in self.files if file.isfile() and file.mode & 0o111]
        self.assertEqual(programs, [PROGRAM])

    def test_are_files_and_folders_only(self):
        self.assertEqual([file.name for file in self.files if not (file.isfile() or file.isdir())],
                         [])

    def test_nothing_runs_as_root_when_they_are_installed(self):
        names = [os.path.basename(file.name) for file in archive("--ctrl-tarfile") if file.isfile()]
        self.assertEqual(sorted(names), ["control", "md5sums"])


class ProgramTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.path = os.path.join(folder.name, "valdorn")
        with archive("--fsys-tarfile") as files, open(cls.path, "wb") as program:
            program.write(files.extractfile(PROGRAM).read())

    def read(self, what):
        return subprocess.run(["readelf", "--wide", what, self.path], check=True, text=True,
                              capture_output=True, env={**os.environ, "LC_ALL": "C"}).stdout

    def segments(self, kind):
        """Their rights, such as "R E"."""
        lines = [line for line in self.read("--segments").splitlines()
                 if line.split()[:1] == [kind]]
        return [re.search(r" ([R ][W ][E ]) 0x\w+$", line.rstrip()).group(1) for line in lines]

    def test_lies_elsewhere_at_each_start(self):
        self.assertRegex(self.read("--file-header"), r"Type: +DYN \(Position-Independent Executable")
        self.assertRegex(self.read("--dynamic"), r"\(FLAGS_1\).*\bPIE\b")

    def test_its_links_to_libraries_are_fixed_before_it_begins(self):
        self.assertEqual(len(self.segments("GNU_RELRO")), 1)
        self.assertRegex(self.read("--dynamic"), r"\(FLAGS_1\).*\bNOW\b")

    def test_its_libraries_are_the_systems(self):
        self.assertNotRegex(self.read("--dynamic"), r"\((RPATH|RUNPATH)\)")

    def test_runs_nothing_that_can_be_written(self):
        self.assertEqual(self.segments("GNU_STACK"), ["RW "])
        self.assertIn("R E", self.segments("LOAD"))
        self.assertNotIn("RWE", self.segments("LOAD"))
        self.assertNotIn("(TEXTREL)", self.read("--dynamic"))

    def test_watches_its_stack(self):
        self.assertIn(" __stack_chk_fail@", self.read("--dyn-syms"))

    def test_watches_where_it_copies_to(self):
        watched = re.findall(r" (__(?!stack)\w+_chk)@", self.read("--dyn-syms"))
        self.assertGreater(len(watched), 2, watched)

    def test_marks_where_a_jump_may_lead(self):
        if "X86-64" not in self.read("--file-header"):
            self.skipTest("other processors have other marks")
        with open(self.path, "rb") as program:
            marks = program.read().count(END_BRANCH)
        # What the C library adds to each program has some as well.
        self.assertGreater(marks, 1000)


if __name__ == "__main__":
    unittest.main()
