"""Remembers which test programs passed, and with which bytes.

A test that names its files (the ctest property REQUIRED_FILES) need not run again while the program,
these files and the scripts that run it are the same byte for byte. Other tests always run.
"""
import hashlib
import json
import os
import pathlib

RUNNERS = ("tools/wine-run", "tools/wine-prefix")


class Memory:
    def __init__(self, path):
        self.path = path
        self.digests = {}
        try:
            self.keys = json.loads(path.read_text(encoding="utf-8"))
        except (OSError, ValueError):
            self.keys = {}

    def passed(self, test):
        key = self.key(test)
        return key is not None and self.keys.get(test["name"]) == key

    def note(self, test, good):
        key = self.key(test)
        if good and key is not None:
            self.keys[test["name"]] = key
        else:
            self.keys.pop(test["name"], None)

    def save(self):
        self.path.parent.mkdir(parents=True, exist_ok=True)
        self.path.write_text(json.dumps(self.keys, indent=1, sort_keys=True), encoding="utf-8")

    def key(self, test):
        """None: the test does not say what it depends on."""
        files = next((item["value"] for item in test.get("properties", ())
                      if item["name"] == "REQUIRED_FILES"), None)
        if not files:
            return None
        digest = hashlib.sha256(json.dumps(test["command"]).encode())
        digest.update(os.environ.get("DM_WINE_POOL", "").encode())  # of another Wine
        paths = [pathlib.Path(word) for word in (*test["command"], *files, *RUNNERS)]
        for path in sorted({path for path in paths if path.is_file()}):
            digest.update(self.digest(path))
        return digest.hexdigest()

    def digest(self, path):
        if path not in self.digests:
            self.digests[path] = hashlib.sha256(path.read_bytes()).digest()
        return self.digests[path]
