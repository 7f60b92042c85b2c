#!/usr/bin/env python3
"""Checks paths.py: a program that breaks a relation is found out, and the cases that a relation leaves out and takes in
are those that were worked out by hand.

    paths_selftest.py --program PATH

Scripts stand in for the broken programs.  Each runs the real one and adds a byte to its output in one of two ways.
"""

import argparse
import os
import subprocess
import sys
import tempfile
from types import SimpleNamespace

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

import paths  # noqa: E402
from compare import make_parser, read_options, run_with_large_stack  # noqa: E402
from generator import Case  # noqa: E402
from model import TK_NEWLINE  # noqa: E402

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "paths.py")

# The relation, and the question by which its broken program tells one way from the other.
SOURCES = '$(ls *.c sub/*.c 2> /dev/null)'
BROKEN = [
    ("standard-input", 'test -s "$input"'),
    ("final-line-end", 'test -n "$(cat %s "$input" | tail -c 1 | tr -d \'\\n\\r\')"' % SOURCES),
    ("cr-lf", "grep -q -r -s \"$(printf '\\r')\" . \"$input\""),
    ("cr", "grep -q -r -s \"$(printf '\\r')\" . \"$input\""),
    ("includes", "test -e part0.h || test -e sub/part0.h"),
]


class Checks:
    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.count = 0
        self.failures = 0

    def check(self, what, holds, seen=""):
        self.count += 1
        if not holds:
            self.failures += 1
            print("FAILED: %s\n%s" % (what, seen))

    def run(self, *words):
        done = subprocess.run([sys.executable, SCRIPT] + list(words), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              check=False)
        return done.returncode, done.stdout.decode("latin-1")

    def broken_program(self, name, question):
        """A script that runs the program and adds a byte to the output if the answer to the question is yes."""
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="ascii") as stream:
            stream.write('#!/bin/sh\ninput="%s.input"\ncat > "$input"\n"%s" "$@" < "$input"\nstatus=$?\n'
                         'if %s; then printf x; fi\nexit $status\n' % (path, self.program, question))
        os.chmod(path, 0o755)
        return path


def check_broken_programs(checks):
    for relation, question in BROKEN:
        program = checks.broken_program(relation, question)
        status, seen = checks.run("--program", program, "--relation", relation, "--cases", "30", "--minimise-seconds",
                                  "1")
        checks.check("a program that breaks %s is found out" % relation,
                     status == 1 and "DIFFERENCE: %s in case" % relation in seen, seen)
    program = checks.broken_program("other", "true")
    for relation in ("without-shortcuts", "sanitized"):
        status, seen = checks.run("--program", checks.program, "--" + relation, program, "--relation", relation,
                                  "--cases", "30", "--minimise-seconds", "5")
        checks.check("another program is found out by %s" % relation,
                     status == 1 and "DIFFERENCE: %s in case 0 of seed 1" % relation in seen, seen)
        # Nothing is left of the project: the opening line directive is enough to see the byte behind it.
        checks.check("a difference is made small", "expected b'#line 1 \"stdin\"\\n'\n" in seen
                     and "actual   b'#line 1 \"stdin\"\\nx'\n" in seen and " file " not in seen, seen)


def check_counts(checks):
    status, seen = checks.run("--program", checks.program, "--cases", "12")
    checks.check("the program itself passes", status == 0 and "12 cases run" in seen, seen)
    status, seen = checks.run("--program", checks.program, "--cases", "0")
    checks.check("a run without a case fails", status == 1, seen)
    for words, cases in (((), 1000), (("--cases", "7"), 7), (("--seconds", "9"), sys.maxsize),
                         (("--seconds", "9", "--cases", "7"), 7)):
        options = read_options(make_parser(""), ["--program", "x", *words])
        checks.check("a time alone sets no number of cases: %r" % (words,), options.cases == cases, str(options.cases))
    # What a relation leaves out is not counted for it.
    tester = make_tester(checks)
    relation = tester.relations[0]
    relation.count = 79
    checks.check("a share of 0.8 is more than 79 of 100", relation.count < paths.wanted(relation, 100))
    relation.count = 80
    checks.check("a share of 0.8 is 80 of 100", relation.count >= paths.wanted(relation, 100))
    relation.count = 0
    checks.check("no case is too few", relation.count < paths.wanted(relation, 3))


def make_tester(checks):
    project = os.path.join(checks.folder, "p")
    os.makedirs(project, exist_ok=True)
    return paths.Tester(SimpleNamespace(program=checks.program, without_shortcuts=None, sanitized=None, relation=None,
                                        time_limit=20),
                        project)


def check_choices(checks):
    """Which sources a relation takes; each is the file a.c."""
    tester = make_tester(checks)
    relations = {relation.name: relation for relation in tester.relations}
    header = {b"h.h": b"h\n"}

    def applies(name, source, wanted, words=(b"a.c",), files=None):
        case = Case(dict(files or {}), list(words), b"")
        case.files[b"a.c"] = source
        found = tester.results(relations[name], case)
        checks.check("%s %s %r %r" % (name, "takes" if wanted else "leaves out", source, words),
                     (found is not None) == wanted)
        if found:
            checks.check("%s holds for %r" % (name, source), found[1][0] == found[1][1], repr(found[1]))

    applies("standard-input", b"__FILE__\n", True)
    applies("standard-input", b"__FILE__\n", True, (b"-s", b"n", b"a.c"))
    applies("standard-input", b"__FILE__\n", False, (b"-s", b"", b"a.c"))
    applies("standard-input", b"__FILE__\n", False, (b"a.c", b"-h"))

    applies("final-line-end", b"x\n", True)
    applies("final-line-end", b"x", True)
    applies("final-line-end", b"x // c", True)
    applies("final-line-end", b"x\\\n", True)
    applies("final-line-end", b"", False)
    applies("final-line-end", b"x\n\n", False)
    applies("final-line-end", b"x /* c", False)
    applies("final-line-end", b"x /* c\n", False)
    applies("final-line-end", b"x \\", False)
    applies("final-line-end", b"#if 1\nx", False)
    applies("final-line-end", b"#define f(x) x\nf(1", False)
    applies("final-line-end", b'#include "h.h"\nx\n', True, files=header)
    applies("final-line-end", b'x\n#include "a.c"\n', False)

    applies("cr-lf", b'x "\n"\n', True)
    applies("cr-lf", b"#define A \\\n 1\nA\n", True)
    applies("cr-lf", b"x \\\n y\n", False)
    applies("cr-lf", b"x", False)
    applies("cr-lf", b"A", True, (b"-DA=1\n2", b"a.c"))
    applies("cr", b'x\n"y"\n', True)
    applies("cr", b'x "\n"\n', False)
    applies("cr", b"'\n'\n", False)
    applies("cr", b"// don't\nx\n", True)

    applies("includes", b"x\n", True)
    applies("includes", b"x", False)
    applies("includes", b"x /*\n*/\n", True)
    applies("includes", b"x \\\ny", False)
    applies("includes", b"#if 0\nx\n#else\ny", False)
    applies("includes", b"#if 1\ny\n#endif\n", True)
    applies("includes", b"#define f(x) x\nf(\n1)", True)
    applies("includes", b"/*\n*/ x /* c", False)
    applies("includes", b"__LINE__\n", True)
    applies("includes", b"x\n", False, (b"-s", b"n", b"a.c"))
    applies("includes", b"#error e\nx\n#foo\n#bar\n#else\n", True)


def check_parts(checks):
    """Where a source may be divided."""
    tester = make_tester(checks)

    def parts(source, wanted):
        """Checks which parts there are to choose from."""
        tester.memory.clear()
        watcher = tester.watch(Case({b"a.c": source}, [b"a.c"], b""))
        lines = {position: line for kind, _, position, line in paths.tokens_of(source)[0] if kind == TK_NEWLINE}
        lines[0] = 1
        found = paths.Includes.possible_parts(watcher.events, lines, source)
        checks.check("parts of %r" % source, sorted(set(found)) == sorted(wanted), repr(found))

    parts(b"a\nb\n", [(0, 2), (0, 4), (2, 4)])
    # The group's directives may not be parted from each other; its inside is a part.
    parts(b"#if 1\na\n#endif\n", [(0, 15), (6, 8)])
    parts(b"#if 1\na\n#else\nb\n#endif\n", [(0, 23), (6, 8)])
    parts(b"#if 0\na\n#endif\n", [(0, 15)])
    # Neither may the lines of an invocation, of a comment and of a continued line.
    parts(b"f(\n1)\n", [(0, 3), (0, 6), (3, 6)])
    parts(b"#define f(x) x\nf(\n1)\n", [(0, 15), (0, 21), (15, 21)])
    parts(b"/*\n*/ a\n", [(0, 8)])
    parts(b"a\\\nb\n", [(0, 5)])
    # A name that still looks for its "(" at the end takes the end away.
    parts(b"#define f() x\nf\n", [(0, 14)])


def main():
    parser = argparse.ArgumentParser(description="Checks paths.py.")
    parser.add_argument("--program", required=True)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="qnpp-paths-selftest-") as folder:
        checks = Checks(os.path.abspath(options.program), folder)
        for part in (check_parts, check_choices, check_counts, check_broken_programs):
            part(checks)
        os.chdir("/")
    print("%d checks, %d failures" % (checks.count, checks.failures))
    return 1 if checks.failures else 0


if __name__ == "__main__":
    sys.exit(run_with_large_stack(main))
