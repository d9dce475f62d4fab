"""Valdorn itself, started in a home folder of its own."""

import json
import os
import shlex
import shutil
import signal
import subprocess
import tempfile
import time

from .processes import is_alive, kill, stat
from .waiting import pump, turns, wait_until

VALDORN = os.environ["VALDORN_PROGRAM"]
DEMO_RUNNER = os.environ["VALDORN_DEMO_RUNNER"]

# A command that watches Valdorn while it runs, and ends with that status when it has found something:
# valgrind with its options.
UNDER = shlex.split(os.environ.get("VALDORN_UNDER", ""))
FOUND = 99


class Home:
    """A home folder. Nothing in it but what a test puts there."""

    def __init__(self, path=None):
        """A new folder, or the one at `path`."""
        self.path = path or tempfile.mkdtemp(prefix="valdorn-home.")
        self.support = os.path.join(self.path, "Library/Application Support/Valdorn")
        self.runner_path = os.path.join(self.path, "actrunner/act_runner")

    def install_runner(self, executable=DEMO_RUNNER):
        os.makedirs(os.path.dirname(self.runner_path), exist_ok=True)
        shutil.copy(executable, self.runner_path)

    def remove_runner(self):
        """Removes what stands in the executable's place, if anything does."""
        if os.path.isdir(self.runner_path):
            os.rmdir(self.runner_path)
        elif os.path.exists(self.runner_path):
            os.remove(self.runner_path)

    def start_by_hand(self, desktop, folder):
        """A daemon that nobody supervises; the caller ends it."""
        return subprocess.Popen([self.runner_path, "daemon"], cwd=folder,
                                env=environment(desktop, self), stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def data_folder(self, record):
        return self.support if record["legacy"] else os.path.join(
            self.support, "runners", record["id"])

    def add_runners(self, *records, script="declare\n"):
        """Writes the runner list and registers each runner; the demo runner plays `script`."""
        records = [{"id": f"r{index}", "name": f"runner {index}", "instanceURL": "http://x.invalid",
                    "labels": "macos:host", "extraPath": "", "legacy": False, **record}
                   for index, record in enumerate(records)]
        for record in records:
            folder = self.data_folder(record)
            os.makedirs(folder, exist_ok=True)
            self.register(folder)
            if script is not None:
                with open(os.path.join(folder, "demo_runner.script"), "w") as file:
                    file.write(script)
        self.write_list(json.dumps(records))
        return records

    @staticmethod
    def register(folder):
        subprocess.run(
            [DEMO_RUNNER, "register", "--no-interactive", "--instance", "http://x.invalid",
             "--token", "t", "--name", "n", "--labels", "macos:host"],
            cwd=folder, check=True, capture_output=True, timeout=30)

    @staticmethod
    def unregister(folder):
        os.remove(os.path.join(folder, ".runner"))

    def write_list(self, text):
        os.makedirs(self.support, exist_ok=True)
        with open(os.path.join(self.support, "runners.json"), "w") as file:
            file.write(text)

    def has_file(self, name):
        return os.path.exists(os.path.join(self.support, name))

    def read(self, name):
        with open(os.path.join(self.support, name), encoding="utf-8") as file:
            return file.read()

    def set_default(self, key, value):
        folder = os.path.join(self.path, ".config/valdorn")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "valdorn.ini"), "w") as file:
            file.write(f"[General]\n{key}={value}\n")

    def processes(self):
        """Process ids of all that work in this home."""
        return [pid for pid in _processes() if _is_below(_working_folder(pid), self.path)]

    def close(self):
        """Nothing that a test started outlives it."""
        _end_all(self.processes(), patience=0)
        shutil.rmtree(self.path, ignore_errors=True)


def environment(desktop, home, **more):
    return {**desktop.environment, "HOME": home.path, **more}


def run_once(desktop, home, *arguments, **more):
    """Runs a program that ends by itself."""
    return subprocess.run([VALDORN, *arguments], env=environment(desktop, home, **more),
                          capture_output=True, text=True, timeout=60)


class Program:
    """A running Valdorn. A `command` in front is to replace itself by Valdorn, as env does."""

    def __init__(self, desktop, home, *arguments, command=(), **more):
        self._stderr = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen([*command, *UNDER, VALDORN, *arguments],
                                        env=environment(desktop, home, **more),
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                        stderr=self._stderr)

    def stderr(self):
        self._stderr.seek(0)
        return self._stderr.read()

    def is_running(self):
        return self.process.poll() is None

    def children(self):
        """Process ids of the living children, in order."""
        return sorted(pid for pid in _processes() if _parent(pid) == self.process.pid)

    def zombies(self):
        """Process ids of the children that have ended and were not waited for."""
        return [pid for pid in _processes() if _is_zombie_of(pid, self.process.pid)]

    def wait_for_end(self, seconds=20.0):
        wait_until(lambda: not self.is_running(), "the end of Valdorn", seconds)
        return self.process.returncode

    def quit(self):
        """Ends it politely, if it runs."""
        if self.is_running():
            self.process.send_signal(signal.SIGTERM)
            self.wait_for_end()

    def close(self):
        children = self.children()
        try:
            self.quit()
        finally:
            if self.is_running():
                self.process.kill()
                self.process.wait()
            self._stderr.close()
            _end_all(children)


def _end_all(pids, patience=5.0):
    """Nothing that a test started outlives it."""
    deadline = time.monotonic() + patience
    while any(is_alive(pid) for pid in pids) and time.monotonic() < deadline:
        pump()
        turns.rest()
    for pid in pids:
        if is_alive(pid):
            kill(pid, signal.SIGKILL)


def _working_folder(pid):
    try:
        return os.readlink(f"/proc/{pid}/cwd")
    except OSError:
        return ""


def _is_below(path, folder):
    return path == folder or path.startswith(folder + "/")


def _processes():
    return [int(name) for name in os.listdir("/proc") if name.isdigit()]


def _parent(pid):
    fields = stat(pid)
    return int(fields[1]) if fields and fields[0] != "Z" else None


def _is_zombie_of(pid, parent):
    fields = stat(pid)
    return bool(fields) and fields[0] == "Z" and int(fields[1]) == parent
