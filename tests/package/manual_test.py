#!/usr/bin/env python3
"""Holds the manual against the program.

    manual_test.py help        MANUAL PROGRAM   does it describe the command line that --help shows, and no other?
    manual_test.py messages    MANUAL GOLDEN    does it explain every message that the golden cases show, and no others?
    manual_test.py differences MANUAL PROGRAM   does each example of its table give what it says?

The manual is docs/qnpp.1.md, GOLDEN the folder of the golden cases.
"""

import os
import re
import signal
import subprocess
import sys
import tempfile

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, "golden_runner"))

import golden_cases  # noqa: E402


def section(text, title):
    """The text below `## title` up to the next section."""
    found = re.search(r"^## %s\n(.*?)(?=^## |\Z)" % re.escape(title), text, re.M | re.S)
    if not found:
        sys.exit("the manual has no section " + title)
    return found.group(1)


def tags(text):
    """The tags of the tagged paragraphs, `- tag\\` each."""
    return re.findall(r"^- (.*)\\$", text, re.M)


def pieces(tag):
    """A tag as a list of (is placeholder, text)."""
    result = []
    for code, placeholder, plain in re.findall(r"`([^`]*)`|\*([^*]*)\*|([^`*]+)", tag):
        if code:
            result.append((False, code))
        elif placeholder:
            result.append((True, placeholder))
        elif plain.strip(" ,"):
            sys.exit("the tag %r holds plain text" % tag)
        else:
            result.append((False, plain))
    return result


def run(program, words, folder):
    # A program built with sanitizers ends by an arithmetic fault like any other.
    settings = ":".join(filter(None, (os.environ.get("ASAN_OPTIONS"), "handle_sigfpe=0")))
    return subprocess.run([program] + words, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, timeout=60,
                          env=dict(os.environ, ASAN_OPTIONS=settings))


# ---- help ----


def check_help(manual, program):
    help_text = run(program, ["--help"], ".").stdout.decode()
    usage = re.match(r"Usage: (.*)\n", help_text).group(1)
    options = {line.split(" : ")[0].strip() for line in help_text.splitlines() if re.match(r" +-", line)}

    synopsis = "".join(text for _, text in pieces(section(manual, "SYNOPSIS").strip().replace("[", "`[`").replace("]", "`]`")))
    described = {"".join("<%s>" % text if placeholder else text for placeholder, text in pieces(tag))
                 for tag in tags(section(manual, "OPTIONS"))}
    failures = []
    if synopsis != usage:
        failures.append("the synopsis is\n  %s\nwhere --help has\n  %s" % (synopsis, usage))
    for option in sorted(options - described):
        failures.append("--help has %r, the manual has not" % option)
    for option in sorted(described - options):
        failures.append("the manual has %r, --help has not" % option)
    if not options:
        failures.append("no option was found in the help text")
    return failures


# ---- messages ----

# Explained although no golden case can show them: they need a machine that is out of memory, or a file that cannot be read
# to its end.
SCANNER = "input in flex scanner failed, and other lines about the scanner without a place"
NOT_IN_GOLDEN_CASES = ("FATAL ERROR: out of memory", SCANNER)


def message_of(line):
    """What a line of standard error says, without the place and the full stop."""
    if line.startswith(("qnpp: ", "\t")):
        return line.strip()
    if re.fullmatch(r"\d+: unterminated comment\.", line):
        return line[:-1]
    placed = re.fullmatch(r"(?:.*?:-?\d+: )?(.*)\.", line)
    return placed.group(1) if placed else line


def check_messages(manual, golden):
    explained = {}
    subsections = re.split(r"^### (.*)\n", section(manual, "DIAGNOSTICS"), flags=re.M)
    for title, text in zip(subsections[1::2], subsections[2::2]):
        for tag in tags(text):
            if tag.replace("`", "") == SCANNER:
                explained[SCANNER] = None
                continue
            parts = pieces(tag)
            name = "".join("<%s>" % part if placeholder else part for placeholder, part in parts)
            explained[name] = re.compile("".join(".*" if placeholder else re.escape(part) for placeholder, part in parts))
    failures = []
    shown = set()
    lines = 0
    for case in golden_cases.find_cases(golden):
        for line in golden_cases.read_case(case).expectation["stderr"].decode("latin-1").split("\n"):
            if not line or line == "\tonly the last one will be considered":
                continue
            lines += 1
            message = message_of(line)
            matching = [name for name, pattern in explained.items() if pattern and pattern.fullmatch(message)]
            if not matching:
                failures.append("%s: the manual does not explain\n  %s" % (case.path, message))
            shown.update(matching)
    for name in explained:
        if name not in shown and name not in NOT_IN_GOLDEN_CASES:
            failures.append("no golden case shows what the manual explains as\n  %s" % name)
    for name in NOT_IN_GOLDEN_CASES:
        if name not in explained:
            failures.append("the manual does not explain\n  %s" % name)
    print("%d lines of %d kinds" % (lines, len(shown)))
    return failures


# ---- differences ----


def rows(text):
    """The rows of the table, each as a list of cells, each a list of lines."""
    for line in text.splitlines():
        if not line.startswith("| ") or line.startswith("| Rule "):
            continue
        line = line.replace("\\|", "\x01").strip("| ")
        yield [[part.replace("\x01", "|") for part in cell.split("<br>")] for cell in re.split(r" +\| +", line)]


def code_of(part):
    found = re.fullmatch(r"`(.*)`", part)
    return found.group(1) if found else None


def check_row(source, result, program):
    with tempfile.TemporaryDirectory() as folder:
        with open(os.path.join(folder, "a.c"), "w", encoding="utf-8") as stream:
            stream.write("".join(code_of(line) + "\n" for line in source))
        done = run(program, ["a.c"], folder)
    output = done.stdout.decode().splitlines()
    if output[:1] != ['#line 1 "a.c"']:
        return "the result does not begin with a line directive"
    output = output[1:]
    messages = done.stderr.decode().splitlines()

    expected_output, expected_messages, status = [], [], 0
    for part in result:
        code = code_of(part)
        italic = re.fullmatch(r"\*(.*)\*", part)
        if code is not None:
            expected_output.append(code)
        elif italic:
            expected_messages.append(italic.group(1))
            status = status if "Warning: " in part else 1
        elif part == "(empty line)":
            expected_output.append("")
        elif part == "(ends by SIGFPE)":
            status = -signal.SIGFPE
        elif part.startswith("like "):
            # Any text of the same shape: letter for letter, digit for digit.
            expected_output.append(shape(code_of(part[len("like "):])))
            output = [shape(line) for line in output]
        else:
            return "the cell holds %r" % part
    # The table leaves line directives out except where they are the point.
    if not any(line.startswith("#line") for line in expected_output):
        output = [line for line in output if not line.startswith("#line ")]
    if (output, messages, done.returncode) != (expected_output, expected_messages, status):
        return "expected %s, %s, status %s\nfound    %s, %s, status %s" % (
            expected_output, expected_messages, status, output, messages, done.returncode)
    return ""


def shape(line):
    return re.sub(r"[0-9]", "9", re.sub(r"[A-Za-z]", "a", line))


def check_differences(manual, program):
    failures = []
    count = 0
    for rule, source, result in rows(section(manual, "DIFFERENCES FROM STANDARD C")):
        count += 1
        problem = check_row(source, result, program)
        if problem:
            failures.append("%s\n%s" % (" ".join(rule), problem))
    print("%d rows" % count)
    if count == 0:
        failures.append("there is no table")
    return failures


def main():
    what, manual, other = sys.argv[1:]
    with open(manual, encoding="utf-8") as stream:
        text = stream.read()
    other = os.path.abspath(other)
    failures = {"help": check_help, "messages": check_messages, "differences": check_differences}[what](text, other)
    for failure in failures:
        print("FAILED: " + failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
