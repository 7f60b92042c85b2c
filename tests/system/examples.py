"""An example of the examples/ folder: its commands, and what they must give.

An example is a folder with a README.md, one or more files `command` or `command-NAME`, and beside each the file
`expected` (what the program writes to standard output) or `expected-output` (what the compiled result prints), with the
same ending. A command file holds one command a line, for no shell but with its quotes, beginning with `qnpp`.

The file `reader` may hold what hands the text on to the tool that it is for: commands for a shell, which find the text
in the file `result`, must succeed, and print what is in `expected-reading`, with the same ending again.
"""

import os
import re
import shlex
import shutil
import subprocess
from typing import NamedTuple

from support import run_program


class Failure(Exception):
    """What went wrong, in words for the person who runs the test."""


class MissingTool(Exception):
    """A tool is not installed."""


class Command(NamedTuple):
    name: str
    # The lines of the file, and the words behind `qnpp` of each.
    lines: list
    words: list
    # What is compared: "expected" or "expected-output", and its text.
    kind: str
    expected: bytes
    # What the reader must print.
    expected_reading: str


def commands_of(folder):
    result = []
    for name in sorted(os.listdir(folder)):
        if not re.fullmatch(r"command(-[^.]+)?", name):
            continue
        with open(os.path.join(folder, name), encoding="utf-8") as stream:
            lines = stream.read().splitlines()
        words = [shlex.split(line) for line in lines]
        if not words or any(each[:1] != ["qnpp"] for each in words):
            raise Failure("%s: each line must be a command that begins with qnpp" % name)
        ending = name[len("command"):]
        kinds = [kind for kind in ("expected", "expected-output")
                 if os.path.exists(os.path.join(folder, kind + ending))]
        if len(kinds) != 1:
            raise Failure("%s: there must be either expected%s or expected-output%s" % (name, ending, ending))
        with open(os.path.join(folder, kinds[0] + ending), "rb") as stream:
            expected = stream.read()
        reading = os.path.join(folder, "expected-reading" + ending)
        expected_reading = ""
        if os.path.exists(reading):
            with open(reading, encoding="utf-8") as stream:
                expected_reading = stream.read()
        result.append(Command(name, lines, [each[1:] for each in words], kinds[0], expected, expected_reading))
    if not result:
        raise Failure("there is no command")
    return result


def copy_to(folder, target):
    """A copy to work in, so that what the commands write does not end up in the source tree."""
    shutil.copytree(folder, target)
    return target


def preprocess(program, command, folder):
    """What the commands of a file write to standard output, and the files that they write."""
    output = b""
    files = []
    for line, words in zip(command.lines, command.words):
        run = run_program(program, words, folder)
        if run.status != 0 or run.stderr:
            raise Failure("%s\nended with %s and said:\n%s" % (line, run.status, run.stderr.decode("latin-1")))
        output += run.stdout
        files += [words[index + 1] for index, word in enumerate(words) if word == "-o"]
    return output, files


def compile_files(compiler, files, folder):
    """Compiles to the program `compiled`. Whatever the user's language is, the messages are in English."""
    return subprocess.run([compiler, "-o", "compiled"] + files, cwd=folder, capture_output=True,
                          env=dict(os.environ, LC_ALL="C"), timeout=60)


MISSING = re.compile(r"([^ :\n]+): (?:command )?not found$|No module named '([^']+)'", re.MULTILINE)


def hand_on(output, folder):
    """Gives the text to the tool that it is for, as the example's reader says; None if the example has none."""
    path = os.path.join(folder, "reader")
    if not os.path.exists(path):
        return None
    with open(os.path.join(folder, "result"), "wb") as stream:
        stream.write(output)
    with open(path, encoding="utf-8") as stream:
        commands = stream.read()
    run = subprocess.run(["sh", "-c", commands], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                         env=dict(os.environ, LC_ALL="C.UTF-8"), timeout=60)
    missing = MISSING.search(run.stderr)
    if missing:
        raise MissingTool(missing[1] or missing[2])
    return run
