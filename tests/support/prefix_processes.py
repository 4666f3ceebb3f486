"""The processes of a Wine prefix, as this host sees them."""
import contextlib
import pathlib


def processes_of(prefix, part):
    """Finds the Windows processes of a Wine prefix. The script tools/wine-run, which starts them, is none of them.
    @param part  text that the command line contains, arguments included
    @return their command lines, with blanks between the words, by the process's id on this host"""
    mark = f"WINEPREFIX={prefix}\0".encode()
    found = {}
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):  # a process may end meanwhile
            words = (folder / "cmdline").read_bytes().rstrip(b"\0").split(b"\0")
            command = b" ".join(words).decode(errors="replace")
            if part in command and "wine-run" not in command and mark in (folder / "environ").read_bytes():
                found[int(folder.name)] = command
    return found
