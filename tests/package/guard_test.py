"""What the installer and the uninstaller do with a guard, in which order."""
import shutil

import windows_machine as machine
from installation import OWN_KEY, InstallationTest

RUN_KEY = r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run"
SERVICE_KEY = r"HKLM\SYSTEM\CurrentControlSet\Services\DaemonGuard"


class Guarding(InstallationTest):
    def install_guard(self):
        self.install_below_root("/AUTOSTART=session")
        self.addCleanup(machine.end_processes, "DaemonGuard.exe")
        self.assertEqual(self.daemonctl("wait", "--for", "supervisor")[0], 0)

    def write_fleet(self, path):
        worker = machine.windows_path(machine.BUILD / "tests/programs/no_windows.exe")
        machine.host_path(path).write_text(f'"{worker}"\n', encoding="utf-8")

    def let_the_guard_wait(self):
        """Makes the supervisor fail at every start, so that the guard waits between two starts."""
        self.assertEqual(self.daemonctl("exit")[0], 0)
        machine.wait_until(lambda: not machine.processes("DaemonGuard.exe"), "the guard ends")
        shutil.rmtree(machine.host_path(self.ROOT) / "App")
        self.assertEqual(self.daemonctl("autostart", "start")[0], 0)
        self.wait_for_pause_of_guard(8)

    def put_a_witness_in_the_place_of_daemonctl(self, refused, code=4):
        """Puts a program in the place of daemonctl that notes all calls, and refuses one.
        @param code  the exit code of the call that is refused
        @return a function that puts daemonctl back, and returns the calls"""
        folder = machine.host_path(self.folder)
        (folder / "daemonctl.exe").rename(folder / "real.exe")
        shutil.copy(machine.BUILD / "tests/programs/forwards.exe", folder / "daemonctl.exe")
        (folder / "refuse.txt").write_text(refused, encoding="utf-8")
        (folder / "refuse_code.txt").write_text(str(code), encoding="utf-8")

        def put_back():
            calls = (folder / "calls.txt").read_text(encoding="utf-8").splitlines()
            (folder / "real.exe").replace(folder / "daemonctl.exe")
            return [call.split(" --output ")[0] for call in calls]
        return put_back

    def test_removal_ends_the_supervisor_first_and_starts_the_guard_again_if_it_stays_set_up(self):
        self.install_guard()
        worker = self.launch_worker("stays")
        before = machine.processes("DaemonGuard.exe")
        put_back = self.put_a_witness_in_the_place_of_daemonctl("autostart remove")
        code, said = machine.call(self.installed("Uninstall.exe"), "/S")
        calls = put_back()
        self.assertEqual(code, 2, said)
        self.assertIn("The guard is still set up.", said)
        self.assertEqual(calls, ["ps", "exit", "autostart remove", "autostart start"])
        self.assertIsNotNone(machine.registry(OWN_KEY))
        self.assertIn("DaemonGuard.exe", str(machine.registry(RUN_KEY)))
        # The machine is guarded as before, and the worker has its supervisor again.
        self.assertEqual(self.daemonctl("wait", "--for", "supervisor")[0], 0)
        self.assertEqual(self.daemonctl("wait", "no_windows.exe")[0], 0)
        self.assertEqual(len(machine.processes("DaemonGuard.exe")), 1)
        self.assertNotEqual(machine.processes("DaemonGuard.exe"), before)
        self.assertEqual(machine.processes("no_windows.exe"), {worker})

    def test_removal_stops_a_service_whose_supervisor_is_not_found_in_this_session(self):
        self.install_below_root("/AUTOSTART=service")
        self.addCleanup(machine.end_processes, "DaemonGuard.exe")
        self.assertEqual(self.daemonctl("wait", "--for", "supervisor")[0], 0)
        worker = self.launch_worker("stays")
        # Wine has one session, so a witness gives the answer that a desktop gets.
        put_back = self.put_a_witness_in_the_place_of_daemonctl("exit", code=3)
        code, said = machine.call(self.installed("Uninstall.exe"), "/S", "/KEEPLOG")
        put_back()
        self.assertEqual(code, 0, said)
        self.is_installed = False
        self.assertEqual(machine.processes("DaemonManager.exe"), set())
        self.assertIn(worker, machine.processes("no_windows.exe"))
        self.assertIn(b"its daemons run on", self.log_of("DaemonGuard"))

    def test_removal_ends_a_guard_that_waits_between_two_starts(self):
        self.install_guard()
        self.let_the_guard_wait()
        self.uninstall()
        self.assertEqual(machine.processes("DaemonGuard.exe"), set())
        self.assertEqual(machine.processes("DaemonManager.exe"), set())
        self.assertNotIn("DaemonGuard.exe", str(machine.registry(RUN_KEY)))
        self.assertFalse((machine.host_path(self.folder) / "DaemonGuard.exe").exists())

    def test_an_upgrade_replaces_a_guard_that_waits_between_two_starts(self):
        self.install_guard()
        self.let_the_guard_wait()
        before = machine.processes("DaemonGuard.exe")
        self.assertEqual(self.install(), 0, self.said)
        after = machine.processes("DaemonGuard.exe")
        self.assertEqual(len(after), 1)
        self.assertEqual(before & after, set())
        self.assertEqual(self.daemonctl("wait", "--for", "supervisor")[0], 0)

    def test_an_upgrade_with_AUTOSTART_keeps_the_fleet_file_and_the_trust(self):
        fleet = self.ROOT + r"\App\my fleet.txt"
        options = f'--fleet "{fleet}" --trust'
        guard = f'"{self.folder}\\DaemonGuard.exe"'
        self.install_below_root("/NOSTART")
        self.write_fleet(fleet)
        self.assertEqual(self.daemonctl("autostart", "install", "--session", "--no-start", "--trust",
                                        "--fleet", fleet)[0], 0)
        self.assertEqual(machine.value(RUN_KEY, "DaemonGuard"), f"{guard} --session {options}")
        self.assertEqual(self.install("/NOSTART", "/AUTOSTART=session"), 0, self.said)
        self.assertIn("the guard starts when a user logs on", self.said)
        self.assertIn("daemonctl: warning: Windows logs no user on by itself", self.said)
        self.assertEqual(machine.value(RUN_KEY, "DaemonGuard"), f"{guard} --session {options}")
        self.assertEqual(self.install("/NOSTART", "/AUTOSTART=service"), 0, self.said)
        self.assertEqual(machine.value(SERVICE_KEY, "ImagePath"), f"{guard} --service {options}")

    def test_a_guard_runs_again_also_if_its_fleet_file_is_gone_at_the_upgrade(self):
        self.install_guard()
        fleet = self.ROOT + r"\App\my fleet.txt"
        self.write_fleet(fleet)
        self.assertEqual(self.daemonctl("autostart", "install", "--session", "--no-start",
                                        "--fleet", fleet)[0], 0)
        machine.host_path(fleet).unlink()
        before = machine.processes("DaemonGuard.exe")
        self.assertEqual(self.install("/AUTOSTART=session"), 3, self.said)
        self.assertIn(f"{fleet} does not exist", self.said)
        self.assertIn(fleet, machine.value(RUN_KEY, "DaemonGuard"))
        after = machine.processes("DaemonGuard.exe")
        self.assertEqual(len(after), 1)
        self.assertEqual(before & after, set())

    def test_an_upgrade_without_a_start_says_that_it_ended_a_guard_that_waits(self):
        self.install_guard()
        self.let_the_guard_wait()
        self.assertEqual(self.install("/NOSTART"), 0, self.said)
        self.assertEqual(machine.processes("DaemonGuard.exe"), set())
        self.assertIn("The guard was ended, too. To start it: daemonctl autostart start\n", self.said)
