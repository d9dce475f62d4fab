"""A desktop of one's own: virtual display, session bus, window manager. All started here, all
ended here by their process ids."""

import os
import re
import select
import shutil
import signal
import socket
import subprocess
import tempfile

import dbus
import dbus.bus
import dbus.mainloop.glib

from .waiting import wait_until

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)


def first_line(stream, seconds=20):
    """What a helper of a desktop says once it has started; raises when it says nothing."""
    ready, _, _ = select.select([stream], [], [], seconds)
    line = stream.readline().strip() if ready else ""
    if not line:
        raise RuntimeError("a helper of the desktop did not start")
    return line


def end_process(process):
    """However little it likes to end."""
    process.terminate()
    try:
        process.wait(10)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
    for stream in (process.stdin, process.stdout, process.stderr):
        if stream:
            stream.close()


class SessionBus:
    """A private session bus, which can go and come back at the same address."""

    def __init__(self):
        self._folder = tempfile.mkdtemp(prefix="valdorn-bus.")
        self.address = f"unix:path={self._folder}/bus"
        self._connections = []
        self.begin()

    def begin(self):
        self._daemon = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address=1",
             f"--address={self.address}"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        first_line(self._daemon.stdout)

    def take_connections_only(self):
        """In the place of the bus that has ended, a socket that nobody answers at."""
        path = self.address.partition("=")[2]
        if os.path.exists(path):
            os.remove(path)
        listener = socket.socket(socket.AF_UNIX)
        listener.bind(path)
        listener.listen()
        return listener

    def connect(self):
        """A new connection: whoever wants to leave the bus alone takes one of his own."""
        connection = dbus.bus.BusConnection(self.address)
        connection.set_exit_on_disconnect(False)
        self._connections.append(connection)
        return connection

    def end(self):
        """Takes the bus away from whoever is on it."""
        if self._daemon.returncode is None:
            end_process(self._daemon)

    def close(self):
        for connection in self._connections:
            connection.close()
        self.end()
        shutil.rmtree(self._folder, ignore_errors=True)


def usual_window_manager(_folder):
    """The command that starts one, as it comes."""
    return ("openbox",)


class Desktop:
    """Display, bus and, if asked for, a window manager: a function is given a folder for its files
    and returns the command. `environment` is what programs get."""

    def __init__(self, display=True, window_manager=None, size="1280x800x24"):
        self._processes = []
        self.bus = SessionBus()
        self.runtime = tempfile.mkdtemp(prefix="valdorn-runtime.")
        os.chmod(self.runtime, 0o700)
        # Nothing of the desktop that the tests happen to run on.
        self.environment = {
            name: value for name, value in os.environ.items()
            if not name.startswith(("XDG_", "QT_", "DBUS_", "WAYLAND_", "DESKTOP_", "GTK_"))
            and name not in ("DISPLAY", "XAUTHORITY", "SESSION_MANAGER")}
        self.environment.update(
            LC_ALL="C.UTF-8", DBUS_SESSION_BUS_ADDRESS=self.bus.address,
            XDG_RUNTIME_DIR=self.runtime, NO_AT_BRIDGE="1")
        self.display = None
        try:
            if display:
                self._start_display(size)
            if window_manager:
                self._start_window_manager(window_manager(self.runtime))
        except BaseException:
            self.close()
            raise

    def _start_display(self, size):
        # Without -noreset it begins anew when its last client leaves, and turns away whoever comes
        # just then.
        server = subprocess.Popen(
            ["Xvfb", "-displayfd", "1", "-screen", "0", size, "-nolisten", "tcp", "-noreset"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self._processes.append(server)
        self._server = server
        self.display = ":" + first_line(server.stdout)
        self.environment.update(DISPLAY=self.display, QT_QPA_PLATFORM="xcb")

    def _start_window_manager(self, command):
        self.start(*command)
        # A window that is mapped while the manager takes over may miss its frame.
        wait_until(lambda: "window id" in self.property("-root", "_NET_SUPPORTING_WM_CHECK"),
                   "the window manager")

    def start(self, *command):
        process = subprocess.Popen(command, env=self.environment, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        self._processes.append(process)
        return process

    def end(self, process):
        self._processes.remove(process)
        end_process(process)

    def end_display(self):
        """Takes the display away from whoever is on it."""
        self.end(self._server)

    def kill_display(self):
        """The same without any warning."""
        self._server.kill()

    def stop_display(self):
        """It stands still, as at the other end of a line that is broken."""
        self._server.send_signal(signal.SIGSTOP)

    def let_display_go_on(self):
        self._server.send_signal(signal.SIGCONT)

    def xdotool(self, *arguments):
        """What xdotool prints; raises when it fails."""
        return subprocess.run(["xdotool", *arguments], env=self.environment, check=True,
                              capture_output=True, text=True, timeout=30).stdout.strip()

    def click(self, x, y):
        self.xdotool("mousemove", str(x), str(y), "click", "1")

    def type(self, text):
        """Types into whatever has the keyboard."""
        self.xdotool("type", "--delay", "5", text)

    def clipboard(self):
        """The text on the clipboard, empty when there is none."""
        return subprocess.run(["xclip", "-selection", "clipboard", "-out", "-target",
                               "UTF8_STRING"], env=self.environment, capture_output=True,
                              timeout=30).stdout.decode()

    def move(self, window, x, y):
        self.xdotool("windowmove", window, str(x), str(y))

    def resize(self, window, width, height):
        self.xdotool("windowsize", window, str(width), str(height))

    def paint(self, colour):
        """The empty desktop."""
        picture = os.path.join(self.runtime, "desktop.png")
        subprocess.run(["convert", "-size", "16x16", "xc:" + colour, picture], check=True, timeout=30)
        # Its exit status is 1 however it went.
        subprocess.run(["display", "-window", "root", picture], env=self.environment,
                       capture_output=True, timeout=30)

    def set_clipboard(self, text):
        """Puts the text on the clipboard, until somebody puts another one there."""
        with tempfile.NamedTemporaryFile("w", encoding="utf-8") as file:
            file.write(text)
            file.flush()
            self.start("xclip", "-quiet", "-selection", "clipboard", "-in", file.name)
            wait_until(lambda: self.clipboard() == text, "the text on the clipboard")

    def take_picture(self, window, path):
        """Of the content of a window, as it is on the screen."""
        subprocess.run(["import", "-silent", "-window", window, path], env=self.environment,
                       check=True, capture_output=True, timeout=30)

    def property(self, *arguments):
        """What xprop prints, empty when it fails. A window is named by "-id" and its number."""
        return subprocess.run(["xprop", *arguments], env=self.environment, capture_output=True,
                              text=True, timeout=30).stdout.strip()

    def geometry(self, window):
        """Left, top, width and height of the content."""
        # xdotool counts the frame twice.
        shown = subprocess.run(["xwininfo", "-id", window], env=self.environment, check=True,
                               capture_output=True, text=True, timeout=30).stdout
        return tuple(int(re.search(rf"{name}:\s+(-?\d+)", shown).group(1)) for name in (
            "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))

    def all_visible(self):
        """The numbers of all visible windows that have a class, popups among them."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "."],
                               env=self.environment, capture_output=True, text=True, timeout=30)
        return found.stdout.split()

    def active_window(self):
        """The number of the window that has the focus; needs a window manager."""
        shown = subprocess.run(["xdotool", "getactivewindow"], env=self.environment,
                               capture_output=True, text=True, timeout=30)
        return shown.stdout.strip()

    def wait_for_active(self, title, seconds=20.0):
        """The number of the active window, once it is one of that title; needs a window manager."""
        def active():
            window = self.active_window()
            return window if self.windows().get(window) == title else None
        return wait_until(active, f"{title!r} in front", seconds)

    def close_last(self, title):
        """By the key, the only window that is shown, once it is active; needs a window manager."""
        self.wait_for_active(title)
        self.xdotool("key", "ctrl+w")
        wait_until(lambda: not self.windows(), "no window")

    def windows_of(self, program):
        """The numbers of the program's visible windows, popups among them."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid",
                                str(program.process.pid)], env=self.environment,
                               capture_output=True, text=True, timeout=30)
        return found.stdout.split()

    def windows(self):
        """The titles of the visible windows that have one, by id."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "."],
                               env=self.environment, capture_output=True, text=True, timeout=30)
        titles = {}
        for window in found.stdout.split():
            name = subprocess.run(["xdotool", "getwindowname", window], env=self.environment,
                                  capture_output=True, text=True, timeout=30)
            if name.returncode == 0 and name.stdout.strip():
                titles[window] = name.stdout.strip()
        return titles

    def close(self):
        for process in reversed(self._processes):
            end_process(process)
        self.bus.close()
        shutil.rmtree(self.runtime, ignore_errors=True)
