"""A home folder to run a document's commands in, with the program on its PATH."""

import os
import shutil
import subprocess
import tempfile


class Sandbox:
    def __init__(self):
        self.home = tempfile.mkdtemp(prefix="valdorn-docs.")
        self.programs = self.make_folder("bin")
        os.symlink(os.environ["VALDORN_PROGRAM"], os.path.join(self.programs, "valdorn"))

    def make_folder(self, path):
        folder = os.path.join(self.home, path)
        os.makedirs(folder, exist_ok=True)
        return folder

    def write(self, path, text, executable=False):
        full = os.path.join(self.home, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with open(full, "w", encoding="utf-8") as file:
            file.write(text)
        if executable:
            os.chmod(full, 0o755)

    def read(self, path):
        with open(os.path.join(self.home, path), encoding="utf-8") as file:
            return file.read()

    def files(self, path=""):
        """All below the folder, by their paths in it."""
        top = os.path.join(self.home, path)
        return sorted(os.path.relpath(os.path.join(folder, name), top)
                      for folder, _, names in os.walk(top) for name in names)

    def run(self, command, folder=""):
        """As somebody types it; the finished process."""
        environment = {name: value for name, value in os.environ.items()
                       if not name.startswith(("XDG_", "GIT_", "VALDORN_", "PYTHON"))}
        environment.update(HOME=self.home, LC_ALL="C.UTF-8",
                           PATH=f"{self.programs}:{os.environ['PATH']}")
        return subprocess.run(["bash", "-c", command], cwd=os.path.join(self.home, folder),
                              env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, timeout=60)

    def close(self):
        shutil.rmtree(self.home, ignore_errors=True)
