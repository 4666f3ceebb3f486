"""Rules about what operators rely on: each message and each command is in their pages."""
import re

from layout import lists
from layout.tree import Finding, line_of

MESSAGES = "docs/messages.md"
COMMANDS = "docs/daemonctl.md"
TEXT_FOLDERS = ("src/app", "src/daemon_mgr", "src/host", "src/log")
LITERALS = re.compile(r'(?:"(?:[^"\\\n]|\\.)*"\s*)+')
WORDS = re.compile(r"[A-Za-z]{2,}[^A-Za-z]* [^A-Za-z]*[A-Za-z]{2,}")
NO_TEXT = re.compile(r"//[^\n]*|^[ \t]*#[^\n]*", re.MULTILINE)
DECLARATIONS = "daemonctl/commands/"
COMMAND = re.compile(r'\.Command\(\s*"([\w-]+)"|AddCommand\(\s*app,\s*exitCode,\s*"([\w-]+)"')


def as_documented(message):
    """A pattern for a message as the page writes it: its varying parts, or examples of them."""
    pattern = re.escape(message.replace('\\"', '"').replace("\\n", ""))
    pattern = pattern.replace("%d", r"(?:\d+|%d)").replace("%s", r".*")
    return re.compile(pattern)


def check_messages(tree):
    """docs/messages.md explains each text of several words in the sources that log or throw.

    How a text reaches the log does not matter: as a format, as the argument of "%s", as an exception.
    """
    page = tree.text(MESSAGES) if MESSAGES in tree.files else ""
    for path in tree.below("src"):
        if not path.endswith(".cpp") or not path.startswith(TEXT_FOLDERS):
            continue
        text = NO_TEXT.sub(lambda comment: " " * len(comment.group(0)), tree.text(path))
        for match in LITERALS.finditer(text):
            message = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', match.group(0)))
            if message in lists.NO_MESSAGES.get(path, ()) or not WORDS.search(message):
                continue
            if not as_documented(message).search(page):
                yield Finding("messages", f"{path}:{line_of(text, match.start())}",
                              f"{MESSAGES} lacks \"{message}\"")


def check_commands(tree):
    """docs/daemonctl.md names each command of daemonctl."""
    page = tree.text(COMMANDS) if COMMANDS in tree.files else ""
    for path in tree.below("daemonctl"):
        if not path.endswith(".cpp"):
            continue
        text = tree.text(path)
        found = list(COMMAND.finditer(text))
        declares = path.startswith(DECLARATIONS) and path.endswith(("Command.cpp", "Commands.cpp"))
        if declares and not found:
            yield Finding("commands", path, "declares no command in a way that this check knows")
        for match in found:
            name = match.group(1) or match.group(2)
            if f"`{name}`" not in page:
                yield Finding("commands", f"{path}:{line_of(text, match.start())}",
                              f"{COMMANDS} lacks the command {name}")
