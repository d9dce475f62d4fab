#!/usr/bin/env python3
"""What a runner's output costs from the pipe to the applied line: stream.py BUILD-FOLDER [--short].

The bars: a fifth of a bare search for line ends and 2.5 times the best program that looks at lines,
4 MiB of memory however long the stream is, and a key answered within a frame meanwhile.
"""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from support import harness
from support.streams import BLOCK, LINE_BYTES, Stream

ROUNDS = harness.rounds(11)
TEXT_ROUNDS = harness.scaled(128, 32)  # about 16 MiB
TIMES = harness.scaled(32, 2)
PEER_TIMES = harness.scaled(6, 2)
MEMORY_SIZES = harness.scaled({"64 MB": 64_000_000, "1 GB": 1_000_000_000, "4 GB": 4_000_000_000},
                              {"64 MB": 64_000_000})
HOLD_MILLISECONDS = harness.scaled(10_000, 300)
KEY_TIMES = harness.scaled(256, 8)

REFERENCE_BAR = 0.20
PEER_BAR = 2.5
MEMORY_KIB = 4 << 10
FLAT_KIB = 1 << 10  # what runs differ by anyway
KEY_MICROSECONDS = 16_000

TITLE = "A runner's output"
INTRODUCTION = f"""\
The stream is what a busy runner prints at debug level (mean line {LINE_BYTES} bytes; 84 % debugging and
lines of jobs, 11 % information, 4 % trouble), {TEXT_ROUNDS // 8} MiB over and over, written 64 KiB at a time. Generator
and reader share one core; the log is in memory. Reference: a C program that reads 64 KiB and finds each
line's end (`memchr`). Ours is the whole way: launched by the program's own launcher, cut, kept, looked
at for every text and label, and applied on Qt's main thread, from fork to exit; what it keeps and
announces is counted and compared. By turns, {ROUNDS} rounds; a share is the reference's time for as many bytes.

Bars: {REFERENCE_BAR:.2f} of the reference; {PEER_BAR} times the best program that looks at lines; at most
{MEMORY_KIB >> 10} MiB more than the idle process, the same for every length, also while the main thread stands still
for {HOLD_MILLISECONDS // 1000} s; a key pressed during the flood, over a socket as a display server's, is answered within
{KEY_MICROSECONDS // 1000} ms (99th percentile).
"""


class Bench:
    def __init__(self, build, folder):
        self.bin = build / "bin"
        self.folder = folder
        self.stream = Stream(folder / "text", TEXT_ROUNDS)
        self.log = folder / "log"
        self.rows, self.misses = [], []

    def generator(self, text, size, *pipe):
        return [str(self.bin / "stream_generator"), str(text), str(size), *map(str, pipe)]

    def ours(self, generator, *options):
        """Nanoseconds and what bench/stream prints."""
        home = self.folder / "home"
        home.mkdir()
        try:
            return harness.run([str(self.bin / "stream"), str(home), *options, "--", *generator])
        finally:
            shutil.rmtree(home)

    def ours_applying(self, times, *options, pipe=()):
        generator = self.generator(self.stream.path, self.stream.bytes * times, *pipe)
        took, numbers = self.ours(generator, *options)
        expected = self.stream.expected(times)
        harness.expect("bytes, kept lines and news", numbers[:len(expected)], expected)
        return took, numbers[len(expected):]

    def piped(self, command, times, *pipe):
        """Nanoseconds of a program that reads its standard input, and what it prints."""
        reading, writing = os.pipe()
        begin = time.perf_counter_ns()
        with subprocess.Popen(command, stdin=reading, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL) as reader:
            os.close(reading)
            generator = subprocess.Popen(
                self.generator(self.stream.path, self.stream.bytes * times, *pipe), stdout=writing)
            os.close(writing)
            printed = reader.stdout.read()
        generator.wait()
        took = time.perf_counter_ns() - begin
        if reader.returncode != 0 or generator.returncode != 0:
            raise SystemExit(f"{command[0]} failed: {reader.returncode}, {generator.returncode}")
        return took, printed

    def reference(self, work, times, *pipe):
        command = [str(self.bin / "stream_reference"), work, str(self.log)]
        took, printed = self.piped(command, times, *pipe)
        self.log.unlink()
        counts = [int(number) for number in printed.split()]
        harness.expect("lines", counts[0], self.stream.lines * times)
        if work != "split":
            harness.expect("kept lines", counts[1], self.stream.kept * times)
        return took

    def logger(self, command, configuration=None):
        """Nanoseconds of a program that keeps lines in a folder of logs, which it is given last."""
        logs = self.folder / "logs"
        logs.mkdir()
        if configuration:
            (logs / "config").write_text(configuration)
        took, _ = self.piped([*command, str(logs)], PEER_TIMES)
        kept = sum(path.read_bytes().count(b"\n") for path in logs.iterdir()
                   if path.name == "current" or path.name.startswith("@"))
        shutil.rmtree(logs)
        harness.expect(f"lines kept by {command[0]}", kept, self.stream.kept * PEER_TIMES)
        return took

    def s6_log(self):
        return self.logger(["s6-log", "-b", "--", "-", "+^Error:", '+^time="', "-level=debug",
                            "n1000", "s268435455"])

    def multilog(self):
        return self.logger(["multilog", "-*", "+Error:*", '+time="*', '-time="*" level=debug *',
                            "n1000", "s16777215"])

    def svlogd(self):
        return self.logger(["svlogd"], "n0\ns16777215\n-*\n+Error:*\n+time=\"*\n"
                                       "-time=\"*\" level=debug *\n")

    def qt_reader(self):
        size = self.stream.bytes * PEER_TIMES
        took, counts = harness.run([str(self.bin / "stream_qt"), str(self.log),
                                    *self.generator(self.stream.path, size)])
        self.log.unlink()
        harness.expect("lines", counts[:2], [self.stream.lines * PEER_TIMES,
                                             self.stream.kept * PEER_TIMES])
        return took

    def supervisord(self):
        """Until all is in its log: it goes on when its child has ended."""
        size = self.stream.bytes * PEER_TIMES
        configuration = self.folder / "supervisord.conf"
        configuration.write_text(
            f"[supervisord]\nnodaemon=true\nlogfile=/dev/null\nlogfile_maxbytes=0\n"
            f"pidfile={self.folder}/pid\n[program:child]\nautorestart=false\nstartsecs=0\n"
            f"command={' '.join(self.generator(self.stream.path, size))}\n"
            f"stdout_logfile={self.log}\nstdout_logfile_maxbytes=0\n")
        begin = time.perf_counter_ns()
        with subprocess.Popen(["supervisord", "-c", str(configuration)], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as supervisor:
            while supervisor.poll() is None and not (self.log.exists() and
                                                     self.log.stat().st_size >= size):
                time.sleep(0.002)
            took = time.perf_counter_ns() - begin
            supervisor.send_signal(signal.SIGTERM)
        harness.expect("bytes copied by supervisord", self.log.stat().st_size, size)
        self.log.unlink()
        return took

    def contestants(self):
        """By name: a round's time, how many texts it takes, and whether it looks at lines."""
        peers = {"s6-log": (self.s6_log, True), "multilog": (self.multilog, True),
                 "svlogd": (self.svlogd, True), "supervisord": (self.supervisord, False)}
        there = {name: (run, PEER_TIMES, looks) for name, (run, looks) in peers.items()
                 if shutil.which(name) and not harness.SHORT}
        return {
            "line ends (C)": (lambda: self.reference("split", TIMES), TIMES, False),
            "ours": (lambda: self.ours_applying(TIMES)[0], TIMES, False),
            "and keep (C)": (lambda: self.reference("keep", TIMES), TIMES, False),
            "and search for each text (C)": (lambda: self.reference("search", PEER_TIMES), PEER_TIMES, False),
            "plain Qt reader": (self.qt_reader, PEER_TIMES, True),
            **there,
        }

    def rates(self):
        contestants = self.contestants()
        times = {name: [] for name in contestants}
        for number in range(harness.scaled(-1, 0), ROUNDS):
            for name, (run, texts, _) in contestants.items():
                took = run() / texts
                if number >= 0:
                    times[name].append(took)
        figures = {name: harness.Figure(took) for name, took in times.items()}
        reference, ours = (figures[name].median for name in ("line ends (C)", "ours"))
        for name, figure in figures.items():
            rate = self.stream.bytes / figure.median * 1e3
            spread = (self.stream.bytes / extreme * 1e3
                      for extreme in (figure.highest, figure.lowest))
            self.rows.append([f"rate: {name}", "{:.0f} MB/s ({:.0f} to {:.0f})".format(rate, *spread),
                              f"{reference / figure.median:.2f} of the reference"])
        best = min((figures[name].median, name)
                   for name, (_, _, looks) in contestants.items() if looks)
        self.rows.append(["rate: ours beside the best that looks at lines", f"{best[0] / ours:.1f} times",
                          best[1]])
        if reference / ours < REFERENCE_BAR:
            self.misses.append(f"{REFERENCE_BAR:.2f} of the reference")
        if best[0] / ours < PEER_BAR:
            self.misses.append(f"{PEER_BAR} times {best[1]}")

    def memory(self):
        endless = self.folder / "endless"
        endless.write_bytes(b"x" * (256 * BLOCK))
        for what, text in {"with lines": self.stream.path, "without line ends": endless}.items():
            grown = [self.ours(self.generator(text, size))[1][7] for size in MEMORY_SIZES.values()]
            self.judge_memory(f"memory {what}, {', '.join(MEMORY_SIZES)}", grown)
        grown = self.ours_applying(TIMES, "--hold", str(HOLD_MILLISECONDS))[1]
        self.judge_memory("memory with the main thread held", grown)

    def judge_memory(self, what, grown):
        self.rows.append([what, ", ".join(f"{kib / 1024:.2f} MiB" for kib in grown), ""])
        if max(grown) > MEMORY_KIB:
            self.misses.append(what)
        if grown[-1] - grown[0] > FLAT_KIB:
            self.misses.append(f"{what}: the same for every length")

    def keys(self):
        _, (_, pressed, *answers) = self.ours_applying(KEY_TIMES, "--keys")
        harness.expect("answered keys", len(answers), pressed)
        harness.expect("that keys were pressed", pressed > 0, True)
        answers.sort()
        slow = answers[min(len(answers) - 1, len(answers) * 99 // 100)]
        self.rows.append([f"{pressed} keys during the flood", f"99 % within {slow / 1e3:.2f} ms",
                          f"median {answers[len(answers) // 2] / 1e3:.2f} ms, longest {answers[-1] / 1e3:.1f} ms"])
        if slow > KEY_MICROSECONDS:
            self.misses.append("keys during the flood")

    def free_child(self):
        """A child on a core of its own, which copies, into a pipe of the usual size to begin with."""
        runs = {"line ends (C)": lambda: self.reference("split", TIMES, BLOCK),
                "ours": lambda: self.ours_applying(TIMES, pipe=(BLOCK,))[0]}
        times = {name: [] for name in runs}
        for _ in range(ROUNDS):
            for name, run in runs.items():
                times[name].append(run() / TIMES)
        medians = {name: harness.Figure(took).median for name, took in times.items()}
        for name, median in medians.items():
            self.rows.append([f"free child: {name}", f"{self.stream.bytes / median * 1e3:.0f} MB/s",
                              f"{medians['line ends (C)'] / median:.2f} of the reference"])


def main(build):
    memory = pathlib.Path("/dev/shm")
    cores = os.sched_getaffinity(0)
    with tempfile.TemporaryDirectory(dir=memory if memory.is_dir() else build) as folder:
        os.environ.update(QT_QPA_PLATFORM="offscreen", XDG_RUNTIME_DIR=folder,
                          QT_LOGGING_RULES="*=false")
        bench = Bench(build, pathlib.Path(folder))
        os.sched_setaffinity(0, {max(cores)})
        bench.rates()
        os.sched_setaffinity(0, cores)
        bench.memory()
        bench.keys()
        bench.free_child()
    return harness.publish_table(TITLE, INTRODUCTION, ["what", "figure", "beside"], bench.rows,
                                 bench.misses)


if __name__ == "__main__":
    sys.exit(main(harness.build_folder()))
