"""Logs as a busy act_runner writes them at debug level."""

import os
import random

LINE_BYTES = 127  # in the mean


def _chunk(size):
    """Whole lines of that many bytes together."""
    random_numbers = random.Random(1)
    lines = []
    left = size
    while left > 0:
        spread = random_numbers.randrange(-40, 41)
        length = LINE_BYTES + spread if left > 2 * (LINE_BYTES + 40) else left
        head = (f'time="2026-03-09T14:05:{len(lines) % 60:02}Z" level=debug msg="step {len(lines)}: ')
        tail = '" func="[func1]" file="[executor.go:116]"\n'
        filler = "docker exec in job container "
        room = max(length - len(head) - len(tail), 0)
        line = head + (filler * (room // len(filler) + 1))[:room] + tail
        lines.append(line[-length:])
        left -= len(lines[-1])
    return "".join(lines).encode()


def make_log(path, size):
    block = _chunk(min(size, 16 << 20))
    with open(path, "wb") as file:
        for _ in range(size // len(block)):
            file.write(block)
        file.flush()
        os.fsync(file.fileno())  # or the disk is still busy while others are measured
    return path
