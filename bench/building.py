#!/usr/bin/env python3
"""What it costs to build the program: building.py BUILD-FOLDER [--short].

From nothing, and after a view was touched, without a compiler cache; beside one small file of Qt. The
short form touches a view of the folder that is given, and builds nothing from nothing.
"""

import contextlib
import os
import pathlib
import resource
import subprocess
import sys
import tempfile

from support import harness

SOURCE = pathlib.Path(__file__).resolve().parent.parent
VIEW = SOURCE / "src/ui/settings/RunnerForm"
TOUCHES = harness.scaled(3, 1)
CLEAN_BAR = 120  # seconds of computing
TOUCH_BAR = 8

TITLE = "Building the program"
INTRODUCTION = f"""\
Seconds of computing, user's and system's together, of `cmake --build` for what is shipped (preset
`release`, target `valdorn`) on all cores, without a compiler cache. Beside it, before and after, a
project of one file that includes `<QWidget>` and defines `main`.

Bars: {CLEAN_BAR} s from nothing, {TOUCH_BAR} s after a view's source or its header was touched.
"""


class Seconds(harness.Figure):
    def __str__(self):
        return f"{self.median:.1f} s ({self.lowest:.1f} to {self.highest:.1f})"


def computed(command):
    """Seconds that a command and all its children compute for."""
    def now():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime

    before = now()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "CCACHE_DISABLE": "1"})
    return now() - before


def build(folder):
    return computed(["cmake", "--build", str(folder), "--target", "valdorn"])


@contextlib.contextmanager
def touched(file):
    """Newer than all that was built of it, until the end of the block."""
    status = file.stat()
    os.utime(file)
    try:
        yield
    finally:
        os.utime(file, ns=(status.st_atime_ns, status.st_mtime_ns))


def build_touched(folder, suffix):
    with touched(VIEW.with_suffix(suffix)):
        return build(folder)


def compile_reference(folder):
    (folder / "small.cpp").write_text("#include <QWidget>\nint main() {}\n")
    (folder / "CMakeLists.txt").write_text(
        "cmake_minimum_required(VERSION 3.25)\nproject(small LANGUAGES CXX)\n"
        "set(CMAKE_CXX_STANDARD 20)\nset(CMAKE_BUILD_TYPE Release)\n"
        "find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)\n"
        "add_library(small OBJECT small.cpp)\ntarget_link_libraries(small PRIVATE Qt6::Widgets)\n")
    configure(["-S", str(folder), "-G", "Ninja"], folder / "build")
    return computed(["cmake", "--build", str(folder / "build")])


def configure(options, folder):
    subprocess.run(["cmake", *options, "-B", str(folder)], check=True, cwd=SOURCE,
                   stdout=subprocess.DEVNULL)


def main(given):
    with contextlib.ExitStack() as stack:
        def new_folder():
            return pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory(dir=given)))

        small = [compile_reference(new_folder())]
        figures = {}
        folder = given
        if not harness.SHORT:
            folder = new_folder()
            configure(["--preset", "release", "-DCMAKE_CXX_COMPILER_LAUNCHER="], folder)
            figures["from nothing"] = Seconds([build(folder)]), CLEAN_BAR
        build(folder)
        for suffix, what in ((".cpp", "source"), (".h", "header")):
            figures[f"a view's {what} touched"] = Seconds(
                [build_touched(folder, suffix) for _ in range(TOUCHES)]), TOUCH_BAR
        small.append(compile_reference(new_folder()))
    reference = Seconds(small)
    rows = [[what, figure, reference, f"{figure.median / reference.median:.1f}"]
            for what, (figure, _) in figures.items()]
    misses = [what for what, (figure, bar) in figures.items() if figure.median > bar]
    heads = ["what", "computing", "a small file of Qt", "ratio"]
    return harness.publish_table(TITLE, INTRODUCTION, heads, rows, misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
