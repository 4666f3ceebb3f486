"""Rules about source files: length, direction of includes, tests beside their sources, paths."""
import re

from layout import lists
from layout.tree import Finding, folder_of, line_of, name_of

MAX_LINES = 300
LONG_FOLDERS = ("src", "daemonctl", "guard", "setup", "sdk", "interface", "tests", "benchmarks", "tools")
DATA_SUFFIXES = (".svg", ".csv", ".json", ".md", ".txt", ".log")
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]+"([^"]+)"', re.MULTILINE)
MAX_COLUMNS = 100
COMMENT = re.compile(r"^\s*//|//[/!]?< ")
NOT_WRAPPED = re.compile(r"NOLINT|https?://")
ATOMIC = re.compile(r"\bstd::atomic(?:_\w+)?(?:<[^;{}()]*?>)?\s+(\w+)")
BUILT_ON_ATOMIC_WAIT = re.compile(r"#[ \t]*include[ \t]+<(?:latch|barrier|semaphore)>")
THREAD_LOCAL = re.compile(r"^[^/\"\n]*\bthread_local\s+(?:static\s+|const\s+|volatile\s+)*([\w:]+)\s*([*&]?)",
                          re.MULTILINE)
PLAIN_TYPES = {"bool", "char", "int", "unsigned", "DWORD", "HANDLE", "std::size_t", "std::int64_t", "std::uint32_t",
               "std::uint64_t"}
MACHINE_PATH = re.compile(r"(?<![\w.*$}\]])/(?:home|root|work|mnt|media|srv|Users)/[\w.-]+")


def check_length(tree):
    """No source file has more than 300 lines."""
    for path in tree.below(*LONG_FOLDERS):
        text = None if "/corpus/" in path or path.endswith(DATA_SUFFIXES) else tree.text(path)
        lines = text.count("\n") if text is not None else 0
        if lines > MAX_LINES:
            yield Finding("length", path, f"{lines} lines, {MAX_LINES} are allowed")


def check_columns(tree):
    """No comment of a C++ source is longer than 100 columns: the formatter does not wrap comments."""
    for path in tree.below(*LONG_FOLDERS):
        if not path.endswith((".h", ".cpp")):
            continue
        for number, line in enumerate(tree.text(path).splitlines(), 1):
            comment = COMMENT.search(line)
            if len(line) > MAX_COLUMNS and comment and not NOT_WRAPPED.search(line):
                yield Finding("columns", f"{path}:{number}", f"a comment ends in column {len(line)}")


def room_of(path):
    """The listed folder that a file belongs to: the longest that fits. None: no folder fits."""
    folder = folder_of(path)
    while folder and folder not in lists.MAY_INCLUDE:
        folder = folder_of(folder)
    return folder or None


def reachable(room):
    """All rooms that a room may include: the listed ones, and those that they may include."""
    found = {room}
    todo = [room]
    while todo:
        for lower in lists.MAY_INCLUDE.get(todo.pop(), ()):
            if lower not in found:
                found.add(lower)
                todo.append(lower)
    return found


def check_arrows(tree):
    """A file includes only its own folder and the folders listed for it."""
    code = [path for path in tree.below("src", "daemonctl", "guard", "setup", "sdk", "interface")
            if path.endswith((".h", ".cpp"))]
    for room in lists.MAY_INCLUDE:
        if not tree.below(room):
            yield Finding("arrows", "tools/layout/lists.py", f"MAY_INCLUDE names {room}, which is empty")
    headers = [path for path in code if path.endswith(".h")]
    for path in code:
        room = room_of(path)
        if room is None:
            yield Finding("arrows", path, "its folder is not in MAY_INCLUDE of tools/layout/lists.py")
            continue
        allowed = reachable(room)
        text = tree.text(path)
        for match in INCLUDE.finditer(text):
            name = match.group(1)
            if f"{folder_of(path)}/{name}" in tree.files:
                continue
            rooms = {room_of(header) for header in headers if header.endswith("/" + name)}
            if rooms and not rooms & allowed:
                place = f"{path}:{line_of(text, match.start())}"
                yield Finding("arrows", place, f"{room} may not include {name} of "
                              + " or ".join(sorted(str(other) for other in rooms)))


def mirrored_folder(path):
    """The folder of sources that belongs to a file below tests/unit."""
    folder = folder_of(path).removeprefix("tests/unit").lstrip("/")
    return folder if folder.split("/")[0] in ("daemonctl", "guard", "setup") else f"src/{folder}".rstrip("/")


def check_tested(tree, folders):
    """Each source has a test file of its name, or TESTED_BY names the test file that covers it."""
    subjects = {}
    for path in tree.below("tests/unit"):
        if path.endswith("Test.cpp"):
            subjects.setdefault(mirrored_folder(path), []).append(name_of(path))
    without = set()
    for path in tree.below(*folders):
        folder = folder_of(path)
        if not path.endswith(".cpp") or folder in lists.NOT_MIRRORED or folder not in subjects:
            continue
        stem = name_of(path).partition(".")[0]
        if any(subject.startswith(stem) for subject in subjects[folder]):
            continue
        without.add(path)
        if lists.TESTED_BY.get(path) not in tree.files:
            yield Finding("mirror", path, "no test file has its name, and TESTED_BY names no test file for it")
    for path in sorted(set(lists.TESTED_BY) - without):
        yield Finding("mirror", "tools/layout/lists.py", f"TESTED_BY has no need of {path}")


def check_mirror(tree):
    """tests/unit mirrors src, daemonctl, guard and setup: folder by folder, and each source has its test file."""
    stems = {}
    for path in tree.below("src", "daemonctl", "guard", "setup"):
        if path.endswith((".h", ".cpp")):
            stems.setdefault(folder_of(path), set()).add(name_of(path).partition(".")[0])
    tested = set()
    needed = set()
    for path in tree.below("tests/unit"):
        if not path.endswith((".h", ".cpp")):
            continue
        folder = mirrored_folder(path)
        tested.add(folder)
        fault = None
        if folder not in stems:
            fault = f"there is no folder {folder} with sources"
        elif path.endswith("Test.cpp"):
            subject = name_of(path).removesuffix("Test.cpp")
            if not any(subject.startswith(stem) for stem in stems[folder]):
                fault = f"no source of {folder} has a name that {subject} begins with"
        if fault and path in lists.NOT_MIRRORED:
            needed.add(path)
        elif fault:
            yield Finding("mirror", path, fault)
    for folder in stems:
        if folder in tested or not any(path.endswith(".cpp") and folder_of(path) == folder
                                       for path in tree.files):
            continue
        if folder in lists.NOT_MIRRORED:
            needed.add(folder)
        else:
            yield Finding("mirror", folder, "no folder of tests/unit mirrors it")
    yield from check_tested(tree, stems)
    for path in sorted(set(lists.NOT_MIRRORED) - needed):
        yield Finding("mirror", "tools/layout/lists.py", f"NOT_MIRRORED has no need of {path}")


def check_waits(tree):
    """No code waits with std::atomic::wait or with what the library builds on it.

    libstdc++ 12 has a gap on Windows between its look at the value and its wait: a notification in
    this gap is lost, and the thread waits for ever (bits/atomic_wait.h, _M_do_wait).
    """
    for path in tree.below("src", "daemonctl", "guard", "setup", "sdk", "interface", "tests", "benchmarks"):
        if not path.endswith((".h", ".cpp")):
            continue
        text = tree.text(path)
        names = "|".join(sorted(set(ATOMIC.findall(text)))) or "(?!)"
        found = list(re.finditer(rf"\b(?:{names})\.(?:wait|notify_one|notify_all)\(", text))
        for match in found + list(BUILT_ON_ATOMIC_WAIT.finditer(text)):
            yield Finding("waits", f"{path}:{line_of(text, match.start())}",
                          "loses wake-ups on Windows; use a condition variable or tests/support/Watched.h")


def check_locals(tree):
    """No thread_local variable has a destructor: mingw's run time frees the memory of a thread's variables before
    their destructors run, which damages the heap."""
    for path in tree.below(*LONG_FOLDERS):
        if not path.endswith((".h", ".cpp")):
            continue
        text = tree.text(path)
        for match in THREAD_LOCAL.finditer(text):
            if match.group(1) not in PLAIN_TYPES and match.group(2) != "*":
                yield Finding("locals", f"{path}:{line_of(text, match.start())}",
                              f"{match.group(1)} is thread_local, and may have a destructor")


def check_paths(tree):
    """No text names a folder of the machine on which somebody worked."""
    for path in tree.files:
        text = None if "/corpus/" in path else tree.text(path)
        for match in MACHINE_PATH.finditer(text or ""):
            yield Finding("paths", f"{path}:{line_of(text, match.start())}",
                          f"names a folder of one machine: {match.group()}")
