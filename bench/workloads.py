"""The workloads: what each one is, why its outputs can be compared, and how its input is written.

Every input is made from a random generator seeded with the workload's name, so that it is the same on every machine.
A factor scales the count that the workload is about (bytes, definitions, entries, ...); factor 1 is the size in the
title. All of them keep to what every preprocessor agrees on: no redefinition, no escape in a string that holds a
macro's name, no operator whose result depends on the width of a number.
"""

import dataclasses
import hashlib
import itertools
import json
import pathlib
import random
import shutil
from typing import Callable, Optional

MB = 1_000_000


@dataclasses.dataclass(frozen=True)
class Workload:
    name: str
    title: str
    comparable: str  # why all programs do the same work and print the same text
    write: Callable[[pathlib.Path, float, random.Random], Optional[int]]
    bar: Optional[float] = None  # ratio to the best peer that qnpp must not exceed
    aim: Optional[float] = None  # the ratio that it should come to
    against_all: bool = False  # peers that write less are a bar too
    runs: int = 1  # so many count as one
    memory_goal: Optional[float] = None  # peak memory in MB at factor 1; none where the macros themselves are large


@dataclasses.dataclass(frozen=True)
class Input:
    """A written workload: run a program on input.c in the folder."""

    folder: pathlib.Path
    bytes_read: int  # what a program reads, a file included ten times counted ten times
    sha256: str  # of all files, in the order of their names


# ---------------------------------------------------------------------------------------------------------------------
# Plain code


_WORDS = """buffer index count length offset value table entry node list header packet frame image pixel colour width
height scale angle point vector matrix queue stack cursor field record block page cache key hash bucket slot request
reply client server socket stream reader writer parser token symbol scope type name path file line column margin
weight total limit step state flags mask event timer signal channel device driver port config option level mode
source target parent child root leaf left right first last next previous""".split()

_VERBS = """read write find insert remove update compute check parse format open close reset append copy move merge
split load store send receive lock release create destroy""".split()


def _names(rng: random.Random, count: int) -> list[str]:
    """Distinct identifiers as people write them; all lower or mixed case, so no macro below has such a name."""
    names: dict[str, None] = {}
    while len(names) < count:
        style = rng.random()
        words = rng.sample(_WORDS, rng.choice((1, 1, 2, 2, 2, 3)))
        if style < 0.15:
            name = rng.choice("ijknpqstxyzabc")
        elif style < 0.45:
            name = words[0] + "".join(word.capitalize() for word in words[1:])
        elif style < 0.85:
            name = "_".join(words)
        else:
            name = rng.choice(_VERBS) + "_" + "_".join(words[:2])
        if name in names:
            name += str(rng.randrange(1000))
        names[name] = None
    return list(names)


_TEXT_LINES = """\
{0} = {1} + {2};
{0} += {1} * {N} - {2};
{0} = {1}({2}, {3}, {N});
{0}->{1} = {2};
{0}.{1} = ({2} & {X}) | ({3} << {D});
if ({0} == {1} && {2}->{3} != {N}) {{
if ({0} < {N} || !{1}) return {2};
if ({0}({1}) <= 0) goto {2};
for ({0} = 0; {0} < {1}; {0}++) {{
while ({0} > {N} && {1}[{0}] != {Q}) {{
}}
}}
}} else {{
return {0} ? {1} : {2};
return {0}({1}, &{2});
{0}[{1}] = {2}[{1} + {D}];
{0}[{N}]++;
int {0} = {N};
unsigned long {0} = {X};
const char *{0} = {S};
struct {0} *{1} = {2}(sizeof *{1});
{0}({1}, {S}, {2}, {3});
{0}({S});
case {N}: {0} = {Q}; break;
double {0} = {N}.{N} * {1};
{0} = (unsigned char)({1} >> {D}) ^ {X};
static int {0}(struct {1} *{2}, int {3})
{{

"""

_STRINGS = ('"%d of %d entries\\n"', '"cannot open the file %s: %s\\n"', '"r"', '"out of memory"', '""', '"%s:%d: "',
            '"usage: %s [options] file\\n"', '"left \\"%s\\" as it was"', '"done"', '"checksum 0x%08x, length %lu"')


class CodeWriter:
    """Endless plain code: names, numbers, strings, operators and indentation, one line at a time."""

    def __init__(self, rng: random.Random):
        self._rng = rng
        self._names = _names(rng, 3000)
        self._templates = [(line, line.count("}}") - line.count("{{")) for line in _TEXT_LINES.split("\n")[:-1]]
        self._depth = 1

    def line(self) -> str:
        rng = self._rng
        template, closes = rng.choice(self._templates)
        if closes > 0:
            self._depth = max(1, self._depth - closes)
        # Code is full of names that come again: half of them from the first hundred.
        names = [self._names[rng.randrange(100) if rng.random() < 0.5 else rng.randrange(3000)] for _ in range(4)]
        text = template.format(*names, N=rng.choice((0, 1, 2, 8, 10, 16, 100, 255, 1024, 4096)), D=rng.randrange(32),
                               X=f"0x{rng.randrange(1 << 16):04x}u", S=rng.choice(_STRINGS),
                               Q="'" + rng.choice("abcxyz0 ;/") + "'")
        indented = "  " * self._depth + text if text else text
        if closes < 0:
            self._depth = min(6, self._depth - closes)
        return indented + "\n"

    def write(self, out, size: float) -> None:
        written = 0
        while written < size:
            line = self.line()
            out.write(line)
            written += len(line)


def _write_text(folder, factor, rng):
    with open(folder / "input.c", "w") as out:
        # Macros exist, as in any program, but this text uses none of them.
        for number in range(200):
            out.write(f"#define UNUSED_{rng.choice(_WORDS).upper()}_{number} {number}\n")
        CodeWriter(rng).write(out, 20 * MB * factor)


def _write_line20m(folder, factor, rng):
    code = CodeWriter(rng)
    size = 20 * MB * factor
    with open(folder / "input.c", "w") as out:
        written = 0
        while written < size:
            text = code.line().strip() + " "
            out.write(text)
            written += len(text)
        out.write("\n")


# ---------------------------------------------------------------------------------------------------------------------
# Comments


_PROSE = """the a this that each every of for with from when then until before after is was holds takes returns keeps
counts must may never always only also here there caller owner result value buffer table entry list first last next
line file name size limit order memory change error case state copy sorted empty full open closed bytes words""".split()


class ProseWriter:
    """Lines of English-like words without any character that could end a comment or open another one."""

    def __init__(self, rng: random.Random):
        self._rng = rng

    def sentence(self, width: int) -> str:
        words = []
        length = 0
        while length < width:
            word = self._rng.choice(_PROSE)
            words.append(word)
            length += len(word) + 1
        return " ".join(words) + "."


def _write_comments(folder, factor, rng):
    prose = ProseWriter(rng)
    code = CodeWriter(rng)
    size = 20 * MB * factor
    with open(folder / "input.c", "w") as out:
        written = 0
        while written < size:
            lines = []
            if rng.random() < 0.5:
                lines.append("/*\n")
                lines += [f" * {prose.sentence(64)}\n" for _ in range(rng.randrange(8, 40))]
                lines.append(" */\n")
            else:
                lines += [f"// {prose.sentence(64)}\n" for _ in range(rng.randrange(6, 30))]
            lines.append(code.line())
            text = "".join(lines)
            out.write(text)
            written += len(text)


# ---------------------------------------------------------------------------------------------------------------------
# Macros


def _write_objmac(folder, factor, rng):
    macros = []
    with open(folder / "input.c", "w") as out:
        for number in range(1000):
            name = f"{rng.choice(_WORDS).upper()}_{number:03d}"
            kind = rng.random()
            if kind < 0.5 or not macros:
                body = rng.choice((f"0x{rng.randrange(1 << 32):08x}ul",
                                   f'"cannot read the {rng.choice(_WORDS)} of part {number}"',
                                   f"default_{rng.choice(_WORDS)}_{rng.choice(_WORDS)}_of_part_{number}"))
            elif kind < 0.85:
                body = f"(default_{rng.choice(_WORDS)}_{rng.choice(_WORDS)}_{number} + {rng.randrange(1000)})"
            else:
                body = f"({rng.choice(macros[:200])} | 0x{rng.randrange(1 << 16):04x}u)"
            macros.append(name)
            out.write(f"#define {name} {body}\n")
        plain = [name for name in _names(rng, 1500) if 7 <= len(name) <= 12]
        written = 0
        while written < 8 * MB * factor:
            words = [rng.choice(macros) if rng.random() < 2 / 3 else rng.choice(plain) for _ in range(8)]
            text = " ".join(words) + "\n"
            out.write(text)
            written += len(text)


_FUNMAC_DEFINITIONS = """\
#define STR(x) #x
#define XSTR(x) STR(x)
#define CAT(a, b) a##b
#define XCAT(a, b) CAT(a, b)
#define MAX(a, b) ((a) > (b) ? (a) : (b))
#define MIN(a, b) ((a) < (b) ? (a) : (b))
#define CLAMP(v, low, high) MIN(MAX(v, low), high)
#define ADD(a, b) ((a) + (b))
#define SQUARE(a) ((a) * (a))
#define FIELD(object, name) ((object)->CAT(field_, name))
#define CHECK(condition) do { if (!(condition)) fail(#condition, 1); } while (0)
#define DECLARE(type, name) type CAT(name, _value); const char *CAT(name, _text) = STR(name)
#define ID(x) x
"""

_FUNMAC_LINES = """\
CHECK(MAX({0}, {1}) < CLAMP({2}, 0, {N})); {2} = CAT({0}, _size);
{0} = CLAMP(ADD({1}, {N}), MIN({2}, {3}), {2}) + FIELD({3}, {1});
DECLARE(int, {0}); {1} = SQUARE(SQUARE(ADD({2}, {N})));
{0} = XSTR(MAX(ADD({1}, {N}), {2})); {2} = XCAT(item_, {3});
{0} = MAX(SQUARE({1}), MIN(FIELD({2}, {3}), {N})); puts(STR({0} {1}));
{0} = ID(ID(CAT({1}, {N}))) + MIN(ADD({2}, {N}), SQUARE({3})); puts(STR({0}));
"""


def _write_funmac(folder, factor, rng):
    names = [name for name in _names(rng, 400) if 6 <= len(name) <= 16]
    templates = _FUNMAC_LINES.split("\n")[:-1]
    with open(folder / "input.c", "w") as out:
        out.write(_FUNMAC_DEFINITIONS)
        written = 0
        while written < 4 * MB * factor:
            text = rng.choice(templates).format(*(rng.choice(names) for _ in range(4)), N=rng.randrange(1, 999)) + "\n"
            out.write(text)
            written += len(text)


def _write_deep256(folder, factor, rng):
    with open(folder / "input.c", "w") as out:
        out.write("#define EVAL(x) EVAL1(EVAL1(EVAL1(EVAL1(x))))\n"
                  "#define EVAL1(x) EVAL2(EVAL2(EVAL2(EVAL2(x))))\n"
                  "#define EVAL2(x) EVAL3(EVAL3(EVAL3(EVAL3(x))))\n"
                  "#define EVAL3(x) EVAL4(EVAL4(EVAL4(EVAL4(x))))\n"
                  "#define EVAL4(x) x\n"
                  "#define PAIR(a, b) (a + b)\n")
        names = _names(rng, 200)
        for number in range(round(200 * factor)):
            argument = str(number)
            for name in rng.sample(names, 12):
                argument = f"PAIR({name}, {argument})"
            out.write(f"r{number} = EVAL({argument});\n")


def _write_macros100k(folder, factor, rng):
    count = round(100_000 * factor)
    names = [f"{rng.choice(_WORDS).upper()}_{rng.choice(_WORDS).upper()}_{number}" for number in range(count)]
    with open(folder / "input.c", "w") as out:
        for number, name in enumerate(names):
            out.write(f"#define {name} (0x{number:05x}u + {rng.randrange(100)})\n")
        plain = _names(rng, 500)
        for _ in range(count):
            out.write(f"  {rng.choice(plain)} = {rng.choice(names)} + {rng.choice(names)};\n")


def _write_chain(folder, factor, rng):
    count = round(100_000 * factor)
    with open(folder / "input.c", "w") as out:
        for number in range(count - 1):
            out.write(f"#define LINK_{number} LINK_{number + 1}\n")
        out.write(f"#define LINK_{count - 1} end\nLINK_0\n")


def _write_chain_functions(folder, factor, rng):
    count = round(20_000 * factor)
    with open(folder / "input.c", "w") as out:
        for number in range(count - 1):
            out.write(f"#define CALL_{number}(x) CALL_{number + 1}(x)\n")
        out.write(f"#define CALL_{count - 1}(x) x\nCALL_0(1)\n")


def _write_params20k(folder, factor, rng):
    count = round(20_000 * factor)
    with open(folder / "input.c", "w") as out:
        parameters = ", ".join(f"p{number}" for number in range(count))
        body = " ".join(f"p{number} +" for number in range(count))
        out.write(f"#define SUM({parameters}) {body} 0\n")
        arguments = ", ".join(f"{rng.choice(_WORDS)}[{number}]" for number in range(count))
        out.write(f"total = SUM({arguments});\n")


def _write_args40k(folder, factor, rng):
    count = round(40_000 * factor)
    with open(folder / "input.c", "w") as out:
        for number in range(1000):
            out.write(f"#define VALUE_{number} {rng.choice(_WORDS)}[{number}]\n")
        parameters = ", ".join(f"p{number}" for number in range(count))
        body = " ".join(f"p{number} +" for number in range(count))
        out.write(f"#define SUM({parameters}) {body} 0\n")
        arguments = ", ".join(f"VALUE_{rng.randrange(1000)}" for _ in range(count))
        out.write(f"total = SUM({arguments});\n")


def _write_xmacro50k(folder, factor, rng):
    count = round(50_000 * factor)
    with open(folder / "input.c", "w") as out:
        out.write("#define MESSAGES(X) \\\n")
        for number in range(count):
            out.write(f"  X({rng.choice(_WORDS)}_{number}, {rng.randrange(1000)})" +
                      (" \\\n" if number + 1 < count else "\n"))
        out.write("#define AS_ENUMERATOR(name, level) MESSAGE_##name,\n"
                  "#define AS_NAME(name, level) #name,\n"
                  "#define AS_LEVEL(name, level) level,\n"
                  "enum message { MESSAGES(AS_ENUMERATOR) };\n"
                  "const char *names[] = { MESSAGES(AS_NAME) };\n"
                  "const int levels[] = { MESSAGES(AS_LEVEL) };\n")


# ---------------------------------------------------------------------------------------------------------------------
# Conditionals and headers


def _write_skip(folder, factor, rng):
    code = CodeWriter(rng)
    size = 20 * MB * factor
    with open(folder / "input.c", "w") as out:
        out.write("#if 0\n")
        written = 0
        depth = 0
        while written < size:
            choice = rng.random()
            if depth < 5 and choice < 0.5:
                text = rng.choice(("#ifdef FEATURE_{0}\n", "#if defined(FEATURE_{0}) && LEVEL > {0}\n",
                                   "#ifndef FEATURE_{0}\n")).format(rng.randrange(100))
                depth += 1
            elif depth > 0 and choice < 0.65:
                text = "#else\n"
                text += code.line() * 2 + "#endif\n"  # the group is closed here: one #else for each conditional
                depth -= 1
            elif depth > 0:
                text = "#endif\n"
                depth -= 1
            else:
                text = f"#define SKIPPED_{rng.randrange(100)} {rng.randrange(100)}\n"
            text += "".join(code.line() for _ in range(rng.randrange(10, 40)))
            out.write(text)
            written += len(text)
        out.write("#endif\n" * (depth + 1) + "end\n")


def _condition(rng: random.Random) -> str:
    number = rng.randrange(40)
    return rng.choice((
        "defined(FEATURE_{0}) && VERSION >= {1}",
        "VERSION * 100 + LEVEL > {1} || defined FEATURE_{0}",
        "(LEVEL & 0x{0:02x}) != 0 && (VERSION << 2) < {1}",
        "!defined(FEATURE_{0}) || (LEVEL + {1}) % 7 == 3",
        "LEVEL == {0} ? VERSION : {1} > 200",
        "FEATURE_{0} + 1 == {1}",
    )).format(number, rng.randrange(400))


def _write_cond(folder, factor, rng):
    code = CodeWriter(rng)
    with open(folder / "input.c", "w") as out:
        out.write("#define VERSION 312\n#define LEVEL 5\n")
        for number in range(0, 40, 2):
            out.write(f"#define FEATURE_{number} {number}\n")
        written = 0
        while written < 4 * MB * factor:
            lines = [f"#if {_condition(rng)}\n"] + [code.line() for _ in range(4)]
            lines += [f"#elif {_condition(rng)}\n"] + [code.line() for _ in range(3)]
            lines += ["#else\n", code.line(), "#endif\n", code.line(), code.line()]
            text = "".join(lines)
            out.write(text)
            written += len(text)


def _write_ifs(folder, factor, rng):
    with open(folder / "input.c", "w") as out:
        out.write("#define VERSION 312\n#define LEVEL 5\n")
        for number in range(0, 40, 2):
            out.write(f"#define FEATURE_{number} {number}\n")
        written = 0
        while written < 4 * MB * factor:
            one, other, value = rng.randrange(40), rng.randrange(40), rng.randrange(400)
            joined, again = rng.choice(("&&", "||")), rng.choice(("&&", "||"))
            text = (f"#if defined(FEATURE_{one}) {joined} (defined FEATURE_{other} {again} VERSION > {value})\n"
                    f"first_{written}\n#elif LEVEL == {value % 8}\n#endif\n")
            out.write(text)
            written += len(text)


_MIXED_LINES = """\
{0} = MAX({1}, {N}) + LIMIT_{M};
if ({0} > LIMIT_{M} || CHECK({1})) return STATUS_FAILED;
{0}[LIMIT_{M}] = CLAMP({1}, 0, {N});  // never beyond the last one
for ({0} = 0; {0} < COUNT_OF({1}); {0}++) {{ {2} += {1}[{0}]; }}
report(STATUS_FAILED, NAME_OF({0}), "%d of %d, see \\"{1}\\"\\n", {2}, LIMIT_{M});
EXPORT int MODULE({0})(struct {1} *{2});
"""

_MIXED_DEFINITIONS = """\
#define VERSION 312
#define STATUS_FAILED (-1)
#define EXPORT extern
#define MAX(a, b) ((a) > (b) ? (a) : (b))
#define MIN(a, b) ((a) < (b) ? (a) : (b))
#define CLAMP(v, low, high) MIN(MAX(v, low), high)
#define CHECK(condition) check((condition), #condition)
#define COUNT_OF(array) (sizeof (array) / sizeof (array)[0])
#define NAME_OF(name) #name
#define MODULE(name) module_##name
#define WITH_TRACE 1
"""


class MixedWriter:
    """Code as people write it: by far the most of it plain, with comments, macros and conditionals in between."""

    def __init__(self, rng: random.Random):
        self._rng = rng
        self._code = CodeWriter(rng)
        self._prose = ProseWriter(rng)
        self._names = [name for name in _names(rng, 400) if 4 <= len(name) <= 16]
        self._templates = _MIXED_LINES.split("\n")[:-1]
        self._limits = 0

    def head(self) -> str:
        return _MIXED_DEFINITIONS + self._limit()

    def block(self) -> str:
        parts = [self._comment()] if self._rng.random() < 0.6 else []
        parts += [self._group() if self._rng.random() < 0.12 else self._lines(self._rng.randrange(3, 15))
                  for _ in range(self._rng.randrange(1, 5))]
        if self._rng.random() < 0.2:
            parts.append(self._limit())
        return "".join(parts)

    def _limit(self) -> str:
        self._limits += 1
        return f"#define LIMIT_{self._limits - 1} {self._rng.randrange(1, 1000)}  /* {self._prose.sentence(20)} */\n"

    def _comment(self) -> str:
        if self._rng.random() < 0.5:
            return f"\n// {self._prose.sentence(60)}\n"
        lines = "".join(f" * {self._prose.sentence(64)}\n" for _ in range(self._rng.randrange(2, 12)))
        return f"\n/*\n{lines} */\n"

    def _lines(self, count: int) -> str:
        return "".join(self._line() for _ in range(count))

    def _line(self) -> str:
        rng = self._rng
        if rng.random() < 0.85:
            return self._code.line()
        return "  " + rng.choice(self._templates).format(*rng.sample(self._names, 3), N=rng.randrange(1, 999),
                                                         M=rng.randrange(self._limits)) + "\n"

    def _group(self) -> str:
        rng = self._rng
        condition = rng.choice(("#if 0", "#ifdef WITH_TRACE", "#ifndef WITH_TRACE", "#ifdef WITH_OTHERS",
                                f"#if VERSION >= {rng.randrange(600)}",
                                "#if defined(WITH_TRACE) && VERSION < 400"))
        text = condition + "\n" + self._lines(rng.randrange(1, 20))
        if rng.random() < 0.4:
            text += "#else\n" + self._lines(rng.randrange(1, 6))
        return text + "#endif\n"


def _write_mixed(folder, factor, rng):
    mixed = MixedWriter(rng)
    with open(folder / "input.c", "w") as out:
        written = out.write(mixed.head())
        while written < 20 * MB * factor:
            written += out.write(mixed.block())


def _write_small(folder, factor, rng):
    mixed = MixedWriter(rng)
    (folder / "input.c").write_text(mixed.head() + "".join(mixed.block() for _ in range(3)))


def _write_include(folder, factor, rng):
    count = round(1000 * factor)
    total = 0
    names = _names(rng, 500)
    for number in range(count):
        lines = [f"#ifndef HEADER_{number}_H\n", f"#define HEADER_{number}_H\n", "\n"]
        lines += [f"#define LIMIT_{number}_{index} {rng.randrange(1000)}\n" for index in range(4)]
        while len(lines) < 34:
            first, second = rng.sample(names, 2)
            lines.append(rng.choice((f"int {first}(void);\n", f"void {first}(int {second});\n", "\n",
                                     f"extern int {first};\n", f"struct {first};\n", f"// the {first}\n")))
        lines.append("#endif\n")
        text = "".join(lines)
        total += 10 * len(text)
        (folder / f"header_{number}.h").write_text(text)
    main = "".join(f'#include "header_{number}.h"\n' for number in range(count)) * 10
    (folder / "input.c").write_text(main)
    return total + len(main)


# ---------------------------------------------------------------------------------------------------------------------
# One long token


def _long_token(opening: str, unit: Callable[[random.Random], str], closing: str):
    def write(folder, factor, rng):
        piece = "".join(unit(rng) for _ in range(10_000))
        size = round(30 * MB * factor)
        with open(folder / "input.c", "w") as out:
            out.write("before\n" + opening)
            written = 0
            for text in itertools.repeat(piece):
                out.write(text[:size - written])
                written += len(text)
                if written >= size:
                    break
            out.write(closing + "\nafter\n")
    return write


# ---------------------------------------------------------------------------------------------------------------------


WORKLOADS = [
    Workload("text", "plain code, no macro used, 20 MB",
             "nothing is expanded and no line is dropped: the output is the input",
             _write_text, bar=0.12, aim=0.06, memory_goal=8),
    Workload("comments", "block comments over several lines and line comments, 20 MB",
             "every program drops the comments and prints the same lines of code",
             _write_comments, bar=0.35, aim=0.25, memory_goal=8),
    Workload("objmac", "eight words a line, two thirds of them object-like macros, 8 MB",
             "object-like macros without # or ## expand alike everywhere",
             _write_objmac, bar=0.15, aim=0.08, memory_goal=8),
    Workload("funmac", "nested function-like macros with # and ##, 4 MB",
             "every ## joins to one token and every # operand is free of quotes and spare blanks",
             _write_funmac, bar=0.28, aim=0.18, memory_goal=8),
    Workload("skip", "one skipped group with nested conditionals, 20 MB",
             "no condition inside is evaluated, all of it is left out, only the last line is printed",
             _write_skip, bar=0.25, aim=0.15, memory_goal=8),
    Workload("cond", "an #if or #elif expression every seven lines, 4 MB",
             "all values are small, so 32-bit and 64-bit arithmetic choose the same groups",
             _write_cond, memory_goal=8),
    Workload("ifs", "only conditionals: every four lines an #if of three operands, two with defined, an #elif, 4 MB",
             "all values are small, so 32-bit and 64-bit arithmetic choose the same groups",
             _write_ifs, bar=0.9, aim=0.6, memory_goal=8),
    Workload("mixed", "code as people write it: comments, strings, macros, conditionals, skipped groups, 20 MB",
             "every ## joins to one token and no # operand holds a quote",
             _write_mixed, bar=0.2, aim=0.12),
    Workload("include", "1,000 guarded headers of 35 lines, each included ten times",
             "each header's text is printed once; who remembers guards reads it once, the others ten times",
             _write_include, bar=1, aim=0.7, against_all=True, memory_goal=8),
    Workload("macros100k", "100,000 macro definitions, then 200,000 uses on 100,000 lines",
             "object-like macros without # or ## expand alike everywhere",
             _write_macros100k, bar=0.4, aim=0.3),
    Workload("deep256", "an argument re-expanded 256 levels deep, 200 times",
             "the nesting uses no macro inside its own expansion, so no rule about recursion comes into play",
             _write_deep256, bar=0.1, aim=0.08, memory_goal=8),
    Workload("chain100k", "a chain of 100,000 object-like macros, each naming the next",
             "one use runs through the whole chain to one word", _write_chain, bar=1, aim=0.7),
    Workload("chainf20k", "a chain of 20,000 function-like macros, each invoking the next",
             "one use runs through the whole chain to one number", _write_chain_functions, bar=1, aim=0.7),
    Workload("token-comment", "one comment of 30 MB in lines of 75",
             "the comment leaves nothing but line ends",
             _long_token("/*", lambda rng: ProseWriter(rng).sentence(72)[:74] + "\n", "*/"), memory_goal=90),
    Workload("token-string", "one string of 30 MB", "a string is copied as it is",
             _long_token('"', lambda rng: rng.choice(_PROSE) + " ", '"'), memory_goal=90),
    Workload("token-name", "one name of 30 MB", "a name that is no macro is copied as it is",
             _long_token("n", lambda rng: rng.choice(_WORDS) + "_", ""), bar=0.6, aim=0.3, memory_goal=90),
    Workload("token-number", "one number of 30 MB", "a number outside of #if is copied, whatever its value",
             _long_token("1", lambda rng: str(rng.randrange(10)), ""), bar=0.6, aim=0.3, memory_goal=90),
    Workload("line20m", "one line of plain code, 20 MB",
             "nothing is expanded: the output is the input",
             _write_line20m, memory_goal=8),
    Workload("params20k", "one macro of 20,000 parameters and its 20,000 arguments",
             "each argument appears once, without # or ##", _write_params20k),
    Workload("args40k", "40,000 arguments that are macros", "each argument appears once, without # or ##",
             _write_args40k, bar=0.3, aim=0.2),
    Workload("xmacro50k", "an X-macro list of 50,000 entries, used three times",
             "the list is read into an enumeration, names and numbers; every ## joins to one token",
             _write_xmacro50k, bar=0.6, aim=0.4),
    Workload("small100", "a small source, 100 runs", "it is a piece of the mixed code",
             _write_small, bar=1.1, aim=0.9, runs=100, memory_goal=8),
]

# Not a workload: what it costs to start a program and read one line. Growth is measured with this taken off.
STARTUP = Workload("startup", "one line", "", lambda folder, factor, rng: (folder / "input.c").write_text("end\n"))


def _generator_key() -> str:
    return hashlib.sha256(pathlib.Path(__file__).read_bytes()).hexdigest()


def prepare(workload: Workload, factor: float, data_folder: pathlib.Path) -> Input:
    """Writes the input of a workload, or finds the one written earlier by the same generator."""
    folder = data_folder / f"{workload.name}-x{factor:g}"
    stamp = folder / "stamp.json"
    if stamp.exists():
        kept = json.loads(stamp.read_text())
        if kept["generator"] == _generator_key():
            return Input(folder, kept["bytes_read"], kept["sha256"])
        shutil.rmtree(folder)
    elif folder.exists():  # left unfinished
        shutil.rmtree(folder)
    folder.mkdir(parents=True)
    read = workload.write(folder, factor, random.Random(workload.name))
    if read is None:
        read = (folder / "input.c").stat().st_size
    digest = hashlib.sha256()
    for path in sorted(folder.iterdir()):
        digest.update(path.name.encode() + b"\0")
        digest.update(path.read_bytes())
    stamp.write_text(json.dumps({"generator": _generator_key(), "bytes_read": read, "sha256": digest.hexdigest()}))
    return Input(folder, read, digest.hexdigest())
