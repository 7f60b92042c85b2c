#!/usr/bin/env python3
"""Random projects go through the program, and every mark must stand at its own file and line: see line_truth.py.

    line_truth_test.py --program PATH [--seed N] [--cases N] [--first N] [--keep DIR]

Case number i of a seed is the same on every run.
"""

import argparse
import os
import sys
import tempfile

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

import line_truth  # noqa: E402
from support import found_marks, rerun_hint, run_program, words_of  # noqa: E402


def place(project, folder):
    for each in project.FOLDERS:
        os.makedirs(os.path.join(folder, each), exist_ok=True)
    for path, data in project.files.items():
        with open(os.path.join(folder, path), "wb") as stream:
            stream.write(data)
    if not project.main_path:
        with open(os.path.join(folder, "stdin"), "wb") as stream:
            stream.write(project.stdin)


def problems_of(program, project, folder):
    place(project, folder)
    run = run_program(program, project.words, folder, project.stdin)
    if run.status not in (0, 1):
        return ["it ended with %s: %s" % (run.status, run.stderr.decode("latin-1"))]
    return line_truth.differences(project.expected_marks(), found_marks(run.stdout))


def show(options, number, project, problems):
    print("FAILED: case %d of seed %d" % (number, options.seed))
    for problem in problems[:5]:
        print("  " + problem)
    for path, data in project.files.items():
        print("  file %s\n    %r" % (path, data))
    if project.stdin:
        print("  stdin\n    %r" % project.stdin)
    print("  qnpp " + words_of(project.words))
    print(rerun_hint("--program", options.program, "--seed", str(options.seed), "--first", str(number), "--cases", "1",
                     "--keep", "/tmp/line-truth"))


def main():
    parser = argparse.ArgumentParser(description="Checks the line directives of the output on random projects.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="number of the first case")
    parser.add_argument("--cases", type=int, default=1500)
    parser.add_argument("--keep", help="folder for the projects that fail")
    options = parser.parse_args()
    options.program = os.path.abspath(options.program)

    shape_counts = {}
    marks = failures = 0
    for number in range(options.first, options.first + options.cases):
        project = line_truth.project_of(options.seed, number, shape_counts)
        with tempfile.TemporaryDirectory(prefix="qnpp-lines-") as folder:
            problems = problems_of(options.program, project, folder)
        marks += len(project.expected_marks())
        if problems:
            failures += 1
            show(options, number, project, problems)
            if options.keep:
                place(project, os.path.join(options.keep, "seed-%d-case-%d" % (options.seed, number)))
            if failures == 3:
                break
    print("%d projects with %d marks, %d of them wrong" % (number + 1 - options.first, marks, failures))
    missing = [shape.__name__ for _, shape in line_truth.FileWriter.SHAPES if shape.__name__ not in shape_counts]
    if missing and options.cases >= 100:
        print("FAILED: no project holds a kept " + ", ".join(missing))
        failures += 1
    return 1 if failures or marks == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
