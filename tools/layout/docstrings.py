"""The rule that each public declaration has a docstring. A reader of C++ headers that knows as much
of the language as the house style uses."""
import re

from layout.tree import Finding, line_of

LITERAL_OR_COMMENT = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.MULTILINE)
TEMPLATE = re.compile(r"^template\s*<[^<>]*(?:<[^<>]*>[^<>]*)*>\s*")
ATTRIBUTE = re.compile(r"\[\[[^\]]*\]\]\s*|alignas\([^)]*\)\s*")
TYPE = re.compile(r"^(?:typedef\s+)?(class|struct|union|enum(?:\s+(?:class|struct))?)\s+(\w+)")
ACCESS = re.compile(r"(public|private|protected)\s*$")
NOT_DECLARED_HERE = ("using ", "friend ", "static_assert", "typedef ", "namespace ", "extern template")


def blank(match):
    return re.sub(r"[^\n]", " ", match.group())


def plain(declaration):
    """A declaration without template head, attributes and surplus blanks."""
    text = ATTRIBUTE.sub("", re.sub(r"\s+", " ", declaration).strip())
    while TEMPLATE.match(text):
        text = TEMPLATE.sub("", text, count=1)
    return ATTRIBUTE.sub("", text)


def function_name(text):
    """The name of the function that is declared; None for anything else."""
    head = text.partition("(")[0]
    if "(" not in text or "=" in head.replace("operator=", "").replace("operator==", ""):
        return None
    match = re.search(r"(operator\s*[^\s\w]+|operator\s+\w+|~?\w+)\s*$", head)
    return match.group(1) if match else None


def speaks_for_itself(text, name, body, scope_name):
    """Whether a function needs no docstring: what it does is inherited, generated or visible."""
    if name.startswith(("~", "operator")) or re.search(r"\boverride\b|\bfinal\b", text):
        return True
    if re.search(r"=\s*(default|delete)\s*$", text):
        return True
    if name == scope_name and re.search(r"\w\(\s*\)", text):
        return True  # a constructor without parameters
    if body is None:
        return False
    one_line = re.sub(r"\s+", " ", body).strip()
    if name == scope_name and not one_line:
        return True  # a constructor that only stores
    return one_line.count(";") <= 1 and (one_line.startswith("return ") or not one_line)


class Header:
    """Walks through one header and yields the declarations that need a docstring and lack one."""

    def __init__(self, path, text):
        self.path = path
        self.lines = text.split("\n")
        self.code = DIRECTIVE.sub(blank, LITERAL_OR_COMMENT.sub(blank, text))
        self.documented_until = -1  # line index of the last documented declaration's end
        self.has_common_docstring = any(line.startswith("/// @file") for line in self.lines)

    def matching(self, start):
        depth = 0
        for index in range(start, len(self.code)):
            depth += {"{": 1, "}": -1}.get(self.code[index], 0)
            if depth == 0:
                return index
        return len(self.code) - 1

    def documented(self, start, end):
        first = line_of(self.code, start) - 1
        last = line_of(self.code, end) - 1
        above = first - 1
        while above >= 0 and self.lines[above].strip().startswith(("// NOLINT", "// clang-format")):
            above -= 1
        over = self.lines[above].strip() if above >= 0 else ""
        result = (over.startswith("///") or over.endswith("*/") or self.documented_until == above
                  or any("///<" in line for line in self.lines[first:last + 1]))
        if result:
            self.documented_until = last
        return result

    def undocumented(self):
        """(line, what) of each public declaration without a docstring."""
        scopes = []  # (kind, name, public)
        start = 0
        index = 0
        depth = 0
        while index < len(self.code):
            sign = self.code[index]
            if sign in "([":
                depth += 1
            elif sign in ")]":
                depth -= 1
            elif depth == 0 and sign == ":" and ACCESS.search(self.code[start:index]):
                kind, name, _ = scopes[-1]
                access = ACCESS.search(self.code[start:index]).group(1)
                scopes[-1] = (kind, name, access == "public")
                start = index + 1
            elif depth == 0 and sign == ";":
                yield from self.examine(start, index, None, scopes)
                start = index + 1
            elif depth == 0 and sign == "}":
                if scopes:
                    scopes.pop()
                start = index + 1
            elif depth == 0 and sign == "{":
                text = plain(self.code[start:index])
                kind = TYPE.match(text)
                if text.startswith(("namespace", "extern")):
                    hidden = re.search(r"\bdetail\b", text) is not None or text == "namespace"
                    scopes.append(("namespace", text, not hidden))
                    start = index + 1
                elif kind and function_name(text) is None and not kind.group(1).startswith("enum"):
                    yield from self.examine(start, index, None, scopes)
                    scopes.append(("class", kind.group(2), kind.group(1) != "class"))
                    start = index + 1
                else:
                    end = self.matching(index)
                    body = function_name(text) and not self.initialises(text)
                    if body:
                        yield from self.examine(start, index, self.code[index + 1:end], scopes)
                        start = end + 1
                    elif kind:
                        yield from self.examine(start, index, None, scopes)
                        start = end + 1
                    index = end
            index += 1

    @staticmethod
    def initialises(text):
        """Whether the brace after this text belongs to a member of a constructor's list."""
        return re.search(r"\)\s*(?:noexcept\s*)?:[^:].*[\w>]$", text) is not None

    def examine(self, start, end, body, scopes):
        text = plain(self.code[start:end])
        while start < end and self.code[start].isspace():
            start += 1
        if not text or not all(public for _, _, public in scopes):
            return
        if text.startswith(NOT_DECLARED_HERE):
            return
        name = function_name(text)
        kind = TYPE.match(text) if name is None else None
        if kind:
            if self.code[end] == ";" and "{" not in text:
                return  # a forward declaration
            name = f"{kind.group(1)} {kind.group(2)}"
        elif name is None:
            return
        documented = self.documented(start, end)
        scope = scopes[-1][1] if scopes else ""
        if self.has_common_docstring and not kind and scope.startswith("namespace"):
            return  # functions that share one contract, which stands once after @file
        if not documented and (kind or not speaks_for_itself(text, name, body, scope)):
            yield line_of(self.code, start), name


def check_docstrings(tree):
    """Types, free functions and public member functions in headers have docstrings."""
    for path in tree.below("src", "daemonctl", "guard", "setup", "sdk"):
        if path.endswith(".h"):
            for line, name in Header(path, tree.text(path)).undocumented():
                yield Finding("docstrings", f"{path}:{line}", f"{name} has no docstring (///)")
