"""Rights of the folders, and installing on a disk that somebody else has prepared."""
import shutil

import windows_machine as machine
from installation import OWN_KEY, PROXY_KEY, InstallationTest


class Rights(InstallationTest):
    """Wine keeps owner, the owner's rights and everybody's rights as those of the file on this host."""

    def tearDown(self):
        super().tearDown()
        shutil.rmtree(machine.host_path(r"C:\elsewhere"), ignore_errors=True)

    def everybody(self, windows_path):
        """Returns the rights of everybody: 4 read, 2 write, 1 enter or execute."""
        return machine.host_path(windows_path).stat().st_mode & 0o7

    def make(self, windows_path, mode):
        path = machine.host_path(windows_path)
        path.mkdir(parents=True, exist_ok=True)
        path.chmod(mode)
        return path

    def assert_refused(self, *reasons):
        """Asserts that the installer gave these reasons and changed nothing."""
        for reason in reasons:
            self.assertIn(reason, self.said)
        self.assertFalse(self.is_installed)
        self.assertFalse((machine.host_path(self.folder) / "DaemonManager.exe").exists())
        self.assertIsNone(machine.registry(OWN_KEY))

    def test_everything_that_is_installed_is_sound_and_the_log_is_hidden(self):
        self.install_below_root()
        paths = [self.folder, self.ROOT, self.ROOT + r"\App", self.ROOT + r"\Logs"]
        paths += [self.installed(name) for name in (
            "DaemonManager.exe", "daemonctl.exe", "DaemonMgrPS.dll", "Uninstall.exe", "docs", r"sdk\src")]
        self.assertEqual(self.daemonctl("rights", *paths), (0, "".join(f"ok    {path}\n" for path in paths)))
        for path in paths:
            self.assertEqual(self.everybody(path) & 2, 0, path)
        self.assertEqual(self.everybody(self.ROOT + r"\Logs"), 0)
        self.assertEqual([entry.name for entry in machine.host_path(self.folder).iterdir()
                          if "~" in entry.name], [])

    def test_a_folder_that_everybody_may_change_is_refused_unless_ALLOWWEAK_is_given(self):
        self.make(self.ROOT + r"\App", 0o777)
        self.assertEqual(self.install(f"/ROOT={self.ROOT}"), 2)
        self.assert_refused(rf"Everyone may write to {self.ROOT}\App", "icacls", "/ALLOWWEAK")
        self.assertFalse(machine.host_path(self.folder).exists())  # made, and removed again
        self.install_below_root("/ALLOWWEAK")
        self.assertEqual(self.everybody(self.ROOT + r"\App"), 7)  # is left as it was
        self.assertEqual(machine.value(OWN_KEY, "UninstallString"),
                         f'"{self.folder}\\Uninstall.exe" /ALLOWWEAK')

    def test_a_guard_believes_what_others_may_change_only_if_it_was_set_up_with_ALLOWWEAK(self):
        run_key = r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run"
        self.install_below_root("/NOSTART", "/AUTOSTART=session")
        guard = f'"{self.folder}\\DaemonGuard.exe" --session'
        self.assertEqual(machine.value(run_key, "DaemonGuard"), guard)
        self.make(self.ROOT + r"\App", 0o777)
        self.install_below_root("/NOSTART", "/AUTOSTART=session", "/ALLOWWEAK")
        self.assertEqual(machine.value(run_key, "DaemonGuard"), f"{guard} --trust")

    def test_a_prepared_folder_of_the_programs_is_refused(self):
        self.make(self.folder, 0o777)
        self.assertEqual(self.install(f"/ROOT={self.ROOT}"), 2)
        self.assert_refused(f"Everyone may write to {self.folder}")

    def test_a_new_folder_below_one_that_everybody_may_change_is_refused(self):
        self.make(self.ROOT, 0o777)
        self.assertEqual(self.install(f"/ROOT={self.ROOT}\\inner"), 2)
        self.assert_refused(f"Everyone may write to {self.ROOT}")
        self.assertFalse(machine.host_path(self.ROOT + r"\inner").exists())

    def test_a_link_is_refused_and_nothing_behind_it_is_touched(self):
        target = self.make(r"C:\elsewhere", 0o755)
        (target / "keep.txt").write_text("keep")
        for link in (self.folder, self.ROOT):
            with self.subTest(link):
                path = machine.host_path(link)
                path.symlink_to(target, target_is_directory=True)
                self.assertEqual(self.install(f"/ROOT={self.ROOT}"), 2)
                path.unlink()
                self.assert_refused(f"{link} is a junction or a link")
                self.assertEqual([entry.name for entry in target.iterdir()], ["keep.txt"])

    def test_a_link_inside_the_folder_of_the_programs_is_refused(self):
        target = self.make(r"C:\elsewhere", 0o755)
        (self.make(self.folder, 0o755) / "docs").symlink_to(target, target_is_directory=True)
        self.assertEqual(self.install(f"/ROOT={self.ROOT}"), 2)
        self.assert_refused(rf"{self.folder}\docs is a junction or a link")
        self.assertEqual(list(target.iterdir()), [])

    def test_files_behind_a_link_in_a_former_folder_are_not_deleted(self):
        former = self.ROOT + r"\former"
        self.install_below_root(f"/D={former}")
        target = self.make(r"C:\elsewhere", 0o755)
        for file in machine.host_path(former + r"\docs").iterdir():
            (target / file.name).write_text("of somebody else")
        expected = sorted(file.name for file in target.iterdir())
        self.assertIn("README.md", expected)
        shutil.rmtree(machine.host_path(former + r"\docs"))
        machine.host_path(former + r"\docs").symlink_to(target, target_is_directory=True)
        self.install_below_root(f"/D={self.folder}")
        self.assertIn(rf"The files in {former}\docs stay, because {former}\docs is a junction or a link",
                      self.said)
        self.assertEqual(sorted(file.name for file in target.iterdir()), expected)
        self.assertFalse(machine.host_path(former + r"\DaemonManager.exe").exists())

    def test_a_folder_behind_a_link_in_place_of_the_root_is_not_removed(self):
        self.install_below_root()
        target = self.make(r"C:\elsewhere", 0o755)
        (target / "Logs").mkdir()
        (target / "App").mkdir()
        root = machine.host_path(self.ROOT)
        shutil.rmtree(root)
        root.symlink_to(target, target_is_directory=True)
        self.addCleanup(root.unlink, missing_ok=True)
        code, said = machine.call(self.installed("Uninstall.exe"), "/S")
        self.is_installed = False
        self.assertEqual(code, 3, said)
        for name in ("Logs", "App"):
            self.assertIn(rf"The folder {self.ROOT}\{name} stays, because {self.ROOT} is a junction or a link", said)
        self.assertEqual(sorted(entry.name for entry in target.iterdir()), ["App", "Logs"])

    def test_the_uninstaller_leaves_files_in_a_folder_that_others_may_change(self):
        self.install_below_root()
        self.make(self.installed("docs"), 0o777)
        code, said = machine.call(self.installed("Uninstall.exe"), "/S")
        self.is_installed = False
        self.assertEqual(code, 3, said)
        self.assertIn(f"The files in {self.installed('docs')} stay, because Everyone may write to", said)
        self.assertTrue((machine.host_path(self.installed("docs")) / "README.md").exists())
        self.assertFalse(machine.host_path(self.installed("DaemonManager.exe")).exists())

    def test_a_registered_proxy_that_everybody_may_change_is_refused(self):
        proxy = r"C:\elsewhere\DaemonMgrPS.dll"
        (self.make(r"C:\elsewhere", 0o777) / "DaemonMgrPS.dll").write_bytes(b"")
        self.configure(PROXY_KEY + r"\InprocServer32", "/ve", "/d", proxy)
        self.assertEqual(self.install(f"/ROOT={self.ROOT}"), 2)
        self.assert_refused(f"would load the registered proxy/stub {proxy}", r"C:\elsewhere is not safe",
                            r"Everyone may write to C:\elsewhere", "reg delete")
        command = self.said[self.said.index("reg delete"):].splitlines()[0]
        machine.run("reg", "delete", command.split('"')[1], "/f")
        self.install_below_root()

    def test_a_registered_proxy_that_somebody_could_still_put_there_is_refused(self):
        self.configure(PROXY_KEY + r"\InprocServer32", "/ve", "/d", r"C:\elsewhere\DaemonMgrPS.dll")
        self.assertEqual(self.install(f"/ROOT={self.ROOT}"), 2)
        self.assert_refused(r"C:\elsewhere does not exist", "reg delete")

    def test_the_uninstaller_does_not_load_a_registered_proxy_that_everybody_may_change(self):
        self.install_below_root()
        proxy = r"C:\elsewhere\DaemonMgrPS.dll"
        (self.make(r"C:\elsewhere", 0o777) / "DaemonMgrPS.dll").write_bytes(b"")
        self.configure(PROXY_KEY + r"\InprocServer32", "/ve", "/d", proxy)
        code, said = machine.call(self.installed("Uninstall.exe"), "/S")
        self.assertEqual(code, 2, said)
        for reason in ("Not removed. ", f"would load the registered proxy/stub {proxy}",
                       r"Everyone may write to C:\elsewhere", "reg delete"):
            self.assertIn(reason, said)
        self.assertTrue(machine.host_path(self.installed("DaemonManager.exe")).exists())
        self.configure(PROXY_KEY + r"\InprocServer32", "/ve", "/d", self.installed("DaemonMgrPS.dll"))

    def test_an_installation_whose_proxy_is_missing_is_mended(self):
        self.install_below_root()
        machine.host_path(self.installed("DaemonMgrPS.dll")).unlink()
        self.install_below_root()
        self.assertTrue(machine.host_path(self.installed("DaemonMgrPS.dll")).exists())

    def test_doctor_looks_at_the_programs_that_an_administrator_runs(self):
        self.install_below_root()
        for name in ("Uninstall.exe", "daemonctl.exe"):
            machine.host_path(self.installed(name)).chmod(0o777)
        _, output = self.daemonctl("doctor")
        for name in ("Uninstall.exe", "daemonctl.exe"):
            self.assertIn(f"Everyone may write to {self.installed(name)}", output)

    def test_what_others_may_change_below_app_and_below_the_programs_is_said_and_stays(self):
        libraries = []
        for folder in (self.ROOT + r"\App\plugins", self.folder + r"\plugins"):
            libraries.append(self.make(folder, 0o755) / "a.dll")
            libraries[-1].write_text("of somebody else")
            libraries[-1].chmod(0o666)
        self.install_below_root()
        said = self.said
        _, output = self.daemonctl("doctor")
        for folder, library in zip((self.ROOT + r"\App", self.folder), libraries):
            with self.subTest(folder):
                weakness = rf"Everyone may write to {folder}\plugins\a.dll"
                self.assertIn("Warning: " + weakness, said)
                self.assertIn(weakness, output)
                self.assertEqual(library.read_text(), "of somebody else")
        shutil.rmtree(machine.host_path(self.folder + r"\plugins"))

    def test_who_else_may_read_the_log_is_said(self):
        self.make(self.ROOT + r"\Logs", 0o755)
        self.install_below_root()
        self.assertIn(rf"Everyone may read {self.ROOT}\Logs", self.said)

    def test_a_log_that_everybody_may_write_is_refused(self):
        log = self.make(self.ROOT + r"\Logs", 0o755) / "DaemonManager.log"
        log.write_bytes(b"0x00000010 forged\r\n")
        log.chmod(0o666)
        self.assertEqual(self.install(f"/ROOT={self.ROOT}"), 2)
        self.assert_refused(rf"Everyone may write to {self.ROOT}\Logs\DaemonManager.log")

    def test_a_key_that_a_user_prepared_does_not_get_the_registration(self):
        mine = r"HKCU\Software\Classes\CLSID\{C307E9F6-67C0-4C74-B1BD-37EFB9882701}"
        machine.run("reg", "add", mine + r"\InprocServer32", "/ve", "/d", r"C:\mine.dll", "/f")
        self.addCleanup(machine.run, "reg", "delete", mine, "/f")
        self.install_below_root()
        self.assertIn(r"C:\mine.dll", machine.registry(mine))
        machine_key = mine.replace("HKCU", "HKLM")
        self.assertIn(self.installed("DaemonMgrPS.dll"), machine.registry(machine_key))
        self.uninstall()
        self.assertIsNone(machine.registry(machine_key))
        self.assertIn(r"C:\mine.dll", machine.registry(mine))

    def test_files_that_somebody_left_in_the_folder_are_not_deleted(self):
        left = self.make(self.folder + r"\~new", 0o755) / "left.txt"
        left.write_text("left")
        self.install_below_root()
        self.uninstall()
        self.assertEqual(left.read_text(), "left")

    def test_the_temporary_folder_is_not_used(self):
        temporary = machine.host_path(machine.run("cmd", "/c", "echo %TEMP%").strip())
        changed = temporary.stat().st_mtime_ns  # a file that is made and removed changes it, too
        self.install_below_root()
        self.uninstall()
        self.assertEqual(temporary.stat().st_mtime_ns, changed)
