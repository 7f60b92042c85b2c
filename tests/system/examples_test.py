#!/usr/bin/env python3
"""Runs the commands of one example and compares what comes out; see examples.py.

    examples_test.py --program PATH --example FOLDER [--compiler cc]

The status is 77, which CTest takes for a skipped test, if all is well but a tool is missing that reads a result.
"""

import argparse
import difflib
import os
import re
import subprocess
import sys
import tempfile

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

from examples import (Failure, MissingTool, commands_of, compile_files, copy_to, hand_on,  # noqa: E402
                      preprocess)


def output_of_compiled(compiler, files, folder):
    compiled = compile_files(compiler, files, folder)
    if compiled.returncode != 0 or compiled.stderr:
        raise Failure("the compiler objects:\n" + compiled.stderr.decode("latin-1"))
    run = subprocess.run([os.path.join(folder, "compiled")], capture_output=True, timeout=20)
    if run.returncode != 0:
        raise Failure("the compiled program ended with %d" % run.returncode)
    return run.stdout


SKIPPED = 77


def compare(what, expected, actual):
    if actual != expected:
        lines = difflib.unified_diff(expected.splitlines(), actual.splitlines(), "expected", "actual", lineterm="")
        raise Failure("%s differs:\n%s" % (what, "\n".join(lines)))


def check(command, program, compiler, example):
    with tempfile.TemporaryDirectory(prefix="qnpp-example-") as place:
        folder = copy_to(example, os.path.join(place, "example"))
        output, files = preprocess(program, command, folder)
        if command.kind == "expected-output":
            output = output_of_compiled(compiler, files, folder)
        compare("the result", command.expected.decode("latin-1"), output.decode("latin-1"))
        reading = hand_on(output, folder)
    if reading is None:
        return
    if reading.returncode != 0 or reading.stderr:
        raise Failure("the reader ended with %d and said:\n%s%s" % (reading.returncode, reading.stdout, reading.stderr))
    compare("what the reader prints", command.expected_reading, reading.stdout)


def check_readme(commands, example):
    """People try what the README shows, so each command there must be one that is run here. Where its output goes is up
    to them."""
    with open(os.path.join(example, "README.md"), encoding="utf-8") as stream:
        readme = stream.read()
    known = [line for command in commands for line in command.lines]
    for shown in re.findall(r"^    (qnpp .*?)(?: > \S+)?$", readme, re.MULTILINE):
        if shown not in known:
            raise Failure("README.md shows a command that is not run\n  " + shown)


def main():
    parser = argparse.ArgumentParser(description="Runs the commands of an example.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--example", required=True)
    parser.add_argument("--compiler", default="cc")
    options = parser.parse_args()
    program, example = os.path.abspath(options.program), os.path.abspath(options.example)

    failures = skipped = 0
    try:
        commands = commands_of(example)
        check_readme(commands, example)
    except (Failure, OSError) as failure:
        print("FAILED: %s: %s" % (os.path.basename(example), failure))
        return 1
    for command in commands:
        try:
            check(command, program, options.compiler, example)
        except MissingTool as missing:
            skipped += 1
            print("SKIPPED: %s/%s: %s is not installed" % (os.path.basename(example), command.name, missing))
        except Failure as failure:
            failures += 1
            print("FAILED: %s/%s: %s" % (os.path.basename(example), command.name, failure))
    print("%d of %d commands gave what they should" % (len(commands) - failures, len(commands)))
    return 1 if failures else SKIPPED if skipped else 0


if __name__ == "__main__":
    sys.exit(main())
