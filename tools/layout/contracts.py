"""Rules about what operators rely on: each message and each command is in their pages."""
import re

from layout.tree import Finding, line_of

MESSAGES = "docs/messages.md"
COMMANDS = "docs/daemonctl.md"
LOGGED = re.compile(r'\bLog\(\s*[\w:]+,\s*((?:"(?:[^"\\]|\\.)*"\s*)+)')
COMMAND = re.compile(r'add_subcommand\(\s*"([\w-]+)"|AddCommand\(\s*app,\s*exitCode,\s*"([\w-]+)"')


def as_documented(message):
    """A pattern for a message as the page writes it: its varying parts, or examples of them."""
    pattern = re.escape(message)
    pattern = pattern.replace("%d", r"(?:\d+|%d)").replace("%s", r".*")
    return re.compile(pattern)


def check_messages(tree):
    """docs/messages.md explains each message that the supervisor logs."""
    page = tree.text(MESSAGES) if MESSAGES in tree.files else ""
    for path in tree.below("src"):
        text = tree.text(path) if path.endswith((".cpp", ".h")) else ""
        for match in LOGGED.finditer(text):
            message = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', match.group(1)))
            if message != "%s" and not as_documented(message).search(page):
                yield Finding("messages", f"{path}:{line_of(text, match.start())}",
                              f"{MESSAGES} lacks \"{message}\"")


def check_commands(tree):
    """docs/daemonctl.md names each command of daemonctl."""
    page = tree.text(COMMANDS) if COMMANDS in tree.files else ""
    for path in tree.below("daemonctl"):
        text = tree.text(path) if path.endswith(".cpp") else ""
        for match in COMMAND.finditer(text):
            name = match.group(1) or match.group(2)
            if f"`{name}`" not in page:
                yield Finding("commands", f"{path}:{line_of(text, match.start())}",
                              f"{COMMANDS} lacks the command {name}")
