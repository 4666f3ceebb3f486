"""./test: builds presets, runs their tests beside the builds that follow, and prints one summary."""
import argparse
import os
import pathlib
import queue
import signal
import subprocess
import sys
import threading

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

import building  # noqa: E402
import plan  # noqa: E402
import suite  # noqa: E402
from screen import Screen  # noqa: E402

LOGS = pathlib.Path("build/logs")


class Run:
    def __init__(self, presets, everything, checks):
        self.presets = presets
        self.everything = everything
        self.checks = checks
        self.screen = Screen()
        self.lanes = {preset.lane: queue.Queue() for preset in presets}
        self.summary = {}
        self.passed = self.failed = self.cases = 0
        self.lock = threading.Lock()

    def run(self):
        LOGS.mkdir(parents=True, exist_ok=True)
        if self.checks:
            self.check("format", ["tools/check-format"])
            self.check("layout", ["tools/check-layout"])
        workers = [threading.Thread(target=self.test_lane, args=(lane,)) for lane in
                   self.lanes.values()]
        for worker in workers:
            worker.start()
        for preset in self.presets:
            self.build(preset)
        for lane in self.lanes.values():
            lane.put(None)
        if self.checks:
            self.check("lint", ["nice", "-n", "10", "tools/lint"])
        for worker in workers:
            worker.join()
        self.report()
        return self.failed == 0

    def build(self, preset):
        start = self.screen.seconds()
        errors = building.build(preset.name, self.everything, LOGS, self.screen)
        seconds = self.screen.seconds() - start
        if errors:
            self.screen.say(f"{preset.name}: does not build\n{errors}")
            self.note(preset.name, f"{preset.name:16} does not build ({LOGS}/{preset.name}-build.log)",
                      failed=1)
            return
        self.screen.say(f"{preset.name}: built in {seconds:.0f} s")
        self.lanes[preset.lane].put((preset, seconds))

    def test_lane(self, lane):
        while (item := lane.get()) is not None:
            preset, built = item
            try:
                self.test(preset, built)
            except Exception as error:  # pylint: disable=broad-except
                self.note(preset.name, f"{preset.name:16} tests could not be run: {error}", failed=1)

    def test(self, preset, built):
        start = self.screen.seconds()
        outcome = suite.run(preset, self.everything, LOGS, self.screen)
        seconds = self.screen.seconds() - start
        if outcome.text:
            self.screen.say(outcome.text.rstrip())
        kept = f" ({outcome.kept} more unchanged since they passed)" if outcome.kept else ""
        if outcome.others:
            kept += (f"\n{'':16} {outcome.others:3} programs left out: they are about other programs than the"
                     f" changed ones (./test {preset.name} runs them)")
        line = (f"{preset.name:16} {outcome.passed + outcome.failed:3} programs, "
                f"{outcome.cases:4} cases, {outcome.failed} failed; build {built:.0f} s, "
                f"tests {seconds:.0f} s{kept}")
        self.screen.say(f"{preset.name}: tested in {seconds:.0f} s, {outcome.failed} failed")
        self.note(preset.name, line, outcome.passed + outcome.kept, outcome.failed, outcome.cases)

    def check(self, name, command):
        start = self.screen.seconds()
        self.screen.phase(name, name)
        log = LOGS / f"{name}.log"
        with open(log, "w", encoding="utf-8") as file:
            result = subprocess.run(command, stdout=file, stderr=subprocess.STDOUT,
                                    stdin=subprocess.DEVNULL, check=False).returncode
        seconds = self.screen.seconds() - start
        self.screen.phase(name, "")
        if result:
            lines = log.read_text(encoding="utf-8", errors="replace").splitlines()
            self.screen.say(f"== {name} failed\n" + "\n".join(lines[:100]) +
                            f"\nrepeat: {command[-1]}")
        self.screen.say(f"{name}: {'failed' if result else 'clean'} ({seconds:.0f} s)")
        self.note(name, f"{name:16} {'failed' if result else 'clean'}; {seconds:.0f} s",
                  passed=not result, failed=bool(result))

    def note(self, name, line, passed=0, failed=0, cases=0):
        with self.lock:
            self.summary[name] = line
            self.passed += passed
            self.failed += failed
            self.cases += cases

    def report(self):
        print("\n== summary")
        for line in self.summary.values():
            print(line)
        print(f"{self.cases} cases, {self.screen.seconds():.0f} s")
        print(f"{self.passed} passed, {self.failed} failed")


def main():
    parser = argparse.ArgumentParser(add_help=False)
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--packages", action="store_true")
    parser.add_argument("presets", nargs="*")
    options = parser.parse_args()
    everything = options.all or bool(options.presets)
    if options.presets:
        presets = [plan.find(name) for name in options.presets]
    else:
        presets = [preset for preset in plan.PRESETS if options.all or preset.name in plan.QUICK]
    if options.packages:
        print("\n".join(plan.packages(presets, options.all)))
        return 0
    # Ctrl+C ends the children, too: they are in this process group.
    signal.signal(signal.SIGTERM, lambda *_: os.killpg(0, signal.SIGINT))
    return 0 if Run(presets, everything, options.all).run() else 1


if __name__ == "__main__":
    sys.exit(main())
