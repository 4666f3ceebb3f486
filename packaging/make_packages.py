#!/usr/bin/env python3
"""Makes the packages from a staging folder: ZIP, installer, bill of materials and checksums.

If a command for signing is given, it signs the programs, the uninstaller, the installer and the checksums.

Equal files at one commit give equal packages on every machine and at every time: names are sorted,
and every time in a package is the time of the commit, or SOURCE_DATE_EPOCH.
"""
import argparse
import hashlib
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import time
import zipfile

from payload import make_installer
from sbom import write_sbom

EARLIEST_ZIP_TIME = 315532800  # 1980-01-01, the earliest time in a ZIP


def commit_time(source):
    """Returns seconds since 1970: SOURCE_DATE_EPOCH, or the time of the commit, or a constant if
    there is no git repository."""
    if os.environ.get("SOURCE_DATE_EPOCH"):
        return max(int(os.environ["SOURCE_DATE_EPOCH"]), EARLIEST_ZIP_TIME)
    log = subprocess.run(["git", "-C", source, "log", "-1", "--format=%ct"],
                         capture_output=True, text=True, check=False)
    return int(log.stdout) if log.returncode == 0 else EARLIEST_ZIP_TIME


def sha256(content):
    return hashlib.sha256(content).hexdigest()


def files_below(folder):
    """Returns all files as sorted paths relative to the folder."""
    return sorted((path.relative_to(folder) for path in folder.rglob("*") if path.is_file()),
                  key=lambda path: path.as_posix())


def programs_of(staging, files):
    return [staging / name for name in files if name.suffix in (".exe", ".dll")]


def strip(arguments, programs, environment):
    """Strips here and not in CPack, because strip writes the time into a program unless
    SOURCE_DATE_EPOCH is set."""
    subprocess.run([arguments.strip, *programs], env=environment, check=True)


def sign(arguments, files):
    """Calls the command for signing, if there is one, with each file."""
    for file in files if arguments.sign else []:
        subprocess.run([*shlex.split(arguments.sign), file], check=True)


def write_zip(target, top, staging, files, when):
    stamp = time.gmtime(when)[:6]
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in files:
            entry = zipfile.ZipInfo(f"{top}/{name.as_posix()}", stamp)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 0  # without owners and rights of Unix
            archive.writestr(entry, (staging / name).read_bytes())


def write_installer(target, arguments, staging, files, environment):
    """The setup program installs the files that follow it. Without files it is the uninstaller.
    @return the bytes of the uninstaller"""
    program = staging.parent / "Uninstall.exe"
    shutil.copy(arguments.setup, program)
    strip(arguments, [program], environment)
    setup_program = program.read_bytes()
    sign(arguments, [program])
    contents = [(name.as_posix(), (staging / name).read_bytes()) for name in files]
    target.write_bytes(make_installer(setup_program,
                                      [*contents, ("Uninstall.exe", program.read_bytes())]))
    sign(arguments, [target])
    return program.read_bytes()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for option in ("source", "staging", "output", "name", "version", "strip", "setup"):
        parser.add_argument(f"--{option}", required=True)
    parser.add_argument("--sign", default="", help="command; the name of a file is added")
    arguments = parser.parse_args()
    staging = pathlib.Path(arguments.staging).resolve()
    output = pathlib.Path(arguments.output).resolve()
    output.mkdir(parents=True, exist_ok=True)
    for old in [*output.glob("DaemonManager-*"), *output.glob("SHA256SUMS*")]:
        old.unlink()
    when = commit_time(arguments.source)
    environment = {**os.environ, "SOURCE_DATE_EPOCH": str(when), "TZ": "UTC"}
    files = files_below(staging)
    strip(arguments, programs_of(staging, files), environment)
    sign(arguments, programs_of(staging, files))

    archive = output / f"{arguments.name}.zip"
    installer = output / f"{arguments.name}-setup.exe"
    materials = output / f"{arguments.name}.cdx.json"
    write_zip(archive, arguments.name, staging, files, when)
    uninstaller = write_installer(installer, arguments, staging, files, environment)
    hashes = {name.as_posix(): sha256((staging / name).read_bytes()) for name in files}
    hashes["Uninstall.exe"] = sha256(uninstaller)
    packages = [archive, installer]
    write_sbom(materials, arguments.version, when, hashes,
               {path.name: sha256(path.read_bytes()) for path in packages})
    packages.append(materials)
    sums = output / "SHA256SUMS"
    sums.write_text("".join(f"{sha256(path.read_bytes())}  {path.name}\n" for path in packages))
    sign(arguments, [sums])
    for path in packages:
        print(path)


if __name__ == "__main__":
    sys.exit(main())
