"""What the system tests share: running the program, and reading positions off its output."""

import os
import re
import resource
import signal
import subprocess
import sys
from typing import NamedTuple

# A sanitizer that finds something ends the program with this status, so that the finding cannot pass for an input with
# errors, whose status is 1.
SANITIZER_STATUS = 99


def environment():
    """The environment to run the program in. A signal stays a signal under the sanitizers too."""
    result = dict(os.environ)
    for name, settings in (("ASAN_OPTIONS", "handle_sigfpe=0"), ("UBSAN_OPTIONS", ""), ("LSAN_OPTIONS", "")):
        parts = [result.get(name, ""), "exitcode=%d" % SANITIZER_STATUS, settings]
        result[name] = ":".join(part for part in parts if part)
    return result


class Run(NamedTuple):
    """One run of the program. A status below 0 is the number of the signal that ended it; None means that it took too
    long."""

    status: int
    stdout: bytes
    stderr: bytes


def run_program(program, words, folder, stdin=b"", seconds=20):
    """The limit is one of processor time, so that it holds whatever else the machine is doing. A program that only
    waits is ended too, but later."""

    def limit_processor_time():
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))

    try:
        done = subprocess.run([program] + list(words), input=stdin, capture_output=True, cwd=folder,
                              timeout=20 * seconds, env=environment(), preexec_fn=limit_processor_time)
    except subprocess.TimeoutExpired as late:
        return Run(None, late.stdout or b"", late.stderr or b"")
    return Run(None if done.returncode == -signal.SIGXCPU else done.returncode, done.stdout, done.stderr)


class Place(NamedTuple):
    name: bytes
    line: int

    def __str__(self):
        return "%s:%d" % (os.fsdecode(self.name), self.line)


LINE_DIRECTIVE = re.compile(rb'#line (-?[0-9]+) "([^\n]*)"\n')


class Directive(NamedTuple):
    """A line directive: the place of the line behind it, and the offset of that line in the output."""

    place: Place
    end: int


def directive_before(output, offset):
    """The last line directive before an offset of the output; None if there is none."""
    while True:
        found = output.rfind(b"#line ", 0, offset)
        if found < 0:
            return None
        match = LINE_DIRECTIVE.match(output, found)
        if match and (found == 0 or output[found - 1:found] == b"\n"):
            # The writer doubles every backslash of a name.
            return Directive(Place(match[2].replace(b"\\\\", b"\\"), int(match[1])), match.end())
        offset = found


def place_of(output, offset):
    """The place that an offset of the output stands for: what the line directive before it and its distance from that
    directive give, which is how a compiler reads it. None before the first directive."""
    directive = directive_before(output, offset)
    if not directive:
        return None
    place, end = directive
    return place._replace(line=place.line + output.count(b"\n", end, offset))


# A word that a test puts into its input to find it again in the output.
MARK = re.compile(rb"MARK_[0-9]+(?![A-Za-z0-9_])")


class FoundMark(NamedTuple):
    mark: bytes
    place: Place
    # Its offset in the output, the whole line that it stands on, and the number of that line, from 1.
    offset: int
    text: bytes
    number: int


def found_marks(output):
    """The marks of an output, in order. One that has grown together with the word before it is none."""
    result = []
    number, counted = 1, 0
    for match in MARK.finditer(output):
        start, end = match.span()
        if output[start - 1:start].isalnum() or output[start - 1:start] == b"_":
            continue
        number += output.count(b"\n", counted, start)
        counted = start
        line_end = output.find(b"\n", end)
        text = output[output.rfind(b"\n", 0, start) + 1:line_end if line_end >= 0 else None]
        result.append(FoundMark(match[0], place_of(output, start), start, text, number))
    return result


def words_of(words):
    """Words as somebody would type them, for messages."""
    import shlex

    return " ".join(shlex.quote(os.fsdecode(word)) for word in words)


def rerun_hint(*words):
    return "  again: " + words_of((sys.executable, sys.argv[0]) + words)
