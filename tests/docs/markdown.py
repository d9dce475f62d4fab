"""What stands in the Markdown documents: blocks of code, code within text, links and pictures."""

import os
import re
from typing import NamedTuple

SOURCE = os.environ["VALDORN_SOURCE"]
_LEFT_OUT = ("build", ".git")


class Block(NamedTuple):
    """Fenced code: the language that is named behind the fence, and the lines."""
    language: str
    lines: list


class Document:
    def __init__(self, path):
        self.name = os.path.relpath(path, SOURCE)
        with open(path, encoding="utf-8") as file:
            self.text = file.read()
        self.blocks = [Block(language, body.splitlines()) for language, body in
                       re.findall(r"^```(.*)\n((?:.*\n)*?)```$", self.text, re.MULTILINE)]
        self.prose = re.sub(r"^```.*\n(?:.*\n)*?```$", "", self.text, flags=re.MULTILINE)

    def inline_code(self):
        return re.findall(r"`([^`]+)`", self.prose)

    def links(self):
        """Where links and pictures lead to."""
        return re.findall(r"\]\(([^)\s]+)\)", self.prose)

    def pictures(self):
        return re.findall(r"!\[[^\]]*\]\(([^)\s]+)\)", self.prose)

    def has_indented_code(self):
        """An indented line after an empty one, outside of lists."""
        return re.search(r"(?:^|\n)\n {4,}\S", re.sub(r"^(?:-|\d+\.) .*\n(?:(?: .*)?\n)*", "",
                                                       self.prose, flags=re.MULTILINE))

    def path(self, link):
        """The file that a link of this document leads to."""
        return os.path.normpath(os.path.join(SOURCE, os.path.dirname(self.name),
                                             link.partition("#")[0]))


def documents():
    found = []
    for folder, subfolders, names in os.walk(SOURCE):
        subfolders[:] = [name for name in subfolders if not name.startswith(_LEFT_OUT)]
        found += [Document(os.path.join(folder, name)) for name in names if name.endswith(".md")]
    return sorted(found, key=lambda document: document.name)


def document(name):
    return Document(os.path.join(SOURCE, name))
