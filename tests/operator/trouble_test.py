#!/usr/bin/env python3
"""Checks that `daemonctl watch` calls a program, and writes to the event log, when there is trouble.

    trouble_test.py FOLDER_OF_THE_PROGRAMS

The called program is a batch file that copies its standard input and its environment into a file. A
daemon ends again and again, the supervisor ends and comes back. A program that hangs is ended.
"""
import json
import sys

import jsonschema

from appliance import SOURCE, Appliance, wait_until, windows_path

SCHEMA = json.loads((SOURCE / "docs/schemas/watch.schema.json").read_text())


def calls(folder):
    """Returns the texts that the called program has written so far."""
    return [path.read_text(errors="replace") for path in sorted(folder.glob("call*.txt"))
            if "end of call" in path.read_text(errors="replace")]


def events(text):
    """Returns the names of the events of one call, after a look at their JSON."""
    line = next(line for line in text.splitlines() if line.startswith("{"))
    value = json.loads(line)
    jsonschema.Draft202012Validator(SCHEMA).validate(value)
    return [event["event"] for event in value["events"]]


def all_events(folder):
    return [event for text in calls(folder) for event in events(text)]


def main():
    jsonschema.Draft202012Validator.check_schema(SCHEMA)
    with Appliance(sys.argv[1]) as appliance:
        folder = appliance.root
        tell = folder / "tell.bat"
        tell.write_text("@echo off\r\nset NAME=C:\\APPLIANCE\\call%RANDOM%%RANDOM%.txt\r\n"
                        "more > %NAME%\r\necho event %DAEMONMANAGER_EVENT% >> %NAME%\r\n"
                        "echo text %DAEMONMANAGER_TEXT% >> %NAME%\r\necho end of call >> %NAME%\r\n")
        watcher = appliance.start(appliance.programs / "daemonctl.exe", "watch", "--every", "1",
                                  "--exec", "C:\\APPLIANCE\\tell.bat")
        # Wine has no event log: it shows each event of an error as a message instead.
        shown = folder / "shown.txt"
        with open(shown, "wb") as errors:
            appliance.start(appliance.programs / "daemonctl.exe", "watch", "--event-log", errors=errors,
                            debug="err+eventlog")

        def wait_until_shown(words):
            # The two watchers look at different times. A trouble that ends before one looks is not told.
            wait_until(lambda: words in shown.read_text(errors="replace"), f"an event: {words}")

        assert appliance.daemonctl("launch", "C:\\windows\\system32\\cmd.exe", "/c", "exit", "3")[0] == 0
        wait_until(lambda: "crash-loop-began" in all_events(folder), "the crash loop is told")
        text = next(text for text in calls(folder) if "crash-loop-began" in text)
        assert "event crash-loop-began" in text and "last exit: exit code 3" in text, text
        wait_until_shown("ends again and again")
        assert appliance.daemonctl("launch", "C:\\no\\such.exe")[0] == 0
        wait_until(lambda: "cannot-start" in all_events(folder), "the missing program is told")
        wait_until_shown("cannot be started")
        assert appliance.daemonctl("exit")[0] == 0
        wait_until(lambda: "supervisor-lost" in all_events(folder), "the lost supervisor is told")
        wait_until_shown("the supervisor does not run")
        appliance.start_supervisor()
        wait_until(lambda: "supervisor-back" in all_events(folder), "the supervisor is back")
        assert watcher.poll() is None
        assert all_events(folder).count("crash-loop-began") == 1, all_events(folder)

        # A program that hangs is ended, and the next call is made.
        appliance.start(appliance.programs / "daemonctl.exe", "watch", "--every", "1", "--timeout",
                        "2", "--exec", "C:\\windows\\system32\\winemine.exe")
        assert appliance.daemonctl("launch", "C:\\no\\other.exe")[0] == 0

        def called():  # the command line of the watcher has this name, too
            return appliance.processes("winemine.exe") - appliance.processes("--exec")

        first = wait_until(called, "the program is called")
        wait_until(lambda: not first & called(), "the program is ended")
    print("watch --exec: no problems found")


if __name__ == "__main__":
    main()
