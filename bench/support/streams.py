"""What a busy act_runner prints at debug level: daemon lines and the lines of its jobs."""

import random

LINE_BYTES = 127  # in the mean
BLOCK = 64 << 10

_ROUND = 1000  # lines from one declaration to the next
_LABELS = 8  # jobs that print by turns in a round, one after the other

_CALLERS = ("poller.go:61", "reporter.go:214", "executor.go:116", "runner.go:165", "client.go:88",
            "daemon.go:235", "cache.go:302", "step.go:51", "expression.go:103", "docker_run.go:417")
_DEBUG = ("evaluating expression 'success()'", "expression 'success()' evaluated to 'true'",
          "Stages Runs: [push pull_request]", "reported 12 rows of log, 0 are left",
          "Writing entry to tarball workflow/event.json len:8160", "Job.Strategy.FailFast: true",
          "Extracting content to '/var/run/act/'", "Working directory '/workspace/acme/site'",
          "Worker pool has 1 free of 1", "response body closed, 2 more to come",
          "Single pipeline element, executing directly", "setupEnv => map[CI:true HOME:/root]")
_OUTPUT = ("  | npm WARN deprecated inflight@1.0.6: this module is not supported, and leaks memory",
           "  | [ 37%] Building CXX object src/CMakeFiles/site.dir/pages/index.cpp.o",
           "  | ok   gitea.example/acme/site/internal/report  0.214s  coverage: 71.4% of statements",
           "  | Downloading https://packages.example/pool/main/p/python3.11_3.11.2-6_amd64.deb (2.1 MB)",
           "[DEBUG] expression '${{ env.DEPLOY }}' rewritten to 'format('{0}', env.DEPLOY)'",
           "Run Main make --jobs 2 check", "Success - Main make --jobs 2 check [12.5s]",
           "  | remote: Compressing objects: 100% (413/413), done.", "  | + set -e -o pipefail",
           "Cleaning up services and containers for job, and removing the network")
_INFO = ("runner: mini, polling every 2s", "task was fetched, 1 running", "no new task, backing off")
_TROUBLE = ("failed to fetch task: deadline exceeded", "unable to clean up the container: not found",
            "cache has 5 GB, more than is allowed", "unexpected status 502 from the server")


def _entry(number, level, message, room=0):
    """A daemon line; `room` is how long its message is to be at the least."""
    caller = _CALLERS[number % len(_CALLERS)]
    filled = message + ", and so on" * (max(room - len(message), 0) // 11)
    return (f'time="2026-03-09T14:{number // 60 % 60:02}:{number % 60:02}Z" level={level} '
            f'msg="{filled}" func="[func{number % 9}]" file="[{caller}]"')


class Stream:
    """A text of whole rounds, and what applying it once more and once more announces.

    In each round the runner has a new version, takes a task of a new repository, starts it, runs
    several jobs, finishes a job, and loses the network. Only the first round declares the runner:
    what that changes depends on the state by then, which is settled for as long as anybody may hold
    lines back, as the rounds at the end start nothing.
    """

    QUIET = 12  # rounds at the end: more than a MiB of text

    def __init__(self, path, rounds):
        self.path = path
        self.rounds = rounds
        self._random = random.Random(1)
        lines = [line for number in range(rounds) for line in self._round(number)]
        self.lines = len(lines)
        self.kept = sum(line.startswith("Error:") or
                        line.startswith('time="') and "level=debug" not in line for line in lines)
        text = "\n".join(lines) + "\n"
        self.bytes = len(text)
        path.write_text(text, encoding="ascii")

    def _filler(self, number, label):
        dice = self._random.random()
        pick = self._random.choice
        if dice < 0.42:
            return _entry(number, "debug", pick(_DEBUG), self._random.randrange(28, 88))
        if dice < 0.84:
            text = " ".join(pick(_OUTPUT) for _ in range(self._random.choice((1, 1, 1, 2, 2))))
            return f"[{label}] {text}"
        if dice < 0.95:
            return _entry(number, "info", pick(_INFO), self._random.randrange(28, 88))
        if dice < 0.99:
            return _entry(number, pick(("warning", "error")), pick(_TROUBLE), 40)
        return pick(("Error: exit status 1", " to 'workflow/0.sh'", "", "echo done",
                     "Waiting for the worker to finish (1 left)"))

    def _round(self, number):
        network = "no route to host" if number % 2 else "permission denied"
        telling = {
            1: _entry(number, "info", f"Starting the daemon with version: v3.{number}.0, debug is on"),
            10: _entry(number, "info", f"task {number} repo is acme/site-{number} "
                                       "https://gitea.example https://gitea.example"),
            _ROUND - 20: _entry(number, "debug", "Worker 0 finished (1 tasks executed)"),
        }
        if number == 0:
            telling[0] = _entry(0, "info", "runner: mini, with labels: [x:host], declare successfully")
        if number < self.rounds - self.QUIET:
            telling[11] = _entry(number, "info",
                                 "Running job with maxParallel=1 for 1 matrix combinations")
            telling[_ROUND - 10] = _entry(number, "error",
                                          f"dial tcp 192.0.2.7:443: connect: {network}")
        for at in range(_ROUND):
            label = f"Deploy {number}/build-{max(at - 12, 0) * _LABELS // _ROUND}"
            if at in telling:
                yield telling[at]
            elif 12 <= at < _ROUND - 20:
                yield self._filler(at, label)
            else:
                yield _entry(at, "debug", "no job runs", 80)

    def expected(self, times):
        """What bench/stream prints of the text `times` times over, without the memory."""
        rounds = self.rounds * times
        cleared = times - 1  # by each declaration but the first
        return [
            self.bytes * times,
            self.kept * times,
            rounds,                       # versions
            rounds * _LABELS + cleared,   # jobs
            rounds + cleared,             # builds
            1 + times + 2 * (self.rounds - self.QUIET) * times,  # starting; connected; the jobs
            rounds,                       # finished jobs
        ]
