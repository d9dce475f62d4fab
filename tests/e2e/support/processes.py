"""Processes by their ids."""

import os


def stat(pid):
    """The fields of /proc/PID/stat from the state on, or nothing."""
    try:
        with open(f"/proc/{pid}/stat") as file:
            return file.read().rpartition(")")[2].split()
    except (FileNotFoundError, ProcessLookupError):
        return None


def state(pid):
    """A letter, as `ps` has it, or nothing."""
    fields = stat(pid)
    return fields[0] if fields else None


def is_alive(pid):
    return state(pid) not in (None, "Z")


def kill(pid, number):
    """Sends a signal; a process that has just ended is no error."""
    try:
        os.kill(pid, number)
    except ProcessLookupError:
        pass
