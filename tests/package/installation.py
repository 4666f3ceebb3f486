"""The base of the tests that install the package."""
import json
import shutil
import subprocess
import unittest

import windows_machine as machine
from packages import NAME, OUTPUT

OWN_KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager"
FIRMWARE_KEY = r"HKLM\SOFTWARE\UnitWarden\CurrentVersion"
OLDER_FIRMWARE_KEY = r"HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion"
EVENTS_KEY = r"HKLM\SYSTEM\CurrentControlSet\Services\EventLog\Application\DaemonManager"
PROXY_KEY = r"HKLM\Software\Classes\CLSID\{C307E9F6-67C0-4C74-B1BD-37EFB9882701}"


class InstallationTest(unittest.TestCase):
    """Installs the package on the Windows machine, and removes it after the test."""

    ROOT = r"C:\My Firmware"

    def setUp(self):
        self.folder = r"C:\Program Files\DaemonManager"
        self.is_installed = False
        self.said = ""

    def tearDown(self):
        machine.end_processes("no_windows.exe")
        machine.end_processes("attach_itself.exe")
        try:
            if self.is_installed:
                self.uninstall()
        finally:  # the next test must not find what a failure left
            machine.end_processes("DaemonManager.exe")
            for folder in (self.ROOT, self.folder):
                shutil.rmtree(machine.host_path(folder), ignore_errors=True)

    def configure(self, key, *value):
        """Makes a registry key that exists before the installation, until the end of the test."""
        machine.run("reg", "add", key, *value, "/f")
        self.addCleanup(machine.call, "reg", "delete", key.rsplit("\\", 1)[0], "/f")

    def install(self, *options):
        """Runs the installer without windows. What it says is in self.said. @return its exit code"""
        setup = OUTPUT / f"{NAME}-setup.exe"
        code, self.said = machine.call(str(setup), "/S", *options)
        self.is_installed = self.is_installed or code == 0
        return code

    def install_below_root(self, *options):
        self.assertEqual(self.install(f"/ROOT={self.ROOT}", *options), 0, self.said)

    def uninstall(self, *options):
        code, said = machine.call(self.installed("Uninstall.exe"), "/S", *options)
        self.assertEqual(code, 0, said)
        self.is_installed = False

    def installed(self, name):
        return f"{self.folder}\\{name}"

    def daemonctl(self, *arguments):
        return machine.call(self.installed("daemonctl.exe"), *arguments)

    def supervisor(self):
        """Starts the installed supervisor and waits until it answers."""
        supervisor = machine.Background(self.installed("DaemonManager.exe"))
        self.addCleanup(supervisor.__exit__)
        supervisor.wait_for_output("Deamon Thread started")
        machine.wait_until(lambda: self.daemonctl("detach", "4294967295")[0] == 1, "an answer of the supervisor")
        return supervisor

    def log_of(self, program):
        return (machine.host_path(self.ROOT) / f"Logs/{program}.log").read_bytes()

    def wait_for_pause_of_guard(self, seconds):
        """Waits until the guard waits between two starts of a supervisor that fails at every start.
        A guard that is terminated while it makes a process may leave a process that never runs."""
        pause = f"Next start of the supervisor in {seconds} s".encode()
        machine.wait_until(lambda: pause in self.log_of("DaemonGuard"), "the guard waits")

    def launch_worker(self, argument):
        """Launches a worker and waits until the log has its start. @return its process id"""
        worker = machine.windows_path(machine.BUILD / "tests/programs/no_windows.exe")
        before = machine.processes("no_windows.exe")
        code, output = self.daemonctl("launch", worker, argument)
        self.assertEqual(code, 0, output)
        log = machine.host_path(self.ROOT) / "Logs/DaemonManager.log"
        started = f"Start DaemonId({output.strip()})".encode()
        machine.wait_until(lambda: started in log.read_bytes(), "the start of the worker in the log")
        workers = set()

        def is_alone():  # while Wine starts the host of its console, two processes have its command line
            nonlocal workers
            workers = machine.processes("no_windows.exe") - before
            return len(workers) == 1
        machine.wait_until(is_alone, "the worker as one process")
        return workers.pop()

    def passed_doctor_checks(self):
        """Returns the names of the checks that doctor passes. Leaves out the checks of the firewall
        and of error dialogs, because their results depend on Wine. file-rights does not pass, because
        the worker lies on drive Z:, which is a link of the host."""
        code, output = self.daemonctl("doctor", "--json")
        self.assertIn(code, (0, 1), output)
        return {check["check"] for check in json.loads(output)["checks"]
                if check["verdict"] == "ok" and check["check"] not in
                ("firewall-service", "firewall-rules", "crash-dialogs", "error-boxes")}

    def examples(self):
        """Builds the examples with the installed library, once for all tests.
        @return the folder with the programs"""
        folder = OUTPUT / "examples"
        if folder.exists():
            return folder
        folder.mkdir()
        sdk = machine.host_path(self.folder) / "sdk"
        with open(folder / "log", "w+", encoding="utf-8") as log:
            for command in (
                    ["cmake", "-S", sdk / "examples", "-B", folder, "-G", "Ninja",
                     f"-DCMAKE_TOOLCHAIN_FILE={machine.SOURCE}/cmake/mingw-w64.cmake",
                     f"-DDaemonManagerSdk_ROOT={sdk}", "-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=NEVER",
                     "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror"],
                    ["cmake", "--build", folder]):
                if subprocess.run(command, stdout=log, stderr=log, check=False).returncode != 0:
                    log.seek(0)
                    self.fail(log.read())
        return folder
