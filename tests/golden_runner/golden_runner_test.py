#!/usr/bin/env python3
"""A comparison that never fails, or a word that reaches the program changed, would make every golden case worthless
without anyone noticing."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True

import golden_cases  # noqa: E402
import golden_runner  # noqa: E402
from golden_cases import CaseError  # noqa: E402

RUNNER = pathlib.Path(__file__).with_name("golden_runner.py")


class CaseTest(unittest.TestCase):
    """A folder of cases, and /bin/sh as the program: the command line of a case is a script."""

    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.root = pathlib.Path(holder.name)
        (self.root / "area").mkdir()

    def write(self, text, name="case.txtar"):
        path = self.root / "area" / name
        path.parent.mkdir(exist_ok=True)
        path.write_bytes(text.encode("latin-1"))

    def read(self, text=None):
        if text is not None:
            self.write(text)
        return golden_cases.read_case(golden_cases.find_cases(self.root)[-1])

    def run_script(self, script, text="Because.\n", seconds=20):
        return golden_runner.run_case(self.read(text), ["/bin/sh", "-c", script], seconds)

    def check(self, script, text):
        outcome, killed_by = self.run_script(script, text)
        self.assertEqual("", killed_by)
        return golden_runner.compare(self.read().expectation, outcome)

    def runner(self, *words):
        done = subprocess.run([RUNNER, "--program", "/bin/sh", "--cases", self.root, *words], capture_output=True,
                              text=True)
        return done.returncode, done.stdout + done.stderr


class Form(CaseTest):
    def refuses(self, message, text=None):
        with self.assertRaisesRegex(CaseError, message):
            case = self.read(text)
            case.words, case.expectation

    def test_parts_are_taken_byte_for_byte(self):
        case = self.read("Because,\nindeed.\n\n-- input.c --\n\n-- a b.h --\n-- sub/a.h --\n x \n\n"
                         "-- expect/sub/o --\n- --\n")
        self.assertEqual("Because,\nindeed.", case.why)
        self.assertEqual({"input.c": b"\n", "a b.h": b"", "sub/a.h": b" x \n\n"}, case.inputs)
        self.assertEqual({"stdout": b"", "stderr": b"", "status": b"0", "expect/sub/o": b"- --\n"}, case.expectation)

    def test_a_folder_holds_what_a_file_cannot(self):
        self.write("Because.\n", "case/why")
        self.write("a\r\n\x00\xff", "case/input.c")
        self.write("1\n", "case/status")
        case = self.read()
        self.assertEqual(("area/case", "Because."), (case.title, case.why))
        self.assertEqual({"input.c": b"a\r\n\x00\xff"}, case.inputs)
        self.write("-- stdout --\n", "case/input.c")
        self.assertEqual({"input.c": b"-- stdout --\n"}, self.read().inputs)

    def test_a_file_holds_plain_lines(self):
        for text in ("Because.\r\n", "Because.\n-- input.c --\na\f\n", "Because.\n-- input.c --\na", "\xff\n"):
            self.refuses("a file holds plain lines", text)

    def test_a_case_without_its_reason_is_refused(self):
        for text in ("", " \n", "-- input.c --\nx\n"):
            self.refuses("does not say why", text)

    def test_names_are_checked(self):
        self.refuses("unknown section stdou$", "Because.\n-- stdou --\n")
        self.refuses("unknown section why$", "Because.\n-- why --\n")
        self.refuses("two sections are called stdout", "Because.\n-- stdout --\na\n-- stdout --\n")
        self.refuses("no section mark", "Because.\n-- stdout -- \n")
        self.refuses("no section mark", "Because.\n--  stdout --\n")
        for name in ("/a.h", "../a.h", "a/../b.h", "expect/"):
            self.refuses("no name within", f"Because.\n-- {name} --\n")
        self.assertEqual({"out": b""}, self.read("Because.\n-- args --\n-oout\n-- out --\n").inputs)

    def test_a_status_is_a_number_or_a_signal(self):
        self.refuses("neither a number", "Because.\n-- status --\nbad\n")

    def test_what_is_no_case_is_noticed(self):
        self.write("Because.\n", "case.txt")
        self.refuses("is no case")

    def test_a_name_is_given_once(self):
        self.write("Because.\n", "case/why")
        self.refuses("two cases", "Because.\n")

    def test_a_word_is_a_line(self):
        for text, words in ((b"", []), (b"\n", [b""]), (b"-o\nout file\n", [b"-o", b"out file"]),
                            (b"-o\n\ninput.c", [b"-o", b"", b"input.c"]), (rb"a\n\t\r\\\x41\xe9", [b"a\n\t\r\\A\xe9"])):
            self.assertEqual(words, golden_cases.parse_words(text))
        for text in (b"\\", rb"\q", rb"\x", rb"\x4", rb"\xg0", rb"\x00"):
            with self.assertRaises(CaseError, msg=text):
                golden_cases.parse_words(text)

    def test_the_source_alone_is_the_command_line_by_default(self):
        self.assertEqual([], self.read("Because.\n").words)
        self.assertEqual([b"input.c"], self.read("Because.\n-- input.c --\n").words)
        self.assertEqual([], self.read("Because.\n-- input.c --\n-- args --\n").words)


class Runs(CaseTest):
    def test_the_program_sees_the_inputs_and_nothing_else(self):
        text = ("Because.\n-- args --\nA\n b\\n\n-- sub/a.h --\nh\n-- stdin --\nbytes\n-- stderr --\n"
                "-- stdout --\n./sub\n./sub/a.h\nbytes\n<A>< b\n>C UTC unset\n")
        script = 'find . -mindepth 1 | sort; cat; printf "<%s>" "$0" "$@"; echo $LC_ALL $TZ ${HOME-unset}'
        self.assertEqual("", self.check(script, text))

    def test_each_kind_of_difference_is_reported(self):
        text = "Because.\n-- stdout --\nout\n-- stderr --\nerr\n-- status --\n3\n-- expect/made --\ntext\n"
        good = "echo out; echo err >&2; echo text >made; exit 3"
        self.assertEqual("", self.check(good, text))
        for old, new in (("out;", "Out;"), ("err", "Err"), ("text", "Text"), (">made", ">&2"), ("exit 3", "exit 4"),
                         ("out;", "out; echo x >other;"), ("echo out", "printf out")):
            self.assertNotEqual("", self.check(good.replace(old, new), text), new)

    def test_an_input_may_be_expected_to_stay_as_it_is(self):
        text = "Because.\n-- a.h --\nx\n-- expect/a.h --\nx\n"
        self.assertEqual("", self.check("true", text))
        self.assertIn("expect/a.h", self.check("rm a.h", text))
        self.assertIn("expect/a.h", self.check("echo y >a.h", text.replace("expect/a.h", "expect/b.h")))

    def test_a_signal_is_a_status(self):
        text = "Because.\n-- status --\nSIGFPE\n"
        self.assertEqual("", self.check("kill -FPE $$", text))
        self.assertIn("status differs", self.check("exit 136", text))

    def test_a_program_that_hangs_is_killed_with_its_children(self):
        for script in ("sleep 60 & sleep 60", "sleep 60 & exit 0", "exec >&- 2>&-; sleep 60"):
            self.assertIn("more than 0.1 s", self.run_script(script, seconds=0.1)[1])

    def test_a_program_that_writes_without_end_is_killed(self):
        self.assertIn("wrote more", self.run_script("exec cat /dev/zero")[1])

    def test_a_program_that_is_not_there_is_an_error(self):
        with self.assertRaisesRegex(CaseError, "cannot start /no/such/program"):
            golden_runner.run_case(self.read("Because.\n"), ["/no/such/program"])


class Differences(unittest.TestCase):
    def test_changed_lines_stand_among_their_neighbours(self):
        self.assertEqual("    @@ -3,5 +3,6 @@\n     3\n     4\n     5\n    -old\n    +new\n    +more\n     7\n",
                         golden_runner.difference(b"1\n2\n3\n4\n5\nold\n7\n", b"1\n2\n3\n4\n5\nnew\nmore\n7\n"))

    def test_what_differs_looks_different(self):
        lines = golden_runner.lines_of(b"a\tb \n\r\0\xe9\\\n\nx")
        self.assertEqual([r"a\tb\x20", r"\r\x00\xe9\\", "", "x   (no line end)"],
                         [golden_runner.visible_line(line) for line in lines])

    def test_a_long_difference_is_cut_off(self):
        many = b"x\n" * 5000
        for old, new in ((many, many.replace(b"x", b"y")), (many, b""), (many + b"y\n", many)):
            lines = golden_runner.difference(old, new).splitlines()
            self.assertTrue(1 < len(lines) < 130)
            self.assertEqual(len(lines) > 9, "left out" in lines[-1])


class CommandLine(CaseTest):
    def setUp(self):
        super().setUp()
        self.write("Because.\n-- args --\n-c\necho new; echo text >made; exit 2\n-- stderr --\nold\n", "bad.txtar")
        self.write("Because.\n-- args --\n-c\ntrue\n", "good.txtar")

    def test_a_failing_case_tells_its_reason_and_how_to_run_it_again(self):
        status, text = self.runner()
        self.assertEqual(1, status)
        self.assertIn("why:     Because.\ncommand: qnpp -c 'echo new;", text)
        self.assertIn(f"rerun:   {RUNNER} --program /bin/sh --cases {self.root} area/bad\n", text)
        self.assertTrue(text.endswith("\n1 passed, 1 failed\n"))

    def test_a_malformed_case_fails(self):
        self.write("-- input.c --\n", "good.txtar")
        status, text = self.runner("area/good")
        self.assertEqual(1, status)
        self.assertIn("does not say why", text)

    def test_cases_are_chosen_by_area_name_or_part(self):
        self.write("Because.\n", "good-too.txtar")
        for word, titles in (("area", "area/bad\narea/good\narea/good-too\n"), ("area/good", "area/good\n"),
                             ("goo", "area/good\narea/good-too\n")):
            self.assertEqual((0, titles), self.runner("--list", word))
        self.assertEqual(2, self.runner("no-such-case")[0])

    def test_a_case_that_cannot_hold_has_to_fail(self):
        def excuse(text, *words):
            (self.root / "list").write_text(text)
            return self.runner("--cannot-hold", str(self.root / "list"), *words)

        self.assertEqual((0, "1 passed, 0 failed, 1 cannot hold\n"), excuse("# Here.\narea/bad: for a reason\n"))
        status, text = excuse("area/good: for a reason\n", "good")
        self.assertEqual(1, status)
        self.assertIn("the case holds, but is listed", text)
        self.assertIn("no case of", excuse("area/other: for a reason\n")[1])
        self.assertIn("has a line that is not", excuse("area/bad\n")[1])
        self.write("Because.\n-- args --\n-c\nsleep 60\n", "bad.txtar")
        self.assertIn("1 failed", excuse("area/bad: for a reason\n", "--time-limit", "1", "bad")[1])

    def test_a_program_that_is_not_there_is_told_once(self):
        status, text = self.runner("--program", "/no/such/program")
        self.assertEqual((2, 1), (status, text.count("there is no program")))

    def test_an_update_makes_the_case_hold(self):
        status, text = self.runner("--update")
        self.assertTrue(text.endswith("\n1 passed, 0 failed, 1 rewritten\n"), text)
        self.assertEqual((0, "2 passed, 0 failed\n"), self.runner())
        self.assertEqual("Because.\n-- args --\n-c\necho new; echo text >made; exit 2\n"
                         "-- stdout --\nnew\n-- status --\n2\n-- expect/made --\ntext\n",
                         (self.root / "area/bad.txtar").read_text())

    def test_an_update_takes_the_form_that_is_needed(self):
        self.write("Because.\n-- args --\n-c\nprintf x\n", "good.txtar")
        self.assertEqual(0, self.runner("--update", "good")[0])
        self.assertEqual((0, "1 passed, 0 failed\n"), self.runner("good"))
        self.assertEqual("x", (self.root / "area/good/stdout").read_text())

    def test_a_folder_without_need_is_refused_until_an_update(self):
        (self.root / "area/good.txtar").unlink()
        self.write("Because.\n", "good/why")
        self.write("-c\necho x\n", "good/args")
        self.write("x\n", "good/stdout")
        self.assertIn("nothing in this case needs a folder", self.runner("good")[1])
        self.assertEqual(0, self.runner("--update", "good")[0])
        self.assertEqual("Because.\n-- args --\n-c\necho x\n-- stdout --\nx\n",
                         (self.root / "area/good.txtar").read_text())

    def test_an_update_never_takes_over_from_a_killed_program(self):
        self.write("Because.\n-- args --\n-c\nsleep 60\n", "good.txtar")
        status, text = self.runner("--update", "--time-limit", "1", "good")
        self.assertEqual(1, status)
        self.assertIn("the program was killed: it ran for more than 1 s", text)


if __name__ == "__main__":
    unittest.main()
