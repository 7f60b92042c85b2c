"""The constructs: each kind of line, directive, macro and nesting by itself, as plain data.

A row is a name, a size and what is written at a size n. At the row's own size the best of the other programs takes some
20 to 60 ms. The rows of `CONSTRUCTS` mean the same to every program; those of `GROWTH_ONLY` are for the growth of qnpp
alone: inputs that others refuse or read otherwise, and nestings whose size is the point.
"""

import dataclasses
import itertools
import pathlib
import shutil
from typing import Callable, Union


@dataclasses.dataclass(frozen=True)
class Source:
    """What a program is run on."""

    text: str = ""  # of input.c; a character is a byte
    files: dict[str, str] = dataclasses.field(default_factory=dict)  # beside it
    options: tuple[str, ...] = ()
    runs: int = 1  # so many count as one; where it is more than one, the time to start is part of the figure


@dataclasses.dataclass(frozen=True)
class Construct:
    name: str
    n: int
    write: Callable[[int], Union[str, Source]]
    more: str = ""  # why the time may grow with the square of n

    def prepare(self, n: int, folder: pathlib.Path) -> Source:
        """Writes input.c, and the files beside it, into the folder, which holds nothing else afterwards."""
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        written = self.write(n)
        source = written if isinstance(written, Source) else Source(written)
        for name, text in {"input.c": source.text, **source.files}.items():
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(text.encode("latin-1"))
        return source


Unit = Union[str, Callable[[int], str]]  # the same text each time, or one that depends on its number


def times(count: int, unit: Unit, between: str = "") -> str:
    return between.join(map(unit, range(count)) if callable(unit) else itertools.repeat(unit, count))


def repeated(family: str, rows: list[tuple], head: str = "", foot: str = "") -> list[Construct]:
    """Rows of name, n and unit, or of name, n, definitions and unit: the unit is written n times."""
    def writer(definitions: str, unit: Unit):
        return lambda n: head + definitions + times(n, unit) + foot

    return [Construct(f"{family}: {name}", n, writer("".join(definitions), unit))
            for name, n, *definitions, unit in rows]


def whole(family: str, rows: list[tuple]) -> list[Construct]:
    """Rows of name, n, a function of n that gives the source, and perhaps the reason for growing with its square."""
    return [Construct(f"{family}: {name}", n, write, *more) for name, n, write, *more in rows]


# ---------------------------------------------------------------------------------------------------------------------
# Pieces of sources


def words(n: int, unit: Unit = "w") -> str:
    return times(n, unit, " ")


def listed(n: int, unit: Unit) -> str:
    return times(n, unit, ", ")


def nested(n: int, opening: Unit, inner: str, closing: str = ")") -> str:
    return times(n, opening) + inner + closing * n


def parameters(n: int) -> str:
    return listed(n, lambda i: f"p{i}")


def function(n: int) -> str:
    """A macro of n parameters, each used once, and a call of it."""
    return f"#define F({parameters(n)}) {words(n, lambda i: f'p{i}')}\n"


def call(n: int, argument: Unit = "1") -> str:
    return f"F({listed(n, argument)})\n"


def chain(n: int, link: Callable[[int], str] = lambda i: f"#define C{i} C{i + 1}\n") -> str:
    return times(n, link)


def nested_distinct(depth: int) -> str:
    return times(depth, lambda i: f"#define M{i}(x) [x]\n")


def calls_around(depth: int, inner: str) -> str:
    """M0(M1(...inner...))"""
    return nested(depth, lambda i: f"M{i}(", inner) + "\n"


def known_macros(n: int) -> str:
    return times(n, lambda i: f"#define A{i} {i}\n")


def defined_and_used(uses: int, name: str = "NAME_{}"):
    def write(n):
        names = [name.format(i) for i in range(n)]
        return (times(n, lambda i: f"#define {names[i]} ({i})\n")
                + times(uses * n // 4, lambda i: " ".join(names[(4 * i + k) * 7919 % n] for k in range(4)) + "\n"))
    return write


def anagram(i: int) -> str:
    """Names of the same letters, in another order each."""
    letters = list("abcdefghijkl")
    picked = []
    while letters:
        i, place = divmod(i, len(letters))
        picked.append(letters.pop(place))
    return "".join(picked)


def colliding(i: int) -> str:
    """Names that a hash which multiplies by 31 and adds cannot tell apart."""
    return "".join(("Aa", "BB")[i >> bit & 1] for bit in range(20))


def used_names(name: Callable[[int], str], defined: int = 1):
    """All names are used; every so many are defined."""
    return lambda n: times(n // defined, lambda i: f"#define {name(i)} {i}\n") + times(n, lambda i: name(i) + "\n")


def x_macro(n: int) -> str:
    return ("#define LIST(X) \\\n" + times(n, lambda i: f"  X(entry_{i}, {i}) \\\n") + "\n"
            "#define NAMED(name, value) name,\n#define SHOWN(name, value) #name,\n#define VALUED(name, value) value,\n"
            "LIST(NAMED)\nLIST(SHOWN)\nLIST(VALUED)\n")


# A guard, a definition, a declaration.
_HEADER = "#ifndef {0}_H\n#define {0}_H\n#define {0}_LIMIT 10\nint {0};\n#endif\n"


def guarded_header(n: int) -> Source:
    return Source('#include "small.h"\n' * n, {"small.h": _HEADER.format("SMALL")})


def headers_ten_times(n: int) -> Source:
    return Source(times(n, lambda i: f'#include "h{i}.h"\n') * 10,
                  {f"h{i}.h": _HEADER.format(f"H{i}") for i in range(n)})


def include_chain(depth: int, uses: int) -> Source:
    files = {f"c{i}.h": f'#include "c{i + 1}.h"\nint c{i};\n' for i in range(depth)} | {f"c{depth}.h": "int last;\n"}
    return Source('#include "c0.h"\n' * uses, files)


def many_folders(n: int, folders: int = 50) -> Source:
    """The header lies in the last of them."""
    files = {f"d{i}/other.h": "" for i in range(folders)} | {f"d{folders - 1}/found.h": "int found;\n"}
    return Source("#include <found.h>\n" * n, files, tuple(f"-Id{i}" for i in range(folders)))


# ---------------------------------------------------------------------------------------------------------------------
# The same to all programs

_RESCANNED = "each level scans again all that is within it"  # n levels, each of up to n words

SKIPPED = repeated("skipped", [
    ("empty", 10_000_000, "\n"),
    ("empty CR LF", 15_000_000, "\r\n"),
    ("one word", 8_000_000, "x\n"),
    ("number first", 3_000_000, "1 + 2\n"),
    ("blanks first", 1_000_000, "        x = y;\n"),
    ("code", 500_000, "  total = total + count(first, 3) * 2;\n"),
    ("long lines of words", 20_000, words(300, "word") + "\n"),
    ("bytes over 127", 3_000_000, "\xe9t\xe9 \xfcber\n"),
    ("unknown directive", 500_000, "#unknown words behind it\n"),
    ("#define", 1_000_000, "#define NAME value + 1\n"),
    ("#include", 500_000, '#include "header.h"\n'),
    ("indented directive", 800_000, "   #define NAME value\n"),
    ("blanks behind #", 800_000, "#   define NAME value\n"),
    ("nested #if", 600_000, "#if A > 1 && B\n#endif\n"),
    ("nested #ifdef", 1_000_000, "#ifdef A\nint x;\n#endif\n"),
    ("nested #elif and #else", 500_000, "#if A\nx\n#elif B\ny\n#else\nz\n#endif\n"),
    ("comment first", 1_500_000, "/* why */ int x;\n"),
    ("comment before a directive", 800_000, "/* why */ #define NAME value\n"),
    ("comment over lines", 1_000_000, "/* one\n * two\n * three\n */\n"),
    ("line comment", 1_500_000, "// why it is so\n"),
    ("slashes", 1_500_000, "/ a / b /\n"),
    ("stars", 1_500_000, "* a ** b *\n"),
    ("strings", 500_000, '"a string" "another"\n'),
    ("escaped quotes", 1_000_000, '"a \\"string\\"" x\n'),
    ("other escapes", 2_000_000, '"a string\\n" x\n'),
    ("lone quote", 2_000_000, '"no string\n'),
    ("apostrophe", 1_500_000, "it isn't one\n"),
    ("backslash first", 3_000_000, "\\ x y\n"),
    ("continued text", 1_000_000, "one \\\ntwo \\\nthree\n"),
    ("continued #define", 600_000, "#define NAME one \\\n  two \\\n  three\n"),
], "#if 0\n", "#endif\n")

BLANKS = repeated("blanks", [
    ("long run at the start", 20_000, " " * 1000 + "x\n"),
    ("long run behind a word", 20_000, "x" + " " * 1000 + "\n"),
    ("line of many", 500_000, " " * 40 + "\n"),
    ("line of one", 1_000_000, " \n"),
    ("line of one CR LF", 1_000_000, " \r\n"),
    ("line of many CR LF", 500_000, " " * 10 + "\r\n"),
    ("one tab first", 500_000, "\tx\n"),
    ("tabs between words", 100_000, "a\tb\t\tc\t\td\n"),
    ("blanks between words", 80_000, "a    b      c  d\n"),
    ("trailing", 150_000, "x;          \n"),
])

TEXT = repeated("text", [
    ("empty", 2_000_000, "\n"),
    ("empty CR LF", 2_000_000, "\r\n"),
    ("one word", 500_000, "x\n"),
    ("one word CR LF", 500_000, "x\r\n"),
    ("code", 100_000, "  total = total + count(first, 3) * 2;\n"),
    ("operators", 100_000, "+ - * / <<= >>= && || -> ++ == !=\n"),
    ("operators without blanks", 100_000, "a+b*c-d/e<=f&&g->h\n"),
    ("punctuation", 100_000, "( ) [ ] { } ; , . ? : ~\n"),
    ("numbers", 100_000, "1 22 333 4444 0x1f 7u 0777\n"),
    ("number lists", 100_000, "0x1f,0x20,0x21,0x22,0x23,\n"),
    ("real numbers", 100_000, "1.5 2.25 .5 3. 1.5e3\n"),
    ("names of 1", 100_000, "a b c d e f g h\n"),
    ("names of 4", 100_000, "abcd efgh ijkl mnop qrst uvwx\n"),
    ("names of 10", 100_000, "abcdefghij klmnopqrst uvwxyzabcd efghijklmn\n"),
    ("names of 30", 100_000, f"{'abcdefghij' * 3} {'klmnopqrst' * 3}\n"),
    ("names of 1000", 15_000, "abcdefghij" * 100 + "\n"),
    ("names all different", 100_000, lambda i: f"name_{i} value_{i}\n"),
    ("strings", 100_000, '"a string" "another one" ""\n'),
    ("escaped quotes", 100_000, '"a \\"string\\"" "\\\\"\n'),
    ("other escapes", 200_000, '"a string\\n" "\\t"\n'),
    ("character literals", 100_000, "'a' 'b' 'c' 'd'\n"),
    ("escaped characters", 100_000, "'\\\\' '\\'' 'a'\n"),
    ("lone quotes", 200_000, '"no string\n'),
    ("apostrophes", 200_000, "it isn't one\n"),
    ("bytes over 127", 200_000, "\xe9t\xe9 \xfcber \xdf\n"),
    ("comment in a line", 200_000, "a /* why */ b;\n"),
    ("comment first", 100_000, "/* why */ b;\n"),
    ("comment over lines", 200_000, "/* one\n * two\n * three\n */ x;\n"),
    ("long comments", 30_000, f"/* {words(200, 'why')} */ x;\n"),
    ("line comment", 200_000, "x; // why\n"),
    ("line comment alone", 1_000_000, "// why it is so\n"),
    ("slashes", 100_000, "a / b / c / d\n"),
    ("backslashes", 100_000, "a \\ b \\ c\n"),
    ("continued lines", 150_000, "one \\\ntwo \\\nthree\n"),
    ("# in a line", 100_000, "a # b ## c\n"),
    ("other characters", 100_000, "a @ b ` c $\n"),
    ("long lines", 200, words(4000, "word") + "\n"),
    ("long lines of one character", 100, words(8000, "a") + "\n"),
])

IF = repeated("#if", [
    (name, n, f"#if {expression}\n#endif\n") for name, n, expression in [
        ("one number", 200_000, "1"),
        ("zero", 200_000, "0"),
        ("hexadecimal", 100_000, "0x1F == 31"),
        ("characters", 100_000, "'a' == 97"),
        ("unknown name", 200_000, "UNKNOWN"),
        ("macro names", 100_000, "A + B > 2"),
        ("comparison", 100_000, "A >= 2"),
        ("defined", 200_000, "defined A"),
        ("defined with parentheses", 200_000, "defined(A)"),
        ("not defined", 100_000, "!defined(UNKNOWN)"),
        ("defined || defined", 100_000, "defined A || defined(B) || defined C"),
        ("defined && comparison", 100_000, "defined(A) && A >= 1"),
        ("mixed operators", 50_000, "1 + 2 * 3 - 4 / 2 % 3 << 1 | 5 ^ 6 & 7"),
        ("sum", 50_000, "1 + 2 + 3 + 4 + 5 + 6 + 7 + 8"),
        ("parentheses", 50_000, "((1) + (2)) * (3)"),
        ("nested parentheses", 50_000, "((((((((1))))))))"),
        ("?:", 50_000, "1 ? 2 : 0 ? 3 : 4"),
        ("unary", 50_000, "!!-~+-1"),
        ("macro of a chain", 100_000, "C0"),
        ("function-like macro", 80_000, "F(1) > 0"),
        ("function-like macros in one another", 40_000, "F(F(F(1)))"),
        ("comments", 200_000, "/* why */ 1 // and so"),
        ("sum of 1000", 300, times(1000, "1", " + ")),
        ("1000 macros", 300, times(1000, "A", " + ")),
    ]
], "#define A 1\n#define B 2\n#define F(x) (x)\n" + chain(5) + "#define C5 1\n") + repeated("#if", [
    ("1 with a line", 150_000, "#if 1\nx\n#endif\n"),
    ("0 with a line", 300_000, "#if 0\nx\n#endif\n"),
    ("1 with #else", 100_000, "#if 1\nx\n#else\ny\n#endif\n"),
    ("#elif chain of 5", 50_000, "#if 0\n#elif 0\n#elif 0\n#elif 0\n#elif 1\nx\n#endif\n"),
    ("#elif behind a taken group", 100_000, "#if 1\nx\n#elif A > 1\ny\n#elif A > 2\nz\n#endif\n"),
    ("nested three deep", 50_000, "#if 1\n#if 1\n#if 1\nx\n#endif\n#endif\n#endif\n"),
]) + whole("#if", [
    ("one #elif chain", 300_000, lambda n: "#if 0\n" + "#elif 0\n" * n + "#endif\n"),
])

# A program that gives up at an error does not write the last line.
DIRECTIVES = repeated("directives", [
    ("#ifdef #endif", 400_000, "#ifdef A\n#endif\n"),
    ("#ifdef #endif defined", 300_000, "#define A\n", "#ifdef A\n#endif\n"),
    ("#ifndef #endif", 500_000, "#ifndef A\n#endif\n"),
    ("#ifdef with a line", 100_000, "#define A\n", "#ifdef A\nx\n#endif\n"),
    ("#ifdef different names", 100_000, lambda i: f"#ifdef NAME_{i}\n#endif\n"),
    ("#line N", 100_000, "#line 7\n"),
    ("#line N with a line", 50_000, "#line 7\nx\n"),
    ('#line N "f"', 50_000, '#line 7 "f"\n'),
    ("# alone", 2_000_000, "#\n"),
    ("# and a comment", 600_000, "# /* why */\n"),
    ("#pragma", 100_000, "#pragma some words\n"),
    ("#error", 10_000, "#error some words\n"),
    ("same redefinition", 200_000, "#define A 1\n"),
    ("same redefinition continued", 100_000, "#define A 1 \\\n  + 2 \\\n  + 3\n"),
    ("same redefinition of a function", 100_000, "#define F(x, y) x + y\n"),
    ("same redefinition long", 1_000, f"#define A {words(1000)}\n"),
    ("other redefinition", 10_000, "#define A 1\n#define A 2\n"),
    ("definitions", 100_000, lambda i: f"#define NAME_{i} {i}\n"),
    ("definitions without text", 100_000, lambda i: f"#define NAME_{i}\n"),
    ("definitions of functions", 100_000, lambda i: f"#define F{i}(x, y) x + y\n"),
    ("definitions with comments", 100_000, lambda i: f"#define NAME_{i} {i} /* why */\n"),
    ("define and undefine", 100_000, "#define A 1\n#undef A\n"),
    ("define and undefine a function", 100_000, "#define F(x, y) x + y\n#undef F\n"),
    ("define and use and undefine", 100_000, "#define A 1\nA\n#undef A\n"),
    ("#undef unknown", 1_000_000, "#undef UNKNOWN\n"),
    ("blanks around #", 600_000, "  #  undef  UNKNOWN\n"),
], foot="end\n")

OBJECTS = repeated("objects", [
    ("one word", 100_000, "#define A x\n", "A A A A\n"),
    ("settled", 30_000, "#define A (x + 1)\n", "A A A A\n"),
    ("empty", 150_000, "#define A\n", "A A A A x\n"),
    ("one a line", 100_000, "#define A (x + 1)\n", "A\n"),
    ("long text", 3_000, f"#define A {words(300)}\n", "A\n"),
    ("among words", 30_000, "#define A (x + 1)\n", "one = A + two * A;\n"),
    ("a thousand of them", 300_000, known_macros(1000), lambda i: f"A{i * 7919 % 1000}\n"),
    ("chain of 2", 100_000, chain(2), "C0 C0 C0 C0\n"),
    ("chain of 5", 50_000, chain(5), "C0 C0 C0 C0\n"),
    ("chain of 20", 6_000, chain(20), "C0 C0 C0 C0\n"),
    ("DAG of ten levels", 300, times(10, lambda i: f"#define D{i} D{i + 1} D{i + 1}\n"), "D0\n"),
    ("naming itself", 40_000, "#define A A + 1\n", "A A A A\n"),
    ("naming each other", 40_000, "#define A B x\n#define B A y\n", "A B A B\n"),
    ("naming a function", 50_000, "#define F(x) [x]\n#define G F\n", "G(1) G(2)\n"),
    ("holding a call", 40_000, "#define F(x) [x]\n#define G F(1)\n", "G G\n"),
    ("__LINE__", 200_000, "__LINE__\n"),
    ("__LINE__ in a macro", 200_000, "#define A __LINE__\n", "A\n"),
    ("__FILE__", 200_000, "__FILE__\n"),
    ("__FILE__ in a macro", 200_000, "#define A __FILE__\n", "A\n"),
    ("__DATE__", 50_000, "__DATE__\n"),
    ("_Pragma", 20_000, '_Pragma("some words")\n'),
    ("_Pragma in a macro", 20_000, '#define P _Pragma("some words")\n', "P\n"),
])

FUNCTIONS = repeated("functions", [
    ("no parameter", 40_000, "#define F() [x]\n", "F() F() F()\n"),
    ("one parameter", 40_000, function(1), "F(1) F(2) F(3)\n"),
    ("two parameters", 30_000, function(2), "F(1, 2) F(3, 4)\n"),
    ("five parameters", 50_000, function(5), call(5)),
    ("twenty parameters", 8_000, function(20), call(20)),
    ("a parameter used often", 10_000, f"#define F(x) {words(50, 'x')}\n", "F(1)\n"),
    ("an argument of words used often", 1_000, f"#define F(x) {words(50, 'x')}\n", f"F({words(20)})\n"),
    ("unused argument", 50_000, "#define F(x, y) x\n", "F(1, 2) F(3, 4)\n"),
    ("unused argument with a call", 50_000, "#define F(x, y) x\n", "F(1, F(2, 3))\n"),
    ("empty text", 100_000, "#define F(x)\n", "F(1) F(2) x\n"),
    ("small stringizing", 100_000, "#define S(x) #x\n", "S(a) S(b)\n"),
    ("stringizing words", 50_000, "#define S(x) #x\n", "S(a + b == c)\n"),
    ("stringizing strings", 50_000, "#define S(x) #x\n", 'S("a" \'b\' "c")\n'),
    ("stringizing a macro", 80_000, "#define A 1\n#define S(x) #x\n#define X(x) S(x)\n", "X(A)\n"),
    ("small pasting", 30_000, "#define P(x, y) x##y\n", "P(a, b) P(c, d)\n"),
    ("pasting names", 50_000, "#define P(x, y) x##_##y\n", "P(one_name, another)\n"),
    ("pasting numbers", 50_000, "#define P(x, y) x##y\n", "P(12, 34) P(5, 6)\n"),
    ("pasting a macro's name", 50_000, "#define AB 1\n#define P(x, y) x##y\n", "P(A, B)\n"),
    ("calls in a list", 30_000, "#define F(x) [x]\n#define L(x, y, z) x, y, z\n", "L(F(1), F(2), F(3))\n"),
    ("calls of different functions", 30_000, "#define F(x) [x]\n#define G(x) {x}\n", "F(1) G(2) F(G(3))\n"),
    ("macros as arguments", 50_000, known_macros(3) + function(3), "F(A0, A1, A2)\n"),
    ("text longer than the argument", 5_000, f"#define F(x) {words(100)} x\n", "F(1)\n"),
    ("call within a body", 50_000, "#define F(x) [x]\n#define G(x) F(x)\n", "G(1) G(2)\n"),
    ("chain of 20", 10_000, chain(20, lambda i: f"#define C{i}(x) C{i + 1}(x)\n"), "C0(1)\n"),
    ("chain of 20 with parentheses", 3_000, chain(20, lambda i: f"#define M{i}(x) M{i + 1}((x))\n"), "M0(1)\n"),
    ("chain of 200 with parentheses", 50, chain(200, lambda i: f"#define M{i}(x) M{i + 1}((x))\n"), "M0(1)\n"),
    ("naming itself", 50_000, "#define F(x) F(x)\n", "F(1) F(2)\n"),
    ("naming each other", 50_000, "#define F(x) G(x)\n#define G(x) F(x)\n", "F(1) G(2)\n"),
    ("names without parenthesis", 100_000, "#define F(x) x\n", "F F F F ;\n"),
    ("name and another word", 100_000, "#define F(x) x\n", "F a F b\n"),
    ("name at the line's end", 100_000, "#define F(x) x\n", "F\n;\n"),
    ("blank before the parenthesis", 100_000, "#define F(x) x\n", "F (1) F (2)\n"),
    ("arguments over lines", 50_000, "#define F(x, y) x y\n", "F(1,\n  2)\n"),
    ("argument of parentheses", 20_000, "#define F(x) x\n", "F((1, (2), 3)[4])\n"),
    ("argument of strings", 80_000, "#define F(x) x\n", 'F("a, (" \')\')\n'),
    ("comment in an argument", 100_000, "#define F(x) x\n", "F(/* why */ 1)\n"),
    ("__LINE__ as argument", 100_000, "#define F(x) x\n", "F(__LINE__)\n"),
    ("20 macros through 20 calls", 500, nested_distinct(20) + known_macros(20),
     calls_around(20, words(20, lambda i: f"A{i}"))),
    ("100 macros through 100 calls", 50, nested_distinct(100) + known_macros(100),
     calls_around(100, words(100, lambda i: f"A{i}"))),
    ("10 nested calls", 5_000, nested_distinct(10), calls_around(10, "1")),
    ("100 nested calls", 100, nested_distinct(100), calls_around(100, "1")),
    ("1000 nested calls", 2, nested_distinct(1000), calls_around(1000, "1")),
    ("10 nested calls of one", 3_000, "#define F(x) [x]\n", nested(10, "F(", "1") + "\n"),
    ("100 nested calls of one", 100, "#define F(x) [x]\n", nested(100, "F(", "1") + "\n"),
    ("1000 nested calls of one", 2, "#define F(x) [x]\n", nested(1000, "F(", "1") + "\n"),
    ("10 arguments that are macros", 10_000, "#define A 1\n" + function(10), call(10, "A")),
    ("100 arguments that are macros", 1_000, "#define A 1\n" + function(100), call(100, "A")),
    ("1000 arguments that are macros", 40, "#define A 1\n" + function(1000), call(1000, "A")),
]) + whole("functions", [
    ("4000 nested calls", 4_000, lambda n: nested_distinct(n) + calls_around(n, "1"), _RESCANNED),
    ("huge argument used once", 300_000, lambda n: function(1) + f"F({words(n)})\n"),
    ("huge argument of macros", 300_000, lambda n: "#define A 1\n" + function(1) + f"F({words(n, 'A')})\n"),
    ("huge argument of calls", 100_000, lambda n: "#define G(x) x\n" + function(1) + f"F({words(n, 'G(1)')})\n"),
    ("huge argument over lines", 100_000, lambda n: function(1) + f"F({times(n, 'w')})\n".replace("w", "w w\n")),
    ("huge unused argument", 800_000, lambda n: f"#define F(x, y) x\nF(1, {words(n)})\n"),
    ("huge stringizing", 300_000, lambda n: f"#define S(x) #x\nS({words(n)})\n"),
    ("huge pasting", 300_000, lambda n: f"#define P(x, y) x##y\nP({words(n // 2)}, {words(n // 2)})\n"),
    ("one call with many arguments", 20_000, lambda n: function(n) + call(n)),
    ("one call with many macros", 40_000, lambda n: "#define A 1\n" + function(n) + call(n, "A")),
    ("X-macro list", 20_000, x_macro),
])

TABLES = whole("many macros", [
    ("10,000 used ten times", 10_000, defined_and_used(10)),
    ("100,000 used twice", 100_000, defined_and_used(2)),
    ("160,000 used twice", 160_000, defined_and_used(2)),
    ("names of 100", 20_000, defined_and_used(2, "name_" * 19 + "{}")),
    ("names of 1000", 3_000, defined_and_used(2, "name_" * 199 + "{}")),
    ("defined and undefined", 50_000, lambda n: known_macros(n) + times(n, lambda i: f"#undef A{i}\n")),
    ("asked for by #ifdef", 50_000, lambda n: known_macros(n) + times(n, lambda i: f"#ifdef A{i}\n#endif\n")),
    ("chain of objects", 100_000, lambda n: chain(n) + "C0\n"),
    ("chain of functions", 20_000, lambda n: chain(n, lambda i: f"#define C{i}(x) C{i + 1}(x)\n") + "C0(1)\n"),
    ("functions called once", 50_000, lambda n: times(n, lambda i: f"#define F{i}(x) x + {i}\nF{i}(1)\n")),
    ("functions with # and ##", 30_000, lambda n: times(n, lambda i: f"#define F{i}(x) x##{i} #x\nF{i}(a)\n")),
])

INCLUDES = whole("includes", [
    ("a guarded header", 64_000, guarded_header),
    ("a header without guard", 10_000, lambda n: Source('#include "x.h"\n' * n, {"x.h": "int x;\n"})),
    ("an empty header", 10_000, lambda n: Source('#include "x.h"\n' * n, {"x.h": ""})),
    ("named by a macro", 10_000, lambda n: Source('#define X "x.h"\n' + "#include X\n" * n, {"x.h": "int x;\n"})),
    ("many headers ten times", 1_000, headers_ten_times),
    ("many headers once", 3_000, lambda n: Source(
        times(n, lambda i: f'#include "h{i}.h"\n'), {f"h{i}.h": _HEADER.format(f"H{i}") for i in range(n)})),
    ("a chain of 14", 1_000, lambda n: include_chain(14, n)),
    ("found in the last of 50 folders", 3_000, many_folders),
    ("missing", 1_000, lambda n: Source('#include "missing.h"\n' * n + "end\n")),
    ("a large header", 200_000, lambda n: Source('#include "x.h"\n', {"x.h": "  total = total + 1;\n" * n})),
])

COMMAND_LINE = whole("command line", [
    ("many -D", 20_000, lambda n: Source(options=tuple(f"-DN{i}={i}" for i in range(n)))),
    ("many -D used", 20_000, lambda n: Source(times(n, lambda i: f"N{i}\n"),
                                              options=tuple(f"-DN{i}={i}" for i in range(n)))),
    ("one long -D used", 1_000, lambda n: Source("N\n" * n, options=(f"-DN={words(1000)}",))),
    ("many -I", 20_000, lambda n: Source("x\n", options=tuple(f"-Id{i}" for i in range(n)))),
    ("a small source a hundred times", 100, lambda n: Source("#define A 1\nint x = A;\n", runs=n)),
])

LONG = whole("long", [
    ("name", 30_000_000, lambda n: "n" * n + "\n"),
    ("number", 30_000_000, lambda n: "1" * n + "\n"),
    ("string", 30_000_000, lambda n: '"' + "s" * n + '"\n'),
    ("string with escapes", 4_000_000, lambda n: '"' + "\\\\" * n + '"\n'),
    ("comment", 30_000_000, lambda n: "/*" + "c" * n + "*/\n"),
    ("comment of lines", 30_000_000, lambda n: "/*" + (("c" * 60 + "\n") * (n // 61)) + "*/\n"),
    ("comment of stars", 30_000_000, lambda n: "/*" + "*" * n + "*/\n"),
    ("line comment", 30_000_000, lambda n: "//" + "c" * n + "\n"),
    ("run of blanks", 30_000_000, lambda n: "a" + " " * n + "b\n"),
    ("line of words", 1_000_000, lambda n: words(n, "word") + "\n"),
    ("line of numbers", 1_000_000, lambda n: words(n, "12") + "\n"),
    ("line of operators", 1_000_000, lambda n: words(n, "+") + "\n"),
    ("line of parentheses", 400_000, lambda n: "(" * n + ")" * n + "\n"),
    ("line of strings", 1_000_000, lambda n: words(n, '"s"') + "\n"),
    ("line of macros", 300_000, lambda n: "#define A 1\n" + words(n, "A") + "\n"),
    ("line of calls", 100_000, lambda n: "#define F(x) x\n" + words(n, "F(1)") + "\n"),
    ("definition", 1_000_000, lambda n: f"#define A {words(n)}\n"),
    ("definition used", 500_000, lambda n: f"#define A {words(n)}\nA\n"),
    ("definition continued", 200_000, lambda n: "#define A " + "w \\\n" * n + "\nA\n"),
    ("skipped line", 10_000_000, lambda n: f"#if 0\n{words(n)}\n#endif\n"),
])

CONSTRUCTS = [*SKIPPED, *BLANKS, *TEXT, *IF, *DIRECTIVES, *OBJECTS, *FUNCTIONS, *TABLES, *INCLUDES, *COMMAND_LINE,
              *LONG]

# ---------------------------------------------------------------------------------------------------------------------
# For the growth of qnpp alone


def made_known(before: str) -> Callable[[int], Source]:
    """Words are read as arguments; then X, whose text holds a directive, makes macros of them."""
    return lambda n: Source(f"#define F(x) [x]\n#define G(x, y) x y\n{before.format(words(n))}\n",
                            options=("-DX=\n#define w 1\n",))


NESTINGS = whole("nesting", [
    ("distinct functions", 1_000, lambda n: nested_distinct(n) + calls_around(n, "1"), _RESCANNED),
    ("distinct functions that add nothing", 4_000, lambda n: times(n, lambda i: f"#define M{i}(x) x\n")
     + calls_around(n, "1")),
    ("one function", 1_000, lambda n: "#define F(x) [x]\n" + nested(n, "F(", "1") + "\n", _RESCANNED),
    ("one function that adds nothing", 4_000, lambda n: "#define F(x) x\n" + nested(n, "F(", "1") + "\n"),
    ("one function with an unused argument", 4_000, lambda n: "#define F(x, y) y\n" + nested(n, "F(1, ", "1") + "\n"),
    ("30 functions around macros", 2_000, lambda n: nested_distinct(30) + known_macros(n)
     + calls_around(30, words(n, lambda i: f"A{i}"))),
    ("functions around 30 macros", 1_000, lambda n: nested_distinct(n) + known_macros(30)
     + calls_around(n, words(30, lambda i: f"A{i}")), _RESCANNED),
    ("functions around macros", 200, lambda n: nested_distinct(n) + known_macros(n)
     + calls_around(n, words(n, lambda i: f"A{i}")), _RESCANNED),
    ("one function 30 times around macros", 2_000, lambda n: "#define F(x) [x]\n" + known_macros(n)
     + nested(30, "F(", words(n, lambda i: f"A{i}")) + "\n"),
    ("one function around macros", 200, lambda n: "#define F(x) [x]\n" + known_macros(n)
     + nested(n, "F(", words(n, lambda i: f"A{i}")) + "\n", _RESCANNED),
    ("chain with parentheses", 300, lambda n: chain(n, lambda i: f"#define M{i}(x) M{i + 1}((x))\n") + "M0(1)\n",
     _RESCANNED),
    ("chain with a growing argument", 300, lambda n: chain(n, lambda i: f"#define M{i}(x) M{i + 1}(x x{i})\n")
     + "M0(1)\n", _RESCANNED),
    ("chain with words before", 10_000, lambda n: chain(n, lambda i: f"#define C{i} x C{i + 1}\n") + "C0\n"),
    ("chain with words behind", 10_000, lambda n: chain(n, lambda i: f"#define C{i} C{i + 1} x\n") + "C0\n"),
    ("chain in parentheses", 10_000, lambda n: chain(n, lambda i: f"#define C{i} (C{i + 1})\n") + "C0\n"),
    ("chain of functions with words before", 4_000, lambda n: chain(
        n, lambda i: f"#define C{i}(x) y C{i + 1}(x)\n") + "C0(1)\n"),
    ("chain of functions with words behind", 4_000, lambda n: chain(
        n, lambda i: f"#define C{i}(x) C{i + 1}(x) y\n") + "C0(1)\n"),
    ("chain of names behind which the call stands", 10_000, lambda n: chain(n) + f"#define C{n}(x) x\nC0(1)\n"),
    ("chain as argument", 10_000, lambda n: chain(n) + function(1) + "F(C0)\n"),
    ("chain used by #if", 10_000, lambda n: chain(n) + "#if C0\n#endif\n"),
    ("ring of objects", 10_000, lambda n: chain(n) + f"#define C{n} C0\nC0 C0\n"),
    ("ring of functions", 4_000, lambda n: chain(n, lambda i: f"#define C{i}(x) C{i + 1}(x)\n")
     + f"#define C{n}(x) C0(x)\nC0(1)\n"),
    ("argument that is called", 10_000, lambda n: "#define F(x) x\n" + "F(F)(1) " * n + "\n"),
    ("list made by calls", 10_000, lambda n: "#define C(x, y) x, y\n#define I(x) x\n" + nested(n, "C(1, ", "0")
     + "\n", _RESCANNED),
    ("parentheses in an argument", 50_000, lambda n: function(1) + "F(" + nested(n, "(", "1") + ")\n"),
    ("groups taken", 20_000, lambda n: "#if 1\n" * n + "x\n" + "#endif\n" * n),
    ("groups skipped", 100_000, lambda n: "#if 0\n" * n + "x\n" + "#endif\n" * n),
    ("groups in #else", 20_000, lambda n: "#if 0\n#else\n" * n + "x\n" + "#endif\n" * n),
    ("includes", 50, lambda n: include_chain(n, 40)),
    ("includes in groups", 50, lambda n: Source('#include "c0.h"\n' * 40, {
        f"c{i}.h": f'#if 1\n#include "c{i + 1}.h"\n#endif\n' for i in range(n)} | {f"c{n}.h": "x\n"})),
])

ARGUMENTS = whole("arguments", [
    ("each a macro", 10_000, lambda n: "#define A 1\n" + function(n) + call(n, "A")),
    ("each another macro", 10_000, lambda n: known_macros(n) + function(n) + call(n, lambda i: f"A{i}")),
    ("each a call", 10_000, lambda n: "#define G(x) x\n" + function(n) + call(n, "G(1)")),
    ("each used three times", 10_000, lambda n: "#define A 1\n#define F(" + parameters(n) + ") "
     + (words(n, lambda i: f"p{i}") + " ") * 3 + "\n" + call(n, "A")),
    ("each stringized", 10_000, lambda n: f"#define F({parameters(n)}) {words(n, lambda i: f'#p{i}')}\n" + call(n)),
    ("each pasted", 10_000, lambda n: f"#define F({parameters(n)}) {words(n, lambda i: f'p{i}##x')}\n" + call(n)),
    ("none used", 20_000, lambda n: f"#define F({parameters(n)}) x\n" + call(n)),
    ("too many", 800_000, lambda n: function(1) + call(n)),
    ("too few", 20_000, lambda n: function(n) + call(1)),
    ("empty", 20_000, lambda n: function(n) + call(n, "")),
    ("on a line each", 20_000, lambda n: function(n) + call(n).replace(" ", "\n")),
    ("with __LINE__ on a line each", 20_000, lambda n: function(n) + call(n, "__LINE__").replace(" ", "\n")),
    ("made known within", 20_000, made_known("F({0} X)")),
    ("made known and used again", 20_000, made_known("F({0} X) F({0})")),
    ("made known by the second", 20_000, made_known("G({0}, X)")),
    ("made known in inner calls", 20_000, made_known("F(F(F({0} X)))")),
    ("made known by each line", 2_000, lambda n: Source("#define F(x) [x]\nF(w\n" + "X w\n" * n + ")\n", options=(
        "-DX=\n#define w 1\n#undef w\n",))),
    ("unclosed", 100_000, lambda n: function(1) + "F(" + "(" * n + "\n"),
    ("unclosed calls", 60_000, lambda n: function(1) + "F(" * n + "\n"),
    ("closed too often", 2_000_000, lambda n: function(1) + "F(1)" + ")" * n + "\n"),
    ("of lone quotes", 20_000, lambda n: function(1) + f"F({times(n, chr(39) + chr(10))})\n"),
    ("stringizing lone quotes", 20_000, lambda n: f"#define S(x) #x\nS({times(n, chr(34) + chr(10))})\n"),
    ("stringizing strings", 50_000, lambda n: f"#define S(x) #x\nS({words(n, chr(34) * 2)})\n"),
    ("stringizing backslashes", 50_000, lambda n: "#define S(x) #x\nS(" + "\\ " * n + ")\n"),
    ("stringizing blanks", 200_000, lambda n: "#define S(x) #x\nS(a" + " \t" * n + "b)\n"),
    ("names waiting for a parenthesis", 50_000, lambda n: function(1) + f"F({words(n, 'F')})\n"),
    ("a name and line ends", 300_000, lambda n: function(1) + "F" + "\n" * n + "x\n"),
    ("a name and comments", 50_000, lambda n: function(1) + "F" + "/**/\n" * n + "x\n"),
    ("a name and line ends and a call", 300_000, lambda n: function(1) + "F" + "\n" * n + "(1)\n"),
])

BODIES = whole("bodies", [
    ("pasted chain", 20_000, lambda n: "#define P(x) x" + "##x" * n + "\nP(a)\n"),
    ("pasted chain of words", 20_000, lambda n: f"#define P(x) {times(n, lambda i: f'w{i}', ' ## ')}\nP(1)\n"),
    ("pasted chain of numbers", 20_000, lambda n: "#define P(x) x" + "##1" * n + "\nP(a)\n"),
    ("pasted empty arguments", 20_000, lambda n: "#define P(x, y) x" + "##x" * n + "\nP(,1)\n"),
    ("stringized often", 20_000, lambda n: "#define S(x) " + "#x " * n + "\nS(a)\n"),
    ("parameter used often with a macro", 20_000, lambda n: f"#define A 1\n#define F(x) {words(n, 'x')}\nF(A)\n"),
    ("many parameters defined", 20_000, lambda n: f"#define F({parameters(n)}) x\n"),
    ("the same parameter defined", 20_000, lambda n: f"#define F({listed(n, 'p')}) p\nF({listed(n, '1')})\n"),
    ("a comment from -D", 20_000, lambda n: Source("A\n" * n, options=("-DA=a /* why */ b",))),
    ("100 comments from -D", 500, lambda n: Source("A\n" * n, options=("-DA=" + "a /* why */ " * 100,))),
    ("a long comment from -D", 500, lambda n: Source("A\n" * n, options=("-DA=a /*" + "why " * 1000 + "*/ b",))),
    ("many comments from -D", 2_000, lambda n: Source("A\n", options=("-DA=" + "a /**/" * n,))),
    ("a comment joined by a continuation", 20_000, lambda n: "#define A a /\\\n* why */ b\n" + "A\n" * n),
    ("comments joined by continuations", 20_000, lambda n: "#define A " + "a /\\\n* why */ " * n + "\nA\n"),
    ("an unclosed comment from -D", 5_000, lambda n: Source("A\n" * n, options=("-DA=a /* why",))),
    ("a line end from -D", 20_000, lambda n: Source("A\n" * n, options=("-DA=a\nb",))),
    ("a directive from -D", 20_000, lambda n: Source("A\n" * n, options=("-DA=a\n#define B 1\nB",))),
    ("itself defined anew from -D", 20_000, lambda n: Source("A\n" * n, options=("-DA=a\n#define A b\nA",))),
    ("__LINE__ on one line", 50_000, lambda n: words(n, "__LINE__") + "\n"),
    ("__LINE__ in one body", 50_000, lambda n: f"#define A {words(n, '__LINE__')}\nA\n"),
    ("__LINE__ in one argument", 50_000, lambda n: function(1) + f"F({words(n, '__LINE__')})\n"),
    ("__FILE__ in one body", 50_000, lambda n: f"#define A {words(n, '__FILE__')}\nA\n"),
    ("_Pragma in one body", 10_000, lambda n: "#define A " + '_Pragma("w") ' * n + "\nA\n"),
    ("_Pragma in one argument", 30_000, lambda n: function(1) + "F(" + '_Pragma("w") ' * n + ")\n"),
    ("defined between uses", 20_000, lambda n: "#define A B C\n#define B b\n#define C c\n"
     + times(n, lambda i: f"#define N{i}\nA A A\n")),
    ("defined anew between uses", 20_000, lambda n: "#define A B B\n" + times(
        n, lambda i: f"#define B {i}\nA A A\n#undef B\n")),
])

NAMES = whole("names", [
    ("long common beginning", 10_000, used_names(lambda i: f"{'a' * 60}{i}")),
    ("long common end", 10_000, used_names(lambda i: f"a{i}{'a' * 60}")),
    ("anagrams", 20_000, used_names(anagram)),
    ("colliding when multiplied by 31", 10_000, used_names(colliding)),
    ("every third defined", 30_000, used_names(lambda i: f"name_{i:07}", 3)),
    ("numbers apart by 2^16", 20_000, used_names(lambda i: f"n{i << 16}")),
    ("colliding and unknown", 20_000, used_names(colliding, 16)),
])

LINES = whole("one line", [
    ("lone quotes", 200_000, lambda n: words(n, '" \' a') + "\n"),
    ("lone apostrophes far apart", 200_000, lambda n: f"' {words(n)} \" {words(n)}\n"),
    ("odd quotes", 100_000, lambda n: '"' * (2 * n + 1) + "\n"),
    ("odd apostrophes", 100_000, lambda n: "'" * (2 * n + 1) + "\n"),
    ("quotes of both kinds", 300_000, lambda n: "'\"" * n + "\n"),
    ("quotes behind backslashes", 300_000, lambda n: '"' + '\\"' * n + "\n"),
    ("escapes that make no string", 100_000, lambda n: '"\\n' * n + "\n"),
    ("unclosed string", 4_000_000, lambda n: '"' + "s" * n + "\n"),
    ("skipped lone quotes", 300_000, lambda n: "#if 0\n" + words(n, '" \' a') + "\n#endif\n"),
    ("skipped odd quotes", 100_000, lambda n: "#if 0\n" + '"' * (2 * n + 1) + "\n#endif\n"),
    ("skipped escapes that make no string", 100_000, lambda n: "#if 0\n" + '"\\n' * n + "\n#endif\n"),
    ("backslashes", 500_000, lambda n: "\\" * n + "\n"),
    ("slashes", 500_000, lambda n: "/ " * n + "\n"),
    ("comments", 300_000, lambda n: "/**/" * n + "\n"),
    ("comment openings in a comment", 500_000, lambda n: "/*" * n + "*/\n"),
    ("unclosed comment", 30_000_000, lambda n: "/*" + "c" * n + "\n"),
    ("continuations", 200_000, lambda n: "w \\\n" * n + "\n"),
    ("continuations in a comment", 1_000_000, lambda n: "/* " + "w \\\n" * n + "*/\n"),
    ("continuations in a line comment", 200_000, lambda n: "// " + "w \\\n" * n + "\n"),
    ("continuations in #define", 600_000, lambda n: "#define A " + "\\\n" * n + "1\nA\n"),
    ("continuations in a defined name", 150_000, lambda n: "#define A" + "\\\nA" * n + " 1\n"),
    ("CR alone", 500_000, lambda n: "\r" * n + "\n"),
    ("CR and words", 300_000, lambda n: "w\r" * n + "\n"),
    ("NUL", 500_000, lambda n: "\0" * n + "\n"),
    ("NUL and words", 300_000, lambda n: "w\0" * n + "\n"),
    ("points", 10_000_000, lambda n: "." * n + "\n"),
    ("points and digits", 1_000_000, lambda n: "1." * n + "\n"),
    ("0x", 300_000, lambda n: "0x" * n + "\n"),
    ("digits and letters", 300_000, lambda n: "1 a1 1a " * n + "\n"),
])

EXPRESSIONS = whole("expressions", [
    ("parentheses", 20_000, lambda n: f"#if {nested(n, '(', '1')}\n#endif\n"),
    ("parentheses unclosed", 20_000, lambda n: "#if " + "(" * n + "\n#endif\n"),
    ("parentheses around sums", 20_000, lambda n: f"#if {nested(n, '(1 + ', '1')}\n#endif\n"),
    ("?: to the right", 10_000, lambda n: "#if " + "1 ? 1 : " * n + "1\n#endif\n"),
    ("?: in the middle", 10_000, lambda n: "#if " + "1 ? " * n + "1" + " : 1" * n + "\n#endif\n"),
    ("? without :", 10_000, lambda n: "#if " + "1 ? " * n + "1\n#endif\n"),
    ("unary", 50_000, lambda n: "#if " + "!~- " * n + "1\n#endif\n"),
    ("sum", 50_000, lambda n: "#if 1" + " + 1" * n + "\n#endif\n"),
    ("all operators", 10_000, lambda n: "#if 1" + " * 1 + 1 << 1 < 1 == 1 & 1 ^ 1 | 1 && 1 || 1" * n + "\n#endif\n"),
    ("defined", 20_000, lambda n: "#if defined A" + " || defined(A)" * n + "\n#endif\n"),
    ("macros", 20_000, lambda n: "#define A 1\n#if A" + " + A" * n + "\n#endif\n"),
    ("calls", 20_000, lambda n: "#define F(x) x\n#if F(1)" + " + F(1)" * n + "\n#endif\n"),
    ("words left over", 50_000, lambda n: f"#if 1 {words(n)}\n#endif\n"),
    ("a long number", 1_000_000, lambda n: f"#if {'1' * n}\n#endif\n"),
    ("a long character", 4_000_000, lambda n: f"#if '{'a' * n}'\n#endif\n"),
])

OTHERS = whole("others", [
    ("-h", 20_000, lambda n: Source(options=("-h",) * n)),
    ("-s", 20_000, lambda n: Source(options=("-s", "a") * n)),
    ("words ignored", 20_000, lambda n: Source(options=("-h", *map(str, range(n))))),
    ("the same -D", 20_000, lambda n: Source(options=("-DA=1",) * n)),
    ("unknown directives", 20_000, "#unknown\n".__mul__),
    ("#endif without #if", 20_000, "#endif\n".__mul__),
    ("#pragma of many words", 300_000, lambda n: f"#pragma {words(n)}\n"),
    ("#error of many words", 300_000, lambda n: f"#error {words(n)}\n"),
    ("#line of a long name", 2_000_000, lambda n: f'#line 7 "{"f" * n}"\nx\n'),
    ("#include of a long name", 1_000_000, lambda n: f'#include "{"f" * n}"\nx\n'),
    ("#include <> of many words", 50_000, lambda n: f"#include <{words(n)}>\n"),
    ("#include <> unclosed", 50_000, lambda n: f"#include <{words(n)}\n"),
    ("missing in 50 folders", 500, lambda n: Source("#include <missing.h>\n" * n, options=tuple(
        f"-Id{i}" for i in range(50)))),
    ("line directives of a long name", 20_000, lambda n: f'#line 1 "{"f" * 1000}"\n' + "#define A\nx\n" * n),
])

GROWTH_ONLY = [*NESTINGS, *ARGUMENTS, *BODIES, *NAMES, *LINES, *EXPRESSIONS, *OTHERS]
