"""The settings window as somebody sees and works it."""

from .waiting import wait_until
from .windows import SETTINGS

FIELDS = ("Gitea URL", "Name", "Labels", "Extra PATH")
REGISTERED = "Registered ✓"


class SettingsPage:
    """Of a window case that has opened it, or opens it now."""

    def __init__(self, case, window=None):
        self._case = case
        self.window = window or case.open(SETTINGS)
        self.id = case.window_id

    def list(self):
        return self.window.find("list", "Runners")

    def runners(self):
        """The names in the list, from top to bottom."""
        return [item.name() for item in self.window.find_all("list item")]

    def selected(self):
        """The places in the list that are highlighted."""
        return [place for place, item in enumerate(self.window.find_all("list item"))
                if "selected" in item.states()]

    def select(self, place):
        self._case.click(self.window.find_all("list item")[place])
        wait_until(lambda: self.selected() == [place], f"runner {place} as the selected one")

    def add_button(self):
        return self.window.find("push button", "Add a runner")

    def remove_button(self):
        return self.window.find("push button", "Remove the selected runner")

    def field(self, name):
        return self.window.find("text", name)

    def token(self):
        return self.window.find("text", "Registration token")

    def register_button(self):
        """By whichever name it has now."""
        return wait_until(lambda: [button for button in self.window.find_all("push button")
                                   if button.name() in ("Register", "Re-register")],
                          "the register button")[0]

    def launch_box(self):
        return self.window.find("check box", "Launch Valdorn at login")

    def can_register(self):
        return "enabled" in self.register_button().states()

    def is_busy(self):
        return "Registering" in (name for _, name in self.window.described())

    def texts(self):
        """What stands there to be read."""
        return self.window.names("label")

    def wait_for_text(self, text, seconds=20.0):
        wait_until(lambda: text in self.texts(), f"{text!r} in {self.texts()}", seconds)

    def fill(self, name, text):
        """Types into a field, instead of what stands there."""
        field = self.field(name)
        self._case.click(field)
        self._case.press("ctrl+a", "BackSpace")
        self._case.desktop.type(text)
        wait_until(lambda: field.text() == text, f"{text!r} in {name!r}")

    def paste(self, name, text):
        """From the clipboard, instead of what stands there."""
        field = self.field(name)
        self._case.desktop.set_clipboard(text)
        self._case.click(field)
        self._case.press("ctrl+a", "ctrl+v")
        wait_until(lambda: field.text() == text, f"a pasted {name!r}")

    def type_token(self, text):
        field = self.token()
        self._case.click(field)
        self._case.press("ctrl+a", "BackSpace")
        self._case.desktop.type(text)
        wait_until(lambda: field.length() == len(text), "the token")

    def register(self, token=None):
        """Types the token, if there is one to type, and clicks the button."""
        if token is not None:
            self.type_token(token)
        wait_until(self.can_register, "a button to register with")
        self._case.click(self.register_button())

    def wait_for_outcome(self, seconds=20.0):
        """Until a try that has begun is over."""
        wait_until(lambda: not self.is_busy(), "the outcome", seconds)
