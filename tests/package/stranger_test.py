"""Installing while another program wants to be taken for the supervisor, and installing by hand."""
import shutil

import windows_machine as machine
from installation import OWN_KEY, InstallationTest
from packages import NAME, OUTPUT, VERSION

PROGRAMS = machine.BUILD / "tests/programs"
TITLE = f"DaemonManager {VERSION}"
OK, CANCEL = "1", "2"


class Stranger(InstallationTest):
    def tearDown(self):
        machine.end_processes("takes_name.exe")
        super().tearDown()

    def test_a_process_that_only_has_the_name_of_the_supervisor_is_left_alone(self):
        self.install_below_root()
        supervisor = self.supervisor()
        worker = self.launch_worker("one")
        folder = machine.host_path(r"C:\elsewhere")
        folder.mkdir()
        self.addCleanup(shutil.rmtree, folder)
        shutil.copy(PROGRAMS / "no_windows.exe", folder / "DaemonManager.exe")
        with machine.Background(r"C:\elsewhere\DaemonManager.exe"):
            machine.wait_until(lambda: machine.processes(r"elsewhere\DaemonManager.exe"), "the stranger")
            self.assertEqual(self.install(), 0, self.said)
            self.assertEqual(supervisor.end(), 0)
            self.assertEqual(len(machine.processes(r"elsewhere\DaemonManager.exe")), 1)
            self.assertEqual(len(machine.processes(self.installed("DaemonManager.exe"))), 1)
            self.assertEqual(machine.processes("no_windows.exe"), {worker})
            self.assertEqual(self.daemonctl("detach", "0")[0], 0)
            machine.end_processes(r"elsewhere\DaemonManager.exe")

    # It may be a supervisor that keeps its former files.
    def test_a_process_of_the_name_that_hides_its_program_is_named_and_the_exit_code_is_3(self):
        self.install_below_root()
        supervisor = self.supervisor()
        folder = machine.host_path(r"C:\elsewhere")
        folder.mkdir()
        self.addCleanup(shutil.rmtree, folder)
        shutil.copy(PROGRAMS / "hides.exe", folder / "DaemonManager.exe")
        named = r"Process \d+ is named DaemonManager.exe, and Windows does not tell which file it runs"
        with machine.Background(r"C:\elsewhere\DaemonManager.exe") as hidden:
            hidden.wait_for_output("hidden")
            self.assertEqual(self.install("/NOSTART"), 3, self.said)
            self.assertRegex(self.said, named)
            self.assertEqual(supervisor.end(), 0)
            self.assertEqual(self.install(), 3, self.said)
            self.assertRegex(self.said, named)
            code, said = machine.call(self.installed("Uninstall.exe"), "/S")
            self.assertEqual(code, 3, said)
            self.assertRegex(said, named)
            self.is_installed = False
            self.assertEqual(len(machine.processes(r"elsewhere\DaemonManager.exe")), 1)
            machine.end_processes(r"elsewhere\DaemonManager.exe")

    def test_an_object_that_is_published_between_two_supervisors_is_not_believed(self):
        self.install_below_root()
        supervisor = self.supervisor()
        worker = self.launch_worker("one")
        with machine.Background(str(PROGRAMS / "takes_name.exe")) as impostor:
            impostor.wait_for_output("waits")
            code = self.install()
            self.assertEqual(supervisor.end(), 0)
            self.is_installed = True
            impostor.wait_for_output("taken")
            self.assertEqual(code, 2, self.said)
            self.assertIn("DaemonManager.exe ended at once", self.said)
            self.assertIn("No supervisor runs now: ", self.said)
            machine.end_processes("takes_name.exe")
        self.assertEqual(machine.processes("no_windows.exe"), {worker})
        # What the installer says brings the daemon back.
        listing = self.said.split('daemonctl reattach --from "')[1].split('"')[0]
        self.supervisor()
        self.assertEqual(self.daemonctl("reattach", "--outside", "--from", listing)[0], 0)
        self.assertEqual(self.daemonctl("detach", "0")[0], 0)

    def press(self, button):
        self.assertEqual(machine.call(str(PROGRAMS / "presses_button.exe"), TITLE, button)[0], 0)

    def test_installer_and_uninstaller_work_by_their_windows(self):
        setup = str(OUTPUT / f"{NAME}-setup.exe")
        with machine.Background(setup, f"/ROOT={self.ROOT}") as installer:
            self.press(OK)
            self.press(CANCEL)  # can be pressed after the end of the work
            self.assertEqual(installer.end(), 0)
        self.is_installed = True
        self.assertEqual(machine.value(OWN_KEY, "InstallLocation"), self.folder)
        with machine.Background(self.installed("Uninstall.exe")) as uninstaller:
            self.press(OK)
            self.press(CANCEL)
            self.assertEqual(uninstaller.end(), 0)
        self.is_installed = False
        self.assertIsNone(machine.registry(OWN_KEY))

    def test_a_cancelled_installation_changes_nothing(self):
        with machine.Background(str(OUTPUT / f"{NAME}-setup.exe"), f"/ROOT={self.ROOT}") as installer:
            self.press(CANCEL)
            self.assertEqual(installer.end(), 1)
        self.assertIsNone(machine.registry(OWN_KEY))
        self.assertFalse(machine.host_path(self.ROOT).exists())
