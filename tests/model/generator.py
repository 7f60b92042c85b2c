"""Writes random projects: files, a command line and a standard input, in which every part of the language occurs.

The same chance gives the same project on every run.  What a project holds beside the usual is among its `traits`.
"""

OUTPUT_FILE = b"out.txt"


class Case:
    """The files of a project, the command line and the standard input."""

    def __init__(self, files, words, stdin, traits=()):
        self.files = files
        self.words = words
        self.stdin = stdin
        self.traits = frozenset(traits)

    def texts(self):
        """The texts that the reduction works on, as (kind, key) pairs."""
        parts = [("file", name) for name in sorted(self.files)]
        parts.append(("stdin", None))
        parts.extend(("word", index) for index in range(len(self.words)))
        return parts

    def text(self, part):
        kind, key = part
        return self.files[key] if kind == "file" else self.stdin if kind == "stdin" else self.words[key]

    def with_text(self, part, text):
        kind, key = part
        changed = Case(dict(self.files), list(self.words), self.stdin, self.traits)
        if kind == "file":
            changed.files[key] = text
        elif kind == "stdin":
            changed.stdin = text
        else:
            changed.words[key] = text
        return changed


class Generator:
    """Writes one random project.  Few short names are used, so that everything collides with everything."""

    TRAITS = ["long tokens", "padding", "rescanning", "ladder", "numbers", "live definition", "directive in argument"]
    NAMES = [b"A", b"B", b"C", b"f", b"g", b"h", b"x", b"y"]
    KEYWORDS = [b"if", b"line", b"define", b"include", b"error", b"ident", b"else", b"endif", b"pragma", b"undef",
                b"elif"]
    PREDEFINED = [b"__LINE__", b"__FILE__", b"__LINE__", b"__DATE__"]
    OPERATORS = [b"+", b"-", b"*", b"/", b"%", b"<", b">", b"&", b"|", b"^", b"!", b"~", b"?", b":", b"==", b"!=",
                 b"<=",
                 b">=", b"<<", b">>", b"&&", b"||", b"=", b";", b".", b"[", b"]", b"{", b"}", b"\\", b"$", b"@"]
    NUMBERS = [b"0", b"1", b"2", b"3", b"7", b"10", b"010", b"08", b"0x1F", b"0x", b"1u", b"2UL", b"3lu", b"4L", b"5LL",
               b"0u", b"0xffffffffU", b"0x80000000", b"2147483647", b"2147483648", b"4294967295", b"4294967296",
               b"1.5", b"12abc", b"99999999999999999999"]
    STRINGS = [b'"s"', b'""', b'"a b"', b'"a \\"q\\" b"', b'"b\\\\"', b'"bad\\n"', b'" a  b "', b"'c'", b"'\\n'",
               b"'\\''",
               b"'\\x41'", b"'\\012'", b"'abcd'", b"'abcde'", b"'\\e'", b"''", b"'\xe9'", b'"\t"', b'"//"', b'"/*"',
               b'"\xe9\xff"',
               b"'\\1234'", b"'\"'", b'"\'"', b'"\\\\\\""', b"'\\\\'", b"L'a'", b'L"s"']
    ODD = [b'"', b"'", b"\0", b"\x80", b"\xff", b"\\", b"`", b'"open', b"'open", b"\x1b", b'\\"', b"\\'"]

    def __init__(self, chance):
        self.chance = chance
        self.eol = b"\n"
        self.deep = 0
        # Some projects are harsh, some nearly well formed, so that errors do not drown the rest.
        self.harsh = chance.choice([0.0, 0.02, 0.05, 0.15, 0.4])
        self.header_names = []
        self.folder = b"/nonexistent"
        # The number of parameters that a name was last defined with, so that most invocations fit.
        self.parameter_counts = {}
        self.traits = set()
        self.long_comment = None
        self.quotes = False
        # What most lines are: text, definitions, conditionals, includes, other directives.
        self.weights = chance.choice([(45, 22, 15, 5, 13), (60, 35, 2, 1, 2), (60, 35, 2, 1, 2), (25, 15, 50, 2, 8),
                                      (30, 15, 10, 35, 10), (30, 10, 5, 5, 50)])

    # ------------------------------------------------------------------ helpers

    def maybe(self, probability):
        return self.chance.random() < probability

    def odd(self, factor=1.0):
        return self.chance.random() < self.harsh * factor

    def pick(self, *choices):
        return self.chance.choice(choices)

    def line_end(self):
        if self.eol == b"mixed":
            return self.pick(b"\n", b"\n", b"\r\n", b"\r")
        return self.eol

    # ------------------------------------------------------------------ what only some projects hold

    def bring_long_tokens(self):
        """Tokens longer than the lexer's first buffer, and than what it reads at once: two names that differ in their
        last character, a number, literals and comments, beside the short ones."""
        self.traits.add("long tokens")

        def length():
            return self.pick(32768, 65536, 65536, self.chance.randint(33000, 100000)) + self.pick(-2, -1, 0, 0, 1, 2)

        count = length()
        names = [b"n" * (count - 1) + b"a", b"n" * (count - 1) + b"b"]
        self.NAMES = self.NAMES + names[:self.pick(1, 2)]
        number = self.pick(b"1" * length(), b"0" * length() + b"7", b"0x" + b"0" * length() + b"1",
                           b"9" * length() + b"u")
        self.NUMBERS = [number] * 3 + self.NUMBERS
        # From each mark in a literal that falls apart the lexer looks up to the end of the line, so they are few.
        inside = self.pick(b"a", b"a b", b"\xe9", *[b"a" * 400 + mark for mark in (
            b"\\\\", b'\\"', b"\\'", b" A ", b"/*", b"//", b"\r", b" f(1) ", b"\\n", b"\0")])
        text = inside * (length() // len(inside))
        literals = [b'"' + text + b'"', b"'" + text.replace(b"'", b"") + b"'", b'"' + text, b'"' + text + b'\\n"']
        self.STRINGS = self.STRINGS + self.chance.sample(literals, 2) * 4
        inside = self.pick(b"c", b"* ", b"/", b"c" * 79 + b"\n", b"c" * 79 + b"\r\n", b"#\\\n")
        self.long_comment = b"/*" + inside * (length() // len(inside)) + b"*/"

    def bring_padding(self, text):
        """Moves a random place of the text to where the lexer reads on or its buffer ends."""
        self.traits.add("padding")
        place = self.chance.randint(0, min(len(text), 3000))
        if self.maybe(0.7):
            # Best a place at which something begins.
            marks = [i for i in range(len(text)) if text[i:i + 1] in b"\r\n\\/*#\"'(" and i <= 3000]
            place = self.chance.choice(marks) + self.pick(0, 1) if marks else place
        size = self.pick(32768, 32768, 32768, 65536) - place + self.pick(-1, 0, 0, 1)
        line = self.pick(b"//", b"//", b"/*", b"p ", b" ")
        end = self.pick(b"\n", b"\r\n") if line != b"/*" else b"*/\n"
        if line == b" ":
            return b" " * (size % 2048) + text
        return line + b"c" * (size - len(line) - len(end)) + end + text

    # ------------------------------------------------------------------ tokens

    def name(self):
        roll = self.chance.random()
        if roll < 0.84:
            return self.chance.choice(self.NAMES)
        if roll < 0.90:
            return self.chance.choice(self.KEYWORDS)
        if roll < 0.97:
            return self.chance.choice(self.PREDEFINED)
        return self.pick(b"defined", b"_Pragma", b"ifdef", b"ifndef", b"L", b"AB", b"zz")

    def split_name(self):
        name = self.name()
        if len(name) > 1 and self.odd(0.3):
            cut = self.chance.randrange(1, len(name))
            name = name[:cut] + b"\\" + self.line_end() + name[cut:]
        return name

    def comment(self):
        if self.long_comment and self.maybe(0.1):
            return self.long_comment
        roll = self.chance.random()
        if roll < 0.55:
            return self.pick(b"/* c */", b"/**/", b"/*/*/", b"/***/", b"/* \" */", b"/* ' */", b"/* # */", b"/* * / */")
        if roll < 0.95:
            body = b"".join(self.pick(b"", b" ", b"*", b"A", b"//") + self.line_end()
                            for _ in range(self.chance.randint(1, 2)))
            return b"/*" + body + self.pick(b"", b" ", b"#else", b"*") + b"*/"
        return self.pick(b"/*\0*/", b"/*\xff\f*/")

    def blank(self):
        """White space that is at least one character."""
        roll = self.chance.random()
        if roll < 0.70:
            return b" "
        if roll < 0.80:
            return self.pick(b"  ", b"\t", b"\v", b"\f", b" \t ")
        if roll < 0.90:
            return self.comment()
        if roll < 0.97:
            return self.pick(b"", b" ") + b"\\" + self.line_end() + self.pick(b"", b" ")
        return self.blank() + self.blank()

    def space(self, probability=0.5):
        """White space that may be absent."""
        return self.blank() if self.maybe(probability) else b""

    def loose_space(self):
        """White space as it may stand inside an invocation: line ends too."""
        roll = self.chance.random()
        if roll < 0.60:
            return b""
        if roll < 0.85:
            return self.blank()
        return self.space() + self.line_end() + self.space()

    def string(self):
        if self.maybe(0.05):
            return b'"' + self.pick(b"a", b"", b"\\\\") + self.pick(b"\r", b"\\" + self.line_end(), b"\0") + b'b"'
        if self.maybe(0.08):
            return self.pick(b'" a', b"' a", b'"') + self.line_end() + self.pick(b' b"', b"b'", b'"')
        return self.chance.choice(self.STRINGS)

    def atom(self):
        roll = self.chance.random()
        if roll < 0.50:
            return self.split_name()
        if roll < 0.62:
            return self.chance.choice(self.NUMBERS)
        if roll < 0.72:
            return self.string()
        if roll < 0.82:
            return self.chance.choice(self.OPERATORS)
        if roll < 0.88:
            return self.pick(b"(", b")", b",", b"(", b")", b",", b"()", b"(,)")
        if roll < 0.91:
            return self.pick(b"#", b"##", b"###", b"####")
        if roll < 0.94:
            return self.pragma_operator()
        if roll < 0.97:
            return self.pick(b"/", b"/", b"//", b"*", b"*/")
        return self.chance.choice(self.ODD)

    def pragma_operator(self):
        if self.odd():
            return b"_Pragma" + self.loose_space() + self.pick(b"", b"(", b"x", b"()") + self.space() + self.string()
        return (b"_Pragma" + self.loose_space() + b"(" + self.loose_space()
                + self.pick(b'"p"', b'"a \\"b\\" \\\\"', b'""', b'"x A"', b'"\xff\0"') + self.loose_space() + b")")

    def argument(self):
        self.deep += 1
        count = self.pick(0, 1, 1, 1, 2, 3)
        parts = []
        for _ in range(count):
            roll = self.chance.random()
            if roll < 0.35 and self.deep < 4:
                parts.append(self.invocation())
            elif roll < 0.42 and self.deep < 4:
                parts.append(b"(" + self.argument() + self.pick(b",", b"") + self.argument() + b")")
            elif roll < 0.45:
                self.traits.add("directive in argument")
                parts.append(self.line_end() + b"#" + self.pick(
                    b"define A 1", b"endif", b"else", b"", b"undef f", b"if 0", b"include \"a.h\"", b"line 9",
                    b"pragma A", b"error A", b"define f(x) A", b"ifdef A", b"foo") + self.line_end())
            elif roll < 0.49:
                parts.append(self.pragma_operator())
            else:
                parts.append(self.plain_atom())
        self.deep -= 1
        result = b""
        for part in parts:
            result += self.loose_space() + part
        return result + self.loose_space()

    def plain_atom(self):
        """An atom that rarely spoils the parentheses."""
        while True:
            atom = self.atom()
            if self.odd() or not any(mark in atom for mark in (b"(", b")", b",", b"//", b'"open', b"'open")):
                return atom

    def invocation(self):
        name = self.pick(b"f", b"g", b"h", b"f", b"g", b"A", self.name())
        if self.parameter_counts and self.maybe(0.7):
            name = self.chance.choice(sorted(self.parameter_counts))
        if self.odd():
            return name + self.loose_space() + self.pick(b"(", b"", b"()", b"(,", b"(,)", b"((", b"(a,")
        count = self.pick(0, 1, 1, 1, 1, 2, 2, 2, 3)
        if self.maybe(0.9):
            count = self.parameter_counts.get(name, count)
        return name + (self.loose_space() if self.maybe(0.2) else b"") + b"(" + b",".join(
            self.argument() for _ in range(count)) + b")" + (self.pick(b"(1)", b"(",
                                                                       b"(A)(B)") if self.maybe(0.1) else b"")

    def words(self, low, high):
        result = b""
        for _ in range(self.chance.randint(low, high)):
            result += self.space(0.6)
            result += self.invocation() if self.maybe(0.35) else self.atom()
        return result + self.space(0.15)

    # ------------------------------------------------------------------ directives

    def hash_word(self, word):
        lead = self.space(0.1) if not self.odd() else self.blank()
        return lead + b"#" + self.space(0.15) + word

    def define(self):
        roll = self.chance.random()
        if self.odd(0.5):
            return self.hash_word(b"define") + self.blank() + self.pick(
                b"", b"1", b"#undef A", b"defined 1", b"_Pragma 1", b"f(", b"f(x", b"f(x,", b"f(x,) x", b"f(x y) x",
                b"f(1) x",
                b"f(...) x", b"f(x,x) x", b"f(,) x", b"f)x( x", b"\"s\" 1", b"f(x,\n y) x y", b"f(\\\nx) x", b"## 1",
                b"f (x) x", b"f(x /*\n*/ ) x", b"/*\n*/", b"f(x\n\n1) x", b"defined(x) x").replace(b"\n",
                                                                                                   self.line_end())
        if roll < 0.40:
            name = self.split_name()
            body = self.words(0, 4) if self.maybe(0.6) else self.pick(
                b"A", b"B", b"A A", b"f", b"g", b"f(", b"f(1", b"f(A)", b"1", b"0", b"2", b"defined", b"defined A",
                b"(", b")",
                b",", b"x", b"1,2", b"h(1)", b"A+1", b"f f", b"__LINE__", b"/", b"*", b"#", b"##", b"a ## b", b'"a.h"',
                b"<a.h>",
                b"<", b">", b"( x", b"x)", b'"', b"'", b"", b"", b"_Pragma", b"-1")
            return self.hash_word(b"define") + self.blank() + name + self.blank() + body
        parameters = [self.pick(b"x", b"y", b"z", b"x", b"y", b"A", b"if", b"f") for _ in range(self.pick(0, 1, 1, 1, 2,
                                                                                                          2, 3))]
        name = self.pick(b"f", b"g", b"h", b"f", b"g", b"h", self.split_name())
        self.parameter_counts[name] = len(parameters)
        listing = (b"," + self.space(0.1)).join(self.space(0.1) + p + self.space(0.1) for p in parameters)
        return (self.hash_word(b"define") + self.blank() + name + b"(" + listing + b")" + self.space(0.8)
                + self.body(parameters))

    def body(self, parameters):
        """A replacement list with much use of the parameters and of # and ##."""
        result = b"##" + self.space(0.5) if self.maybe(0.02) else b""
        for _ in range(self.pick(1, 1, 2, 2, 3, 4, 6)):
            roll = self.chance.random()
            parameter = self.chance.choice(parameters) if parameters else self.name()
            if roll < 0.30:
                result += self.space(0.5) + parameter
            elif roll < 0.40:
                result += self.space(0.5) + b"#" + self.space(0.2) + parameter
            elif roll < 0.60:
                result += self.space(0.3) + self.pick(parameter, parameter, b"#" + parameter, self.atom())
                for _ in range(self.pick(1, 1, 1, 2)):
                    result += self.space(0.4) + b"##" + self.space(0.4) + self.pick(
                        parameter, parameter, b"#" + parameter, b"# " + parameter, self.atom(), b"x", b"1", b"/", b"*",
                        b"f")
            elif roll < 0.75:
                arguments = b",".join(self.pick(parameter, parameter, parameter + b" ", b"1", self.name())
                                      for _ in range(self.pick(0, 1, 1, 2)))
                result += self.space(0.5) + self.pick(b"f", b"g", b"h", b"A", parameter) + self.pick(b"(",
                                                                                                     b" (") + arguments
                result += b")" if not self.odd(0.5) else b""
            elif roll < 0.80:
                result += self.space(0.5) + self.pick(b"(", b")", b",", b"f", b"g", b"(x", b"defined", b"defined x")
            elif roll < 0.84 and self.maybe(0.3):
                result += self.pick(b"##", b"##", b"#", b" ## ", b" # ", b"## ##", b"/\\\n/", b"/\\\n*",
                                    b"#\\\n#").replace(
                    b"\n", self.line_end())
            else:
                result += self.space(0.5) + self.atom()
        return result + (self.space(0.5) + b"##" if self.maybe(0.03) else b"")

    def expression(self, depth=0):
        roll = self.chance.random()
        if depth > 3 or roll < 0.30:
            return self.pick(b"0", b"1", b"1", b"2", b"0", b"A", b"B", b"x", b"__LINE__", b"1u", b"-1", b"f(1)",
                             b"f(A)",
                             b"g(1,2)", self.chance.choice(self.NUMBERS[:23]), self.string(), b"'a'",
                             b"if", b"__FILE__" if self.odd() else b"3")
        if roll < 0.45:
            return self.defined()
        if roll < 0.50:
            return b"(" + self.space() + self.expression(depth + 1) + self.space() + (b")" if not self.odd() else b"")
        if roll < 0.58:
            return self.pick(b"!", b"~", b"-", b"+", b"!!", b"- ") + self.expression(depth + 1)
        if roll < 0.63:
            return (self.expression(depth + 1) + self.space() + b"?" + self.space() + self.expression(depth + 1)
                    + self.space() + (b":" if not self.odd() else b"") + self.space() + self.expression(depth + 1))
        if roll < 0.65:
            # A zero divisor ends the run, so division is rare and mostly by something else.
            return (self.expression(depth + 1) + self.pick(b"/", b"%", b" / ")
                    + (self.pick(b"2", b"-1", b"3u", b"'a'",
                                 b"(1+1)") if not self.odd(0.5) else self.expression(depth + 1)))
        if self.odd(0.7):
            return self.pick(b"", b"+", b"#", b"(", b")", b"1 2", b"defined", b"A(", b"(1)(2)", b"1 ?", b"1 ? 2", b"@",
                             b'"s"',
                             b"x()", b"f", b"f(", b"= 1", b"*", b"##", b"1 //", b"_Pragma",
                             b"define") + self.expression(depth + 2)
        operator = self.pick(b"||", b"&&", b"|", b"^", b"&", b"==", b"!=", b"<", b">", b"<=", b">=", b"<<", b">>", b"+",
                             b"-",
                             b"*")
        return self.expression(depth + 1) + self.space() + operator + self.space() + self.expression(depth + 1)

    def defined(self):
        name = self.pick(self.chance.choice(self.NAMES), b"A", b"f", b"B", self.name() if self.odd() else b"x")
        if self.maybe(0.5):
            return b"defined" + self.blank() + name
        if self.odd():
            return b"defined" + self.space() + self.pick(b"(", b"()", b"(A", b"(1)", b"( if )", b"((A))", b"A)", b"1")
        return self.pick(b"defined", b"defined", b"defined", b"D") + self.space(0.2) + b"(" + self.space(0.2) + name \
            + self.space(0.2) + b")"

    def trailing(self):
        """What may stand behind a complete directive."""
        if self.odd():
            return self.space() + self.words(1, 2)
        return self.blank() + self.pick(b"// c", b"/* c */", b"") if self.maybe(0.15) else b""

    def condition(self):
        return self.pick(
            self.hash_word(b"if") + self.blank() + self.expression() + self.trailing(),
            self.hash_word(b"if") + self.blank() + self.expression() + self.trailing(),
            self.hash_word(b"if") + self.blank() + self.pick(b"0", b"1"),
            self.hash_word(b"ifdef") + self.blank() + self.guard_name() + self.trailing(),
            self.hash_word(b"ifndef") + self.blank() + self.guard_name() + self.trailing())

    def guard_name(self):
        if self.odd():
            return self.pick(b"", b"1", b'"A"', b"defined", b"(A)", b"_Pragma")
        return self.name()

    def group(self, depth):
        """A conditional with its groups, as lines; parts may be missing or repeated."""
        lines = [self.condition()]
        lines += self.lines(depth + 1, self.pick(0, 1, 2))
        for _ in range(self.pick(0, 0, 0, 1, 1, 2)):
            lines.append(self.hash_word(b"elif") + self.blank() + self.expression() + self.trailing())
            lines += self.lines(depth + 1, self.pick(0, 1, 2))
        for _ in range(self.pick(0, 1, 1, 1) if not self.odd() else 2):
            lines.append(self.hash_word(b"else") + self.trailing())
            lines += self.lines(depth + 1, self.pick(0, 1, 2))
            if self.odd():
                lines.append(self.hash_word(b"elif") + self.blank() + self.expression())
        if not self.odd():
            lines.append(self.hash_word(b"endif") + self.trailing())
        return lines

    def include(self):
        name = self.chance.choice(self.header_names) if self.header_names and not self.odd() else self.pick(
            b"no.h", b"a.h", b"sub", b".", b"", b"./a.h", b"sub/../a.h", b"sub\\b.h", b"/", b"C:x", b"../a.h", b" a.h ")
        if self.maybe(0.05):
            name = self.folder + b"/" + name
        operand = self.pick(b'"' + name + b'"', b'"' + name + b'"', b"<" + name + b">")
        if self.odd():
            operand = self.pick(b"", b"<a.h", b'"a.h', b"a.h", b"<>", b'""', b"H", b"< a.h >", b"<a.h>>", b"<<a.h>",
                                b"'a.h'",
                                b"<a/*c*/h>", b"f(1)", b"A", b"<H>", b"<\\" + self.line_end() + b"a.h>", b"1")
        elif self.maybe(0.15):
            operand = self.pick(b"A", b"B", b"f(a.h)", b"f(\"a.h\")", b"<A>", b"H", b"x")
        return self.hash_word(b"include") + self.space(0.8) + operand + self.trailing()

    def line_directive(self):
        number = self.pick(b"1", b"7", b"100", b"2147483647", b"2147483646", b"4294967295", b"4294967297", b"A",
                           b"__LINE__",
                           b"f(1)", b"9", b"00", b"0", b"010", b"0x10", b"10L", b"10u", b"foo", b"")
        name = self.pick(b"", b"", b"", b' "n.c"', b' "sub/n.c"', b' "a\\\\b"', b' ""', b" A", b" __FILE__", b" foo",
                         b" 1",
                         b' "x" "y"', b' "sub\\\\n.c" 1')
        return self.hash_word(b"line") + self.blank() + number + name + self.trailing()

    def other_directive(self):
        roll = self.chance.random()
        if roll < 0.25:
            return self.hash_word(b"undef") + self.blank() + self.pick(
                self.split_name(), self.name(), self.name(),
                self.pick(b"", b"1", b"A B", b"A #define A 3", b"A \\\nB", b"defined", b"A/*\n*/", b"__LINE__").replace(
                    b"\n", self.line_end()))
        if roll < 0.45:
            return self.hash_word(b"error") + self.space(0.8) + self.words(0, 3)
        if roll < 0.65:
            return self.hash_word(b"pragma") + self.space(0.8) + self.words(0, 3)
        if roll < 0.75:
            return self.hash_word(b"") + self.space(0.3)
        if roll < 0.85:
            return self.hash_word(self.pick(b"ident", b"foo", b"warning", b"1", b"defined", b"_Pragma", b"#", b'"s"',
                                            b"(",
                                            b"if0", b"\\", b"'", b"endif2")) + self.trailing()
        return self.line_directive()

    def lines(self, depth, count):
        result = []
        for _ in range(count):
            kind = self.chance.choices(("text", "define", "group", "include", "other"), self.weights)[0]
            if kind == "text":
                # A function-like name at the end of a line takes the next line's beginning; most lines avoid that.
                result.append(self.words(0, 5) + (b";" if self.maybe(0.7) else b""))
            elif kind == "define":
                result.append(self.define())
            elif kind == "group" and depth < 4:
                result += self.group(depth)
            elif kind == "include":
                result.append(self.include())
            elif self.maybe(0.9):
                result.append(self.other_directive())
            elif self.odd(2):
                result.append(self.hash_word(self.pick(b"else", b"endif", b"elif 1", b"elif")) + self.trailing())
            else:
                result.append(self.space(0.5))
        return result

    def expansion_lines(self):
        """A few macros that name each other and lines that invoke them."""
        counts = {b"f": self.pick(0, 1, 1, 1, 2), b"g": self.pick(1, 1, 2, 2, 3), b"h": self.pick(0, 1, 2), b"A": None,
                  b"B": None}
        lines = []
        for name, count in counts.items():
            if count is None:
                lines.append(b"#define " + name + b" " + self.joined(counts, [], 1, 3))
            else:
                self.parameter_counts[name] = count
                parameters = self.chance.sample([b"x", b"y", b"z", b"A", b"f"], count)
                body = self.body(parameters) if self.maybe(0.3) else self.joined(counts, parameters, 1, 5)
                lines.append(b"#define " + name + b"(" + b",".join(parameters) + b") " + body)
        self.chance.shuffle(lines)
        lines = lines[:self.pick(3, 4, 5, 5, 5)]
        for _ in range(self.pick(2, 3, 4, 6)):
            roll = self.chance.random()
            if roll < 0.70:
                lines.append(self.joined(counts, [], 1, 4) + self.pick(b"", b";", b";"))
            elif roll < 0.80:
                lines.append(b"#if " + self.joined(counts, [], 1, 2))
                lines.append(b"T")
                lines.append(b"#endif")
            elif roll < 0.84 and self.header_names:
                lines.append(self.include())
            elif roll < 0.88:
                lines.append(self.pick(b"#line ", b"#include ", b"#undef ", b"#error ") + self.joined(counts, [], 1, 1))
            else:
                lines += self.lines(2, 1)
        return lines

    def joined(self, counts, parameters, low, high):
        """Invocations, parameters and operators side by side, in a text line or a replacement list."""
        result = b""
        for _ in range(self.chance.randint(low, high)):
            roll = self.chance.random()
            gap = self.pick(b"", b"", b" ", self.space())
            if roll < 0.45 or (roll < 0.75 and not parameters):
                result += gap + self.tight_invocation(counts, parameters, 0)
            elif roll < 0.65:
                result += gap + self.chance.choice(parameters)
            elif roll < 0.75:
                left = self.pick(*parameters, *parameters, b"#" + self.chance.choice(parameters), b"f", b"A", b"1")
                right = self.pick(*parameters, *parameters, b"#" + self.chance.choice(parameters), b"f", b"g", b"1",
                                  b"(")
                result += gap + left + self.pick(b"##", b" ## ", b"## ") + right
            elif roll < 0.80:
                result += gap + b"#" + (self.chance.choice(parameters) if parameters else b"x")
            else:
                result += gap + self.pick(b"1", b"+", b",", b"(", b")", b";", b"f", b"g", b"defined", b"__LINE__",
                                          b"__FILE__",
                                          b"/", b"*", b"\"q\"", b"defined(A)", b"_Pragma(\"p\")", self.atom())
        return result

    def tight_invocation(self, counts, parameters, depth):
        name = self.chance.choice(sorted(counts))
        count = counts[name]
        if count is None or self.maybe(0.12):
            return name
        if self.maybe(0.08):
            count += self.pick(-1, 1, 1)
        arguments = []
        for _ in range(count):
            if depth < 3 and self.maybe(0.45):
                argument = self.tight_invocation(counts, parameters, depth + 1)
            else:
                argument = self.pick(*parameters, *parameters, b"1", b"f", b"g", b"A", b"B", b"h", b"(a,b)", b"",
                                     b"a b",
                                     self.plain_atom())
            arguments.append(self.pick(b"", b"", b" ", self.loose_space() if not parameters else b"") + argument
                             + self.pick(b"", b"", b" "))
        return name + self.pick(b"", b"", b"", b" ") + b"(" + b",".join(arguments) + self.pick(
            b")", b")", b")", b")", b")", b")", b")", b")(1)", b")(A)")

    def rescanning_lines(self):
        """Macros that are put together from parts which mean something only beside each other: names that merge, calls
        that are closed elsewhere, names that wait for a "(", lone quotes and halves of comments, and macros that name
        themselves by way of others.  `e()` is nothing and keeps two parts apart until they are in one argument."""
        self.traits.add("rescanning")
        objects = [b"A", b"B", b"AB", b"A1", b"fA", b"lp", b"rp", b"co"]
        # Lone quotes change all that is behind them, so most files have none.
        self.quotes = self.maybe(0.2)
        if self.quotes:
            objects.append(b"q")
        functions = {b"f": self.pick(1, 1, 1, 2), b"g": self.pick(1, 1, 2), b"h": self.pick(1, 2),
                     b"k": self.pick(0, 1), b"e": 0}
        self.parameter_counts = dict(functions)
        lines = [b"#define e()"]
        fixed = {b"q": self.pick(b'"', b'"', b"'", b'"A"'), b"lp": b"(", b"rp": self.pick(b")", b")", b"x)"),
                 b"co": self.pick(b",", b"/", b"/", b"/*", b"*/", b"//", b"#", b"##")}
        for name in objects:
            if self.maybe(0.6):
                lines.append(b"#define " + name + b" " + fixed.get(name, self.parts([], 1, 3)))
        for name, count in functions.items():
            if name != b"e":
                parameters = self.chance.sample([b"x", b"y", b"z", b"A", b"g"], count)
                body = self.parts(parameters, 1, 4)
                if self.maybe(0.25):
                    # The replacement list ends in a name that may take its arguments from behind the invocation.
                    body += self.pick(b"", b" ") + self.pick(b"f", b"g", b"h", name)
                lines.append(b"#define " + name + b"(" + b",".join(parameters) + b") " + body)
        self.chance.shuffle(lines)
        for _ in range(self.pick(2, 3, 5)):
            roll = self.chance.random()
            if roll < 0.72:
                lines.append(self.parts([], 1, 4) + self.pick(b"", b";", b")", b")(A)", b"(1)", b"(A)(B)", b" ) ;"))
            elif roll < 0.84:
                lines += [b"#if " + self.pick(b"", b"!", b"1 + ", b"defined ") + self.parts([], 1, 2)
                          + self.pick(b"", b")"), b"T __LINE__"]
                if self.maybe(0.3):
                    lines += [b"#elif " + self.parts([], 1, 2), b"U"]
                lines.append(b"#endif")
            elif roll < 0.88:
                lines.append(self.pick(b"#include ", b"#line ", b"#error ", b"#pragma ") + self.parts([], 1, 2))
            elif roll < 0.94:
                lines.append(b"#define " + self.pick(b"A", b"B", b"AB") + b" " + self.parts([], 0, 3))
            else:
                lines.append(self.pick(b"#undef ", b"#ifdef ") + self.pick(b"A", b"AB", b"f", b"g"))
        if self.maybe(0.8):
            # Calls that are still open end here and not at the end of the file.
            lines.append(b")" * 8 + b";")
        return lines

    def parts(self, parameters, low, high, depth=0):
        """Parts with little between them."""
        result = b""
        for _ in range(self.chance.randint(low, high)):
            result += self.pick(b"", b"", b" ", b" ", b" ", b"e()", b"e()",
                                self.loose_space() if not parameters else b"")
            result += self.part(parameters, depth)
        return result

    def part(self, parameters, depth):
        roll = self.chance.random()
        if parameters and roll < 0.30:
            return self.chance.choice(parameters)
        if roll < 0.58 and depth < 3:
            name = self.pick(b"f", b"g", b"h", b"f", b"g", b"h", b"k")
            arguments = [self.parts(parameters, 0 if self.maybe(0.1) else 1, 2, depth + 1)
                         for _ in range(self.parameter_counts[name])]
            return name + self.pick(b"", b"", b"", b" ", b"e()") + b"(" + b",".join(arguments) + self.pick(
                *[b")"] * 12, b"", b"rp", b") rp")
        if roll < 0.76:
            return self.pick(b"A", b"B", b"A", b"B", b"AB", b"A1", b"fA", b"q", b"lp", b"rp", b"co", b"__LINE__",
                             b"__FILE__")
        if roll < 0.84:
            return self.pick(b"f", b"g", b"h")
        if roll < 0.89:
            return self.pick(b"f((A)", b"f(A", b"(", b")", b",", b"(A", b"g lp")
        if roll < 0.94:
            if self.quotes and self.maybe(0.2):
                return self.pick(b'"\r#undef A\rA"', b'"\rA 1"', b'"', b"'")
            return self.pick(b"1", b"1u", b'"A"', b'"f(A)"', b"'B'", b'"A B"', b"2")
        if roll < 0.97 and parameters:
            return self.pick(b"#" + parameters[0], parameters[-1] + b"##" + parameters[0], b"A##" + parameters[0],
                             parameters[0] + b"##1", b"/##" + parameters[0])
        if self.maybe(0.4):
            return self.pick(b'_Pragma("A")', b"_Pragma", b"_Pragma(", b'lp "p" rp')
        return self.pick(b"+", b"/", b"*", b"#", b"defined A", b"/\\" + self.line_end() + b"*", b"+1", b"/\\\n/", b"//",
                         b"/*", b"*/")

    def ladder_lines(self):
        """Distinct macros nested deeply, each in brackets of the next, and invocations in brackets of each other."""
        self.traits.add("ladder")
        height = self.pick(5, 12, 25, 40)
        step = self.pick(b"m%d((%s))", b"m%d(%s)", b"m%d(m%d(%s))", b"(m%d(%s))", b"m%d(%s) m0(m1(2))",
                         b"m%d(%s) __LINE__")
        if step.count(b"%d") == 2 or b"m1" in step:
            height = min(height, 7)
        top = self.pick(b"x", b"(x)", b"m%d(x)" % height, b"m%d" % (height - 1), b"x A", b"#x", b"x x")
        lines = [b"#define A " + self.pick(b"m0(A", b"m%d(A)" % height, b"m2", b"__FILE__", b"a A"),
                 b"#define m0(x) " + top]
        for level in range(1, height + 1):
            below = (level - 1,) * step.count(b"%d")
            lines.append(b"#define m%d(x) " % level + step % (below + (self.pick(b"x", b"x", b"x", b"(x)", b" x "),)))
        for _ in range(self.pick(1, 2)):
            inside = self.pick(b"1", b"A", b"(A)", b"m1", b"__LINE__", b"A)")
            for _ in range(self.pick(0, 1, 3)):
                inside = b"m%d(%s)" % (self.chance.randint(0, min(height, 6)), self.loose_space() + inside)
            lines.append(self.pick(b"", b"", b"#if ") + b"m%d(%s)" % (height, inside) + self.pick(b"", b"(1)", b")"))
            if lines[-1].startswith(b"#if "):
                lines += [b"T", b"#endif"]
        brackets = self.pick(3, 30, 200)
        lines.append(b"m0" + b"(" * brackets + self.pick(b"1", b"A", b"1,") + b")" * (brackets - self.pick(0, 0, 0, 1)))
        return lines

    def live_definition(self, name):
        """The text of a macro in which lines end: what follows is read as lines of its own, directives included, while
        the macro is still being expanded."""
        self.traits.add("live definition")
        lines = [self.pick(b"", b"1", b"A", b"f", b"f(A", name, b"x" + name, b"__LINE__", b"f(")]
        for _ in range(self.pick(1, 2, 3)):
            other = self.pick(name, name, b"A", b"B", b"f", b"g")
            lines.append(self.pick(
                b"#define " + other + b" " + self.pick(b"2", name, b"A " + name, b"f(A)", b"", b"#", b"'", b"/"),
                b"#define " + other + b"(x) " + self.pick(b"x", b"[x] " + name, b"x" + name, b"#x", b"f"),
                b"#undef " + other, b"#undef " + other, b"#undef " + name + b" x",
                b"#if " + name, b"#ifdef " + other, b"#else", b"#endif", b"#elif 1", b"#include \"a.h\"", b"#include B",
                b"#line 7", b"#line __LINE__ \"l.c\"", b"#error " + name, b"#pragma A", b"#", b"#define",
                b"#define A \\",
                b"x " + other + self.pick(b"", b"(1)", b"(", b")"), name + b" " + other, b"_Pragma(\"p\") A",
                b"1) " + name + b" )", b"/* " + name, b"*/ x", b"// " + name, b"A, B", b"f(" + other + b")"))
        if self.maybe(0.5):
            lines.append(self.pick(b"", b"A", name, b"f", b"f(", b"#", b"\\", b"3 " + name))
        return self.line_end().join(lines)

    def number_lines(self):
        """Numbers and names joined by ##, or side by side: what is one number and what a number and a macro's name
        behind it.  Long and short texts take turns, so that what the long ones have left stands behind the short."""
        self.traits.add("numbers")
        names = self.chance.sample([b"x", b"X", b"xA", b"L", b"u", b"e5", b"A", b"_", b"ab", b"uL"], self.pick(2, 3, 5))
        operands = names + [b"0", b"0x", b"0X", b"1", b"12", b"08", b"1e", b"1L", b"0xF", b"ul", b"x1", b"a", b"b"]
        several = [b"a##b", b"0##a", b"a##x", b"a##b##b", b"0a", b"1a", b"a b", b"J(a,b)", b"J(0,a)b", b"#a",
                   b"a##b.b##a", b"J(J(a,b),b)", b"a##b(1)"]
        lines = [b"#define " + name + b" " + self.pick(b"y", b"", b"0x", b"J", *operands) for name in names]
        lines.append(b"#define J(a,b) a##b")
        for name in (b"g", b"h"):
            body = self.pick(*several) + self.pick(b"", b" ") + self.pick(*several)
            lines.append(b"#define " + name + b"(a,b) " + body)
        for _ in range(self.pick(5, 10, 20)):
            arguments = []
            for _ in range(2):
                joined = b"J(" + self.pick(*operands) + b"," + self.pick(*operands) + b")"
                long = self.pick(b"1", b"F", b"x") * self.pick(5, 20, 60)
                arguments.append(self.pick(*operands, *operands, long, joined))
            name = self.pick(b"J", b"J", b"g", b"h")
            lines.append(self.pick(b"", b"", b"0", b"1") + name + b"(" + b",".join(arguments) + b")"
                         + self.pick(b"", b"", b"1", b"x", b"(1,2)"))
        return lines

    def text(self, count):
        """The bytes of a file."""
        self.eol = self.pick(b"\n", b"\n", b"\n", b"\n", b"\r\n", b"\r", b"mixed")
        writers = (lambda: self.lines(0, count), self.expansion_lines, self.rescanning_lines, self.ladder_lines,
                   self.number_lines)
        lines = self.chance.choices(writers, (45, 24, 25, 3, 3))[0]()
        result = b"".join(line + self.line_end() for line in lines)
        roll = self.chance.random()
        if roll < 0.15:
            result = result.rstrip(b"\r\n")
        elif roll < 0.19:
            result += self.pick(b"/* open", b"f(1", b"f", b"f(", b"#if 1", b"// c", b"\\", b"#", b"x \\\n", b'"open',
                                b"_Pragma(",
                                b"/* open \r", b"// c\r", b"/* *", b"#define A", b"#pragma", b"#undef A", b"a//\0b",
                                b"f /* \n")
        if self.odd(0.4):
            result = self.mutate(result)
        return result

    def mutate(self, data):
        data = bytearray(data)
        for _ in range(self.chance.randint(1, 4)):
            position = self.chance.randint(0, len(data))
            roll = self.chance.random()
            if roll < 0.35:
                del data[position:position + self.chance.randint(1, 3)]
            elif roll < 0.75:
                data[position:position] = self.pick(b"\n", b"\r", b"\\", b'"', b"'", b"/", b"*", b"#", b"(", b")", b",",
                                                    b" ",
                                                    b"\0", b"\xfe", b"\\\n", b"/*", b"*/", b"//", b"##")
            else:
                end = min(len(data), position + self.chance.randint(1, 20))
                place = self.chance.randint(0, len(data))
                data[place:place] = data[position:end]
        return bytes(data)

    # ------------------------------------------------------------------ the project

    def definition_word(self):
        name = self.pick(b"A", b"B", b"C", b"x", b"f", b"D", b"H", b"y", b"__LINE__", b"if", b"")
        roll = self.chance.random()
        if name == b"D" and roll < 0.8:
            return b"-DD=defined"
        if name == b"H" and roll < 0.8:
            return self.pick(b'-DH="a.h"', b"-DH=<a.h>", b'-DH="sub/b.h"', b'-DH="a.h" junk')
        if roll < 0.2:
            return b"-D" + name
        if roll < 0.5:
            return b"-D" + name + b"=" + self.pick(
                b"", b"1", b"0", b"f", b"f(", b"A", b"B", b"x", b"(", b"2+", b"a=b", b"f(A)", b"/*", b"//", b"/",
                b"a /*b", b"a//", b"/*a*/b ", b" ", b"#", b"##", b'"', b"'", b"\\", b"A A ", b"/**")
        if roll < 0.6:
            return b"-D" + name + b"=" + self.words(0, 4).replace(b"\0", b"")
        if roll < 0.8:
            self.eol = self.pick(b"\n", b"\n", b"\r\n", b"\r")
            return b"-D" + name + b"=" + self.live_definition(name)
        self.eol = self.pick(b"\n", b"\n", b"\r\n", b"\r")
        body = self.line_end().join(self.lines(2, self.pick(1, 2, 3))).replace(b"\0", b"")
        body = self.pick(b"", self.line_end(), b"1" + self.line_end()) + body + self.pick(b"", self.line_end(),
                                                                                          b" /* open",
                                                                                          self.line_end() + b"#")
        return b"-D" + name + b"=" + body

    def project(self, folder):
        self.folder = folder
        if self.maybe(0.03):
            self.bring_long_tokens()
        files = {}
        headers = [b"a.h", b"b.h", b"sub/a.h", b"sub/b.h", b"sub/deep/c.h"]
        present = [name for name in headers if self.maybe(0.5)]
        # A header is named from the top and from its own folder, so the same text is found in different ways.
        self.header_names = present + [name.split(b"/")[-1] for name in present]
        for name in present:
            text = self.text(self.pick(0, 1, 2, 3, 5))
            if self.maybe(0.6):
                # A guard keeps headers that include each other from recursing for ever.
                guard = b"G" + name.replace(b"/", b"_").replace(b".", b"_")
                text = b"#ifndef " + guard + b"\n#define " + guard + b"\n" + text + b"\n#endif"
                text += self.pick(b"", b"\n")
            files[name] = text
        words = []
        for _ in range(self.pick(0, 0, 0, 1, 1, 2, 3)):
            word = self.definition_word()
            # The system takes no longer one.
            words.append(word if len(word) < 120000 else b"-DA")
        for _ in range(self.pick(0, 0, 1, 2)):
            directory = self.pick(b"sub", b".", b"sub/deep", b"no", b"sub/", folder, b"..", b"a.h")
            words += self.pick([b"-I" + directory], [b"-I", directory], [b"-I" + directory])
        main = self.text(self.pick(1, 2, 3, 4, 6, 9, 14))
        if self.maybe(0.04):
            main = self.bring_padding(main)
        stdin = b""
        roll = self.chance.random()
        if roll < 0.75:
            name = b"a.c" if self.maybe(0.8) else b"sub/m.c"
            files[name] = main
            words.append(name)
        else:
            stdin = main
        if self.maybe(0.2):
            words += [b"-s", self.pick(b"n.c", b"sub/n.c", b"a\\b.c", b"sub\\x.c", b'q"q', b"", b"/n.c", b"n\n.c")]
        if self.maybe(0.05):
            words += [b"-o", OUTPUT_FILE]
        if self.maybe(0.03):
            words = self.odd_words(words)
        self.chance.shuffle(words) if self.maybe(0.03) else None
        return Case(files, words, stdin, self.traits)

    def odd_words(self, words):
        for _ in range(self.chance.randint(1, 3)):
            words.insert(self.chance.randint(0, len(words)), self.pick(
                b"-h", b"--help", b"-x", b"-", b"--", b"-o", b"-s", b"-I", b"-D", b"", b"b.c", b"-ofoo", b"-sfoo",
                b"-vx", b"-Dx",
                b"-Isub", b"--hel", b"-I=", b"-D=1", b"nothing.c"))
        # Words that would make an output file of an input, or print the version, are left out.
        safe = []
        for index, word in enumerate(words):
            if index and words[index - 1] == b"-o" and word not in (OUTPUT_FILE, b"-o", b"-s", b"-h"):
                word = OUTPUT_FILE
            safe.append(word)
        return safe
