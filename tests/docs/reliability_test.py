"""Whether the tests that docs/reliability.md names are there."""

import os
import re
import unittest

from markdown import SOURCE, document

FILE = re.compile(r"`(tests/[^`]+)`")
NAME = re.compile(r"`(\w+)\.(\w+)`")


def rows():
    """The cells of each row of the tables, without their heads."""
    lines = [line for line in document("docs/reliability.md").text.splitlines()
             if line.startswith("| ") and not line.startswith("| fault |")]
    return [[cell.strip() for cell in line.strip("|").split("|")] for line in lines]


def has(file, group, test):
    with open(os.path.join(SOURCE, file), encoding="utf-8") as opened:
        text = opened.read()
    if file.endswith(".cpp"):
        return re.search(rf"^TEST(?:_F|_P)?\({group}, {test}\)", text, re.MULTILINE)
    found = re.search(rf"^class {group}\b.*?(?=^class |\Z)", text, re.MULTILINE | re.DOTALL)
    return found and re.search(rf"^    def {test}\(", found.group(), re.MULTILINE)


class ReliabilityTest(unittest.TestCase):
    def test_each_named_test_is_there(self):
        self.assertTrue(rows())
        for row in rows():
            with self.subTest(row[0]):
                self.assertEqual(len(row), 5)
                file, = FILE.findall(row[-1])
                names = NAME.findall(FILE.sub("", row[-1]))
                self.assertTrue(names)
                for group, test in names:
                    self.assertTrue(has(file, group, test), f"{file}: {group}.{test}")

    def test_each_test_of_the_folder_is_named(self):
        text = document("docs/reliability.md").text
        folder = "tests/e2e/faults"
        for name in os.listdir(os.path.join(SOURCE, folder)):
            if name.endswith("_test.py"):
                self.assertIn(f"`{folder}/{name}`", text)


if __name__ == "__main__":
    unittest.main()
