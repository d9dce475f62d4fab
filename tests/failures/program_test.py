"""The finished program goes on, or says why not and ends, whichever of its calls fails.

A sample, unless VALDORN_EVERY_FAILURE is set."""

import concurrent.futures
import ctypes
import errno
import itertools
import json
import os
import shutil
import signal
import struct
import subprocess
import tempfile
import time
import unittest

from support.processes import kill, state

LIBRARY = os.environ["VALDORN_FAILING_CALLS"]
RUNNER = os.environ["VALDORN_FAILING_RUNNER"]
PROGRAM = os.path.realpath(os.environ["VALDORN_PROGRAM"])

REFUSED, DONE_AND_REFUSED, SHORTENED = 0, 1, 2
IS_EVERYTHING_ASKED_FOR = "VALDORN_EVERY_FAILURE" in os.environ
SAMPLE = 24
PATIENCE = 60.0

def _names():
    """The calls in the order in which the library counts them."""
    name_of = ctypes.CDLL(LIBRARY).failingCallName
    name_of.restype = ctypes.c_char_p
    return [name.decode() for name in iter(map(name_of, itertools.count()).__next__, None)]


NAMES = _names()
# How each call fails here; the sweep beside this goes through all that each can come to.
SHORTAGE = (REFUSED, errno.EMFILE)
BROKEN = (REFUSED, errno.EIO)
MANNERS = {
    **{name: SHORTAGE for name in NAMES},
    **{name: BROKEN for name in ("fstat", "stat", "mkdir", "open", "read_file", "write_file",
                                 "rename", "child_chdir", "child_execve", "ftruncate")},
    **{name: (REFUSED, errno.EINTR) for name in ("epoll_wait", "eventfd_read", "eventfd_write",
                                                 "poll", "waitid", "read_pipe")},
    "clone": (REFUSED, errno.EAGAIN),
    "close": (DONE_AND_REFUSED, errno.EIO),
    "pthread_create": (REFUSED, errno.EAGAIN),
    "pidfd_send_signal": (REFUSED, errno.EPERM),
    "waitid_reaping": (DONE_AND_REFUSED, errno.ECHILD),
    "write_other": (SHORTENED, 0),
}


class Trial:
    """One life of the program in which one call fails; none where `call` is nothing. `home`: that of
    another trial; `manner`: in which the call fails, if not in its own."""

    def __init__(self, call=None, nth=0, home=None, manner=None):
        self.home = home or tempfile.mkdtemp(prefix="valdorn-failing.")
        self.support = os.path.join(self.home, "Library/Application Support/Valdorn")
        self.report = os.path.join(self.home, f"report {call} {nth}")
        self.call, self.nth = call, nth
        self.manner = manner or MANNERS.get(call)
        self.stderr = ""
        self.was_ended = False

    def run(self):
        """What went wrong, or nothing."""
        self.prepare()
        with open(os.path.join(self.home, "stderr"), "w+") as stderr:
            process = subprocess.Popen([PROGRAM], env=self.environment(), stdin=subprocess.DEVNULL,
                                       stdout=subprocess.DEVNULL, stderr=stderr)
            try:
                self.wait_for_launch(process)
                status = self._quit(process)
            except subprocess.TimeoutExpired:
                return "hangs"
            finally:
                process.kill()
                process.wait()
            stderr.seek(0)
            self.stderr = stderr.read()
        return self._judge(status)

    def close(self):
        """However it went, nobody is left."""
        for pid in self.running():
            kill(pid, signal.SIGKILL)
        shutil.rmtree(self.home, ignore_errors=True)

    def made(self):
        """How often each call was made."""
        return dict(zip(NAMES, self._numbers()))

    def prepare(self):
        os.makedirs(os.path.join(self.support))
        os.makedirs(os.path.join(self.home, "actrunner"))
        os.mkdir(os.path.join(self.home, "session"), 0o700)
        os.symlink(RUNNER, os.path.join(self.home, "actrunner/act_runner"))
        open(os.path.join(self.support, ".runner"), "w").close()
        record = {"id": "legacy", "name": "n", "instanceURL": "http://x.invalid", "labels": "l",
                  "extraPath": "", "legacy": True}
        with open(os.path.join(self.support, "runners.json"), "w") as file:
            json.dump([record], file)

    def environment(self):
        options = os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
        given = {"HOME": self.home, "XDG_RUNTIME_DIR": os.path.join(self.home, "session"),
                 "PATH": os.environ["PATH"], "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8",
                 "LSAN_OPTIONS": os.environ.get("LSAN_OPTIONS", ""),
                 "ASAN_OPTIONS": options, "LD_PRELOAD": LIBRARY,
                 "VALDORN_FAILING_PROGRAM": PROGRAM, "VALDORN_FAILING_REPORT": self.report}
        if self.call:
            manner, error = self.manner
            given["VALDORN_FAILING_CALL"] = f"{self.call} {self.nth} {manner} {error}"
        return given

    def has_failed(self):
        """Whether the call that was to fail has been made."""
        return self._numbers()[-1:] == (1,)

    def _numbers(self):
        try:
            with open(self.report, "rb") as file:
                content = file.read()
        except FileNotFoundError:
            return [0] * (len(NAMES) + 1)
        return struct.unpack(f"{len(content) // 4}I", content)

    def _launches(self):
        try:
            with open(os.path.join(self.support, "launches")) as file:
                return file.read().split()
        except FileNotFoundError:
            return []

    def wait_for_launch(self, process):
        """For the daemon; no longer than a moment after something has failed."""
        deadline = time.monotonic() + PATIENCE
        while not self._launches() and process.poll() is None:
            if self.has_failed():
                deadline = min(deadline, time.monotonic() + 2)
            if time.monotonic() > deadline:
                return
            time.sleep(0.01)

    def _quit(self, process):
        if process.poll() is None:
            self.was_ended = True
            process.send_signal(signal.SIGTERM)
        return process.wait(PATIENCE)

    def _judge(self, status):
        if status < 0:
            return f"ends by signal {-status}: {self.stderr}"
        if status != 0 and not self.stderr.startswith("valdorn: "):
            return f"ends with {status} without a word of its own: {self.stderr!r}"
        if not self.was_ended and status == 0:
            return "ends by itself"
        if not self.call and not self._launches():
            return "launches nothing"
        if "Sanitizer" in self.stderr:
            return self.stderr
        return self._look_for_daemons() or self._look_at_files()

    def _look_for_daemons(self):
        # One that could not be asked to end goes on, by the rules.
        deadline = time.monotonic() + 10
        running = self.running()
        while running and time.monotonic() < deadline and self.call != "pidfd_send_signal":
            time.sleep(0.01)
            running = self.running()
        if running and self.call != "pidfd_send_signal":
            return f"leaves {len(running)} daemons behind"
        return None

    def running(self):
        return [int(pid) for pid in self._launches() if self._is_running(pid)]

    def _is_running(self, pid):
        try:
            return state(pid) != "Z" and os.readlink(f"/proc/{pid}/cwd") == self.support
        except (FileNotFoundError, ProcessLookupError):
            return False

    def _look_at_files(self):
        with open(os.path.join(self.support, "runners.json")) as file:
            try:
                is_list = isinstance(json.load(file), list)
            except ValueError:
                is_list = False
        if not is_list:
            return "spoils the list of runners"
        left = [name for name in os.listdir(self.support) if name.startswith(".valdorn-")]
        if left and self.call != "unlink":
            return f"leaves {left}"
        return None


def trials():
    """Each place at which a call of the program's own code can fail; or some of them."""
    passing = Trial()
    try:
        wrong = passing.run()
        made = passing.made()
    finally:
        passing.close()
    if wrong:
        raise AssertionError(wrong)
    places = [(call, nth) for call in NAMES for nth in range(1, made[call] + 1)]
    return places if IS_EVERYTHING_ASKED_FOR else places[::max(1, len(places) // SAMPLE)]


def outcome(place):
    """What went wrong, or nothing; and whether the call failed at all."""
    trial = Trial(*place)
    try:
        return trial.run(), trial.has_failed()
    finally:
        trial.close()


class ProgramTest(unittest.TestCase):
    def test_whichever_call_fails_nothing_is_left_wrong(self):
        places = trials()
        self.assertGreaterEqual(len(places), SAMPLE)
        with concurrent.futures.ThreadPoolExecutor(2 * os.cpu_count()) as pool:
            outcomes = list(pool.map(outcome, places))
        for place, (wrong, _) in zip(places, outcomes):
            with self.subTest(place):
                self.assertIsNone(wrong)
        # Threads take turns as they like: the last calls of a kind may not be made each time.
        missed = [place for place, (_, has_failed) in zip(places, outcomes) if not has_failed]
        self.assertLess(len(missed), len(places) / 4, missed)


class SecondStartTest(unittest.TestCase):
    """On the way to its lock a call fails once, for want of something; or while it is tried anew."""

    PLACES = (("open", 1), ("open", 2), ("open", 3), ("mkdir", 1), ("fstat", 1), ("fstat", 2),
              ("open", 5), ("open", 15), ("fstat", 3))

    def setUp(self):
        self.first = Trial()
        self.addCleanup(self.first.close)
        self.first.prepare()
        program = self.start(self.first)
        self.first.wait_for_launch(program)
        self.assertEqual(len(self.first.running()), 1)

    def start(self, trial):
        program = subprocess.Popen([PROGRAM], env=trial.environment(), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(program.wait)
        self.addCleanup(program.kill)
        return program

    def test_a_moments_shortage_makes_no_second_fleet(self):
        seconds = [Trial(*place, self.first.home, SHORTAGE) for place in self.PLACES]
        programs = [self.start(second) for second in seconds]
        for place, second, program in zip(self.PLACES, seconds, programs):
            with self.subTest(place):
                # Nothing is on the bus.
                self.assertEqual(program.wait(PATIENCE), 1)
                self.assertTrue(second.has_failed())
        self.assertEqual(len(self.first.running()), 1)


if __name__ == "__main__":
    unittest.main()
