"""In the preset windows-debug undefined behaviour of the product ends the program: each source of the product is
compiled with the checks. Without this test, a changed build file could take them away, and nobody would notice.

usage: traps_test.py SOURCE_FOLDER BUILD_FOLDER
"""
import json
import pathlib
import sys

PRODUCT = ("src", "sdk", "daemonctl", "guard", "setup")
CHECKS = "-fsanitize=undefined"


def folder_of(file, source, build):
    """The top folder of the project to which a source or a joined source of the build belongs."""
    for root in (build, source):
        if file.is_relative_to(root):
            return file.relative_to(root).parts[0]
    return ""


def main():
    source, build = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
    entries = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    product = [entry for entry in entries
               if entry["file"].endswith((".cpp", ".cxx"))
               and folder_of(pathlib.Path(entry["file"]), source, build) in PRODUCT]
    unchecked = [entry["file"] for entry in product if CHECKS not in entry["command"]]
    for file in unchecked:
        print(f"compiled without {CHECKS}: {file}")
    print(f"{len(product)} sources of the product, {len(unchecked)} without checks")
    folders = {folder_of(pathlib.Path(entry["file"]), source, build) for entry in product}
    missing = set(PRODUCT) - folders
    if missing:
        print(f"no source of {', '.join(sorted(missing))} is compiled")
    return 1 if unchecked or missing else 0


if __name__ == "__main__":
    sys.exit(main())
