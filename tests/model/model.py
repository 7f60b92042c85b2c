#!/usr/bin/env python3
"""A plain, literal model of qnpp.

The model does what the program does in the most direct way that can be written down: tokens are re-lexed whenever
they are read back, hide sets are copied into every stored token, macro texts are lexed again at every expansion, and
nothing is remembered between two uses.  It is slow on purpose and serves as the oracle of the differential tests.

    model.py [options] [source_file]

It writes the same standard output and standard error and ends with the same status as qnpp; only the version text
differs, because it depends on the build.
"""

import os
import re
import signal
import stat
import sys
import threading
import time

# --------------------------------------------------------------------------------------------------------------------
# Token kinds.  A single-character operator is its own character code.
# --------------------------------------------------------------------------------------------------------------------

TK_END = 0
TK_NEWLINE = 257
TK_SPACE = 258
TK_CONTINUATION = 259
TK_PASTE = 260
TK_IF = 261
TK_IFDEF = 262
TK_IFNDEF = 263
TK_ELSE = 264
TK_ELIF = 265
TK_ENDIF = 266
TK_INCLUDE = 267
TK_DEFINE = 268
TK_UNDEF = 269
TK_LINE = 270
TK_ERROR = 271
TK_PRAGMA = 272
TK_IDENT = 273
TK_IDENTIFIER = 274
TK_STRING = 275
TK_OTHER = 276
TK_OROR = 277
TK_ANDAND = 278
TK_EQ = 279
TK_NE = 280
TK_LE = 281
TK_GE = 282
TK_SHL = 283
TK_SHR = 284
TK_DEFINED = 285
TK_CHAR = 286
TK_DEC_INT = 287
TK_OCT_INT = 288
TK_HEX_INT = 289
TK_DEC_UINT = 290
TK_OCT_UINT = 291
TK_HEX_UINT = 292
TK_PRAGMA_OP = 293

HASH = ord("#")
LPAREN = ord("(")
RPAREN = ord(")")
COMMA = ord(",")
LESS = ord("<")
GREATER = ord(">")

KEYWORDS = {
    b"defined": TK_DEFINED,
    b"if": TK_IF,
    b"ifdef": TK_IFDEF,
    b"ifndef": TK_IFNDEF,
    b"else": TK_ELSE,
    b"elif": TK_ELIF,
    b"endif": TK_ENDIF,
    b"include": TK_INCLUDE,
    b"define": TK_DEFINE,
    b"undef": TK_UNDEF,
    b"line": TK_LINE,
    b"error": TK_ERROR,
    b"pragma": TK_PRAGMA,
    b"ident": TK_IDENT,
    b"_Pragma": TK_PRAGMA_OP,
}

TWO_CHARACTER_OPERATORS = {
    b"##": TK_PASTE,
    b"||": TK_OROR,
    b"&&": TK_ANDAND,
    b"==": TK_EQ,
    b"!=": TK_NE,
    b"<=": TK_LE,
    b">=": TK_GE,
    b"<<": TK_SHL,
    b">>": TK_SHR,
}

ONE_CHARACTER_OPERATORS = b"#(),?:|^&<>+-*/%!~"

BLANKS = b" \t\v\f"
LETTERS = b"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_"
DIGITS = b"0123456789"
OCTAL_DIGITS = b"01234567"
HEX_DIGITS = b"0123456789abcdefABCDEF"


def is_name(kind):
    """Tells whether a kind belongs to the identifier class: the directive words and the plain identifiers."""
    return TK_IF <= kind <= TK_IDENTIFIER


def wrap_signed(number):
    """Keeps the low 32 bits of a number, read as a signed number."""
    number &= 0xFFFFFFFF
    return number - 0x100000000 if number >= 0x80000000 else number


class BudgetExceeded(Exception):
    """The run needs more steps than the caller is willing to spend."""


class ArithmeticFault(Exception):
    """A divisor was zero, or the quotient does not fit: the process is to end by SIGFPE."""


# A step is about the time that a short token takes; this many bytes of a long one take as much.
BYTES_PER_STEP = 500


class Streams:
    """What the run writes: the preprocessed text, standard output and standard error, and the budget of the run."""

    def __init__(self, steps=None, bytes_limit=None, file_depth=None):
        self.stdout = bytearray()
        self.stderr = bytearray()
        self.output = self.stdout
        self.steps = steps
        self.bytes_limit = bytes_limit
        self.file_depth = file_depth

    def write(self, text):
        self.output += text

    def spend(self, size):
        """Counts a step for a token, and more for a long one."""
        if self.steps is not None:
            self.steps -= 1 + size // BYTES_PER_STEP
            if self.steps < 0 or len(self.output) > self.bytes_limit or len(self.stderr) > self.bytes_limit:
                raise BudgetExceeded()


# --------------------------------------------------------------------------------------------------------------------
# Lexer
# --------------------------------------------------------------------------------------------------------------------


class Lexer:
    """Turns bytes into token kinds, one per call of `next`; `text` is the text of the last token."""

    def __init__(self, data, streams):
        self.data = data
        self.position = 0
        self.pushed_newline = False
        self.line = 1
        self.text = b""
        self.streams = streams

    def count_line(self):
        self.line = wrap_signed(self.line + 1)

    def at(self, index):
        """The byte at an index as a byte string; empty behind the end."""
        return self.data[index:index + 1]

    def next(self):
        begin = self.position
        kind = self.scan()
        self.streams.spend(self.position - begin)
        return kind

    def scan(self):
        if self.pushed_newline:
            self.pushed_newline = False
            return self.newline()
        start = self.position
        first = self.at(start)
        if first == b"":
            self.text = b""
            return TK_END
        if first == b"\r":
            # CR LF and a lone CR both become one "\n".
            self.position += 2 if self.at(start + 1) == b"\n" else 1
            return self.newline()
        if first == b"\n":
            self.position += 1
            return self.newline()
        if first == b"\\" and self.at(start + 1) in (b"\r", b"\n"):
            end = start + 2
            if self.at(start + 1) == b"\r" and self.at(end) == b"\n":
                end += 1
            self.count_line()
            return self.take(end, TK_CONTINUATION)
        if first in BLANKS:
            return self.take(start + 1, TK_SPACE)
        two = self.data[start:start + 2]
        if two == b"/*":
            self.position += 2
            return self.block_comment()
        if two == b"//":
            self.position += 2
            return self.line_comment()
        if two in TWO_CHARACTER_OPERATORS:
            return self.take(start + 2, TWO_CHARACTER_OPERATORS[two])
        if first in ONE_CHARACTER_OPERATORS:
            return self.take(start + 1, ord(first))
        if first == b'"':
            end = self.match_string(start)
            return self.take(end, TK_STRING) if end else self.take(start + 1, TK_OTHER)
        if first == b"'":
            end = self.match_character(start)
            return self.take(end, TK_CHAR) if end else self.take(start + 1, TK_OTHER)
        if first in LETTERS:
            end = self.span(start, LETTERS + DIGITS)
            return self.take(end, KEYWORDS.get(self.data[start:end], TK_IDENTIFIER))
        if first in DIGITS:
            return self.number(start)
        return self.take(start + 1, TK_OTHER)

    def take(self, end, kind):
        self.text = self.data[self.position:end]
        self.position = end
        return kind

    def newline(self):
        self.text = b"\n"
        self.count_line()
        return TK_NEWLINE

    def span(self, index, characters):
        """The index behind the run of the given characters that starts at an index."""
        while index < len(self.data) and self.data[index] in characters:
            index += 1
        return index

    def span_without(self, index, characters):
        """The index behind the run of all but the given characters that starts at an index."""
        found = re.compile(b"[" + re.escape(characters) + b"]").search(self.data, index)
        return found.start() if found else len(self.data)

    def match_string(self, start):
        """The index behind a string literal, or None.  Only \\" and \\\\ are escapes here."""
        index = start + 1
        while True:
            character = self.at(index)
            if character in (b"", b"\n"):
                return None
            if character == b'"':
                return index + 1
            if character == b"\\":
                if self.at(index + 1) not in (b'"', b"\\"):
                    return None
                index += 2
            else:
                index = self.span_without(index, b'"\\\n')

    def match_character(self, start):
        """The index behind a character literal, or None."""
        index = start + 1
        items = 0
        while True:
            character = self.at(index)
            if character in (b"", b"\n"):
                return None
            if character == b"'":
                return index + 1 if items else None
            if character == b"\\":
                escape = self.at(index + 1)
                if escape == b"":
                    return None
                if escape in b"\"'?\\abfnrtv":
                    index += 2
                elif escape in OCTAL_DIGITS:
                    # Up to three digits belong to the escape; a further digit is an item of its own all the same.
                    index += 2
                elif escape == b"x":
                    end = self.span(index + 2, HEX_DIGITS)
                    if end == index + 2:
                        return None
                    index = end
                else:
                    return None
            else:
                index = self.span_without(index, b"'\\\n")
            items += 1

    def number(self, start):
        if self.at(start) != b"0":
            end = self.span(start, DIGITS)
            plain, unsigned = TK_DEC_INT, TK_DEC_UINT
        elif self.at(start + 1) in (b"x", b"X") and self.span(start + 2, HEX_DIGITS) > start + 2:
            end = self.span(start + 2, HEX_DIGITS)
            plain, unsigned = TK_HEX_INT, TK_HEX_UINT
        else:
            end = self.span(start, OCTAL_DIGITS)
            plain, unsigned = TK_OCT_INT, TK_OCT_UINT
        suffix = self.data[end:end + 2].lower()
        if suffix in (b"ul", b"lu"):
            return self.take(end + 2, unsigned)
        if suffix[:1] == b"u":
            return self.take(end + 1, unsigned)
        if suffix[:1] == b"l":
            return self.take(end + 1, plain)
        return self.take(end, plain)

    def input(self):
        """Reads one character; empty at the end of input."""
        character = self.at(self.position)
        self.position += len(character)
        return character

    def comment_line_end(self, character):
        """Deals with a line end inside a block comment; tells whether the character was one."""
        if character not in (b"\n", b"\r"):
            return False
        if character == b"\r" and self.at(self.position) == b"\n":
            self.position += 1
        self.streams.write(b"\n")
        self.count_line()
        return True

    def block_comment(self):
        self.text = b" "
        while True:
            character = self.input()
            while character not in (b"*", b""):
                if not self.comment_line_end(character):
                    self.position = self.span_without(self.position, b"*\r\n")
                character = self.input()
            while character == b"*":
                character = self.input()
            if character == b"/":
                return TK_SPACE
            if character == b"":
                self.streams.stderr += b"%d: unterminated comment.\n" % self.line
                return TK_SPACE
            self.comment_line_end(character)

    def line_comment(self):
        self.text = b" "
        self.position = self.span_without(self.position, b"\n\r\0")
        character = self.input()
        if character == b"\r" and self.at(self.position) == b"\n":
            self.position += 1
        if character != b"":
            self.pushed_newline = True
        return TK_SPACE


class Token:
    """A stored token: its text and the names that must not be expanded in it.  The kind is never stored."""

    def __init__(self, text, hide):
        self.text = text
        self.hide = hide


NOTHING_HIDDEN = frozenset()


def lex_to_list(text, hide, streams):
    """Lexes a text into a token list every token of which carries the given hide set."""
    lexer = Lexer(text, streams)
    tokens = []
    while lexer.next() != TK_END:
        tokens.append(Token(lexer.text, frozenset(hide)))
    return tokens


def lex_anew(pieces, hide, streams):
    """Lexes the text that some tokens make together into a token list.  A new token carries the given hide set and the
    sets of all tokens in whose characters it lies, so no name comes back to life by being lexed anew."""
    lexer = Lexer(b"".join(piece.text for piece in pieces), streams)
    tokens = []
    piece_end = len(pieces[0].text) if pieces else 0
    index = 0
    begin = 0
    while lexer.next() != TK_END:
        # The line end that a comment gives back has no characters of its own: it is the last one of the comment.
        first = min(begin, lexer.position - 1)
        while piece_end <= first:
            index += 1
            piece_end += len(pieces[index].text)
        sets = set(hide) | pieces[index].hide
        while piece_end < lexer.position:
            index += 1
            piece_end += len(pieces[index].text)
            sets |= pieces[index].hide
        tokens.append(Token(lexer.text, frozenset(sets)))
        begin = lexer.position
    return tokens


# --------------------------------------------------------------------------------------------------------------------
# Token sources
# --------------------------------------------------------------------------------------------------------------------


class Scanner:
    """A token source with one token of look-ahead."""

    def __init__(self):
        self.lexer = None
        self.text = b""
        self.peek_text = b""
        self.peek_kind = TK_END
        self.has_peek = False
        self.peek_lines = 0

    def set_lexer(self, lexer):
        self.lexer = lexer
        self.has_peek = False

    def base_peek(self):
        if not self.has_peek:
            before = self.lexer.line
            self.peek_kind = self.lexer.next()
            self.peek_text = self.lexer.text
            self.peek_lines = self.lexer.line - before
            self.has_peek = True
        return self.peek_kind

    def base_get(self):
        if self.has_peek:
            self.text = self.peek_text
            self.has_peek = False
            return self.peek_kind
        kind = self.lexer.next()
        self.text = self.lexer.text
        return kind


class FileScanner(Scanner):
    """Reads a file's bytes and supplies the last line end if it is missing."""

    def __init__(self, name, data, streams):
        Scanner.__init__(self)
        self.file_name = name
        self.at_line_start = True
        self.set_lexer(Lexer(data, streams))

    def get(self):
        kind = self.base_get()
        if kind != TK_END:
            self.at_line_start = kind == TK_NEWLINE
            return kind
        if not self.at_line_start:
            self.at_line_start = True
            self.text = b"\n"
            return TK_NEWLINE
        return TK_END

    def peek(self):
        kind = self.base_peek()
        if kind == TK_END and not self.at_line_start:
            return TK_NEWLINE
        return kind

    def hide_set(self):
        return NOTHING_HIDDEN

    def is_file(self):
        return True

    def line(self):
        """The line of the reading position: a token that was only looked at does not count."""
        return wrap_signed(self.lexer.line - (self.peek_lines if self.has_peek else 0))

    def set_line(self, number):
        self.lexer.line = wrap_signed(number + (self.peek_lines if self.has_peek else 0))


class TokenScanner(Scanner):
    """Reads a token list back: the text of each element is lexed again by a lexer of its own."""

    def __init__(self, tokens, streams):
        Scanner.__init__(self)
        self.tokens = list(tokens)
        self.current = 0
        self.streams = streams
        if self.tokens:
            self.set_lexer(Lexer(self.tokens[0].text, streams))

    def step(self, operation):
        if not self.tokens:
            return TK_END
        kind = operation()
        while kind == TK_END:
            self.current += 1
            if self.current == len(self.tokens):
                self.current -= 1
                return TK_END
            self.set_lexer(Lexer(self.tokens[self.current].text, self.streams))
            kind = operation()
        return kind

    def get(self):
        return self.step(self.base_get)

    def peek(self):
        return self.step(self.base_peek)

    def hide_set(self):
        return self.tokens[self.current].hide if self.tokens else NOTHING_HIDDEN

    def is_file(self):
        return False


# --------------------------------------------------------------------------------------------------------------------
# Macros, conditionals and expression values
# --------------------------------------------------------------------------------------------------------------------


class Macro:
    def __init__(self, text, parameters=(), function_like=False):
        self.text = text
        self.parameters = list(parameters)
        self.function_like = function_like


class Argument:
    """A macro argument in its two forms: the normalised text and the token list lexed from it."""

    def __init__(self, text, tokens):
        self.text = text
        self.tokens = tokens


INACTIVE, TAKEN, PENDING, AFTER_ELSE = range(4)


class Value:
    """A 32-bit value and whether it is read as a signed number."""

    def __init__(self, bits, signed=None):
        self.bits = bits & 0xFFFFFFFF
        self.signed = self.bits < 0x80000000 if signed is None else signed

    def as_signed(self):
        return wrap_signed(self.bits)


def stringize(text):
    """Makes the text of a string literal from an argument's text."""
    result = bytearray(b'"')
    inside = False
    previous = b""
    for code in text:
        character = bytes([code])
        if character in (b'"', b"'"):
            if previous != b"\\":
                inside = not inside
            if character == b'"':
                result += b"\\"
            result += character
        elif character == b"\\" and inside:
            result += b"\\\\"
        else:
            result += character
        previous = character
    return bytes(result + b'"')


def destringize(literal):
    """The text of a string literal with its backslashes resolved and without its quotes."""
    result = bytearray()
    index = 1
    lone_backslash = False
    while index < len(literal):
        if literal[index:index + 1] == b"\\":
            index += 1
            lone_backslash = index == len(literal)
        result += literal[index:index + 1]
        index += 1
    return bytes(result if lone_backslash else result[:-1])


def directory_part(path):
    """The directory of a path; both kinds of slash separate."""
    if len(path) > 1 and path[-1:] in (b"/", b"\\"):
        path = path[:-1]
    cut = max(path.rfind(b"/"), path.rfind(b"\\"))
    if cut < 0:
        return b"."
    return path[:cut] if cut > 0 else path[:1]


def read_file(path):
    """The bytes of a file, or None if it cannot be opened; a directory cannot."""
    path = path.split(b"\0")[0]
    if path == b"":
        return None
    try:
        if stat.S_ISDIR(os.stat(path).st_mode):
            return None
        with open(path, "rb") as stream:
            return stream.read()
    except OSError:
        return None


class Preprocessor:
    """The whole preprocessing state and everything that works on it."""

    def __init__(self, streams, stdin):
        self.streams = streams
        self.stdin = stdin
        self.source = None
        self.stack = []
        self.file = None
        self.files = []
        self.error_flag = False
        self.output_line = 0
        self.include_directories = []
        self.macros = {}
        self.in_condition = False
        self.skipping = False
        self.state = INACTIVE
        self.depth = 0
        self.state_stack = []
        self.skip_stack = []
        self.depth_stack = []
        self.define_predefined()

    # ------------------------------------------------------------------ reading

    def peek(self):
        kind = self.source.peek()
        while kind == TK_END and self.stack:
            self.pop_source()
            kind = self.source.peek()
        return kind

    def get(self):
        kind = self.source.get()
        while kind == TK_END and self.stack:
            self.pop_source()
            kind = self.source.get()
        return kind

    def pop_source(self):
        finished = self.source
        if finished.is_file():
            self.check_end_of_file()
        self.source = self.stack.pop()
        if finished.is_file():
            self.file = self.files.pop()
            self.write_line_directive()

    def push_list(self, tokens):
        """Makes a token list the current source; an empty list is a source that is already at its end."""
        if tokens:
            self.stack.append(self.source)
            self.source = TokenScanner(tokens, self.streams)

    def set_aside(self, tokens):
        """Makes a token list the only source; what was there before is returned for `restore`."""
        saved = (self.stack, self.source)
        self.stack = []
        self.source = TokenScanner(tokens, self.streams)
        return saved

    def restore(self, saved):
        self.stack, self.source = saved

    def current_token(self):
        return Token(self.source.text, frozenset(self.source.hide_set()))

    def skip_blanks(self):
        """Passes over white space and continuations and returns their text."""
        skipped = b""
        while self.peek() in (TK_SPACE, TK_CONTINUATION):
            self.get()
            skipped += self.source.text
        return skipped

    def skip_white_space(self):
        """Passes over white space, continuations and line ends and returns the tokens."""
        skipped = []
        while self.peek() in (TK_SPACE, TK_CONTINUATION, TK_NEWLINE):
            self.get()
            skipped.append(self.current_token())
        return skipped

    def discard_line(self):
        kind = self.get()
        while kind not in (TK_NEWLINE, TK_END):
            kind = self.get()

    def collect_line(self):
        """The tokens of the rest of the line; the line end is only looked at."""
        tokens = []
        while self.peek() not in (TK_NEWLINE, TK_END):
            self.get()
            tokens.append(self.current_token())
        return tokens

    # ------------------------------------------------------------------ messages and output

    def report(self, message, grade=b""):
        self.streams.stderr += self.file.file_name + b":%d: " % self.file.line() + grade + message + b".\n"

    def report_error(self, message):
        self.report(message)
        self.error_flag = True

    def report_warning(self, message):
        self.report(message, b"Warning: ")

    def write(self, text):
        self.streams.write(text)

    def write_line_directive(self):
        line = self.file.line()
        self.write(b'#line %d "' % line + self.file.file_name.replace(b"\\", b"\\\\") + b'"\n')
        self.output_line = line

    def count_output_line(self):
        self.output_line = wrap_signed(self.output_line + 1)

    # ------------------------------------------------------------------ the run

    def open_source(self, file_name, source_name):
        data = self.stdin() if file_name == b"" else read_file(file_name)
        if data is None:
            self.streams.stderr += b"FATAL ERROR: cannot open " + file_name + b".\n"
            self.error_flag = True
            return
        self.source = FileScanner(file_name if file_name else b"stdin", data, self.streams)
        if source_name:
            self.source.file_name = source_name
        self.file = self.source
        self.write_line_directive()

    def run(self):
        while self.peek() != TK_END:
            self.next_line()
        self.check_end_of_file()
        return self.error_flag

    def next_line(self):
        leading = self.skip_blanks()
        kind = self.get()
        if self.skipping:
            self.skipped_line(kind)
        elif kind == TK_NEWLINE:
            self.write(b"\n")
            self.count_output_line()
        elif kind == HASH:
            self.skip_blanks()
            self.directive(self.get())
        else:
            self.text_line(kind, leading)

    def text_line(self, kind, leading):
        if self.output_line != self.file.line():
            self.write_line_directive()
        self.write(leading)
        while kind not in (TK_NEWLINE, TK_END):
            self.text_token(kind)
            kind = self.get()
        if kind == TK_NEWLINE:
            self.write(b"\n")
            self.count_output_line()

    def text_token(self, kind):
        if kind == TK_PRAGMA_OP:
            self.pragma_operator()
        elif is_name(kind):
            self.expand_in_text(self.source.text)
        else:
            self.write(self.source.text)

    def directive(self, kind):
        if kind == TK_NEWLINE:
            return
        if kind in self.CONDITIONALS:
            self.conditional(kind)
        elif kind in self.OTHER_DIRECTIVES:
            self.OTHER_DIRECTIVES[kind](self)
        else:
            self.report_error(b"the indicated directive is not a recognized preprocessing directive")
            self.discard_line()

    def conditional(self, kind):
        self.CONDITIONALS[kind](self)

    def skipped_line(self, kind):
        if kind == HASH:
            self.skip_blanks()
            kind = self.get()
            if kind in self.CONDITIONALS:
                self.conditional(kind)
                return
            # One token is always read first, so a "#" alone takes the next line with it.
            self.discard_line()
        elif kind not in (TK_NEWLINE, TK_END):
            self.discard_line()
        self.write(b"\n")
        self.count_output_line()

    # ------------------------------------------------------------------ conditionals

    def open_conditional(self):
        """Opens a conditional; tells whether its condition is to be looked at."""
        self.depth += 1
        self.state_stack.append(self.state)
        self.skip_stack.append(self.skipping)
        if self.skipping:
            self.state = INACTIVE
            self.discard_line()
            return False
        return True

    def choose(self, taken):
        self.skipping = not taken
        self.state = TAKEN if taken else PENDING

    def handle_if(self):
        if self.open_conditional():
            self.condition()

    def condition(self):
        tokens = self.collect_line()
        self.in_condition = True
        tokens = self.expand_token_list(tokens)
        self.in_condition = False
        saved = self.set_aside(tokens)
        self.evaluation_ok = True
        value = self.evaluate()
        if self.evaluation_ok:
            self.choose(value.bits != 0)
            self.check_left_over()
        else:
            self.choose(False)
        self.restore(saved)
        self.get()

    def check_left_over(self):
        """Reports tokens left in an operand source."""
        self.skip_blanks()
        if self.peek() != TK_END:
            self.report_invalid_characters()

    def report_invalid_characters(self):
        self.report_error(b"Invalid characters appear before a new-line in the preprocessor directive")

    def handle_ifdef(self):
        if self.open_conditional():
            self.name_condition(b"#ifdef", True)

    def handle_ifndef(self):
        if self.open_conditional():
            self.name_condition(b"#ifndef", False)

    def name_condition(self, directive, wanted):
        self.skip_blanks()
        if not is_name(self.peek()):
            self.report_error(b'An identifier is expected after "' + directive + b'"')
            self.discard_line()
            self.choose(False)
            return
        self.get()
        self.choose((self.source.text in self.macros) == wanted)
        self.skip_blanks()
        if self.peek() == TK_NEWLINE:
            self.get()
        else:
            self.report_invalid_characters()

    def handle_elif(self):
        if self.depth == 0:
            self.report_error(b'No "#if" directive associated to "elif"')
            self.discard_line()
        elif self.state == AFTER_ELSE:
            self.report_error(b'Cannot use an "#elif" directive after an "#else"')
            self.discard_line()
        elif self.state == INACTIVE:
            self.discard_line()
        elif self.state == TAKEN:
            self.discard_line()
            self.skipping = True
        else:
            self.condition()

    def handle_else(self):
        if self.depth == 0:
            self.report_error(b'No "#if" directive associated to "#else"')
        elif self.state == AFTER_ELSE:
            self.report_error(b'Cannot use another "#else" directive after an "#else"')
        else:
            if self.state == TAKEN:
                self.skipping = True
            elif self.state == PENDING:
                self.skipping = False
            self.state = AFTER_ELSE

    def handle_endif(self):
        if self.depth == 0:
            self.report_error(b'No "#if" directive associated to "#endif"')
        else:
            self.close_conditional()

    def close_conditional(self):
        self.skipping = self.skip_stack.pop()
        self.state = self.state_stack.pop()
        self.depth -= 1

    def check_end_of_file(self):
        if self.depth > 0:
            self.report_error(b'Unterminated "#if" conditional')
            while self.depth > 0:
                self.close_conditional()
        if self.depth_stack:
            self.depth = self.depth_stack.pop()

    # ------------------------------------------------------------------ expressions

    def next_operator(self, operators):
        """Takes the next token if it is one of the given operators; returns its kind or None."""
        self.skip_blanks()
        kind = self.peek()
        if kind in operators:
            self.get()
            return kind
        return None

    def fail(self, message):
        self.report_error(message)
        self.evaluation_ok = False

    def evaluate(self):
        condition = self.binary(0)
        if self.next_operator([ord("?")]) is None:
            return condition
        chosen = self.evaluate()
        if self.next_operator([ord(":")]) is None:
            self.fail(b'":" expected in constant expression')
            return Value(0)
        other = self.evaluate()
        return chosen if condition.bits != 0 else other

    LEVELS = [
        [TK_OROR],
        [TK_ANDAND],
        [ord("|")],
        [ord("^")],
        [ord("&")],
        [TK_EQ, TK_NE],
        [LESS, GREATER, TK_LE, TK_GE],
        [TK_SHL, TK_SHR],
        [ord("+"), ord("-")],
        [ord("*"), ord("/"), ord("%")],
    ]

    def binary(self, level):
        if level == len(self.LEVELS):
            return self.unary()
        left = self.binary(level + 1)
        while True:
            operator = self.next_operator(self.LEVELS[level])
            if operator is None:
                return left
            left = self.combine(operator, left, self.binary(level + 1))

    def combine(self, operator, a, b):
        signed = a.signed and b.signed
        if operator == TK_OROR:
            bits = int(a.bits != 0 or b.bits != 0)
        elif operator == TK_ANDAND:
            bits = int(a.bits != 0 and b.bits != 0)
        elif operator == ord("|"):
            bits = a.bits | b.bits
        elif operator == ord("^"):
            bits = a.bits ^ b.bits
        elif operator == ord("&"):
            bits = a.bits & b.bits
        elif operator == TK_EQ:
            bits = int(a.bits == b.bits)
        elif operator == TK_NE:
            bits = int(a.bits != b.bits)
        elif operator in (LESS, GREATER, TK_LE, TK_GE):
            left, right = (a.as_signed(), b.as_signed()) if signed else (a.bits, b.bits)
            bits = int({LESS: left < right, GREATER: left > right,
                        TK_LE: left <= right, TK_GE: left >= right}[operator])
        elif operator == TK_SHL:
            bits = a.bits << (b.bits % 32)
        elif operator == TK_SHR:
            bits = a.bits >> (b.bits % 32)
        elif operator == ord("+"):
            bits = a.bits + b.bits
        elif operator == ord("-"):
            bits = a.bits - b.bits
        elif operator == ord("*"):
            bits = a.bits * b.bits
        else:
            bits = self.divide(operator, a, b, signed)
        return Value(bits, signed)

    @staticmethod
    def divide(operator, a, b, signed):
        if b.bits == 0 or (signed and a.bits == 0x80000000 and b.bits == 0xFFFFFFFF):
            raise ArithmeticFault()
        left, right = (a.as_signed(), b.as_signed()) if signed else (a.bits, b.bits)
        quotient = abs(left) // abs(right)
        if (left < 0) != (right < 0):
            quotient = -quotient
        return quotient if operator == ord("/") else left - quotient * right

    def unary(self):
        operator = self.next_operator([ord("!"), ord("~"), ord("-"), ord("+")])
        if operator is None:
            return self.primary()
        operand = self.unary()
        if operator == ord("!"):
            return Value(int(operand.bits == 0), operand.signed)
        if operator == ord("~"):
            return Value(~operand.bits, operand.signed)
        if operator == ord("-"):
            return Value(-operand.bits, operand.signed)
        return operand

    def primary(self):
        self.skip_blanks()
        kind = self.get()
        text = self.source.text
        if kind == TK_DEFINED:
            return self.defined_operator()
        if kind in (TK_DEC_INT, TK_OCT_INT, TK_HEX_INT):
            return Value(self.integer(kind, text))
        if kind in (TK_DEC_UINT, TK_OCT_UINT, TK_HEX_UINT):
            return Value(self.integer(kind, text), False)
        if kind == TK_CHAR:
            return self.character_value(text)
        if kind == LPAREN:
            value = self.evaluate()
            if self.next_operator([RPAREN]) is None:
                self.fail(b'")" expected')
                return Value(0)
            self.refuse_call()
            return value
        if is_name(kind):
            self.refuse_call()
            return Value(0)
        self.fail(b"Lexical element expected")
        return Value(0)

    def refuse_call(self):
        self.skip_blanks()
        if self.peek() == LPAREN:
            self.fail(b"A function call is not allowed in a constant expression")

    def defined_operator(self):
        parenthesised = self.next_operator([LPAREN]) is not None
        self.skip_blanks()
        if self.get() == TK_IDENTIFIER:
            value = Value(int(self.source.text in self.macros))
        else:
            self.fail(b"Identifier expected for 'defined' operator")
            value = Value(0)
        if parenthesised and self.next_operator([RPAREN]) is None:
            self.fail(b'")" expected for "defined" operator')
            value = Value(0)
        return value

    @staticmethod
    def integer(kind, text):
        digits = text.rstrip(b"uUlL")
        if kind in (TK_DEC_INT, TK_DEC_UINT):
            base = 10
        elif kind in (TK_OCT_INT, TK_OCT_UINT):
            base = 8
        else:
            base = 16
            digits = digits[2:]
        number = 0
        for digit in digits:
            number = min(number * base + int(chr(digit), base), 0xFFFFFFFF)
        return number

    def character_value(self, text):
        body = text[1:-1]
        value = Value(0)
        index = 0
        count = 0
        while index < len(body):
            count += 1
            if count == 5:
                self.report_error(b"Too many characters in character literal")
                break
            value = Value(value.bits << 8, value.signed)
            code, index = self.character_code(body, index)
            if code is None:
                continue
            added = Value(code - 0x100 if code >= 0x80 else code)
            value = Value(value.bits + added.bits, value.signed and added.signed)
        return value

    @staticmethod
    def character_code(body, index):
        """The 8-bit code of the character at an index (None if it adds nothing) and the index behind it."""
        if body[index:index + 1] != b"\\":
            return body[index], index + 1
        escape = body[index + 1:index + 2]
        index += 2
        simple = {b'"': 0x22, b"'": 0x27, b"?": 0x3F, b"\\": 0x5C, b"a": 7, b"b": 8, b"f": 12, b"n": 10, b"r": 13,
                  b"t": 9, b"v": 11}
        if escape in simple:
            return simple[escape], index
        if escape and escape in OCTAL_DIGITS:
            code = int(escape)
            while body[index:index + 1] and body[index:index + 1] in OCTAL_DIGITS:
                code = (code * 8 + int(body[index:index + 1])) & 0xFF
                index += 1
            return code, index
        if escape == b"x":
            code = 0
            while body[index:index + 1] and body[index:index + 1] in HEX_DIGITS:
                code = (code * 16 + int(body[index:index + 1], 16)) & 0xFF
                index += 1
            return code, index
        return None, index

    # ------------------------------------------------------------------ #define and #undef

    def read_macro_name(self):
        if not is_name(self.peek()):
            return b""
        self.get()
        name = self.source.text
        while True:
            while self.peek() == TK_CONTINUATION:
                self.get()
            if not is_name(self.peek()):
                return name
            self.get()
            name += self.source.text

    def handle_define(self):
        self.skip_blanks()
        name = self.read_macro_name()
        if not name:
            self.report_error(b"Invalid macro name")
            return
        function_like = self.peek() == LPAREN
        parameters = []
        if function_like:
            parameters = self.read_parameters()
            if parameters is None:
                self.discard_line()
                return
        self.skip_blanks()
        text = b""
        blank = False
        while self.peek() not in (TK_NEWLINE, TK_END):
            kind = self.get()
            if kind == TK_SPACE:
                blank = True
            elif kind != TK_CONTINUATION:
                text += (b" " if blank else b"") + self.source.text
                blank = False
        old = self.macros.get(name)
        if old is None:
            self.macros[name] = Macro(text, parameters, function_like)
        elif old.text != text:
            self.report_warning(b'Macro "' + name + b'" has an incompatible redefinition')
            self.macros[name] = Macro(text, parameters, function_like)
        self.skip_blanks()
        self.get()

    def read_parameters(self):
        """The parameter names, or None after a reported error."""
        self.get()
        self.skip_white_space()
        kind = self.get()
        parameters = []
        if kind == RPAREN:
            return parameters
        while True:
            if not is_name(kind):
                self.report_error(b"An identifier is expected")
                return None
            parameters.append(self.source.text)
            self.skip_white_space()
            kind = self.get()
            if kind != COMMA:
                break
            self.skip_white_space()
            kind = self.get()
        if kind != RPAREN:
            self.report_error(b"An ')' or ',' was expected")
            return None
        return parameters

    def handle_undef(self):
        self.skip_blanks()
        name = self.read_macro_name()
        if not name:
            self.report_error(b"Invalid macro name")
            return
        self.macros.pop(name, None)
        self.skip_blanks()
        self.get()

    def define_from_command_line(self, name, text):
        if name not in self.macros:
            self.macros[name] = Macro(text)

    def define_predefined(self):
        weekday, month, day, clock, year = time.asctime(time.localtime()).encode("ascii").split()
        self.define_from_command_line(b"__FILE__", b"")
        self.define_from_command_line(b"__LINE__", b"")
        self.define_from_command_line(b"__DATE__", month + b" " + (b" " if int(day) < 10 else b"") + day + b" " + year)
        self.define_from_command_line(b"__TIME__", clock)

    # ------------------------------------------------------------------ expansion

    def refresh(self, name, macro):
        if name == b"__FILE__":
            macro.text = b'"' + self.file.file_name + b'"'
        elif name == b"__LINE__":
            macro.text = b"%d" % self.file.line()

    def expand_in_text(self, name):
        macro = self.macros.get(name)
        if macro is None or name in self.source.hide_set():
            self.write(name)
            return
        hide = self.source.hide_set() | frozenset([name])
        self.refresh(name, macro)
        if not macro.function_like:
            self.push_list(lex_to_list(macro.text, hide, self.streams))
            return
        skipped = self.skip_white_space()
        if self.peek() != LPAREN:
            for token in skipped:
                self.write(token.text)
            self.write(name)
            return
        arguments = self.collect_arguments(macro)
        if arguments is None:
            self.write(name)
        else:
            self.push_list(self.substitute(macro, arguments, hide))

    def expand_token_list(self, tokens):
        saved = self.set_aside(tokens)
        result = []
        while True:
            kind = self.get()
            if kind == TK_END:
                break
            token = self.current_token()
            if kind == TK_DEFINED and self.in_condition:
                result.append(token)
                self.pass_defined_operand(result)
            elif is_name(kind):
                self.expand_in_list(token, result)
            else:
                result.append(token)
        self.restore(saved)
        return result

    def pass_defined_operand(self, result):
        """Passes blanks, an optional "(", a name and ")" through unexpanded."""
        self.pass_blanks(result)
        parenthesised = self.peek() == LPAREN
        if parenthesised:
            self.get()
            result.append(self.current_token())
            self.pass_blanks(result)
        if not is_name(self.peek()):
            return
        self.get()
        result.append(self.current_token())
        if parenthesised:
            self.pass_blanks(result)
            if self.peek() == RPAREN:
                self.get()
                result.append(self.current_token())

    def pass_blanks(self, result):
        while self.peek() in (TK_SPACE, TK_CONTINUATION):
            self.get()
            result.append(self.current_token())

    def expand_in_list(self, token, result):
        macro = self.macros.get(token.text)
        if macro is None or token.text in token.hide:
            result.append(token)
            return
        hide = token.hide | frozenset([token.text])
        self.refresh(token.text, macro)
        if not macro.function_like:
            self.push_list(lex_to_list(macro.text, hide, self.streams))
            return
        skipped = self.skip_white_space()
        if self.peek() != LPAREN:
            result.append(token)
            result.extend(skipped)
            return
        arguments = self.collect_arguments(macro)
        if arguments is None:
            result.append(token)
        else:
            self.push_list(self.substitute(macro, arguments, hide))

    def make_argument(self, pieces):
        """The argument that the given tokens make, once the token that ends it has been taken: its set is for all."""
        return Argument(b"".join(piece.text for piece in pieces),
                        lex_anew(pieces, self.source.hide_set(), self.streams))

    def collect_arguments(self, macro):
        """The arguments of an invocation whose "(" is the next token, or None after a reported error."""
        expected = len(macro.parameters)
        arguments = []
        self.get()
        while True:
            self.skip_white_space()
            kind = self.get()
            if kind == RPAREN:
                break
            if kind == COMMA:
                arguments.append(self.make_argument([]))
            else:
                kind = self.read_argument(kind, arguments)
            if kind == RPAREN:
                break
            if kind != COMMA:
                self.report_error(b"The macro invocation is improperly terminated")
                return None
            if len(arguments) > expected:
                self.report_error(b"A macro invocation has too many arguments")
                return None
        if len(arguments) < expected:
            self.report_error(b"There are not enough arguments in a macro invocation")
            return None
        if len(arguments) > expected:
            self.report_error(b"A macro invocation has too many arguments")
            return None
        return arguments

    def read_argument(self, kind, arguments):
        """Reads an argument that starts with the token just taken; returns the kind of the token that ended it."""
        depth = 1 if kind == LPAREN else 0
        pieces = []
        skipped = []
        while True:
            if kind != TK_END:
                if skipped:
                    # One blank, which came from all that was skipped.
                    pieces.append(Token(b" ", frozenset().union(*(token.hide for token in skipped))))
                pieces.append(self.current_token())
            skipped = self.skip_white_space()
            kind = self.get()
            if kind == TK_END or (depth == 0 and kind in (COMMA, RPAREN)):
                break
            if kind == RPAREN:
                depth -= 1
            elif kind == LPAREN:
                depth += 1
        arguments.append(self.make_argument(pieces))
        return kind

    def substitute(self, macro, arguments, hide):
        by_name = {}
        for parameter, argument in zip(macro.parameters, arguments):
            by_name[parameter] = argument
        saved = self.set_aside(lex_to_list(macro.text, hide, self.streams))
        result = self.replace(by_name, hide)
        self.restore(saved)
        return result

    def replace(self, by_name, hide):
        """Reads the replacement list from the current source and builds the expansion."""
        result = []
        have_item = False
        blank = False
        pasting = False
        while True:
            kind = self.get()
            text = self.source.text
            if kind == TK_END:
                break
            if kind == TK_SPACE:
                blank = True
                continue
            if kind == TK_PASTE:
                if not have_item:
                    self.report_error(b"'##' operator cannot be at the beginning of the replacement list")
                    return result
                pasting = True
                continue
            blank_after = False
            expansion = None
            if kind == HASH:
                self.skip_white_space()
                if not is_name(self.get()) or self.source.text not in by_name:
                    self.report_error(b"Macro variable expected after '#' operator")
                    return result
                text = stringize(by_name[self.source.text].text)
            elif is_name(kind) and text in by_name:
                argument = by_name[text]
                while self.peek() == TK_SPACE:
                    self.get()
                    blank_after = True
                if pasting or self.peek() == TK_PASTE:
                    text = argument.text
                else:
                    expansion = self.expand_token_list(argument.tokens)
            if pasting:
                # The left operand is always one element: it was stored unexpanded because it stands beside "##".
                result[-1] = Token(result[-1].text + text, frozenset(hide))
                pasting = False
            else:
                if blank and have_item:
                    result.append(Token(b" ", frozenset(hide)))
                if expansion is None:
                    result.append(Token(text, frozenset(hide)))
                else:
                    for token in expansion:
                        result.append(Token(token.text, frozenset(token.hide | hide)))
            have_item = True
            blank = blank_after
        if pasting:
            self.report_error(b"'##' operator cannot be at the end of the replacement list")
        return result

    # ------------------------------------------------------------------ #include

    def handle_include(self):
        tokens = self.expand_token_list(self.collect_line())
        saved = self.set_aside(tokens)
        name, quoted = self.read_include_name()
        self.restore(saved)
        found = None
        if name is not None:
            found = self.find_file(name, quoted)
            if found is None:
                self.report_error(b"Cannot open file: " + name)
        self.get()
        if found is not None:
            self.enter_file(found)

    def read_include_name(self):
        """The name (None after an error that ends the directive) and whether the form was quoted."""
        self.skip_blanks()
        kind = self.get()
        if kind == LESS:
            quoted = False
            name = b""
            while True:
                kind = self.get()
                if kind == GREATER:
                    break
                if kind in (TK_NEWLINE, TK_END):
                    self.report_error(b"Filename expected after #include directive")
                    return None, quoted
                name += self.source.text
        elif kind == TK_STRING:
            quoted = True
            name = self.source.text[1:-1]
        else:
            self.report_error(b"Filename expected after #include directive")
            return None, False
        if not name:
            self.report_error(b"An expected file name is missing")
            return None, quoted
        self.check_left_over()
        return name, quoted

    def find_file(self, name, quoted):
        absolute = len(name) > 1 and (name[:1] == b"/" or (name[:1].isalpha() and name[1:2] == b":"))
        paths = []
        if absolute:
            paths.append(name)
        elif quoted:
            directory = directory_part(self.file.file_name)
            paths.append(name if directory == b"." else directory + b"/" + name)
        for directory in self.include_directories:
            paths.append(directory + b"/" + name)
        for path in paths:
            data = read_file(path)
            if data is not None:
                return FileScanner(path, data, self.streams)
        return None

    def enter_file(self, scanner):
        self.depth_stack.append(self.depth)
        self.depth = 0
        self.stack.append(self.source)
        self.files.append(self.file)
        self.source = scanner
        self.file = scanner
        if self.streams.file_depth is not None and len(self.files) > self.streams.file_depth:
            raise BudgetExceeded()
        self.write_line_directive()

    # ------------------------------------------------------------------ #line, #pragma, _Pragma, #error

    def handle_line(self):
        tokens = self.expand_token_list(self.collect_line())
        saved = self.set_aside(tokens)
        self.set_line_from_operand()
        self.restore(saved)
        self.get()

    def set_line_from_operand(self):
        invalid_format = b'Invalid format for "#line" directive'
        self.skip_blanks()
        kind = self.get()
        text = self.source.text
        if kind != TK_DEC_INT:
            zero = kind != TK_END and text == b"0"
            self.report_error(b"Invalid line number" if zero else invalid_format)
            return
        if text[-1:] not in DIGITS:
            self.report_error(invalid_format)
            return
        number = 0
        for digit in text:
            number = wrap_signed(number * 10 + digit - ord("0"))
        self.file.set_line(number)
        self.skip_blanks()
        kind = self.get()
        if kind == TK_STRING:
            self.file.file_name = self.source.text[1:-1]
        elif kind != TK_END:
            self.report_error(invalid_format)
            return
        self.write_line_directive()
        self.check_left_over()

    def handle_pragma(self):
        self.write(b"#pragma ")
        kind = self.get()
        while kind not in (TK_NEWLINE, TK_END):
            if kind != TK_CONTINUATION:
                self.write(self.source.text)
            kind = self.get()
        self.write(b"\n")
        self.count_output_line()

    def pragma_operator(self):
        literal = b""
        for wanted in (LPAREN, TK_STRING, RPAREN):
            self.skip_white_space()
            if self.get() != wanted:
                self.report_error(b"_Pragma requires a parenthesized string literal")
                return
            if wanted == TK_STRING:
                literal = self.source.text
        self.write(b"\n")
        self.count_output_line()
        self.write(b"#pragma " + destringize(literal) + b"\n")
        self.count_output_line()

    def handle_error(self):
        message = b"#error directive: "
        while self.peek() not in (TK_NEWLINE, TK_END):
            if self.get() != TK_CONTINUATION:
                message += self.source.text
        self.report_error(message)
        self.get()

    CONDITIONALS = {
        TK_IF: handle_if,
        TK_IFDEF: handle_ifdef,
        TK_IFNDEF: handle_ifndef,
        TK_ELIF: handle_elif,
        TK_ELSE: handle_else,
        TK_ENDIF: handle_endif,
    }
    OTHER_DIRECTIVES = {
        TK_INCLUDE: handle_include,
        TK_DEFINE: handle_define,
        TK_UNDEF: handle_undef,
        TK_LINE: handle_line,
        TK_ERROR: handle_error,
        TK_PRAGMA: handle_pragma,
    }


# --------------------------------------------------------------------------------------------------------------------
# Command line
# --------------------------------------------------------------------------------------------------------------------

SINGLE_LETTER_OPTIONS = (b"I", b"D")
VALUE_OPTIONS = (b"o", b"s")
PLAIN_OPTIONS = (b"v", b"-version", b"h", b"-help")

HELP_TEXT = b"""Usage: qnpp [options] [source_file]

  -I<dir>        : add a directory for searching include files.
  -D<name>       : define preprocessor symbol.
  -o <name>      : output file. If not specified, writes to standard out.
  -s <name>      : source name. Overrides source file name in messages. Useful when reading from standard in.
  -v, --version  : show version number.
  -h, --help     : show this help text.

The order you specify options and source file does not matter.
If no source file is specified, qnpp reads from standard in.

"""


def match_option(word):
    """The table name of the option that a word beginning with "-" names, or None."""
    option = word[1:]
    if option[:1] in SINGLE_LETTER_OPTIONS:
        return option[:1]
    if option in VALUE_OPTIONS + PLAIN_OPTIONS:
        return option
    return None


class CommandLine:
    def __init__(self, words):
        self.events = []
        self.letters = {b"I": [], b"D": []}
        self.named = {}
        self.plain = []
        index = 0
        while index < len(words):
            index = self.word(words, index)

    def word(self, words, index):
        """Parses the word at an index; returns the index of the next word to parse."""
        word = words[index]
        following = words[index + 1] if index + 1 < len(words) else None
        if word[:1] != b"-":
            self.plain.append(word)
            return index + 1
        name = match_option(word)
        if name is None:
            self.events.append(("unknown", word))
        elif name in PLAIN_OPTIONS:
            self.events.append((name, b""))
            ignored = b"".join(other + b" " for other in words[:index]) + b" ".join(words[index + 1:])
            if ignored:
                self.events.append(("ignored", ignored))
        elif name in SINGLE_LETTER_OPTIONS:
            value = word[2:]
            if not value:
                value = None
                if name == b"I" and following is not None and (following[:1] != b"-" or following[1:2] == b"I"):
                    value = following
                    index += 1
            self.letters[name].append(value)
        else:
            if name in self.named:
                self.events.append(("repeated", name))
            self.named[name] = None
            if following is not None and not (following[:1] == b"-" and match_option(following) is not None):
                self.named[name] = following
                index += 1
        return index + 1

    def values(self, kind):
        return [value for key, value in self.events if key == kind]


class Run:
    """One run of the program: `status` is the exit status, negative for a signal as in the subprocess module."""

    PREPROCESSOR = Preprocessor

    def __init__(self, words, stdin, steps=None, bytes_limit=None, file_depth=None):
        self.streams = Streams(steps, bytes_limit, file_depth)
        self.output_file = None
        self.output_bytes = bytearray()
        self.preprocessor = self.PREPROCESSOR(self.streams, stdin)
        try:
            self.status = 1
            if self.drive(CommandLine(words)):
                self.status = 1 if self.preprocessor.run() else 0
        except ArithmeticFault:
            self.status = -int(signal.SIGFPE)
        finally:
            if self.output_file is not None:
                with open(self.output_file, "wb") as stream:
                    stream.write(self.output_bytes)
        self.stdout = bytes(self.streams.stdout)
        self.stderr = bytes(self.streams.stderr)

    def complain(self, message):
        self.streams.stderr += b"qnpp: " + message + b"\n"

    def drive(self, line):
        """Carries out the command line; tells whether the preprocessor is to run."""
        unknown = line.values("unknown")
        for word in unknown:
            self.complain(b"unknown option '" + word + b"' ('-h' for help)")
        if unknown:
            return False
        for name in line.values("repeated"):
            self.complain(b"'-" + name + b"' option appears more than once\n\tonly the last one will be considered")
        for names, text in (((b"h", b"-help"), HELP_TEXT), ((b"v", b"-version"), b"qnpp version (model)\n\n")):
            if line.values(names[0]) or line.values(names[1]):
                for ignored in line.values("ignored"):
                    self.complain(b"argument(s) '" + ignored + b"' is(are) ignored")
                self.streams.stdout += text
                return False
        if None in line.letters[b"D"]:
            self.complain(b"missing macro for '-D' option number %d" % (line.letters[b"D"].index(None) + 1))
            return False
        for value in line.letters[b"D"]:
            name, equals, text = value.partition(b"=")
            self.preprocessor.define_from_command_line(name, text if equals else b"1")
        if None in line.letters[b"I"]:
            self.complain(b"missing path name for '-I' option number %d" % (line.letters[b"I"].index(None) + 1))
            return False
        self.preprocessor.include_directories.extend(line.letters[b"I"])
        if b"o" in line.named:
            if line.named[b"o"] is None:
                self.complain(b"missing output file name for '-o' option")
                return False
            if not self.open_output(line.named[b"o"]):
                self.complain(b"cannot open output file '" + line.named[b"o"] + b"'")
                return False
        if line.named.get(b"s", b"") is None:
            self.complain(b"no source name provided to '-s' option")
            return False
        if len(line.plain) > 1:
            self.complain(b"cannot provide more than one source file")
            return False
        file_name = line.plain[0] if line.plain else b""
        self.preprocessor.open_source(file_name, line.named.get(b"s", b""))
        return not self.preprocessor.error_flag

    def open_output(self, name):
        try:
            with open(name, "wb"):
                pass
        except OSError:
            return False
        self.output_file = name
        self.streams.output = self.output_bytes
        return True


def main():
    sys.setrecursionlimit(1000000)
    threading.stack_size(1 << 29)
    runs = []
    words = [os.fsencode(word) for word in sys.argv[1:]]
    thread = threading.Thread(target=lambda: runs.append(Run(words, sys.stdin.buffer.read)))
    thread.start()
    thread.join()
    if not runs:
        return 70
    sys.stderr.buffer.write(runs[0].stderr)
    sys.stderr.buffer.flush()
    sys.stdout.buffer.write(runs[0].stdout)
    sys.stdout.buffer.flush()
    if runs[0].status < 0:
        os.kill(os.getpid(), -runs[0].status)
    return runs[0].status


if __name__ == "__main__":
    sys.exit(main())
