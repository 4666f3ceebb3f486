"""A Windows machine for the tests: the programs, files and registry of a Wine prefix."""
import contextlib
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))

from prefix_processes import processes_of  # noqa: E402

SOURCE = pathlib.Path(os.environ["DM_SOURCE"])
BUILD = pathlib.Path(os.environ["DM_BUILD"])
PREFIX = pathlib.Path(os.environ["WINEPREFIX"])
DRIVE_C = PREFIX / "drive_c"
DEADLINE = 400  # seconds; only a failure reaches it
ENVIRONMENT = {**os.environ, "WINEDEBUG": "-all"}


def wait_until(condition, what):
    end = time.monotonic() + DEADLINE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"did not happen within {DEADLINE} s: {what}")
        time.sleep(0.05)


def host_path(windows_path):
    """Returns the path on this host of a path on drive C:."""
    assert windows_path[:2] == "C:", windows_path
    return DRIVE_C / windows_path[3:].replace("\\", "/")


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def start():
    subprocess.run([SOURCE / "tools/wine-prefix"], env=ENVIRONMENT, check=True)
    # WMI of Wine may not know the paths of programs, and to attach a process needs its path.
    locator = r"HKLM\Software\Classes\CLSID\{4590F811-1D3A-11D0-891F-00AA004B2E24}\InprocServer32"
    stand_in = windows_path(BUILD / "tests/programs/dm_standins.dll")
    run("reg", "add", locator, "/ve", "/d", stand_in, "/f")
    run("reg", "add", locator, "/v", "ThreadingModel", "/d", "Both", "/f")


def stop():
    subprocess.run([SOURCE / "tools/wine-prefix", "--stop"], env=ENVIRONMENT, check=True)


def call(program, *arguments, cwd=None, text_input=""):
    """Runs a Windows program. @return its exit code and its output"""
    # The output goes to a file, because programs that this program starts would keep a pipe open.
    with tempfile.TemporaryFile() as output:
        result = subprocess.run(
            [SOURCE / "tools/wine-run", program, *arguments], env=ENVIRONMENT, cwd=cwd,
            input=text_input.encode(), stdout=output, stderr=subprocess.STDOUT, timeout=DEADLINE,
            check=False)
        output.seek(0)
        return result.returncode, output.read().decode(errors="replace").replace("\r", "")


def run(program, *arguments):
    """Runs a Windows program that must succeed. @return its output"""
    code, output = call(program, *arguments)
    if code != 0:
        raise AssertionError(f"{program} {' '.join(map(str, arguments))}: {code}\n{output}")
    return output


def processes(name):
    """Returns the ids on this host of all processes with this text in their command line."""
    return set(processes_of(PREFIX, name))


def end_processes(name):
    for process in processes(name):
        with contextlib.suppress(OSError):
            os.kill(process, signal.SIGKILL)
    wait_until(lambda: not processes(name), f"the end of {name}")


class Background:
    """A program that runs beside the test and reads lines. It ends at the end of the with block."""

    def __init__(self, program, *arguments):
        self._output = tempfile.TemporaryFile()
        self._process = subprocess.Popen(
            [SOURCE / "tools/wine-run", program, *arguments], env=ENVIRONMENT,
            stdin=subprocess.PIPE, stdout=self._output, stderr=subprocess.STDOUT)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._process.stdin.close()
        self._output.close()

    def output(self):
        return os.pread(self._output.fileno(), 1 << 20, 0).decode().replace("\r", "")

    def wait_for_output(self, text):
        wait_until(lambda: text in self.output() or self._process.poll() is not None, text)
        if text not in self.output():
            raise AssertionError(f"the program ended without writing {text!r}:\n{self.output()}")

    def send_line(self):
        self._process.stdin.write(b"\r\n")
        self._process.stdin.flush()

    def end(self):
        """Waits for the end of the program. @return its exit code"""
        return self._process.wait(DEADLINE)


def registry(key):
    """Returns the values and subkeys of a key as text, or None if the key does not exist."""
    code, output = call("reg", "query", key, "/s")
    return output if code == 0 else None


def value(key, name):
    """Returns the text of a registry value, or None if it does not exist."""
    code, output = call("reg", "query", key, "/v", name)
    for line in output.splitlines():
        words = line.split(None, 2)
        if code == 0 and words and words[0] == name:
            return words[2]
    return None


def _exported(key):
    """Returns the text of each key below a key, by its name."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "export.reg"
        run("regedit", "/E", windows_path(file), key)
        blocks = file.read_bytes().decode("utf-16").replace("\r", "").split("\n\n[")
    return {block.split("]\n")[0]: block for block in blocks}


def snapshot():
    """Returns all files and folders of drive C:, all services, and all registry keys of programs. The values
    of two snapshots differ if the content differs."""
    entries = {}
    for folder, folders, files in os.walk(DRIVE_C):
        entries.update({os.path.join(folder, name): "folder" for name in folders})
        for name in files:
            path = os.path.join(folder, name)
            status = os.lstat(path)
            entries[path] = (status.st_size, status.st_mtime_ns)
    entries.update(_exported(r"HKEY_LOCAL_MACHINE\Software"))
    entries.update(_exported(r"HKEY_LOCAL_MACHINE\System\CurrentControlSet\Services"))
    entries.update(_exported("HKEY_CURRENT_USER"))
    return entries
