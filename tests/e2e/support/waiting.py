"""Waiting for something to become true, while the tray host of this process goes on answering."""

import contextlib
import os
import threading
import time

from gi.repository import GLib

# By how much longer everything may take, for a program that is made to run slowly.
PATIENCE = float(os.environ.get("VALDORN_PATIENCE", 1))

# Seconds that nobody takes for a wait.
AT_ONCE = 2.0


class TimedOut(AssertionError):
    pass


_LOOK_PERIOD = 0.02


class Turns(threading.local):
    """Of the threads that take turns, one works while the others rest."""

    _one_at_a_time = threading.Lock()
    _is_taking_them = False

    @contextlib.contextmanager
    def taken(self):
        with self._one_at_a_time:
            self._is_taking_them = True
            yield

    def rest(self):
        """Until the next look."""
        if self._is_taking_them:
            self._one_at_a_time.release()
        time.sleep(_LOOK_PERIOD)
        if self._is_taking_them:
            self._one_at_a_time.acquire()


turns = Turns()


def pump():
    """Answers what has come over the bus meanwhile."""
    context = GLib.MainContext.default()
    while context.iteration(False):
        pass


def wait_until(condition, what, seconds=20.0):
    """Returns the first truthy answer of `condition`, looked at every 20 ms."""
    seconds *= PATIENCE
    deadline = time.monotonic() + seconds
    while True:
        pump()
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise TimedOut(f"{what}: not within {seconds} s")
        turns.rest()


def stays_true(condition, what, seconds):
    """Fails as soon as `condition` is not true during the time."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        pump()
        if not condition():
            raise AssertionError(f"{what}: did not stay so for {seconds} s")
        turns.rest()


def spend(seconds):
    """Lets time pass, for what must not happen meanwhile."""
    stays_true(lambda: True, "time", seconds)
