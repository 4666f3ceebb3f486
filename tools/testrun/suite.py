"""Runs the tests of one preset through ctest and reads what came of them."""
import dataclasses
import json
import pathlib
import re
import subprocess

import unchanged
from unchanged import property_of

# The labels of what a plain ./test leaves out: see dm_unit_test.
LEFT_OUT = ("long", "portable")
STARTED = re.compile(r"^\s*Start\s+\d+: (\S+)")
ENDED = re.compile(r"^\s*\d+/(\d+) Test\s+#\d+: (\S+) \.*\s*(.*?)\s+([\d.]+) sec")
CASES = (re.compile(r"^\[==========\] (\d+) tests? from .* ran\.", re.M),
         re.compile(r"^Ran (\d+) tests? in ", re.M))
FAILED_CASE = re.compile(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)(?: \(|,|$)", re.M)
BEGUN_CASE = re.compile(r"^\[ RUN      \] (\S+)", re.M)
ENDED_CASE = re.compile(r"^\[(?:       OK |  FAILED  |  SKIPPED )\] ([\w/]+\.[\w/]+)", re.M)
# What a GoogleTest program prints of cases that pass.
SETTLED = re.compile(r"^\[( RUN      |       OK |----------)\]|^-{10}|^$")


@dataclasses.dataclass
class Outcome:
    preset: str
    passed: int = 0
    failed: int = 0
    cases: int = 0
    kept: int = 0  # passed earlier, with the same bytes
    others: int = 0  # passed earlier; only programs that they are not about have changed
    seconds: float = 0
    text: str = ""  # what failed, and how to repeat it


def listed(preset):
    """The tests of a preset as ctest describes them."""
    answer = subprocess.run(["ctest", "--preset", preset, "--show-only=json-v1"],
                            stdout=subprocess.PIPE, check=True, text=True)
    return json.loads(answer.stdout)["tests"]


def run(plan, everything, logs, screen):
    """everything: also the programs that a plain ./test leaves out, and those that passed before as they are."""
    preset = plan.name
    build = pathlib.Path("build") / preset
    memory = unchanged.Memory(build / "passed.json")
    tests = listed(preset)
    skipped = others = set()
    if not everything:
        # What is not built has no command.
        tests = [test for test in tests if not set(LEFT_OUT) & {*(property_of(test, "LABELS") or ())}]
        skipped = {test["name"] for test in tests if memory.passed(test)}
        others = {test["name"] for test in tests if memory.only_others_changed(test)}
    outcome = Outcome(preset, kept=len(skipped), others=len(others))
    skipped |= others
    command = ["ctest", "--preset", preset, "-j", str(plan.jobs), "--output-on-failure"]
    if not everything:
        command += ["-LE", "^(" + "|".join(LEFT_OUT) + ")$"]
    if skipped:
        left_out = skipped | idle_fixtures(tests, skipped)
        command += ["-E", "^(" + "|".join(sorted(re.escape(name) for name in left_out)) + ")$"]
    if plan.one_processor:
        command = ["env", "DM_ONE_PROCESSOR=1", *command]
    ended = follow(command, preset, logs / f"{preset}-test.log", screen)
    screen.phase(preset, "")
    by_name = {test["name"]: test for test in tests}
    results = read_log(build / "Testing/Temporary/LastTest.log") if ended else {}
    for name, (result, seconds) in ended.items():
        good = result == "Passed"
        outcome.passed += good
        outcome.failed += not good
        output = results.get(name, "")
        outcome.cases += sum(int(n) for pattern in CASES for n in pattern.findall(output))
        memory.note(by_name[name], good)
        if not good:
            outcome.text += failure(preset, by_name[name], result, seconds, output)
    memory.save()
    if not ended and not skipped:
        outcome.failed += 1
        outcome.text += f"{preset}: ctest ran nothing; see {logs}/{preset}-test.log\n"
    return outcome


def idle_fixtures(tests, skipped):
    """The tests that only prepare or clean up for tests which do not run."""
    fixtures = {test["name"]: {*(property_of(test, "FIXTURES_SETUP") or ()),
                               *(property_of(test, "FIXTURES_CLEANUP") or ())} for test in tests}
    run = {test["name"] for test in tests if not fixtures[test["name"]]} - skipped
    while True:
        needed = {fixture for test in tests if test["name"] in run
                  for fixture in property_of(test, "FIXTURES_REQUIRED") or ()}
        more = {name for name, own in fixtures.items() if own & needed} - run
        if not more:
            return {name for name, own in fixtures.items() if own} - run
        run |= more


def follow(command, preset, log, screen):
    """Runs ctest; returns what it says of each test: name -> (result, seconds)."""
    running = []
    ended = {}
    with open(log, "w", encoding="utf-8") as file, \
            subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             stdin=subprocess.DEVNULL, text=True, errors="replace") as process:
        for line in process.stdout:
            file.write(line)
            start, end = STARTED.match(line), ENDED.match(line)
            if start:
                running.append(start[1])
            elif end:
                ended[end[2]] = (end[3].lstrip("*").strip(), float(end[4]))
                if end[2] in running:
                    running.remove(end[2])
                total = end[1]
            if (start or end) and running:
                screen.phase(preset, f"{preset} {len(ended)} done: " + ", ".join(running))
    return ended


def read_log(path):
    """What each test printed, from ctest's log: name -> text."""
    text = path.read_text(encoding="utf-8", errors="replace")
    outputs = {}
    for block in re.split(r"^-{58}\n(?=\d+/\d+ Testing: )|^(?=\d+/\d+ Testing: )", text, flags=re.M):
        match = re.match(r"\d+/\d+ Testing: (\S+)", block or "")
        if match:
            outputs[match[1]] = block
    return outputs


def failure(preset, test, result, seconds, output):
    """The output of a failed test, with the commands that repeat it alone."""
    body = output.split("Output:\n", 1)[-1].split("\n<end of output>", 1)[0]
    lines = [line for line in body.splitlines() if not SETTLED.match(line)]
    if len(lines) > 200:
        lines = lines[:60] + [f"... {len(lines) - 180} lines: build/{preset}/Testing ..."] + lines[-120:]
    text = [f"== {preset}: {test['name']} failed ({result}, {seconds:.0f} s)", *lines,
            f"repeat: ctest --preset {preset} -R '^{test['name']}$'"]
    hung = [case for case in BEGUN_CASE.findall(body) if case not in ENDED_CASE.findall(body)]
    text[-1:-1] = [f"not ended: {case}" for case in hung]
    cases = sorted(set(FAILED_CASE.findall(body)))
    if cases and len(cases) <= 20:
        text.append(f"repeat: {' '.join(test['command'])} --gtest_filter='{':'.join(cases)}'")
    return "\n".join(text) + "\n"
