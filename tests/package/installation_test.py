"""Installing on a machine without a supervisor, and removing."""
import re
import shutil

import windows_machine as machine
from installation import (EVENTS_KEY, FIRMWARE_KEY, OLDER_FIRMWARE_KEY, OWN_KEY, PROXY_KEY,
                          InstallationTest)
from packages import VERSION


class Installation(InstallationTest):
    def test_a_new_installation_works_and_its_removal_leaves_nothing(self):
        before = machine.snapshot()
        self.install_below_root()
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), self.ROOT + r"\App")
        self.assertIn(self.folder + r"\DaemonMgrPS.dll", machine.registry(PROXY_KEY))
        self.assertEqual(machine.value(OWN_KEY, "DisplayVersion"), VERSION)
        self.assertEqual(machine.value(EVENTS_KEY, "EventMessageFile"), self.folder + r"\daemonctl.exe")
        self.supervisor()
        self.launch_worker("x")
        self.assertEqual(self.passed_doctor_checks(), {
            "rights", "registry", "app-folder", "log-folder", "proxy", "proxy-users", "key-rights", "autostart",
            "supervisor", "com-security", "wmi", "daemons"})
        self.assertEqual(self.daemonctl("stop", "0"), (0, "daemon 0 stopped\n"))
        self.uninstall()
        self.assertIsNone(machine.registry(EVENTS_KEY))
        self.assertLessEqual(len(list(machine.host_path(self.folder).iterdir())), 1)
        self.assertIsNone(machine.registry(OWN_KEY))
        self.assertEqual(machine.processes("DaemonManager.exe"), set())
        after = machine.snapshot()
        # The uninstaller runs in the folder of the programs: Windows deletes its file and the folder
        # at its next start. The first console on a machine stores its settings in the registry.
        made_by_others = re.compile(r".*/Program Files/DaemonManager(/~removed-[0-9a-f]{16}\.exe)?$"
                                    r"|HKEY_CURRENT_USER\\Console$")
        changed = sorted(name for name in {*before, *after}
                         if before.get(name) != after.get(name) and not made_by_others.match(name))
        self.assertEqual(changed, [])

    def test_an_existing_configuration_and_log_stay_unchanged(self):
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

    def test_the_installer_sets_the_guard_up_and_an_upgrade_starts_it_again(self):
        run_key = r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run"
        self.install_below_root("/AUTOSTART=session")
        self.addCleanup(machine.end_processes, "DaemonGuard.exe")
        self.assertIn("DaemonGuard.exe", str(machine.registry(run_key)))
        self.assertEqual(self.daemonctl("wait", "--for", "supervisor")[0], 0)
        self.launch_worker("x")
        self.assertEqual(self.install(), 0, self.said)
        self.assertEqual(len(machine.processes("DaemonGuard.exe")), 1)
        self.assertEqual(self.daemonctl("wait", "no_windows.exe")[0], 0)
        self.uninstall()
        self.assertNotIn("DaemonGuard.exe", str(machine.registry(run_key)))
        machine.wait_until(lambda: not machine.processes("DaemonGuard.exe"), "the guard ends")

    def test_the_older_registry_key_names_the_root_too(self):
        pathname = self.ROOT + r"\App"
        self.configure(OLDER_FIRMWARE_KEY, "/v", "Pathname", "/d", pathname)
        self.assertEqual(self.install(), 0)
        self.assertIsNone(machine.registry(FIRMWARE_KEY))
        self.uninstall()
        self.assertEqual(machine.value(OLDER_FIRMWARE_KEY, "Pathname"), pathname)

    def test_a_key_without_Pathname_gets_the_root_of_the_older_key(self):
        self.configure(FIRMWARE_KEY)
        self.configure(OLDER_FIRMWARE_KEY, "/v", "Pathname", "/d", self.ROOT + r"\App\bin")
        self.assertEqual(self.install(), 0)
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), self.ROOT + r"\App")
        self.uninstall()
        self.assertIsNotNone(machine.registry(FIRMWARE_KEY))
        self.assertIsNone(machine.value(FIRMWARE_KEY, "Pathname"))

    def test_an_empty_root_is_refused_and_nothing_is_installed(self):
        self.configure(FIRMWARE_KEY, "/v", "Pathname", "/d", r"\App")
        self.assertEqual(self.install(), 2)
        self.assertIsNone(machine.registry(OWN_KEY))
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), r"\App")

    def test_removal_keeps_a_root_that_somebody_changed_after_the_installation(self):
        self.install_below_root()
        self.configure(FIRMWARE_KEY, "/v", "Pathname", "/d", r"C:\other\App")
        self.uninstall()
        self.assertEqual(machine.value(FIRMWARE_KEY, "Pathname"), r"C:\other\App")

    def test_removal_keeps_the_registration_of_another_proxy(self):
        self.install_below_root()
        other = r"C:\other proxy\DaemonMgrPS.dll"
        machine.host_path(r"C:\other proxy").mkdir()
        self.addCleanup(shutil.rmtree, machine.host_path(r"C:\other proxy"), ignore_errors=True)
        shutil.copy(machine.BUILD / "bin/DaemonMgrPS.dll", machine.host_path(other))
        machine.run("regsvr32", "/s", other)
        self.addCleanup(machine.run, "regsvr32", "/s", "/u", other)
        self.uninstall()
        self.assertIn(other, machine.registry(PROXY_KEY))

    def test_removal_keeps_the_log_of_a_root_that_a_second_installation_found(self):
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
