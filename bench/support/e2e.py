"""The desktop that the end-to-end tests run on, for what is measured from outside: their modules,
imported from here as `from support.e2e import desktop`, with the programs of the build folder."""

import importlib
import importlib.util
import os
import pathlib
import sys

from . import harness

_SOURCE = pathlib.Path(__file__).resolve().parents[2]
_DEBIANS_PYTHON = "/usr/bin/python3"


def _start_over_where_needed():
    """With the Python that Debian's modules for D-Bus belong to, where another one comes first."""
    if not importlib.util.find_spec("gi") and sys.executable != _DEBIANS_PYTHON:
        os.execv(_DEBIANS_PYTHON, [_DEBIANS_PYTHON, *sys.argv])


def _take_over():
    """Their package is called as ours is, so it comes under another name."""
    folder = _SOURCE / "tests/e2e/support"
    spec = importlib.util.spec_from_file_location(
        "e2e_support", folder / "__init__.py", submodule_search_locations=[str(folder)])
    package = importlib.util.module_from_spec(spec)
    sys.modules[spec.name] = package
    spec.loader.exec_module(package)


_start_over_where_needed()
_PROGRAMS = harness.build_folder() / "bin"
os.environ.update(VALDORN_PROGRAM=str(_PROGRAMS / "valdorn"),
                  VALDORN_DEMO_RUNNER=str(_PROGRAMS / "demo_runner"),
                  VALDORN_SOURCE=str(_SOURCE),
                  VALDORN_ARTEFACTS=str(harness.build_folder() / "artefacts"))
_take_over()
desktop, panel, program, tray, waiting, windows = (
    importlib.import_module(f"e2e_support.{name}")
    for name in ("desktop", "panel", "program", "tray", "waiting", "windows"))
