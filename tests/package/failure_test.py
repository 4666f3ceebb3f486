"""Installations that fail half-way, and versions that must not be replaced without a question."""
import subprocess
import sys
import zipfile

import windows_machine as machine
from installation import OWN_KEY, PROXY_KEY, InstallationTest
from packages import NAME, OUTPUT, VERSION

sys.path.insert(0, str(machine.SOURCE / "packaging"))
from payload import make_installer  # noqa: E402


def installer_with(program, content, more=None):
    """Makes an installer in which one program has other bytes.
    @param more  further files and their bytes, by name
    @return its path"""
    stub = OUTPUT / "stub.exe"
    subprocess.run(["x86_64-w64-mingw32-strip", "-o", stub,
                    machine.BUILD / "bin/DaemonManagerSetup.exe"], check=True)
    with zipfile.ZipFile(OUTPUT / f"{NAME}.zip") as archive:
        files = {name.removeprefix(NAME + "/"): archive.read(name) for name in archive.namelist()}
    files["Uninstall.exe"] = stub.read_bytes()
    files.update({program: content, **(more or {})})
    path = OUTPUT / "other-setup.exe"
    path.write_bytes(make_installer(stub.read_bytes(), sorted(files.items())))
    return path


class Failure(InstallationTest):
    def test_a_supervisor_that_does_not_come_up_gives_way_to_the_former_one(self):
        self.install_below_root()
        supervisor = self.supervisor()
        workers = {self.launch_worker(argument) for argument in ("one", "two words")}
        before = (machine.host_path(self.folder) / "DaemonManager.exe").read_bytes()
        # This program ends at once, as a supervisor that cannot start.
        broken = installer_with("DaemonManager.exe",
                                (machine.BUILD / "tests/programs/exits_with.exe").read_bytes())
        code, self.said = machine.call(str(broken), "/S")
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(code, 2, self.said)
        self.assertIn("DaemonManager.exe ended at once", self.said)
        self.assertIn("The former supervisor runs again.", self.said)
        self.assertEqual((machine.host_path(self.folder) / "DaemonManager.exe").read_bytes(), before)
        self.assertEqual(len(machine.processes("DaemonManager.exe")), 1)
        self.assertEqual(machine.processes("no_windows.exe"), workers)
        for daemon in ("0", "1"):
            self.assertEqual(self.daemonctl("detach", daemon)[0], 0)
        left = [entry.name for entry in machine.host_path(self.folder).iterdir() if "~" in entry.name]
        self.assertEqual(left, [])

    def test_a_guard_that_ended_with_the_supervisor_runs_again_with_the_former_one(self):
        self.install_below_root("/AUTOSTART=session")
        self.addCleanup(machine.end_processes, "DaemonGuard.exe")
        self.assertEqual(self.daemonctl("wait", "--for", "supervisor")[0], 0)
        broken = installer_with("DaemonManager.exe",
                                (machine.BUILD / "tests/programs/exits_with.exe").read_bytes())
        code, self.said = machine.call(str(broken), "/S")
        self.assertEqual(code, 2, self.said)
        self.assertIn("The former supervisor runs again.", self.said)
        self.assertEqual(len(machine.processes("DaemonGuard.exe")), 1)

    def test_a_guard_is_started_again_also_if_the_former_supervisor_does_not_come_up(self):
        self.install_below_root("/AUTOSTART=session")
        self.addCleanup(machine.end_processes, "DaemonGuard.exe")
        self.assertEqual(self.daemonctl("wait", "--for", "supervisor")[0], 0)
        no_supervisor = (machine.BUILD / "tests/programs/exits_with.exe").read_bytes()
        former = machine.host_path(self.folder) / "DaemonManager.exe"
        sound = former.read_bytes()
        former.unlink()  # the program that runs keeps its content
        former.write_bytes(no_supervisor)
        code, self.said = machine.call(str(installer_with("DaemonManager.exe", no_supervisor)), "/S")
        self.assertEqual(code, 2, self.said)
        self.assertIn("No supervisor runs now: ", self.said)
        self.assertEqual(len(machine.processes("DaemonGuard.exe")), 1)
        self.wait_for_pause_of_guard(8)
        machine.end_processes("DaemonGuard.exe")
        former.write_bytes(sound)

    def test_a_list_that_is_not_whole_is_deleted_and_the_log_shows_the_daemons(self):
        self.install_below_root()
        supervisor = self.supervisor()
        worker = self.launch_worker("one")
        # This program runs the real one, except for "ps --output": it writes half a list and fails.
        refusing = installer_with("daemonctl.exe",
                                  (machine.BUILD / "tests/programs/forwards.exe").read_bytes(),
                                  {"real.exe": (machine.BUILD / "bin/daemonctl.exe").read_bytes(),
                                   "refuse.txt": b"ps --output"})
        code, self.said = machine.call(str(refusing), "/S")
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(code, 0, self.said)
        self.assertEqual(machine.processes("no_windows.exe"), {worker})
        self.assertEqual(self.daemonctl("detach", "0")[0], 0)
        left = [file.name for file in (machine.host_path(self.ROOT) / "Logs").glob("before-setup-*")]
        self.assertEqual(left, [])

    def test_a_failure_after_the_installation_does_not_deny_it(self):
        broken = installer_with("daemonctl.exe", b"no program")
        code, self.said = machine.call(str(broken), "/S", f"/ROOT={self.ROOT}", "/AUTOSTART=session")
        self.assertEqual(code, 3, self.said)
        self.assertIn("Installed, but not completely. ", self.said)
        self.assertNotIn("Not installed", self.said)
        self.install_below_root()  # mends it, and the end of the test removes it

    def test_the_guard_is_looked_after_also_if_the_hand_over_cannot_be_tried(self):
        self.install_below_root()
        supervisor = self.supervisor()
        # This program renames itself when the new supervisor answers, so the hand-over cannot call it.
        vanishing = installer_with("daemonctl.exe",
                                   (machine.BUILD / "tests/programs/forwards.exe").read_bytes(),
                                   {"real.exe": (machine.BUILD / "bin/daemonctl.exe").read_bytes(),
                                    "vanish.txt": b"detach"})
        code, self.said = machine.call(str(vanishing), "/S")
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(code, 3, self.said)
        # The hand-over, and the start of the guard after that.
        self.assertEqual(self.said.count("Installed, but not completely. "), 2, self.said)
        self.assertNotIn("Not installed", self.said)
        machine.end_processes("DaemonManager.exe")
        self.install_below_root()  # mends it, and the end of the test removes it

    def test_an_installation_that_cannot_unpack_leaves_the_old_supervisor_running(self):
        self.install_below_root()
        supervisor = self.supervisor()
        worker = self.launch_worker("one")
        broken = installer_with("x" * 300, b"a name that is too long for a file")
        code, self.said = machine.call(str(broken), "/S")
        self.assertEqual(code, 2)
        self.assertIn("cannot be written", self.said)
        self.assertEqual(machine.processes("no_windows.exe"), {worker})
        self.assertEqual(self.daemonctl("stop", "0"), (0, "daemon 0 stopped\n"))
        self.assertEqual(self.daemonctl("exit")[0], 0)
        self.assertEqual(supervisor.end(), 0)
        left = [entry.name for entry in machine.host_path(self.folder).iterdir() if "~" in entry.name]
        self.assertEqual(left, [])

    def test_a_first_installation_that_fails_leaves_nothing(self):
        before = machine.snapshot()
        broken = installer_with("DaemonMgrPS.dll", b"no library")
        code, self.said = machine.call(str(broken), "/S", f"/ROOT={self.ROOT}")
        self.assertEqual(code, 2)
        self.assertIn("DaemonMgrPS.dll cannot be registered", self.said)
        after = machine.snapshot()
        self.assertEqual(sorted(name for name in {*before, *after}
                                if before.get(name) != after.get(name)), [])

    def test_a_newer_version_is_replaced_only_on_request(self):
        self.install_below_root()
        machine.run("reg", "add", OWN_KEY, "/v", "DisplayVersion", "/d", "99.0.0", "/f")
        self.assertEqual(self.install(), 2)
        self.assertIn("/DOWNGRADE", self.said)
        self.assertEqual(machine.value(OWN_KEY, "DisplayVersion"), "99.0.0")
        self.assertEqual(self.install("/DOWNGRADE"), 0, self.said)
        self.assertEqual(machine.value(OWN_KEY, "DisplayVersion"), VERSION)

    def test_another_folder_replaces_the_installation_and_leaves_one_supervisor(self):
        self.install_below_root()
        supervisor = self.supervisor()
        former = self.folder
        worker = self.launch_worker("one")
        self.folder = self.ROOT + r"\Programs"
        self.assertEqual(self.install("/D=" + self.folder), 0, self.said)
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(len(machine.processes("DaemonManager.exe")), 1)
        self.assertEqual(len(machine.processes(self.folder + r"\DaemonManager.exe")), 1)
        self.assertEqual(machine.processes("no_windows.exe"), {worker})
        self.assertFalse(machine.host_path(former).exists())
        self.assertIn(self.installed("DaemonMgrPS.dll"), machine.registry(PROXY_KEY))

    def test_the_same_folder_named_in_another_way_keeps_its_new_programs(self):
        self.install_below_root()
        for named in (self.folder.lower(), self.folder.replace("\\", "/"), self.folder + "\\.\\"):
            with self.subTest(named):
                self.assertEqual(self.install("/D=" + named), 0, self.said)
                self.assertTrue(machine.host_path(self.installed("DaemonManager.exe")).exists())
                self.assertTrue(machine.host_path(self.installed("Uninstall.exe")).exists())
                self.assertEqual(machine.value(OWN_KEY, "InstallLocation"), self.folder)
                self.assertIn(self.installed("DaemonMgrPS.dll"), machine.registry(PROXY_KEY))

    def test_an_unknown_option_or_account_is_refused(self):
        self.assertEqual(self.install("/X"), 2)
        self.assertIn("Unknown option: /X", self.said)
        self.assertEqual(self.install(f"/ROOT={self.ROOT}", "/ACCOUNT=nobody of this name"), 2)
        self.assertIn("There is no account nobody of this name.", self.said)
        self.assertFalse(machine.host_path(self.ROOT).exists())

    def test_the_account_of_the_supervisor_is_noted(self):
        self.install_below_root("/ACCOUNT=S-1-5-19")
        self.assertEqual(machine.value(OWN_KEY, "Account"), "S-1-5-19")
