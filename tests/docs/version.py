"""The version of the project: the one that all others are compared with."""

import os
import re

from markdown import SOURCE

with open(os.path.join(SOURCE, "CMakeLists.txt"), encoding="utf-8") as _file:
    VERSION = re.search(r"project\(valdorn VERSION (\S+) ", _file.read()).group(1)
