#!/usr/bin/env python3
"""Other people's text: files of this repository and the C and C++ headers of this machine go through the program.

    foreign_text_test.py --program PATH [--texts N] [--jobs N] [--seed N] [--only FILE]... [--time-limit S]

Whatever they hold, the program must end by itself, in time, with status 0 or 1; and lines with marks that are put in
between (see safe_places.py) must stand in the output under their own file and line. N of the files and N of the headers
are taken, which ones comes from the seed; without --texts it is all of them. For a program built with sanitizers give more
time: their findings count as failures.

A mark of the output is not looked at in two cases, which line_truth.py explains: between a _Pragma and the next line
directive, and behind white space with a continuation at the start of a text line.
"""

import argparse
import glob
import multiprocessing
import os
import random
import re
import signal
import sys
import time

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

import safe_places  # noqa: E402
from support import directive_before, found_marks, place_of, rerun_hint, run_program  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
REPOSITORY = os.path.dirname(os.path.dirname(HERE))
# Inputs of other tests, some of them made to end the program by a signal, and what is built.
NOT_SOURCES = re.compile(r"(^|/)(\.git|tests/golden|(tests|fuzz)/corpus|build[^/]*|out|__pycache__)/")
HEADER_FOLDER = "/usr/include"
MOST_MARKS = 25
OPTIONS = None


def files_below(folder):
    for path, folders, names in os.walk(folder):
        folders.sort()
        for name in sorted(names):
            full = os.path.join(path, name)
            if os.path.isfile(full):
                yield full


def repository_files():
    return [path for path in files_below(REPOSITORY) if not NOT_SOURCES.search(os.path.relpath(path, REPOSITORY))]


def search_words():
    """Where the compilers of this machine look for headers, and some of the names that they define themselves."""
    folders = [HEADER_FOLDER, REPOSITORY]
    for pattern in ("/usr/include/c++/*", "/usr/include/*/c++/*", "/usr/include/*-linux-gnu*", "/usr/include/llvm-*",
                    "/usr/lib/gcc/*/*/include"):
        folders += sorted(glob.glob(pattern))
    names = ["__GNUC__=12", "__GNUC_MINOR__=2", "__cplusplus=201703L", "__linux__", "__x86_64__", "__LP64__",
             "__CHAR_BIT__=8", "__SIZEOF_INT__=4", "__SIZEOF_LONG__=8", "__SIZEOF_POINTER__=8",
             "__INT_MAX__=0x7fffffff"]
    return ["-I" + folder for folder in folders] + ["-D" + name for name in names]


class Result:
    def __init__(self, path, words):
        self.path = path
        self.words = words
        self.problem = ""
        self.marks = 0
        self.unclear_marks = 0
        self.has_divided = False


# Between a line directive and a mark: the line of a _Pragma (the directive #pragma writes two blanks), or white space
# with a continuation.
UNCLEAR = re.compile(rb"^#pragma [^ \t]|\A[ \t\v\f]*\\\r?$", re.MULTILINE)


def check_marks(result, run, lines):
    name = os.fsencode(result.path)
    found = [each for each in found_marks(run.stdout) if each.mark in lines]
    for each in found:
        directive = directive_before(run.stdout, each.offset)
        if directive and UNCLEAR.search(run.stdout[directive.end:each.offset]):
            result.unclear_marks += 1
            continue
        result.marks += 1
        if each.place != (name, lines[each.mark]) and not result.problem:
            result.problem = "%s stands in line %d, but output line %d stands for %s" % (
                each.mark.decode(), lines[each.mark], each.number, each.place)
    marks = [each.mark for each in found]
    if len(set(marks)) != len(marks) and not result.problem:
        result.problem = "a mark comes out twice"


DIVIDING_CONDITION = re.compile(rb"^[ \t]*#[ \t]*(?:el)?if(?:[^\n]|\\\n)*[/%]", re.MULTILINE)


def has_divided(run, path, text):
    """True if the run ended as it must at a zero divisor: by that signal, in a file that holds a condition with a
    division behind the last line of the output. A name that is not defined is 0, and many are not."""
    if run.status != -signal.SIGFPE:
        return False
    place = place_of(run.stdout, len(run.stdout))
    if os.fsdecode(place.name) != path:
        with open(place.name, "rb") as stream:
            text = stream.read()
    return any(text.count(b"\n", 0, match.end()) + 1 >= place.line for match in DIVIDING_CONDITION.finditer(text))


def check(job):
    path, words, seed = job
    result = Result(path, words)
    with open(path, "rb") as stream:
        text = stream.read()
    text, lines = safe_places.marked(text, random.Random("%d:%s" % (seed, path)), MOST_MARKS)
    # Standard input with the name of the file: the folder of the file is searched as if it were read itself.
    run = run_program(OPTIONS.program, words + ["-s", path], "/", text, OPTIONS.time_limit)
    if run.status is None:
        result.problem = "it took longer than %d seconds" % OPTIONS.time_limit
    elif has_divided(run, path, text):
        result.has_divided = True
    elif run.status not in (0, 1):
        summary = re.search(rb"^SUMMARY: .*", run.stderr, re.MULTILINE)
        result.problem = "it ended with %d: %s" % (
            run.status, (summary[0] if summary else run.stderr[-500:]).decode("latin-1"))
    if not result.problem:
        check_marks(result, run, lines)
    return result


def sample(files, options):
    random.Random(options.seed).shuffle(files)
    return files[:options.texts]


def jobs_of(options):
    """Every file twice, without and with folders to find headers in."""
    files = options.only or sample(repository_files(), options) + sample(list(files_below(HEADER_FOLDER)), options)
    search = search_words()
    return [(path, words, options.seed) for path in files for words in ([], search)]


def main():
    global OPTIONS
    parser = argparse.ArgumentParser(description="Runs the program on the headers of this machine.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--texts", type=int, help="so many files of either sort, instead of all")
    parser.add_argument("--time-limit", type=int, default=5, help="seconds of processor time for one file")
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", action="append", help="take this file instead, with the same marks as in a full run")
    OPTIONS = options = parser.parse_args()
    options.program = os.path.abspath(options.program)

    started = time.monotonic()
    jobs = jobs_of(options)
    with multiprocessing.get_context("fork").Pool(options.jobs) as pool:
        results = pool.map(check, jobs, chunksize=4)
    failed = [result for result in results if result.problem]
    for result in failed[:20]:
        print("FAILED: %s%s: %s" % (result.path, " with -I" if result.words else "", result.problem))
        print(rerun_hint("--program", options.program, "--seed", str(options.seed), "--only", result.path))
    marks = sum(result.marks for result in results)
    print("%d runs in %.0f seconds, %d failed; %d marks checked, %d unclear; %d ended at a zero divisor" % (
        len(results), time.monotonic() - started, len(failed), marks,
        sum(result.unclear_marks for result in results), sum(result.has_divided for result in results)))
    return 1 if failed or marks == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
