#!/usr/bin/env python3
"""What the sources promise that no compiler checks:

    sources_test.py <flex>

The layers include downwards only, and flex finds nothing to complain about in the rules of the scanner.
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
RULES = SOURCE / "lexer/CppLexer.l"
FLEX = sys.argv.pop() if len(sys.argv) > 1 else "flex"

# What the files of a folder may include: nothing of a layer above, and neither of the two in the middle the other. The
# program has nothing but the public headers, as everybody else, so that whatever it does can be done by them.
LAYERS = {
    "lexer": {"lexer"},
    "macros": {"macros", "lexer"},
    "directives": {"directives", "lexer"},
    "engine": {"engine", "macros", "directives", "lexer"},
    "library": {"library", "engine", "macros", "directives", "lexer", "qnpp", "BuildInfo.h"},
    "include/qnpp": {"qnpp"},
    "driver": {"driver", "qnpp"},
    "tools": {"tools", "driver", "qnpp"},
    "tools/explain": {"tools", "engine", "macros", "directives", "lexer", "qnpp", "Page.h"},
    "tools/check": {"tools", "lexer", "qnpp"},
    "tools/build": {"tools", "driver", "directives", "qnpp"},
}


def wrong_includes(name, text):
    """Names of what a file of these layers may not include; system headers stand in angles."""
    allowed = LAYERS[name.rpartition("/")[0]]
    included = re.findall(r'^[ \t]*#[ \t]*include[ \t]*"([^"]*)"', text, re.M)
    return [header for header in included if header.split("/")[0] not in allowed]


def complaints(rules):
    """What flex says about rules, given as text, and what it finds that needs backing up."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder)
        (path / "rules.l").write_text(rules)
        run = subprocess.run([FLEX, "-b", "-s", "-o", "scanner.cpp", "rules.l"], cwd=folder, capture_output=True, text=True,
                             check=True)
        backup = (path / "lex.backup").read_text()
        return run.stderr + ("" if backup == "No backing up.\n" else backup)


class LayersTest(unittest.TestCase):
    def test_includes_point_downwards(self):
        files = [path for folder in LAYERS for path in (SOURCE / folder).iterdir()
                 if path.suffix in (".h", ".cpp", ".l", ".inl")]
        self.assertGreater(len(files), 50)
        for path in files:
            name = path.relative_to(SOURCE).as_posix()
            with self.subTest(name):
                self.assertEqual(wrong_includes(name, path.read_text()), [])

    def test_any_other_include_is_found(self):
        for name, header in (("lexer/A.h", "macros/CppMacro.h"), ("lexer/A.cpp", "tests/support/Text.h"),
                             ("macros/A.h", "directives/A.h"), ("directives/A.h", "macros/A.h"),
                             ("macros/A.cpp", "engine/A.h"), ("engine/A.cpp", "driver/Driver.h"),
                             ("engine/A.cpp", "qnpp/version.h"), ("engine/A.cpp", "library/Run.h"),
                             ("library/A.cpp", "driver/Driver.h"), ("include/qnpp/a.h", "engine/Host.h"),
                             ("driver/A.cpp", "library/Run.h"), ("driver/A.cpp", "engine/Host.h"),
                             ("driver/A.cpp", "lexer/Messages.h"), ("driver/A.cpp", "fuzz/FuzzSupport.h")):
            self.assertEqual(wrong_includes(name, f'#include <string>\n #  include "{header}"\n'), [header])


class ScannerTest(unittest.TestCase):
    def test_rules_are_complete_and_need_no_backing_up(self):
        self.assertEqual(complaints(RULES.read_text()), "")

    def test_a_missing_rule_is_found(self):
        without = {
            "default rule can be matched": r"^\[\^\\n\] .*\n",
            "non-accepting": r"^0\[xX\] .*\n",  # "0x" without digits would be matched by going back to "0".
        }
        for complaint, rule in without.items():
            rules, count = re.subn(rule, "", RULES.read_text(), flags=re.M)
            self.assertEqual(count, 1)
            self.assertIn(complaint, complaints(rules))

    def test_a_rule_that_is_never_matched_is_found(self):
        rules = RULES.read_text().replace('"defined" ', '{letter}+ TAKE_NAME(TK_IDENTIFIER);\n"defined" ', 1)
        self.assertIn("rule cannot be matched", complaints(rules))


if __name__ == "__main__":
    unittest.main()
