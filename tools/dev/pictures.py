#!/usr/bin/env python3
"""Makes a folder's pictures those of another, and says what it does. A picture that looks as before
stays as it is: a clock that has moved on, a blinking cursor or a turning spinner are no news.

    PYTHONPATH=tests/e2e pictures.py NEW-FOLDER FOLDER
"""

import os
import shutil
import subprocess
import sys
import tempfile

from support.album import FILM, LOG

# How far off the colour of a pixel may be, and how many of a frame's pixels may be off by more.
# Times of day are many pixels; in a film they come in few frames, so its median frame has to be the
# same.
SAME_COLOUR = "5%"
SAME_FRAME = 0.0008
SAME_FRAME_WITH_TIMES = {LOG: 0.004, FILM: 0.006}
SAME_MEDIAN_OF_FILM = 0.00005


def frames(picture, folder):
    """The paths of its frames as plain pictures: one but for a film. What is transparent may have
    any colour, and gets one."""
    os.mkdir(folder)
    subprocess.run(["convert", picture, "-coalesce", "-background", "white", "-alpha", "remove",
                    os.path.join(folder, "%03d.png")], check=True, timeout=120)
    return [os.path.join(folder, name) for name in sorted(os.listdir(folder))]


def size(picture):
    shown = subprocess.run(["identify", "-format", "%w %h", picture], check=True, timeout=60,
                           capture_output=True, text=True).stdout
    width, height = map(int, shown.split())
    return width, height


def share_that_differs(old, new):
    """Of the pixels of two pictures, 1 when they are of different sizes."""
    width, height = size(new)
    if size(old) != (width, height):
        return 1
    compared = subprocess.run(["compare", "-metric", "AE", "-fuzz", SAME_COLOUR, old, new, "null:"],
                              capture_output=True, text=True, timeout=60)
    if compared.returncode not in (0, 1):  # the same, different
        raise RuntimeError(f"{old} and {new} cannot be compared: {compared.stderr}")
    return float(compared.stderr.split()[0]) / (width * height)


def looks_the_same(old, new):
    with tempfile.TemporaryDirectory(prefix="valdorn-pictures.") as folder:
        before = frames(old, os.path.join(folder, "before"))
        after = frames(new, os.path.join(folder, "after"))
        if len(before) != len(after):
            return False
        shares = sorted(share_that_differs(*pair) for pair in zip(before, after))
    is_film = len(shares) > 1
    return (shares[-1] <= SAME_FRAME_WITH_TIMES.get(os.path.basename(new), SAME_FRAME)
            and not (is_film and shares[len(shares) // 2] > SAME_MEDIAN_OF_FILM))


def pictures_in(folder):
    return sorted(name for name in os.listdir(folder)
                  if os.path.isfile(os.path.join(folder, name)))


def update(source, target):
    """What became of each picture, by name."""
    fates = {}
    for name in pictures_in(source):
        new, old = os.path.join(source, name), os.path.join(target, name)
        if os.path.exists(old) and looks_the_same(old, new):
            fates[name] = "looks as before"
            continue
        fates[name] = "is new"
        shutil.copyfile(new, old)
    for name in set(pictures_in(target)) - set(fates):
        fates[name] = "is gone"
        os.remove(os.path.join(target, name))
    return fates


def main(source, target):
    for name, fate in sorted(update(source, target).items()):
        print(f"{os.path.join(target, name)} {fate}")


if __name__ == "__main__":
    main(*sys.argv[1:])
