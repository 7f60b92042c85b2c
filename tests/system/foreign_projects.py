#!/usr/bin/env python3
"""Compares qnpp with a C compiler's preprocessor on other people's projects: every file goes through both, and the
tokens must be the same, or differ by a rule of the manual (DIFFERENCES FROM STANDARD C).

    foreign_projects.py --program PATH [--cc COMMAND] [--jobs N] [--only PATTERN]... [--show N] FOLDER...

A folder is one project. Headers that it lacks, those of the system above all, are empty ones, and neither side has
macros of the machine. A file whose tokens differ is tried again in a copy of the project that says the same without what
the rules are about: an unknown directive gets TEXT, an empty macro, before it; a string has no other escapes than \\"
and \\\\; and so on, see Rewriter. If they are still not the same, the difference is put down to what qnpp reported
there and the compiler did not, or to blanks behind a function-like name. What is left is shown, and the status is 1 then.
"""

import argparse
import codecs
import collections
import fnmatch
import multiprocessing
import os
import re
import shlex
import shutil
import signal
import sys
import tempfile
from typing import NamedTuple

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

from foreign_text_test import files_below  # noqa: E402
from support import run_program  # noqa: E402

C_NAMES = re.compile(r"\.(c|h|cc|cpp|cxx|hh|hpp|hxx|inc|inl|def)$")
# Assemblers' sources, linker scripts, device trees, interface definitions and shaders.
OTHER_NAMES = re.compile(r"\.(S|ld|lds|dts|dtsi|dtso|idl|glsl|vert|frag|geom|comp|tesc|tese|mesh|task|rgen|rchit|rmiss"
                         r"|rahit|hlsl|hlsli|fx|fxh|cl|cu|metal)$")
NOT_SOURCES = re.compile(r"(^|/)\.git/")
TIME_LIMIT = 20
SKIPPED = 77

# ---- The same text without what the rules are about ----

TOKEN = re.compile(
    rb"(?P<comment>/\*(?:.*?\*/|.*)|//(?:[^\\\r\n]|\\(?!\r?\n)|\\\r?\n)*)"
    rb'|(?P<string>"(?:[^"\\\r\n]|\\[^\r\n])*")'
    rb"|(?P<character>'(?:[^'\\\r\n]|\\[^\r\n])+')"
    rb"|(?P<continuation>\\\r?\n)"
    rb"|(?P<newline>\r\n|\r|\n)"
    rb"|(?P<blank>[ \t\v\f]+)"
    rb"|(?P<word>[A-Za-z_0-9$\x80-\xff]+)"
    rb"|(?P<other>##|\.\.\.|.)",
    re.DOTALL)
DIRECTIVES = {b"define", b"elif", b"else", b"endif", b"error", b"if", b"ifdef", b"ifndef", b"include", b"line",
              b"pragma", b"undef"}
# What the compiler knows even if it is asked to know nothing. And qnpp counts lines of its own way in arguments.
KNOWN_WORD = re.compile(rb"__(?:LINE|DATE|TIME|TIMESTAMP|COUNTER|BASE_FILE|INCLUDE_LEVEL|STDC|STDC_\w+|OBJC|ASSEMBLER|"
                        rb"STRICT_ANSI|CHAR_UNSIGNED|REGISTER_PREFIX|USER_LABEL_PREFIX|ELF|VERSION|cplusplus)__"
                        rb"|__has_\w+|__VA_OPT__|_Pragma|__cplusplus")


class Piece(NamedTuple):
    kind: str
    text: bytes


class Rewriter:
    """One pass over a text. `rules` are those that had something to do."""

    def __init__(self, text, name):
        self.rules = set()
        self.functions = set()
        self.name = name
        self.is_once = False
        if text.startswith(codecs.BOM_UTF8):
            self.rules.add("byte order mark")
            text = text[len(codecs.BOM_UTF8):]
        lines = []
        line = []
        for match in TOKEN.finditer(text):
            line.append(Piece(match.lastgroup, match[0]))
            if match.lastgroup == "newline":
                lines.append(self.line(line))
                line = []
        lines.append(self.line(line))
        self.text = b"".join(lines)
        if self.is_once:
            guard = b"ONCE_" + re.sub(rb"\W", b"_", os.fsencode(name))
            self.text = b"#ifndef %s\n#define %s\n%s\n#endif\n" % (guard, guard, self.text)

    def line(self, line):
        line = [self.piece(each) for each in line]
        significant = [each for each in line if each.kind not in ("comment", "continuation", "blank", "newline")]
        if significant and significant[0].text == b"#":
            line = self.directive(line, significant[1:])
        elif any(each.kind == "continuation" for each in line):
            self.rules.add("continued line of text")
            line = [each for each in line if each.kind != "continuation"]
        return b"".join(each.text for each in line)

    def piece(self, piece):
        kind, text = piece
        if kind == "comment" and text.startswith(b"//") and b"\n" in text:
            self.rules.add("continued // comment")
            return Piece(kind, b"")
        if kind == "string" and re.search(rb'\\[^"\\]', re.sub(rb'\\["\\]', b"", text)):
            self.rules.add("escape in a string")
            return Piece(kind, re.sub(rb'\\(.)', lambda match: match[0] if match[1] in b'"\\' else match[1], text))
        if kind == "word" and KNOWN_WORD.fullmatch(text):
            self.rules.add("predefined name")
            return Piece(kind, b"x" + text)
        return piece

    def directive(self, line, words):
        name = words[0].text if words else b""
        nothing = [each for each in line if each.kind == "newline"]
        if not words or name in (b"line", b"pragma"):
            self.is_once = self.is_once or (name == b"pragma" and words[1:2] == [Piece("word", b"once")])
            self.rules.add("#%s" % name.decode() if words else "# alone")
            return nothing
        if name not in DIRECTIVES:
            self.rules.add("unknown directive")
            return [Piece("word", b"TEXT ")] + [each for each in line if each.kind != "continuation"]
        most = {b"else": 1, b"endif": 1, b"ifdef": 2, b"ifndef": 2, b"undef": 2}.get(name, len(words))
        if len(words) > most:
            self.rules.add("words behind #%s" % name.decode())
            return [Piece("word", b"#" + b" ".join(each.text for each in words[:most]))] + nothing
        if name == b"define":
            return self.definition(line, words[1:], nothing)
        return line

    def definition(self, line, words, nothing):
        text = b"".join(each.text for each in line)
        function = re.match(rb"\s*#(?:\s|\\\r?\n)*define(?:\s|\\\r?\n)+(\w+)\(([^)]*)\)", text)
        if function and b"..." in function[2]:
            self.rules.add("variadic macro")
            return nothing
        if function:
            self.functions.add(function[1])
        elif any(each.text == b"##" for each in words):
            self.rules.add("## in an object-like macro")
            return nothing
        return line


# ---- The two programs ----


class Setting(NamedTuple):
    program: str
    compiler: list
    # A project, the folders in it that are searched, the empty headers, and the rewritten copy.
    project: str
    searched: list
    stubs: str
    copy: str
    functions: frozenset = frozenset()


def search_words(setting, folder):
    return ["-I" + os.path.join(folder, each) for each in setting.searched] + ["-I" + setting.stubs]


def run_qnpp(setting, folder, name):
    return run_program(setting.program, ["-DTEXT="] + search_words(setting, folder) + [name], folder,
                       seconds=TIME_LIMIT)


def run_compiler(setting, folder, name):
    language = ["-std=gnu89", "-xc"] if C_NAMES.search(name) else ["-xassembler-with-cpp"]
    return run_program(setting.compiler[0], setting.compiler[1:] + [
        "-E", "-P", "-w", "-undef", "-nostdinc", "-fno-dollars-in-identifiers", "-DTEXT=", "-U__STDC__",
        "-U__STDC_HOSTED__"] + language + search_words(setting, folder) + [name], folder, seconds=TIME_LIMIT)


OUTPUT_TOKEN = re.compile(rb'"(?:[^"\\\n]|\\.)*"' rb"|'(?:[^'\\\n]|\\.)+'" rb"|[A-Za-z_0-9$\x80-\xff]+|[^\s]")
NOT_TEXT = re.compile(rb'^[ \t]*#(?:line [0-9]+ ".*"|[ \t]*pragma\b.*)$', re.MULTILINE)


def tokens_of(output):
    """Words, quotes and single characters. Blanks in quotes do not count: there are several ways to make a string."""
    return [re.sub(rb"\s", b"", each) if each[:1] in b"\"'" else each
            for each in OUTPUT_TOKEN.findall(NOT_TEXT.sub(b"", output))]


def difference(ours, theirs, functions):
    """The name of a rule, if one explains that they differ, and the tokens around the first difference without one."""
    rule = ""
    at, there = 0, 0
    while at < len(ours) and there < len(theirs):
        if ours[at] == theirs[there]:
            at, there = at + 1, there + 1
        elif theirs[there] in functions and ours[at] == b"".join(theirs[there:there + 2]):
            rule = "blanks behind the name of a function-like macro"
            at, there = at + 1, there + 2
        elif ours[at] == b"#" and ours[at + 1:at + 2] and ours[at + 1] in DIRECTIVES:
            # From there on the two differ, and cannot be laid beside each other any more.
            return "directive within arguments", ""
        else:
            break
    if at == len(ours) and there == len(theirs):
        return rule, ""
    shown = ["%s: %s" % (who, b" ".join(tokens[max(0, place - 6):place + 6]).decode("latin-1"))
             for who, tokens, place in (("qnpp", ours, at), ("cc", theirs, there))]
    return "", "\n    ".join(shown)


# ---- One file ----


class Result(NamedTuple):
    name: str
    # "equal", "rule", "gave up" or "news".
    kind: str
    rules: frozenset = frozenset()
    shown: str = ""


MESSAGE = re.compile(r"^(?:.*?:-?\d+: )?(.*?)\.?$", re.MULTILINE)
# The compiler says these too.
SHARED_MESSAGES = re.compile(r"#error directive|Cannot open file|Warning: |^$")


def kinds_of_messages(messages):
    """What they say, without what they quote."""
    found = {match[1] for match in MESSAGE.finditer(messages.decode("latin-1"))}
    return {re.sub(r": .*", "", each) for each in found if not SHARED_MESSAGES.search(each)}


def compare_in(setting, folder, name):
    """(rules, difference) of one file; None if one of the two cannot tell."""
    ours = run_qnpp(setting, folder, name)
    theirs = run_compiler(setting, folder, name)
    if ours.status == -signal.SIGFPE:
        return {"zero divisor"}, "", ours
    if theirs.status is None or theirs.status < 0 or b"fatal error" in theirs.stderr:
        return None
    if ours.status not in (0, 1):
        return set(), "qnpp ended with %s: %s" % (ours.status, ours.stderr[-300:].decode("latin-1")), ours
    rule, shown = difference(tokens_of(ours.stdout), tokens_of(theirs.stdout), setting.functions)
    return {rule} if rule else set(), shown, ours


RULES = {}


def check(job):
    setting, name = job
    first = compare_in(setting, setting.project, name)
    if first and not first[1]:
        return Result(name, "rule" if first[0] else "equal", frozenset(first[0]))
    second = compare_in(setting, setting.copy, name)
    if not second:
        return Result(name, "gave up")
    rules, shown, run = second
    for each in {name} | {os.path.relpath(os.path.join(setting.copy, os.fsdecode(included)), setting.copy)
                          for included in re.findall(rb'^#line 1 "(.*)"$', run.stdout, re.MULTILINE)}:
        rules |= RULES.get(each, set())
    if not shown:
        return Result(name, "rule", frozenset(rules))
    messages = kinds_of_messages(run.stderr)
    if messages:
        return Result(name, "message", frozenset(messages), shown)
    return Result(name, "news", frozenset(), shown)


# ---- A project ----


def included_names(text):
    return re.findall(rb'^[ \t]*#[ \t]*include[ \t]*[<"]([^">\n]+)[">]', text, re.MULTILINE)


def make_stubs(names, project, searched, stubs):
    """An empty header for each name that is found in no searched folder."""
    for name in names:
        path = os.path.normpath(os.path.join(stubs, name.lstrip("/")))
        if not path.startswith(stubs + os.sep) or any(os.path.isfile(os.path.join(project, folder, name))
                                                      for folder in searched):
            continue
        try:
            os.makedirs(os.path.dirname(path), exist_ok=True)
            open(path, "a", encoding="utf-8").close()
        except OSError:
            # Two names of which one is a folder of the other, or one that is too long: tests of preprocessors have such.
            pass


def check_project(options, project, work):
    global RULES
    project = os.path.realpath(project)
    copy, stubs = os.path.join(work, "copy"), os.path.join(work, "stubs")
    os.mkdir(stubs)
    names = [os.path.relpath(path, project) for path in files_below(project)]
    names = [name for name in names
             if not NOT_SOURCES.search(name) and (C_NAMES.search(name) or OTHER_NAMES.search(name))]
    # The folder of the project, and those in it that are called so.
    searched = ["."] + sorted({os.path.dirname(name)[:match.end()] for name in names
                               for match in [re.match(r"(?:[^/]+/){0,3}?(?:include|src)(?=/|$)", os.path.dirname(name))]
                               if match})
    functions = set()
    RULES = {}
    included = set()
    for name in names:
        with open(os.path.join(project, name), "rb") as stream:
            text = stream.read()
        rewritten = Rewriter(text, name)
        RULES[name] = rewritten.rules
        functions |= rewritten.functions
        included.update(os.fsdecode(each) for each in included_names(text))
        path = os.path.join(copy, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as stream:
            stream.write(rewritten.text)
    make_stubs(included, project, searched, stubs)
    setting = Setting(options.program, shlex.split(options.cc), project, searched, stubs, copy, frozenset(functions))
    jobs = [(setting, name) for name in names
            if not options.only or any(fnmatch.fnmatch(name, pattern) for pattern in options.only)]
    with multiprocessing.get_context("fork").Pool(options.jobs) as pool:
        return pool.map(check, jobs, chunksize=8)


def report(project, results, show):
    counts = collections.Counter(result.kind for result in results)
    print("%s: %d files, %d with the same tokens, %d differ by rules, %d by messages, %d not compared, %d unexplained"
          % (os.path.basename(os.path.realpath(project)), len(results), counts["equal"], counts["rule"],
             counts["message"], counts["gave up"], counts["news"]))
    for kind in ("rule", "message"):
        rules = collections.Counter(rule for result in results if result.kind == kind for rule in result.rules)
        for rule, count in rules.most_common():
            print("  %6d %s: %s" % (count, kind, rule))
    for kind in ("news", "message"):
        for result in [result for result in results if result.kind == kind][:show if kind == "message" else None]:
            print("  %s %s %s\n    %s" % (kind, result.name, ", ".join(result.rules), result.shown))
    return counts["news"]


def main():
    parser = argparse.ArgumentParser(description="Compares qnpp with a compiler's preprocessor on projects.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--cc", default="cc", help="the compiler to compare with, gcc or clang")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", action="append", help="only files that match, for example '*.dts'")
    parser.add_argument("--show", type=int, default=0, help="how many differences behind messages to show")
    parser.add_argument("folders", nargs="+", metavar="FOLDER")
    options = parser.parse_args()
    options.program = os.path.abspath(options.program)
    if not shutil.which(shlex.split(options.cc)[0]):
        print("%s is not there" % options.cc)
        return SKIPPED
    news = compared = 0
    for folder in options.folders:
        with tempfile.TemporaryDirectory(prefix="qnpp-foreign-") as work:
            results = check_project(options, folder, os.path.realpath(work))
        compared += len(results)
        news += report(folder, results, options.show)
    return 1 if news or compared == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
