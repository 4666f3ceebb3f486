"""The files of the repository, and the form of a finding."""
import pathlib
from dataclasses import dataclass

SKIPPED_FOLDERS = {".git", "build", "found", "__pycache__"}


@dataclass(frozen=True, order=True)
class Finding:
    """One place that breaks one rule."""
    rule: str
    place: str  # path, and the line where there is one
    text: str

    def __str__(self):
        return f"{self.place}: {self.text} [{self.rule}]"


class Tree:
    """A repository on disk. Paths are relative to its root and use forward slashes."""

    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.files = sorted(self._walk(self.root))
        self._texts = {}

    def _walk(self, folder):
        for path in folder.iterdir():
            if path.name in SKIPPED_FOLDERS:
                continue
            if path.is_dir() and not path.is_symlink():
                yield from self._walk(path)
            elif path.is_file():
                yield path.relative_to(self.root).as_posix()

    def below(self, *folders):
        """The files below these folders."""
        prefixes = tuple(folder + "/" for folder in folders)
        return [path for path in self.files if path.startswith(prefixes)]

    def text(self, path):
        """The text of a file; None if the file is not text."""
        if path not in self._texts:
            content = (self.root / path).read_bytes()
            try:
                self._texts[path] = None if b"\0" in content else content.decode("utf-8")
            except UnicodeDecodeError:
                self._texts[path] = None
        return self._texts[path]


def folder_of(path):
    return path.rpartition("/")[0]


def name_of(path):
    return path.rpartition("/")[2]


def line_of(text, offset):
    return text.count("\n", 0, offset) + 1
