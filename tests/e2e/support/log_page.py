"""The log window as somebody sees it."""

from .waiting import wait_until
from .windows import LOG


class LogPage:
    """Of a window case, which opens it now."""

    def __init__(self, case):
        self.window = case.open(LOG)
        self.log = self.window.find("text", "Log")

    def lines(self):
        """What is shown, with the line ends that it had."""
        return [line + "\n" for line in self.log.text().split("\n") if line]

    def wait_for_lines(self, *lines):
        wait_until(lambda: self.lines() == list(lines), f"{lines} in place of {self.lines()}")
