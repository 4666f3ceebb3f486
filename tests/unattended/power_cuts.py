#!/usr/bin/env python3
"""Cuts the power of a machine with a guard as a service, and switches it on again.

  power_cuts.py [NUMBER [DAEMONS]]    (default: 20 power cuts, 50 daemons)

After each power-on everything that the fleet file names must run, once. Prints how long that took. Needs
DM_SOURCE, DM_BUILD and WINEPREFIX.
"""
import re
import statistics
import sys
import time

import guarded_machine as guarded
from guarded_machine import GUARD_LOG, machine


def names_running():
    """Returns the names of the workers that run, each as often as it runs."""
    found = []
    for command, processes in guarded.programs_running().items():
        match = re.search(r"\\endurance_daemon\.exe\"? steady (\w+)$", command)
        found += [match[1]] * len(processes) if match else []
    return sorted(found)


def begin_of_guard(since_ms):
    """Returns when the guard began that started since then; 0 if there is none."""
    return next((time_ms for time_ms, text in GUARD_LOG.records()
                 if time_ms >= since_ms and text.startswith("Guard ") and " begins" in text), 0)


def run(number, daemons):
    guarded.set_up()
    expected = sorted(f"unit{index}" for index in range(daemons))
    (guarded.host("App") / "fleet.txt").write_text(
        "".join(f"{guarded.WORKER} steady {name}\r\n" for name in expected), encoding="ascii")
    code, output = guarded.daemonctl("autostart", "install")
    assert code == 0, output
    machine.wait_until(lambda: names_running() == expected, "the first start of all daemons")
    seconds = []
    for index in range(number):
        guarded.power_cut()
        assert not names_running(), names_running()
        since = guarded.now_ms()
        guarded.power_on()
        machine.run("cmd", "/c", "exit")  # the first program: Windows starts its services
        machine.wait_until(lambda: begin_of_guard(since) != 0, "the start of the guard at power-on")
        machine.wait_until(lambda: names_running() == expected, "the start of all daemons at power-on")
        seconds.append((guarded.now_ms() - begin_of_guard(since)) / 1000)
        print(f"{index + 1:4} power cut: all {daemons} daemons run {seconds[-1]:6.2f} s after the start of the guard",
              flush=True)
        time.sleep(index % 3)  # the next cut comes at another moment of the work that goes on
        code, output = guarded.daemonctl("check", "--expect", guarded.APP + r"\fleet.txt")
        assert code == 0, output
    print(f"{number} power cuts, {daemons} daemons: median {statistics.median(seconds):.2f} s, "
          f"worst {max(seconds):.2f} s")


def main():
    number = int(sys.argv[1]) if len(sys.argv) > 1 else 20
    daemons = int(sys.argv[2]) if len(sys.argv) > 2 else 50
    try:
        run(number, daemons)
        return 0
    except AssertionError as failure:
        print(f"FAILED: {failure}")
        return 1
    finally:
        guarded.power_cut()


if __name__ == "__main__":
    sys.exit(main())
