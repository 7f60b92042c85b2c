#!/usr/bin/env python3
"""Compares macro expansion with a C compiler's: random programs go through qnpp, or its model, and through `cc -E`, and
their tokens must be the same.

    peers.py (--program PATH | --model) [--cc COMMAND] [--seed N] [--cases N] [--first N]

Only programs are written about which C and qnpp agree.  These are left out, because they need not be the same:

  - `#`, `##`, `__LINE__`, directives in arguments, arguments that are empty or become so, and numbers with points or
    letters, where qnpp differs from C on purpose;
  - a function-like name that takes its "(" or ")" from outside the replacement list or the argument in which it
    stands, where C says that either result is right: one without a "(" has a ";" behind it, and brackets are in pairs;
  - neighbours that would be another token if they were written together, which a compiler keeps apart.

Program number i of a seed is the same on every run.  The first program that differs is printed with the lines that
it takes, and ends the run.
The exit status is 77 if there is no compiler.
"""

import argparse
import os
import random
import re
import shutil
import subprocess
import sys
import time

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

import model  # noqa: E402
from compare import reduce_pieces, run_with_large_stack  # noqa: E402

SKIPPED = 77
# Enough to spread the start of a process over, and few enough that no run is long.
BATCH = 100
TIME_LIMIT = 10
# What the model may spend on a program.
STEPS = 60000


class Failed(Exception):
    """A side has failed on a program that is none of the ones left out."""


class ProgramWriter:
    """Writes one random program: macros that name each other, and lines that invoke them."""

    NAMES = ["A", "B", "C", "D", "f", "g", "h", "k"]
    PARAMETERS = ["x", "y", "z", "x", "y", "z", "A", "g"]
    PLAIN = ["1", "2", "n", "m", "+", "-", "*", ";", "!", "[", "]", '"s"', "'c'", "if", "line"]

    def __init__(self, chance):
        self.chance = chance
        # The number of parameters of a function-like macro, None for the others.
        self.counts = {}
        # The object-like macros that are defined up to the end: where one is left, it has been hidden.
        self.lasting = set()

    def program(self):
        """The lines of a program."""
        names = self.chance.sample(self.NAMES, self.chance.randint(2, 6))
        for name in names:
            self.counts[name] = None if name.isupper() else self.chance.choice([0, 1, 1, 1, 2, 2, 3])
        self.lasting = set(name for name in names if self.counts[name] is None)
        lines = ["#define E"] + [self.definition(name) for name in names]
        for _ in range(self.chance.randint(1, 4)):
            lines.append(self.items([], 0, self.chance.randint(1, 3), "\n") + " ;")
            if self.chance.random() < 0.15:
                changed = self.chance.choice(names)
                lines.append("#undef " + changed)
                self.lasting.discard(changed)
                if self.chance.random() < 0.7:
                    lines.append(self.definition(changed))
        return lines

    def definition(self, name):
        count = self.counts[name]
        if count is None:
            return "#define %s %s" % (name, self.items([], 0, self.chance.randint(1, 3)))
        parameters = []
        while len(parameters) < count:
            parameter = self.chance.choice(self.PARAMETERS)
            if parameter not in parameters:
                parameters.append(parameter)
        return "#define %s(%s) %s" % (name, ", ".join(parameters), self.items(parameters, 0, self.chance.randint(1, 3)))

    def items(self, parameters, depth, count, blank=" "):
        """Items with white space between them; `blank` may stand for the usual one."""
        space = " " if self.chance.random() < 0.8 else blank
        return space.join(self.item(parameters, depth, blank) for _ in range(count))

    def item(self, parameters, depth, blank):
        """An item that does not expand to nothing: every replacement list holds one, but for that of E, which is
        written beside another item only."""
        roll = self.chance.random()
        if roll < 0.03:
            return self.chance.choice(["E " + self.item(parameters, depth, blank),
                                       self.item(parameters, depth, blank) + " E"])
        if parameters and roll < 0.35:
            return self.chance.choice(parameters)
        if roll < 0.80:
            return self.invocation(parameters, depth, blank)
        if roll < 0.86 and depth < 2:
            inside = [self.items(parameters, depth + 1, self.chance.choice([1, 1, 2]), blank)
                      for _ in range(self.chance.choice([1, 1, 2]))]
            return "(" + " , ".join(inside) + ")"
        return self.chance.choice(self.PLAIN)

    def invocation(self, parameters, depth, blank):
        name = self.chance.choice(sorted(self.counts))
        count = self.counts[name]
        if name in parameters or count is None:
            return name
        if self.chance.random() < 0.1 or depth > 1:
            return name + " ;"
        # F() has no argument, and a "," before the ")" adds none, so no argument is empty.
        arguments = [self.items(parameters, depth + 1, self.chance.choice([1, 1, 1, 2]), blank) for _ in range(count)]
        return name + self.chance.choice(["", "", " "]) + "(" + self.chance.choice([", ", " ,"]).join(arguments) + ")"


def tokens_of(text):
    """Names, numbers, literals and single characters; line directives are left out."""
    text = re.sub(r"(?m)^#line .*\n", "", text)
    return re.findall(r'"[^"]*"|\'[^\']*\'|\w+|\S', text)


def end_mark(number):
    return "@ %d @" % number


def batch_text(programs):
    """The programs in one text, each followed by a mark and by the end of all its macros."""
    lines = []
    for number, program in enumerate(programs):
        lines += program + [end_mark(number)] + ["#undef " + name for name in ["E"] + ProgramWriter.NAMES]
    return "\n".join(lines) + "\n"


def divide(tokens, count):
    """The tokens of each program of a batch."""
    parts = []
    begin = 0
    for number in range(count):
        mark = tokens_of(end_mark(number))
        end = next((i for i in range(begin, len(tokens)) if tokens[i:i + len(mark)] == mark), None)
        if end is None:
            raise Failed("the result has no end of program %d of the batch" % number)
        parts.append(tokens[begin:end])
        begin = end + len(mark)
    return parts


class Peers:
    def __init__(self, options):
        self.options = options

    def run_command(self, command, programs):
        """The tokens of each program; a program that does not come to an end has none but a remark."""
        try:
            done = subprocess.run(command, input=batch_text(programs).encode(), stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, timeout=TIME_LIMIT, check=False)
        except subprocess.TimeoutExpired:
            if len(programs) == 1:
                return [["(time limit)"]]
            half = len(programs) // 2
            return self.run_command(command, programs[:half]) + self.run_command(command, programs[half:])
        if done.returncode != 0 or done.stderr:
            raise Failed("%s: status %d\n%s" % (command[0], done.returncode, done.stderr.decode()))
        return divide(tokens_of(done.stdout.decode()), len(programs))

    def compiler(self, programs):
        # Nothing is defined or included but what the programs say.
        return self.run_command([self.options.cc, "-E", "-P", "-x", "c", "-w", "-undef", "-nostdinc", "-"], programs)

    def ours(self, programs):
        """The tokens of each program; None for those that are too large for the model."""
        if not self.options.model:
            return self.run_command([self.options.program], programs)
        return [self.model(program) for program in programs]

    @staticmethod
    def model(program):
        text = ("\n".join(program) + "\n").encode()
        try:
            run = model.Run([], lambda: text, STEPS, 1000000)
        except (model.BudgetExceeded, RecursionError):
            return None
        if run.stderr:
            raise Failed("the model: " + run.stderr.decode() + text.decode())
        return tokens_of(run.stdout.decode())

    def differs(self, program):
        try:
            ours = self.ours([program])[0]
            return ours is not None and ours != self.compiler([program])[0]
        except Failed:
            # A part of a program may well be one that is left out.
            return False

    def show(self, number, program):
        program = reduce_pieces(program, self.differs, time.monotonic() + 10)
        print("DIFFERENCE in program %d of seed %d" % (number, self.options.seed))
        for line in program:
            print("  " + line.replace("\n", "\n  "))
        print("  expected %s\n  actual   %s" % (" ".join(self.compiler([program])[0]),
                                                " ".join(self.ours([program])[0])))
        print("  again: %s %s --cc %s --seed %d --first %d --cases 1" % (
            sys.argv[0], "--model" if self.options.model else "--program " + self.options.program, self.options.cc,
            self.options.seed, number))

    def compare(self):
        compared = dropped = differences = tokens = left = 0
        end = self.options.first + self.options.cases
        for first in range(self.options.first, end, BATCH):
            numbers = range(first, min(first + BATCH, end))
            writers = [ProgramWriter(random.Random("%d:%d" % (self.options.seed, number))) for number in numbers]
            programs = [writer.program() for writer in writers]
            for number, writer, program, expected, actual in zip(numbers, writers, programs, self.compiler(programs),
                                                                 self.ours(programs)):
                if actual is None:
                    dropped += 1
                    continue
                compared += 1
                tokens += len(expected)
                left += bool(writer.lasting.intersection(expected))
                if expected != actual:
                    differences += 1
                    if differences == 1:
                        self.show(number, program)
            if differences:
                break
        print("%d programs compared, with %d tokens; %d dropped as too large; in %d a name is left hidden; "
              "%d differences" % (compared, tokens, dropped, left, differences))
        # A check that hardly ever sees a hidden name says little.
        return 1 if differences or left * 4 < compared or compared == 0 else 0


def main():
    parser = argparse.ArgumentParser(description="Compares macro expansion with that of a C compiler.")
    parser.add_argument("--program", type=os.path.abspath)
    parser.add_argument("--model", action="store_true", help="compare the model instead of a program")
    parser.add_argument("--cc", default="cc", help="the compiler")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cases", type=int, default=1000)
    parser.add_argument("--first", type=int, default=0, help="number of the first program")
    options = parser.parse_args()
    if bool(options.program) == options.model:
        parser.error("either --program or --model is needed")
    if not shutil.which(options.cc):
        print("SKIPPED: there is no %s to compare with" % options.cc)
        return SKIPPED
    try:
        return Peers(options).compare()
    except Failed as failure:
        print(failure)
        return 1


if __name__ == "__main__":
    sys.exit(run_with_large_stack(main))
