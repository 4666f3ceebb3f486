"""The files of the packages."""
import hashlib
import os
import pathlib
import re
import tempfile
import unittest
import zipfile

from packages import NAME, OUTPUT, VERSION, pack
from windows_machine import SOURCE


class Packages(unittest.TestCase):
    def setUp(self):
        self.zip = zipfile.ZipFile(OUTPUT / f"{NAME}.zip")
        self.addCleanup(self.zip.close)

    def test_the_zip_holds_the_programs_the_client_library_documents_and_licences(self):
        names = [name.removeprefix(NAME + "/") for name in self.zip.namelist()]
        documents = [path.relative_to(SOURCE).as_posix() for pattern in ("*.md", "fleet/*", "schemas/*")
                     for path in (SOURCE / "docs").glob(pattern)]
        self.assertEqual(sorted(names), sorted([
            "CHANGELOG.md",
            "DaemonGuard.exe",
            "DaemonManager.exe",
            "DaemonMgrPS.dll",
            "daemonctl.exe",
            *documents,
            "licenses/cli11.txt",
            "licenses/gcc.txt",
            "licenses/mingw-w64.txt",
            "licenses/nlohmann-json.txt",
            "sdk/cmake/DaemonManagerSdkConfig.cmake",
            "sdk/cmake/DaemonManagerSdkConfigVersion.cmake",
            "sdk/examples/CMakeLists.txt",
            "sdk/examples/attach_itself.cpp",
            "sdk/examples/launch_program.cpp",
            "sdk/idl/IDaemonMgrControl.idl",
            "sdk/include/IDaemonMgrControl.h",
            "sdk/include/ObjectOrigin.h", "sdk/include/OwnedInterface.h",
            "sdk/include/daemon_manager/AnswererIdentity.h",
            "sdk/include/daemon_manager/ArgumentRules.h",
            "sdk/include/daemon_manager/ComApartment.h",
            "sdk/include/daemon_manager/SupervisorClient.h",
            "sdk/include/daemon_manager/SupervisorIdentity.h",
            "sdk/src/IDaemonMgrControl_i.c",
            "sdk/src/SupervisorClient.cpp",
            "sdk/src/AnswererIdentity.cpp",
            "sdk/src/ArgumentRules.cpp",
            "sdk/src/OwnedHandle.h",
            "sdk/src/SidText.h",
            "sdk/src/SupervisorIdentity.cpp",
        ]))

    def test_every_link_of_a_document_leads_to_a_file_of_the_package(self):
        names = {name.removeprefix(NAME + "/") for name in self.zip.namelist()}
        names |= {parent.as_posix() for name in names for parent in pathlib.PurePosixPath(name).parents}
        for document in (name for name in names if name.endswith(".md")):
            text = self.zip.read(f"{NAME}/{document}").decode()
            for target in re.findall(r"\]\(([^)#\s]+)", text):
                if ":" not in target:
                    path = os.path.normpath(os.path.join(os.path.dirname(document), target))
                    self.assertIn(path, names, f"{document} refers to {target}")

    def test_no_file_contains_a_path_of_the_build_machine(self):
        for name in self.zip.namelist():
            self.assertNotIn(str(SOURCE).encode(), self.zip.read(name), name)

    def test_packages_made_in_another_folder_have_equal_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            again = pack(pathlib.Path(folder) / "again")
            for file in (f"{NAME}.zip", f"{NAME}-setup.exe", f"{NAME}.cdx.json", "SHA256SUMS"):
                self.assertEqual((again / file).read_bytes(), (OUTPUT / file).read_bytes(), file)

    def test_the_checksums_match_the_packages(self):
        lines = [line.split("  ") for line in (OUTPUT / "SHA256SUMS").read_text().splitlines()]
        self.assertEqual([name for _, name in lines],
                         [f"{NAME}.zip", f"{NAME}-setup.exe", f"{NAME}.cdx.json"])
        for checksum, name in lines:
            self.assertEqual(hashlib.sha256((OUTPUT / name).read_bytes()).hexdigest(), checksum)

