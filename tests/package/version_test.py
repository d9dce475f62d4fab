"""The version stands in several files, each in its own form; the project's counts. Those that
are documents are compared in tests/docs."""

import os
import re
import unittest
import xml.etree.ElementTree
from datetime import datetime

SOURCE = os.environ["VALDORN_SOURCE"]
ID = "org.valdorn.valdorn"


def read(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
        return file.read()


def newest_release():
    metainfo = xml.etree.ElementTree.fromstring(read(f"resources/desktop/{ID}.metainfo.xml"))
    return metainfo.find("releases")[0]


def newest_change():
    """Version and date of the first entry."""
    change = read("resources/debian/changelog")
    version = re.match(r"valdorn \((.*)\) ", change).group(1)
    date = re.search(r"^ -- .*>  \w{3}, (\d+ \w{3} \d{4}) ", change, re.MULTILINE).group(1)
    return version, date


class VersionTest(unittest.TestCase):
    def setUp(self):
        project = re.search(r"project\(valdorn VERSION (\S+) ", read("CMakeLists.txt"))
        self.version = project.group(1)

    def test_the_change_log_begins_with_it(self):
        self.assertEqual(newest_change()[0], self.version)

    def test_the_newest_release_is_it(self):
        self.assertEqual(newest_release().get("version"), self.version)

    def test_the_release_has_the_change_logs_date(self):
        day = datetime.strptime(newest_change()[1], "%d %b %Y").strftime("%Y-%m-%d")
        self.assertEqual(newest_release().get("date"), day)

    def test_the_package_bears_it(self):
        self.assertEqual(os.path.basename(os.environ["VALDORN_PACKAGE"]).split("_")[:2],
                         ["valdorn", self.version])


if __name__ == "__main__":
    unittest.main()
