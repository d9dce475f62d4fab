"""The item in real panels, which go and come back."""

import unittest

from support import looks
from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.panel import LxqtPanel, Panel
from support.waiting import AT_ONCE, wait_until
from support.windows import STATUS

IDLE = "Status: Connected — idle"


class PanelTest(ProgramCase):
    window_manager = usual_window_manager
    make_panel = Panel

    def choose(self, label):
        """Leaves a picture of the menu among the artefacts."""
        self.panel.choose(label, lambda _: looks.take_picture(
            self.desktop, "root", "panel-menu-" + type(self.panel).__name__))

    def assert_shown(self, seconds):
        """Registered, and painted in its colour."""
        item = self.panel.item()
        wait_until(lambda: IDLE in item.menu().labels(), "the status", seconds)
        wait_until(lambda: self.panel.colour() == "green", "the bird in the panel", seconds)
        return item

    def test_shows_the_item_and_its_menu_and_again_after_a_restart(self):
        self.panel = self.make_panel(self.desktop)
        self.addCleanup(self.panel.close)
        puppets, = self.puppet_runners({})
        program = self.start()
        puppets.wait_for_one()
        self.assert_shown(10)
        self.choose(STATUS.entry)
        self.desktop.wait_for_active(STATUS.title, 5)
        self.panel.end()
        self.panel.start()
        self.assert_shown(AT_ONCE)
        self.choose("Quit Valdorn")
        self.assertEqual(program.wait_for_end(5), 0)
        self.panel.wait_for_none()


class LxqtPanelTest(PanelTest):
    make_panel = LxqtPanel


if __name__ == "__main__":
    unittest.main()
