"""An appliance for tests: the real supervisor in a Wine prefix, with its client.

The tests run in a prefix of the pool (tools/wine-prefix --run), so the whole machine is theirs.
"""
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time

SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(SOURCE / "tests/support"))

from prefix_processes import processes_of  # noqa: E402

DEADLINE = 400  # seconds; only a failure reaches it


def wait_until(condition, what):
    """Waits until the condition is true. @return its value"""
    end = time.monotonic() + DEADLINE
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"did not happen within {DEADLINE} s: {what}")
        time.sleep(0.05)


def windows_path(path):
    """Returns the path under Wine of a path on this host."""
    return "Z:" + str(path).replace("/", "\\")


class Appliance:
    """A running supervisor, for a with block. At the end of the block its processes have ended."""

    def __init__(self, programs):
        """@param programs  folder of DaemonManager.exe, DaemonMgrPS.dll and daemonctl.exe"""
        self.prefix = pathlib.Path(os.environ["WINEPREFIX"])
        self.programs = pathlib.Path(programs).resolve()
        self.root = self.prefix / "drive_c" / "APPLIANCE"
        self.environment = {**os.environ, "WINEDEBUG": "-all"}
        self.background = []

    def __enter__(self):
        shutil.rmtree(self.root, ignore_errors=True)
        (self.root / "App").mkdir(parents=True)
        (self.root / "Logs").mkdir()
        self._must("reg", "add", r"HKLM\SOFTWARE\UnitWarden\CurrentVersion", "/v", "Pathname", "/d",
                   r"C:\APPLIANCE\App", "/f")
        self._must("regsvr32", "/s", windows_path(self.programs / "DaemonMgrPS.dll"))
        self.start_supervisor()
        return self

    def __exit__(self, *_):
        # The next program of the prefix may belong to another build.
        self.run("regsvr32", "/u", "/s", windows_path(self.programs / "DaemonMgrPS.dll"))
        self.run("reg", "delete", r"HKLM\SOFTWARE\UnitWarden", "/f")
        for process in self.background:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
        for name in ("DaemonManager.exe", "daemonctl.exe", "notepad.exe"):
            for process in self.processes(name):
                with contextlib.suppress(ProcessLookupError):
                    os.kill(process, signal.SIGKILL)
        shutil.rmtree(self.root, ignore_errors=True)

    def start_supervisor(self):
        """Starts the supervisor and waits until it answers."""
        self.start(self.programs / "DaemonManager.exe")
        wait_until(lambda: self.daemonctl("ps")[0] == 0, "the supervisor answers")

    def start(self, program, *arguments, errors=None, debug="-all"):
        """Starts a Windows program in the background.
        @param errors  file that receives its errors and Wine's messages
        @param debug   channels of Wine that write messages"""
        process = subprocess.Popen([SOURCE / "tools/wine-run", program, *map(str, arguments)],
                                   env={**self.environment, "WINEDEBUG": debug}, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=errors or subprocess.DEVNULL,
                                   start_new_session=True)
        self.background.append(process)
        return process

    def run(self, program, *arguments):
        """Runs a Windows program. @return its exit code, its output, its errors"""
        files = [self.root / "out.txt", self.root / "err.txt"]
        with open(files[0], "wb") as out, open(files[1], "wb") as err:
            # Files, because programs that this program starts would keep a pipe open.
            result = subprocess.run([SOURCE / "tools/wine-run", program, *map(str, arguments)],
                                    env=self.environment, stdin=subprocess.DEVNULL, stdout=out,
                                    stderr=err, timeout=DEADLINE, check=False)
        return (result.returncode, *(file.read_text().replace("\r", "") for file in files))

    def daemonctl(self, *arguments):
        """Runs daemonctl. @return its exit code, its output, its errors"""
        return self.run(self.programs / "daemonctl.exe", *arguments)

    def processes(self, name):
        """Returns the ids on this host of the prefix's processes with this name in their command."""
        return set(processes_of(self.prefix, name))

    def kill(self, name):
        """Ends the processes with this name, and waits until they are gone."""
        victims = self.processes(name)
        for process in victims:
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGKILL)
        wait_until(lambda: not victims & self.processes(name), f"the end of {name}")

    def _must(self, program, *arguments):
        code, output, errors = self.run(program, *arguments)
        if code != 0:
            raise AssertionError(f"{program} {arguments}: {code}\n{output}{errors}")
