"""Cuts C++ sources into tokens, and finds the partner of each bracket."""
import re
from dataclasses import dataclass

PATTERN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<text>(?:u8|[uUL])?(?:R"(?P<fence>[^(\n]*)\(.*?\)(?P=fence)"|"(?:\\.|[^"\\\n])*")\w*)
  | (?P<char>(?:u8|[uUL])?'(?:\\.[^'\n]*|[^'\\\n])')
  | (?P<number>\.?\d(?:[eE][+-](?=\d)|'(?=\w)|[\w.])*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<sign><=>|<<=|>>=|\.\.\.|->\*|->|::|\+\+|--|&&|\|\||[-+*/%&|^=!<>]=|<<|(?<=\s)>>(?=\s)
      |[-+*/%&|^~!<>=?:;,.(){}\[\]])
  | (?P<space>\s+|\\\n)
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

OPENING = {"(": ")", "[": "]", "{": "}", "<": ">"}
CLOSING = {")": "(", "]": "[", "}": "{", ">": "<"}
KEYWORDS = frozenset("""
    alignas alignof auto break case catch class co_await co_return co_yield const constexpr continue
    decltype default delete do else enum explicit extern false final for friend goto if inline mutable
    namespace new noexcept nullptr operator override private protected public return sizeof static
    static_assert struct switch template this throw true try typedef typename union using virtual
    volatile while""".split())
VALUES = frozenset(("this", "true", "false", "nullptr"))


@dataclass
class Token:
    """One token. start and end are offsets into the text of the file."""
    kind: str
    text: str
    start: int
    end: int
    space_before: bool
    space_after: bool


def tokens_of(text):
    """@return the tokens without blanks, comments and preprocessor lines
    @raise ValueError: a character begins no token"""
    found = []
    position = 0
    while position < len(text):
        match = PATTERN.match(text, position)
        if match is None:
            raise ValueError(f"offset {position}: no token begins with {text[position]!r}")
        if match.lastgroup not in ("space", "comment", "directive"):
            end = match.end()
            found.append(Token(match.lastgroup, match.group(), position, end,
                               position == 0 or text[position - 1].isspace(),
                               end == len(text) or text[end].isspace()))
        position = match.end()
    return found


def opens_template(tokens, index):
    """Whether the token is the bracket of template arguments. The formatter puts no blank before it."""
    token = tokens[index]
    if token.text != "<" or index == 0:
        return False
    before = tokens[index - 1]
    return before.text == "template" or before.kind == "word" and not token.space_before


def partners_of(tokens):
    """@return for each bracket the index of its partner, both ways
    @raise ValueError: the brackets do not fit"""
    partners = {}
    opened = []
    for index, token in enumerate(tokens):
        if token.kind != "sign":
            continue
        if token.text in ("(", "[", "{") or opens_template(tokens, index):
            opened.append(index)
        elif token.text in CLOSING:
            if token.text == ">" and not (opened and tokens[opened[-1]].text == "<"):
                continue  # a comparison
            while opened and tokens[opened[-1]].text == "<" and token.text != ">":
                opened.pop()  # it was a comparison after all
            if not opened or tokens[opened[-1]].text != CLOSING[token.text]:
                raise ValueError(f"offset {token.start}: nothing opens this {token.text}")
            partners[index] = opened.pop()
            partners[partners[index]] = index
    if opened:
        raise ValueError(f"offset {tokens[opened[-1]].start}: nothing closes this bracket")
    return partners


def ends_operand(token):
    """Whether a value may end with this token."""
    if token.kind == "word":
        return token.text not in KEYWORDS or token.text in VALUES
    return token.kind in ("number", "text", "char") or token.text in (")", "]", "}", ">")
