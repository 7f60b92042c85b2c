#!/usr/bin/env python3
"""What qnpp-explain and qnpp-check say, how they end, and that their documents and completions know their options:

    companions_test.py --explain QNPP-EXPLAIN --check QNPP-CHECK --source DIR
"""

import argparse
import fcntl
import json
import os
import pathlib
import pty
import re
import struct
import subprocess
import sys
import tempfile
import termios
import unittest

try:
    import jsonschema
except ImportError:
    jsonschema = None  # Debian: python3-jsonschema
sys.dont_write_bytecode = True
from record_test import complaint  # noqa: E402

OPTIONS = None


def described(**properties):
    """A schema for an object that has these properties, and no others."""
    return {"type": "object", "required": list(properties), "properties": properties}


def many(items):
    return {"type": "array", "items": items}


TEXT = {"type": "string"}
MESSAGE = described(text=TEXT)
# What SARIF 2.1.0 and those who show it want of a log, as far as one of ours goes.
SARIF = described(**{"$schema": TEXT, "version": {"const": "2.1.0"}, "runs": many(described(
    tool=described(driver=described(name=TEXT, version=TEXT, rules=many(described(
        id=TEXT, shortDescription=MESSAGE, fullDescription=MESSAGE, help=MESSAGE,
        defaultConfiguration=described(enabled={"type": "boolean"}, level={"enum": ["none", "note", "warning", "error"]}))))),
    columnKind={"enum": ["utf16CodeUnits", "unicodeCodePoints"]},
    results=many(described(
        ruleId=TEXT, ruleIndex={"type": "integer"}, level={"enum": ["none", "note", "warning", "error"]}, message=MESSAGE,
        locations=many(described(physicalLocation=described(
            artifactLocation=described(uri=TEXT), region=described(startLine={"type": "integer"},
                                                                   startColumn={"type": "integer"}))))))))})


class Companion(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="qnpp-companion-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def run_in(self, command, files=None, stdin=b"", **keywords):
        for name, text in (files or {}).items():
            (self.folder / name).write_bytes(text if isinstance(text, bytes) else text.encode())
        return subprocess.run(command, cwd=self.folder, input=stdin, capture_output=True, timeout=120,
                              env={**os.environ, "LC_ALL": "C"}, **keywords)


class ExplainTest(Companion):
    def explain(self, files, *words):
        """The explanation of a.txt, or of what the words name."""
        if not any(word.startswith("a.txt") for word in words):
            words = (*words, "a.txt")
        done = self.run_in([OPTIONS.explain, *words], files if isinstance(files, dict) else {"a.txt": files})
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return done.stdout.decode()

    def test_six_macros_deep_the_misspelt_one_is_shown_on_one_screen(self):
        source = ("#define SCALE 4\n#define ROUND(x) ((x) / SCALE)\n#define CLAMP(x, most) ((x) > most ? most : ROUND(x))\n"
                  "#define LIMIT(x) CLAMP(x, MAXIMUN)\n#define MAXIMUM 100\n#define LEVEL(x) LIMIT(x)\n"
                  "#define GAIN(x) LEVEL(x)\n#define VOLUME(x) GAIN(x)\nset(VOLUME(7));\n")
        shown = self.explain(source, "--width", "80", "a.txt:9")
        lines = shown.splitlines()
        self.assertLessEqual(len(lines), 24)
        self.assertLessEqual(max(map(len, lines)), 80)
        self.assertIn('MAXIMUN is no macro; the nearest is "MAXIMUM" (a.txt:5)', shown)
        self.assertIn("a.txt:4: #define LIMIT(x) CLAMP(x, MAXIMUN)", shown)

    def test_a_use_shows_arguments_replacement_and_what_made_it(self):
        self.assertEqual(
            self.explain("#define B(y, z) #y z y##1\n#define C 2\nx B(C, C)\n", "a.txt:3"),
            'a.txt:3: x B(C, C)\n'
            'a.txt:3> x "C" 2 C1\n'
            '+ B(C, C) -> "C" 2 C1\n'
            '| a.txt:1: #define B(y, z) #y z y##1\n'
            '| y = C is not expanded: operand of "#"\n'
            '| z = C -> 2\n'
            '| | + C -> 2\n'
            '| | | a.txt:2: #define C 2\n\n')

    def test_reasons_why_a_name_stands(self):
        rows = (
            ("#define f f x\nf\n", 2, 'f came out of the expansion of "f" at a.txt:2, so it is not expanded again'),
            ("#define f(x) x\nf;\n", 2, 'f is not used: no "(" follows'),
            ("#define f(x) x\nf(1, 2)\n", 2, "f is not used: its arguments are not right"),
            ("LATE\n#define LATE 1\n", 1, "LATE is not a macro yet: defined at a.txt:2"),
            ("#define GONE 1\n#undef GONE\nGONE\n", 3,
             "GONE is no longer a macro: defined at a.txt:1, undefined at a.txt:2"),
            ("#ifdef Q\n# define LOG_IT 1\n#endif\nLOG_IT\n", 4,
             "LOG_IT is no macro: defined only in a skipped group, at a.txt:2"),
            ("/* see\n#define HAS_LOG 1\n*/\n#if HAS_LOG\n#endif\n", 4,
             'HAS_LOG is no macro, so it counts as 0 in a condition: the "#define" at a.txt:2 is not read as one'),
            ("#define WIDTH 1\nWITDH\n", 2, 'WITDH is no macro; the nearest is "WIDTH" (a.txt:1)'),
            ("#define S(x) #x\n#define A 1\nS(A)\n", 3, 'x = A is not expanded: operand of "#"'),
            ("#define J(x) x##1\n#define A 1\nJ(A)\n", 3, 'x = A is not expanded: operand of "##"'),
        )
        for source, line, reason in rows:
            with self.subTest(reason):
                self.assertIn(reason + "\n", self.explain(source, f"a.txt:{line}"))

    def test_ordinary_words_are_no_news(self):
        self.assertEqual(self.explain("#define WIDTH 1\nwidth wide Width of it\n", "a.txt:2"),
                         "nothing in line 2 is a directive or a macro\n")
        for lines in ("9-12", "5-2"):
            self.assertEqual(self.explain("#define A\nA\n", f"a.txt:{lines}"),
                             f"nothing in lines {lines.replace('-', ' to ')} is a directive or a macro\n")
        self.assertEqual(self.explain("words\n"), "nothing is a directive or a macro\n")

    def test_a_negative_number_is_refused(self):
        for option in ("--most", "--most-uses"):
            done = self.run_in([OPTIONS.explain, option + "=-1", "a.txt"], {"a.txt": "x\n"})
            self.assertEqual((done.returncode, done.stdout), (2, b""))
            self.assertTrue(done.stderr.startswith(f"qnpp-explain: {option}: ".encode()), done.stderr)

    def test_conditions_show_their_values(self):
        source = "#define N 3\n#if N > 4 && defined(M)\nno\n#elif N\nyes\n#else\nno\n#endif\n"
        self.assertIn("  reads 3 > 4 && defined(M)\n  M is not defined\n  is 0: what follows is skipped\n",
                      self.explain(source, "a.txt:2"))
        self.assertIn('skipped: "#if N > 4 && defined(M)" at a.txt:2 is false: 3 > 4 && defined(M); M is not defined',
                      self.explain(source, "a.txt:3"))
        self.assertIn("  reads 3\n  is 3: what follows is read\n", self.explain(source, "a.txt:4"))
        self.assertIn('skipped: the group of "#elif N" at a.txt:4 was taken', self.explain(source, "a.txt:7"))

    def test_includes_show_where_they_were_looked_for(self):
        (self.folder / "inc").mkdir()
        (self.folder / "inc/h.h").write_text("#define H 1\n")
        shown = self.explain('#include "h.h"\n#include <none.h>\nH\n', "-Iinc")
        self.assertIn("  not there: h.h\n  found: inc/h.h\n", shown)
        self.assertIn("  not there: inc/none.h\n", shown)
        self.assertIn("| inc/h.h:1: #define H 1\n", shown)
        self.assertIn("  looked for nowhere: no -I names a directory\n", self.explain("#include <none.h>\n"))

    def test_only_the_lines_asked_for_are_shown(self):
        source = "#define A 1\n" + "A\n" * 5
        self.assertEqual(re.findall(r"^a\.txt:(\d+):", self.explain(source, "a.txt:3-4"), re.M), ["3", "4"])
        self.assertEqual(re.findall(r"^a\.txt:(\d+):", self.explain(source, "a.txt:5"), re.M), ["5"])
        # A file may be called so.
        self.assertIn("a.txt:3:1: A", self.explain({"a.txt:3": "A\n#define A\n"}, "a.txt:3"))

    def test_width_is_respected(self):
        source = "#define F(x) x x \u00e4\u00f6\u00fc x x\n" + "F(F(F(\u4e2d \u6587 text)))\n"
        for words, most in ((("--width", "30"), 30), (("--width=77",), 77), ((), 100)):
            for language in ("C", "C.UTF-8"):
                (self.folder / "a.txt").write_text(source)
                done = subprocess.run([OPTIONS.explain, *words, "a.txt"], cwd=self.folder, capture_output=True,
                                      env={**os.environ, "LC_ALL": language}, check=True)
                self.assertEqual(max(map(len, done.stdout.decode().splitlines())), most)

    def test_a_reason_goes_on_in_the_next_line(self):
        shown = self.explain("#define MAXIMUM_TEMPERATURE 1\n#define F MAXIMUM_TEMPERATUR\nF\n", "--width=40", "a.txt:3")
        self.assertIn("| + MAXIMUM_TEMPERATUR is no macro; the\n"
                      "| |   nearest is \"MAXIMUM_TEMPERATURE\"\n"
                      "| |   (a.txt:1)\n", shown)
        self.assertIn("a.txt:1: #if 0\n  is 0: what\n    follows is\n    skipped\n",
                      self.explain("#if 0\n#endif\n", "--width=20"))

    def on_terminal(self, *words):
        """What is written to a terminal of 50 columns."""
        control, terminal = pty.openpty()
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 50, 0, 0))
        with subprocess.Popen([OPTIONS.explain, *words], cwd=self.folder, stdout=terminal, env={**os.environ, "LC_ALL": "C"}):
            os.close(terminal)
            shown = b""
            try:
                while part := os.read(control, 10000):
                    shown += part
            except OSError:
                pass  # The end of a terminal whose process is gone.
        os.close(control)
        return shown.decode()

    def test_a_terminal_is_asked_for_its_width_and_gets_colours(self):
        (self.folder / "a.txt").write_text("#define A 1\nA " + "word " * 50 + "\n")
        coloured = self.on_terminal("a.txt:2")
        self.assertIn("\x1b[1mA\x1b[0m -> 1", coloured)
        plain = self.on_terminal("--color=never", "a.txt:2")
        self.assertEqual(plain, re.sub(r"\x1b\[\d*m", "", coloured))
        self.assertEqual(max(map(len, plain.splitlines())), 50)
        self.assertNotIn("\x1b", self.explain({}, "--width=50", "a.txt:2"))
        self.assertEqual(self.explain({}, "--width=50", "--color=always", "a.txt:2").splitlines(), coloured.splitlines())

    def test_lines_are_those_of_the_file_whatever_line_directives_say(self):
        self.assertIn("a.txt:4> 1", self.explain('#define A 1\n#line 90 "b"\n\nA\n', "a.txt:4"))

    def test_one_macro_alone(self):
        shown = self.explain("#define A 1\n#define B A\nA\nB\nC\n", "--macro", "B")
        self.assertTrue(shown.startswith("a.txt:2: #define B A\n  used 1 time\n"), shown)
        self.assertIn("+ B -> 1", shown)
        self.assertNotIn("a.txt:3", shown)
        asked = "#define Q\n#ifdef Q\n#elif 1\n#endif\n#if defined(Q)\n#endif\n#ifdef R\n#endif\n"
        self.assertEqual(re.findall(r"^a\.txt:(\d): #[ei]", self.explain(asked, "--macro=Q"), re.M), ["2", "5"])
        self.assertTrue(self.explain("__LINE__\n", "--macro=__LINE__").startswith("a.txt:1: __LINE__\n"))
        self.assertEqual(self.explain("A\n", "--macro=B"), "B is never defined\n\n")
        self.assertEqual(self.explain("#if 0\n#else\n#endif\n#if 0\n\n#define B\n#endif\n", "--macro=B", "a.txt:1"),
                         "B is no macro: defined only in a skipped group, at a.txt:6\n\n")

    def test_standard_input(self):
        done = self.run_in([OPTIONS.explain], stdin=b"#define A 1\nA\n")
        self.assertIn(b"stdin:2> 1\n", done.stdout)

    def test_a_pipe_is_read_once(self):
        for program, text, told in ((OPTIONS.explain, "#define A 1\nA\n", "pipe:2: A\npipe:2> 1\n"),
                                    (OPTIONS.check, "x\n#pragma once\n", "pipe:2: pragma-once: ")):
            os.mkfifo(self.folder / "pipe")
            with subprocess.Popen([program, "pipe"], cwd=self.folder, stdout=subprocess.PIPE, env={**os.environ, "LC_ALL": "C"}) as run:
                (self.folder / "pipe").write_text(text)
                self.assertIn(told, run.communicate(timeout=20)[0].decode())
            (self.folder / "pipe").unlink()

    def test_a_source_that_cannot_be_read(self):
        done = self.run_in([OPTIONS.explain, "none.txt:3"])
        self.assertEqual((done.returncode, done.stdout), (2, b""))
        self.assertEqual(done.stderr, b"qnpp-explain: cannot open none.txt\n")

    def test_a_page_does_not_take_the_place_of_what_is_read_or_of_other_text(self):
        texts = {"a.txt": '#include "h.h"\n', "h.h": "x\n", "other.txt": "precious\n", "page.html": "", "new.html": "<!DOCTYPE html>\n"}
        (self.folder / "link").symlink_to("a.txt")
        read, other = "would be overwritten, but it is read too", "would be overwritten, but it is no page"
        for words, message in ((["--html=a.txt", "a.txt"], f"'a.txt' {read}"), (["--html=./h.h", "a.txt"], f"'./h.h' {read}"),
                               (["--html=link", "a.txt:1"], f"'link' {read}"), (["--html", "a.txt"], f"'a.txt' {other}"),
                               (["--html=new.html", "new.html"], f"'new.html' {read}"),
                               (["--html=other.txt", "a.txt"], f"'other.txt' {other}"),
                               (["--html=", "a.txt"], "missing value for '--html'")):
            with self.subTest(words):
                done = self.run_in([OPTIONS.explain, *words], texts)
                self.assertEqual((done.returncode, done.stdout, done.stderr.decode()),
                                 (2, b"", f"qnpp-explain: {message}\n"))
                self.assertEqual({name: (self.folder / name).read_text() for name in texts}, texts)
        with open(self.folder / "a.txt", "rb") as source:
            done = subprocess.run([OPTIONS.explain, "--html=a.txt"], cwd=self.folder, stdin=source, capture_output=True, check=False)
        self.assertEqual((done.returncode, done.stderr.decode()), (2, f"qnpp-explain: 'a.txt' {read}\n"))
        for word in ("--html=page.html", "--html=page.html", "--html=none.html"):  # Empty, a page, and not there.
            self.assertEqual(self.explain({}, word), "")
            self.assertIn("</html>", (self.folder / word.partition("=")[2]).read_text())

    def test_an_empty_value_does_not_take_the_next_word(self):
        for program, word in ((OPTIONS.explain, "--macro="), (OPTIONS.explain, "--width="), (OPTIONS.check, "--format=")):
            done = self.run_in([program, word, "a.txt"], {"a.txt": "A\n"}, stdin=b"#define A\nA\n")
            self.assertEqual((done.returncode, done.stdout), (2, b""))
            self.assertTrue(done.stderr.endswith(f": missing value for '{word[:-1]}'\n".encode()), done.stderr)

    def test_bytes_that_would_steer_the_terminal_are_not_written(self):
        self.assertNotIn("\x1b", self.explain("#define A \x1b[31m\nA\n", "a.txt:2"))

    def test_a_name_with_a_line_end_stays_on_its_line(self):
        name, shown = "a\n\x1bb.txt", "a\\n\\x1bb.txt"
        (self.folder / name).write_text('#define A 1\nA\n#include "none"\n#pragma once\n')
        text = self.run_in([OPTIONS.explain, name]).stdout.decode()
        self.assertIn(f"{shown}:2: A\n{shown}:2> 1\n+ A -> 1\n| {shown}:1: #define A 1\n", text)
        self.assertEqual(json.loads(self.run_in([OPTIONS.explain, "--json", name]).stdout)["files"][0]["name"], name)
        done = self.run_in([OPTIONS.check, name, "c\nd"])
        self.assertEqual(done.stdout.decode().split(" ")[:2], [f"{shown}:4:", "pragma-once:"])
        self.assertEqual(done.stderr, b"qnpp-check: cannot open c\\nd\n")
        self.assertEqual(json.loads(self.run_in([OPTIONS.check, "--format=json", name]).stdout)[0]["file"], name)
        self.assertEqual(self.run_in([OPTIONS.explain, "c\nd"]).stderr, b"qnpp-explain: cannot open c\\nd\n")

    def test_a_division_by_zero_is_told(self):
        for source, line in (("#if 1 / 0\n#endif\n", 1), ("#if 0\n#elif 1 / 0\n#endif\n", 2)):
            shown = self.explain(source, f"a.txt:{line}")
            self.assertIn("the run ends here: division by zero", shown)
            self.assertNotIn("what follows", shown)
        self.assertIn("  the group at a.txt:1 was taken: what follows is skipped\n",
                      self.explain("#if 1\n#elif 1 / 0\n#endif\n", "a.txt:2"))

    def most_memory(self, *words):
        # A process of its own, whose only child is measured.
        code = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, check=True);"
                "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
        return int(self.run_in([sys.executable, "-c", code, OPTIONS.explain, *words]).stdout)

    def test_memory_follows_the_lines_that_are_asked_for(self):
        line = "text A(A(1)) " + "and more of it " * 32 + "\n"
        (self.folder / "a.txt").write_text("#define A(x) (x + x)\n" + line * 40000)
        self.assertGreater((self.folder / "a.txt").stat().st_size, 19_000_000)
        few = self.most_memory("a.txt:30000-30001")
        self.assertLess(few, 20_000)  # KB
        self.assertGreater(self.most_memory("a.txt:1-20000"), 2 * few)

    def test_what_is_left_out_is_said(self):
        shown = self.explain("#define A 1\n" + "A\n" * 100, "--most", "50")
        self.assertRegex(shown, r"What follows from a\.txt:\d+ on is left out")


class CheckTest(Companion):
    # By id: what is found, in which line, and a source that is alike but right.
    ROWS = (
        ("byte-order-mark", 1, "\ufeffx\n", "x\n"),
        ("comment-in-string", 1, "see http://example.org/\n", 'see "http://example.org/"\n'),
        ("comment-in-string", 1, "add lib/*.o here\nand\n", "add lib/ *.o /* x\n*/ here\n"),
        ("comment-in-string", 1, 'say "a\\n // b" c\n', 'say "a // b" // c\n'),
        ("directive-as-text", 3, "#define f(x) x\nf\n#define LOST\n", "#define f(x) x\nf;\n#define KEPT\n"),
        ("directive-as-text", 3, "#define f(x) x\nf(\n#ifdef A\n)\n", "#define f(x) x\nf(/*\n#ifdef A\n*/)\n"),
        ("divisor-in-condition", 2, "#define N 2\n#if defined(N) && 8 / N\n#endif\n", "#define N 2\n#if 8 / N\n#endif\n"),
        ("divisor-in-condition", 2, "#if 0\n#elif 8 / (1 - 1)\n#endif\n", "#if 1\n#elif 8 / (1 - 1)\n#endif\n"),
        ("lone-hash", 2, "#if 0\n#\n#endif\n#endif\n", "#if 0\n#\nx\n#\n#undef A\n#endif\n"),
        ("number-with-macro", 2, "#define f 1\n1.0f\n", "#define f 1\n1.0 f 0xf\n"),
        ("number-with-macro", 2, "#define e5 1\n1e5\n", "#define e5 1\n1 e5\n"),
        ("number-with-macro", 2, "#define F(x) 1\n2F(1)\n", "#define F(x) 1\n2F\n"),
        ("pragma-once", 1, "#pragma once\n", "#pragma twice\n"),
        ("string-with-escape", 2, '#define n 1\n"a n\\n"\n', '#define n 1\n"a n\\\\" n "\\""\n'),
        ("string-with-escape", 2, '#define f(x) 1\n"a f(1)\\n"\n', '#define f(x) 1\n"a f\\n"\n'),
        ("string-with-escape", 1, '#define S "a \\n  b"\n', '#define S "a \\n b"\n#define T "a  b"\n"a  \\n  b"\n'),
        ("string-with-escape", 3, '#define f(x) x\n\nf("a \\n\tb")\n', '#define f(x) x\ng("a\\n\tb") f("a\\n b")\n'
         '#define none(x)\nnone("a \\n  f")\n'),
        ("unknown-directive", 2, "#if 0\n#esle\n#endif\n", "#if 0\n#warning\n#endif\n"),
        ("words-behind-else", 3, "#if 1\nx\n#endif X\n", "#if 1\nx\n#endif // X\n"),
        ("words-behind-else", 2, "#ifdef g\n#else foo\n#endif\n", "#define g\n#ifdef g\n#else foo\n#endif\n#if 0\n#if 1\n#endif X\n#endif\n"),
        ("unused-macro", 1, "#define A 1\n", "#define A 1\n#ifdef A\n#endif\n"),
    )

    def check(self, source, *words):
        done = self.run_in([OPTIONS.check, "--enable", "unused-macro", *words, "a.txt"], {"a.txt": source})
        return done

    def findings(self, source):
        done = self.check(source, "--format", "json", "--disable", "unused-macro")
        return [(entry["id"], entry["line"]) for entry in json.loads(done.stdout)]

    def test_each_rule_finds_and_keeps_silent(self):
        for rule, line, bad, good in self.ROWS:
            with self.subTest(rule, source=bad):
                found = lambda text: [(entry["id"], entry["line"]) for entry in  # noqa: E731
                                      json.loads(self.check(text, "--format", "json").stdout) if entry["id"] == rule]
                self.assertEqual(found(bad), [(rule, line)])
                self.assertEqual(found(good), [])

    def test_a_finding_says_where_what_and_what_to_do(self):
        self.assertEqual(self.check("#if 0\n#esle\n#endif\n").stdout.decode(),
                         'a.txt:2: unknown-directive: "#esle" is no directive; the nearest is "#else". '
                         "Write the directive that is meant.\n")
        self.assertEqual(json.loads(self.check("#pragma once\n", "--format=json").stdout),
                         [{"id": "pragma-once", "file": "a.txt", "line": 1,
                           "text": '"#pragma once" does not keep the file from being read again',
                           "advice": "Begin the file with #ifndef NAME and #define NAME, and end it with #endif."}])

    def test_headers_without_a_guard(self):
        headers = {"no.h": "#define A 1\n", "guard.h": "#include <stdio.h>\n#ifndef B\n#define B\n#endif\n",
                   "table.def": "#define C 1\n"}
        includes = "".join(f'#include "{name}"\n' for name in headers)
        done = self.run_in([OPTIONS.check, "a.txt"], {**headers, "a.txt": includes * 2})
        self.assertEqual([line.split(" ")[:2] for line in done.stdout.decode().splitlines()], [["no.h:1:", "no-guard:"]])

    def test_an_output_that_is_the_source(self):
        self.assertIn(b"output-is-source: -o names the source", self.check("x\n", "-o", "./a.txt").stdout)

    def test_one_name_is_not_for_several_sources(self):
        files = {"a.txt": "#pragma once\n", "b.txt": "#pragma once\n"}
        self.assertEqual(self.run_in([OPTIONS.check, "a.txt", "b.txt"], files).stdout.count(b"\n"), 2)
        self.assertTrue(self.run_in([OPTIONS.check, "-s", "c", "a.txt"]).stdout.startswith(b"c:1: pragma-once: "))
        done = self.run_in([OPTIONS.check, "-s", "c", "a.txt", "b.txt"])
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (2, b"", b"qnpp-check: '-s' names one source, and there are several\n"))

    def test_an_ordinary_source_is_passed_in_silence(self):
        done = self.run_in([OPTIONS.check, "--error", "a.txt"], {"a.txt": (
            "/* A file. */\n#include <stdio.h>\n#define MAX(a, b) ((a) > (b) ? (a) : (b))\n#ifdef X // http://x\n#else\n"
            "#endif /* X */\nint main(void) { printf(\"%d\\n\", MAX(1, 2)); return 1.0f / 3; } // lib/*.o\n# pragma pack(1)\n")})
        self.assertEqual((done.returncode, done.stdout), (0, b""))

    def test_status_and_disable(self):
        source = "#pragma once\n"
        self.assertEqual(self.check(source).returncode, 0)
        self.assertEqual(self.check(source, "--error").returncode, 1)
        done = self.check(source, "--error", "--disable", "pragma-once")
        self.assertEqual((done.returncode, done.stdout), (0, b""))
        self.assertEqual(self.run_in([OPTIONS.check, "none.txt"]).returncode, 2)
        self.assertEqual(self.check(source, "--disable", "nonsense").returncode, 2)

    def sarif(self, name, source, *words):
        (self.folder / os.fsdecode(name)).write_bytes(source)
        done = self.run_in([OPTIONS.check, "--format=sarif", *words, name])
        log = json.loads(done.stdout)
        self.assertIsNone(complaint(log, SARIF, SARIF))
        return log["runs"][0]

    def test_sarif_names_rule_place_and_advice(self):
        run = self.sarif("a.txt", b"x\n#pragma once\n#endif X\n", "-o", "./a.txt")
        self.assertEqual([result["ruleId"] for result in run["results"]],
                         ["output-is-source", "pragma-once", "words-behind-else"])
        for result, line in zip(run["results"], (1, 2, 3)):
            rule = run["tool"]["driver"]["rules"][result["ruleIndex"]]
            self.assertEqual(rule["id"], result["ruleId"])
            self.assertTrue(result["message"]["text"].endswith(". " + rule["help"]["text"]))
            place, = result["locations"]
            self.assertEqual(place["physicalLocation"], {"artifactLocation": {"uri": "a.txt"},
                                                         "region": {"startLine": line, "startColumn": 1}})
        self.assertEqual(run["tool"]["driver"]["name"], "qnpp-check")
        self.assertEqual(self.sarif("b.txt", b"x\n")["results"], [])

    def test_sarif_writes_names_of_files_as_references(self):
        for name, uri in (("a b.txt", "a%20b.txt"), ("a:b#c?d%.txt", "a%3Ab%23c%3Fd%25.txt"), ("\u00e4.txt", "%C3%A4.txt"),
                          (b"\xff\\\n", "%FF%5C%0A"), (os.fsencode(self.folder) + b"/x", f"file://{self.folder}/x")):
            run = self.sarif(name, b"#pragma once\n")
            self.assertEqual(run["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"]["uri"], uri)


class DocumentsTest(Companion):
    @unittest.skipUnless(jsonschema, "python3-jsonschema is not installed")
    def test_the_schema_is_one_and_describes_the_events(self):
        schema = json.loads((pathlib.Path(OPTIONS.source) / "tools/explain/explain.schema.json").read_text())
        validator = jsonschema.validators.validator_for(schema)
        validator.check_schema(schema)
        (self.folder / "h.h").write_text("#define H 1\n")
        done = self.run_in([OPTIONS.explain, "--json"], stdin=(
            b'#include "h.h"\n#define J(a, b) #a a##b a\n#if H > 2 && defined(J)\nno\n#elif 1u\nJ(H, H) H(\xff) J(1\n#endif\n'
            b"#undef H\n#line 7 \"x\"\nH __LINE__ J\n#include <none>\n"))
        told = json.loads(done.stdout)
        validator(schema).validate(told)
        self.assertEqual({name for name in told if told[name] == []}, set(), "nothing of the schema is tried out")
        # And it is not one that everything follows.
        for name in told:
            with self.assertRaises(jsonschema.ValidationError):
                validator(schema).validate({other: told[other] for other in told if other != name})

    def test_manual_knows_all_rules_and_no_others(self):
        done = self.run_in([OPTIONS.check, "--disable", "none"])
        rules = done.stderr.decode().partition("{")[2].partition("}")[0].split(",")
        self.assertGreater(len(rules), 10)
        findings = (pathlib.Path(OPTIONS.source) / "docs/qnpp-check.1.md").read_text().partition("## FINDINGS")[2].partition("\n## ")[0]
        self.assertEqual(sorted(re.findall(r"^- `([a-z-]+)`\\$", findings, re.M)), rules)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for name in ("explain", "check", "source"):
        parser.add_argument("--" + name, required=True)
    OPTIONS = parser.parse_args()
    OPTIONS.explain, OPTIONS.check = (str(pathlib.Path(path).resolve()) for path in (OPTIONS.explain, OPTIONS.check))
    unittest.main(argv=sys.argv[:1], verbosity=0)
