"""The bill of materials."""
import hashlib
import json
import re
import unittest
import zipfile

from packages import NAME, OUTPUT, VERSION

LIBRARIES = ("CLI11", "nlohmann-json", "libstdc++", "libgcc", "libssp", "winpthreads", "mingw-w64-runtime")


class Materials(unittest.TestCase):
    def setUp(self):
        self.bill = json.loads((OUTPUT / f"{NAME}.cdx.json").read_text())
        self.components = {component["bom-ref"]: component for component in self.bill["components"]}
        with zipfile.ZipFile(OUTPUT / f"{NAME}.zip") as archive:
            self.files = {name.removeprefix(NAME + "/"): archive.read(name)
                          for name in archive.namelist()}

    def digest(self, name):
        return self.components[name]["hashes"][0]["content"]

    def used_by(self, name):
        return {used for dependency in self.bill["dependencies"] if dependency["ref"] == name
                for used in dependency["dependsOn"]}

    def test_the_bill_has_the_form_of_its_standard(self):
        self.assertEqual((self.bill["bomFormat"], self.bill["specVersion"]), ("CycloneDX", "1.5"))
        self.assertEqual(self.bill["metadata"]["component"]["version"], VERSION)
        self.assertRegex(self.bill["serialNumber"],
                         r"^urn:uuid:[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
        refs = {*self.components, "DaemonManager"}
        self.assertEqual(len(self.components), len(self.bill["components"]))
        for dependency in self.bill["dependencies"]:
            self.assertLessEqual({dependency["ref"], *dependency["dependsOn"]}, refs)

    def test_the_bill_has_every_file_of_the_packages_with_its_checksum(self):
        for name, content in self.files.items():
            self.assertEqual(self.digest(name), hashlib.sha256(content).hexdigest(), name)
        for name in (f"{NAME}-setup.exe", f"{NAME}.zip"):
            self.assertEqual(self.digest(name), hashlib.sha256((OUTPUT / name).read_bytes()).hexdigest())
        # The installer holds the bytes of the uninstaller, and it alone.
        self.assertEqual(self.used_by("DaemonManager"), {f"{NAME}-setup.exe", f"{NAME}.zip"})
        self.assertIn("Uninstall.exe", self.used_by(f"{NAME}-setup.exe"))
        listed = self.used_by(f"{NAME}.zip") | self.used_by("sdk")
        self.assertEqual(listed, {*self.files, "sdk"})

    def test_every_program_names_the_libraries_that_are_linked_into_it(self):
        for name in [*self.files, "Uninstall.exe"]:
            if name.endswith((".exe", ".dll")):
                self.assertLessEqual({"libgcc", "libssp", "mingw-w64-runtime"}, self.used_by(name), name)
            if name.endswith(".exe"):
                self.assertLessEqual({"libstdc++", "winpthreads"}, self.used_by(name), name)

    def test_every_library_names_its_package_with_distribution_architecture_and_source(self):
        for name in LIBRARIES:
            library = self.components[name]
            self.assertRegex(library["version"], r"^\d+(\.\d+)+$")
            self.assertTrue(library["licenses"][0]["expression"], name)
            self.assertTrue(re.fullmatch(
                r"pkg:deb/debian/[a-z0-9.%B-]+@[^?]+\?arch=(all|amd64)&distro=[a-z]+-[^&]+&upstream=[^&]+",
                library["purl"]), library["purl"])
