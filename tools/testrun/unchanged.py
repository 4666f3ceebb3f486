"""Remembers which test programs passed, and with which bytes.

A test that names its files (the ctest property REQUIRED_FILES) need not run again while the program,
these files and the scripts that run it are the same byte for byte. Other tests always run.

A test can say which of the programs that are handed out it is about (labels about-PROGRAM, see
dm_unit_test). The others it only needs.
"""
import hashlib
import json
import os
import pathlib
import re

RUNNERS = ("tools/wine-run", "tools/wine-prefix")
HANDED_OUT = re.compile(r"/build/[^/]+/bin/[^/]+$")


ABOUT = "about-"


def property_of(test, name):
    for item in test.get("properties", ()):
        if item["name"] == name:
            return item["value"]
    return None


class Memory:
    def __init__(self, path):
        self.path = path
        self.digests = {}
        try:
            self.keys = json.loads(path.read_text(encoding="utf-8"))
        except (OSError, ValueError):
            self.keys = {}

    def passed(self, test):
        """Whether the test passed with all files as they are."""
        return self._is_noted(test, "all", self.key(test))

    def only_others_changed(self, test):
        """Whether the test passed, and since then only programs that it is not about have changed."""
        return not self.passed(test) and self._is_noted(test, "own", self.key(test, own=True))

    def note(self, test, good):
        key = self.key(test)
        if good and key is not None:
            self.keys[test["name"]] = {"all": key, "own": self.key(test, own=True)}
        else:
            self.keys.pop(test["name"], None)

    def save(self):
        self.path.parent.mkdir(parents=True, exist_ok=True)
        self.path.write_text(json.dumps(self.keys, indent=1, sort_keys=True), encoding="utf-8")

    def key(self, test, own=False):
        """A checksum of what the test depends on; own: without the programs that it is not about. None: the
        test does not say what it depends on."""
        files = property_of(test, "REQUIRED_FILES")
        if not files:
            return None
        digest = hashlib.sha256(json.dumps(test["command"]).encode())
        digest.update(os.environ.get("DM_WINE_POOL", "").encode())  # of another Wine
        paths = {pathlib.Path(word) for word in (*test["command"], *files, *RUNNERS)}
        if own:
            paths -= programs_of_others(test, files)
        for path in sorted(path for path in paths if path.is_file()):
            digest.update(self.digest(path))
        return digest.hexdigest()

    def digest(self, path):
        if path not in self.digests:
            self.digests[path] = hashlib.sha256(path.read_bytes()).digest()
        return self.digests[path]

    def _is_noted(self, test, kind, key):
        noted = self.keys.get(test["name"])
        return key is not None and isinstance(noted, dict) and noted.get(kind) == key


def programs_of_others(test, files):
    """The programs that are handed out (those in the folder bin of a build) and that the test is not about."""
    about = {label[len(ABOUT):] for label in property_of(test, "LABELS") or () if label.startswith(ABOUT)}
    if not about:
        return set()
    handed_out = {pathlib.Path(file) for file in files if HANDED_OUT.search(file)}
    return {path for path in handed_out if path.stem not in about}
