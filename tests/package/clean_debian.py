"""A freshly unpacked Debian to install into, and a session for an ordinary user of it.

The root folder holds mounts of this machine's own /proc and /dev: whoever calls gives the tests a
mount namespace of their own, and removes the folder once that is gone."""

import os
import subprocess
import tempfile

import dbus.bus

from support.desktop import end_process, first_line

ROOT = os.environ["VALDORN_CLEAN_DEBIAN"]
DOWNLOADS = os.environ["VALDORN_DOWNLOADS"]
CHROOT = "/usr/sbin/chroot"
USER, USER_ID = "user", 1000
HOME = f"/home/{USER}"
RUNTIME = f"/run/user/{USER_ID}"

# Like a session's own, but open for the tests, whose user is another one.
_BUS_SETTINGS = """<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/> <allow own="*"/> <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
  </policy>
</busconfig>
"""


def inside(path):
    """The path from outside of what stands at `path` inside."""
    return ROOT + path


def run(*command, **more):
    """As root, with an environment of Debian's own; raises with what was said when it fails."""
    done = subprocess.run(
        [CHROOT, ROOT, *command], capture_output=True, text=True, timeout=600, **more,
        env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8",
             "DEBIAN_FRONTEND": "noninteractive"})
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def apt_get(*arguments):
    return run("apt-get", "--quiet", "--yes", *arguments)


def prepare():
    """Mounts what programs expect, and makes the user."""
    for folder in ("/proc", "/dev"):
        subprocess.run(["mount", "--rbind", folder, inside(folder)], check=True)
    # What was downloaded for an earlier root is not downloaded again.
    subprocess.run(["mount", "--bind", DOWNLOADS, inside("/var/cache/apt/archives")], check=True)
    run("useradd", "--create-home", "--uid", str(USER_ID), USER)
    os.makedirs(inside(RUNTIME), 0o700)
    os.chown(inside(RUNTIME), USER_ID, USER_ID)


AS_USER = (CHROOT, f"--userspec={USER}:{USER}", "--groups=", ROOT)


def give_to_user(path):
    subprocess.run(["chown", "--recursive", f"{USER_ID}:{USER_ID}", path], check=True)


class Session:
    """Display and bus for the user inside; `environment` is what programs there get. Has what the
    tests' status bar needs of a bus."""

    def __init__(self):
        self._processes = []
        self._connections = []
        self.address = f"unix:path={inside(RUNTIME)}/bus"
        self._settings = tempfile.NamedTemporaryFile("w", suffix=".conf")
        self._settings.write(_BUS_SETTINGS.format(socket=f"{inside(RUNTIME)}/bus"))
        self._settings.flush()
        try:
            self._start_all()
        except BaseException:
            self.close()
            raise

    def _start_all(self):
        self._start("dbus-daemon", "--nofork", "--print-address=1",
                    f"--config-file={self._settings.name}")
        # Its socket is an abstract one, too, which no root folder hides; -ac: for any user.
        display = self._start("Xvfb", "-displayfd", "1", "-nolisten", "tcp", "-noreset", "-ac")
        self.environment = {
            "PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "USER": USER, "LOGNAME": USER,
            "DISPLAY": ":" + display, "XDG_RUNTIME_DIR": RUNTIME,
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={RUNTIME}/bus"}

    def _start(self, *command):
        """The first line that it prints."""
        process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                   text=True)
        self._processes.append(process)
        return first_line(process.stdout)

    def connect(self):
        connection = dbus.bus.BusConnection(self.address)
        connection.set_exit_on_disconnect(False)
        self._connections.append(connection)
        return connection

    def run(self, *command):
        """A program of the user that ends by itself; its exit status and what it said."""
        done = subprocess.run([*AS_USER, *command], capture_output=True, text=True, timeout=60,
                              env={**self.environment, "HOME": HOME})
        return done.returncode, done.stdout, done.stderr

    def close(self):
        for connection in self._connections:
            connection.close()
        for process in reversed(self._processes):
            end_process(process)
        self._settings.close()
