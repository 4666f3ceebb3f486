"""Shows that every rule can fail: breaks a small repository in one way after the other."""
import pathlib
import tempfile
from unittest import mock

from layout import lists
from layout.tree import Tree

MAY_INCLUDE = {"src/low": (), "src/high": ("src/low",), "daemonctl": ("src/low",)}
TESTED_BY = {"src/low/Covered.cpp": "tests/other/OtherTest.cpp"}

GOOD = {
    "README.md": "# Title\n[docs](docs/README.md) [dev](docs/dev/README.md) [x](docs/page.md#two-words)\n",
    "docs/README.md": "# Operators\n[page](page.md) [m](messages.md) [d](daemonctl.md) ![picture](images/one.svg)\n",
    "docs/page.md": "# One\n## Two `words`\n```\n[not a link](nowhere.md)\n# no heading\n```\n",
    "docs/messages.md": "| `Stop (1) %s` | with ` (x%d)` |\n",
    "docs/daemonctl.md": "`run`\n",
    "docs/images/one.svg": "<svg/>\n",
    "docs/dev/README.md": "[up](../README.md) [same page](#below)\n# Below\n",
    "src/low/Low.h": "#pragma once\n\nnamespace n {\n\n/// Does it.\nint Low(int a);\n\n"
                     "/// Holds a number.\nclass Box {\npublic:\n    explicit Box(int a)\n"
                     "        : a_{a}\n    {\n    }\n    Box(const Box&) = delete;\n    ~Box();\n\n"
                     "    /// Counts up.\n    void Add();\n\n    int Get() const { return a_; }\n\n"
                     "private:\n    void Hidden();\n    struct Secret {\n        int b;\n    };\n"
                     "    int a_;\n};\n\n} // namespace n\n",
    "src/low/Low.cpp": '#include "Low.h"\n',
    "src/low/Covered.cpp": "\n",
    "tests/other/OtherTest.cpp": "int main() {}\n",
    "src/low/Many.h": "#pragma once\n\nnamespace n {\n\n/// @file\n/// Each function counts.\n\nint One();\n"
                      "\nint Two();\n\n} // namespace n\n",
    "src/high/High.cpp": '#include "low/Low.h"\n#include "Low.h"\n#include "third_party.h"\nf.Log(1, "Stop (%d) %s" " (x%d)", 1);\n',
    "daemonctl/Main.cpp": '#include "Low.h"\nauto c = app.Command(\n    "run", "Run");\n',
    "tests/unit/low/LowTest.cpp": "int main() {}\n",
    "tests/unit/low/LowNumbersTest.cpp": "int main() {}\n",
    "tests/unit/low/Fixture.h": "#pragma once\n",
    "tests/unit/high/HighTest.cpp": "int main() {}\n",
    "tests/unit/daemonctl/MainTest.cpp": "int main() {}\n",
    "tests/fuzz/corpus/long": "line\n" * 400,
}
HEADER = GOOD["src/low/Low.h"]

# rule, what is changed (path and new text, None to remove the file), what the finding names
BROKEN = [
    ("length", {"src/low/Low.cpp": "\n" * 301}, "src/low/Low.cpp"),
    ("length", {"tools/script": "\n" * 301}, "tools/script"),
    ("columns", {"src/low/Low.cpp": "// " + 98 * "x" + "\n"}, "src/low/Low.cpp:1"),
    ("columns", {"src/low/Low.cpp": "int a; ///< " + 98 * "x" + "\n"}, "src/low/Low.cpp:1"),
    ("arrows", {"src/low/Low.cpp": '#include "High.h"\n', "src/high/High.h": "#pragma once\n"},
     "src/low/Low.cpp:1"),
    ("arrows", {"src/high/High.cpp": '\n#include "../../daemonctl/Up.h"\n#include "Up.h"\n',
                "daemonctl/Up.h": "#pragma once\n"}, "src/high/High.cpp:3"),
    ("arrows", {"daemonctl/Main.cpp": None, "tests/unit/daemonctl/MainTest.cpp": None},
     "tools/layout/lists.py"),
    ("arrows", {"src/new/New.cpp": "\n", "tests/unit/new/NewTest.cpp": "\n"}, "src/new/New.cpp"),
    ("mirror", {"tests/unit/low/OtherTest.cpp": "\n"}, "tests/unit/low/OtherTest.cpp"),
    ("mirror", {"tests/unit/gone/Fixture.h": "\n"}, "tests/unit/gone/Fixture.h"),
    ("mirror", {"tests/unit/high/HighTest.cpp": None}, "src/high"),
    ("mirror", {"src/low/Untested.cpp": "\n"}, "src/low/Untested.cpp"),
    ("mirror", {"src/low/Covered.cpp": "\n", "tests/other/OtherTest.cpp": None}, "src/low/Covered.cpp"),
    ("mirror", {"src/low/Covered.cpp": None}, "tools/layout/lists.py"),
    ("index", {"docs/new.md": "# New\n"}, "docs/new.md"),
    ("index", {"docs/dev/results/day.md": "# Day\n"}, "docs/dev/results/day.md"),
    ("index", {"docs/images/two.svg": "<svg/>\n"}, "docs/images/two.svg"),
    ("links", {"docs/page.md": "# One\n## Two words\n[dead](gone.md)\n"}, "docs/page.md:3"),
    ("links", {"docs/page.md": "# One\n"}, "README.md:2"),
    ("links", {"docs/page.md": "## Two words\n[dev](dev/README.md)\n"}, "docs/page.md:2"),
    ("links", {"docs/page.md": "## Two words\n`src/low/Low.h` `src/*/x` `src/low`\n`src/Gone.h`\n"},
     "docs/page.md:3"),
    ("links", {"docs/page.md": "## Two words\n`Low.h` `Gone.cpp`\n"}, "docs/page.md:2"),
    ("docstrings", {"src/low/Low.h": HEADER.replace("/// Does it.\n", "")}, "src/low/Low.h:5"),
    ("docstrings", {"src/low/Many.h": "#pragma once\n/// Common.\n\nint One();\n"}, "src/low/Many.h:4"),
    ("docstrings", {"src/low/Low.h": HEADER.replace("/// Holds a number.\n", "\n")}, "src/low/Low.h:9"),
    ("docstrings", {"src/low/Low.h": HEADER.replace("    /// Counts up.\n", "")}, "src/low/Low.h:18"),
    ("docstrings", {"src/low/Low.h": HEADER.replace("    void Hidden();\n    struct", "public:\n    struct")},
     "src/low/Low.h:25"),
    ("messages", {"src/host/Low.cpp": '\nlogger->Log(kLevelError,\n  "Gone %s for ever", 1);\n'}, "src/host/Low.cpp:3"),
    ("messages", {"src/log/Log.cpp": 'Log(isFirst ? kLow : kHigh, "%s", "Gone away");\n'}, "src/log/Log.cpp:1"),
    ("messages", {"src/app/App.cpp": 'throw std::runtime_error("No " // reason\n  "memory");\n'},
     "src/app/App.cpp:1"),
    ("commands", {"daemonctl/Main.cpp": 'app.Command("walk", "");\n'}, "daemonctl/Main.cpp:1"),
    ("commands", {"daemonctl/Main.cpp": 'AddCommand(app, exitCode, "walk", "");\n'}, "daemonctl/Main.cpp:1"),
    ("commands", {"daemonctl/commands/RunCommand.cpp": 'app.add_subcommand("run", "");\n'},
     "daemonctl/commands/RunCommand.cpp"),
    ("waits", {"tests/unit/low/LowTest.cpp": "std::atomic<bool> begun_ = false;\nbegun_.wait(false);\n"},
     "tests/unit/low/LowTest.cpp:2"),
    ("waits", {"tests/unit/low/LowTest.cpp": "std::atomic_int n;\nn.notify_all();\n"},
     "tests/unit/low/LowTest.cpp:2"),
    ("waits", {"src/high/High.cpp": "#include <latch>\n"}, "src/high/High.cpp:1"),
    ("locals", {"tools/low/Low.h": "thread_local bool a;\nstatic thread_local std::string b;\nthread_local T* c;\n"},
     "tools/low/Low.h:2"),
    ("paths", {"docs/page.md": "## Two words\nsee /" + "home/me/file\n"}, "docs/page.md:2"),
]


def findings(rules, files):
    with tempfile.TemporaryDirectory() as folder:
        for path, text in files.items():
            target = pathlib.Path(folder) / path
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_text(text, encoding="utf-8")
        tree = Tree(folder)
        return [finding for rule in rules.values() for finding in rule(tree)]


def run(rules):
    """@return the exit code: 0 if every rule fails where it must and nowhere else"""
    failures = []
    with mock.patch.object(lists, "MAY_INCLUDE", MAY_INCLUDE), \
            mock.patch.object(lists, "NOT_MIRRORED", {}), \
            mock.patch.object(lists, "TESTED_BY", TESTED_BY):
        failures += [f"the sound repository: {finding}" for finding in findings(rules, GOOD)]
        for rule, changes, place in BROKEN:
            files = {path: text for path, text in (GOOD | changes).items() if text is not None}
            found = findings(rules, files)
            if [(finding.rule, finding.place) for finding in found if finding.rule == rule] \
                    != [(rule, place)]:
                failures.append(f"{rule} at {place}: found {[str(finding) for finding in found]}")
    untested = set(rules) - {rule for rule, _, _ in BROKEN}
    failures += [f"no case breaks the rule {rule}" for rule in sorted(untested)]
    with mock.patch.object(lists, "NOT_MIRRORED", {"tests/unit/x": "no reason"}), \
            mock.patch.object(lists, "MAY_INCLUDE", MAY_INCLUDE), \
            mock.patch.object(lists, "TESTED_BY", TESTED_BY):
        if [finding.rule for finding in findings(rules, GOOD)] != ["mirror"]:
            failures.append("mirror: an exception without need is not found")
    print("\n".join(failures) if failures else f"self-test: {len(BROKEN) + 1} cases, all found")
    return 1 if failures else 0
