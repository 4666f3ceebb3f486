#!/usr/bin/env python3
"""Makes the test kit from a build: programs, runner, manifest and README in a folder, and a ZIP of it.

The manifest comes from ctest's own list of tests, so that names, arguments, locks, time limits and order
have one source. A test belongs to the kit if ctest runs it as a program of this build, through Wine. The
others need a tool of this host; the manifest names them with the reason.
"""
import argparse
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCE / "packaging"))

from make_packages import commit_time, files_below, write_zip  # noqa: E402

EMULATOR = "wine-run"
LARGEST = 80_000_000  # bytes of the ZIP: people get it by mail or from a slow line
LICENCES = {"cli11": "libcli11-dev", "nlohmann-json": "nlohmann-json3-dev", "googletest": "googletest",
            "spdlog": "libspdlog-dev", "fmt": "libfmt-dev",
            "gcc": "gcc-mingw-w64-x86-64-posix-runtime", "mingw-w64": "mingw-w64-x86-64-dev"}


def listed(build):
    """The tests of a build as ctest describes them. ctest works in a folder of its own: in that of the build
    it would begin the log of the tests anew, and the test of the kit runs while ctest writes it."""
    with tempfile.TemporaryDirectory() as folder:
        (pathlib.Path(folder) / "CTestTestfile.cmake").write_text(
            f'subdirs("{pathlib.Path(build).resolve()}")\n', encoding="utf-8")
        answer = subprocess.run(["ctest", "--test-dir", folder, "--show-only=json-v1"],
                                stdout=subprocess.PIPE, check=True, text=True)
    return json.loads(answer.stdout)["tests"]


def property_of(test, name, otherwise):
    return next((item["value"] for item in test.get("properties", ()) if item["name"] == name),
                otherwise)


def is_fixture(test):
    return any(property_of(test, name, ()) for name in ("FIXTURES_SETUP", "FIXTURES_CLEANUP"))


def program_of(test, build):
    """The test's program and its arguments, if it is a program of this build that Wine runs."""
    command = test.get("command", ())
    if len(command) < 2 or pathlib.Path(command[0]).name != EMULATOR:
        return None
    program = pathlib.Path(command[1])
    return (program, command[2:]) if program.is_relative_to(build) else None


def entry_of(test, program, arguments, build):
    labels = property_of(test, "LABELS", [])
    return {
        "name": test["name"],
        "program": str(pathlib.PureWindowsPath(program.relative_to(build))),
        # A folder of this build for output becomes one of the kit.
        "arguments": [argument.replace(str(build), "{work}") for argument in arguments],
        "locks": [label.removeprefix("lock-") for label in labels if label.startswith("lock-")],
        "timeoutSeconds": round(property_of(test, "TIMEOUT", 600)),
        "cost": property_of(test, "COST", 0),
        "takesLong": "long" in labels,
        # What GoogleTest's own main prints. Other programs use the library, too, but take no options of it.
        "googleTest": b"Running main() from" in program.read_bytes(),
    }


def reason_against(test):
    words = " ".join(test.get("command", ()))
    if "python" in words:
        return "needs Python on a Linux host"
    if ".sh" in words:
        return "needs a shell and a terminal of a Linux host"
    return "runs on the build machine only"


def manifest_of(build, version, only):
    programs, others = [], []
    for test in listed(build):
        found = program_of(test, build)
        if found and (not only or test["name"] in only):
            programs.append(entry_of(test, *found, build))
        elif not found and not is_fixture(test):
            others.append({"name": test["name"], "reason": reason_against(test)})
    missing = set(only or ()) - {program["name"] for program in programs}
    if missing:
        raise SystemExit(f"pack.py: there is no test program {', '.join(sorted(missing))}")
    # With "-dirty" at its end if files differ from the commit.
    commit = subprocess.run(["git", "-C", SOURCE, "describe", "--always", "--dirty", "--abbrev=40",
                             "--exclude=*"], capture_output=True, text=True, check=False).stdout.strip()
    return {"version": version, "commit": commit or "unknown", "programs": programs,
            "notInKit": others}


def copy_programs(build, kit, manifest, strip):
    """The product and all child programs, with their places: tests find them relative to themselves."""
    files = [build / pathlib.PureWindowsPath(program["program"]).as_posix()
             for program in manifest["programs"]]
    for folder in ("bin", "tests/programs"):
        files += [path for path in (build / folder).iterdir() if path.suffix in (".exe", ".dll")]
    for path in sorted(set(files)):
        target = kit / path.relative_to(build)
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(path, target)
    shutil.copy(build / "tests/kit/run-tests.exe", kit)
    copies = [kit / name for name in files_below(kit) if name.suffix in (".exe", ".dll")]
    # The harness of failing calls reads the names of its program's functions.
    harness = [path for path in copies if b"DM_ANOMALY" in path.read_bytes()]
    subprocess.run([strip, *(path for path in copies if path not in harness)], check=True)
    if harness:
        subprocess.run([strip, "--strip-debug", *harness], check=True)


def write_texts(kit, manifest):
    (kit / "manifest.json").write_text(json.dumps(manifest, indent=1), encoding="utf-8")
    readme = (SOURCE / "tests/kit/README.txt").read_text(encoding="utf-8")
    (kit / "README.txt").write_text(readme.replace("@VERSION@", manifest["version"]), encoding="utf-8",
                                    newline="\r\n")
    (kit / "licenses").mkdir()
    for name, package in LICENCES.items():
        licence = pathlib.Path("/usr/share/doc") / package / "copyright"
        if licence.exists():
            shutil.copy(licence, kit / "licenses" / f"{name}.txt")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--output", required=True, type=pathlib.Path, help="gets the folder and the ZIP")
    parser.add_argument("--version", required=True)
    parser.add_argument("--strip", required=True)
    parser.add_argument("--only", nargs="*", help="names of test programs; without: all")
    parser.add_argument("--no-zip", action="store_true", help="make only the folder")
    options = parser.parse_args()
    build = options.build.resolve()
    name = f"DaemonManager-{options.version}-win64-tests"
    kit = options.output.resolve() / name
    shutil.rmtree(kit, ignore_errors=True)
    kit.mkdir(parents=True)
    manifest = manifest_of(build, options.version, options.only)
    copy_programs(build, kit, manifest, options.strip)
    write_texts(kit, manifest)
    if not options.no_zip:
        archive = options.output.resolve() / f"{name}.zip"
        write_zip(archive, name, kit, files_below(kit), commit_time(SOURCE))
        if archive.stat().st_size > LARGEST:
            raise SystemExit(f"pack.py: {archive} has more than {LARGEST / 1e6:.0f} MB")
        print(f"{archive}: {archive.stat().st_size / 1e6:.1f} MB, "
              f"{len(manifest['programs'])} test programs")
    return 0


if __name__ == "__main__":
    sys.exit(main())
