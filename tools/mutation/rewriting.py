"""Writes a source with the switches of several mutants in it."""
from dataclasses import dataclass, field

from mutation.changes import IS, IS_OF_CONSTEXPR


@dataclass
class Span:
    """A part of the text that is written in another way, and the parts within it."""
    start: int
    end: int
    made: callable
    within: list = field(default_factory=list)


def nested(spans):
    """@return the spans that are in no other one; the others are within these
    @raise ValueError: two spans cross"""
    roots = []
    for span in sorted(spans, key=lambda span: (span.start, -span.end)):
        place = roots
        while place and span.start < place[-1].end:
            if span.end > place[-1].end:
                raise ValueError(f"offset {span.start}: two changes cross")
            place = place[-1].within
        place.append(span)
    return roots


def written(text, start, end, spans):
    parts = []
    for span in spans:
        parts.append(text[start:span.start])
        parts.append(span.made(written(text, span.start, span.end, span.within)))
        start = span.end
    return "".join(parts) + text[start:end]


def switch(change, number):
    """@return what makes the code of a change with the switch of this number"""
    def made(own):
        code = change.made("\0")
        if change.in_constexpr:
            code = code.replace(IS, IS_OF_CONSTEXPR)
        return code.replace("@", str(number)).replace("\0", own)
    return made


def with_switches(text, header, switched, alone=None):
    """@param switched  number -> Change of this file
    @param alone        one more Change, which stands in the code without a switch
    @return the text; each line keeps its number"""
    spans = []
    for number, change in switched.items():
        if alone is None or change.end <= alone.start or change.start >= alone.end:
            spans.append(Span(change.start, change.end, switch(change, number)))
    for start, end, other in {change.constant for change in switched.values() if change.constant}:
        spans.append(Span(start, end, lambda own, other=other: other))
    if alone is not None:
        spans.append(Span(alone.start, alone.end, lambda own: alone.changed))
    body = written(text, 0, len(text), nested(spans))
    return f'#include "{header}"\n#line 1\n{body}'


def crosses(change, others):
    """Whether a change and one of the others hold a part of each other, but not the whole."""
    return any(change.start < other.start < change.end < other.end
               or other.start < change.start < other.end < change.end for other in others)
