#!/usr/bin/env python3
"""Does check_docs.py notice what it is there to notice?"""

import io
import contextlib
import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True

import check_docs  # noqa: E402
import markdown  # noqa: E402


def console(text, language="console", mark=""):
    return markdown.Block(language, mark, text, 1)


class Folder(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def write(self, name, text=""):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path


class Commands(Folder):
    def run_block(self, block):
        return check_docs.run_block(block, self.folder, {"PATH": "/usr/bin:/bin"}, 20)

    def test_output_as_shown_is_good(self):
        self.assertEqual("", self.run_block(console("$ echo a; echo b >&2\na\nb\n$ printf ''\n")))

    def test_other_output_is_shown_with_its_command(self):
        problem = self.run_block(console("$ echo a\na\n$ echo b\nc\n"))
        self.assertIn("$ echo b", problem)
        self.assertIn("-c\n+b\n", problem)

    def test_missing_and_additional_lines_are_noticed(self):
        self.assertNotEqual("", self.run_block(console("$ echo a\n")))
        self.assertNotEqual("", self.run_block(console("$ true\na\n")))
        self.assertNotEqual("", self.run_block(console("$ printf a\na\n")))

    def test_dots_stand_for_anything_within_a_line_only(self):
        self.assertEqual("", self.run_block(console("$ echo a 12 b\na ... b\n")))
        self.assertNotEqual("", self.run_block(console("$ printf 'a 1\\n2 b\\n'\na ... b\n")))
        self.assertEqual("", self.run_block(console("$ printf 'a\\nx\\ny\\nb\\n'\na\n...\nb\n")))

    def test_the_status_of_a_command_is_there_for_the_next(self):
        self.assertEqual("", self.run_block(console("$ (exit 3)\n$ echo $?\n3\n")))

    def test_a_command_may_go_on_behind_a_backslash(self):
        self.assertEqual("", self.run_block(console("$ echo a \\\n  b\na b\n")))

    def test_a_shown_file_is_made_once_and_then_compared(self):
        self.assertEqual("", self.run_block(console("$ cat new\ntext\n$ wc -l <new\n1\n")))
        self.assertNotEqual("", self.run_block(console("$ cat new\nother text\n")))

    def test_a_plain_block_has_to_succeed(self):
        self.assertEqual("", self.run_block(console("echo anything\n", "sh")))
        self.assertIn("status 1", self.run_block(console("echo anything && false\n", "sh")))

    def test_a_shell_that_ends_early_is_noticed(self):
        self.assertIn("ended the shell", self.run_block(console("$ exit 0\n$ echo a\na\n")))

    def test_only_readme_is_run_without_a_mark(self):
        self.assertTrue(check_docs.is_run(console(""), True))
        self.assertFalse(check_docs.is_run(console(""), False))
        self.assertTrue(check_docs.is_run(console("", mark="run: long"), False))
        self.assertFalse(check_docs.is_run(console("", "cmake"), True))


class References(Folder):
    def setUp(self):
        super().setUp()
        self.write(".gitignore", "/build-*/\n")
        self.write("lexer/a.h", "class CppLexer { int rightName_; };\n")
        self.write("CHANGELOG.md", "## Unreleased\n\n## 1.9.0 - 2026-01-31\n\n- It runs.\n")
        self.write("cmake/Version.cmake", 'set(QNPP_VERSION "1.9.0")\n')
        self.write("CONTRIBUTING.md")
        self.write("README.md")
        self.write("docs/architecture.md", "| `lexer/` | x |\n| `docs/` | x |\n| `tests/` | x |\n| `cmake/` | x |\n")
        (self.folder / "tests/golden").mkdir(parents=True)

    def problems(self, name="", text=""):
        if name:
            self.write(name, text)
        problems = check_docs.Problems()
        with contextlib.redirect_stderr(io.StringIO()) as messages:
            check_docs.check_references(self.folder, problems)
        return messages.getvalue()

    def test_all_is_well_at_first(self):
        text = "# A b\n[x](docs/architecture.md) [y](#a-b) `lexer/a.h` `CppLexer`\n"
        self.assertEqual("", self.problems("README.md", text))

    def test_links(self):
        self.assertIn("no.md does not exist", self.problems("README.md", "[x](docs/no.md)\n"))
        self.assertIn("no heading is called c", self.problems("README.md", "# A b\n[y](#c)\n"))

    def test_paths(self):
        self.assertIn("`lexer/b.h` does not exist", self.problems("README.md", "`lexer/b.h`\n"))

    def test_names(self):
        self.assertIn("knows no wrongName", self.problems("README.md", "`CppLexer::wrongName`\n"))

    def test_text_in_blocks_is_no_reference(self):
        self.assertEqual("", self.problems("README.md", "```\n`lexer/b.h`\n[x](docs/no.md)\n```\n"))

    def test_excerpts(self):
        block = "<!-- from lexer/a.h -->\n```\n{}\n```\n"
        self.assertEqual("", self.problems("README.md", block.format("class CppLexer { int rightName_; };")))
        self.assertIn("is not what stands in", self.problems("README.md", block.format("class CppLexer {};")))

    def test_folders(self):
        self.write("engine/b.h")
        self.write("build-x/c.h")
        self.assertIn("engine/ is missing", self.problems())
        table = "| `lexer/` | x |\n| `docs/` | x |\n| `tests/` | x |\n| `engine/` | x |\n| `fuzz/` | x |\n"
        self.assertIn("fuzz/ is in the table", self.problems("docs/architecture.md", table))

    def test_folders_within_folders(self):
        self.write("lexer/one/a")
        self.write("lexer/two/a")
        table = "| `lexer/` | x |\n| `docs/` | x |\n| `tests/` | x |\n| `cmake/` | x |\n"
        self.assertEqual("", self.problems("docs/architecture.md", table))
        self.assertIn("lexer/two/ is missing", self.problems("docs/architecture.md", table + "| `lexer/one/` | x |\n"))

    def test_a_change_behind_a_release_raises_the_version(self):
        text = "## Unreleased\n\n- It walks.\n\n## 1.9.0 - 2026-01-31\n"
        self.assertIn("no higher version", self.problems("CHANGELOG.md", text))
        self.write("cmake/Version.cmake", 'set(QNPP_VERSION "1.10.0")\n')
        self.assertEqual("", self.problems())
        self.write("cmake/Version.cmake", 'set(QNPP_VERSION "1.8.9")\n')
        self.assertIn("no higher version", self.problems("CHANGELOG.md", "## Unreleased\n\n## 1.9.0 - 2026-01-31\n"))

    def test_before_the_first_release(self):
        self.assertEqual("", self.problems("CHANGELOG.md", "## Unreleased\n\n- It runs.\n"))

    def test_releases_are_in_order(self):
        releases = ["## 1.9.0 - 2026-01-31\n", "## 1.2.3 - 2025-12-01\n"]
        self.assertEqual("", self.problems("CHANGELOG.md", "## Unreleased\n\n" + "".join(releases)))
        self.assertIn("first", self.problems("CHANGELOG.md", "## Unreleased\n\n" + "".join(reversed(releases))))
        self.assertIn("first", self.problems("CHANGELOG.md", "## Unreleased\n\n" + releases[0] * 2))
        self.assertIn('not "Unreleased"', self.problems("CHANGELOG.md", releases[0]))
        self.assertIn('"1.9.0" is not like', self.problems("CHANGELOG.md", "## Unreleased\n\n## 1.9.0\n"))

    def test_messages(self):
        manual = ("## DIAGNOSTICS\n- `qnpp: `*message*\n### Messages\n- `Cannot open file: `*name*\\\n  Why.\n"
                  "- `Warning: Careful`\\\n- `qnpp: missing '-o'`\\\n## BUGS\n- `Not meant`\n")
        self.write("docs/qnpp.1.md", manual)
        case = "Because.\n-- stderr --\n{}"
        good = "a.c:1: Cannot open file: x.h.\na:2:c:-7: Warning: Careful.\nqnpp: missing '-o'\n"
        self.assertEqual("", self.problems("tests/golden/a/b.txtar", case.format(good)))
        for bad in ("a.c:1: Not meant.\n", "qnpp: other\n", "a.c:1: Careful.\n", "a.c:1: Warning: Careful!.\n"):
            self.assertIn("the manual does not explain", self.problems("tests/golden/a/b.txtar", case.format(bad)))


if __name__ == "__main__":
    unittest.main()
