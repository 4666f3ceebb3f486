#!/usr/bin/env python3
"""Makes the packages from a staging folder: ZIP, installer, bill of materials and checksums.

Equal files at one commit give equal packages on every machine and at every time: names are sorted,
and every time in a package is the time of the commit, or SOURCE_DATE_EPOCH.
"""
import argparse
import hashlib
import os
import pathlib
import subprocess
import sys
import time
import zipfile

from installer_files import write_installer_files
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


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def files_below(folder):
    """Returns all files as sorted paths relative to the folder."""
    return sorted((path.relative_to(folder) for path in folder.rglob("*") if path.is_file()),
                  key=lambda path: path.as_posix())


def strip_programs(strip, staging, files, environment):
    """Strips here and not in CPack, because strip writes the time into a program unless
    SOURCE_DATE_EPOCH is set."""
    programs = [staging / name for name in files if name.suffix in (".exe", ".dll")]
    subprocess.run([strip, *programs], env=environment, check=True)


def write_zip(target, top, staging, files, when):
    stamp = time.gmtime(when)[:6]
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in files:
            entry = zipfile.ZipInfo(f"{top}/{name.as_posix()}", stamp)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 0  # without owners and rights of Unix
            archive.writestr(entry, (staging / name).read_bytes())


def write_installer(target, arguments, staging, files, when, environment):
    lists = staging.parent / "files.nsh"
    write_installer_files(lists, staging, files)
    for name in files:  # the installer stores the times of the files
        os.utime(staging / name, (when, when))
    subprocess.run(
        [arguments.makensis, "-V2", "-WX", "-INPUTCHARSET", "UTF8",
         f"-DVERSION={arguments.version}", f"-DOUTPUT={target}", f"-DFILES={lists}",
         f"-DSTAGING={staging}", str(pathlib.Path(arguments.source) / "packaging/installer.nsi")],
        env=environment, check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for option in ("source", "staging", "output", "name", "version", "strip", "makensis"):
        parser.add_argument(f"--{option}", required=True)
    arguments = parser.parse_args()
    staging = pathlib.Path(arguments.staging).resolve()
    output = pathlib.Path(arguments.output).resolve()
    output.mkdir(parents=True, exist_ok=True)
    for old in [*output.glob("DaemonManager-*"), *output.glob("SHA256SUMS")]:
        old.unlink()
    when = commit_time(arguments.source)
    environment = {**os.environ, "SOURCE_DATE_EPOCH": str(when), "TZ": "UTC"}
    files = files_below(staging)
    strip_programs(arguments.strip, staging, files, environment)

    archive = output / f"{arguments.name}.zip"
    installer = output / f"{arguments.name}-setup.exe"
    materials = output / f"{arguments.name}.cdx.json"
    write_zip(archive, arguments.name, staging, files, when)
    write_installer(installer, arguments, staging, files, when, environment)
    packages = [archive, installer]
    write_sbom(materials, arguments.version, when,
               {name.as_posix(): sha256(staging / name) for name in files})
    packages.append(materials)
    (output / "SHA256SUMS").write_text(
        "".join(f"{sha256(path)}  {path.name}\n" for path in packages))
    for path in packages:
        print(path)


if __name__ == "__main__":
    sys.exit(main())
