"""What ./test promises of its test runs, tried with a small project and the real cmake and ctest."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

RUNNER = pathlib.Path(__file__).resolve().parents[2] / "tools/testrun"

PROJECT = """cmake_minimum_required(VERSION 3.25)
project(small NONE)
enable_testing()
foreach(name good other)
    add_test(NAME ${name} COMMAND sh ${CMAKE_SOURCE_DIR}/${name}.sh)
    set_tests_properties(${name} PROPERTIES REQUIRED_FILES ${CMAKE_SOURCE_DIR}/${name}.sh)
endforeach()
add_test(NAME about_tool COMMAND true)
set_tests_properties(about_tool PROPERTIES LABELS about-tool
    REQUIRED_FILES "${CMAKE_BINARY_DIR}/bin/tool;${CMAKE_BINARY_DIR}/bin/helper;${CMAKE_SOURCE_DIR}/script")
add_test(NAME undeclared COMMAND true)
add_test(NAME waits COMMAND true)
set_tests_properties(waits PROPERTIES LABELS long REQUIRED_FILES ${CMAKE_SOURCE_DIR}/good.sh)
add_test(NAME repeats COMMAND ${CMAKE_SOURCE_DIR}/built_program)
set_tests_properties(repeats PROPERTIES LABELS portable REQUIRED_FILES ${CMAKE_SOURCE_DIR}/good.sh)
add_custom_target(quick_tests COMMAND sh -c "echo quick >>${CMAKE_SOURCE_DIR}/built" VERBATIM)
add_custom_target(everything ALL COMMAND sh -c "echo all >>${CMAKE_SOURCE_DIR}/built"
    COMMAND cp /bin/true ${CMAKE_SOURCE_DIR}/built_program VERBATIM)
add_test(NAME prepares COMMAND sh -c "echo prepares >>${CMAKE_SOURCE_DIR}/done")
add_test(NAME cleans_up COMMAND sh -c "echo cleans up >>${CMAKE_SOURCE_DIR}/done")
set_tests_properties(prepares PROPERTIES FIXTURES_SETUP things)
set_tests_properties(cleans_up PROPERTIES FIXTURES_CLEANUP things)
set_tests_properties(other PROPERTIES FIXTURES_REQUIRED things)
"""
PRESETS = {
    "version": 6,
    "configurePresets": [{"name": "small", "generator": "Ninja",
                          "binaryDir": "${sourceDir}/build/small"}],
    "buildPresets": [{"name": "small", "configurePreset": "small"}],
    "testPresets": [{"name": "small", "configurePreset": "small"}],
}
HANGS = ("echo '[ RUN      ] Log.keeps_the_order'; echo '[       OK ] Log.keeps_the_order (1 ms)'\n"
         "echo '[ RUN      ] Log.waits_for_ever'; exit 1\n")
PASSES = "echo '[==========] 3 tests from 1 test suite ran.'\n"
FAILS = ("echo '[  FAILED  ] Log.keeps_the_order'; echo expected 7\n"
         "echo '[==========] 4 tests from 1 test suite ran.'\nexit 1\n")


class TestRun(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = pathlib.Path(self.folder.name)
        self.write("CMakeLists.txt", PROJECT)
        self.write("CMakePresets.json", json.dumps(PRESETS))
        self.write("good.sh", PASSES)
        self.write("other.sh", PASSES)
        self.write("script", "")
        (self.root / "build/small/bin").mkdir(parents=True)
        self.write("build/small/bin/tool", "")
        self.write("build/small/bin/helper", "")

    def write(self, name, text):
        (self.root / name).write_text(text, encoding="utf-8")

    def run_tests(self, quick=False):
        """Returns the exit code and what was printed."""
        code = ("import sys; sys.argv[0] = 'test'; sys.path.insert(0, %r); import __main__ as m\n"
                "import plan, pathlib, runpy\n") % str(RUNNER)
        if quick:  # as a plain ./test, which has no argument
            code += "plan.PRESETS = (plan.find('small'),); plan.QUICK = ('small',)\n"
        code += "runpy.run_path(%r, run_name='__main__')" % str(RUNNER / "__main__.py")
        answer = subprocess.run([sys.executable, "-B", "-c", code, *([] if quick else ["small"])],
                                cwd=self.root, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                stdin=subprocess.DEVNULL, text=True, check=False,
                                env=dict(os.environ, TERM="dumb"))
        return answer.returncode, answer.stdout

    def test_all_that_passed_is_counted_and_the_last_line_says_so(self):
        code, text = self.run_tests()
        self.assertEqual(0, code, text)
        self.assertEqual("8 passed, 0 failed", text.splitlines()[-1])
        self.assertRegex(text, r"small +8 programs, +6 cases, 0 failed")

    def test_the_output_of_a_failed_test_is_shown_with_the_commands_that_repeat_it(self):
        self.write("other.sh", FAILS)
        code, text = self.run_tests()
        self.assertEqual(1, code, text)
        self.assertIn("expected 7", text)
        self.assertIn("repeat: ctest --preset small -R '^other$'", text)
        self.assertIn(f"sh {self.root}/other.sh --gtest_filter='Log.keeps_the_order'", text)
        self.assertEqual("7 passed, 1 failed", text.splitlines()[-1])

    def test_the_case_that_a_failed_program_did_not_end_is_shown(self):
        self.write("other.sh", HANGS)
        text = self.run_tests()[1]
        self.assertIn("not ended: Log.waits_for_ever", text)
        self.assertNotIn("keeps_the_order", text)

    def test_a_quick_run_builds_only_what_it_runs(self):
        self.run_tests(quick=True)
        self.assertEqual("quick\n", (self.root / "built").read_text(encoding="utf-8"))
        self.run_tests()
        self.assertEqual("quick\nall\n", (self.root / "built").read_text(encoding="utf-8"))

    def test_a_quick_run_leaves_out_what_is_long_or_runs_elsewhere_and_what_passed_unchanged(self):
        code, text = self.run_tests(quick=True)
        self.assertEqual(0, code, text)
        self.assertRegex(text, r"small +6 programs, +6 cases, 0 failed")
        code, text = self.run_tests(quick=True)
        self.assertRegex(text, r"small +1 programs, .*\(3 more unchanged since they passed\)")
        self.assertEqual("4 passed, 0 failed", text.splitlines()[-1])

    def test_a_quick_run_prepares_only_what_the_tests_that_run_need(self):
        self.run_tests(quick=True)
        done = self.root / "done"
        self.assertEqual("prepares\ncleans up\n", done.read_text(encoding="utf-8"))
        self.write("good.sh", PASSES + "# changed\n")
        self.run_tests(quick=True)
        self.assertEqual("prepares\ncleans up\n", done.read_text(encoding="utf-8"))
        self.write("other.sh", PASSES + "# changed\n")
        self.run_tests(quick=True)
        self.assertEqual(2 * "prepares\ncleans up\n", done.read_text(encoding="utf-8"))

    def test_a_quick_run_repeats_what_changed_and_what_failed(self):
        self.run_tests(quick=True)
        self.write("other.sh", FAILS)
        code, text = self.run_tests(quick=True)
        self.assertEqual(1, code, text)
        code, text = self.run_tests(quick=True)
        self.assertEqual(1, code, text)
        self.assertIn("small: other failed", text)
        self.assertNotIn("small: good failed", text)

    def test_a_quick_run_does_not_repeat_a_test_after_a_change_of_a_program_that_it_is_not_about(self):
        self.run_tests(quick=True)
        self.write("build/small/bin/helper", "changed")
        text = self.run_tests(quick=True)[1]
        self.assertRegex(text, r"small +1 programs, .*\(2 more unchanged since they passed\)\n +1 programs left out")
        self.assertEqual("3 passed, 0 failed", text.splitlines()[-1])
        for changed in ("build/small/bin/tool", "script"):
            self.write(changed, "changed")
            text = self.run_tests(quick=True)[1]
            self.assertRegex(text, r"small +2 programs, .*\(2 more unchanged since they passed\)\n[^ ]")

    def test_a_test_that_failed_is_repeated_whatever_has_changed(self):
        self.write("CMakeLists.txt", PROJECT.replace("about_tool COMMAND true", "about_tool COMMAND false"))
        for content in ("", "changed"):
            self.write("build/small/bin/helper", content)
            text = self.run_tests(quick=True)[1]
            self.assertIn("small: about_tool failed", text)

    def test_a_project_that_does_not_build_fails_with_the_errors_on_the_screen(self):
        self.write("CMakeLists.txt", "message(FATAL_ERROR broken)\n")
        code, text = self.run_tests()
        self.assertEqual(1, code, text)
        self.assertIn("broken", text)
        self.assertEqual("0 passed, 1 failed", text.splitlines()[-1])


if __name__ == "__main__":
    unittest.main()
