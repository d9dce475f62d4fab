"""./dev in a checkout of its own, where what it calls only notes how it was called."""

import json
import os
import re
import shutil
import subprocess
import unittest

from markdown import SOURCE, document
from sandbox import Sandbox
from support.album import FILM

_NOTE = """#!/bin/bash
echo "$(basename "$0") $*" >>"$HOME/calls"
"""
_INSTALLED = "#!/bin/bash\necho installed\n"


class DevCase(unittest.TestCase):
    def setUp(self):
        self.sandbox = Sandbox()
        self.addCleanup(self.sandbox.close)
        self.sandbox.make_folder("tree/tools")
        shutil.copy(os.path.join(SOURCE, "dev"), os.path.join(self.sandbox.home, "tree"))
        shutil.copytree(os.path.join(SOURCE, "tools/dev"),
                        os.path.join(self.sandbox.home, "tree/tools/dev"))
        self.add_program("dpkg-query", _INSTALLED)
        for name in ("cmake", "ctest", "go"):
            self.add_program(name)

    def add_program(self, name, script=_NOTE):
        self.sandbox.write(f"bin/{name}", script, executable=True)

    def dev(self, *arguments, status=0):
        """What it says."""
        done = self.sandbox.run(" ".join(("./dev", *arguments)), "tree")
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout + done.stderr

    def calls(self):
        return self.sandbox.read("calls").splitlines()


class CommandTest(DevCase):
    def test_format_takes_every_file_of_ours(self):
        self.add_program("clang-format-14")
        for path in ("src/a.cpp", "tests/b/c.h", "tools/d.cpp", "bench/e.c", "docs/f.md"):
            self.sandbox.write("tree/" + path, "")
        self.sandbox.run("git init --quiet", "tree")
        self.dev("format")
        self.assertEqual(self.calls(), ["clang-format-14 -i bench/e.c src/a.cpp tests/b/c.h "
                                        "tools/d.cpp"])

    def test_bench_measures_what_it_is_told(self):
        self.add_program("python3")
        for name in ("one", "two"):
            self.sandbox.write(f"tree/bench/{name}.py", "")
        self.dev("bench", "two")
        self.assertEqual(self.calls()[-1], "python3 bench/two.py build/bench")
        self.dev("bench")
        self.assertEqual(self.calls()[-2:], ["python3 bench/one.py build/bench",
                                             "python3 bench/two.py build/bench"])

    def test_short_benchmarks_take_the_everyday_build_and_nothing_to_compare_with(self):
        self.add_program("python3")
        self.add_program("dpkg-query", _NOTE + "echo installed\n")
        for name in ("one", "two"):
            self.sandbox.write(f"tree/bench/{name}.py", "")
        self.sandbox.write("tree/tools/dev/packages.sh",
                           self.sandbox.read("tree/tools/dev/packages.sh") + "bench_packages=(peer)\n")
        self.dev("bench", "--short", "two")
        self.assertEqual(self.calls()[-2:], ["cmake --build --preset dev --target benchmarks",
                                             "python3 bench/two.py build/dev --short"])
        self.dev("bench", "--short")
        self.assertEqual(self.calls()[-2:], ["python3 bench/one.py build/dev --short",
                                             "python3 bench/two.py build/dev --short"])
        self.assertFalse([call for call in self.calls() if call.endswith(" peer")])

    def test_soak_plays_a_million_situations_and_then_watches_the_program_for_an_hour(self):
        self.sandbox.write("tree/build/dev/bin/simulation_tests", _NOTE, executable=True)
        self.add_program("ctest", _NOTE + 'echo "for $VALDORN_SOAK_SECONDS s" >>"$HOME/calls"\n')
        self.dev("soak")
        simulation, _, _, watched, seconds = self.calls()[-5:]
        self.assertRegex(simulation, r"^simulation_tests --soak=1000000 --seed=\d{10,}$")
        self.assertRegex(watched, r"^ctest --preset dev .*soak_test.* --timeout 4200 ")
        self.assertEqual(seconds, "for 3600 s")

    def test_each_soak_has_its_size(self):
        self.sandbox.write("tree/build/dev/bin/simulation_tests", _NOTE, executable=True)
        self.dev("soak", "simulation", "500", "7")
        self.assertEqual(self.calls()[-2:], ["cmake --build --preset dev --target simulation_tests",
                                             "simulation_tests --soak=500 --seed=7"])
        self.dev("soak", "program", "60")
        self.assertIn("cmake --build --preset dev --target valdorn demo_runner", self.calls())
        self.assertIn(" --timeout 660 ", self.calls()[-1])
        self.assertIn('no soak "500"', self.dev("soak", "500", status=2))

    def test_faults_are_done_in_full(self):
        self.add_program("ctest", _NOTE + 'echo "$VALDORN_FAULTS" >>"$HOME/calls"\n')
        self.dev("faults")
        ctest, form = self.calls()[-2:]
        self.assertEqual(form, "full")
        self.assertTrue(ctest.startswith("ctest --preset dev"), ctest)
        self.assertTrue(ctest.endswith("--tests-regex ^e2e\\.faults\\.(.*)_test$|"
                                       "^posix\\.(RelaunchStorm)Test\\."), ctest)
        for name in ("killed", "crowd"):
            self.sandbox.write(f"tree/tests/e2e/faults/{name}_test.py", "")
        self.dev("faults", "killed_test.py", "crowd")
        self.assertTrue(self.calls()[-2].endswith("(killed|crowd)_test$|^posix\\.(killed|crowd)"
                                                  "Test\\."), self.calls())

    def test_a_wrong_word_is_told_before_anything_is_done_for_it(self):
        self.sandbox.write("tree/bench/one.py", "")
        self.sandbox.write("tree/tests/e2e/faults/one_test.py", "")
        self.sandbox.write("tree/tests/fuzz/one.dict", "")
        for words in (("bench", "nosuch"), ("bench", "one", "nosuch"), ("bench", "--short", "nosuch"),
                      ("bench", "one", "--short"),
                      ("faults", "nosuch"), ("faults", "one", "nosuch"), ("fuzz", "0"),
                      ("fuzz", "nosuch"), ("fuzz", "99999999999"), ("soak", "nosuch"),
                      ("soak", "program", "nosuch"), ("soak", "program", "0"),
                      ("soak", "program", "1", "nosuch"), ("soak", "simulation", "nosuch"),
                      ("soak", "simulation", "1", "nosuch"),
                      ("soak", "simulation", "1", "0", "nosuch"), ("fuzz", "1", "nosuch"),
                      ("fuzz", "1", "one", "nosuch"), ("run", "nosuch"), ("test", "nosuch"),
                      ("check", "nosuch"), ("package", "nosuch"), ("demo", "nosuch"),
                      ("coverage", "nosuch"), ("format", "nosuch")):
            with self.subTest(words):
                self.assertIn(f'"{words[-1]}"', self.dev(*words, status=2))
        self.assertNotIn("calls", self.sandbox.files())

    def test_an_unknown_word_is_no_command(self):
        self.assertIn('what is "tset"?', self.dev("tset", status=2))

    def test_usage_and_the_developers_page_name_every_command(self):
        with open(os.path.join(SOURCE, "dev")) as file:
            commands = set(re.findall(r"^    ([a-z]+)\)$", file.read(), re.MULTILINE))
        usage = self.dev("help")
        self.assertEqual(set(re.findall(r"\./dev ([a-z]+)", usage)), commands)
        page = document("HACKING.md").text
        self.assertEqual(set(re.findall(r"^\| `\./dev ([a-z]+)`", page, re.MULTILINE)), commands)


class BenchmarkTest(DevCase):
    """A benchmark that misses its bar, as long as what it counts is right."""

    SCRIPT = """
import sys
from support import harness
harness.run(["/bin/sh", "-c", "exit {failure}"])
harness.expect("lines", {lines}, 7)
row = [harness.build_folder().name, harness.rounds(41), harness.scaled("4 GiB", "4 KiB")]
sys.exit(harness.publish_table("Title", "Introduction.", ["a", "b", "c"], [row], ["all"]))
"""

    def bench(self, *arguments, failure=0, lines=7, status=0):
        """What it says; the results that it leaves, if any."""
        shutil.copytree(os.path.join(SOURCE, "bench/support"),
                        os.path.join(self.sandbox.home, "tree/bench/support"), dirs_exist_ok=True)
        script = self.SCRIPT.format(failure=failure, lines=lines)
        self.sandbox.write("tree/bench/one.py", script)
        said = self.dev("bench", *arguments, status=status)
        left = "results.md" in self.sandbox.files("tree/bench")
        return said, self.sandbox.read("tree/bench/results.md") if left else None

    def test_the_full_form_judges_and_keeps_what_it_finds(self):
        said, results = self.bench(status=1)
        for text in (said, results):
            self.assertIn("| bench | 41 | 4 GiB |", text)
            self.assertIn("The bar is missed: all.", text)

    def test_the_short_form_does_neither(self):
        said, results = self.bench("--short")
        self.assertIn("| dev | 2 | 4 KiB |", said)
        self.assertNotIn("missed", said)
        self.assertIsNone(results)

    def test_fails_when_a_program_fails_or_counts_wrongly(self):
        for form in ((), ("--short",)):
            said, results = self.bench(*form, failure=1, status=1)
            self.assertIn("sh failed", said)
            self.assertIsNone(results)
            said, results = self.bench(*form, lines=8, status=1)
            self.assertIn("lines: 8, not 7", said)
            self.assertIsNone(results)


class FuzzTest(DevCase):
    SCRIPT = """#!/bin/bash
echo "$(basename "$0") $*" >>"$HOME/calls"
echo "INFO: Loaded 1 modules (200 inline 8-bit counters)"
echo "#9 DONE cov: 50 ft: 60 corp: 7/8b"
echo "stat::number_of_executed_units: 1234"
echo "stat::average_exec_per_sec:     617"
"""

    def setUp(self):
        super().setUp()
        self.add_target("one")
        self.add_target("two")

    def add_target(self, name, status=0):
        self.sandbox.write(f"tree/tests/fuzz/{name}.dict", "")
        self.sandbox.write(f"tree/build/fuzz/bin/fuzz_{name}", f"{self.SCRIPT}exit {status}\n",
                           executable=True)

    def fuzzed(self):
        """The targets that ran, and how long."""
        return sorted(re.findall(r"^fuzz_(\w+) -max_total_time=(\d+)", self.sandbox.read("calls"),
                                 re.MULTILINE))

    def test_runs_every_target_for_a_minute(self):
        said = self.dev("fuzz")
        self.assertEqual(self.fuzzed(), [("one", "60"), ("two", "60")])
        self.assertRegex(said, r"one +1234 +617 +50 +25 % +7 +nothing found")
        self.assertIn("cmake --build --preset fuzz --target fuzz_targets", self.calls())

    def test_runs_what_it_is_told_as_long_as_it_is_told(self):
        self.dev("fuzz", "5", "two")
        self.assertEqual(self.fuzzed(), [("two", "5")])
        self.assertIn('no target "three"', self.dev("fuzz", "5", "three", status=2))
        self.assertIn('"two" is no number', self.dev("fuzz", "two", status=2))

    def test_fails_on_a_finding_and_shows_it(self):
        self.add_target("one", status=77)
        said = self.dev("fuzz", status=1)
        self.assertRegex(said, r"one .* FINDING\n")
        self.assertIn("\none:\nINFO: Loaded", said)
        self.assertEqual(len(self.fuzzed()), 2)

    def test_the_corpus_is_only_read(self):
        self.dev("fuzz", "5", "one")
        (call,) = [call for call in self.calls() if call.startswith("fuzz_one")]
        self.assertTrue(call.endswith(" build/fuzz/fuzzing/one tests/fuzz/corpus/one"), call)


class CoverageTest(DevCase):
    """One file with a condition in each line from the second on."""

    def setUp(self):
        super().setUp()
        self.sandbox.write("tree/src/app/A.cpp", "\nif (a)\nif (b)\n")
        self.sandbox.write("tree/build/coverage/bin/core_tests", _NOTE, executable=True)
        self.add_program("llvm-profdata-14")

    def coverage(self, *outcomes, status=0):
        """What it says of conditions that were true and false so often."""
        file = {"filename": os.path.join(self.sandbox.home, "tree/src/app/A.cpp"),
                "segments": [[1, 1, 1, True, True, False]],
                "branches": [[line, 5, line, 9, true, false, 0, 0, 4]
                             for line, (true, false) in enumerate(outcomes, 2)],
                "summary": {"lines": {"count": 10, "covered": 9}}}
        self.sandbox.write("export.json", json.dumps({"data": [{"files": [file]}]}))
        self.add_program("llvm-cov-14", '#!/bin/bash\ncat "$HOME/export.json"\n')
        return self.dev("coverage", status=status)

    def test_tells_the_lines_and_branches_of_each_folder(self):
        said = self.coverage((1, 2), (3, 4))
        self.assertRegex(said, r"src/app +90\.0 % \(9 of 10\) +100\.0 % \(4 of 4\)\n")
        self.assertRegex(said, r"all +90\.0 % \(9 of 10\) +100\.0 % \(4 of 4\)\n")

    def test_fails_when_too_few_branches_are_reached_and_names_them(self):
        said = self.coverage((1, 0), (3, 4), status=1)
        self.assertIn("src/app/A.cpp:2:5: never false\n", said)
        self.assertIn("95 % is the least", said)

    def test_a_condition_that_the_compiler_decides_is_none(self):
        self.assertIn("100.0 % (2 of 2)", self.coverage((0, 0), (3, 4)))

    def test_what_the_compiler_makes_up_is_none(self):
        self.sandbox.write("tree/src/app/A.cpp", "\nif (a)\n    bool b() = default;\n")
        self.assertIn("100.0 % (2 of 2)", self.coverage((1, 1), (1, 0)))

    def test_a_file_that_no_test_reaches_is_not_overlooked(self):
        self.sandbox.write("tree/src/logs/B.cpp", "")
        self.sandbox.write("tree/src/platform/posix/C.cpp", "")
        said = self.coverage((1, 1), status=1)
        self.assertIn("no test is linked with src/logs/B.cpp\n", said)

    def test_fails_when_a_test_fails(self):
        self.sandbox.write("tree/build/coverage/bin/core_tests", "#!/bin/bash\necho red\nexit 1\n",
                           executable=True)
        self.assertIn("red\n", self.coverage((1, 1), status=1))


class PackageTest(DevCase):
    """What stands in the package is looked at in tests/package."""

    def setUp(self):
        super().setUp()
        self.sandbox.run("git init --quiet && git -c user.name=Ada -c user.email=ada@example.org "
                         "commit --quiet --allow-empty --message One",
                         "tree")
        self.sandbox.make_folder("tree/build")
        self.make("one")

    def make(self, *names):
        """Lets cpack make these packages, beside what it leaves behind itself."""
        self.add_program("cpack", _NOTE + "mkdir -p build/package/_CPack_Packages\n" + "".join(
            f"echo $SOURCE_DATE_EPOCH >build/package/{name}.deb\n" for name in names))

    def test_makes_it_of_what_is_shipped_as_old_as_the_last_commit(self):
        self.sandbox.write("tree/build/package/old.deb", "")
        self.assertEqual(self.dev("package"), "The package: build/package/one.deb\n")
        self.assertEqual(self.calls(), [
            "cmake --preset release",
            "cmake --build --preset release --target valdorn demo_runner installed_resources",
            "cpack --preset release"])
        self.assertEqual(self.sandbox.files("tree/build/package"), ["one.deb"])
        committed = self.sandbox.run("git log -1 --format=%ct", "tree").stdout
        self.assertEqual(self.sandbox.read("tree/build/package/one.deb"), committed)

    def test_nothing_is_built_after_a_configuration_that_failed(self):
        self.add_program("cmake", _NOTE + '[ "$1" != --preset ]\n')
        self.dev("package", status=1)
        self.assertEqual(self.calls(), ["cmake --preset release"])

    def test_says_what_kept_it_from_being_made(self):
        self.add_program("cpack", "#!/bin/bash\necho no room\nexit 1\n")
        self.assertEqual(self.dev("package", status=1), "no room\n")

    def test_there_is_one(self):
        for names in ((), ("one", "two")):
            self.make(*names)
            self.assertIn("There is to be one package", self.dev("package", status=1))


class DemoTest(DevCase):
    """The tour itself is tests/e2e/journey_test.py."""

    def setUp(self):
        super().setUp()
        os.symlink(os.path.join(SOURCE, "tests"), os.path.join(self.sandbox.home, "tree/tests"))
        self.sandbox.make_folder("tree/docs/pictures")
        self.new = self.sandbox.make_folder("tree/build/dev/artefacts/pictures")
        self.sandbox.make_folder("tree/build/dev/artefacts/pictures/frames")

    def draw(self, folder, name, *drawing):
        path = os.path.join(self.sandbox.home, "tree", folder, name)
        subprocess.run(["convert", "-size", "200x100", "xc:white", *drawing, path], check=True,
                       timeout=60)

    def draw_new(self, name, *drawing):
        self.draw("build/dev/artefacts/pictures", name, *drawing)

    def draw_old(self, name, *drawing):
        self.draw("docs/pictures", name, *drawing)

    def picture(self, name):
        with open(os.path.join(self.sandbox.home, "tree/docs/pictures", name), "rb") as file:
            return file.read()

    def test_goes_the_way_with_what_was_built(self):
        self.draw_new("a.png")
        self.assertIn("docs/pictures/a.png is new", self.dev("demo"))
        built, gone_through = self.calls()[-2:]
        self.assertTrue(built.startswith("cmake --build --preset dev"), built)
        self.assertTrue(gone_through.startswith("ctest --preset dev"), gone_through)
        self.assertIn("journey_test", gone_through)

    def test_needs_go(self):
        without_go = self.sandbox.make_folder("few")
        for name in ("bash", "dirname", "readlink"):
            os.symlink(shutil.which(name), os.path.join(without_go, name))
        done = self.sandbox.run(f"PATH={without_go}; ./dev demo", "tree")
        self.assertEqual(done.returncode, 1)
        self.assertIn("needs Go", done.stderr)

    def test_a_picture_that_looks_as_before_stays_as_it_is(self):
        self.draw_old("a.png", "-fill", "red", "-draw", "rectangle 0,0 80,80")
        self.draw_new("a.png", "-fill", "red", "-draw", "rectangle 0,0 80,80",
                      "-fill", "#fff8f8", "-draw", "rectangle 100,50 199,99",
                      "-fill", "black", "-draw", "rectangle 120,20 120,31")
        before = self.picture("a.png")
        self.assertIn("docs/pictures/a.png looks as before", self.dev("demo"))
        self.assertEqual(self.picture("a.png"), before)

    def test_a_picture_that_looks_different_is_replaced(self):
        for name, drawing in (("colour.png", ("-fill", "red", "-draw", "rectangle 0,0 9,9")),
                              ("size.png", ("-crop", "150x100+0+0", "+repage")),
                              ("frames.gif", ("xc:white",))):
            self.draw_old(name)
            self.draw_new(name, *drawing)
        # Little, but in most of the frames.
        self.draw_old(FILM, "xc:white", "xc:white")
        self.draw_new(FILM, "xc:white", "xc:white", "-fill", "red", "-draw",
                      "rectangle 0,0 2,2")
        said = self.dev("demo")
        for name in ("colour.png", "size.png", "frames.gif", FILM):
            self.assertIn(f"docs/pictures/{name} is new", said)

    def test_a_picture_that_cannot_be_compared_is_no_news(self):
        self.add_program("compare", "#!/bin/bash\necho no such thing >&2\nexit 2\n")
        self.draw_old("a.png")
        self.draw_new("a.png")
        self.assertIn("cannot be compared: no such thing", self.dev("demo", status=1))

    def test_a_picture_that_is_not_taken_any_more_goes(self):
        self.draw_old("old.png")
        self.draw_new("a.png")
        self.assertIn("docs/pictures/old.png is gone", self.dev("demo"))
        self.assertEqual(self.sandbox.files("tree/docs/pictures"), ["a.png"])


if __name__ == "__main__":
    unittest.main()
