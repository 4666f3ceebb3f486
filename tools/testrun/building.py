"""Configures and builds one preset."""
import os
import pathlib
import re
import shutil
import subprocess

PROGRESS = re.compile(r"^\[(\d+)/(\d+)\]")


def environment():
    """The caller's environment; a compiler cache is used where one is installed.

    Test code is compiled with the same options for windows and windows-debug, so that the cache gives
    the second of the two what the first has compiled.
    """
    env = dict(os.environ)
    if shutil.which("ccache"):
        env.setdefault("CMAKE_C_COMPILER_LAUNCHER", "ccache")
        env.setdefault("CMAKE_CXX_COMPILER_LAUNCHER", "ccache")
        env.setdefault("CCACHE_BASEDIR", os.getcwd())
        env.setdefault("CCACHE_NOHASHDIR", "1")
        # Otherwise each source that is not in the cache yet is preprocessed twice.
        env.setdefault("CCACHE_DEPEND", "1")
        env.setdefault("CCACHE_SLOPPINESS", "pch_defines,time_macros")
    return env


def is_configured(preset):
    """Whether the build tool notices by itself what makes another configuration necessary: it does not know
    the file of presets."""
    rules = pathlib.Path("build") / preset / "build.ninja"
    presets = pathlib.Path("CMakePresets.json")
    return rules.exists() and rules.stat().st_mtime_ns > presets.stat().st_mtime_ns


def build(preset, everything, logs, screen):
    """Builds all, or only what a plain ./test runs. Returns None, or the last lines of what failed."""
    log = logs / f"{preset}-build.log"
    screen.phase("build", f"configure {preset}")
    with open(log, "w", encoding="utf-8") as file:
        # Tests that run at the same time keep their pace.
        commands = [["nice", "-n", "10", "cmake", "--build", "--preset", preset]]
        if not everything:
            commands[0] += ["--target", "quick_tests"]
        if not is_configured(preset):
            commands.insert(0, ["cmake", "--preset", preset])
        for command in commands:
            with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                  stdin=subprocess.DEVNULL, text=True, errors="replace",
                                  env=environment()) as process:
                for line in process.stdout:
                    file.write(line)
                    match = PROGRESS.match(line)
                    if match:
                        screen.phase("build", f"build {preset} {match[1]}/{match[2]}")
            if process.returncode:
                screen.phase("build", "")
                file.flush()
                return last_errors(log) + f"\nrepeat: {' '.join(commands[-1][3:])}"
    screen.phase("build", "")
    return None


def last_errors(log):
    lines = log.read_text(encoding="utf-8", errors="replace").splitlines()
    first = next((i for i, line in enumerate(lines) if line.startswith("FAILED")), None)
    chosen = lines[first:first + 60] if first is not None else lines[-60:]
    return "\n".join(line[:400] for line in chosen)
