#!/usr/bin/env python3
"""Runs the golden cases against a program and compares what it writes byte for byte.

A CASE is an area, a case as "area/name", or any part of such a name. Without one, all cases are run. The exit status is
1 if a case fails.
"""

import argparse
import collections
import concurrent.futures
import difflib
import os
import pathlib
import re
import resource
import selectors
import shlex
import signal
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True

from golden_cases import (CaseError, EXPECTED, find_cases, fits_in_a_file, read_case, write_case,  # noqa: E402
                          write_files)

CASES = pathlib.Path(__file__).resolve().parent.parent / "golden"
# The variables that pass from the developer's environment to the program: what finding the program and its libraries
# takes, and the settings of the sanitizers and of the coverage tools.
PASSED_VARIABLES = ("PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "LLVM_PROFILE_FILE")
# No case needs more. A program that writes without end reaches it long before its time is up.
MOST_BYTES = 64 << 20
# Beyond these a difference is no longer read by anyone: lines of it, and lines behind the first that differs.
MOST_LINES_SHOWN = 120
MOST_LINES_COMPARED = 2000


# ---- Running a case ----


def run_case(case, command, seconds=20):
    """Runs the command, with the words of the case behind it, on the inputs of the case. Returns the outcome, in the
    terms in which a case states what it expects, and why the program had to be killed."""
    shared_memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="qnpp-golden-", dir=shared_memory) as scratch:
        folder = pathlib.Path(scratch, "work")
        folder.mkdir()
        write_files(folder, case.inputs)
        stdin = pathlib.Path(scratch, "stdin")
        stdin.write_bytes(case.parts.get("stdin", b""))
        outcome, killed_by = run_command([*command, *case.words], folder, stdin, seconds)
        left = {path.relative_to(folder).as_posix(): path.read_bytes() for path in folder.rglob("*") if path.is_file()}
    for name, data in sorted(left.items()):
        # An input that is as it was says nothing, unless the case expects just that.
        if data != case.inputs.get(name) or EXPECTED + name in case.expectation:
            outcome[EXPECTED + name] = data
    return outcome, killed_by


def run_command(command, folder, stdin, seconds):
    passed = {name: os.environ[name] for name in PASSED_VARIABLES if name in os.environ}
    # __DATE__, __TIME__ and the messages of the C library must not depend on the machine.
    environment = {**passed, "LC_ALL": "C", "TZ": "UTC"}
    with open(stdin, "rb") as stream:
        try:
            process = subprocess.Popen(command, cwd=folder, env=environment, stdin=stream, stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE, start_new_session=True)
        except OSError as error:
            raise CaseError(f"cannot start {command[0]}: {error.strerror}") from error
    with process:
        stdout, stderr, killed_by = collect(process, seconds)
    ended = process.returncode
    status = str(ended) if ended >= 0 else signal.Signals(-ended).name
    return {"stdout": stdout, "stderr": stderr, "status": status.encode()}, killed_by


def collect(process, seconds):
    """What the process writes. It is killed, with all that it has started, if it does not come to its end."""
    deadline = time.monotonic() + seconds
    too_long = f"it ran for more than {seconds} s"
    texts = {process.stdout: bytearray(), process.stderr: bytearray()}
    killed_by = ""
    with selectors.PollSelector() as selector:
        for stream in texts:
            selector.register(stream, selectors.EVENT_READ)
        while selector.get_map() and not killed_by:
            for key, _ in selector.select(max(0, deadline - time.monotonic())):
                piece = os.read(key.fd, 1 << 16)
                texts[key.fileobj] += piece
                if not piece:
                    selector.unregister(key.fileobj)
            if time.monotonic() >= deadline:
                killed_by = too_long
            elif sum(map(len, texts.values())) > MOST_BYTES:
                killed_by = f"it wrote more than {MOST_BYTES} bytes"
    if not killed_by:
        try:
            process.wait(max(0, deadline - time.monotonic()))
        except subprocess.TimeoutExpired:
            killed_by = too_long
    if killed_by:
        os.killpg(process.pid, signal.SIGKILL)
    return bytes(texts[process.stdout]), bytes(texts[process.stderr]), killed_by


# ---- What differs ----


def compare(expected, outcome):
    """Every difference, for the developer to read. Empty: the case holds."""
    report = ""
    for name in sorted({*expected, *outcome}, reverse=True):
        if name not in outcome:
            report += f"{name} was expected and is not there\n"
        elif name not in expected:
            report += f"{name} was not expected and is there\n" + difference(b"", outcome[name])
        elif expected[name] != outcome[name]:
            report += f"{name} differs (- expected, + actual)\n" + difference(expected[name], outcome[name])
    return report


def difference(expected, actual):
    old, new = lines_of(expected), lines_of(actual)
    longest = len(os.path.commonprefix([old, new])) + MOST_LINES_COMPARED
    shown = [[visible_line(line) for line in lines[:longest]] for lines in (old, new)]
    diff = list(difflib.unified_diff(*shown, lineterm=""))[2:]
    if len(diff) > MOST_LINES_SHOWN or longest < max(len(old), len(new)):
        diff[MOST_LINES_SHOWN:] = ["(the rest is left out)"]
    return "".join(f"    {line}\n" for line in diff)


def lines_of(text):
    return re.findall(rb"[^\n]*\n|[^\n]+", text)


def visible_line(line):
    """The line, so that it looks different from every other."""
    shown = re.sub(" $", r"\\x20", visible(line.rstrip(b"\n")))
    return shown + ("" if line.endswith(b"\n") else "   (no line end)")


def visible(text):
    """The text in printable characters."""
    return text.decode("latin-1").encode("unicode_escape").decode()


# ---- Many cases ----


def try_case(case, options):
    """Returns what became of the case, "passed", "failed" or "rewritten", and what there is to say about it."""
    try:
        read_case(case)
        outcome, killed_by = run_case(case, [*options.wrapper, options.program], options.time_limit)
        report = compare(case.expectation, outcome)
        if case.path.is_dir() and fits_in_a_file(case):
            report += "nothing in this case needs a folder; --update makes it a file\n"
        # A killed program says nothing about what is right, so it never becomes an expectation.
        if options.update and report and not killed_by:
            case.expect(outcome)
            write_case(case)
            return "rewritten", f"rewritten: {case.path}"
        if case.title in options.cannot_hold and not killed_by:
            if report:
                return "excused", ""
            report = "the case holds, but is listed as one that cannot\n"
        if killed_by:
            report = f"the program was killed: {killed_by}\n{report}"
        if not report:
            return "passed", ""
        command = shlex.join(["qnpp", *(visible(word) for word in case.words)])
        report = f"why:     {case.why}\ncommand: {command}\n\n{report}"
    except (OSError, ValueError) as problem:
        report = f"{problem}\n"
    return "failed", f"FAILED: {case.path}\n{report}\nrerun:   {rerun_command(case, options)}\n"


def rerun_command(case, options):
    words = [sys.argv[0], "--program", options.program]
    if options.cases != CASES:
        words += ["--cases", os.path.abspath(options.cases)]
    if options.wrapper:
        words += ["--wrapper", shlex.join(options.wrapper)]
    return shlex.join([*words, case.title])


def chosen_cases(options):
    """To choose none is a mistake, a wrong folder or a slip of the pen, and no success."""
    cases = find_cases(options.cases)
    chosen = {}
    for word in options.case or [""]:
        named = [case for case in cases if word in (case.area, case.title)]
        found = named or [case for case in cases if word in case.title]
        if not found:
            raise CaseError(f"no case of {options.cases} is called {word}")
        chosen.update((case.title, case) for case in found)
    return list(chosen.values())


def read_list(path):
    """The names of cases in a file, each on a line of its own with the reason behind it; other lines begin with #."""
    lines = [line for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines() if not line.startswith("#")]
    for line in lines:
        if not re.fullmatch(r"[^\s:]+: \S.*", line):
            raise argparse.ArgumentTypeError(f"{path} has a line that is not 'area/name: reason': {line}")
    return {line.partition(":")[0] for line in lines}


def run_all(cases, options):
    """Returns how many became what."""
    counts = collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for kind, text in pool.map(lambda case: try_case(case, options), cases):
            counts[kind] += 1
            if text:
                print(text, flush=True)
    return counts


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True, type=os.path.abspath, help="the program under test")
    parser.add_argument("--cases", default=CASES, type=pathlib.Path, metavar="DIR",
                        help="the folder of the areas, if not tests/golden")
    parser.add_argument("--list", action="store_true", help="only name the chosen cases")
    parser.add_argument("--wrapper", default=[], type=shlex.split, metavar="WORDS",
                        help='words in front of the program, such as "valgrind -q"')
    parser.add_argument("--cannot-hold", default=set(), type=read_list, metavar="FILE",
                        help="the names of cases that cannot hold where the program runs, and have to fail")
    parser.add_argument("--time-limit", default=20, type=int, metavar="SECONDS", help="kill a case that runs longer")
    parser.add_argument("--update", action="store_true",
                        help="rewrite what the chosen cases expect from what the program does now. This checks "
                             "nothing: read the change of every file (git diff), and work out from the rules that "
                             "each new byte is right before you keep it")
    parser.add_argument("case", nargs="*", metavar="CASE")
    options = parser.parse_args()
    if not os.path.isfile(options.program):
        parser.error(f"there is no program {options.program}")
    return options


def main():
    options = parse_options()
    # A case that ends by a signal leaves no core file.
    resource.setrlimit(resource.RLIMIT_CORE, (0, resource.getrlimit(resource.RLIMIT_CORE)[1]))
    try:
        cases = chosen_cases(options)
        unknown = options.cannot_hold - {case.title for case in find_cases(options.cases)}
        if unknown:
            raise CaseError(f"no case of {options.cases} is called {min(unknown)}, which is said to be unable to hold")
    except (OSError, ValueError) as problem:
        print(f"golden_runner.py: {problem}", file=sys.stderr)
        return 2
    if options.list:
        print("\n".join(case.title for case in cases))
        return 0
    counts = run_all(cases, options)
    rewritten = f", {counts['rewritten']} rewritten" if options.update else ""
    excused = f", {counts['excused']} cannot hold" if options.cannot_hold else ""
    print(f"{counts['passed']} passed, {counts['failed']} failed{rewritten}{excused}")
    return 1 if counts["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
