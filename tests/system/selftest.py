#!/usr/bin/env python3
"""Tests of the tests: what reads the output, finds the places for marks and judges the results must see a fault."""

import os
import shutil
import signal
import sys
import tempfile
import types
import unittest

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

import examples  # noqa: E402
import foreign_projects  # noqa: E402
import foreign_text_test  # noqa: E402
import line_truth  # noqa: E402
import random  # noqa: E402
from safe_places import FIRST_NUMBER, Scan, marked  # noqa: E402
from support import Place, Run, found_marks, place_of, run_program  # noqa: E402

OUTPUT = b'#line 1 "a.c"\nx\n MARK_1 y MARK_2\n#line 7 "b\\\\h"\n\nMARK_3\n#line 9 "a.c"\nNOT_MARK_4 MARK_5x MARK_6'


class Positions(unittest.TestCase):
    def test_a_mark_stands_where_directive_and_distance_say(self):
        found = [(each.mark, each.place, each.number) for each in found_marks(OUTPUT)]
        self.assertEqual(found, [(b"MARK_1", Place(b"a.c", 2), 3), (b"MARK_2", Place(b"a.c", 2), 3),
                                 (b"MARK_3", Place(b"b\\h", 8), 6), (b"MARK_6", Place(b"a.c", 9), 8)])

    def test_a_mark_knows_its_line(self):
        self.assertEqual([each.text for each in found_marks(OUTPUT)],
                         [b" MARK_1 y MARK_2"] * 2 + [b"MARK_3", b"NOT_MARK_4 MARK_5x MARK_6"])

    def test_only_a_whole_line_is_a_directive(self):
        self.assertEqual(place_of(b'#line 4 "a"\nx #line 9 "b"\ny', 27), Place(b"a", 5))
        self.assertIsNone(place_of(b'x #line 9 "b"\ny', 14))


class Running(unittest.TestCase):
    def run_python(self, code):
        return run_program(sys.executable, ["-c", code], "/", b"in", 1)

    def test_what_a_run_tells(self):
        self.assertEqual(self.run_python("import sys; print(sys.stdin.read()); sys.exit(3)"), Run(3, b"in\n", b""))

    def test_a_run_that_takes_too_long(self):
        self.assertIsNone(self.run_python("while True: pass").status)

    def test_a_signal(self):
        self.assertEqual(self.run_python("import os; os.kill(os.getpid(), 11)").status, -signal.SIGSEGV)


def expected(mark, name, line, whole_line=None):
    return line_truth.ExpectedMark(mark, name, line, whole_line)


class Differences(unittest.TestCase):
    RIGHT = [expected(b"MARK_1", b"a.c", 2, b" MARK_1 y MARK_2"), expected(b"MARK_2", b"a.c", 2),
             expected(b"MARK_3", b"b\\h", 8), expected(b"MARK_6", b"a.c", 9)]

    def differences(self, index=None, *replacement):
        wanted = list(self.RIGHT)
        if index is not None:
            wanted[index:index + 1] = replacement
        return line_truth.differences(wanted, found_marks(OUTPUT))

    def test_nothing_is_wrong(self):
        self.assertEqual(self.differences(), [])

    def test_a_wrong_line(self):
        self.assertEqual(self.differences(1, expected(b"MARK_2", b"a.c", 3)),
                         ["MARK_2 belongs to a.c:3, but output line 3 stands for a.c:2"])

    def test_a_wrong_name(self):
        self.assertEqual(self.differences(2, expected(b"MARK_3", b"b\\\\h", 8)),
                         ["MARK_3 belongs to b\\\\h:8, but output line 6 stands for b\\h:8"])

    def test_a_line_that_reads_differently(self):
        self.assertEqual(self.differences(0, expected(b"MARK_1", b"a.c", 2, b"MARK_1 y MARK_2")),
                         ["output line 3 should read b'MARK_1 y MARK_2', but reads b' MARK_1 y MARK_2'"])

    def test_a_mark_too_many(self):
        self.assertEqual(self.differences(1), ["output line 3 holds MARK_2 where MARK_3 is due"])
        self.assertEqual(self.differences(3), ["3 marks are due, but the output holds 4"])

    def test_a_mark_too_few(self):
        self.assertEqual(self.differences(3, self.RIGHT[3], expected(b"MARK_7", b"a.c", 9)),
                         ["5 marks are due, but the output holds 4"])


class Projects(unittest.TestCase):
    def test_a_number_gives_the_same_project_again(self):
        first, again = (line_truth.project_of(3, 4, {}) for _ in range(2))
        self.assertEqual((first.files, first.stdin, first.words), (again.files, again.stdin, again.words))

    def test_names_of_included_files(self):
        project = line_truth.project_of(1, 0, {})
        project.include_folders = ["none", "inc", "."]
        project.main_path = "main.c"
        project.files = {"main.c": b"", "sub/h1.h": b"", "inc/h2.h": b"", "h3.h": b""}
        for operand, is_quoted, includer, name in [
                ("h1.h", True, "sub/main.c", "sub/h1.h"), ("h1.h", False, "sub/main.c", ""),
                ("sub/h1.h", True, "main.c", "sub/h1.h"), ("sub/h1.h", False, "main.c", "./sub/h1.h"),
                ("h2.h", True, "main.c", "inc/h2.h"), ("../inc/h2.h", True, "sub/x.h", "sub/../inc/h2.h"),
                ("../inc/h2.h", False, "x.h", "inc/../inc/h2.h"), ("../h3.h", True, "we\\ird.c", "inc/../h3.h"),
                ("h1.h", True, "sub\\x.y", "sub/h1.h"), ("main.c", True, "x.c", "")]:
            with self.subTest(operand=operand, includer=includer):
                self.assertEqual(project.find(line_truth.IncludeEvent(operand, is_quoted), includer), name)


class SafePlaces(unittest.TestCase):
    def lines_of(self, text):
        return [line for _, line in Scan(text).places]

    def test_places(self):
        for text, lines in [
                (b"a;\nb;\n", [1, 2, 3]),
                (b"a;\r\nb;\rc;\n", [1, 2, 3, 4]),
                # An open parenthesis, a name that may want arguments, a comma.
                (b"f(a;\nb);\nc\nd;\ne,\ng }\n", [1, 3, 5, 7]),
                (b"/* a;\nb; */\nc;\n", [1, 3, 4]),
                (b"// a; \\\nb;\n", [1, 2, 3]),
                (b"/* never closed;\n", [1]),
                (b"a; \\\nb;\nc;\n", [1, 3, 4]),
                # No directive takes part in the text, but for the words behind #else and #endif.
                (b"#define F ( \\\n ;\na;\n#if (\nb\n#endif\n", [1, 3, 4, 5]),
                (b"#else x\nb;\n#endif ;\n", [1, 3, 4]),
                (b"# /* c */ if (\n#\\\nendif y\n", [1, 2]),
                # The quote with the escape is none, so the parenthesis counts.
                (b'"(\\n";\nb;\n', [1]),
                (b"\"(\\\"\" '(';\nb;\n", [1, 2, 3]),
                # An apostrophe alone is a character like any other.
                (b"it's;\nb;\n", [1, 2, 3]),
                (b"a;\n#line 5\nb;\n", [1, 2])]:
            with self.subTest(text=text):
                self.assertEqual(self.lines_of(text), lines)

    def test_marks_are_put_in_and_their_lines_known(self):
        text, lines = marked(b"a;\nf(\n);\nb;\n", random.Random(1), 10)
        marks = [b"MARK_%d" % (FIRST_NUMBER + count) for count in range(4)]
        self.assertEqual(text, b"%s\na;\n%s\nf(\n);\n%s\nb;\n%s\n" % tuple(marks))
        self.assertEqual(lines, dict(zip(marks, [1, 3, 6, 8])))


class ForeignText(unittest.TestCase):
    def result_of(self, output):
        result = foreign_text_test.Result("a.c", [])
        foreign_text_test.check_marks(result, Run(0, output, b""), {b"MARK_1": 2})
        return result

    def test_marks(self):
        self.assertEqual(self.result_of(b'#line 1 "a.c"\n\nMARK_1\n').problem, "")
        self.assertEqual(self.result_of(b'#line 2 "a.c"\n\nMARK_1\n').problem,
                         "MARK_1 stands in line 2, but output line 3 stands for a.c:3")
        self.assertEqual(self.result_of(b'#line 2 "b.c"\nMARK_1\n').problem,
                         "MARK_1 stands in line 2, but output line 2 stands for b.c:2")
        self.assertEqual(self.result_of(b'#line 2 "a.c"\nMARK_1 MARK_1\n').problem, "a mark comes out twice")

    def test_unclear_marks(self):
        self.assertEqual(self.result_of(b'#line 1 "a.c"\n#pragma p\nMARK_1\n').unclear_marks, 1)
        self.assertEqual(self.result_of(b'#line 1 "a.c"\n#pragma  p\nMARK_1\n').unclear_marks, 0)
        self.assertEqual(self.result_of(b'#line 1 "a.c"\n \\\nMARK_1\n').unclear_marks, 1)
        self.assertEqual(self.result_of(b'#line 1 "a.c"\n x\\\nMARK_1\n').unclear_marks, 0)

    def test_a_word_of_the_text_is_no_mark(self):
        self.assertEqual(self.result_of(b'#line 1 "a.c"\nMARK_2 MARK_2\n').problem, "")

    def test_a_fault_at_a_zero_divisor_is_expected_and_no_other(self):
        for status, text, is_expected in [
                (-signal.SIGFPE, b"x\n#if 1 / A\n#endif\n", True), (-signal.SIGFPE, b"x\n# elif 1 \\\n % A\n", True),
                (-signal.SIGSEGV, b"x\n#if 1 / A\n", False), (-signal.SIGFPE, b"#if 1 / 1\nx\nx\n", False),
                (-signal.SIGFPE, b"x\ny / 0\n", False)]:
            with self.subTest(text=text, status=status):
                run = Run(status, b'#line 1 "a.c"\nx\n', b"")
                self.assertEqual(foreign_text_test.has_divided(run, "a.c", text), is_expected)


class ForeignProjects(unittest.TestCase):
    REWRITTEN = [
        # What is the same for both is left alone, quotes and comments with what they hold included.
        (b'#define A "\\"" /* # */ \\\n 1\nA "# x" \'\\n\'\n', None),
        (b" # version 4\n", b"TEXT  # version 4\n"),
        (b"#\nx\n", b"\nx\n"),
        (b'"a\\n\\"b"\n', b'"an\\"b"\n'),
        (b"a\\\nb\n", b"ab\n"),
        (b"\xef\xbb\xbfa\n", b"a\n"),
        (b"x // a \\\n b\ny\n", b"x \ny\n"),
        (b"#endif A\n#undef B C\n", b"#endif\n#undef B\n"),
        (b"#define V(a, ...) a\n#define J a ## b\n#define F(a) a ## b\n", b"\n\n#define F(a) a ## b\n"),
        (b"#pragma x\n#line 7\n__LINE__ __FILE__\n", b"\n\nx__LINE__ __FILE__\n"),
        (b"#pragma once\nx\n", b"#ifndef ONCE_a_h\n#define ONCE_a_h\n\nx\n\n#endif\n"),
    ]

    def test_rewriting(self):
        for text, rewritten in self.REWRITTEN:
            with self.subTest(text=text):
                result = foreign_projects.Rewriter(text, "a.h")
                self.assertEqual((result.text, bool(result.rules)), (rewritten or text, rewritten is not None))

    def test_differences(self):
        difference, tokens_of = foreign_projects.difference, foreign_projects.tokens_of
        for ours, theirs, rule, is_news in [
                (b'#line 1 "a"\n#pragma  x\na+ +b "x  y"\n', b'#pragma x\na ++b "x y"\n', "", False),
                (b"[ Fy]", b"[F y]", "blanks behind the name of a function-like macro", False),
                (b"[ Gy]", b"[G y]", "", True),
                (b"[a # undef F b]", b"[a b]", "directive within arguments", False),
                (b"a b", b"a c", "", True), (b"a", b"a b", "", True), (b"a b", b"a", "", True)]:
            with self.subTest(ours=ours):
                found, shown = difference(tokens_of(ours), tokens_of(theirs), {b"F"})
                self.assertEqual((found, bool(shown)), (rule, is_news))

    def test_a_program_that_writes_nothing_is_news(self):
        with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory() as work:
            with open(os.path.join(folder, "a.c"), "w", encoding="utf-8") as stream:
                stream.write("#include <gone.h>\nx\n")
            options = types.SimpleNamespace(program=shutil.which("true"), cc="cc", jobs=1, only=None)
            result, = foreign_projects.check_project(options, folder, work)
            self.assertEqual((result.name, result.kind), ("a.c", "news"))


class Examples(unittest.TestCase):
    def commands_of(self, **files):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                with open(os.path.join(folder, name.replace("_", "-")), "w", encoding="utf-8") as stream:
                    stream.write(text)
            return examples.commands_of(folder)

    def test_commands_and_their_results_belong_together(self):
        low, = self.commands_of(command_low="qnpp '-DA=b c'\n", expected_low="x\n")
        self.assertEqual((low.words, low.kind, low.expected), ([["-DA=b c"]], "expected", b"x\n"))
        both, = self.commands_of(command="qnpp a\nqnpp b\n", expected_output="y")
        self.assertEqual((both.words, both.kind), ([["a"], ["b"]], "expected-output"))

    def test_what_is_no_example(self):
        for files in [{}, {"expected": ""}, {"command": "qnpp a\n"}, {"command": "cc a\n", "expected": ""},
                      {"command": "", "expected": ""}, {"command": "qnpp\n", "expected": "", "expected_output": ""}]:
            with self.subTest(files=files), self.assertRaises(examples.Failure):
                self.commands_of(**files)

    def hand_on(self, reader):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "reader"), "w", encoding="utf-8") as stream:
                stream.write(reader)
            return examples.hand_on(b"text\n", folder)

    def test_the_reader_finds_the_result(self):
        run = self.hand_on("cat result; echo no >&2; exit 3")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (3, "text\n", "no\n"))

    def test_a_missing_tool_is_no_failure(self):
        for reader, tool in [("true | no-such-tool -x", "no-such-tool"),
                             ("'%s' -c 'import no_such_module'" % sys.executable, "no_such_module")]:
            with self.subTest(reader=reader), self.assertRaisesRegex(examples.MissingTool, tool):
                self.hand_on(reader)


if __name__ == "__main__":
    unittest.main()
