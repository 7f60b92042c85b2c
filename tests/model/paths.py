#!/usr/bin/env python3
"""Relations between runs: random projects go through the program in two ways that must agree, and standard output,
standard error, exit status and the `-o` file are compared.

    paths.py --program PATH [--without-shortcuts PATH] [--sanitized PATH] [--relation NAME]... [--seed N] [--cases N]
             [--seconds S] [--first N] [--differences N] [--keep DIR] [--case DIR]

The projects are those of `compare.py`.  A relation holds for some of them only: each one says which and why.  The model
tells which these are; it is not compared here.  They are counted, and a run of more than one case fails if they are
fewer than they have to be.

Case number i of a seed is the same on every run.  On a difference the case is made smaller as long as the two ways
still disagree, both ways are printed, and, with --keep, the first is written to a folder that --case runs again.
"""

import os
import random
import re
import sys
import tempfile
import time
import zlib

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

import model  # noqa: E402
from compare import (Runner, Skipped, keep, load, make_parser, minimise, read_options, run_with_large_stack,  # noqa: E402
                     show_case, show_results)
from generator import Case, Generator  # noqa: E402


# --------------------------------------------------------------------------------------------------------------------
# What the model knows about a run
# --------------------------------------------------------------------------------------------------------------------


class Watcher(model.Preprocessor):
    """Runs as the model does and writes down what decides whether a relation holds for a project."""

    def __init__(self, streams, stdin):
        model.Preprocessor.__init__(self, streams, stdin)
        # A message or a line directive has shown the number of the line that follows a file's last one.
        self.shown_behind_last_line = False
        # The text has asked for its own name or line, or has changed them.
        self.asked_for_place = False
        # What happens in the main source, in its order: ("boundary", position, depth), where the run loop stands
        # between two physical lines of a group that is not skipped, and ("branch", depth) for #elif, #else and #endif.
        self.events = []
        self.main = None
        self.between_lines = True
        # An invocation that looks for its arguments may have reached the end of all input.
        self.end_taken = False

    def open_source(self, file_name, source_name):
        model.Preprocessor.open_source(self, file_name, source_name)
        self.main = self.file
        self.note_boundary()

    def note_boundary(self):
        source = self.source
        if source is not None and source is self.main and not self.skipping and not self.end_taken:
            lexer = source.lexer
            if source.at_line_start and not source.has_peek and not lexer.pushed_newline:
                self.events.append(("boundary", lexer.position, self.depth))

    def next_line(self):
        self.between_lines = False
        model.Preprocessor.next_line(self)
        self.between_lines = True
        self.note_boundary()

    def pop_source(self):
        model.Preprocessor.pop_source(self)
        if self.between_lines:
            self.note_boundary()

    def get(self):
        kind = model.Preprocessor.get(self)
        self.end_taken = kind == model.TK_END
        return kind

    def note_shown_line(self):
        lexer = self.file.lexer
        at_end = 0 < lexer.position == len(lexer.data) and not lexer.pushed_newline
        if at_end and self.file.at_line_start and not (self.file.has_peek and self.file.peek_kind != model.TK_END):
            self.shown_behind_last_line = True

    def report(self, message, grade=b""):
        self.note_shown_line()
        model.Preprocessor.report(self, message, grade)

    def write_line_directive(self):
        self.note_shown_line()
        model.Preprocessor.write_line_directive(self)

    def refresh(self, name, macro):
        if name in (b"__FILE__", b"__LINE__"):
            self.asked_for_place = True
        model.Preprocessor.refresh(self, name, macro)

    def directive(self, kind):
        if kind == model.TK_LINE:
            self.asked_for_place = True
        model.Preprocessor.directive(self, kind)

    def conditional(self, kind):
        if kind in (model.TK_ELIF, model.TK_ELSE, model.TK_ENDIF) and self.file is self.main:
            self.events.append(("branch", self.depth))
        model.Preprocessor.conditional(self, kind)


class WatchedRun(model.Run):
    PREPROCESSOR = Watcher


def tokens_of(text):
    """The tokens of a file as (kind, text, position behind, line behind), and what lexing itself has written."""
    streams = model.Streams()
    lexer = model.Lexer(text, streams)
    tokens = []
    while True:
        kind = lexer.next()
        if kind == model.TK_END:
            return tokens, (bytes(streams.output), bytes(streams.stderr))
        tokens.append((kind, lexer.text, lexer.position, lexer.line))


def has_lone_quotes(tokens):
    return any(kind == model.TK_OTHER and text in (b'"', b"'") for kind, text, _, _ in tokens)


class Command:
    """A command line that leads to a run: the place of the source among its words and the value of `-s`."""

    def __init__(self, words):
        line = model.CommandLine([])
        self.source_index = None
        index = 0
        while index < len(words):
            plain = len(line.plain)
            following = line.word(words, index)
            if len(line.plain) > plain:
                self.source_index = index
            index = following
        self.source = line.plain[0] if line.plain else None
        self.shown_name = line.named.get(b"s")
        values = line.letters[b"D"] + line.letters[b"I"] + list(line.named.values())
        self.usual = not line.events and len(line.plain) < 2 and self.source != b"" and None not in values


# --------------------------------------------------------------------------------------------------------------------
# The relations
# --------------------------------------------------------------------------------------------------------------------


class Way:
    """A project and the program that it goes through; `view` makes of the result what is compared."""

    def __init__(self, program, case, view=lambda result: result):
        self.program = program
        self.case = case
        self.view = view


class Relation:
    """Two ways that must agree.  `share` is the least part of the cases for which it has to hold."""

    name = ""
    share = 1.0

    def __init__(self, tester):
        self.tester = tester
        self.count = 0

    def ways(self, case):
        """The two ways of a case, or None if the rules do not say that they agree."""
        raise NotImplementedError


class OtherProgram(Relation):
    """The same project through another build of the program."""

    share = 1.0

    def __init__(self, tester, name, program):
        Relation.__init__(self, tester)
        self.name = name
        self.program = program

    def ways(self, case):
        self.tester.watch(case)
        return Way(self.tester.program, case), Way(self.program, case)


class StandardInput(Relation):
    """The source as a file and on standard input.  Given the name that the other way shows by itself, or the same `-s`,
    the two have the same name in messages, line directives and `__FILE__`, and the same folder to search.  An empty
    `-s` does not count as a name, so it is left out."""

    name = "standard-input"
    share = 0.8

    def ways(self, case):
        command = Command(case.words)
        if not command.usual or command.shown_name == b"":
            return None
        if command.source is not None and command.source not in case.files:
            return None
        self.tester.watch(case)
        if command.source is not None:
            words = case.words[:command.source_index] + case.words[command.source_index + 1:]
            other = Case(case.files, words, case.files[command.source])
        else:
            files = dict(case.files)
            files[b"in.c"] = case.stdin
            other = Case(files, case.words + [b"in.c"], b"")
        if command.shown_name is None:
            other.words = [b"-s", command.source or b"stdin"] + other.words
        return Way(self.tester.program, case), Way(self.tester.program, other)


class FinalLineEnd(Relation):
    """Files with and without their last line end.  A missing one is supplied, so a text whose tokens are the same but
    for that line end means the same.  A text in an open block comment, or one that ends in a backslash, has other
    tokens with it; a text that is empty or ends in a line end gets one line more.  The line end that is supplied is not
    counted, though, so neither a message nor the line directive of a file that resumes may show the line behind it."""

    name = "final-line-end"
    share = 0.7

    def ways(self, case):
        files = {name: self.toggled(data) for name, data in case.files.items()}
        other = Case(files, case.words, self.toggled(case.stdin))
        if other.files == case.files and other.stdin == case.stdin:
            return None
        if self.tester.watch(case).shown_behind_last_line:
            return None
        return Way(self.tester.program, case), Way(self.tester.program, other)

    def toggled(self, text):
        """The text with its last line end if it had none and without if it had one, where that makes no difference."""
        for line_end in (b"\r\n", b"\n", b"\r"):
            if text.endswith(line_end):
                shorter = text[:-len(line_end)]
                if self.same_but_for_last(shorter, text):
                    return shorter
                break
        longer = text + b"\n"
        return longer if self.same_but_for_last(text, longer) else text

    @staticmethod
    def same_but_for_last(shorter, longer):
        shorter_tokens, shorter_writes = tokens_of(shorter)
        longer_tokens, longer_writes = tokens_of(longer)
        if not shorter_tokens or shorter_tokens[-1][0] == model.TK_NEWLINE or shorter_writes != longer_writes:
            return False
        # A comment up to the end of the line takes the line end along and gives it back, so positions differ.
        without = [(kind, text) for kind, text, _, _ in shorter_tokens]
        return without + [(model.TK_NEWLINE, b"\n")] == [(kind, text) for kind, text, _, _ in longer_tokens]


class LineEnds(Relation):
    """Line ends as LF and as something else, in the files and in the texts of `-D`.  All of them become one "\\n"
    token, with one exception: a continuation is written as it stands, so cases that write one are left out."""

    def ways(self, case):
        plain = self.with_line_ends(case, lambda text: text)
        chance = random.Random(self.fingerprint(plain))
        if not Command(plain.words).usual:
            return None
        texts = list(plain.files.values()) + [plain.stdin]
        texts += [word for word in plain.words if word.startswith(b"-D")]
        if not any(b"\n" in text for text in texts) or not all(self.allows(text) for text in texts):
            return None
        self.tester.watch(plain)
        result = self.tester.result(self.tester.program, plain)
        if any(b"\\\n" in (result[what] or b"") for what in ("stdout", "stderr", "-o file")):
            return None
        other = self.with_line_ends(plain, lambda text: self.rewritten(text, chance))
        return Way(self.tester.program, plain), Way(self.tester.program, other)

    @staticmethod
    def fingerprint(case):
        return zlib.crc32(repr((sorted(case.files.items()), case.words, case.stdin)).encode())

    @staticmethod
    def with_line_ends(case, rewrite):
        def change(text):
            return rewrite(text.replace(b"\r\n", b"\n").replace(b"\r", b"\n"))

        files = {name: change(data) for name, data in sorted(case.files.items())}
        words = [change(word) if word.startswith(b"-D") else word for word in case.words]
        return Case(files, words, change(case.stdin))

    def allows(self, text):
        return True

    def rewritten(self, text, chance):
        raise NotImplementedError


class CarriageReturnLineFeed(LineEnds):
    """LF against CR LF, all of them or some.  Neither can stand in a literal: both end the line that it would have to
    close on."""

    name = "cr-lf"
    share = 0.55

    def rewritten(self, text, chance):
        some = chance.random() < 0.3
        return re.sub(b"\n", lambda _: b"\n" if some and chance.random() < 0.5 else b"\r\n", text)


class CarriageReturn(LineEnds):
    """LF against CR, all of them or some.  A CR may stand in a literal, so a quote that is open at the end of its line
    could find its partner on a later one: texts with a quote that is a token by itself are left out."""

    name = "cr"
    share = 0.25

    def allows(self, text):
        return not has_lone_quotes(tokens_of(text)[0])

    def rewritten(self, text, chance):
        some = chance.random() < 0.3
        result = bytearray()
        for code in text:
            # LF behind CR would be one line end with it.
            line_end = b"\r" if not some or result.endswith(b"\r") else chance.choice([b"\r", b"\r\n", b"\n"])
            result += line_end if code == 10 else bytes([code])
        return bytes(result)


class Includes(Relation):
    """One source against the same text with parts of it in files of their own, at line boundaries.  Line directives
    are dropped, and the places of messages are led back to the one source.

    A part begins and ends where the run loop stands between two lines of the source: not in a comment, an invocation or
    a directive.  Both ends are in the same group, which is not skipped and whose #elif, #else and #endif are outside.
    Nothing may ask for its place: `__LINE__`, `__FILE__` and #line are written as other words.  `-s` is left out, since
    a part has to lie in the folder that is searched."""

    name = "includes"
    share = 0.5
    OTHER_WORDS = ((b"__LINE__", b"__NINE__"), (b"__FILE__", b"__NAME__"), (b"line", b"lane"))

    def ways(self, case):
        command = Command(case.words)
        if not command.usual or command.shown_name is not None:
            return None
        if command.source is not None and command.source not in case.files:
            return None
        whole = self.without_places(case)
        text = whole.stdin if command.source is None else whole.files[command.source]
        tokens, (_, messages) = tokens_of(text)
        if messages:
            # A comment that is never closed is reported by its line alone.
            return None
        if b"\r" in text and has_lone_quotes(tokens):
            # Behind a CR the name in the directive could close a quote.
            return None
        watcher = self.tester.watch(whole)
        if watcher.asked_for_place:
            return None
        result = self.tester.result(self.tester.program, whole)
        if any(self.line_directive_in_line(result[what]) for what in ("stdout", "-o file")):
            return None
        lines = {position: line for kind, _, position, line in tokens if kind == model.TK_NEWLINE}
        lines[0] = 1
        parts = self.choose_parts(watcher.events, lines, text)
        if not parts:
            return None
        divided, places = self.divide(whole, command.source, text, parts, lines)
        return (Way(self.tester.program, whole, lambda seen: self.comparable(seen, {})),
                Way(self.tester.program, divided, lambda seen: self.comparable(seen, places)))

    def without_places(self, case):
        def change(text):
            for word, other in self.OTHER_WORDS:
                text = text.replace(word, other)
            return text

        return Case({name: change(data) for name, data in case.files.items()}, [change(word) for word in case.words],
                    change(case.stdin))

    @staticmethod
    def line_directive_in_line(output):
        """Tells whether a line directive follows other text on its line: an invocation that goes on behind the end of
        an included file has it there."""
        return output is not None and re.search(rb"[^\n]#line ", output) is not None

    @staticmethod
    def possible_parts(events, lines, text):
        """The parts of the text that could be files, as (first position, position behind)."""
        possible = []
        for first, begin in enumerate(events):
            if begin[0] != "boundary" or begin[1] not in lines:
                continue
            for event in events[first + 1:]:
                if event[0] == "branch":
                    # Outside of all groups a branch is an error, in a part as well as in the whole.
                    if 0 < event[1] <= begin[2]:
                        break
                elif event[1] in lines and event[2] == begin[2] and text[begin[1]:event[1]].strip():
                    possible.append((begin[1], event[1]))
        return possible

    def choose_parts(self, events, lines, text):
        """Up to three parts that have nothing in common, in their order."""
        possible = self.possible_parts(events, lines, text)
        chance = random.Random(zlib.crc32(text))
        chance.shuffle(possible)
        chosen = []
        for part in possible:
            if len(chosen) < 3 and all(part[1] <= other[0] or part[0] >= other[1] for other in chosen):
                chosen.append(part)
        return sorted(chosen)

    @staticmethod
    def divide(whole, source, text, parts, lines):
        """The divided project, and for each of its files the lines of the whole: (line there, line here) wherever the
        distance changes."""
        folder = os.path.dirname(source or b"")
        files = dict(whole.files)
        shown = source or b"stdin"
        places = {shown: [(1, 1)]}
        rest = b""
        behind = 0
        removed = 0
        for number, (begin, end) in enumerate(parts):
            name = b"part%d.h" % number
            path = os.path.join(folder, name)
            files[path] = text[begin:end]
            rest += text[behind:begin] + b'#include "' + name + b'"\n'
            behind = end
            places[path] = [(1, lines[begin])]
            removed += lines[end] - lines[begin] - 1
            places[shown].append((lines[end] - removed, lines[end]))
        rest += text[behind:]
        if source is None:
            return Case(files, whole.words, rest), places
        files[source] = rest
        return Case(files, whole.words, whole.stdin), places

    @staticmethod
    def comparable(result, places):
        def lead_back(match):
            name, line = match.group(1), int(match.group(2))
            if name not in places:
                return match.group(0)
            there, here = max(place for place in places[name] if place[0] <= line)
            shown = next(iter(places))
            return shown + b":%d: " % (line - there + here)

        seen = dict(result)
        for what in ("stdout", "-o file"):
            if seen[what] is not None:
                seen[what] = b"".join(line for line in seen[what].splitlines(True) if not line.startswith(b"#line "))
        seen["stderr"] = re.sub(rb"(?m)^([\w./]+):(\d+): ", lead_back, seen["stderr"])
        return seen


# --------------------------------------------------------------------------------------------------------------------
# Running
# --------------------------------------------------------------------------------------------------------------------


class Tester:
    """Runs the programs, and remembers what has been run for a case."""

    def __init__(self, options, folder):
        self.program = options.program
        self.folder = folder
        self.time_limit = options.time_limit
        self.runners = {}
        self.memory = {}
        self.relations = [StandardInput(self), FinalLineEnd(self), CarriageReturnLineFeed(self), CarriageReturn(self),
                          Includes(self)]
        if options.without_shortcuts:
            self.relations.append(OtherProgram(self, "without-shortcuts", options.without_shortcuts))
        if options.sanitized:
            self.relations.append(OtherProgram(self, "sanitized", options.sanitized))
        if options.relation:
            unknown = set(options.relation) - set(relation.name for relation in self.relations)
            if unknown:
                sys.exit("no such relation, or no program for it: " + ", ".join(sorted(unknown)))
            self.relations = [relation for relation in self.relations if relation.name in options.relation]

    def runner(self, program):
        if program not in self.runners:
            self.runners[program] = Runner(program, self.folder, self.time_limit)
        return self.runners[program]

    def remembered(self, key, case, function):
        key = (key, repr((sorted(case.files.items()), case.words, case.stdin)))
        if key not in self.memory:
            self.memory[key] = function()
        return self.memory[key]

    def watch(self, case):
        """What the model has seen in a case; it raises `Skipped` if the case is too large."""
        return self.remembered(None, case, lambda: self.runner(self.program).run_model(case, WatchedRun).preprocessor)

    def result(self, program, case):
        def run():
            runner = self.runner(program)
            runner.place(case)
            return runner.run_program(case)

        return self.remembered(program, case, run)

    def results(self, relation, case):
        """The two ways and their results, or None if the relation says nothing about the case."""
        try:
            ways = relation.ways(case)
        except Skipped:
            return None
        if ways is None:
            return None
        return ways, [way.view(self.result(way.program, way.case)) for way in ways]


class Question:
    """Asks for one relation what the reduction wants to know."""

    def __init__(self, tester, relation):
        self.tester = tester
        self.relation = relation

    def differs(self, case):
        self.tester.memory.clear()
        found = self.tester.results(self.relation, case)
        return found is not None and found[1][0] != found[1][1]


def show_difference(tester, relation, case):
    ways, results = tester.results(relation, case)
    for way, title in zip(ways, ("one way", "the other way")):
        print(" %s: %s" % (title, way.program))
        show_case(way.case)
    print(" results")
    show_results(*results)


# A relation's share says something when there are so many cases; fewer have to hold for one of them at least.
CASES_FOR_SHARES = 100


def wanted(relation, done):
    return max(1, relation.share * done if done >= CASES_FOR_SHARES else 1)


def report_counts(tester, done):
    for relation in tester.relations:
        print("  %-18s %6d cases, at least %d wanted%s" % (
            relation.name, relation.count, wanted(relation, done),
            "" if relation.count >= wanted(relation, done) else ": TOO FEW"))


def run_kept(tester, folder):
    case = load(os.path.abspath(folder))
    differences = 0
    for relation in tester.relations:
        found = tester.results(relation, case)
        differs = found is not None and found[1][0] != found[1][1]
        print("%s: %s" % (relation.name, "DIFFERENCE" if differs else "no difference" if found else "does not apply"))
        if differs:
            differences += 1
            show_difference(tester, relation, case)
    return 1 if differences else 0


def run_generated(options, tester):
    started = time.monotonic()
    done = skipped = differences = 0
    for number in range(options.first, options.first + options.cases):
        if options.seconds and time.monotonic() - started > options.seconds or differences >= options.differences:
            break
        case = Generator(random.Random("%d:%d" % (options.seed, number))).project(os.fsencode(tester.folder))
        tester.memory.clear()
        try:
            tester.watch(case)
        except Skipped:
            skipped += 1
            continue
        done += 1
        for relation in tester.relations:
            found = tester.results(relation, case)
            if found is None:
                continue
            relation.count += 1
            if found[1][0] == found[1][1]:
                continue
            differences += 1
            small = minimise(case, Question(tester, relation), options.minimise_seconds)
            print("DIFFERENCE: %s in case %d of seed %d" % (relation.name, number, options.seed))
            show_difference(tester, relation, small)
            other = " --%s %s" % (relation.name, relation.program) if isinstance(relation, OtherProgram) else ""
            print(" again: %s --program %s%s --relation %s --seed %d --first %d --cases 1" % (
                sys.argv[0], options.program, other, relation.name, options.seed, number), flush=True)
            if options.keep:
                keep(small, os.path.join(options.keep, "%s-seed-%d-case-%d" % (relation.name, options.seed, number)))
            if differences >= options.differences:
                break
    print("%d cases run, %d skipped as too large, %d differences" % (done, skipped, differences))
    report_counts(tester, done)
    if differences or done == 0:
        return 1
    too_few = any(relation.count < wanted(relation, done) for relation in tester.relations)
    return 1 if too_few and options.cases > 1 else 0


def main():
    parser = make_parser("Runs random projects in two ways that must agree.")
    parser.add_argument("--without-shortcuts", help="the program built without its shortcuts")
    parser.add_argument("--sanitized", help="the program built with sanitizers")
    parser.add_argument("--relation", action="append", help="only this relation; may be repeated")
    options = read_options(parser)
    for name in ("without_shortcuts", "sanitized"):
        if getattr(options, name):
            setattr(options, name, os.path.abspath(getattr(options, name)))
    with tempfile.TemporaryDirectory(prefix="qnpp-paths-") as folder:
        # A project stands two folders deep, so that "../a.h" stays inside.
        project = os.path.join(folder, "p")
        os.makedirs(project)
        try:
            tester = Tester(options, project)
            return run_kept(tester, options.case) if options.case else run_generated(options, tester)
        finally:
            os.chdir("/")


if __name__ == "__main__":
    sys.exit(run_with_large_stack(main))
