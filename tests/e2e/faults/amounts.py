"""How much of a fault: `./dev faults` takes its time, everyday tests do not, and where a sanitizer
slows the program down there is the least."""

import os
import random

IS_FULL = os.environ.get("VALDORN_FAULTS") == "full"
IS_SANITIZED = bool(os.environ.get("VALDORN_SANITIZED"))


def amount(full, ordinary, sanitized=None):
    """One of the three; what is not given for a sanitized program is as on other days."""
    if IS_FULL:
        return full
    return ordinary if sanitized is None or not IS_SANITIZED else sanitized


def dice(name):
    """A source of chance. It says its seed, which VALDORN_SEED sets, so that it can be had again."""
    seed = int(os.environ.get("VALDORN_SEED") or random.SystemRandom().randrange(10 ** 9))
    print(f"{name}: VALDORN_SEED={seed}", flush=True)
    return random.Random(seed)
