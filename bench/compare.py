"""Tells whether two preprocessed texts are the same code.

Line directives, blank lines and white space that no token needs are left out of the comparison: each program has its
own habits there. White space between two words stays, as one blank: without it they would be one word.
"""

import hashlib
import re

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
