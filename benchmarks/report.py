#!/usr/bin/env python3
"""Runs dm_bench and prints medians, quartiles, and ratios with their goals.

With options the result is JSON, tables in Markdown, or a picture. With --samples the program does
not run dm_bench and reads the samples of an earlier run.
"""
import argparse
import json
import os
import statistics
import subprocess
import sys
import tempfile

# (text, function that computes the figure from the medians, limit, True if more is better, unit)
GOALS = [
    ("Log, one caller, bursts of 500, against spdlog async",
     lambda m: m["log.one_caller_ns.ours"] / m["log.one_caller_ns.spdlog"], 0.6, False, ""),
    ("Log, four callers, against spdlog async",
     lambda m: m["log.four_callers_ns.ours"] / m["log.four_callers_ns.spdlog"], 0.6, False, ""),
    ("records per second to the ring file, against spdlog with a plain file and a flush per record",
     lambda m: m["file.records_per_second.ours"] / m["file.records_per_second.spdlog"], 3, True, ""),
    ("records per second to the ring file, against the bare two writes of a record",
     lambda m: m["file.records_per_second.ours"]
     / m["file.records_per_second.raw_two_writes"], 0.8, True, ""),
    ("records per second of the sink without the logger, against the bare two writes of a record",
     lambda m: m["file.records_per_second.sink_alone"]
     / m["file.records_per_second.raw_two_writes"], 0.8, True, ""),
    ("pass over 1,000 running daemons, against 1,000 calls of GetExitCodeProcess",
     lambda m: m["pass.us.1000"] / m["pass.exit_codes_us.1000"], 0.05, False, ""),
    ("pass time per daemon with 10,000 daemons, against 100 daemons",
     lambda m: m["pass.us.10000"] / m["pass.us.100"] / 100, 1, False, ""),
    ("Launch with 10,000 daemons in the process, against one call from another process",
     lambda m: m["launch.in_process_us"] / m["launch.one_call_us"], 1, False, ""),
    ("memory of the table, 10,000 daemons, 60-character paths, 4 arguments",
     lambda m: m["launch.table_mib"], 8, False, " MiB"),
    ("processor time of the idle supervisor with 100 daemons",
     lambda m: m["idle.cpu_seconds_a_minute.100"], 0.05, False, " s per minute"),
    ("memory of the idle supervisor with 100 daemons",
     lambda m: m["idle.resident_mib.100"] * 1.048576, 40, False, " MB"),
    ("median time from kill to restart, against 0.5 s plus 1.2 process starts",
     lambda m: m["restart.killed_to_running_ms"] / (500 + 1.2 * m["restart.process_start_ms"]),
     1, False, ""),
    ("reload of a full ring, against reading the file line by line",
     lambda m: m["ring.reload_ms"] / m["ring.read_lines_ms"], 2, False, ""),
    ("WideToUtf8 with 1 MiB of mixed text, against the converter of the system",
     lambda m: m["utf8.mixed_1mib_us.ours"] / m["utf8.mixed_1mib_us.system"], 1, False, ""),
    ("WideToUtf8 with 1 MiB of ASCII, against the converter of the system",
     lambda m: m["utf8.ascii_1mib_us.ours"] / m["utf8.ascii_1mib_us.system"], 1, False, ""),
]


def windows(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def make_files(folder, folders, files):
    """Creates the files on the host, not with the program under test."""
    if os.path.exists(os.path.join(folder, ".complete")):
        return
    for outer in range(folders):
        inner = os.path.join(folder, f"folder_{outer:03}") if folders > 1 else folder
        os.makedirs(inner, exist_ok=True)
        for number in range(files):
            with open(os.path.join(inner, f"file_{number:06}.txt"), "w", encoding="ascii") as file:
                file.write("x")
    open(os.path.join(folder, ".complete"), "w", encoding="ascii").close()


def run(options):
    work = options.work
    size = "_quick" if options.quick else ""
    many, tree = os.path.join(work, f"many{size}"), os.path.join(work, f"tree{size}")
    make_files(many, 1, 2000 if options.quick else 100000)
    make_files(tree, 10 if options.quick else 100, 100)
    scratch = tempfile.mkdtemp(dir=work)
    command = ["tools/wine-run", options.program, "--rounds", str(options.rounds),
               "--many-files", windows(many), "--tree", windows(tree), "--scratch",
               windows(scratch), "--supervisor", windows(options.supervisor),
               "--idle-seconds", "5" if options.quick else "60"]
    command += ["--quick"] if options.quick else []
    command += options.sections
    output = os.path.join(work, "samples.txt")
    with open(output, "w", encoding="ascii") as file:
        result = subprocess.run(command, stdout=file, stdin=subprocess.DEVNULL, check=False)
    subprocess.run(["rm", "-rf", scratch], check=False)
    if result.returncode != 0:
        sys.exit(f"bench: dm_bench ended with exit code {result.returncode}; "
                 f"its samples are in {output}")
    return output


def read(path):
    samples = {}
    with open(path, encoding="ascii") as file:
        for line in file:
            name, value = line.split()
            samples.setdefault(name, []).append(float(value))
    return samples


def quartiles(values):
    if len(values) < 2:
        return values[0], values[0]
    first, _, third = statistics.quantiles(values, n=4, method="inclusive")
    return first, third


class RecordingDict(dict):
    """A dictionary that records the names that were read."""

    def __init__(self, *values):
        super().__init__(*values)
        self.names = set()

    def __getitem__(self, name):
        self.names.add(name)
        return super().__getitem__(name)


def spread(figure, names, samples, medians):
    """Returns the quartiles of the figure over all rounds; None if there was one round."""
    rounds = max(len(samples[name]) for name in names)
    if rounds < 2:
        return None
    figures = []
    for index in range(rounds):
        once = {name: samples[name][index] for name in names if len(samples[name]) == rounds}
        figures.append(figure({**medians, **once}))
    return quartiles(figures)


def summarise(samples):
    medians = {name: statistics.median(values) for name, values in samples.items()}
    measures = {}
    for name, values in sorted(samples.items()):
        low, high = quartiles(values)
        measures[name] = {"median": medians[name], "quartiles": [low, high],
                          "samples": len(values), "best": min(values), "worst": max(values)}
    goals = []
    for what, figure, limit, more, unit in GOALS:
        recorder = RecordingDict(medians)
        try:
            value = figure(recorder)
        except KeyError:
            continue  # The section did not run.
        goals.append({"what": what, "goal": limit, "more_is_better": more, "unit": unit,
                      "figure": value,
                      "quartiles": spread(figure, recorder.names, samples, medians),
                      "met": value >= limit if more else value <= limit})
    return {"measures": measures, "goals": goals}


def number(value):
    return f"{value:,.3g}" if abs(value) < 100 else f"{value:,.0f}"


def quartiles_text(pair):
    return f"{number(pair[0])} to {number(pair[1])}" if pair else "measured once"


def print_text(result):
    print(f"{'measure':45} {'median':>12} {'lower to upper quartile':>27} {'samples':>8}")
    for name, measure in result["measures"].items():
        print(f"{name:45} {number(measure['median']):>12} "
              f"{quartiles_text(measure['quartiles']):>27} {measure['samples']:>8}")
    print()
    for goal in result["goals"]:
        word = "or more" if goal["more_is_better"] else "or less"
        print(f"{'met   ' if goal['met'] else 'missed'} {number(goal['figure']):>8} "
              f"{quartiles_text(goal['quartiles']):>20} (goal {number(goal['goal'])}{goal['unit']} {word})  {goal['what']}")


def print_markdown(result):
    print("| measured | goal | figure | lower to upper quartile | |")
    print("|---|---|---|---|---|")
    for goal in result["goals"]:
        word = "or more" if goal["more_is_better"] else "or less"
        print(f"| {goal['what']} | {number(goal['goal'])}{goal['unit']} {word} "
              f"| {number(goal['figure'])}{goal['unit']} | {quartiles_text(goal['quartiles'])} "
              f"| {'met' if goal['met'] else 'missed'} |")
    print()
    print("| measure | median | lower to upper quartile | samples |")
    print("|---|---|---|---|")
    for name, measure in result["measures"].items():
        print(f"| `{name}` | {number(measure['median'])} | {quartiles_text(measure['quartiles'])} "
              f"| {measure['samples']} |")


def svg(result):
    """Draws one bar for each goal: the figure as a share of the limit."""
    row, left, width = 34, 30, 700
    goals = result["goals"]
    height = 60 + row * len(goals)
    scale = width / 1.5
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width + 2 * left} {height}" '
           'font-family="sans-serif" font-size="12">',
           f'<rect width="{width + 2 * left}" height="{height}" fill="#ffffff"/>',
           f'<text x="{left}" y="20" font-size="14" fill="#222">Figure as a share of its limit '
           '(left of the line: met)</text>']
    for index, goal in enumerate(goals):
        used = goal["goal"] / goal["figure"] if goal["more_is_better"] else goal["figure"] / goal["goal"]
        y = 36 + index * row
        colour = "#3b7a57" if goal["met"] else "#b5482a"
        out.append(f'<text x="{left}" y="{y + 10}" fill="#222">{goal["what"]}: '
                   f'{number(goal["figure"])}{goal["unit"]} (goal {number(goal["goal"])})</text>')
        out.append(f'<rect x="{left}" y="{y + 14}" width="{min(used, 1.5) * scale:.1f}" height="10" '
                   f'fill="{colour}"/>')
    out.append(f'<line x1="{left + scale:.1f}" y1="30" x2="{left + scale:.1f}" y2="{height - 16}" '
               'stroke="#222" stroke-dasharray="4 3"/>')
    out.append("</svg>")
    return "\n".join(out) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true",
                        help="Measure once with small numbers, to see that everything works")
    parser.add_argument("--json", action="store_true", help="Print the result as JSON")
    parser.add_argument("--markdown", action="store_true",
                        help="Print the result as tables in Markdown")
    parser.add_argument("--svg", metavar="FILE", help="Write a picture of the goals to this file")
    parser.add_argument("--rounds", type=int, help="Measure this number of times (7)")
    parser.add_argument("--samples", metavar="FILE", action="append",
                        help="Read the samples of an earlier run; may be given several times")
    parser.add_argument("--program", default="build/windows/bin/dm_bench.exe",
                        help="Run this dm_bench (%(default)s)")
    parser.add_argument("--supervisor", default="build/bench/DaemonManager.exe",
                        help="Measure this supervisor (%(default)s)")
    parser.add_argument("--work", default="build/bench",
                        help="Keep test files and samples in this folder (%(default)s)")
    parser.add_argument("sections", nargs="*",
                        help="Measure only these sections: logger ring text pass launch client files "
                        "supervisor")
    options = parser.parse_args()
    options.rounds = options.rounds or (1 if options.quick else 7)
    os.makedirs(options.work, exist_ok=True)
    samples = {}
    for path in options.samples or [run(options)]:
        samples.update(read(path))
    result = summarise(samples)
    if options.json:
        print(json.dumps(result, indent=2))
    elif options.markdown:
        print_markdown(result)
    else:
        print_text(result)
    if options.svg:
        with open(options.svg, "w", encoding="utf-8") as file:
            file.write(svg(result))


if __name__ == "__main__":
    main()
