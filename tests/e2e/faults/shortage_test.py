"""A user may have so many processes and threads, and no more."""

import os
import shutil
import signal
import subprocess
import tempfile
import unittest

from support.processes import is_alive
from support.program import VALDORN
from support.skipping import skip_file
from support.waiting import wait_until

# Nobody's but this process's, so that nothing else counts.
USER = 2_000_000_000 + os.getpid()

MESSAGE = "valdorn: Resource temporarily unavailable\n"


def takes_sigterm(pid):
    with open(f"/proc/{pid}/status") as file:
        caught, = (line.split()[1] for line in file if line.startswith("SigCgt:"))
    return int(caught, 16) >> (signal.SIGTERM - 1) & 1


class ProcessTableTest(unittest.TestCase):
    def setUp(self):
        if os.geteuid() != 0:
            skip_file("Only the superuser can be a user who runs nothing else.")
        self.folder = tempfile.mkdtemp(prefix="valdorn-shortage.")
        self.addCleanup(shutil.rmtree, self.folder)
        os.chmod(self.folder, 0o755)
        shutil.copy(VALDORN, self.folder)
        self.places = {"HOME": self.own_folder("home"), "XDG_RUNTIME_DIR": self.own_folder("run")}

    def own_folder(self, name):
        path = os.path.join(self.folder, name)
        os.mkdir(path, 0o700)
        os.chown(path, USER, USER)
        return path

    def start(self, limit):
        program = subprocess.Popen(
            ["setpriv", f"--reuid={USER}", f"--regid={USER}", "--clear-groups", "prlimit",
             f"--nproc={limit}:{limit}", os.path.join(self.folder, os.path.basename(VALDORN))],
            env={**self.places, "PATH": os.environ["PATH"], "QT_QPA_PLATFORM": "offscreen"},
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self.addCleanup(self.end, program)
        return program

    def end(self, program):
        """Exit status and standard error of a program that is asked to end once it runs."""
        try:
            wait_until(lambda: not is_alive(program.pid) or takes_sigterm(program.pid),
                       "a program that runs, or has ended")
            program.terminate()
            said = program.communicate(timeout=20)[1]
        finally:
            program.kill()
            program.communicate()
        return program.returncode, said

    def life(self, limit):
        return self.end(self.start(limit))

    def test_a_start_without_room_for_its_threads_says_so_and_ends(self):
        for limit in (1, 2):
            with self.subTest(limit):
                status, said = self.life(limit)
                self.assertEqual(status, 1)
                self.assertTrue(said.endswith(MESSAGE), said)

    def test_a_second_start_without_room_for_its_threads_says_so_and_ends(self):
        first = self.start(limit=100)
        wait_until(lambda: takes_sigterm(first.pid), "a program that runs")
        status, said = self.life(1)
        self.assertEqual(status, 1)
        self.assertTrue(said.endswith(MESSAGE), said)
        self.assertEqual(self.end(first)[0], 0)

    def test_whatever_there_is_room_for_it_ends_when_it_is_asked_to(self):
        for limit in (3, 4, 6):
            with self.subTest(limit):
                self.assertIn(self.life(limit)[0], (0, 1))


if __name__ == "__main__":
    unittest.main()
