"""Compiles includes with the flags of each library: a permitted one, and some that must fail.

usage: includes_test.py SOURCES BUILD

BUILD is a configured build tree for Windows. For each row of BOUNDARIES the test takes the command
that compiles a source of the folder, and compiles a file with a single include in its place.
"""
import json
import pathlib
import shlex
import subprocess
import sys
import tempfile

# A folder, a header that it may include, and headers of folders that it does not link.
BOUNDARIES = [
    ("src/encoding/utf", "exception_utils/COMException.h", ["file/File.h", "ILogger.h"]),
    ("src/system/file", "com/ComPtr.h", ["ILogger.h", "Firewall.h"]),
    ("src/system/installation", "win32/UniqueHandle.h", ["ILogger.h", "ProgramBody.h"]),
    ("src/system/end_process", "win32/UniqueHandle.h", ["ILogger.h", "ProcessInfo.h"]),
    ("src/system/wmi", "com/ComPtr.h", ["ILogger.h", "DaemonManager.h"]),
    ("src/host", "ILogger.h", ["DaemonManager.h", "ProgramBody.h"]),
    ("src/daemon_mgr", "Firewall.h", ["ProgramBody.h", "ProcessFacts.h"]),
    ("src/app", "DaemonManager.h", ["ProcessFacts.h", "Commands.h"]),
    ("daemonctl/text", "Utf8.h", ["LineOutput.h", "RingScan.h", "ILogger.h"]),
    ("daemonctl/output", "Utf8.h", ["RingScan.h", "Commands.h", "ILogger.h"]),
    ("daemonctl/log_reader", "TextEncoding.h", ["Timeline.h", "LineOutput.h", "ILogger.h"]),
    ("daemonctl/history", "RingScan.h", ["ReportModel.h", "DaemonStatus.h", "ILogger.h"]),
    ("daemonctl/report", "DaemonStatus.h", ["HandOver.h", "LineOutput.h", "ILogger.h"]),
    ("daemonctl/process", "Utf8.h", ["DaemonStatus.h", "RingScan.h", "DoctorReport.h"]),
    ("daemonctl/daemons", "Timeline.h", ["DoctorReport.h", "Commands.h", "DaemonManager.h"]),
    ("daemonctl/control", "DaemonStatus.h", ["DoctorReport.h", "Commands.h", "DaemonManager.h"]),
    ("daemonctl/doctor", "ProcessFacts.h", ["DaemonStatus.h", "Timeline.h", "ILogger.h"]),
    ("daemonctl/commands", "DaemonStatus.h", ["ILogger.h", "DaemonManager.h", "ProgramBody.h"]),
]


def command_of(database, folder):
    """The command that compiles a source of the folder, without its source and its output."""
    for entry in database:
        if pathlib.Path(entry["file"]).parent == folder:
            words = shlex.split(entry["command"])
            for option in ("-o", "-c"):
                place = words.index(option)
                del words[place:place + 2]
            return words, entry["directory"]
    raise SystemExit(f"no command compiles a source of {folder}")


def compile_include(command, directory, header, scratch):
    """Compiles one include. Returns the messages of the compiler, or nothing after a success."""
    source = pathlib.Path(scratch, "include.cpp")
    source.write_text(f'#include "{header}"\n', encoding="ascii")
    result = subprocess.run([*command, "-fsyntax-only", str(source)], cwd=directory,
                            capture_output=True, text=True, check=False)
    return result.stderr or "failed without a message" if result.returncode else ""


def main(sources, build):
    database = json.loads(pathlib.Path(build, "compile_commands.json").read_text(encoding="utf-8"))
    faults = []
    compiled = 0
    with tempfile.TemporaryDirectory() as scratch:
        for folder, permitted, forbidden in BOUNDARIES:
            command, directory = command_of(database, pathlib.Path(sources, folder))
            messages = compile_include(command, directory, permitted, scratch)
            if messages:
                faults.append(f"{folder} cannot include {permitted}:\n{messages}")
            for header in forbidden:
                if not any(path.name == pathlib.Path(header).name
                           for top in ("src", "daemonctl")
                           for path in pathlib.Path(sources, top).rglob("*.h")):
                    faults.append(f"there is no header {header}: correct BOUNDARIES")
                messages = compile_include(command, directory, header, scratch)
                if f"{header}: No such file or directory" not in messages:
                    faults.append(f"{folder} can include {header}, which it must not see\n{messages}")
            compiled += 1 + len(forbidden)
    print("\n".join(faults) if faults else f"{compiled} includes compile or fail as they must")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
