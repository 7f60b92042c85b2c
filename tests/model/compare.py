#!/usr/bin/env python3
"""Differential test: random projects are run through the program and through the model, and standard output, standard
error, exit status and the `-o` file must agree byte for byte.

    compare.py --program PATH [--seed N] [--cases N] [--seconds S] [--first N] [--differences N] [--jobs N]
               [--time-limit S] [--keep DIR] [--case DIR]

Any build of the program will do; one with sanitizers wants a longer --time-limit for a run.  Case number i of a seed is
the same on every run, so a difference is repeated by the seed and the number.  On a difference the case is made smaller
as long as the two still disagree, printed with the command that runs it again, and, with --keep, written to a folder
that --case runs again.
"""

import argparse
import collections
import difflib
import multiprocessing
import os
import random
import shutil
import subprocess
import sys
import tempfile
import threading
import time

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True
sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, "system"))

import model  # noqa: E402
from generator import OUTPUT_FILE, Case, Generator  # noqa: E402
from support import environment  # noqa: E402


class Skipped(Exception):
    """The case is too large for the model's budget."""


class Runner:
    # What the model may spend on a project.
    STEPS = 60000
    BYTES = 2000000
    FILE_DEPTH = 12

    def __init__(self, program, folder, time_limit):
        self.program = os.path.abspath(program)
        self.folder = folder
        self.time_limit = time_limit
        self.environment = environment()

    def place(self, case):
        for entry in os.listdir(self.folder):
            path = os.path.join(self.folder, entry)
            shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)
        for name, data in case.files.items():
            path = os.path.join(os.fsencode(self.folder), name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as stream:
                stream.write(data)
        os.chdir(self.folder)

    def take_output_file(self):
        try:
            with open(OUTPUT_FILE, "rb") as stream:
                data = stream.read()
            os.remove(OUTPUT_FILE)
            return data
        except OSError:
            return None

    def run_model(self, case, kind=model.Run):
        """The model's run of a case; a project that is too large for it is skipped."""
        self.place(case)
        try:
            return kind(case.words, lambda: case.stdin, self.STEPS, self.BYTES, self.FILE_DEPTH)
        except (model.BudgetExceeded, RecursionError):
            raise Skipped()

    def run_program(self, case):
        """What the program makes of the case that lies in the folder."""
        try:
            done = subprocess.run([self.program] + case.words, input=case.stdin, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, cwd=self.folder, timeout=self.time_limit,
                                  env=self.environment)
            result = {"stdout": done.stdout, "stderr": done.stderr, "status": done.returncode}
        except subprocess.TimeoutExpired:
            result = {"stdout": b"", "stderr": b"", "status": "time limit"}
        result["-o file"] = self.take_output_file()
        return result

    def both(self, case):
        """The results of the model and of the program as dictionaries."""
        run = self.run_model(case)
        expected = {"stdout": run.stdout, "stderr": run.stderr, "status": run.status,
                    "-o file": self.take_output_file()}
        return expected, self.run_program(case)

    def differs(self, case):
        try:
            expected, actual = self.both(case)
        except Skipped:
            return False
        return expected != actual


def pieces_of(text, by_line):
    """The text cut into lines or into tokens."""
    if by_line:
        return text.splitlines(True)
    # Long tokens (comments, literals) are cut into bytes as well, so that they can shrink.
    lexer = model.Lexer(text, model.Streams())
    pieces = []
    start = 0
    while lexer.next() != model.TK_END:
        if lexer.position > start:
            piece = text[start:lexer.position]
            if piece.isalnum() and len(piece) < 40:
                pieces.append(piece)
            else:
                pieces.extend(bytes([code]) for code in piece)
            start = lexer.position
    if start < len(text):
        pieces.extend(bytes([code]) for code in text[start:])
    return pieces


def reduce_pieces(pieces, still_differs, deadline):
    """Leaves out ever smaller runs of pieces as long as the difference stays."""
    size = max(1, len(pieces) // 2)
    while True:
        position = 0
        shrunk = False
        while position < len(pieces) and time.monotonic() < deadline:
            attempt = pieces[:position] + pieces[position + size:]
            if still_differs(attempt):
                pieces = attempt
                shrunk = True
            else:
                position += size
        if time.monotonic() >= deadline or (size == 1 and not shrunk):
            return pieces
        size = max(1, size // 2) if not shrunk or size > 1 else 1


def minimise(case, runner, seconds):
    deadline = time.monotonic() + seconds
    changed = True
    while changed and time.monotonic() < deadline:
        before = repr((case.files, case.words, case.stdin))
        for name in sorted(case.files):
            files = dict(case.files)
            del files[name]
            attempt = Case(files, case.words, case.stdin)
            if runner.differs(attempt):
                case = attempt
        words = reduce_pieces(case.words, lambda w: runner.differs(Case(case.files, w, case.stdin)), deadline)
        case = Case(case.files, words, case.stdin)
        for by_line in (True, False):
            for part in case.texts():
                pieces = reduce_pieces(pieces_of(case.text(part), by_line),
                                       lambda p: runner.differs(case.with_text(part, b"".join(p))), deadline)
                case = case.with_text(part, b"".join(pieces))
        changed = repr((case.files, case.words, case.stdin)) != before
    return case


def show_case(case):
    print("  words %r" % case.words)
    for name, data in sorted(case.files.items()):
        print("  file %s\n    %r" % (os.fsdecode(name), data))
    if case.stdin:
        print("  stdin\n    %r" % case.stdin)


def show_results(expected, actual):
    for what in expected:
        if expected[what] != actual[what]:
            print("  %s\n    expected %r\n    actual   %r" % (what, expected[what], actual[what]))
            if isinstance(expected[what], bytes) and isinstance(actual[what], bytes) and len(expected[what]) > 300:
                for line in difflib.unified_diff(expected[what].decode("latin-1").split("\n"),
                                                 actual[what].decode("latin-1").split("\n"), lineterm="", n=1):
                    print("    | " + line)


def show(case, expected, actual):
    show_case(case)
    show_results(expected, actual)


def escape_word(word):
    result = ""
    for code in word:
        special = {10: "\\n", 9: "\\t", 13: "\\r", 92: "\\\\"}
        result += special.get(code) or (chr(code) if 32 <= code < 127 else "\\x%02x" % code)
    return result


def unescape_word(line):
    result = b""
    index = 0
    while index < len(line):
        if line[index] != "\\":
            result += line[index].encode()
            index += 1
        elif line[index + 1] == "x":
            result += bytes([int(line[index + 2:index + 4], 16)])
            index += 4
        else:
            result += {"n": b"\n", "t": b"\t", "r": b"\r", "\\": b"\\"}[line[index + 1]]
            index += 2
    return result


def keep(case, folder):
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    for name, data in list(case.files.items()) + [(b"stdin", case.stdin)]:
        path = os.path.join(folder, os.fsdecode(name))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as stream:
            stream.write(data)
    with open(os.path.join(folder, "args"), "w") as stream:
        stream.write("".join(escape_word(word) + "\n" for word in case.words))


def load(folder):
    files = {}
    for path, _, names in os.walk(folder):
        for name in names:
            full = os.path.join(path, name)
            with open(full, "rb") as stream:
                files[os.fsencode(os.path.relpath(full, folder))] = stream.read()
    words = [unescape_word(line) for line in files.pop(b"args", b"a.c\n").decode().splitlines()]
    stdin = files.pop(b"stdin", b"")
    return Case(files, words, stdin)


def run_kept(options, folder):
    runner = Runner(options.program, folder, options.time_limit)
    expected, actual = runner.both(load(os.path.abspath(options.case)))
    show(load(os.path.abspath(options.case)), expected, actual)
    print("the program differs" if expected != actual else "no difference")
    return 1 if expected != actual else 0


def report(options, number, case, runner):
    """Prints a case that differs, made small, and keeps it."""
    small = minimise(case, runner, options.minimise_seconds)
    try:
        expected, actual = runner.both(small)
    except Skipped:
        return
    print("DIFFERENCE in case %d of seed %d" % (number, options.seed))
    show(small, expected, actual)
    print("  again: %s --program %s --time-limit %g --seed %d --first %d --cases 1" % (
        sys.argv[0], options.program, options.time_limit, options.seed, number), flush=True)
    if options.keep:
        keep(small, os.path.join(options.keep, "seed-%d-case-%d" % (options.seed, number)))


def compare_slice(options, folder, first):
    """Compares every --jobs-th case from the first one on; returns the counts of what happened."""
    runner = Runner(options.program, folder, options.time_limit)
    counts = collections.Counter()
    started = time.monotonic()
    for number in range(first, options.first + options.cases, options.jobs):
        if options.seconds and time.monotonic() - started > options.seconds:
            break
        case = Generator(random.Random("%d:%d" % (options.seed, number))).project(os.fsencode(folder))
        try:
            expected, actual = runner.both(case)
        except Skipped:
            counts["skipped"] += 1
            counts.update("skipped, " + trait for trait in case.traits)
            continue
        counts["done"] += 1
        counts.update(case.traits)
        if expected != actual:
            report(options, number, case, runner)
            counts["differences"] += 1
            if counts["differences"] >= options.differences:
                break
    return counts


def compare_in_folder(options, first):
    """`compare_slice` in a folder of its own."""
    with tempfile.TemporaryDirectory(prefix="qnpp-compare-") as folder:
        # A project stands two folders deep, so that "../a.h" stays inside.
        project = os.path.join(folder, "p")
        os.makedirs(project)
        try:
            return run_kept(options, project) if options.case else compare_slice(options, project, first)
        finally:
            os.chdir("/")


def compare_in_process(options, first):
    return run_with_large_stack(lambda: compare_in_folder(options, first))


def compare(options):
    firsts = range(options.first, options.first + options.jobs)
    with multiprocessing.Pool(options.jobs) as pool:
        results = pool.starmap(compare_in_process, [(options, first) for first in firsts], 1)
    if not all(isinstance(counts, collections.Counter) for counts in results):
        print("the comparison itself has failed")
        return 1
    counts = sum(results, collections.Counter())
    print("%d cases compared, %d skipped as too large (%.1f %%), %d differences" % (
        counts["done"], counts["skipped"], 100 * counts["skipped"] / max(1, counts["done"] + counts["skipped"]),
        counts["differences"]))
    print("  " + ", ".join("%s %d (%d skipped)" % (trait, counts[trait], counts["skipped, " + trait])
                           for trait in Generator.TRAITS))
    if counts["done"] == 0:
        print("no case was compared")
    return 1 if counts["differences"] or counts["done"] == 0 else 0


def make_parser(description):
    """A parser of the options that every comparison on random projects has."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--program", required=True)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cases", type=int, help="stop after so many; 1000 without a time")
    parser.add_argument("--first", type=int, default=0, help="number of the first case")
    parser.add_argument("--seconds", type=float, default=0, help="stop after this time")
    parser.add_argument("--differences", type=int, default=1, help="stop after this many differences")
    parser.add_argument("--minimise-seconds", type=float, default=30)
    parser.add_argument("--time-limit", type=float, default=20, help="seconds for one run of the program")
    parser.add_argument("--keep", type=os.path.abspath, help="folder for the reduced cases")
    parser.add_argument("--case", help="run one kept case")
    return parser


def read_options(parser, words=None):
    options = parser.parse_args(words)
    if options.cases is None:
        options.cases = sys.maxsize if options.seconds else 1000
    options.program = os.path.abspath(options.program)
    return options


def main():
    parser = make_parser("Compares the program with the model on random projects.")
    parser.add_argument("--jobs", type=int, default=1, help="cases to run at the same time")
    options = read_options(parser)
    return compare_in_process(options, 0) if options.case else compare(options)


def run_with_large_stack(function):
    """Runs a function in a thread that has the stack for deeply nested input; returns what it returns."""
    sys.setrecursionlimit(1000000)
    threading.stack_size(1 << 29)
    results = []
    worker = threading.Thread(target=lambda: results.append(function()))
    worker.start()
    worker.join()
    return results[0] if results else 70


if __name__ == "__main__":
    sys.exit(main())
