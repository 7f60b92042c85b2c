"""Finds the places of a text, whatever it is, where a line with a mark may be put in without changing what the lines
around it mean: see marked().

The text is cut into tokens as the program cuts it, which is not as a C compiler would: a string with an escape such as
"\\n" is no string, a line comment ends at its line end even behind a backslash, and CR is a line end.
"""

import re

TOKEN = re.compile(
    rb"(?P<comment>/\*(?:.*?\*/|.*)|//[^\r\n\0]*)"
    rb'|(?P<literal>"(?:[^"\\\n]|\\["\\])*"'
    rb"|'(?:[^'\\\n]|\\(?:[\"'?\\abfnrtv]|[0-7]{1,3}|x[0-9A-Fa-f]+))+')"
    rb"|(?P<continuation>\\(?:\r\n|\r|\n))"
    rb"|(?P<newline>\r\n|\r|\n)"
    rb"|(?P<blank>[ \t\v\f]+)"
    rb"|(?P<word>[A-Za-z_][A-Za-z_0-9]*)"
    # What cannot begin any of the above comes in runs, to be quick. The characters that matter come alone.
    rb"|(?P<plain>[^/\"'\\\r\n \t\v\fA-Za-z_#(){};]+)"
    rb"|(?P<other>.)",
    re.DOTALL)
LINE_END = re.compile(rb"\r\n|\r|\n")

# The directives that read their whole line. Behind the others (#else, #endif, #undef) there may be text.
WHOLE_LINE = {b"define", b"elif", b"error", b"if", b"ifdef", b"ifndef", b"include", b"line", b"pragma"}


class Scan:
    """One pass over a text, which collects the starts of the lines where a mark may stand."""

    def __init__(self, text):
        self.places = []
        # True once a #line has been met: from there on the lines have other numbers and perhaps another name.
        self.is_renumbered = False
        self.depth = 0
        self.last = b";"
        self.line = 1
        self.start_line(0)
        for token in TOKEN.finditer(text):
            self.take(token.lastgroup, token[0], token.end())
            if self.is_renumbered:
                break

    def start_line(self, offset):
        # "None so far", "#" alone so far, in a directive, or in a text line.
        self.state = "start"
        # Within parentheses a mark might become an argument, and behind a name that of a macro that looks for its
        # arguments. Behind the end of a declaration, a statement or a block it is neither.
        if self.depth == 0 and self.last in (b";", b"{", b"}"):
            self.places.append((offset, self.line))

    def take(self, kind, text, end):
        if kind == "newline":
            self.line += 1
            self.start_line(end)
        elif kind in ("comment", "continuation"):
            self.line += len(LINE_END.findall(text))
        elif kind != "blank":
            self.take_significant(text)

    def take_significant(self, text):
        if self.state == "start" and text == b"#":
            self.state = "hash"
        elif self.state == "hash":
            self.is_renumbered = text == b"line"
            self.state = "directive" if text in WHOLE_LINE else "text"
        elif self.state != "directive":
            self.state = "text"
            self.depth += (text == b"(") - (text == b")")
            self.last = text


# Higher than the numbers of the marks that the files of this folder speak of.
FIRST_NUMBER = 1000000


def marked(text, chance, most):
    """The text with up to `most` lines added that hold a mark each, and the line of each mark.

    Only line starts are chosen at which no comment, no literal, no directive and no invocation is open, as far as one
    can tell without expanding macros.
    """
    places = Scan(text).places
    chosen = sorted(chance.sample(places, min(most, len(places))))
    parts = []
    lines = {}
    start = 0
    for count, (offset, line) in enumerate(chosen):
        mark = b"MARK_%d" % (FIRST_NUMBER + count)
        parts += [text[start:offset], mark, b"\n"]
        # Each mark put in before has moved this one down by a line.
        lines[mark] = line + count
        start = offset
    return b"".join(parts + [text[start:]]), lines
