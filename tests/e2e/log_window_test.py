"""The log window: it follows the log of the first runner, narrows it down, copies and clears it."""

import os
import unittest

from support import looks
from support.log_page import LogPage
from support.puppet import BLOCKED, DECLARED, JOB_STARTED, entry
from support.waiting import spend, stays_true, wait_until
from support.window_case import WindowCase

# The log is looked at once a second.
POLL = 1.0


def warning(message):
    return entry(message, "warning")


def error(message):
    return entry(message, "error")


def many(count, first=0):
    """More lines than the window shows."""
    return "".join(entry(f"line {number}") for number in range(first, first + count))


class LogWindowCase(WindowCase):
    def begin(self, first="", **more):
        self.puppets, = self.puppet_runners({}, first=first)
        super().begin(**more)
        self.puppets.wait_for_one()

    def open_log(self):
        self.page = LogPage(self)
        self.window, self.log = self.page.window, self.page.log

    def lines(self):
        return self.page.lines()

    def wait_for_lines(self, *lines):
        self.page.wait_for_lines(*lines)

    def write(self, *lines):
        """Lets the daemon say something, and waits until the log window may have shown it."""
        self.puppets.say(*lines)
        spend(2 * POLL)

    def filter_field(self):
        return self.window.find("text", "Filter")

    def follow_box(self):
        return self.window.find("check box", "Follow")

    def level_picker(self):
        # Its name is what it shows.
        return self.window.find("combo box")

    def button(self, name):
        return self.window.find("push button", name)

    def choose_level(self, *keys):
        """Opens the picker with the mouse and chooses with keys."""
        self.click(self.level_picker())
        wait_until(lambda: len(self.desktop.windows_of(self.program)) == 2, "the list of levels")
        self.press(*keys, "Return")
        wait_until(lambda: len(self.desktop.windows_of(self.program)) == 1, "a closed list")

    def scroll_place(self):
        """Where the view is scrolled to, and how far it could be."""
        bar, = [thing for thing in self.window.find_all("scroll bar")
                if thing.extents()[3] > thing.extents()[2]]
        return bar.value(), bar.maximum()

    def is_at_the_end(self):
        value, maximum = self.scroll_place()
        return value == maximum > 0


class LinesTest(LogWindowCase):
    def test_is_empty_where_there_is_no_log(self):
        self.begin()
        self.open_log()
        self.wait_for_lines()
        self.assertEqual(self.filter_field().text(), "")
        self.assertEqual(self.level_picker().name(), "All")
        self.assertEqual(self.level_picker().labels(), ["Level"])
        self.assertIn("checked", self.follow_box().states())
        self.assertEqual(self.window.names("push button"), ["Copy", "Clear", "Open File"])

    def test_shows_what_the_runner_has_said_and_goes_on_saying(self):
        self.begin(first=DECLARED)
        self.open_log()
        self.wait_for_lines(DECLARED)
        self.puppets.say(JOB_STARTED)
        self.wait_for_lines(DECLARED, JOB_STARTED)
        self.puppets.say(entry("of no interest", "debug"), BLOCKED)
        self.wait_for_lines(DECLARED, JOB_STARTED, BLOCKED)

    def test_other_writers_and_a_new_file_are_followed_too(self):
        self.begin(first=DECLARED)
        self.open_log()
        self.wait_for_lines(DECLARED)
        path = os.path.join(self.puppets.data_folder, "valdorn.log")
        with open(path, "a") as file:
            file.write("Error: by hand, Grüße 🐦\n")
        self.wait_for_lines(DECLARED, "Error: by hand, Grüße 🐦\n")
        with open(path, "w") as file:
            file.write("short\n")
        self.wait_for_lines("short\n")

    def test_shows_the_log_of_the_first_runner(self):
        puppets = self.puppet_runners({}, {}, first="")
        WindowCase.begin(self)
        puppets[1].say(entry("second"))
        puppets[0].say(entry("first"))
        self.open_log()
        self.wait_for_lines(entry("first"))

    def test_reads_the_file_anew_when_it_comes_back(self):
        self.begin(first=DECLARED)
        self.open_log()
        self.wait_for_lines(DECLARED)
        self.close_window()
        self.write(JOB_STARTED)
        self.open_log()
        self.wait_for_lines(DECLARED, JOB_STARTED)


class FilterTest(LogWindowCase):
    def setUp(self):
        super().setUp()
        self.plain = entry("Plain talk")
        self.warned = warning("a JOB waits")
        self.failed = error("a job failed")
        self.begin(first=self.plain + self.warned + self.failed)
        self.open_log()
        self.wait_for_lines(self.plain, self.warned, self.failed)

    def test_the_keyboard_goes_to_the_filter_first(self):
        self.desktop.type("plain")
        self.wait_for_lines(self.plain)
        self.assertEqual(self.filter_field().text(), "plain")

    def test_text_typed_narrows_the_lines_whatever_its_case(self):
        self.click(self.filter_field())
        self.desktop.type("JoB")
        self.wait_for_lines(self.warned, self.failed)
        self.desktop.type(" failed")
        self.wait_for_lines(self.failed)
        self.press(*["BackSpace"] * len("JoB failed"))
        self.wait_for_lines(self.plain, self.warned, self.failed)

    def test_a_level_leaves_only_its_lines(self):
        self.choose_level("Down", "Down")
        self.wait_for_lines(self.warned)
        self.choose_level("Down")
        self.wait_for_lines(self.failed)
        self.choose_level("Home", "Down")
        self.wait_for_lines(self.plain)
        self.choose_level("Home")
        self.wait_for_lines(self.plain, self.warned, self.failed)

    def test_both_together_and_for_lines_that_come_later(self):
        self.click(self.filter_field())
        self.desktop.type("job")
        self.choose_level("Down", "Down", "Down")
        self.wait_for_lines(self.failed)
        self.puppets.say(error("another Job failed"), error("something else"), warning("job"))
        self.wait_for_lines(self.failed, error("another Job failed"))

    def test_what_was_chosen_is_kept_while_it_is_closed(self):
        self.click(self.filter_field())
        self.desktop.type("job")
        self.choose_level("Down", "Down")
        self.click(self.follow_box())
        wait_until(lambda: "checked" not in self.follow_box().states(), "no following")
        self.wait_for_lines(self.warned)
        self.close_window()
        self.open_log()
        self.wait_for_lines(self.warned)
        self.assertEqual(self.filter_field().text(), "job")
        self.assertEqual(self.level_picker().name(), "Warning")
        self.assertNotIn("checked", self.follow_box().states())


class ButtonsTest(LogWindowCase):
    def test_copy_puts_the_filtered_lines_on_the_clipboard(self):
        self.begin(first=warning("one") + entry("two") + warning("drei, Grüße"))
        self.open_log()
        self.choose_level("Down", "Down")
        self.wait_for_lines(warning("one"), warning("drei, Grüße"))
        self.click(self.button("Copy"))
        wanted = (warning("one") + warning("drei, Grüße")).rstrip("\n")
        wait_until(lambda: self.desktop.clipboard() == wanted, "the lines on the clipboard")

    def test_copy_of_nothing_empties_the_clipboard(self):
        self.begin(first=DECLARED)
        self.open_log()
        self.wait_for_lines(DECLARED)
        self.click(self.button("Copy"))
        wait_until(lambda: self.desktop.clipboard() == DECLARED.rstrip("\n"), "the line")
        self.click(self.filter_field())
        self.desktop.type("nowhere")
        self.wait_for_lines()
        self.click(self.button("Copy"))
        wait_until(lambda: self.desktop.clipboard() == "", "an empty text")

    def test_clear_leaves_the_next_line_alone_and_reopening_brings_all_back(self):
        self.begin(first=DECLARED + JOB_STARTED)
        self.open_log()
        self.wait_for_lines(DECLARED, JOB_STARTED)
        self.click(self.button("Clear"))
        self.wait_for_lines()
        stays_true(lambda: self.lines() == [], "no lines", 1.5 * POLL)
        self.puppets.say(BLOCKED)
        self.wait_for_lines(BLOCKED)
        self.close_window()
        self.open_log()
        self.wait_for_lines(DECLARED, JOB_STARTED, BLOCKED)

    def test_open_file_hands_the_log_to_the_desktop(self):
        opened = os.path.join(self.home.path, "opened")
        tools = os.path.join(self.home.path, "bin")
        os.mkdir(tools)
        tool = os.path.join(tools, "xdg-open")
        with open(tool, "w") as file:
            file.write(f'#!/bin/sh\necho "$@" >> "{opened}"\n')
        os.chmod(tool, 0o755)
        self.begin(first=DECLARED, PATH=tools + ":" + os.environ["PATH"])
        self.open_log()
        self.wait_for_lines(DECLARED)
        self.click(self.button("Open File"))
        wait_until(lambda: os.path.exists(opened), "an opened file")
        with open(opened) as file:
            self.assertIn(os.path.join(self.puppets.data_folder, "valdorn.log").replace(" ", "%20"),
                          file.read().replace(" ", "%20"))

    def test_the_keyboard_reaches_them_all(self):
        self.begin(first=DECLARED)
        self.open_log()
        self.wait_for_lines(DECLARED)
        for thing in (self.level_picker(), self.follow_box(), self.button("Copy"),
                      self.button("Clear"), self.button("Open File"), self.log,
                      self.filter_field()):
            self.tab_to(self.window, thing)
        self.tab_to(self.window, self.follow_box())
        self.press("space")
        wait_until(lambda: "checked" not in self.follow_box().states(), "no following")
        self.tab_to(self.window, self.button("Copy"))
        self.press("space")
        wait_until(lambda: self.desktop.clipboard() == DECLARED.rstrip("\n"), "the line")
        self.tab_to(self.window, self.button("Clear"))
        self.press("space")
        self.wait_for_lines()


class FollowTest(LogWindowCase):
    def test_the_newest_line_stays_in_view_while_following(self):
        self.begin(first=many(200))
        self.open_log()
        wait_until(self.is_at_the_end, "the end in view")
        end = self.scroll_place()[1]
        self.write(many(50, 200))
        self.assertTrue(self.is_at_the_end())
        self.assertGreater(self.scroll_place()[1], end)

    def test_without_following_the_place_is_kept(self):
        self.begin(first=many(200))
        self.open_log()
        wait_until(self.is_at_the_end, "the end in view")
        self.click(self.follow_box())
        wait_until(lambda: "checked" not in self.follow_box().states(), "no following")
        place, end = self.scroll_place()
        self.write(many(50, 200))
        self.assertEqual(self.scroll_place()[0], place)
        self.assertGreater(self.scroll_place()[1], end)
        # Following again moves nothing by itself; the next line does.
        self.click(self.follow_box())
        wait_until(lambda: "checked" in self.follow_box().states(), "following")
        spend(0.3)
        self.assertEqual(self.scroll_place()[0], place)
        self.puppets.say(many(1, 250))
        wait_until(self.is_at_the_end, "the end in view")

    def test_following_comes_back_from_where_the_user_has_scrolled_to(self):
        self.begin(first=many(200))
        self.open_log()
        wait_until(self.is_at_the_end, "the end in view")
        x, y = self.log.centre()
        self.desktop.xdotool("mousemove", str(x), str(y), "click", "--repeat", "5", "4")
        wait_until(lambda: not self.is_at_the_end(), "an earlier place")
        self.puppets.say(many(1, 200))
        wait_until(self.is_at_the_end, "the end in view")


class LooksTest(LogWindowCase):
    screen = "2560x1600x24"

    def test_light_and_dark_at_both_scales(self):
        self.puppets, = self.puppet_runners({}, first="")
        log = os.path.join(self.puppets.data_folder, "valdorn.log")
        with open(log, "w") as file:
            file.write(many(20) + DECLARED + warning("the disk is nearly full") + BLOCKED +
                       "Error: no more\n" + entry("a long line " * 30))
        for name, is_dark, scale in looks.LOOKS:
            with self.subTest(name):
                WindowCase.begin(self, **looks.prepare(self.home, is_dark, scale))
                self.open_log()
                wait_until(lambda: len(self.lines()) == 25, "the lines")
                picture = looks.take_picture(self.desktop, self.window_id, "log-" + name)
                self.assertEqual(looks.size(picture), (720 * scale, 460 * scale))
                looks.assert_brightness(self, picture, is_dark)
                self.program.quit()

    def test_its_frame_is_whole_where_a_point_is_no_whole_number_of_pixels(self):
        scale = 1.5
        self.begin(QT_SCALE_FACTOR=str(scale))
        self.open_log()
        picture = looks.take_picture(self.desktop, self.window_id, "log-1.5x")
        left, top, _, _ = self.window.extents()
        x, y, width, height = self.log.extents()
        x, y = x - left, y - top
        # Across each edge, where no text is.
        for side, box in (("left", (x - 2, y + height / 2, 4, 1)),
                          ("top", (x + width * 0.9, y - 2, 1, 4)),
                          ("right", (x + width - 2, y + height / 2, 4, 1)),
                          ("bottom", (x + width / 2, y + height - 2, 1, 4))):
            with self.subTest(side):
                pixels = tuple(round(number * scale) for number in box)
                self.assertLess(looks.darkest_in(picture, pixels), 0.8)


if __name__ == "__main__":
    unittest.main()
