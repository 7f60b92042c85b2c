#!/usr/bin/env python3
"""What the golden cases cannot ask of a program for Windows: its whole exit status, and what it is linked with."""

import argparse
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest


class Windows(unittest.TestCase):
    options = None

    def table(self, pattern):
        """What the pattern finds in the tables of the program's file."""
        shown = subprocess.run([self.options.objdump, "-p", self.options.program], check=True, capture_output=True)
        return set(re.findall(pattern, shown.stdout.decode(), re.M))

    def test_a_zero_divisor_gives_the_status_of_the_fault(self):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "fault.txt").write_bytes(b"before\n#if 1 / 0\n")
            program = "Z:" + self.options.program.replace("/", "\\")
            pathlib.Path(folder, "run.bat").write_text(f'@"{program}" fault.txt\n@echo %errorlevel%\n')
            shown = subprocess.run([*self.options.wine, "cmd", "/c", "run.bat"], cwd=folder, capture_output=True)
        # 0xC0000094, as a signed number.
        self.assertEqual(b'#line 1 "fault.txt"\nbefore\n-1073741676\r\n', shown.stdout)

    def test_only_the_version_functions_can_be_looked_up(self):
        self.assertEqual({"QnGetCopyrightString", "QnGetLibNameAndVersionString", "QnGetVersionString"},
                         self.table(r"^\t\[ *\d+\] (?:\+base\[ *\d+\] +[0-9a-f]+ )?([A-Za-z_]\w*)$"))

    def test_it_wants_no_libraries_but_those_of_the_system(self):
        self.assertEqual({"KERNEL32.dll", "msvcrt.dll"}, self.table(r"DLL Name: (\S+)"))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--wine", required=True, type=shlex.split, help="words in front of a program for Windows")
    parser.add_argument("--objdump", required=True)
    Windows.options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
