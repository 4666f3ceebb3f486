"""Tests the test kit with a few small programs: in a folder far from the repository, in a Wine prefix of its
own. Afterwards nothing may be left: the drive and the registry are compared before and after.
"""
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

SOURCE = pathlib.Path(os.environ["DM_SOURCE"])
sys.path.insert(0, str(SOURCE / "tests/package"))

import windows_machine as machine  # noqa: E402

BUILD = pathlib.Path(os.environ["DM_BUILD"])
# Registry, services and child programs.
SMALL = ["unit_cpp_utils", "unit_system_installation", "unit_daemonctl_process_windows"]
ROOT_KEY = r"HKLM\SOFTWARE\UnitWarden\CurrentVersion"
# Keys and values that tests make, and remove unless they are killed.
LEFT_VALUES = [(r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run", "DaemonGuard"),
               (r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager", "Account"),
               (r"HKLM\SYSTEM\CurrentControlSet\Services\DaemonGuard", "of a test"),
               (r"HKLM\SOFTWARE\Microsoft\Ole", "MachineAccessRestriction"),
               (r"HKLM\SOFTWARE\DmMachineKeyTest\inner", "number"),
               (r"HKCU\Software\DaemonManagerKitTest", "new"),
               (r"HKCU\Software\prepared classes of this test\CLSID", "x")]


def pack(folder):
    """Makes a kit of the small programs. @return its folder"""
    subprocess.run([sys.executable, "-B", SOURCE / "tests/kit/pack.py", "--build", BUILD, "--output", folder,
                    "--version", os.environ["DM_VERSION"], "--strip", os.environ["DM_STRIP"],
                    "--no-zip", "--only", *SMALL], check=True)
    return next(pathlib.Path(folder).iterdir()).rename(pathlib.Path(folder) / "kit")


class Kit(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.folder = pack(cls.temporary.name)
        cls.runner = machine.windows_path(cls.folder / "run-tests.exe")
        cls.before = machine.snapshot()
        cls.manifest = json.loads((cls.folder / "manifest.json").read_text(encoding="utf-8"))

    @classmethod
    def tearDownClass(cls):
        cls.temporary.cleanup()

    def setUp(self):
        (self.folder / "manifest.json").write_text(json.dumps(self.manifest), encoding="utf-8")
        shutil.rmtree(self.folder / "report", ignore_errors=True)

    def tearDown(self):
        for program in ("run-tests.exe", *SMALL):
            machine.end_processes(program)

    def report(self):
        return json.loads((self.folder / "report/report.json").read_text(encoding="utf-8"))

    def use(self, *programs):
        """Replaces the programs of the kit: (name, program, arguments, limit in seconds)."""
        entries = [{"name": name, "program": program, "arguments": arguments, "locks": [],
                    "timeoutSeconds": limit, "cost": 0, "takesLong": False, "googleTest": False}
                   for name, program, arguments, limit in programs]
        (self.folder / "manifest.json").write_text(
            json.dumps({**self.manifest, "programs": entries}), encoding="utf-8")

    def expect_nothing_left(self):
        after = machine.snapshot()
        changed = {name for name in self.before.keys() | after.keys()
                   if self.before.get(name) != after.get(name)}
        self.assertEqual(changed, set())
        self.assertFalse((self.folder / "work").exists())
        self.assertFalse((self.folder / "undo.json").exists())

    def test_green_report_and_nothing_left(self):
        code, output = machine.call(self.runner, "--yes")
        self.assertEqual(code, 0, output)
        self.assertIn("3 programs passed", output)
        report = self.report()
        self.assertTrue(report["green"])
        self.assertEqual(sorted(program["name"] for program in report["programs"]), sorted(SMALL))
        self.assertTrue(all(program["cases"] for program in report["programs"]))
        self.assertIn("Wine", report["facts"])
        self.assertIn("integration_completion", [test["name"] for test in report["notInKit"]])
        suites = xml.etree.ElementTree.parse(self.folder / "report/junit.xml").getroot()
        self.assertEqual(len(suites), len(SMALL))
        page = (self.folder / "report/report.html").read_text(encoding="utf-8")
        self.assertIn("3 programs passed", page)
        self.expect_nothing_left()

    def test_nothing_runs_without_a_yes(self):
        code, output = machine.call(self.runner, text_input="n\n")
        self.assertEqual(code, 2, output)
        self.assertIn("Nothing was run.", output)
        self.assertFalse((self.folder / "report").exists())

    def test_failures_of_every_kind_are_reported(self):
        self.use(("fails", r"tests\programs\exits_with.exe", ["3"], 60),
                 ("hangs", r"tests\programs\no_windows.exe", [], 1),
                 ("missing", r"tests\programs\there_is_none.exe", [], 60))
        code, output = machine.call(self.runner, "--yes")
        self.assertEqual(code, 1, output)
        reasons = {program["name"]: program["reason"] for program in self.report()["programs"]}
        self.assertEqual(reasons, {"fails": "ended with exit code 3",
                                   "hangs": "did not end within its time limit and was ended",
                                   "missing": "cannot be started: error 2"})
        self.assertEqual(machine.processes("no_windows.exe"), set())
        self.assertFalse((self.folder / "work").exists())

    def test_a_killed_run_is_put_back_at_the_next_start(self):
        program = "writes_command_line.exe"
        self.use(("hangs", rf"tests\programs\{program}", ["mark.txt"], 600))
        with machine.Background(self.runner, "--yes"):
            # A process exists before it is part of the run's job. The file shows that it runs.
            machine.wait_until(lambda: any((self.folder / "work").rglob("mark.txt")),
                               "the start of a program")
            self.assertTrue((self.folder / "undo.json").exists())
            machine.end_processes("run-tests.exe")
            machine.wait_until(lambda: not machine.processes(program), "the end of the program")
        # What a killed test leaves: keys, and a service with a program of the kit.
        machine.run("reg", "add", ROOT_KEY, "/v", "Pathname", "/d", r"C:\nowhere", "/f")
        for key, value in LEFT_VALUES:
            machine.run("reg", "add", key, "/v", value, "/d", "1", "/f")
        service = machine.windows_path(self.folder / r"tests/programs/test_service.exe")
        machine.run("sc", "create", "dm_left_behind", f"binPath= {service} dm_left_behind")
        code, output = machine.call(self.runner, "--undo")
        self.assertEqual(code, 0, output)
        self.assertIn("put back: service dm_left_behind", output)
        self.assertIn(r"put back: registry key HKLM\SOFTWARE\UnitWarden", output)
        self.assertIn("Nothing more is to be put back.", output)
        self.assertIsNone(machine.registry(r"HKLM\SOFTWARE\UnitWarden"))
        self.expect_nothing_left()

    def test_no_run_begins_while_something_of_the_former_one_is_left(self):
        # A key whose name is longer than 255 characters cannot be made.
        journal = json.dumps({"keys": [{"ofMachine": True, "path": "SOFTWARE\\" + "x" * 300, "withKeysBelow": True,
                                        "before": {"exists": True, "values": [], "keys": []}}]})
        file = self.folder / "undo.json"
        file.write_text(journal, encoding="utf-8")
        self.addCleanup(file.unlink, missing_ok=True)
        for option, expected in (("--yes", 2), ("--undo", 1)):
            code, output = machine.call(self.runner, option)
            self.assertEqual(code, expected, output)
            self.assertIn(r"CANNOT BE PUT BACK: registry key HKLM\SOFTWARE\xxx", output)
            self.assertIn("No test was run.", output)
            self.assertNotIn("Nothing more is to be put back.", output)
            self.assertEqual(file.read_text(encoding="utf-8"), journal)
        self.assertFalse((self.folder / "report").exists())
        file.write_text(journal[:40], encoding="utf-8")
        code, output = machine.call(self.runner, "--undo")
        self.assertEqual(code, 2, output)
        self.assertIn("undo.json: the journal cannot be read", output)
        self.assertTrue(file.exists())

    def test_a_report_that_cannot_be_written_does_not_take_the_others_with_it(self):
        self.use(("passes", r"tests\programs\exits_with.exe", ["0"], 60))
        (self.folder / "report/report.html").mkdir(parents=True)
        code, output = machine.call(self.runner, "--yes")
        self.assertEqual(code, 1, output)
        self.assertIn("report.html", output.split("CANNOT BE WRITTEN: ")[1].splitlines()[0])
        self.assertIn("1 program passed", output)
        self.assertTrue(self.report()["green"])
        self.assertTrue((self.folder / "report/junit.xml").exists())

    def test_an_interrupt_stops_the_run_and_everything_is_put_back(self):
        self.use(("hangs", r"tests\programs\no_windows.exe", [], 600),
                 ("waits", r"tests\programs\exits_with.exe", ["0"], 60))
        with machine.Background(self.runner, "--yes") as run:
            machine.wait_until(lambda: machine.processes("no_windows.exe"), "the start of a program")
            for process in machine.processes("run-tests.exe"):
                os.kill(process, signal.SIGINT)
            self.assertEqual(run.end(), 130, run.output())
        report = self.report()
        self.assertTrue(report["interrupted"])
        self.assertEqual([program["reason"] for program in report["programs"]],
                         ["the run was stopped while this program ran",
                          "the run was stopped before this program"])
        self.expect_nothing_left()

    def test_a_runner_without_the_other_files_says_that_the_ZIP_must_be_unpacked(self):
        # Windows unpacks only the program that somebody double-clicks inside a ZIP.
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(self.folder / "run-tests.exe", folder)
            code, output = machine.call(machine.windows_path(folder) + r"\run-tests.exe", "--yes")
            self.assertEqual(code, 2, output)
            self.assertIn("manifest.json is missing. This program was started inside the ZIP", output)
            self.assertEqual(os.listdir(folder), ["run-tests.exe"])

    def test_an_installation_is_not_touched(self):
        machine.run("reg", "add", ROOT_KEY, "/v", "Pathname", "/d", r"C:\FIRMWARE\App", "/f")
        self.addCleanup(machine.run, "reg", "delete", r"HKLM\SOFTWARE\UnitWarden", "/f")
        code, output = machine.call(self.runner, "--yes")
        self.assertEqual(code, 2, output)
        self.assertIn(r"an installation was found on this machine (C:\FIRMWARE\App)", output)


def main():
    subprocess.run([SOURCE / "tools/wine-prefix"], env=machine.ENVIRONMENT, check=True)
    try:
        return 0 if unittest.main(verbosity=2, exit=False).result.wasSuccessful() else 1
    finally:
        machine.stop()


if __name__ == "__main__":
    sys.exit(main())
