"""Tells whether two preprocessed texts are the same code.

Line directives, blank lines and white space that no token needs are left out of the comparison: each program has its
own habits there. White space between two words stays, as one blank: without it they would be one word.
"""

import hashlib
import pathlib
import re
from typing import Optional

# gcc, clang and tcc write `# 12 "name" 3`, mcpp and qnpp `#line 12 "name"`.
_LINE_DIRECTIVE = re.compile(rb'^[ \t]*#[ \t]*(?:line[ \t]+)?[0-9]+[ \t]+"[^\n]*$', re.MULTILINE)
_NEEDLESS_BLANK = re.compile(rb" (?![A-Za-z0-9_])|(?<![A-Za-z0-9_]) ")


def without_line_directives(text: bytes) -> bytes:
    return _LINE_DIRECTIVE.sub(b"", text)


def normalised(text: bytes) -> bytes:
    return _NEEDLESS_BLANK.sub(b"", b" ".join(without_line_directives(text).split()))


def fingerprint(path) -> str:
    with open(path, "rb") as text:
        return hashlib.sha256(normalised(text.read())).hexdigest()


def written(path) -> tuple[int, int]:
    """Lines, and bytes that are neither white space nor line directives."""
    content = pathlib.Path(path).read_bytes()
    return content.count(b"\n"), len(without_line_directives(content).translate(None, b" \t\n\v\f\r"))


_TOKEN = re.compile(
    rb"""[A-Za-z_$\x80-\xff][\w$\x80-\xff]* | \.?[0-9](?:[eEpP][+-]|[\w.])*
      | "(?:\\.|[^"\\\n])*" | '(?:\\.|[^'\\\n])*'
      | <<= | >>= | \.\.\. | -> | \+\+ | -- | << | >> | && | \|\| | \#\# | :: | [-+*/%&|^<>=!]= | \S""", re.VERBOSE)


def tokens(text: bytes) -> list[bytes]:
    return _TOKEN.findall(without_line_directives(text))


def difference(expected: list[bytes], found: list[bytes]) -> Optional[str]:
    """Where two texts begin to be other code, or None."""
    if expected == found:
        return None
    place = next((number for number, pair in enumerate(zip(expected, found)) if pair[0] != pair[1]),
                 min(len(expected), len(found)))

    def shown(of):
        return of[place][:40].decode(errors="replace") if place < len(of) else "the end"
    return f"at token {place + 1:,} {shown(found)} instead of {shown(expected)}"
