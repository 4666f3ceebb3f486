"""The packages, tried as they are handed out."""
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

import windows_machine as machine

SOURCE = machine.SOURCE
VERSION = os.environ["DM_VERSION"]
NAME = f"DaemonManager-{VERSION}-win64"
OUTPUT = machine.BUILD / "package-test/packages"

OWN_KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager"
FIRMWARE_KEY = r"HKLM\SOFTWARE\UnitWarden\CurrentVersion"
OLDER_FIRMWARE_KEY = r"HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion"
PROXY_KEY = r"HKLM\Software\Classes\CLSID\{C307E9F6-67C0-4C74-B1BD-37EFB9882701}"


def pack(folder):
    """Makes the packages of the programs that are built. @return the folder that holds them"""
    shutil.rmtree(folder, ignore_errors=True)
    subprocess.run(["cpack", "--config", machine.BUILD / "CPackConfig.cmake", "-B",
                    folder / "cpack"], check=True, stdout=subprocess.DEVNULL)
    return folder


def setUpModule():
    pack(OUTPUT)
    machine.start()


def tearDownModule():
    machine.stop()


class Packages(unittest.TestCase):
    def setUp(self):
        self.zip = zipfile.ZipFile(OUTPUT / f"{NAME}.zip")
        self.addCleanup(self.zip.close)

    def test_the_zip_holds_the_programs_the_client_library_documents_and_licences(self):
        names = [name.removeprefix(NAME + "/") for name in self.zip.namelist()]
        documents = [path.relative_to(SOURCE).as_posix() for path in (SOURCE / "docs").glob("*.md")]
        self.assertEqual(sorted(names), sorted([
            "CHANGELOG.md",
            "DaemonManager.exe",
            "DaemonMgrPS.dll",
            "daemonctl.exe",
            *documents,
            "licenses/cli11.txt",
            "licenses/gcc.txt",
            "licenses/mingw-w64.txt",
            "licenses/nlohmann-json.txt",
            "licenses/nsis.txt",
            "sdk/cmake/DaemonManagerSdkConfig.cmake",
            "sdk/cmake/DaemonManagerSdkConfigVersion.cmake",
            "sdk/examples/CMakeLists.txt",
            "sdk/examples/attach_itself.cpp",
            "sdk/examples/launch_program.cpp",
            "sdk/idl/IDaemonMgrControl.idl",
            "sdk/include/IDaemonMgrControl.h",
            "sdk/include/daemon_manager/ComApartment.h",
            "sdk/include/daemon_manager/SupervisorClient.h",
            "sdk/src/IDaemonMgrControl_i.c",
            "sdk/src/SupervisorClient.cpp",
        ]))

    def test_no_document_refers_to_what_is_not_there(self):
        names = {name.removeprefix(NAME + "/") for name in self.zip.namelist()}
        names |= {parent.as_posix() for name in names for parent in pathlib.PurePosixPath(name).parents}
        for document in (name for name in names if name.endswith(".md")):
            text = self.zip.read(f"{NAME}/{document}").decode()
            for target in re.findall(r"\]\(([^)#\s]+)", text):
                if ":" not in target:
                    path = os.path.normpath(os.path.join(os.path.dirname(document), target))
                    self.assertIn(path, names, f"{document} refers to {target}")

    def test_programs_need_nothing_but_windows_and_carry_no_debug_information(self):
        for name in ("DaemonManager.exe", "daemonctl.exe", "DaemonMgrPS.dll"):
            content = self.zip.read(f"{NAME}/{name}")
            self.assertNotIn(b".debug_info", content, name)
            for library in (b"libstdc++", b"libgcc_s", b"libwinpthread"):
                self.assertNotIn(library, content, name)

    def test_no_file_names_the_machine_that_made_it(self):
        for name in self.zip.namelist():
            self.assertNotIn(str(SOURCE).encode(), self.zip.read(name), name)

    def test_packing_elsewhere_gives_the_same_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            again = pack(pathlib.Path(folder) / "again")
            for file in (f"{NAME}.zip", f"{NAME}-setup.exe", f"{NAME}.cdx.json", "SHA256SUMS"):
                self.assertEqual((again / file).read_bytes(), (OUTPUT / file).read_bytes(), file)

    def test_checksums_are_those_of_the_packages(self):
        lines = [line.split("  ") for line in (OUTPUT / "SHA256SUMS").read_text().splitlines()]
        self.assertEqual([name for _, name in lines],
                         [f"{NAME}.zip", f"{NAME}-setup.exe", f"{NAME}.cdx.json"])
        for checksum, name in lines:
            self.assertEqual(hashlib.sha256((OUTPUT / name).read_bytes()).hexdigest(), checksum)

    def test_the_bill_of_materials_names_what_is_inside(self):
        bill = json.loads((OUTPUT / f"{NAME}.cdx.json").read_text())
        self.assertEqual((bill["bomFormat"], bill["specVersion"]), ("CycloneDX", "1.5"))
        self.assertEqual(bill["metadata"]["component"]["version"], VERSION)
        self.assertRegex(bill["serialNumber"], r"^urn:uuid:[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
        components = {component["bom-ref"]: component for component in bill["components"]}
        for name in ("DaemonManager.exe", "daemonctl.exe", "DaemonMgrPS.dll",
                     "sdk/src/SupervisorClient.cpp"):
            content = self.zip.read(f"{NAME}/{name}")
            self.assertEqual(components[name]["hashes"][0]["content"],
                             hashlib.sha256(content).hexdigest(), name)
        for name in ("CLI11", "nlohmann-json", "libstdc++", "libgcc", "winpthreads",
                     "mingw-w64-runtime", "nsis"):
            self.assertRegex(components[name]["version"], r"^\d+(\.\d+)+$")
            self.assertTrue(components[name]["licenses"][0]["expression"], name)
        refs = {*components, "DaemonManager"}
        for dependency in bill["dependencies"]:
            self.assertLessEqual({dependency["ref"], *dependency["dependsOn"]}, refs)


class Installation(unittest.TestCase):
    ROOT = r"C:\My Firmware"

    def setUp(self):
        self.folder = self.ROOT + r"\App\DaemonManager"
        self.is_installed = False

    def tearDown(self):
        machine.end_processes("no_windows.exe")
        machine.end_processes("attach_itself.exe")
        if self.is_installed:
            self.uninstall()
        machine.end_processes("DaemonManager.exe")
        shutil.rmtree(machine.host_path(self.ROOT), ignore_errors=True)

    def configure(self, key, *value):
        """Makes a key of an earlier configuration, for the time of the test."""
        machine.run("reg", "add", key, *value, "/f")
        self.addCleanup(machine.call, "reg", "delete", key.rsplit("\\", 1)[0], "/f")

    def install(self, *options):
        """@return the installer's exit code"""
        setup = OUTPUT / f"{NAME}-setup.exe"
        code, _ = machine.call(str(setup), "/S", *options)
        self.is_installed = code == 0
        return code

    def install_below_root(self, *options):
        self.assertEqual(self.install(f"/ROOT={self.ROOT}", *options), 0)

    def uninstall(self, *options):
        self.assertEqual(machine.call(self.installed("Uninstall.exe"), "/S", *options)[0], 0)
        # The uninstaller goes on in a copy of itself: it cannot delete the program that runs.
        machine.wait_until(lambda: not machine.processes(r"\Un.exe"), "the end of the uninstaller")
        self.is_installed = False

    def installed(self, name):
        return f"{self.folder}\\{name}"

    def daemonctl(self, *arguments):
        return machine.call(self.installed("daemonctl.exe"), *arguments)

    def supervisor(self):
        """Starts the installed supervisor; returns when it answers."""
        supervisor = machine.Background(self.installed("DaemonManager.exe"))
        self.addCleanup(supervisor.__exit__)
        supervisor.wait_for_output("Deamon Thread started")
        machine.wait_until(lambda: self.daemonctl("detach", "4294967295")[0] == 1, "its answer")
        return supervisor

    def launch_worker(self, argument):
        """Has the supervisor start a worker; returns when that is in the log. @return its process"""
        worker = machine.windows_path(machine.BUILD / "tests/programs/no_windows.exe")
        before = machine.processes("no_windows.exe")
        code, output = self.daemonctl("launch", worker, argument)
        self.assertEqual(code, 0, output)
        machine.wait_until(lambda: machine.processes("no_windows.exe") - before, "the worker")
        log = machine.host_path(self.ROOT) / "Logs/DaemonManager.log"
        started = f"Start DaemonId({output.strip()})".encode()
        machine.wait_until(lambda: started in log.read_bytes(), "its start in the log")
        return (machine.processes("no_windows.exe") - before).pop()

    def what_doctor_finds_well(self):
        """Its checks of this machine's firewall and error dialogs, which are Wine's, apart."""
        code, output = self.daemonctl("doctor", "--json")
        self.assertIn(code, (0, 1), output)
        return {check["check"] for check in json.loads(output)["checks"]
                if check["verdict"] == "ok" and check["check"] not in
                ("firewall-service", "firewall-rules", "crash-dialogs", "error-boxes")}

    def test_a_fresh_one_works_and_its_removal_leaves_nothing_behind(self):
        before = machine.snapshot()
        self.install_below_root()
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), self.ROOT + r"\App")
        self.assertIn(self.folder + r"\DaemonMgrPS.dll", machine.registry(PROXY_KEY))
        self.assertEqual(machine.value(OWN_KEY, "DisplayVersion"), VERSION)
        self.supervisor()
        self.launch_worker("x")
        self.assertEqual(self.what_doctor_finds_well(), {
            "rights", "registry", "app-folder", "log-folder", "proxy", "supervisor", "wmi"})
        self.assertEqual(self.daemonctl("stop", "0"), (0, "daemon 0 stopped\n"))
        self.uninstall()
        self.assertIsNone(machine.registry(OWN_KEY))
        self.assertEqual(machine.processes("DaemonManager.exe"), set())
        after = machine.snapshot()
        # The copy that the uninstaller ran in goes when Windows starts the next time, and the first
        # console on a machine writes down its settings.
        not_ours = re.compile(r".*/Temp/~nsu[^/]*(/.*)?$|HKEY_CURRENT_USER\\Console$")
        changed = sorted(name for name in {*before, *after}
                         if before.get(name) != after.get(name) and not not_ours.match(name))
        self.assertEqual(changed, [])

    def test_an_existing_configuration_and_log_are_left_alone(self):
        log = machine.host_path(self.ROOT) / "Logs/DaemonManager.log"
        log.parent.mkdir(parents=True)
        log.write_bytes(b"0x00000010 what was logged before\r\n")
        status = log.stat()
        pathname = self.ROOT + r"\App\bin"
        self.configure(FIRMWARE_KEY, "/v", "Pathname", "/d", pathname)
        self.assertEqual(self.install(r"/ROOT=C:\elsewhere"), 0)
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), pathname)
        self.assertEqual(machine.value(OWN_KEY, "InstallLocation"), self.folder)
        self.assertFalse(machine.host_path(r"C:\elsewhere").exists())
        self.uninstall()
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), pathname)
        self.assertEqual(log.read_bytes(), b"0x00000010 what was logged before\r\n")
        self.assertEqual(log.stat().st_mtime_ns, status.st_mtime_ns)

    def test_the_older_registry_key_counts_as_a_configuration(self):
        pathname = self.ROOT + r"\App"
        self.configure(OLDER_FIRMWARE_KEY, "/v", "Pathname", "/d", pathname)
        self.assertEqual(self.install(), 0)
        self.assertIsNone(machine.registry(FIRMWARE_KEY))
        self.uninstall()
        self.assertEqual(machine.value(OLDER_FIRMWARE_KEY, "Pathname"), pathname)

    def test_a_key_without_a_value_gets_the_older_keys_root(self):
        self.configure(FIRMWARE_KEY)
        self.configure(OLDER_FIRMWARE_KEY, "/v", "Pathname", "/d", self.ROOT + r"\App\bin")
        self.assertEqual(self.install(), 0)
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), self.ROOT + r"\App")
        self.uninstall()
        self.assertIsNotNone(machine.registry(FIRMWARE_KEY))
        self.assertIsNone(machine.value(FIRMWARE_KEY, "Pathname"))

    def test_a_configuration_that_names_nothing_is_refused_and_nothing_is_installed(self):
        self.configure(FIRMWARE_KEY, "/v", "Pathname", "/d", r"\App")
        self.assertEqual(self.install(), 2)
        self.assertIsNone(machine.registry(OWN_KEY))
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), r"\App")

    def test_a_root_that_was_changed_since_stays(self):
        self.install_below_root()
        self.configure(FIRMWARE_KEY, "/v", "Pathname", "/d", r"C:\other\App")
        self.uninstall()
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), r"C:\other\App")

    def test_removal_ends_the_supervisor_and_no_worker_and_keeps_the_log_if_asked_to(self):
        self.install_below_root()
        supervisor = self.supervisor()
        worker = self.launch_worker("stays")
        self.uninstall("/KEEPLOG")
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(machine.processes("no_windows.exe"), {worker})
        log = machine.host_path(self.ROOT) / "Logs/DaemonManager.log"
        self.assertIn(b"Deamon Thread is exiting...", log.read_bytes())

    def test_another_installations_proxy_stays_registered(self):
        self.install_below_root()
        other = machine.windows_path(machine.BUILD / "bin/DaemonMgrPS.dll")
        machine.run("regsvr32", "/s", other)
        self.addCleanup(machine.run, "regsvr32", "/s", "/u", other)
        self.uninstall()
        self.assertIn(other, machine.registry(PROXY_KEY))

    def test_a_running_supervisor_is_replaced_and_its_daemons_run_on(self):
        self.install_below_root()
        supervisor = self.supervisor()
        workers = {self.launch_worker(argument) for argument in ("one", "two", "three words")}
        code = self.install()
        self.assertEqual(supervisor.end(), 0)
        if code != 0:  # what the installer was told, told again
            self.fail(f"{code}: {self.daemonctl('reattach')} {self.daemonctl('ps')}")
        self.assertEqual(len(machine.processes("DaemonManager.exe")), 1)
        self.assertEqual(machine.processes("no_windows.exe"), workers)
        # They are the new one's, which took them over as attached ones.
        for daemon in ("0", "1", "2"):
            self.assertEqual(self.daemonctl("detach", daemon),
                             (0, f"daemon {daemon} detached, its process runs on\n"))
        self.assertEqual(self.daemonctl("detach", "3")[0], 1)

    def test_one_that_cannot_be_unpacked_leaves_the_old_supervisor_running(self):
        self.install_below_root()
        supervisor = self.supervisor()
        worker = self.launch_worker("one")
        in_its_way = machine.host_path(self.folder) / "~new/DaemonManager.exe"
        in_its_way.mkdir(parents=True)
        code = self.install()
        self.is_installed = True
        self.assertEqual(code, 2)
        self.assertEqual(machine.processes("no_windows.exe"), {worker})
        self.assertEqual(self.daemonctl("stop", "0"), (0, "daemon 0 stopped\n"))
        self.assertEqual(self.daemonctl("exit")[0], 0)
        self.assertEqual(supervisor.end(), 0)
        self.assertFalse(in_its_way.exists())

    def test_a_log_of_another_root_stays_although_the_installation_was_renewed_for_it(self):
        self.install_below_root()
        log = machine.host_path(r"C:\other") / "Logs/DaemonManager.log"
        log.parent.mkdir(parents=True)
        self.addCleanup(shutil.rmtree, machine.host_path(r"C:\other"), ignore_errors=True)
        log.write_bytes(b"0x00000010 what was logged there\r\n")
        self.configure(FIRMWARE_KEY, "/v", "Pathname", "/d", r"C:\other\App")
        self.assertEqual(self.install(), 0)
        self.uninstall()
        self.assertEqual(log.read_bytes(), b"0x00000010 what was logged there\r\n")
        self.assertFalse((machine.host_path(self.ROOT) / "Logs").exists())

    def test_examples_build_from_the_installed_library_and_work(self):
        self.install_below_root()
        supervisor = self.supervisor()
        examples = self.examples()
        worker = machine.windows_path(machine.BUILD / "tests/programs/no_windows.exe")
        launch = [f"{examples}/launch_program.exe", worker, "two words"]
        self.assertEqual(machine.call(*launch), (0, "daemon 0 is started and kept running\n"))
        self.assertEqual(machine.call(*launch), (0, "daemon 0 is registered already\n"))
        with machine.Background(f"{examples}/attach_itself.exe") as itself:
            itself.wait_for_output("attached as daemon 1\n")
            itself.send_line()
            self.assertEqual(itself.end(), 0)
            self.assertEqual(itself.output(), "attached as daemon 1\ndetached\n")
        self.assertEqual(self.daemonctl("exit")[0], 0)
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(machine.call(*launch), (1, "start DaemonManager.exe first\n"))

    def test_a_worker_that_has_the_proxy_loaded_does_not_hold_an_update_up(self):
        self.install_below_root()
        supervisor = self.supervisor()
        with machine.Background(f"{self.examples()}/attach_itself.exe") as itself:
            itself.wait_for_output("attached as daemon 0\n")
            self.assertEqual(self.install("/NOSTART"), 0)
            self.assertEqual(supervisor.end(), 0)
            self.assertEqual(machine.processes("DaemonManager.exe"), set())
            self.assertEqual(len(machine.processes("attach_itself.exe")), 1)
        self.supervisor()  # with the new proxy

    def examples(self):
        """Builds the examples with the installed library, once. @return the folder of the programs"""
        folder = OUTPUT / "examples"
        if folder.exists():
            return folder
        folder.mkdir()
        sdk = machine.host_path(self.folder) / "sdk"
        with open(folder / "log", "w+", encoding="utf-8") as log:
            for command in (
                    ["cmake", "-S", sdk / "examples", "-B", folder, "-G", "Ninja",
                     f"-DCMAKE_TOOLCHAIN_FILE={SOURCE}/cmake/mingw-w64.cmake",
                     f"-DDaemonManagerSdk_ROOT={sdk}", "-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=NEVER",
                     "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror"],
                    ["cmake", "--build", folder]):
                if subprocess.run(command, stdout=log, stderr=log, check=False).returncode != 0:
                    log.seek(0)
                    self.fail(log.read())
        return folder


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
