"""Two users on one machine. Their programs do not meet, whatever one has left lying around for the
other, and neither can touch the other's."""

import glob
import os
import pwd
import shutil
import signal
import subprocess
import tempfile
import unittest

from support.desktop import Desktop, end_process, first_line
from support.program import VALDORN, Home, Program, environment, kill
from support.puppet import PUPPET, Puppets
from support.side_by_side import load_tests  # noqa: F401
from support.skipping import skip_file
from support.waiting import spend, wait_until

# The bus wants to know them by name; these are there on each Debian, and nobody works as they.
USERS = [pwd.getpwnam(name).pw_uid for name in ("games", "nobody")]
BUS = "dbus-daemon", "--session", "--nofork", "--print-address=1"
QUIT = ("gdbus", "call", "--dest", "org.valdorn.valdorn", "--object-path", "/org/valdorn/valdorn",
        "--method", "org.freedesktop.Application.ActivateAction", "quit", "[]", "{}", "--address")


class Session:
    """A user's: a home with a registered runner, a runtime folder and a bus. It stands in for a
    desktop, where a program is started."""

    def __init__(self, user, programs, variables):
        self.user = user
        self.as_user = ("setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups")
        # What is built may stand where only its builder may look. Of its name it takes no notice.
        self._command = (*self.as_user, os.path.join(programs, "valdorn"))
        self._programs = []
        self._bus = None
        self.home = Home()
        self.runtime = tempfile.mkdtemp(prefix="valdorn-runtime.")
        try:
            self._prepare(variables)
        except BaseException:
            self.close()
            raise

    def _prepare(self, variables):
        self.home.install_runner(PUPPET)
        record, = self.home.add_runners({}, script=None)
        self.home.set_default("hasConnected", "true")
        self.puppets = Puppets(self.home.data_folder(record))
        for folder in (self.home.path, self.runtime):
            subprocess.run(["chown", "--recursive", f"{self.user}:{self.user}", folder], check=True)
        # Anybody may come near, as far as the folder goes.
        os.chmod(self.runtime, 0o711)
        address = f"unix:path={self.runtime}/bus"
        self._bus = subprocess.Popen([*self.as_user, *BUS, f"--address={address}"],
                                     stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        first_line(self._bus.stdout)
        self.environment = {**variables, "QT_QPA_PLATFORM": "offscreen",
                            "XDG_RUNTIME_DIR": self.runtime, "DBUS_SESSION_BUS_ADDRESS": address}

    def start(self, **more):
        program = Program(self, self.home, command=self._command, **more)
        self._programs.append(program)
        return program

    def begin(self, **more):
        """The program and its daemon."""
        before = len(self.puppets.pids())
        self.program = self.start(**more)
        wait_until(lambda: len(self.puppets.pids()) == before + 1, "a daemon", 10)
        self.daemon = self.puppets.pids()[-1]

    def second_start(self, **more):
        return self.run(*self._command[len(self.as_user):], **more)

    def run(self, *command, **more):
        """Something else of the user's."""
        return subprocess.run([*self.as_user, *command], capture_output=True, text=True, timeout=30,
                              env=environment(self, self.home, **more))

    def notes(self, ending, folder=None):
        """The paths of the instance's files."""
        return glob.glob(os.path.join(folder or self.runtime, "valdorn", "*." + ending))

    def write(self, path, text):
        with open(path, "w") as file:
            file.write(text)
        os.chown(path, self.user, self.user)

    def close(self):
        for program in self._programs:
            program.close()
        self.home.close()
        if self._bus:
            end_process(self._bus)
        shutil.rmtree(self.runtime, ignore_errors=True)


class TwoUsersTest(unittest.TestCase):
    def setUp(self):
        if os.geteuid() != 0:
            skip_file("Only the superuser can be two users.")
        programs = tempfile.mkdtemp(prefix="valdorn-programs.")
        self.addCleanup(shutil.rmtree, programs)
        os.chmod(programs, 0o755)
        shutil.copy(VALDORN, os.path.join(programs, "valdorn"))
        desktop = Desktop(display=False)
        self.addCleanup(desktop.close)
        self.ada, self.ben = (self.session(user, programs, desktop) for user in USERS)

    def session(self, user, programs, desktop):
        session = Session(user, programs, desktop.environment)
        self.addCleanup(session.close)
        return session

    def assert_untouched(self, session):
        spend(0.3)
        self.assertTrue(session.program.is_running())
        self.assertEqual(session.puppets.living(), [session.daemon])
        self.assertEqual(session.puppets.signals(session.daemon), [])

    def test_each_has_an_instance_of_its_own(self):
        for session in (self.ada, self.ben):
            session.begin()
            self.assertEqual(os.stat(f"/proc/{session.daemon}").st_uid, session.user)
        for session in (self.ada, self.ben):
            done = session.second_start()
            self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        left = self.ada.daemon
        kill(self.ada.program.process.pid, signal.SIGKILL)
        self.ada.program.wait_for_end()
        self.ada.begin()
        self.assertEqual(self.ada.puppets.signals(left), ["SIGTERM"])
        self.assert_untouched(self.ben)
        self.ada.program.quit()
        self.assert_untouched(self.ben)

    def test_the_session_of_another_in_the_environment_is_none(self):
        """As `su` leaves it there."""
        self.ada.begin()
        foreign = {name: self.ada.environment[name]
                   for name in ("XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS")}
        self.ben.begin(**foreign)
        state = os.path.join(self.ben.home.path, ".local/state")
        self.assertEqual(len(self.ben.notes("lock", state)), 1)
        self.assertEqual(len(self.ada.notes("lock")), 1)
        done = self.ben.second_start(**foreign)
        self.assertEqual(done.returncode, 1)
        self.assertIn("runs already", done.stderr)
        self.assert_untouched(self.ada)
        self.assert_untouched(self.ben)

    def test_neither_talks_to_the_others_program(self):
        self.ada.begin()
        over = self.ada.environment["DBUS_SESSION_BUS_ADDRESS"]
        done = self.ada.run(*QUIT, over)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(self.ada.program.wait_for_end(), 0)
        self.ada.puppets.wait_for_none()
        self.ada.begin()
        done = self.ben.run(*QUIT, over)
        self.assertNotEqual(done.returncode, 0)
        self.assert_untouched(self.ada)

    def test_neither_ends_the_others_daemons(self):
        """Not even if they are noted as its own."""
        self.ben.begin()
        kill(self.ben.program.process.pid, signal.SIGKILL)
        self.ben.program.wait_for_end()
        self.ada.begin()
        with open(f"/proc/{self.ada.daemon}/stat") as file:
            stat = file.read()
        ledger, = self.ada.notes("daemons")
        with open(ledger) as file:
            noted = file.read()
        path, = self.ben.notes("daemons")
        boot = noted.splitlines()[1]
        for owner in USERS:
            self.ben.write(path, noted.replace(f"\t{USERS[0]}\t", f"\t{owner}\t"))
            self.ben.write(path + ".birth", f"{boot}\n{stat}")
            self.ben.begin()
            self.assert_untouched(self.ada)
            self.ben.program.quit()
