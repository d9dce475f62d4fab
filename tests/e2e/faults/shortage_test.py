"""A user may have so many processes and threads, and no more."""

import os
import shutil
import signal
import subprocess
import tempfile
import unittest

from support.program import VALDORN
from support.skipping import skip_file

# Nobody's, so that nothing else counts.
USER = 54017


class ProcessTableTest(unittest.TestCase):
    def setUp(self):
        if os.geteuid() != 0:
            skip_file("Only the superuser can be a user who runs nothing else.")
        self.folder = tempfile.mkdtemp(prefix="valdorn-shortage.")
        self.addCleanup(shutil.rmtree, self.folder)
        os.chmod(self.folder, 0o755)
        self.home = os.path.join(self.folder, "home")
        os.mkdir(self.home)
        os.chown(self.home, USER, USER)
        shutil.copy(VALDORN, self.folder)

    def life(self, limit):
        """Exit status and standard error of a program that is asked to end when it runs."""
        program = subprocess.Popen(
            ["setpriv", f"--reuid={USER}", f"--regid={USER}", "--clear-groups", "prlimit",
             f"--nproc={limit}:{limit}", os.path.join(self.folder, os.path.basename(VALDORN))],
            env={"HOME": self.home, "PATH": os.environ["PATH"], "QT_QPA_PLATFORM": "offscreen",
                 "ASAN_OPTIONS": "detect_leaks=0"},
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        try:
            said = program.communicate(timeout=1.5)[1]
        except subprocess.TimeoutExpired:
            program.send_signal(signal.SIGTERM)
            try:
                said = program.communicate(timeout=20)[1]
            except subprocess.TimeoutExpired:
                program.kill()
                program.communicate()
                self.fail(f"with {limit} it hangs")
        return program.returncode, said

    def test_a_start_without_room_for_its_threads_says_so_and_ends(self):
        for limit in (1, 2):
            with self.subTest(limit):
                status, said = self.life(limit)
                self.assertEqual(status, 1)
                self.assertTrue(said.endswith("valdorn: Resource temporarily unavailable\n"), said)

    def test_whatever_there_is_room_for_it_ends_when_it_is_asked_to(self):
        for limit in (3, 4, 6):
            with self.subTest(limit):
                self.assertIn(self.life(limit)[0], (0, 1))


if __name__ == "__main__":
    unittest.main()
