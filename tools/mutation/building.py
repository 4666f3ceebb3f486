"""Makes a copy of the repository with mutants in it, and builds its test programs."""
import os
import pathlib
import re
import shutil
import subprocess

from mutation.rewriting import with_switches

HERE = pathlib.Path(__file__).resolve().parent
PLACE = re.compile(r"^(?:In file included from |\s+from )?(\S+?):(\d+)(?::\d+)?[:,]", re.MULTILINE)
ERROR = re.compile(r"^(\S+?):(\d+):\d+: (?:fatal )?error:", re.MULTILINE)
OPTIONS = """
add_library(dm_mutant STATIC ${CMAKE_SOURCE_DIR}/tools/mutation/Switch.cpp)
target_link_libraries(dm_options INTERFACE dm_mutant)
"""
# Nothing is measured here: what compiles quickest, with the checks of the C++ library that the tests have.
# Changed code may well deserve a warning.
QUICK = ["-DDM_SANITIZE=", "-DCMAKE_BUILD_TYPE=Debug", "-DDM_DEBUG_INFO=0",
         "-DCMAKE_CXX_FLAGS=-w -D_GLIBCXX_ASSERTIONS"]
PRESETS = {
    "native": QUICK + ["-DCMAKE_CXX_FLAGS_DEBUG=-O0"],
    "windows-debug": QUICK,
}
SANITIZED = ["-DDM_DEBUG_INFO=0", "-DCMAKE_CXX_FLAGS=-w"]


class Tree:
    """A copy of the repository, in which mutants are built."""

    def __init__(self, root, folder, say):
        self.root = pathlib.Path(root)
        self.folder = pathlib.Path(folder)
        self.say = say

    def write(self, mutants, alone=None):
        """Copies the repository. A file that is the same already keeps its time, for quick builds.

        @param mutants  number -> Change
        @param alone    one more Change, which stands in the code without a switch
        """
        listed = subprocess.run(["git", "ls-files", "-z", "-co", "--exclude-standard"], check=True,
                                cwd=self.root, stdout=subprocess.PIPE).stdout.decode()
        by_path = {}
        for number, change in mutants.items():
            by_path.setdefault(change.path, {})[number] = change
        header = self.folder / "tools/mutation/Switch.h"
        for name in filter(None, listed.split("\0")):
            source, target = self.root / name, self.folder / name
            if not source.is_file():
                continue
            content = source.read_bytes()
            here = alone if alone is not None and alone.path == name else None
            if name in by_path or here:
                content = with_switches(content.decode(), header, by_path.get(name, {}),
                                        here).encode()
            elif name == "cmake/Options.cmake":
                content += OPTIONS.encode()
            if not target.is_file() or target.read_bytes() != content:
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(content)
                shutil.copymode(source, target)

    def configure(self, preset, options):
        self._run(["cmake", "--preset", preset, *options], f"{preset}-configure.log")

    def build(self, preset, targets=()):
        """@return None, or the output of a build that failed"""
        command = ["cmake", "--build", "--preset", preset, "-j", "2"]
        for target in targets:
            command += ["--target", target]
        return self._run(command + ["--", "-k", "0"], f"{preset}-build.log", may_fail=True)

    def _run(self, command, log, may_fail=False):
        environment = dict(os.environ)
        if shutil.which("ccache"):
            environment.setdefault("CMAKE_CXX_COMPILER_LAUNCHER", "ccache")
            environment.setdefault("CMAKE_C_COMPILER_LAUNCHER", "ccache")
        result = subprocess.run(["nice", "-n", "19", *command], cwd=self.folder, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                                errors="replace", env=environment, stdin=subprocess.DEVNULL)
        (self.folder.parent / log).write_text(result.stdout, encoding="utf-8")
        if result.returncode and not may_fail:
            raise SystemExit(f"mutants: {' '.join(command)} failed\n{result.stdout[-3000:]}")
        return result.stdout if result.returncode else None


def culprits(output, folder, mutants):
    """@return the numbers of the mutants that stand on the lines where a compiler reports errors"""
    def found(pattern):
        lines = {(pathlib.Path(path).as_posix().replace(f"{folder}/", ""), int(line))
                 for path, line in pattern.findall(output)}
        return {number for number, change in mutants.items()
                if any(path.endswith(change.path) and change.line <= line <= change.last_line
                       for path, line in lines)}
    return found(ERROR) or found(PLACE)
