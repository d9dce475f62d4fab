"""A light and a dark desktop, at the usual scale and at twice that, and pictures of windows."""

import os
import subprocess

from .icon import name_of

ARTEFACTS = os.environ["VALDORN_ARTEFACTS"]

# Qt itself reads these settings of KDE, with no more of that desktop there than this file.
_DARK_COLOURS = """[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252

[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252

[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252

[Colors:View]
BackgroundAlternate=35,38,41
BackgroundNormal=27,30,32
ForegroundLink=29,153,243
ForegroundNormal=252,252,252
ForegroundVisited=155,89,182

[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252

[KDE]
widgetStyle=Fusion
"""
_LARGE_FONT = """[General]
font=DejaVu Sans,15,-1,5,50,0,0,0,0,0

[KDE]
widgetStyle=Fusion
"""
_KDE_VARIABLES = {"QT_QPA_PLATFORMTHEME": "kde", "KDE_SESSION_VERSION": "5"}

# Name, whether it is dark, scale.
LOOKS = [("light", False, 1), ("light-2x", False, 2), ("dark", True, 1), ("dark-2x", True, 2)]


def prepare(home, dark, scale):
    """The environment for a program in this home that is to look so."""
    variables = {"QT_SCALE_FACTOR": str(scale)}
    if dark:
        variables.update(_like_kde(home, _DARK_COLOURS))
    return variables


def prepare_large_font(home):
    """The environment for a program in this home whose texts are to be half as large again."""
    return _like_kde(home, _LARGE_FONT)


def _like_kde(home, settings):
    folder = os.path.join(home.path, ".config")
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "kdeglobals"), "w") as file:
        file.write(settings)
    return _KDE_VARIABLES


def take_picture(desktop, window, name):
    """Leaves a picture of the window among the artefacts; its path."""
    os.makedirs(ARTEFACTS, exist_ok=True)
    path = os.path.join(ARTEFACTS, name + ".png")
    desktop.take_picture(window, path)
    return path


def size(path):
    return tuple(map(int, _ask(path, "%w %h").split()))


def assert_brightness(case, path, is_dark):
    """Takes the picture on average."""
    brightness = float(_ask(path, "%[fx:mean]", "-colorspace", "Gray"))
    compare = case.assertLess if is_dark else case.assertGreater
    compare(brightness, 0.5)


def darkest_in(path, box):
    """The brightness, 0 to 1, of the darkest pixel in a part of it: left, top, width, height."""
    left, top, width, height = box
    return float(_ask(path, "%[fx:minima]", "-crop", f"{width}x{height}+{left}+{top}",
                      "-colorspace", "Gray"))


def colour_in(path, box):
    """The name of the most saturated colour in a part of the picture: left, top, width, height."""
    return name_of(*max(_pixels(path, box), key=_colourfulness))


def most_colourful_place(path, box):
    """Where the most saturated colour is."""
    left, top, width, _ = box
    pixels = _pixels(path, box)
    at = max(range(len(pixels)), key=lambda index: _colourfulness(pixels[index]))
    return left + at % width, top + at // width


def _colourfulness(rgb):
    return max(rgb) - min(rgb)


def _pixels(path, box):
    left, top, width, height = box
    data = subprocess.run(["convert", path, "-crop", f"{width}x{height}+{left}+{top}", "+repage",
                           "-depth", "8", "rgb:-"], check=True, capture_output=True,
                          timeout=60).stdout
    return [tuple(data[at:at + 3]) for at in range(0, len(data), 3)]


def _ask(path, question, *options):
    return subprocess.run(["convert", path, *options, "-format", question, "info:"], check=True,
                          capture_output=True, text=True, timeout=60).stdout
