"""Walks through a C++ source and finds the places where a small change can stand.

It knows as much C++ as the formatted sources of this repository need. What it does not know it passes
over; a change that does not compile is taken back when the build fails.
"""
from mutation import changes
from mutation.tokens import KEYWORDS, ends_operand, partners_of, tokens_of

PASSED_OVER = frozenset(("using", "typedef", "static_assert", "friend", "goto", "struct", "class",
                         "enum", "union", "template"))
UNEVALUATED = frozenset(("sizeof", "alignof", "decltype", "noexcept", "alignas", "typeid", "requires"))
AFTER_PARAMETERS = frozenset(("const", "noexcept", "override", "final", "mutable", "try", "&", "&&"))
WITHOUT_EFFECT = (".reserve(", ".shrink_to_fit(", "va_start(", "va_end(")
MOST_IN_A_TABLE = 2  # numbers of one declaration that are changed


class Source:
    """One source file and the changes that are possible in it."""

    def __init__(self, path, text):
        self.path = path
        self.text = text
        self.tokens = tokens_of(text)
        self.partners = partners_of(self.tokens)
        self.changes = []
        self.ends_of_switches = set()  # indices of their closing brackets
        self._declarations(0, len(self.tokens))
        lines = text.split("\n")
        seen = {}
        for change in self.changes:
            change.path = path
            change.line = text.count("\n", 0, change.start) + 1
            change.last_line = text.count("\n", 0, change.end) + 1
            key = f"{path}: {change.kind}: {lines[change.line - 1].strip()} -> {change.after}"
            seen[key] = seen.get(key, 0) + 1
            change.key = key if seen[key] == 1 else f"{key} #{seen[key]}"

    def _word(self, index):
        return self.tokens[index].text

    def _find(self, index, end, texts):
        """The first token at this depth that is one of the texts; end if there is none."""
        while index < end:
            if self._word(index) in texts:
                return index
            index = self.partners[index] + 1 if self.partners.get(index, -1) > index else index + 1
        return end

    def _flat(self, index, end):
        """The texts at this depth: what stands between brackets is left out."""
        found = []
        while index < end:
            found.append(self._word(index))
            index = self.partners.get(index, -1) if self.partners.get(index, -1) > index else index + 1
        return found

    def _declarations(self, index, end):
        """Namespaces and classes."""
        head = index
        while index < end:
            word = self._word(index)
            if word == "{":
                kind = self._kind_of_block(head, index)
                close = self.partners[index]
                if kind in ("namespace", "class"):
                    self._declarations(index + 1, close)
                elif kind == "body":
                    before = len(self.changes)
                    self._block(index + 1, close, True)
                    for change in self.changes[before:]:
                        change.in_constexpr = "constexpr" in self._flat(head, index)
                index = close + 1
                if kind in ("namespace", "body"):
                    head = index
            elif word == ";":
                self._variable(head, index)
                index += 1
                head = index
            elif word == ":" and self._word(index - 1) in ("public", "private", "protected"):
                index += 1
                head = index
            else:
                index = self.partners[index] + 1 if self.partners.get(index, -1) > index else index + 1

    def _kind_of_block(self, head, index):
        words = self._flat(head, index)
        before = self.tokens[index - 1] if index else None
        if "namespace" in words or "extern" in words and before.kind == "text":
            return "namespace"
        if "enum" in words:
            return "enum"
        if "(" not in words:
            is_class = {"class", "struct", "union"} & set(words) and "=" not in words
            return "class" if is_class else "value"
        if before.text in AFTER_PARAMETERS or before.text in (")", "}"):
            return "body"
        return "body" if "->" in words else "value"

    def _variable(self, head, end):
        """The constants of a variable's declaration."""
        words = self._flat(head, end)
        if not words or words[0] in PASSED_OVER or "operator" in words:
            return
        first = self._find(head, end, ("=", "{", "("))
        if first == end or self._word(first) == "(":
            return
        constant = None
        for index in range(head, first):
            if self._word(index) == "constexpr":
                token = self.tokens[index]
                in_class = any(self._word(at) == "static" for at in range(head, index))
                constant = (token.start, token.end, "inline const" if in_class else "const")
        before = len(self.changes)
        self._expression(first, end, constant)
        literals = [change for change in self.changes[before:] if change.kind == "constant"]
        self.changes[before:] = literals[:MOST_IN_A_TABLE]

    def _block(self, index, end, is_body=False):
        while index < end:
            index = self._statement(index, end, is_body)

    def _statement(self, index, end, is_body=False):
        """@return the index after the statement"""
        word = self._word(index)
        if word == ";":
            return index + 1
        if word == "{":
            self._block(index + 1, self.partners[index])
            return self.partners[index] + 1
        handler = {"if": self._if, "while": self._loop, "switch": self._loop, "for": self._loop,
                   "catch": self._loop, "do": self._do}.get(word)
        if handler:
            return handler(index, end)
        if word in ("else", "try"):
            return self._statement(index + 1, end)
        if word in ("case", "default"):
            return self._find(index, end, (":",)) + 1
        stop = self._find(index, end, (";",))
        if word in PASSED_OVER or stop == end:
            return stop + 1
        if word == "return" and stop > index + 1:
            self.changes += changes.other_result(self, index + 1, stop)
            self._expression(index + 1, stop)
        elif word == "break" and stop + 1 in self.ends_of_switches:
            pass  # the switch ends here anyway
        elif word in ("return", "break", "continue"):
            self.changes += changes.left_out(self, index, stop)
        elif word == "throw":
            if not is_body:  # otherwise the function would have no result
                self.changes += changes.left_out(self, index, stop)
            self._expression(index + 1, stop)
        elif word == "constexpr" or word == "static" and self._word(index + 1) == "constexpr":
            self._local_constant(index, stop)
        else:
            if self._is_expression(index, stop):
                self.changes += changes.left_out(self, index, stop)
            self._expression(index, stop)
        return stop + 1

    def _local_constant(self, index, stop):
        at = index if self._word(index) == "constexpr" else index + 1
        token = self.tokens[at]
        before = len(self.changes)
        self._expression(index, stop, (token.start, token.end, "const"))
        literals = [change for change in self.changes[before:] if change.kind == "constant"]
        self.changes[before:] = literals[:MOST_IN_A_TABLE]

    def _if(self, index, end):
        opening = index + 1
        at_compile_time = self._word(opening) == "constexpr"
        opening += at_compile_time
        close = self.partners[opening]
        if not at_compile_time:
            self._condition(opening + 1, close)
        index = self._statement(close + 1, end)
        if index < end and self._word(index) == "else":
            index = self._statement(index + 1, end)
        return index

    def _loop(self, index, end):
        """while, for, switch and catch: a bracket, then a statement."""
        opening, close = index + 1, self.partners[index + 1]
        word = self._word(index)
        if word == "while":
            self._condition(opening + 1, close)
        elif word == "for":
            first = self._find(opening + 1, close, (";",))
            if first < close:
                self._expression(opening + 1, first)
                second = self._find(first + 1, close, (";",))
                if second > first + 1:
                    self._condition(first + 1, second)
                self._expression(second + 1, close)
            else:
                self._expression(self._find(opening + 1, close, (":",)) + 1, close)
        elif word == "switch":
            self._expression(opening + 1, close)
            self.ends_of_switches.add(self.partners.get(close + 1))
        return self._statement(close + 1, end)

    def _do(self, index, end):
        index = self._statement(index + 1, end)
        close = self.partners[index + 1]
        self._condition(index + 2, close)
        return close + 2

    def _condition(self, first, last):
        start = self._find(first, last, (";",))
        if start < last:
            self._expression(first, start)
            first = start + 1
        assigned = self._find(first, last, ("=",))
        if assigned < last:
            name = self.tokens[assigned - 1]
            if name.kind == "word" and start == last:
                self.changes.append(changes.negated(self, first, last, name.text))
        else:
            self.changes.append(changes.negated(self, first, last))
        self._expression(first, last)

    def _is_expression(self, index, end):
        """Whether a statement calls something or assigns something: no declaration."""
        text = self.text[self.tokens[index].start:self.tokens[end].start]
        if any(part in text for part in WITHOUT_EFFECT):
            return False
        if self._word(index) in ("++", "--", "delete"):
            return True
        while index < end and self._word(index) in ("*", "("):
            index = self.partners[index] + 1 if self._word(index) == "(" else index + 1
        while index < end and self._word(index) in ("::", ".", "->"):
            index += 1
        while index < end and self.tokens[index].kind == "word":
            word = self._word(index)
            if word in KEYWORDS and word != "this":
                return False
            index += 1
            while index < end and self._word(index) in ("(", "[", "<") and index in self.partners:
                index = self.partners[index] + 1
            if index < end and self._word(index) in ("::", ".", "->"):
                index += 1
            elif index < end and self.tokens[index].kind == "word":
                return False
        if index == end:
            return self._word(end - 1) == ")"
        return self._word(index) in changes.ASSIGNMENTS or self._word(index) in ("++", "--") \
            or self._word(index) == "<<"

    def _expression(self, first, last, constant=None):
        """All changes of an expression, also between its brackets and in its lambdas."""
        index = first
        while index < last:
            token = self.tokens[index]
            word = token.text
            close = self.partners.get(index, -1)
            if word == "<" and close > index:
                index = close + 1
                continue
            if word in UNEVALUATED and index + 1 < last and self._word(index + 1) == "(":
                index = self.partners[index + 1] + 1
                continue
            if word == "[" and close > index and not (index > first and ends_operand(
                    self.tokens[index - 1])):
                body = self._find(close + 1, last, ("{", ";", ","))
                if body < last and self._word(body) == "{":
                    self._block(body + 1, self.partners[body], True)
                    index = self.partners[body] + 1
                else:
                    index = close + 1
                continue
            self._at(index, first, last, constant)
            index += 1

    def _at(self, index, first, last, constant):
        token = self.tokens[index]
        if token.kind in ("number", "char") or token.text in ("true", "false", "TRUE", "FALSE"):
            self.changes += changes.other_literal(self, index, constant)
        elif constant:
            return
        elif token.text in changes.OTHER_OPERATORS and changes.is_binary(self.tokens, index):
            self.changes += changes.turned(self, index, first, last)
        elif token.text == "?" and token.space_before:
            left = changes.left_end(self, index, 2, first)
            if left < index:
                self.changes.append(changes.negated(self, left, index))
        elif token.text == "!":
            right = changes.right_end(self, index, 11, last)
            if right > index + 1:
                self.changes.append(changes.negated(self, index, right))
