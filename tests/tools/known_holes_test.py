"""Tests tools/known-holes with package lists of the test's own."""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools/known-holes"

LISTED = """{name}:
  Installed: {version}
  Candidate: {candidate}
  Version table:
     {candidate} 500
        500 http://an.archive/debian release/main amd64 Packages
 *** {version} 100
        100 /var/lib/dpkg/status
"""


class KnownHoles(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def look(self, policy, *purls):
        """Runs the tool with an apt-cache that prints this. @return exit code and output"""
        apt_cache = self.folder / "apt-cache"
        apt_cache.write_text(f"#!/bin/sh\ncat <<'END'\n{policy}END\n")
        apt_cache.chmod(0o755)
        bill = self.folder / "bill.json"
        bill.write_text(json.dumps({"components": [{"purl": purl} for purl in purls] + [{"name": "own"}]}))
        result = subprocess.run([TOOL, bill], capture_output=True, text=True, check=False,
                                env={**os.environ, "PATH": f"{self.folder}:{os.environ['PATH']}"})
        return result.returncode, result.stdout

    def test_a_newer_package_is_found(self):
        policy = LISTED.format(name="libx-dev", version="1.0+ds-1", candidate="1.0+ds-1+deb12u1")
        code, output = self.look(policy, "pkg:deb/debian/libx-dev@1.0%2Bds-1?arch=all")
        self.assertEqual(code, 1)
        self.assertIn("libx-dev 1.0+ds-1: REPAIRED in 1.0+ds-1+deb12u1\n", output)

    def test_the_newest_package_is_no_finding(self):
        policy = LISTED.format(name="libx-dev", version="1.0-1", candidate="1.0-1")
        code, output = self.look(policy, "pkg:deb/debian/libx-dev@1.0-1?arch=all")
        self.assertEqual((code, output.splitlines()[0]), (0, "libx-dev 1.0-1: nothing newer"))
        self.assertIn("Not looked for: ", output)

    def test_without_package_lists_the_tool_says_that_it_cannot(self):
        policy = ("libx-dev:\n  Installed: 1.0-1\n  Candidate: 1.0-1\n  Version table:\n"
                  " *** 1.0-1 100\n        100 /var/lib/dpkg/status\n")
        code, output = self.look(policy, "pkg:deb/debian/libx-dev@1.0-1?arch=all")
        self.assertEqual(code, 0)
        self.assertIn("libx-dev 1.0-1: CANNOT BE LOOKED UP", output)

    def test_a_package_of_another_release_is_not_compared_with_this_release(self):
        policy = LISTED.format(name="libx-dev", version="1.0-1", candidate="2.0-1")
        code, output = self.look(policy, "pkg:deb/debian/libx-dev@1.0-1?arch=all&distro=debian-1")
        self.assertEqual(code, 0)
        self.assertIn("libx-dev 1.0-1: CANNOT BE LOOKED UP: it is of debian-1, this machine of ", output)

    def test_the_age_of_the_package_lists_is_shown(self):
        output = self.look(LISTED.format(name="libx-dev", version="1.0-1", candidate="1.0-1"),
                           "pkg:deb/debian/libx-dev@1.0-1?arch=all")[1]
        self.assertRegex(output, r"\nThe (newest package list of this machine is of \d{4}-\d\d-\d\d|package lists .* are missing)\.\n")

    def test_a_missing_bill_is_an_error(self):
        result = subprocess.run([TOOL, self.folder / "none"], capture_output=True, check=False)
        self.assertEqual(result.returncode, 2)


if __name__ == "__main__":
    unittest.main()
