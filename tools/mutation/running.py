"""Runs the test programs that could notice a mutant."""
import json
import mmap
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time
from dataclasses import dataclass

MOST_MUTANTS = 65536
# The programs of failing calls (anomaly_) check each import, and the switch of the mutants has imports of
# its own. The unattended machine has one prefix, and cannot run for two mutants at a time.
LEFT_OUT = re.compile(
    r"^(tools_|wine_prefix|fake_windows_list|make_|layout_|package|endurance|anomaly|unattended)")
FAILED_CASE = re.compile(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", re.MULTILINE)
BEGUN_CASE = re.compile(r"^\[ RUN      \] (\S+)", re.MULTILINE)


@dataclass
class Program:
    """One test program of a preset."""
    preset: str
    name: str
    command: list
    environment: dict
    folder: str
    limit: float  # seconds after which ctest ends it
    seconds: float = 0  # how long it takes without a mutant
    reached: frozenset = frozenset()  # numbers of the mutants whose places it runs

    @property
    def knows_cases(self):
        """Whether it is a GoogleTest program."""
        return self.command[-1].endswith((self.name, self.name + ".exe"))


@dataclass
class Outcome:
    """How a program ended."""
    failed: bool
    hung: bool  # it did not end by itself
    seconds: float
    case: str  # the case that failed, or in which it hung or crashed


def programs_of(tree, preset, with_long=False):
    """@return the test programs of a built preset"""
    listed = subprocess.run(["ctest", "--preset", preset, "--show-only=json-v1"], check=True, text=True,
                            stdout=subprocess.PIPE, cwd=tree)
    found = []
    for test in json.loads(listed.stdout)["tests"]:
        properties = {item["name"]: item["value"] for item in test.get("properties", ())}
        if "command" not in test or "long" in properties.get("LABELS", ()) and not with_long:
            continue
        if LEFT_OUT.match(test["name"]):
            continue
        environment = dict(item.split("=", 1) for item in properties.get("ENVIRONMENT", ()))
        found.append(Program(preset, test["name"], test["command"], environment,
                             properties.get("WORKING_DIRECTORY", str(tree)),
                             float(properties.get("TIMEOUT", 1500))))
    return found


def prepare(tree, preset):
    """Runs what ctest runs before the programs: it makes the pattern of the Wine prefixes, and files."""
    if preset == "native":
        return
    subprocess.run(["ctest", "--preset", preset, "-R", "^(wine_prefix|make_links|make_many_files)$",
                    "-FC", ".*"], check=True, cwd=tree, stdout=subprocess.DEVNULL)


def run(program, mutant=None, reached=None, limit=None, cases=None):
    """@param mutant  the number to choose
    @param reached    a file in which the program notes the places that it runs
    @param limit      seconds; the program is ended then"""
    environment = dict(os.environ) | program.environment
    environment["DM_ONE_PROCESSOR"] = "1"  # tools/wine-prefix: the quickest way to run several at a time
    for name, value in (("DM_MUTANT", mutant), ("DM_MUTANT_REACHED", reached)):
        environment.pop(name, None)
        if value is not None:
            environment[name] = str(value)
    command = ["nice", "-n", "19", *program.command]
    if program.knows_cases:
        command += ["--gtest_fail_fast"] + ([f"--gtest_filter={cases}"] if cases else [])
    start = time.monotonic()
    with tempfile.TemporaryFile() as output:
        with subprocess.Popen(command, cwd=program.folder, env=environment, stdout=output,
                              stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                              start_new_session=True) as process:
            try:
                code = process.wait(limit or program.limit)
                hung = False
            except subprocess.TimeoutExpired:
                hung, code = True, 1
                end_group(process.pid)
        output.seek(0)
        text = output.read().decode(errors="replace")
    failed = FAILED_CASE.findall(text)
    begun = BEGUN_CASE.findall(text)
    case = failed[0] if failed else begun[-1] if begun else ""
    return Outcome(code != 0, hung, time.monotonic() - start, case if code else "")


def end_group(group):
    """Ends what is left of a program's process group."""
    for sent in (signal.SIGTERM, signal.SIGKILL):
        try:
            os.killpg(group, sent)
        except ProcessLookupError:
            return
        time.sleep(0.1 if sent == signal.SIGTERM else 0)


def without_mutant(program):
    """Runs a program as it is; notes how long it takes and which places it runs.
    @raise SystemExit: it fails"""
    with tempfile.NamedTemporaryFile() as file:
        os.chmod(file.name, 0o666)
        file.truncate(MOST_MUTANTS)
        wine = program.preset.startswith("windows")
        outcome = run(program, reached=("Z:" if wine else "") + file.name)
        if outcome.failed:
            raise SystemExit(f"mutants: {program.preset} {program.name} fails without a mutant: "
                             f"{outcome.case}")
        with mmap.mmap(file.fileno(), MOST_MUTANTS, access=mmap.ACCESS_READ) as bytes_:
            program.reached = frozenset(number for number, byte in enumerate(bytes_[:]) if byte)
    program.seconds = outcome.seconds


def limit_of(program):
    """Seconds after which a program with a mutant counts as hung: far more than it needs."""
    return min(program.limit, 30 + 10 * program.seconds)
