"""Knows from tests/unit and tests/integration which test program is meant for which source."""
import pathlib
import re

from layout import lists
from layout.tree import folder_of, name_of

PROGRAM = re.compile(r"dm_(?:unit|integration)_test\(\s*(\w+)([^)]*)\)")


def programs_of_files(root):
    """@return test file -> names of the programs that it belongs to"""
    found = {}
    for lists_file in sorted((root / "tests").rglob("CMakeLists.txt")):
        folder = lists_file.parent.relative_to(root).as_posix()
        for name, words in PROGRAM.findall(lists_file.read_text(encoding="utf-8")):
            for word in words.split():
                if word.endswith("Test.cpp"):
                    found.setdefault(f"{folder}/{word}", set()).add(name)
    return found


def owners(root, paths):
    """@return source -> names of the programs with the tests of this source"""
    by_file = programs_of_files(pathlib.Path(root))
    result = {}
    for path in paths:
        folder, stem = folder_of(path), name_of(path).partition(".")[0]
        tests = f"tests/unit/{folder.removeprefix('src/')}/"
        cover = lists.TESTED_BY.get(f"{folder}/{stem}.cpp")
        result[path] = {name for file, names in by_file.items() for name in names
                        if file == cover or file.startswith(tests + stem)}
    return result
