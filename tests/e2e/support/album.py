"""The pictures that the documents show: a film of whole screens with a caption under each, and
stills of parts of the screen. `./dev demo` puts them into docs/pictures."""

import os
import shutil
import subprocess

FILM = "journey.gif"
LOG = "log.png"
STILLS = ("settings.png", "status-menu.png", "status.png", LOG)

_FRAME_TIME = 260   # in hundredths of a second
_LAST_FRAME_TIME = 400
_FILM_COLOURS = 256
_CAPTION_HEIGHT = 38
_FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


class Album:
    """Begins empty, in a folder of its own."""

    def __init__(self, desktop, folder):
        self._desktop = desktop
        self._folder = folder
        self._frames = []
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(os.path.join(folder, "frames"))

    def path(self, name):
        return os.path.join(self._folder, name)

    def names(self):
        """What is in it, but for the film's frames."""
        return sorted(name for name in os.listdir(self._folder) if name != "frames")

    def frame(self, name, caption):
        """The next one of the film: the whole screen."""
        path = self.path(f"frames/{len(self._frames) + 1:02}-{name}.png")
        self._desktop.take_picture("root", path)
        _convert(path, "-gravity", "South", "-background", "#101820", "-splice",
                 f"0x{_CAPTION_HEIGHT}", "-font", _FONT, "-pointsize", "17", "-fill", "#f2f2f2",
                 "-annotate", f"+0+{_CAPTION_HEIGHT // 4}", caption, path)
        self._frames.append(path)

    def still(self, name, box):
        """A part of the screen (left, top, width, height) with a soft shadow around it."""
        assert name in STILLS, name
        left, top, width, height = box
        screen = self.path("frames/screen.png")
        self._desktop.take_picture("root", screen)
        _convert(screen, "-crop", f"{width}x{height}+{left}+{top}", "+repage",
                 "(", "+clone", "-background", "black", "-shadow", "30x8+0+3", ")", "+swap",
                 "-background", "none", "-layers", "merge", "+repage",
                 "-strip", "-define", "png:compression-level=9",
                 "-define", "png:exclude-chunks=date,time", self.path(name))

    def make_film(self):
        """Of all frames so far."""
        *frames, last = self._frames
        _convert("-delay", str(_FRAME_TIME), *frames, "-delay", str(_LAST_FRAME_TIME), last,
                 "-dither", "None", "+map", "-colors", str(_FILM_COLOURS),
                 "-layers", "optimize", "-loop", "0", self.path(FILM))


def _convert(*arguments):
    subprocess.run(["convert", *arguments], check=True, timeout=120)
