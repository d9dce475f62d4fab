"""How much of a fault: `./dev faults` takes its time, everyday tests do not."""

import os
import random

IS_FULL = os.environ.get("VALDORN_FAULTS") == "full"


def amount(full, ordinary):
    return full if IS_FULL else ordinary


def dice(name):
    """A source of chance. It says its seed, which VALDORN_SEED sets, so that it can be had again."""
    seed = int(os.environ.get("VALDORN_SEED") or random.SystemRandom().randrange(10 ** 9))
    print(f"{name}: VALDORN_SEED={seed}", flush=True)
    return random.Random(seed)
