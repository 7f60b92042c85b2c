#!/usr/bin/env python3
"""What qnpp-build promises:

    program_test.py <qnpp-build> <folder of the golden cases> [names of tests...]
"""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "golden_runner"))

import golden_cases  # noqa: E402
import golden_runner  # noqa: E402

PROGRAM, GOLDEN = os.path.abspath(sys.argv[1]), sys.argv[2]
del sys.argv[1:3]


class ProgramTest(unittest.TestCase):
    """Each test begins in an empty folder."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, **files):
        """The names of the files, with "__" for a slash and "_" for a full stop."""
        for name, text in files.items():
            path = self.folder / name.replace("__", "/").replace("_", ".")
            path.parent.mkdir(exist_ok=True)
            path.write_text(text)

    def read(self, name):
        return (self.folder / name).read_text()

    def names(self):
        return sorted(path.relative_to(self.folder).as_posix() for path in self.folder.rglob("*"))

    def run_program(self, *words, stdin="", status=0, stderr=""):
        """The standard output of a run that ends as is said."""
        done = subprocess.run([PROGRAM, *words], cwd=self.folder, input=stdin, capture_output=True, text=True, timeout=60)
        self.assertEqual((done.returncode, done.stderr), (status, stderr))
        return done.stdout

    # ---- The result ----

    def test_result_without_errors_is_written(self):
        self.write(a_in="x\n")
        self.assertEqual(self.run_program("-o", "a", "a.in"), "")
        self.assertEqual(self.read("a"), '#line 1 "a.in"\nx\n')
        self.assertEqual(self.names(), ["a", "a.in"])

    def test_an_error_leaves_nothing(self):
        self.write(a_in="x\n#error no\n", a="old\n", a_d="old\n", table="old\n")
        self.run_program("-MD", "-o", "a", "--file-table=table", "a.in", status=1,
                         stderr="a.in:2: #error directive:  no.\n")
        self.assertEqual(self.names(), ["a.in"])
        self.assertEqual(self.run_program("a.in", status=1, stderr="a.in:2: #error directive:  no.\n"), "")

    def test_a_zero_divisor_is_named(self):
        self.write(a_in='\n#include "b"\n', b="\n\n#if 1 % 0\n#endif\n")
        self.run_program("-o", "a", "a.in", status=1, stderr="b:3: Division by zero, or out of range, in a condition.\n")
        self.write(a_in='#line 7 "c"\n#if 0\n#elif 1 / 0\n#endif\n')
        self.run_program("-o", "a", "a.in", status=1, stderr="c:9: Division by zero, or out of range, in a condition.\n")

    def test_a_warning_is_no_error(self):
        self.write(a_in="#define A 1\n#define A 2\nA\n")
        self.run_program("-o", "a", "a.in", stderr='a.in:2: Warning: Macro "A" has an incompatible redefinition.\n')
        self.assertEqual(self.read("a"), '#line 1 "a.in"\n#line 3 "a.in"\n2\n')

    def test_a_source_that_is_missing_or_unreadable_leaves_nothing(self):
        self.write(a="old\n")
        self.run_program("-o", "a", "a.in", status=1, stderr="FATAL ERROR: cannot open a.in.\n")
        self.assertEqual(self.names(), [])

    def test_a_result_that_cannot_be_written_is_an_error(self):
        self.write(a_in="x\n", file="")
        self.run_program("-o", "none/a", "a.in", status=2,
                         stderr="qnpp-build: cannot write 'none/a': No such file or directory\n")
        self.run_program("-MF", "file/d", "-o", "a", "a.in", status=2,
                         stderr="qnpp-build: cannot write 'file/d': Not a directory\n")
        self.assertEqual(self.names(), ["a.in", "file"])

    def test_a_full_disk_is_an_error(self):
        self.write(a_in="x\n")
        self.run_program("-o", "/dev/full", "a.in", status=2,
                         stderr="qnpp-build: cannot write '/dev/full': No space left on device\n")
        self.assertTrue(os.path.exists("/dev/full"))
        with open("/dev/full", "w") as full:
            done = subprocess.run([PROGRAM, "a.in"], cwd=self.folder, stdout=full, stderr=subprocess.PIPE, text=True)
        self.assertEqual((done.returncode, done.stderr),
                         (2, "qnpp-build: cannot write to standard output: No space left on device\n"))

    def test_a_file_that_may_not_grow_leaves_nothing(self):
        self.write(a_in="x" * 5000 + "\n", a="old\n")
        done = subprocess.run(["bash", "-c", 'ulimit -f 1; "$@"', "", PROGRAM, "-MD", "-o", "a", "a.in"], cwd=self.folder,
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (2, "qnpp-build: cannot write 'a': File too large\n"))
        self.assertEqual(self.names(), ["a.in"])

    def test_the_old_result_stays_until_the_new_one_is_there(self):
        self.write(a="old\n")
        process = subprocess.Popen([PROGRAM, "-o", "a"], cwd=self.folder, stdin=subprocess.PIPE)
        process.stdin.write(b"new\n" * 100000)
        process.stdin.flush()
        time.sleep(0.05)
        self.assertEqual(self.read("a"), "old\n")
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(), -signal.SIGTERM)
        process.stdin.close()
        self.assertEqual((self.names(), self.read("a")), (["a"], "old\n"))

    def test_links_and_modes_stay(self):
        self.write(a_in="x\n", folder__a="old\n")
        (self.folder / "folder/a").chmod(0o640)
        (self.folder / "a").symlink_to("folder/a")
        self.run_program("-o", "a", "a.in")
        self.assertEqual(os.readlink(self.folder / "a"), "folder/a")
        self.assertEqual(self.read("folder/a"), '#line 1 "a.in"\nx\n')
        self.assertEqual((self.folder / "folder/a").stat().st_mode & 0o777, 0o640)

    def test_a_new_result_has_the_mode_of_any_new_file(self):
        self.write(a_in="x\n", other="")
        self.run_program("-o", "a", "a.in")
        self.assertEqual((self.folder / "a").stat().st_mode, (self.folder / "other").stat().st_mode)

    def test_what_is_no_file_is_written_to(self):
        os.mkfifo(self.folder / "pipe")
        process = subprocess.Popen([PROGRAM, "-o", "pipe"], cwd=self.folder, stdin=subprocess.PIPE)
        process.stdin.write(b"x\n")
        process.stdin.close()
        self.assertEqual(self.read("pipe"), '#line 1 "stdin"\nx\n')
        self.assertEqual((process.wait(), self.names()), (0, ["pipe"]))

    def test_what_is_read_is_not_overwritten(self):
        self.write(a_in='#include "b"\n', b="b\n")
        (self.folder / "link").symlink_to("b")
        for words in (["-o", "a.in"], ["-o", "./b"], ["-o", "link"], ["-MF", "b", "-o", "a"]):
            self.run_program(*words, "a.in", status=2, stderr=f"qnpp-build: '{words[1]}' would be overwritten, but it is read too\n")
        self.run_program("-MF", "a", "-o", "a", "a.in", status=2,
                         stderr="qnpp-build: 'a' would be two of the files to be written\n")
        self.assertEqual((self.read("a.in"), self.read("b")), ('#include "b"\n', "b\n"))

    def test_an_unchanged_result_is_left_alone_when_asked(self):
        self.write(a_in="x\n")
        self.run_program("-o", "a", "a.in")
        os.utime(self.folder / "a", (1, 1))
        self.run_program("--keep-unchanged", "-MD", "-o", "a", "a.in")
        self.assertEqual((self.folder / "a").stat().st_mtime, 1)
        self.run_program("-o", "a", "a.in")
        self.assertNotEqual((self.folder / "a").stat().st_mtime, 1)
        for text in ("x\ny\n", "", "y\n"):
            os.utime(self.folder / "a", (1, 1))
            self.write(a_in=text)
            self.run_program("--keep-unchanged", "-o", "a", "a.in")
            self.assertNotEqual((self.folder / "a").stat().st_mtime, 1)
            self.assertEqual(self.read("a"), '#line 1 "a.in"\n' + text)

    # ---- The dependency file ----

    def test_dependencies_are_all_files_that_were_read(self):
        self.write(a_in='#include "b"\n#include <c>\n#include "b"\n', b="", i__c='#include "d"\n', i__d="")
        self.run_program("-Ii", "-MD", "-o", "a", "a.in")
        self.assertEqual(self.read("a.d"), "a: \\\n  a.in \\\n  b \\\n  i/c \\\n  i/d\n")
        self.run_program("-Ii", "-MMD", "-MP", "-MF", "f", "-o", "a", "a.in")
        self.assertEqual(self.read("f"), "a: \\\n  a.in \\\n  b \\\n  i/c \\\n  i/d\nb:\ni/c:\ni/d:\n")

    def test_targets_are_as_they_are_asked_for(self):
        self.write(a_in="")
        for words, targets in (([], "a"), (["-MT", "x$y z"], "x$y z"), (["-MQ", "x$y z"], "x$$y\\ z"),
                               (["-MTx", "-MT", "y", "-MQ", "z"], "x y z"), (["-MT", "-MP"], "-MP")):
            self.run_program("-MFf", *words, "-o", "a", "a.in")
            self.assertEqual(self.read("f"), targets + ": \\\n  a.in\n")
        self.run_program("-MF", "f", "-MT", "x", stdin="text\n")
        self.assertEqual(self.read("f"), "x:\n")

    def test_the_program_can_be_a_dependency(self):
        self.write(a_in="")
        self.run_program("-MD", "--depend-on-program", "-MT", "x", "-o", "a", "a.in")
        program = os.path.realpath(PROGRAM).replace(" ", "\\ ")
        self.assertEqual(self.read("a.d"), f"x: \\\n  a.in \\\n  {program}\n")

    def test_names_without_a_spelling_are_links(self):
        self.write(a_in='#include "b;c"\n')
        (self.folder / "b;c").write_text("")
        self.run_program("-MD", "-o", "a", "a.in")
        link, = (self.folder / "a.d.links").iterdir()
        self.assertEqual(self.read("a.d"), f"a: \\\n  a.in \\\n  a.d.links/{link.name}\n")
        self.assertEqual(os.readlink(link), os.path.realpath(self.folder) + "/b;c")

    # ---- Line directives and names ----

    def test_line_directives_have_the_style_that_is_asked_for(self):
        self.write(a_in='x\n#include "b"\ny\n#line 7 "c\\\\d"\nz\n\n#define A\nu\n', b="b\n")
        plain = ["x", "b", "y", "z", "", "u"]
        for style, directives in (
                ("hash", ['#line 1 "a.in"', '#line 1 "b"', '#line 3 "a.in"', '#line 7 "c\\\\\\\\d"', '#line 8 "c\\\\\\\\d"',
                          '#line 11 "c\\\\\\\\d"']),
                ("gnu", ['# 1 "a.in"', '# 1 "b" 1', '# 3 "a.in" 2', '# 7 "c\\\\\\\\d"', '# 8 "c\\\\\\\\d"', '# 11 "c\\\\\\\\d"']),
                ("glsl", [None, "#line 1 1", "#line 3 0", "#line 7 2", "#line 8 2", "#line 11 2"]),
                ("none", [None] * 6)):
            d = directives
            lines = [d[0], plain[0], d[1], plain[1], d[2], plain[2], d[3], d[4], plain[3], plain[4], d[5], plain[5]]
            table = ['// 0 "a.in"', '// 1 "b"', '// 2 "c\\\\\\\\d"'] if style == "glsl" else []
            self.assertEqual(self.run_program(f"--line-directives={style}", "a.in").split("\n"),
                             [line for line in lines + table if line is not None] + [""])
        self.run_program("--line-directives=glsl", "--file-table=t", "-o", "a", "a.in")
        self.assertEqual(self.read("t"), '0 "a.in"\n1 "b"\n2 "c\\\\\\\\d"\n')
        self.assertNotIn("//", self.read("a"))

    def test_odd_names_are_strings_of_c_in_the_style_gnu(self):
        self.assertEqual(self.run_program("--line-directives=gnu", "-s", 'a"\n\\é', stdin="x\n"),
                         '# 1 "a\\"\\012\\\\é"\nx\n')

    def test_a_name_for_the_source_need_not_change_the_search(self):
        self.write(s__a_in='#include "b"\n__FILE__\n#error e\n', s__b="b\n")
        error = "o/n:3: #error directive:  e.\n"
        self.run_program("--source-name=o/n", "s/a.in", status=1, stderr=error)
        self.write(s__a_in='#include "b"\n__FILE__\n')
        self.assertEqual(self.run_program("--source-name=o/n", "s/a.in"),
                         '#line 1 "o/n"\n#line 1 "s/b"\nb\n#line 2 "o/n"\n"o/n"\n')
        self.run_program("-s", "o/n", "s/a.in", status=1, stderr="o/n:1: Cannot open file: b.\n")

    def test_prefixes_are_mapped_but_not_in_messages(self):
        self.write(s__a_in='#include "b"\n#include <c>\n', s__b='__FILE__\n#include "d"\n', s__d="d\n", i__c="__FILE__\n")
        words = ("-Ii", "-MFf", "-MTx", "--prefix-map=s/=/src/", "--prefix-map=i/=")
        self.assertEqual(self.run_program(*words, "s/a.in"),
                         '#line 1 "/src/a.in"\n#line 1 "/src/b"\n"/src/b"\n#line 1 "/src/d"\nd\n#line 3 "/src/b"\n'
                         '#line 2 "/src/a.in"\n#line 1 "c"\n"c"\n#line 3 "/src/a.in"\n')
        self.assertEqual(self.read("f"), "x: \\\n  s/a.in \\\n  s/b \\\n  s/d \\\n  i/c\n")
        self.write(s__d="#error e\n")
        self.run_program(*words, "s/a.in", status=1, stderr="s/d:1: #error directive:  e.\n")
        self.write(s__d="#if 1/0\n#endif\n")
        self.run_program(*words, "s/a.in", status=1, stderr="s/d:1: Division by zero, or out of range, in a condition.\n")

    def test_two_files_do_not_show_under_one_name(self):
        self.write(a_in='#include "i/c"\n#include "j/c"\n', i__c="", j__c="", a="old")
        maps = ("--prefix-map=i/=", "--prefix-map=j/=")
        self.run_program(*maps, "-o", "a", "a.in", status=2,
                         stderr="qnpp-build: 'i/c' and 'j/c' would both show as 'c'\n")
        self.assertFalse((self.folder / "a").exists())
        self.write(a_in='#include "i/c"\n#include "j/../i/c"\n')
        self.run_program("--prefix-map=i/=", "--prefix-map=j/../i/=", "-MD", "-o", "a", "a.in")
        self.assertEqual(self.read("a.d"), "a: \\\n  a.in \\\n  i/c\n")

    # ---- The command line ----

    def test_help_and_version_are_no_failures(self):
        self.assertIn("--prefix-map=<old>=<new>", self.run_program("--help"))
        self.assertRegex(self.run_program("-v"), r"^qnpp-build version \d+\.\d+\.\d+ ")

    def test_words_may_stand_in_a_file(self):
        self.write(w="-DA=b c\n\n-o\na\na.in\n", a_in="A\n")
        self.run_program("--options-from=w")
        self.assertEqual(self.read("a"), '#line 1 "a.in"\nb c\n')
        self.run_program("--options-from", "none", status=2, stderr="qnpp-build: cannot read 'none'\n")

    def test_wrong_words_leave_everything_as_it_is(self):
        self.write(a="old\n", a_in="x\n")
        for words, message in (
                (["-MP"], "qnpp-build: there is no dependency file without '-MD', '-MMD' or '-MF'"),
                (["-MT"], "qnpp-build: missing value for '-MT'"),
                (["-MD", "-MT", "", "a.in"], "qnpp-build: missing value for '-MT'"),
                (["--source-name=", "b.in"], "qnpp-build: missing value for '--source-name'"),
                (["--line-directives=glsl", "--file-table=", "a.in"], "qnpp-build: missing value for '--file-table'"),
                (["-MX"], "qnpp: unknown option '-MX' ('-h' for help)"),
                (["--prefix-map=x"], "qnpp-build: '--prefix-map' wants <old>=<new>, not 'x'"),
                (["--depfile-format=nmake"], "qnpp-build: --depfile-format: nmake not in {make,ninja,cmake}"),
                (["-D"], "qnpp: missing macro for '-D' option number 1"),
                (["b.in"], "qnpp: cannot provide more than one source file")):
            self.run_program("-o", "a", "a.in", *words, status=2, stderr=message + "\n")
        self.run_program("-MD", "a.in", status=2, stderr="qnpp-build: without '-o', a dependency file wants '-MF' and '-MT' or '-MQ'\n")
        self.assertEqual((self.read("a"), self.read("a.in")), ("old\n", "x\n"))


class AsQnppTest(unittest.TestCase):
    """Whatever qnpp does, the companion does in its own way: the same messages, and the same text if there is no error."""

    def test_golden_cases(self):
        count = 0
        for case in map(golden_cases.read_case, golden_cases.find_cases(GOLDEN)):
            expected = case.expectation
            if {"-h", "-v", "--help", "--version"} & set(os.fsdecode(word) for word in case.words) or \
                    any(name.startswith("expect/") for name in expected) or b"cannot open output" in expected["stderr"]:
                continue  # What the companion does about these is tried above.
            count += 1
            with self.subTest(case.title):
                outcome, _ = golden_runner.run_case(case, [PROGRAM])
                status, stderr = expected["status"], expected["stderr"]
                if status == b"SIGFPE":
                    lines = outcome["stderr"].splitlines(keepends=True)
                    self.assertRegex(lines.pop(), rb":-?\d+: Division by zero, or out of range, in a condition\.\n$")
                    outcome["stderr"] = b"".join(lines)
                    status = b"1"
                if any(line.startswith(b"qnpp: ") and b"more than once" not in line for line in stderr.splitlines()):
                    status = b"2"
                self.assertEqual((outcome["status"], outcome["stderr"]), (status, stderr))
                self.assertEqual(outcome["stdout"], expected["stdout"] if status == b"0" else b"")
        self.assertGreater(count, 300)


if __name__ == "__main__":
    unittest.main()
