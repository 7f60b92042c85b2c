#!/usr/bin/env python3
"""Differential test: random projects are run through the program and through the model, and standard output, standard
error, exit status and the `-o` file must agree byte for byte.

    compare.py --program PATH [--seed N] [--cases N] [--seconds S] [--first N] [--differences N]
               [--keep DIR] [--case DIR]

Case number i of a seed is the same on every run, so a difference is repeated by the seed and the number.  On a
difference the case is made smaller as long as the two still disagree, printed, and, with --keep, written to a folder
that --case runs again.
"""

import argparse
import difflib
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

import model  # noqa: E402
from generator import OUTPUT_FILE, Case, Generator  # noqa: E402


class Skipped(Exception):
    """The case is too large for the model's budget."""


class Runner:
    TIME_LIMIT = 20

    def __init__(self, program, folder):
        self.program = os.path.abspath(program)
        self.folder = folder

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
            return kind(case.words, lambda: case.stdin, 60000, 200000, 12)
        except (model.BudgetExceeded, RecursionError):
            raise Skipped()

    def run_program(self, case, environment=None):
        """What the program makes of the case that lies in the folder."""
        try:
            done = subprocess.run([self.program] + case.words, input=case.stdin, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, cwd=self.folder, timeout=self.TIME_LIMIT, env=environment)
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
            if piece.isalnum():
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


def compare(options, folder):
    runner = Runner(options.program, folder)
    if options.case:
        case = load(os.path.abspath(options.case))
        expected, actual = runner.both(case)
        show(case, expected, actual)
        print("the program differs" if expected != actual else "no difference")
        return 1 if expected != actual else 0
    keep_folder = os.path.abspath(options.keep) if options.keep else None
    started = time.monotonic()
    done = skipped = differences = 0
    number = options.first
    while number < options.first + options.cases:
        if options.seconds and time.monotonic() - started > options.seconds:
            break
        case = Generator(random.Random("%d:%d" % (options.seed, number))).project(os.fsencode(folder))
        try:
            expected, actual = runner.both(case)
        except Skipped:
            skipped += 1
            number += 1
            continue
        done += 1
        if expected != actual:
            differences += 1
            small = minimise(case, runner, options.minimise_seconds)
            try:
                expected, actual = runner.both(small)
            except Skipped:
                pass
            print("DIFFERENCE in case %d of seed %d" % (number, options.seed))
            show(small, expected, actual)
            print("  again: %s --program %s --seed %d --first %d --cases 1" % (
                sys.argv[0], options.program, options.seed, number), flush=True)
            if keep_folder:
                keep(small, os.path.join(keep_folder, "seed-%d-case-%d" % (options.seed, number)))
            if differences >= options.differences:
                break
        number += 1
    print("%d cases compared, %d skipped as too large, %d differences" % (done, skipped, differences))
    if done == 0:
        print("no case was compared")
        return 1
    return 1 if differences else 0


def make_parser(description):
    """A parser of the options that every comparison on random projects has."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--program", required=True)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cases", type=int, default=1000)
    parser.add_argument("--first", type=int, default=0, help="number of the first case")
    parser.add_argument("--seconds", type=float, default=0, help="stop after this time")
    parser.add_argument("--differences", type=int, default=1, help="stop after this many differences")
    parser.add_argument("--minimise-seconds", type=float, default=30)
    parser.add_argument("--keep", help="folder for the reduced cases")
    parser.add_argument("--case", help="run one kept case")
    return parser


def main():
    parser = make_parser("Compares the program with the model on random projects.")
    options = parser.parse_args()
    options.program = os.path.abspath(options.program)
    with tempfile.TemporaryDirectory(prefix="qnpp-compare-") as folder:
        # A project stands two folders deep, so that "../a.h" stays inside.
        project = os.path.join(folder, "p")
        os.makedirs(project)
        try:
            return compare(options, project)
        finally:
            os.chdir("/")


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
    sys.exit(run_with_large_stack(main))
