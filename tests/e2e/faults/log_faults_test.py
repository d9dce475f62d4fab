"""What may befall a log behind the back of the program: with its window open and shut, and while
a runner writes."""

import os
import re
import unittest

from amounts import amount
from fault_case import AS_ANYBODY, BLOCKED, CONNECTED, FaultCase, content, kind_of, make_fifo
from support import puppet
from support.log_page import LogPage
from support.puppet import DECLARED, entry
from support.side_by_side import load_tests  # noqa: F401
from support.waiting import spend, wait_until
from support.window_case import WindowCase

# The log is looked at once a second.
POLL = 1.0

TRUNCATIONS = amount(200, 20)
RENAMINGS = amount(200, 20)


class LogFaultCase(FaultCase):
    has_windows = True

    def begin(self, **options):
        """A daemon that has said something, which the log window shows."""
        self.puppets, = self.puppet_runners({})
        self.path = os.path.join(self.puppets.data_folder, "valdorn.log")
        WindowCase.begin(self, **options)
        self.puppets.wait_for_one()
        self.page = LogPage(self)
        self.page.wait_for_lines(DECLARED)

    def say(self, *lines):
        """What the daemon says still tells of it, whatever has become of the log."""
        self.puppets.say(*lines, puppet.BLOCKED)
        self.wait_for_status(BLOCKED)
        self.puppets.say(DECLARED)
        self.wait_for_status(CONNECTED)

    def assert_shown(self, *lines):
        """After the next look at the file, which holds nothing up."""
        spend(1.5 * POLL)
        self.assertEqual(self.page.lines(), list(lines))

    def reopen(self):
        self.close_window()
        self.page = LogPage(self)

    def launch_anew(self):
        daemon = self.puppets.wait_for_one()
        self.stop_runner()
        self.menu.choose("Start Runner")
        self.assertNotEqual(self.puppets.wait_for_one(), daemon)
        self.wait_for_status(CONNECTED)


class ReplacedTest(LogFaultCase):
    def test_one_that_was_renamed_is_written_until_the_next_launch(self):
        self.begin()
        os.rename(self.path, self.path + ".1")
        open(self.path, "w").close()
        self.say(entry("later"))
        # Who has opened the old one goes on writing there; who reads looks at the name.
        self.assertEqual(content(self.path + ".1"),
                         DECLARED + entry("later") + puppet.BLOCKED + DECLARED)
        self.page.wait_for_lines()
        self.assertEqual(content(self.path), "")
        self.launch_anew()
        self.page.wait_for_lines(DECLARED)
        self.assertEqual(content(self.path), DECLARED)

    def test_one_that_was_emptied_goes_on_at_its_new_end(self):
        self.begin()
        os.truncate(self.path, 0)
        self.page.wait_for_lines()
        self.say(entry("later"))
        # At the new end, with no hole before it.
        self.page.wait_for_lines(entry("later"), puppet.BLOCKED, DECLARED)
        self.assertEqual(content(self.path), entry("later") + puppet.BLOCKED + DECLARED)

    def test_one_that_was_removed_is_made_by_the_next_launch(self):
        self.begin()
        os.remove(self.path)
        self.say(entry("later"))
        self.assert_shown(DECLARED)
        self.assertFalse(os.path.lexists(self.path))
        self.reopen()
        self.assert_shown()
        self.launch_anew()
        self.page.wait_for_lines(DECLARED)
        self.assertEqual(content(self.path), DECLARED)

    def test_a_link_to_another_file_is_followed(self):
        self.begin()
        target = os.path.join(self.home.path, "elsewhere.log")
        with open(target, "w") as file:
            file.write("short\n")
        os.remove(self.path)
        os.symlink(target, self.path)
        self.page.wait_for_lines("short\n")
        self.launch_anew()
        self.page.wait_for_lines("short\n", DECLARED)
        self.assertEqual(content(target), "short\n" + DECLARED)
        self.assertEqual(kind_of(self.path), "link")


class NoFileTest(LogFaultCase):
    """What is no file is neither read nor written, and holds nobody up."""

    def befall(self, make, **options):
        self.begin(**options)
        make(self.path)
        self.say(entry("later"))
        self.assert_shown(DECLARED)
        self.reopen()
        self.assert_shown()
        self.launch_anew()
        self.say(entry("later still"))
        self.assert_shown()

    def mend(self):
        os.remove(self.path)
        self.launch_anew()
        self.page.wait_for_lines(DECLARED)
        self.quit()

    def test_a_folder_is_neither_read_nor_written(self):
        def make(path):
            os.remove(path)
            os.mkdir(path)
        self.befall(make)
        self.assertEqual(os.listdir(self.path), [])
        os.rmdir(self.path)
        open(self.path, "w").close()
        self.mend()

    def test_a_named_pipe_is_neither_read_nor_written(self):
        self.befall(make_fifo)
        self.assertEqual(kind_of(self.path), "pipe")
        self.mend()

    def test_a_named_pipe_that_somebody_reads_gets_nothing(self):
        readers = []

        def make(path):
            make_fifo(path)
            readers.append(os.open(path, os.O_RDONLY | os.O_NONBLOCK))
            self.addCleanup(os.close, readers[0])
        self.befall(make)
        self.assertEqual(os.read(readers[0], 1), b"")

    def link_to(self, device):
        def make(path):
            os.remove(path)
            os.symlink(device, path)
        self.befall(make)
        self.assertEqual(os.readlink(self.path), device)
        self.mend()

    def test_a_link_to_a_device_that_is_full_holds_nobody_up(self):
        self.link_to("/dev/full")

    def test_a_link_to_a_device_without_end_is_not_read(self):
        self.link_to("/dev/zero")

    def test_a_link_to_itself_holds_nobody_up(self):
        self.link_to("valdorn.log")

    def test_a_file_that_nobody_may_touch_is_done_without(self):
        self.befall(lambda path: os.chmod(path, 0), command=AS_ANYBODY)
        os.chmod(self.path, 0o600)
        # The first daemon's lines went where they had gone before.
        self.assertEqual(content(self.path),
                         DECLARED + entry("later") + puppet.BLOCKED + DECLARED)


class WhileWrittenTest(FaultCase):
    """A daemon that writes all the time: each line is whole and written once."""

    # A thousand of them take longer than what is done meanwhile.
    STEP = "line Error: {:05}\nwait " + amount("12ms", "4ms") + "\n"

    def begin(self):
        self.home.install_runner()
        steps = "".join(map(self.STEP.format, range(1000)))
        (record,) = self.home.add_runners({}, script=steps + "declare\nhang\n")
        self.home.set_default("hasConnected", "true")
        self.path = os.path.join(self.home.data_folder(record), "valdorn.log")
        self.start_program()
        wait_until(lambda: os.path.exists(self.path) and content(self.path), "a first line")
        self.assertNotIn("declare successfully", content(self.path))

    @staticmethod
    def numbers(text):
        """Of the whole lines; the last of all is the declaration."""
        lines = text.splitlines(keepends=True)
        for line in lines:
            if not re.fullmatch(r"Error: \d{5}\n", line) and "declare successfully" not in line:
                raise AssertionError(f"not a whole line: {line!r}")
        return [int(line[7:12]) for line in lines if line.startswith("Error:")]

    def test_one_that_is_emptied_again_and_again_holds_whole_lines(self):
        self.begin()
        for _ in range(TRUNCATIONS):
            os.truncate(self.path, 0)
            spend(0.02)
            numbers = self.numbers(content(self.path))
            self.assertEqual(numbers, sorted(set(numbers)))
        self.wait_for_status(CONNECTED)
        numbers = self.numbers(content(self.path))
        self.assertEqual(numbers, list(range(1000 - len(numbers), 1000)))

    def test_one_that_is_renamed_again_and_again_loses_no_line(self):
        self.begin()
        for number in range(RENAMINGS):
            os.rename(self.path, f"{self.path}.{number}")
            open(self.path, "w").close()
            spend(0.02)
        self.wait_for_status(CONNECTED)
        # The daemon that was launched before writes to the file it has.
        self.assertEqual(self.numbers(content(self.path + ".0")), list(range(1000)))
        self.assertEqual(content(self.path), "")


if __name__ == "__main__":
    unittest.main()
