"""Tests that spend their time waiting, side by side in threads. A file of tests imports
`load_tests` from here; its tests share nothing, no desktop either, and wait by the functions of
`waiting`."""

import threading
import unittest

from .waiting import turns

# More would not get enough of a small machine in time.
_AT_ONCE = 8


def _single(tests):
    for test in tests:
        if isinstance(test, unittest.TestSuite):
            yield from _single(test)
        else:
            yield test


class SideBySide(unittest.TestSuite):
    """Runs its tests so. What belongs to a class or a module is not set up."""

    def run(self, result, debug=False):
        places = threading.Semaphore(_AT_ONCE)

        def run(test):
            with places, turns.taken():
                test(result)
        threads = [threading.Thread(target=run, args=(test,), daemon=True)
                   for test in _single(self)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        return result


def load_tests(_loader, tests, _pattern):
    return SideBySide(tests)
