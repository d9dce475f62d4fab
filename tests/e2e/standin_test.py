"""The stand-in server's own tests: what other tests lean on has to hold."""

import subprocess
import unittest

from support.real_runner import BUILD_TIME, SERVER_SOURCE, build_or_skip


def setUpModule():
    build_or_skip()


class StandinTest(unittest.TestCase):
    def test_its_own_tests_pass(self):
        done = subprocess.run(["go", "test", "./..."], cwd=SERVER_SOURCE, capture_output=True,
                              text=True, errors="replace", timeout=BUILD_TIME)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


if __name__ == "__main__":
    unittest.main()
