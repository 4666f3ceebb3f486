"""The programs of the packages: imports and protection, as their headers state them."""
import pathlib
import subprocess
import tempfile
import unittest
import zipfile

import packages
from program_file import ProgramFile

# Each program may import these libraries of Windows and no others. In particular, no run-time
# library of the compiler is imported. Windows takes each of them from the system folder, whatever
# lies beside the program, because they are its "known DLLs" (oleaut32 and shlwapi too). rpcrt4 is
# one as well.
IMPORTS = {
    "DaemonManager.exe": ["advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
                          "oleaut32.dll", "shell32.dll", "shlwapi.dll", "user32.dll"],
    "DaemonGuard.exe": ["advapi32.dll", "kernel32.dll", "msvcrt.dll", "ntdll.dll", "ole32.dll",
                        "oleaut32.dll", "shell32.dll", "shlwapi.dll", "user32.dll"],
    "daemonctl.exe": ["advapi32.dll", "kernel32.dll", "msvcrt.dll", "ntdll.dll", "ole32.dll",
                      "oleaut32.dll", "shell32.dll", "user32.dll"],
    "DaemonMgrPS.dll": ["advapi32.dll", "kernel32.dll", "msvcrt.dll", "oleaut32.dll",
                        "rpcrt4.dll"],
    "setup.exe": ["advapi32.dll", "kernel32.dll", "msvcrt.dll", "ntdll.dll", "ole32.dll",
                  "shell32.dll", "user32.dll"],
}

# No function of DaemonMgrPS.dll has a buffer on the stack.
WITH_STACK_PROTECTOR = ["DaemonManager.exe", "DaemonGuard.exe", "daemonctl.exe", "setup.exe"]

COMPILER = "x86_64-w64-mingw32-g++-posix"
SOURCE_WITH_BUFFER = """
#include <cstring>
int main(int, char** arguments)
{
    char buffer[16];
    std::strcpy(buffer, arguments[0]);
    return buffer[0];
}
"""


class Programs(unittest.TestCase):
    def setUp(self):
        archive = zipfile.ZipFile(packages.OUTPUT / f"{packages.NAME}.zip")
        self.addCleanup(archive.close)
        self.programs = {name: archive.read(f"{packages.NAME}/{name}") for name in IMPORTS
                         if name != "setup.exe"}
        # The uninstaller is the same program, without files at its end.
        self.programs["setup.exe"] = (packages.OUTPUT / f"{packages.NAME}-setup.exe").read_bytes()

    def test_every_program_imports_the_listed_libraries_and_no_others(self):
        for name, content in self.programs.items():
            with self.subTest(name):
                self.assertEqual(ProgramFile(content).imported_libraries(), IMPORTS[name])

    # The call of such a function, or already its import, loads further libraries of Windows. Before main has
    # restricted the search, Windows looks for them beside the program.
    def test_no_program_imports_a_function_that_loads_libraries_before_main(self):
        for name, content in self.programs.items():
            with self.subTest(name):
                functions = ProgramFile(content).imported_functions()
                self.assertIn("GetLastError", functions)
                self.assertEqual({function for function in functions
                                  if function.startswith(("Crypt", "BCrypt", "SystemFunction"))}, set())

    def test_every_program_has_a_random_address_and_data_without_execution(self):
        for name, content in self.programs.items():
            with self.subTest(name):
                self.assertEqual(ProgramFile(content).missing_protections(), [])

    # Without one, Windows reads a manifest that lies beside the program. It can name libraries that are loaded
    # from there in place of Windows' own, before main.
    def test_every_program_has_a_manifest_of_its_own(self):
        for name, content in self.programs.items():
            if name.endswith(".exe"):
                with self.subTest(name):
                    self.assertTrue(ProgramFile(content).has_manifest())

    def test_the_programs_detect_a_damaged_stack(self):
        for name in WITH_STACK_PROTECTOR:
            with self.subTest(name):
                self.assertTrue(ProgramFile(self.programs[name]).has_stack_protector())

    def test_no_program_carries_debug_information(self):
        for name, content in self.programs.items():
            self.assertNotIn(b".debug_info", content, name)


class UnprotectedProgram(unittest.TestCase):
    """Shows that the checks of Programs can fail."""

    def build(self, *options):
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder) / "program.cpp"
            source.write_text(SOURCE_WITH_BUFFER)
            program = pathlib.Path(folder) / "program.exe"
            subprocess.run([COMPILER, "-O2", source, "-o", program, *options], check=True)
            return ProgramFile(program.read_bytes())

    def test_missing_protections_are_found(self):
        program = self.build("-static", "-Wl,--disable-dynamicbase,--disable-high-entropy-va",
                             "-Wl,--disable-nxcompat,--disable-reloc-section")
        self.assertEqual(program.missing_protections(),
                         ["HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT", "relocations"])

    def test_a_missing_stack_protector_is_found(self):
        self.assertFalse(self.build("-static").has_stack_protector())
        self.assertTrue(self.build("-static", "-fstack-protector-strong").has_stack_protector())

    def test_a_missing_manifest_is_found(self):
        self.assertFalse(self.build().has_manifest())

    def test_an_import_of_a_run_time_library_is_found(self):
        program = self.build("-fstack-protector-strong")
        self.assertIn("libssp-0.dll", program.imported_libraries())
