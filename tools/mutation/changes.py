"""Small changes of expressions: a comparison turned, a constant off by one, a condition negated."""
import re
from dataclasses import dataclass, field

from mutation.tokens import ends_operand

RANK = {"*": 10, "/": 10, "%": 10, "+": 9, "-": 9, "<<": 8, ">>": 8, "<=>": 7, "<": 6, "<=": 6,
        ">": 6, ">=": 6, "==": 5, "!=": 5, "&": 4.3, "^": 4.2, "|": 4.1, "&&": 3, "||": 2}
ASSIGNMENTS = frozenset("= += -= *= /= %= &= |= ^= <<= >>=".split())
STOPS = frozenset(("?", ":", ",", ";")) | ASSIGNMENTS
STOP_WORDS = frozenset(("return", "throw", "else", "do", "case", "co_return", "co_yield"))
OTHER_OPERATORS = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"),
                   "==": ("!=",), "!=": ("==",), "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",)}
KINDS = {"&&": "logic", "||": "logic", "+": "arithmetic", "-": "arithmetic"}
NUMBER = re.compile(r"(0[xX][0-9a-fA-F']+|0[bB][01']+|[\d']+)([uUlLzZ]*|[a-z]+)$")
IS = "::mutant::IsChosen(@)"  # @ becomes the number of the mutant
IS_OF_CONSTEXPR = "::mutant::Is(@)"


@dataclass
class Change:
    """One small change. The source keeps its behaviour until the switch of the mutant is set.

    start and end are offsets into the text; before and after are what a reader is shown. `made` makes
    the code with the switch: of the code between the offsets, perhaps with other switches in it.
    `changed` is the changed code alone, for a build that has only this change; None: use `made`.
    """
    kind: str
    start: int
    end: int
    before: str
    after: str
    made: callable
    changed: str = None
    constant: tuple = None  # offsets of a `constexpr` that must become `const`, and the new text
    in_constexpr: bool = False  # in a function that the compiler may run
    path: str = ""
    line: int = 0
    last_line: int = 0
    key: str = field(default="", compare=False)


def without_comments(text):
    """One line without comments: code that may stand in the middle of another line."""
    text = re.sub(r'("(?:\\.|[^"\\\n])*")|//[^\n]*|/\*.*?\*/', lambda m: m.group(1) or " ", text,
                  flags=re.DOTALL)
    return " ".join(text.split())


def is_binary(tokens, index):
    """Whether an operator has two operands. The formatter puts blanks around such an operator."""
    token = tokens[index]
    return (token.text in RANK and index > 0 and ends_operand(tokens[index - 1])
            and token.space_before and token.space_after)


def left_end(source, index, rank, first):
    """The first token of the operand to the left of an operator."""
    tokens, partners = source.tokens, source.partners
    at = index - 1
    while at >= first:
        token = tokens[at]
        if at in partners and partners[at] < at:
            at = partners[at] - 1
            continue
        if token.text in ("(", "[", "{") or token.text in STOPS or token.text in STOP_WORDS \
                or is_binary(tokens, at) and RANK[token.text] < rank:
            break
        at -= 1
    return at + 1


def right_end(source, index, rank, last):
    """The token after the operand to the right of an operator."""
    tokens, partners = source.tokens, source.partners
    at = index + 1
    while at < last:
        token = tokens[at]
        if partners.get(at, -1) > at:
            at = partners[at] + 1
            continue
        if token.text in (")", "]", "}") or token.text in STOPS \
                or is_binary(tokens, at) and RANK[token.text] <= rank:
            break
        at += 1
    return at


def turned(source, index, first, last):
    """Another operator in place of a comparison, of && or ||, of + or -."""
    tokens = source.tokens
    operator = tokens[index].text
    left = left_end(source, index, RANK[operator], first)
    right = right_end(source, index, RANK[operator], last)
    if left == index or right == index + 1:
        return
    if operator in "+-" and any(token.kind in ("text", "char") for token in tokens[first:last]):
        return  # texts are joined with +, and there is no other operator for them
    start, end = tokens[left].start, tokens[right - 1].end
    before = without_comments(source.text[start:end])
    for other in OTHER_OPERATORS[operator]:
        after = without_comments(source.text[start:tokens[index].start] + other
                                 + source.text[tokens[index].end:end])
        yield Change(KINDS.get(operator, "comparison"), start, end, before, after,
                     lambda own, after=after: f"({IS} ? ({after}) : ({own}))", after)


def negated(source, first, last, declared=None):
    """A condition in the tokens from first to last. declared: the name that the condition declares."""
    start, end = source.tokens[first].start, source.tokens[last - 1].end
    text = without_comments(source.text[start:end])
    if declared:
        made = lambda own: f"{own}; {IS} != static_cast<bool>({declared})"  # noqa: E731
        return Change("condition", start, end, text, f"{text}; !{declared}", made)
    made = lambda own: f"({IS} != static_cast<bool>({own}))"  # noqa: E731
    return Change("condition", start, end, text, f"!({text})", made)


def other_number(text):
    """@return the number one higher, written as this one is; None: not a whole number"""
    match = NUMBER.match(text)
    if match is None:
        return None
    digits, suffix = match.groups()
    plain = digits.replace("'", "").lower()
    if plain.startswith("0x"):
        return f"0x{int(plain, 16) + 1:X}{suffix}"
    if plain.startswith("0b"):
        return f"0b{int(plain, 2) + 1:b}{suffix}"
    if len(plain) > 1 and plain.startswith("0"):
        return f"0{int(plain, 8) + 1:o}{suffix}"
    return f"{int(plain) + 1}{suffix}"


def other_literal(source, index, constant=None):
    """A number off by one, another character, true in place of false."""
    token = source.tokens[index]
    if token.kind == "number":
        other = other_number(token.text)
    elif token.kind == "char" and len(token.text) == 3 and token.text[1].isalnum():
        other = f"'{chr(ord(token.text[1]) + 1)}'"
    else:
        other = {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE"}.get(token.text)
    if other is not None:
        yield Change("constant", token.start, token.end, token.text, other,
                     lambda own: f"({IS} ? {other} : {own})", other, constant)


def other_result(source, first, last):
    """Another value in place of the one that a function returns."""
    tokens = source.tokens
    if tokens[first].text in ("{", "[", "*") or tokens[first].kind == "text" \
            or tokens[last - 1].text in ("nullptr", "nullopt", "this"):
        return
    start, end = tokens[first].start, tokens[last - 1].end
    text = without_comments(source.text[start:end])
    yield Change("result", start, end, f"return {text}", f"return another value than {text}",
                 lambda own: f"::mutant::Other(@, {own})")


def left_out(source, first, last):
    """A statement that is not carried out; last is its semicolon."""
    start, end = source.tokens[first].start, source.tokens[last].end
    text = without_comments(source.text[start:end])
    yield Change("statement", start, end, text, "(left out)",
                 lambda own: f"if (!{IS}) {{ {own} }}", ";")
