#!/usr/bin/env python3
"""Terminates the supervisor at random moments while 20 daemons of all kinds run under a guard.

After each termination every daemon must have the process that it had, be watched again, and run once. A daemon
that ends together with the supervisor must run again, once, because the fleet file names it. In the end each daemon
is terminated once and must come back. Prints how long it took until all were watched again.
Needs DM_SOURCE, DM_BUILD and WINEPREFIX.
"""
import argparse
import json
import random
import re
import statistics
import sys
import time

import guarded_machine as guarded
from guarded_machine import GUARD_LOG, machine

PLAIN, WINDOWS, BATCHES, EXTERNAL = 11, 3, 2, 3  # and one service: 20 daemons
MOMENTS = ("at rest", "during the start-up", "during a launch", "during a stop", "with the guard",
           "with a daemon")


class Failure(Exception):
    """A promise was broken."""


class Fleet:
    """The 20 daemons: those of the fleet file, those that clients launched, and those that were attached."""

    def __init__(self):
        self.processes = {}  # ids on this host, by name of the daemon

    def names(self):
        return ([f"plain{n}" for n in range(PLAIN)] + [f"window{n}" for n in range(WINDOWS)] +
                [f"batch{n}" for n in range(BATCHES)] + [f"external{n}" for n in range(EXTERNAL)] +
                ["service"])

    def names_of_workers_in_file(self):
        """Returns the daemons of the fleet file whose processes look() shows, and which are no service."""
        return ([f"plain{n}" for n in range(PLAIN - 3)] + [f"window{n}" for n in range(WINDOWS)] +
                [f"external{n}" for n in range(EXTERNAL)])

    def write_file(self):
        """The fleet file names some; clients launch the others."""
        lines = [f"{guarded.WORKER} steady plain{n}" for n in range(PLAIN - 3)]
        lines += [f"{guarded.WINDOW} - window{n}" for n in range(WINDOWS)]
        lines += [f"run{n}.bat" for n in range(BATCHES)]
        lines += [f"{guarded.WORKER} steady external{n}" for n in range(EXTERNAL)]
        lines.append(f"{guarded.SERVICE} --note {guarded.ROOT}\\note.txt")  # the arguments of a restart
        (guarded.host("App") / "fleet.txt").write_text("\r\n".join(lines) + "\r\n", encoding="ascii")
        for number in range(BATCHES):
            (guarded.host("App") / f"run{number}.bat").write_text(
                f'@"{guarded.WORKER}" steady batch{number}\r\n', encoding="ascii")

    def start_external(self):
        """Starts processes that the guard finds and attaches. Their parent ends, so nobody watches them."""
        for number in range(EXTERNAL):
            machine.run("cmd", "/d", "/c", "start", "/b", "", guarded.WORKER, "steady", f"external{number}")

    def start(self):
        for number in range(PLAIN - 3, PLAIN):
            code, output = guarded.daemonctl("launch", guarded.WORKER, "steady", f"plain{number}")
            if code != 0:
                raise Failure(f"launch: {output}")
        machine.wait_until(lambda: set(self.look()) == set(self.names()), "the start of all daemons")
        self.processes = self.look()

    def look(self):
        """Returns the ids on this host of the daemons' processes that run now, by name."""
        found = {}
        for command, processes in guarded.programs_running().items():
            match = re.search(r"\\endurance_\w+\.exe\"? \S+ (\w+)$", command)
            if match:
                name = match[1]
            elif r"\test_service.exe" in command:
                name = "service"
            else:
                continue
            found.setdefault(name, set()).update(processes)
        return found

    def renew(self, name):
        """Waits until a daemon that was ended runs again, and remembers its new process."""
        machine.wait_until(lambda: self.look().get(name), f"the return of {name}")
        now = self.look()[name]
        if len(now) != 1 or now & self.processes[name]:
            raise Failure(f"{name}: had {self.processes[name]}, has {now}")
        self.processes[name] = now

    def check(self):
        """Every daemon has the process that it had, and runs once."""
        now = {name: processes for name, processes in self.look().items() if name != "extra"}
        if now != self.processes:
            wrong = [name for name in {*now, *self.processes} if now.get(name) != self.processes.get(name)]
            raise Failure("; ".join(f"{name}: had {self.processes.get(name)}, has {now.get(name)}" for name in wrong))


def watched_again(count, since_ms):
    """Waits until a supervisor that started since then watches this number of daemons, and the guard has done
    what it does then. @return the time of the last record"""
    last = 0

    def is_done():
        nonlocal last
        watched, last = guarded.registered(since_ms)
        return len(watched) >= count and any(
            re.match(r"Fleet: \d+ launched, .*", text) for text in GUARD_LOG.texts_since(since_ms))

    end = time.monotonic() + 90
    while not is_done():
        if time.monotonic() > end:
            watched, _ = guarded.registered(since_ms)
            raise Failure(f"{len(watched)} of {count} daemons are watched after 90 s; the guard's log:\n  " +
                          "\n  ".join(GUARD_LOG.texts_since(since_ms)))
        time.sleep(0.05)
    return last


class Terminations:
    """The run of this program."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.fleet = Fleet()
        self.guard = None
        self.moments = list(MOMENTS)
        self.seconds = {moment: [] for moment in MOMENTS}
        self.ended = None  # the daemon that was ended with the supervisor

    def start_guard(self):
        since = guarded.now_ms()
        self.guard = guarded.Guard()
        machine.wait_until(lambda: any(text.startswith(("Fleet: ", "Hand-over: given up"))
                                       for text in GUARD_LOG.texts_since(since)), "the work of the guard")

    def renew_guard(self):
        """A new guard has no waits behind it, so that it starts the next supervisor at once."""
        guarded.kill(guarded.running("DaemonGuard.exe"))
        self.guard.reap()
        self.start_guard()

    def terminate(self, moment):
        """Terminates the supervisor. @return when, and the calls of clients that were under way"""
        calls = []
        if moment == "during the start-up":
            guarded.kill(guarded.running("DaemonManager.exe"))
            machine.wait_until(lambda: guarded.running("DaemonManager.exe"), "the next supervisor")
            time.sleep(self.random.uniform(0, 1.5))
        elif moment == "during a launch":
            calls.append(machine.Background(guarded.PROGRAMS + r"\daemonctl.exe", "launch", guarded.WORKER,
                                            "steady", "extra"))
            time.sleep(self.random.uniform(0.3, 2))
        elif moment == "during a stop":
            _, daemon = guarded.daemonctl("launch", guarded.WINDOW, "-", "extra")
            machine.wait_until(lambda: "extra" in self.fleet.look(), "the start of the additional daemon")
            calls.append(machine.Background(guarded.PROGRAMS + r"\daemonctl.exe", "stop", daemon.strip()))
            time.sleep(self.random.uniform(0.3, 1.5))
        else:
            time.sleep(self.random.uniform(0, 1.5))
        if moment == "with a daemon":
            self.end_a_daemon()
        if moment == "with the guard":
            guarded.kill(guarded.running("DaemonGuard.exe"))
        since = guarded.now_ms()
        guarded.kill(guarded.running("DaemonManager.exe"))
        return since, calls

    def end_a_daemon(self):
        """The supervisor dies in the pass in which it finds this end, just before it or just after it."""
        self.ended = self.random.choice(self.fleet.names_of_workers_in_file())
        guarded.kill(self.fleet.processes[self.ended])
        time.sleep(self.random.uniform(0, 1.2))

    def remove_extra(self):
        """Ends the additional daemon, whether it is registered or not."""
        code, output = guarded.daemonctl("ps", "--json")
        if code != 0:
            raise Failure(f"ps: {output}")
        for daemon in json.loads(output)["daemons"]:
            if daemon["command"].endswith(" extra"):
                guarded.daemonctl("stop", "--end", str(daemon["id"]))
        processes = self.fleet.look().get("extra", set())
        if len(processes) > 1:
            raise Failure(f"the additional daemon runs {len(processes)} times")
        guarded.kill(processes)

    def one(self, number):
        if number % len(MOMENTS) == 0:
            self.random.shuffle(self.moments)
        moment = self.moments[number % len(MOMENTS)]
        self.renew_guard()
        since, calls = self.terminate(moment)
        if moment == "with the guard":
            self.guard.reap()
            since = guarded.now_ms()
            self.guard = guarded.Guard()
        last = watched_again(len(self.fleet.names()), since)
        self.seconds[moment].append((last - since) / 1000)
        for call in calls:
            call.end()
            call.__exit__()
        self.remove_extra()
        if self.ended:
            self.fleet.renew(self.ended)
            self.ended = None
        self.fleet.check()
        if len(guarded.running("DaemonManager.exe")) != 1:
            raise Failure("there is not one supervisor")
        print(f"{number + 1:4} {moment:20} {self.seconds[moment][-1]:6.2f} s", flush=True)

    def kill_each(self):
        """Each daemon is terminated once and comes back once."""
        before = self.fleet.look()
        commands = guarded.programs_running()
        for command, processes in commands.items():
            if re.search(r"cmd(\.exe)?\"? .*run\d\.bat", command, re.I):
                guarded.kill(processes)  # the process of a batch file; its worker is not the daemon
        for name in before:
            guarded.kill(before[name])

        def is_back():
            now = self.fleet.look()
            return set(now) == set(before) and all(len(now[name]) == 1 and not now[name] & before[name]
                                                   for name in now)
        machine.wait_until(is_back, "the return of each daemon after its own termination")

    def set_up(self):
        guarded.set_up()
        self.fleet.write_file()
        machine.run("sc", "create", guarded.SERVICE, "binPath=",
                    f'"{guarded.WORKERS}\\test_service.exe" {guarded.SERVICE} 0')
        self.fleet.start_external()
        self.start_guard()
        self.fleet.start()

    def run(self, number, pause, seconds):
        """@param number   of terminations
        @param pause       seconds between two of them
        @param seconds     end after this time; 0: after the number"""
        self.set_up()
        begin = time.monotonic()
        done = 0
        while done < number and (seconds == 0 or time.monotonic() - begin < seconds):
            time.sleep(pause)
            self.one(done)
            done += 1
        self.report(done)

    def report(self, number):
        self.kill_each()
        everything = [second for seconds in self.seconds.values() for second in seconds]
        print(f"{number} terminations, {len(self.fleet.names())} daemons: every process was kept, every daemon "
              f"was watched again, each came back after its own termination")
        for moment, seconds in {**self.seconds, "all": everything}.items():
            if seconds:
                print(f"  {moment:20} median {statistics.median(seconds):5.2f} s, worst {max(seconds):5.2f} s, "
                      f"{len(seconds)} times")


def seconds_of(text):
    """Returns the seconds of "90s", "20m" or "4h"."""
    return int(text[:-1]) * {"s": 1, "m": 60, "h": 3600}[text[-1]]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--number", type=int, default=200, help="terminations at most")
    parser.add_argument("--pause", type=seconds_of, default=0, help="between two terminations: 3m")
    parser.add_argument("--duration", type=seconds_of, default=0, help="end after this time: 4h")
    parser.add_argument("--seed", type=int, default=int(time.time()))
    options = parser.parse_args()
    print(f"seed {options.seed}", flush=True)
    try:
        Terminations(options.seed).run(options.number, options.pause, options.duration)
        return 0
    except (Failure, AssertionError) as failure:
        print(f"FAILED: {failure}")
        return 1
    finally:
        guarded.power_cut()


if __name__ == "__main__":
    sys.exit(main())
