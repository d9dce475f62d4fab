#!/usr/bin/python3 -SEB
"""Stands in for act_runner where a test wants to pull the strings itself.

In its working folder, below `puppet/`, it leaves what it was given (PID.json) and the signals it
has got (PID.signals, a name and a time a line), and prints what is written to PID.says. The file
`first` holds what it says first; with a file `stubborn` there, SIGTERM does not end it.
"""

import json
import os
import signal
import sys
import time

LOOK_PERIOD = 0.02
NOTED = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGUSR1)


def link(path):
    try:
        return os.readlink(path)
    except OSError:
        return None


def now():
    """In seconds, by a clock that nobody sets and no test shifts; the same as in puppet.py."""
    return time.clock_gettime(time.CLOCK_MONOTONIC_RAW)


def facts():
    descriptors = {name: link(f"/proc/self/fd/{name}") for name in os.listdir("/proc/self/fd")}
    with open("/proc/self/status") as file:
        status = dict(line.rstrip("\n").split(":\t", 1) for line in file if ":\t" in line)
    return {
        "started": now(),
        "arguments": sys.argv[1:],
        "folder": os.getcwd(),
        "environment": dict(os.environ),
        "group": os.getpgrp(),
        # Listing the folder opens one more, gone by the time it is read.
        "descriptors": {name: target for name, target in descriptors.items() if target},
        "blocked": int(status["SigBlk"], 16),
        "ignored": int(status["SigIgn"], 16),
    }


def leave(path, text):
    with open(path + ".new", "w") as file:
        file.write(text)
    os.rename(path + ".new", path)


def say(text):
    os.write(1, text)


def main():
    given = facts()
    os.makedirs("puppet", exist_ok=True)
    signal.pthread_sigmask(signal.SIG_BLOCK, NOTED)
    here = f"puppet/{os.getpid()}"
    leave(here + ".json", json.dumps(given))
    if os.path.exists("puppet/first"):
        with open("puppet/first", "rb") as file:
            say(file.read())
    said = 0
    while True:
        got = signal.sigtimedwait(NOTED, LOOK_PERIOD)
        # After a SIGCONT this Python returns whatever lay in memory.
        if got and got.si_signo in NOTED:
            with open(here + ".signals", "a") as file:
                file.write(f"{signal.Signals(got.si_signo).name} {now()}\n")
            if got.si_signo != signal.SIGUSR1 and not os.path.exists("puppet/stubborn"):
                return
        if os.path.exists(here + ".says"):
            with open(here + ".says", "rb") as file:
                file.seek(said)
                text = file.read()
            said += len(text)
            say(text)


main()
