"""The windows that the program has."""

from typing import NamedTuple, Optional


class Kind(NamedTuple):
    """A window: how the menu calls it, its title, and role and name of something in it, which tells
    it from another one of that title."""
    entry: str
    title: str
    content: Optional[tuple] = None


STATUS = Kind("Runner Status…", "Valdorn — Runner Status")
LOG = Kind("Show Log…", "Valdorn — Log")
SETTINGS = Kind("Settings…", "Valdorn", ("list", "Runners"))
ONBOARDING = Kind("Set Up…", "Valdorn", ("heading", "Welcome to Valdorn"))
