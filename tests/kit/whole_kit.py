#!/usr/bin/env python3
"""Runs a whole test kit from its ZIP, as a stranger would: unpacked to C:\\kit of a fresh Wine prefix, without
the repository's tools in the path. Compares the drive, the registry and the processes before
and after. By hand; it takes as long as all tests, one after another.

  tests/kit/whole_kit.py ZIP                   run it
  tests/kit/whole_kit.py ZIP --kill 10         kill the runner while a supervisor runs, after 10 programs
                                               or more, then start it again
  tests/kit/whole_kit.py ZIP -- --quick        options for run-tests.exe

With another Wine: put its commands first in PATH (docs/dev/wine.md).
"""
import argparse
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import zipfile

RUNNER = r"C:\kit\run-tests.exe"
SUPERVISOR = r"C:\kit\bin\DaemonManager.exe"
SOURCE = pathlib.Path(__file__).resolve().parents[2]
LEFT = ("undo.json", "work")


def prepare(folder, archive):
    """Makes a prefix and unpacks the kit there. @return the kit's folder"""
    environment = {**os.environ, "WINEPREFIX": str(folder / "prefix"), "WINEDEBUG": "-all",
                   "WINEDLLOVERRIDES": "mscoree=d;mshtml=d"}
    quiet = {"env": environment, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "check": True}
    subprocess.run(["wineboot", "-i"], **quiet)
    # Wine needs a display or this setting, and must not wait for a debugger.
    subprocess.run(["wine", "reg", "add", r"HKCU\Software\Wine\Drivers", "/v", "Graphics", "/d", "null",
                    "/f"], **quiet)
    subprocess.run(["wine", "reg", "add", r"HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug",
                    "/v", "Debugger", "/d", "", "/f"], **quiet)
    subprocess.run(["wineserver", "-k"], **quiet)
    subprocess.run(["wineserver", "-w"], **quiet)
    subprocess.run(["wineserver", "-p"], **quiet)
    with zipfile.ZipFile(archive) as content:
        content.extractall(folder / "unpacked")
    return next((folder / "unpacked").iterdir()).rename(folder / "prefix/drive_c/kit")


def load_machine(prefix):
    os.environ.update(WINEPREFIX=str(prefix), DM_SOURCE=str(SOURCE), DM_BUILD="/nowhere", WINEDEBUG="-all")
    sys.path.insert(0, str(SOURCE / "tests/package"))
    import windows_machine  # pylint: disable=import-outside-toplevel
    return windows_machine


def output_of(kit):
    return kit.parents[2] / "output.txt"


def start(kit, options):
    output = open(output_of(kit), "ab")
    command = ["setarch", "-R", "wine", RUNNER, "--yes", *options]
    return subprocess.Popen(command, cwd=kit, stdin=subprocess.DEVNULL, stdout=output,
                            stderr=subprocess.STDOUT)


def text_of(kit):
    return output_of(kit).read_text(encoding="utf-8", errors="replace")


def kill_after(kit, machine, options, count):
    """Kills the runner at a moment when a test has a supervisor: then keys, rules and often services are
    changed, too."""
    process = start(kit, options)
    machine.DEADLINE = 3600
    machine.wait_until(lambda: text_of(kit).count("\n[") >= count, f"{count} programs")
    machine.wait_until(lambda: machine.processes(SUPERVISOR), "a supervisor")
    machine.end_processes("run-tests.exe")
    process.wait()


def state(kit, machine):
    """The drive without the kit, and the registry."""
    return {name: content for name, content in machine.snapshot().items()
            if not name.startswith(str(kit))}


def difference(before, after):
    """The names of what is new, gone or different."""
    return sorted(name for name in before.keys() | after.keys() if before.get(name) != after.get(name))


def main():
    arguments = argparse.ArgumentParser(description=__doc__,
                                        formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("archive")
    arguments.add_argument("--kill", type=int, metavar="N")
    arguments.add_argument("options", nargs="*", help="for run-tests.exe")
    options = arguments.parse_args()
    folder = pathlib.Path(tempfile.mkdtemp(prefix="kit"))
    kit = prepare(folder, options.archive)
    machine = load_machine(folder / "prefix")
    before = state(kit, machine)
    begin = time.monotonic()
    if options.kill:
        kill_after(kit, machine, options.options, options.kill)
        print(f"killed after {text_of(kit).count(chr(10) + '[')} programs; changed then: "
              f"{difference(before, state(kit, machine)) or 'nothing'}; in the kit: "
              f"{[name for name in LEFT if (kit / name).exists()]}", flush=True)
    code = start(kit, options.options).wait()
    seconds = time.monotonic() - begin
    changed = difference(before, state(kit, machine))
    left = [name for name in LEFT if (kit / name).exists()] + sorted(machine.processes("C:\\kit\\"))
    subprocess.run(["wineserver", "-k"], check=False)
    print(text_of(kit))
    if not (kit / "report/report.json").exists():
        print(f"exit code {code}, no report; all is in {folder}")
        return 1
    report = json.loads((kit / "report/report.json").read_text(encoding="utf-8"))
    print(f"exit code {code}, {seconds:.0f} s, green: {report['green']}; "
          f"programs {report['countOfPrograms']}, cases {report['countOfCases']}")
    print(f"undone: {report['undone']}")
    print(f"changed on the drive and in the registry: {changed or 'nothing'}; left: {left or 'nothing'}")
    print(f"all is in {folder}")
    return 0 if code == 0 and not changed and not left else 1


if __name__ == "__main__":
    sys.exit(main())
