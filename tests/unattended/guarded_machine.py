"""A Windows machine (a Wine prefix) with a guard, its supervisor and its daemons, seen from this host.

The programs of the product and of the tests run under Wine. What runs is read from this host's list of
processes, and what happened from the log files, so that looking at the machine does not load it.
"""
import contextlib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "package"))
import windows_machine as machine  # noqa: E402
from prefix_processes import processes_of  # noqa: E402

ROOT = r"C:\Guarded"
APP = ROOT + r"\App"
PROGRAMS = machine.windows_path(machine.BUILD / "bin")
WORKERS = machine.windows_path(machine.BUILD / "tests/programs")
WORKER = WORKERS + r"\endurance_daemon.exe"
WINDOW = WORKERS + r"\endurance_window.exe"
SERVICE = "DmGuardedService"
RECORD = re.compile(rb"^(-?\d+);[^;]{23};(-?\d+);(\d);(.*)$")
FIRMWARE_KEY = r"HKLM\SOFTWARE\UnitWarden\CurrentVersion"


def host(name):
    """Returns the path on this host of a file below the firmware root."""
    return machine.host_path(ROOT) / name


def set_up():
    """Makes a new machine with a firmware root, and registers what the supervisor needs. A run that was cut
    off may have left a service behind, which the first program would start."""
    machine.stop()
    shutil.rmtree(machine.PREFIX, ignore_errors=True)
    machine.start()
    host("App").mkdir(parents=True)
    machine.run("reg", "add", FIRMWARE_KEY, "/v", "Pathname", "/d", APP, "/f")
    machine.run("regsvr32", "/s", PROGRAMS + r"\DaemonMgrPS.dll")


def power_cut():
    """Ends all programs of the machine at once."""
    machine.stop()


def power_on():
    """Lets Windows start. The first program makes it start its automatic services."""
    machine.start()


def daemonctl(*arguments):
    return machine.call(PROGRAMS + r"\daemonctl.exe", *arguments)


class Guard:
    """A guard of a session, in the background."""

    def __init__(self):
        self._process = subprocess.Popen(
            [machine.SOURCE / "tools/wine-run", PROGRAMS + r"\DaemonGuard.exe", "--session"],
            env=machine.ENVIRONMENT, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)

    def reap(self):
        """Waits for the end of the guard, which the caller has ended or ordered to end."""
        self._process.wait(machine.DEADLINE)


def kill(processes):
    for process in processes:
        with contextlib.suppress(ProcessLookupError):
            os.kill(process, signal.SIGKILL)


def programs_running():
    """Returns the processes of this machine: the ids on this host, by command line."""
    found = {}
    for process, command in processes_of(machine.PREFIX, ".exe").items():
        if "\\" in command.split(".exe", 1)[0]:
            found.setdefault(command, set()).add(process)
    return found


def running(program):
    """Returns the ids on this host of the processes of a program: "DaemonManager.exe"."""
    return {process for command, processes in programs_running().items() if f"\\{program}" in command
            for process in processes}


class Log:
    """A log file of the machine, a ring."""

    def __init__(self, name):
        self.path = host("Logs") / name

    def records(self):
        """Returns (milliseconds since 1970, text) of all records, oldest first."""
        try:
            content = self.path.read_bytes()
        except FileNotFoundError:
            return []
        found = []
        for line in content.split(b"\r\n"):
            match = RECORD.match(line)
            if match:
                found.append((int(match[1]), int(match[2]), match[4].decode(errors="replace")))
        found.sort(key=lambda record: (record[1], record[0]))
        return [(milliseconds, text) for _, milliseconds, text in found]

    def texts_since(self, milliseconds):
        return [text for time_ms, text in self.records() if time_ms >= milliseconds]


SUPERVISOR_LOG = Log("DaemonManager.log")
GUARD_LOG = Log("DaemonGuard.log")


def now_ms():
    return time.time_ns() // 1_000_000


def registered(since_ms):
    """Returns the process ids, as Windows knows them, that a supervisor watches which started since this
    time, and the time of the last record about one."""
    watched = {}
    last = 0
    for time_ms, text in SUPERVISOR_LOG.records():
        if time_ms < since_ms:
            continue
        if text == "Deamon Thread started":
            watched.clear()
        match = re.match(r"(Start|Attach|Detached|Stop \(\d\)) DaemonId\((\d+)\) PId\((\d+)\)", text)
        if match and match[1] in ("Start", "Attach"):
            watched[match[2]] = match[3]
            last = time_ms
        elif match:
            watched.pop(match[2], None)
    return watched, last
