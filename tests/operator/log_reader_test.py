#!/usr/bin/env python3
"""Checks what daemonctl-log tells the program that has called it: the exit codes, and where the texts go.

    log_reader_test.py PROGRAM
"""
import pathlib
import subprocess
import sys
import tempfile

USAGE_ERROR = 2
UNREADABLE = 5
LENGTH_OF_HEADER = 12  # of the log: the place of the next record


def run(*arguments):
    """@return the exit code, standard output and standard error"""
    ended = subprocess.run([sys.argv[1], *arguments], capture_output=True, text=True, timeout=60, check=False)
    return ended.returncode, ended.stdout, ended.stderr


def main():
    code, output, errors = run("--version")
    assert (code, errors) == (0, "") and output.startswith("daemonctl-log "), (code, output, errors)
    code, output, errors = run("--help")
    assert (code, errors) == (0, "") and "Exit codes: " in output, (code, output, errors)
    for wrong in ((), ("no-such-command",), ("log", "--no-such-option"), ("record",)):
        code, output, errors = run(*wrong)
        assert (code, output) == (USAGE_ERROR, "") and errors, (wrong, code, output, errors)
    with tempfile.TemporaryDirectory() as folder:
        log = pathlib.Path(folder) / "a.log"
        code, output, errors = run("log", "--file", str(log))
        assert (code, output) == (UNREADABLE, "") and str(log) in errors, (code, output, errors)
        record = b"0;Sun Nov 16 04:52:36.123;1763265156123;2;Start DaemonId(3) PId(7) : a.exe \r\n"
        log.write_bytes(b"0x%08x\r\n" % (LENGTH_OF_HEADER + len(record)) + record)
        code, output, errors = run("log", "--file", str(log))
        assert (code, errors) == (0, "") and "Start DaemonId(3) PId(7) : a.exe" in output, (code, output, errors)


if __name__ == "__main__":
    main()
