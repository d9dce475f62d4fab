"""A real act_runner and a server for it, both built with Go. Where they cannot be built, the tests
that need them are left out."""

import os
import shutil
import subprocess

from .skipping import skip_file

ARTEFACTS = os.environ["VALDORN_ARTEFACTS"]
SERVER_SOURCE = os.path.join(os.environ["VALDORN_SOURCE"], "tools/gitea_standin")
REAL_RUNNER = os.path.join(ARTEFACTS, "act_runner")
SERVER = os.path.join(ARTEFACTS, "gitea_standin")
REGISTER_RUNNER = os.environ["VALDORN_REGISTER_RUNNER"]
BUILD_TIME = 500


def build_or_skip():
    """For setUpModule. What stands there from an earlier run is taken if it is current."""
    reason = _build()
    if reason:
        skip_file(f"no test with a real act_runner. {reason}")


def _build():
    """What is in the way, or nothing."""
    if not shutil.which("go"):
        return "There is no `go` on PATH."
    os.makedirs(ARTEFACTS, exist_ok=True)
    return (_run(os.path.join(SERVER_SOURCE, "build_runner.sh"), REAL_RUNNER)
            or _run("go", "build", "-o", SERVER, "."))


def _run(*command):
    try:
        done = subprocess.run(command, cwd=SERVER_SOURCE, capture_output=True, text=True,
                              errors="replace", timeout=BUILD_TIME)
    except subprocess.TimeoutExpired:
        return f"{command[0]} took more than {BUILD_TIME} s."
    if done.returncode == 0:
        return None
    return f"{command[0]} failed: {done.stderr.strip().rpartition(chr(10))[2]}"


def register(home, instance, token, name, labels, **environment):
    """Registers the first runner of the home through Valdorn's own code; exit status and text."""
    done = subprocess.run([REGISTER_RUNNER, instance, name, labels, token],
                          env={**os.environ, "HOME": home.path, **environment},
                          capture_output=True, text=True, timeout=60)
    assert not done.stderr, done.stderr
    return done.returncode, done.stdout.rstrip("\n")
