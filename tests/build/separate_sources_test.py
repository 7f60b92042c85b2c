#!/usr/bin/env python3
"""Each source of the program can be compiled by itself. The build joins them, and an #include that one of them lacks may
stand in another:

    separate_sources_test.py <compiler> <folder of headers that are not ours>...

Only headers of ours can be found to be missing: those of the standard library, which take most of the time, are compiled
once, and there is no source without them.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = [SOURCE / name for name in ("lexer", "macros", "directives", "engine", "library", "driver")]
COMPILER, *HEADER_FOLDERS = sys.argv[1:]


class Compiler:
    """`folder` is where it keeps the standard headers."""

    def __init__(self, folder):
        headers = {name for path in FOLDERS for source in path.glob("*.[ch]*")
                   for name in re.findall(r"^#include <([a-z_]+)>", source.read_text(), re.M)}
        header = pathlib.Path(folder, "standard.h")
        header.write_text("".join(f"#include <{name}>\n" for name in sorted(headers)))
        subprocess.run([COMPILER, "-std=c++20", "-x", "c++-header", header, "-o", f"{header}.gch"], check=True)
        self._command = [COMPILER, "-std=c++20", "-fsyntax-only", "-include", header, f"-I{SOURCE}", f"-I{SOURCE}/include"]
        self._command += [word for name in HEADER_FOLDERS for word in ("-idirafter", name)]

    def errors(self, source):
        return subprocess.run([*self._command, source], capture_output=True, text=True).stderr


class SeparateSourcesTest(unittest.TestCase):
    def test_each_compiles_without_the_others(self):
        sources = sorted(source for path in FOLDERS for source in path.glob("*.cpp"))
        self.assertGreater(len(sources), 40)
        processors = len(os.sched_getaffinity(0))
        with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(processors) as pool:
            compiler = Compiler(folder)
            for source, errors in zip(sources, pool.map(compiler.errors, sources)):
                with self.subTest(source.name):
                    self.assertEqual(errors, "")

    def test_a_missing_header_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder, "Lacking.cpp")
            source.write_text('#include "lexer/ByteSet.h"\nconst qnpp::Spelling* blank = qnpp::blankSpelling();\n')
            self.assertIn("Spelling", Compiler(folder).errors(source))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
