"""Shows what tools/mutants promises: where it changes sources, and when a mutant counts as noticed."""
import pathlib
import subprocess
import tempfile
import unittest

from mutation import choosing, rewriting, running
from mutation.syntax import Source
from mutation.tokens import tokens_of

HERE = pathlib.Path(__file__).resolve().parent

# A statement of a function, and all changes of it: kind, code before, code after.
CHANGES = [
    ("if (a < b) {\n}", {("condition", "a < b", "!(a < b)"), ("comparison", "a < b", "a <= b"),
                         ("comparison", "a < b", "a >= b")}),
    ("while (a == 7) {\n}", {("condition", "a == 7", "!(a == 7)"), ("comparison", "a == 7", "a != 7"),
                             ("constant", "7", "8")}),
    ("return a && !b;", {("result", "return a && !b", "return another value than a && !b"),
                         ("logic", "a && !b", "a || !b"), ("condition", "!b", "!(!b)")}),
    ("x.y->z(0x0F);", {("statement", "x.y->z(0x0F);", "(left out)"), ("constant", "0x0F", "0x10")}),
    ("total_ += a;", {("statement", "total_ += a;", "(left out)")}),
    ("int c = a - b;", {("arithmetic", "a - b", "a + b")}),
    ("std::string s = a + \"1 + 2\";", set()),
    ("bool c = a ? true : b;", {("condition", "a", "!(a)"), ("constant", "true", "false")}),
    ("for (int i = 0; i < n; ++i) {\n    break;\n}", {
        ("constant", "0", "1"), ("condition", "i < n", "!(i < n)"), ("comparison", "i < n", "i <= n"),
        ("comparison", "i < n", "i >= n"), ("statement", "break;", "(left out)")}),
    ("if (const int* p = Find()) {\n}", {("condition", "const int* p = Find()",
                                          "const int* p = Find(); !p")}),
    ("std::array<char, 260> name;", set()),
    ("const Lock hold(mutex);", set()),
    ("static_assert(sizeof(int) == 4);", set()),
    ("// if (a < b) return 1;\n/* Log(3); */", set()),
    ("switch (a) {\ncase 3:\n    break;\n}", set()),
    ("switch (a) {\ncase 3:\n    break;\ncase 4:\n    return;\n}", {
        ("statement", "break;", "(left out)"), ("statement", "return;", "(left out)")}),
    ("constexpr int limit = 9;", {("constant", "9", "10")}),
    ("if constexpr (kDebug == 1) {\n}", set()),
    ("names.reserve(10);", {("constant", "10", "11")}),
    ("Each([&](int i) { return i > 0; });", {
        ("statement", "Each([&](int i) { return i > 0; });", "(left out)"),
        ("result", "return i > 0", "return another value than i > 0"),
        ("comparison", "i > 0", "i >= 0"), ("comparison", "i > 0", "i <= 0"), ("constant", "0", "1")}),
]
# Declarations outside functions, and all changes of them.
DECLARATIONS = [
    ("#define LIMIT (1 + 2)\n#include <a/3.h>\n", set()),
    ("constexpr int kLimit = 5;\n", {("constant", "5", "6")}),
    ("int Sum(int a, int b = 2);\nenum class E { a = 1 };\n", set()),
    ("struct S {\n    bool done = false;\n    virtual void F() = 0;\n};\n",
     {("constant", "false", "true")}),
    ("S::S(int a)\n    : a_{a}\n    , b_(a + 1)\n{\n    Go();\n}\n",
     {("statement", "Go();", "(left out)")}),
]
PROGRAM = """#include <cstdio>
#include <optional>
#include <string>

namespace {

constexpr int kLimit = 5;

struct Settings {
    static constexpr int kStep = 2;
    bool twice = false;
};

// Reads "a < b" as text.
std::optional<int> Half(int n)
{
    if (n < kLimit || n == 9) {
        return std::nullopt;
    }
    return n / Settings::kStep;
}

constexpr int Double(int n)
{
    return n * 2 + 1;
}

static_assert(Double(2) == 5);

std::string Name(int n)
{
    const int three = 3;
    std::string name = n > 7 ? "big" : "small";
    name += '!';
    name += std::to_string(Double(n) + three);
    if (const std::optional<int> half = Half(n)) {
        name += std::to_string(*half + (Settings{}.twice || n == 8 ? 1 : 2));
    }
    return name;
}

} // namespace

int main()
{
    std::string all;
    for (int n = 3; n < 10; ++n) {
        all += Name(n) + " ";
    }
    std::puts(all.c_str());
    return 0;
}
"""


def shown(text):
    return {(change.kind, change.before, change.after) for change in Source("a.cpp", text).changes}


class Changes(unittest.TestCase):
    def test_each_statement_has_the_changes_that_fit(self):
        for statement, expected in CHANGES:
            with self.subTest(statement):
                self.assertEqual(expected, shown(f"void F()\n{{\n{statement}\n}}\n"))

    def test_declarations_have_only_changes_of_their_constants(self):
        for declaration, expected in DECLARATIONS:
            with self.subTest(declaration):
                self.assertEqual(expected, shown(f"namespace n {{\n{declaration}}} // namespace n\n"))

    def test_every_character_of_a_source_is_read(self):
        with self.assertRaises(ValueError):
            tokens_of("int a = `1`;")
        with self.assertRaises(ValueError):
            Source("a.cpp", "void F() { (; }")


class Mutants(unittest.TestCase):
    """All mutants of a program in one build."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        source = Source("program.cpp", PROGRAM)
        switched = {}
        for number, change in enumerate(source.changes, 1):
            if not rewriting.crosses(change, switched.values()):
                switched[number] = change
        cls.switched = switched
        cls.program = cls.compiled(rewriting.with_switches(PROGRAM, HERE / "Switch.h", switched))
        cls.original = cls.compiled(PROGRAM)

    @classmethod
    def compiled(cls, text):
        folder = pathlib.Path(cls.folder.name)
        source = folder / f"program{len(list(folder.iterdir()))}.cpp"
        source.write_text(text, encoding="utf-8")
        program = source.with_suffix(".exe")
        subprocess.run(["c++", "-std=c++20", "-w", source, HERE / "Switch.cpp", "-o", program],
                       check=True)
        return program

    def run_program(self, program, mutant=None, reached=None):
        test = running.Program("native", "program", [str(program)], {}, "/", 5)
        return running.run(test, mutant, reached), test

    def output(self, program, mutant):
        return subprocess.run([program], env={"DM_MUTANT": str(mutant)}, stdout=subprocess.PIPE,
                              check=False, timeout=20)

    def test_no_switch_keeps_the_behaviour_and_each_switch_changes_it(self):
        expected = self.output(self.original, 0).stdout
        self.assertEqual(expected, self.output(self.program, 0).stdout)
        same = [change.key for number, change in self.switched.items() if "std::puts" not in change.key
                and (lambda result: result.stdout == expected and result.returncode == 0)(
                    self.output(self.program, number))]
        self.assertEqual([], same)
        self.assertGreater(len(self.switched), 25)

    def test_a_change_without_a_switch_stands_in_the_code(self):
        number, change = next((number, change) for number, change in self.switched.items()
                              if change.after == "n > kLimit" or change.after == "6")
        alone = self.compiled(rewriting.with_switches(PROGRAM, HERE / "Switch.h", {}, change))
        self.assertEqual(self.output(self.program, number).stdout, self.output(alone, 0).stdout)

    def test_the_places_that_a_program_runs_are_noted(self):
        program = running.Program("native", "program", [str(self.program)], {}, "/", 5)
        running.without_mutant(program)
        self.assertEqual(set(self.switched), set(program.reached))


class Running(unittest.TestCase):
    def outcome(self, script, limit=20):
        return running.run(running.Program("native", "sh", ["sh", "-c", script], {}, "/", limit))

    def test_a_program_that_fails_crashes_or_hangs_has_noticed(self):
        self.assertFalse(self.outcome("exit 0").failed)
        failed = self.outcome("echo '[  FAILED  ] Log.keeps_the_order (1 ms)'; exit 1")
        self.assertEqual((True, False, "Log.keeps_the_order"), (failed.failed, failed.hung, failed.case))
        crashed = self.outcome("echo '[ RUN      ] Log.waits'; kill -SEGV $$")
        self.assertEqual((True, False, "Log.waits"), (crashed.failed, crashed.hung, crashed.case))
        hung = self.outcome("sleep 1000", 0.2)
        self.assertEqual((True, True), (hung.failed, hung.hung))

    def test_a_program_that_fails_without_a_mutant_ends_everything(self):
        with self.assertRaises(SystemExit):
            running.without_mutant(running.Program("native", "sh", ["sh", "-c", "exit 1"], {}, "/", 5))


class Choosing(unittest.TestCase):
    def setUp(self):
        lines = "".join(f"    Do{n}(a{n} < {n});\n" for n in range(30))
        self.changes = [change for path in ("src/low/A.cpp", "src/low/B.cpp", "daemonctl/C.cpp")
                        for change in Source(path, f"void F()\n{{\n{lines}}}\n").changes]

    def test_all_folders_have_mutants_and_the_same_seed_gives_the_same_ones(self):
        first = choosing.chosen(self.changes, 1, 20)
        self.assertEqual(20, len(first))
        self.assertEqual({"src/low/A.cpp", "src/low/B.cpp", "daemonctl/C.cpp"},
                         {change.path for change in first})
        keys = [change.key for change in first]
        self.assertEqual(keys, [change.key for change in choosing.chosen(self.changes, 1, 20)])
        self.assertNotEqual(keys, [change.key for change in choosing.chosen(self.changes, 2, 20)])

    def test_a_refused_change_is_replaced(self):
        first = {change.key for change in choosing.chosen(self.changes, 1, 20)}
        refused = {sorted(first)[0]}
        second = {change.key for change in choosing.chosen(self.changes, 1, 20, refused)}
        self.assertEqual(20, len(second))
        self.assertEqual(refused, first - second)


def run():
    """@return the exit code"""
    suite = unittest.TestSuite(unittest.defaultTestLoader.loadTestsFromTestCase(case)
                               for case in (Changes, Mutants, Running, Choosing))
    return 0 if unittest.TextTestRunner().run(suite).wasSuccessful() else 1
