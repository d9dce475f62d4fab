"""A server that real runners can register with, and its control interface."""

import json
import select
import socket
import subprocess
import urllib.request

from .real_runner import SERVER
from .waiting import wait_until

TOKEN = "standin-token"
START_TIME = 20
USUAL_PORT = 3000


def usual_port():
    """The one that a Gitea has by default if nobody is there, else any."""
    with socket.socket() as probe:
        probe.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        try:
            probe.bind(("127.0.0.1", USUAL_PORT))
        except OSError:
            return 0
    return USUAL_PORT


class Gitea:
    """A running server on loopback that knows nothing yet."""

    def __init__(self, port=0):
        self._process = subprocess.Popen(
            [SERVER, "--port", str(port), "--token", TOKEN],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        ready, _, _ = select.select([self._process.stdout], [], [], START_TIME)
        line = self._process.stdout.readline() if ready else ""
        if not line.startswith("listening on "):
            self.close()
            raise RuntimeError(f"the server did not start: {line!r}")
        self.url = line.split()[-1]

    def runners(self):
        return self._call("GET", "runners")

    def give_job(self, repository, workflow, runner=""):
        """Queues a job for the next runner that asks, or for the one of that name; its number."""
        return self._call("POST", "jobs", {"repository": repository, "workflow": workflow,
                                           "runner": runner})["id"]

    def task(self, number):
        return self._call("GET", f"tasks/{number}")

    def wait_for_result(self, number, seconds=30.0):
        """The task, once it has been reported to its end."""
        def finished():
            task = self.task(number)
            return task["logs_done"] and task["result"] not in ("queued", "running") and task
        return wait_until(finished, f"the end of task {number}", seconds)

    def answer_after(self, milliseconds):
        """Lets runners wait for every answer."""
        self._call("PUT", "faults", {"delay_ms": milliseconds} if milliseconds else {})

    def go_away(self, seconds):
        """Cuts all connections and refuses new ones for that long."""
        self._call("POST", "away", {"seconds": seconds})

    def is_there(self):
        try:
            self.runners()
            return True
        except OSError:
            return False

    def _call(self, method, path, body=None):
        request = urllib.request.Request(
            f"{self.url}/control/{path}", method=method,
            data=None if body is None else json.dumps(body).encode())
        with urllib.request.urlopen(request, timeout=10) as answer:
            text = answer.read()
        return json.loads(text) if text else None

    def close(self):
        self._process.terminate()
        self._process.wait()
        self._process.stdout.close()
