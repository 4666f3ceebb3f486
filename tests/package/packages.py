"""Where the tests make the packages."""
import os
import shutil
import subprocess

import windows_machine as machine

VERSION = os.environ["DM_VERSION"]
NAME = f"DaemonManager-{VERSION}-win64"
OUTPUT = machine.BUILD / "package-test/packages"


def pack(folder, sign=""):
    """Makes the packages from the programs of the build.
    @param sign  command that signs a file, whose name is added
    @return the folder with the packages"""
    shutil.rmtree(folder, ignore_errors=True)
    subprocess.run(["cpack", "--config", machine.BUILD / "CPackConfig.cmake", "-B",
                    folder / "cpack", "-D", f"CPACK_DM_SIGN={sign}"], check=True,
                   stdout=subprocess.DEVNULL)
    return folder
