"""One run of tools/mutants: choose, build, try each mutant, report."""
import collections
import concurrent.futures
import contextlib
import json
import os
import threading
import time

from mutation import building, choosing, running
from mutation.owners import owners

PROCESSORS = len(os.sched_getaffinity(0))
# A program under Wine waits most of its time, so several of them fill a processor.
JOBS = 3 * PROCESSORS
MOST_ROUNDS = 12  # of builds until every mutant compiles


class Campaign:
    """Mutants of one seed, the build that holds them, and what became of each."""

    def __init__(self, root, changes, seed, number, presets):
        self.root = root
        self.changes = changes
        self.seed = seed
        self.number = number
        self.presets = presets
        self.folder = root / "build/mutants"
        self.tree = building.Tree(root, self.folder / "tree", self.say)
        self.mutants = {}  # number -> Change
        self.refused = set()  # keys of changes that do not compile
        self.alone = set()  # keys of constants that the compiler must know: a build for each
        self.programs = []
        self.results = {}  # key -> what became of it
        self.started = time.monotonic()
        self.lock = threading.Lock()
        self.processors = threading.Semaphore(PROCESSORS)  # native programs that run at a time

    def say(self, text):
        print(f"[{time.monotonic() - self.started:5.0f} s] {text}", flush=True)

    def run(self, again):
        """@param again  try only the mutants that survived the last run
        @return the exit code"""
        self.folder.mkdir(parents=True, exist_ok=True)
        self._load(again)
        self._build()
        self._without_mutants()
        todo = [number for number, change in self.mutants.items() if change.key not in self.results]
        switched = [number for number in todo if self.mutants[number].key not in self.alone]
        with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
            list(pool.map(self._try, switched))
        for number in sorted(set(todo) - set(switched)):
            self._try_alone(number)
        return self._report()

    def _load(self, again):
        file = self.folder / "results.json"
        if not file.is_file():
            return
        last = json.loads(file.read_text(encoding="utf-8"))
        self.refused = set(last["refused"])
        self.alone = set(last["alone"])
        if again:
            self.results = {result["key"]: result for result in last["mutants"] if result["noticed"]}

    def _choose(self):
        """Keeps the numbers of mutants that are chosen again: their files need no new build."""
        wanted = {change.key: change for change in
                  choosing.chosen(self.changes, self.seed, self.number, self.refused)}
        kept = {number: change for number, change in self.mutants.items() if change.key in wanted}
        for change in kept.values():
            del wanted[change.key]
        highest = max(self.mutants, default=0)
        self.mutants = kept | dict(enumerate(wanted.values(), highest + 1))

    def _switched(self):
        return {number: change for number, change in self.mutants.items()
                if change.key not in self.alone}

    def _build(self):
        self._choose()
        self.tree.write(self._switched())
        for preset in self.presets[::-1]:
            self.say(f"build {preset} with {len(self.mutants)} mutants")
            self.tree.configure(preset, building.PRESETS[preset])
        for _ in range(MOST_ROUNDS):
            found = set()
            for preset in self.presets[::-1]:
                output = self.tree.build(preset)
                if output is None:
                    continue
                found = building.culprits(output, self.tree.folder.as_posix(), self._switched())
                if not found:
                    raise SystemExit(f"mutants: {preset} does not build\n{output[-4000:]}")
                break
            if not found:
                return
            constants = {self.mutants[number].key for number in found if self.mutants[number].constant}
            self.alone |= constants
            self.refused |= {self.mutants[number].key for number in found} - constants
            self.say(f"{len(found)} mutants do not compile: {len(constants)} get a build of their own, "
                     "others take the places of the rest")
            self._choose()
            self.tree.write(self._switched())
        raise SystemExit("mutants: too many changes that do not compile")

    def _without_mutants(self):
        for preset in self.presets:
            running.prepare(self.tree.folder, preset)
            programs = running.programs_of(self.tree.folder, preset)
            jobs = PROCESSORS if preset == "native" else JOBS
            with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
                list(pool.map(running.without_mutant, programs))
            self.say(f"{preset}: {len(programs)} programs, "
                     f"{sum(program.seconds for program in programs):.0f} s without mutants")
            self.programs += programs
        self.owners = owners(self.root, {change.path for change in self.mutants.values()})

    def _order(self, number):
        """The programs that reach a mutant. A constant of a build of its own has no place that is
        reached; the other mutants of its file stand for it."""
        path = self.mutants[number].path
        own = self.owners[path]
        places = {number}
        if self.mutants[number].key in self.alone:
            places = {other for other, change in self.mutants.items() if change.path == path}
        able = [program for program in self.programs
                if places & program.reached or places != {number} and program.name in own]
        return sorted(able, key=lambda program: (
            program.preset != "native", program.name not in own, program.seconds))

    def _try_alone(self, number):
        self.tree.write(self._switched(), self.mutants[number])
        for preset in self.presets:
            if self.tree.build(preset) is not None:
                self.say(f"does not compile, is left out: {self.mutants[number].key}")
                self.refused.add(self.mutants.pop(number).key)
                return
        self._try(number)

    def _try(self, number):
        change = self.mutants[number]
        result = {"key": change.key, "path": change.path, "line": change.line, "kind": change.kind,
                  "before": change.before, "after": change.after, "noticed": False, "hung": False}
        able = self._order(number)
        result["reached_by"] = [f"{program.preset} {program.name}" for program in able]
        for program in able:
            with self.processors if program.preset == "native" else contextlib.nullcontext():
                outcome = running.run(program, number, limit=running.limit_of(program))
            if outcome.failed and not outcome.hung and program.preset != "native":
                # A test program that fails by chance, under load, has noticed nothing.
                outcome = running.run(program, number, limit=running.limit_of(program))
            if outcome.failed:
                result |= {"noticed": True, "hung": outcome.hung, "case": outcome.case,
                           "by": f"{program.preset} {program.name}", "number": number}
                break
        with self.lock:
            self.results[change.key] = result
            self._save()
            if not result["noticed"] and able:
                self.say(f"survived: {change.path}:{change.line}: {change.kind}: {change.before} -> "
                         f"{change.after} ({len(able)} programs)")

    def _save(self):
        current = [self.results[change.key] for change in self.mutants.values()
                   if change.key in self.results]
        text = json.dumps({"seed": self.seed, "refused": sorted(self.refused),
                           "alone": sorted(self.alone), "mutants": current},
                          indent=1, ensure_ascii=False)
        (self.folder / "results.json").write_text(text + "\n", encoding="utf-8")

    def _report(self):
        self._save()
        reasons = {item["key"]: item["reason"] for item in known_survivors(self.root)}
        results = [self.results[change.key] for change in self.mutants.values()]
        folders = collections.defaultdict(lambda: [0, 0])
        for result in results:
            counts = folders[result["path"].rpartition("/")[0]]
            counts[0] += 1
            counts[1] += result["noticed"]
        for folder, (total, noticed) in sorted(folders.items()):
            print(f"{folder:36} {noticed:3} of {total:3}")
        survivors = [result for result in results if not result["noticed"]]
        unknown = [result for result in survivors if result["key"] not in reasons]
        for result in unknown:
            print(f"{result['path']}:{result['line']}: {result['kind']}: {result['before']} -> "
                  f"{result['after']}: {'no test notices' if result['reached_by'] else 'no test runs it'}")
        noticed = len(results) - len(survivors)
        hung = sum(result["hung"] for result in results)
        print(f"{len(results)} mutants, {noticed} noticed ({100 * noticed / max(1, len(results)):.1f} %), "
              f"{hung} of them because a program did not end; {len(survivors)} survived, "
              f"{len(unknown)} without a reason in tools/mutation/survivors.json")
        return 1 if unknown else 0


def known_survivors(root):
    """@return the survivors that cannot be noticed, with reasons"""
    return json.loads((root / "tools/mutation/survivors.json").read_text(encoding="utf-8"))
