"""Chooses mutants: the same seed gives the same ones while the lines that they change stay."""
import collections
import hashlib
import pathlib

from mutation.rewriting import crosses
from mutation.syntax import Source

FEWEST_OF_A_FOLDER = 4
MOST_OF_A_FILE = 0.4  # of the mutants of its folder, where the folder has other files


def all_changes(root, folders):
    """@return all changes that are possible below the folders"""
    found = []
    for folder in folders:
        for path in sorted((pathlib.Path(root) / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                name = path.relative_to(root).as_posix()
                found += Source(name, path.read_text(encoding="utf-8")).changes
    return found


def shares(counts, number):
    """How many mutants each folder gets: a few each, the rest as many as it has places to change."""
    wanted = {folder: min(count, FEWEST_OF_A_FOLDER) for folder, count in counts.items()}
    total = sum(counts.values())
    while sum(wanted.values()) < min(number, total):
        folder = min((name for name in sorted(counts) if wanted[name] < counts[name]),
                     key=lambda name: (wanted[name] - FEWEST_OF_A_FOLDER) / counts[name])
        wanted[folder] += 1
    return wanted


def chosen(changes, seed, number, refused=()):
    """@param refused  keys of changes that cannot be used
    @return `number` changes, spread over all folders and files"""
    by_folder = collections.defaultdict(list)
    for change in changes:
        if change.key not in refused:
            by_folder[change.path.rpartition("/")[0]].append(change)
    wanted = shares({folder: len(found) for folder, found in by_folder.items()}, number)
    result = []
    for folder in sorted(by_folder):
        found = sorted(by_folder[folder], key=lambda change: hashlib.sha256(
            f"{seed} {change.key}".encode()).hexdigest())
        files = len({change.path for change in found})
        most = max(2, round(wanted[folder] * MOST_OF_A_FILE)) if files > 1 else wanted[folder]
        of_file = collections.defaultdict(list)
        spare = []
        for change in found:
            taken = of_file[change.path]
            if any(change.line == other.line for other in taken) or crosses(change, taken):
                continue
            (taken if len(taken) < most else spare).append(change)
        picked = [change for taken in of_file.values() for change in taken]
        picked.sort(key=found.index)
        result += (picked + spare)[:wanted[folder]]
    return sorted(result, key=lambda change: (change.path, change.start))
