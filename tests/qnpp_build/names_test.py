#!/usr/bin/env python3
"""Dependency files for files of every name, read by the tools they are for:

    names_test.py <qnpp-build> make|ninja

Every byte that a name can hold stands at its beginning, in its middle and at its end. A result must be made again when
the file of that name has changed, and only then.
"""

import os
import random
import subprocess
import sys
import tempfile
import unittest

PROGRAM, TOOL = os.path.abspath(sys.argv[1]), sys.argv[2]
del sys.argv[1:]

# All that are neither letters nor digits, and some beyond ASCII.
BYTES = [byte for byte in range(1, 128) if chr(byte) not in "/." and not chr(byte).isalnum()] + [0x80, 0xA0, 0xE9, 0xFF]
ODD_NAMES = [name for byte in BYTES for name in (bytes([byte]) + b"x", b"x" + bytes([byte]) + b"y", b"x" + bytes([byte]))]
ODD_NAMES += [b"x\\ y", b"x\\\\ y", b"x\\#y", b"x\\:y", b"x\\$y", b"x\\%y", b"$(x)", b"$x", b"x$$y", b"x: y", b"a b c",
              b"~root", b".IGNORE", b".PHONY", b"a(b)", b"x%y%z", b"a=b", b"a\nb: c", "größe".encode(),
              "größe".encode("latin-1"), b"y" * 250]
# And what nobody thinks of: what is special one by one may be so in another way together.
RANDOM = random.Random(1)
ODD_NAMES += [bytes(RANDOM.choices([*BYTES, *b"\\\\\\  $$##%%::xy."], k=RANDOM.randint(2, 7))) for _ in range(200)]
ODD_NAMES = [name for name in dict.fromkeys(ODD_NAMES) if name not in (b".", b"..")]
ESCAPES = dict(zip(b"\a\b\t\n\v\f\r", "abtnvfr"))
OLD = 1_000_000_000
# make does not like times to come; Ninja holds inputs against the time at which it ran a command, which is now.
NEW = {"make": OLD + 2, "ninja": 4_000_000_000}[TOOL]

# What the tools themselves cannot call a result. All else they can.
CONTROLS = {bytes([byte]) for byte in [*range(1, 32), 127]}
NO_RESULT = {
    "make": CONTROLS | {b"*", b"?", b"[", b"]", b"(", b")", b";", b"|", b"="},
    "ninja": CONTROLS | {b"'", b'"', b"&", b"*", b"?", b"^", b";", b"<", b">", b"`", b"|"},
}[TOOL]


def can_be_a_result(name):
    if any(bytes([byte]) in NO_RESULT for byte in name) or name.endswith((b":", b"\\")):
        return False
    if TOOL == "make" and name.endswith(b"&"):
        return False  # "&:" is a rule for several targets at once.
    # A backslash before what has to be escaped.
    return not any(b"\\" + bytes([byte]) in name for byte in b" #:$\\%")


def run(words, folder):
    return subprocess.run(words, cwd=folder, capture_output=True, timeout=120)


def for_ninja(name):
    return name.replace(b"$", b"$$").replace(b" ", b"$ ").replace(b":", b"$:")


def with_escapes(name):
    """The name as it is shown in a message."""
    return b"".join(b"\\" + ESCAPES.get(byte, f"x{byte:02x}").encode() if byte < 32 or byte == 127 else bytes([byte])
                    for byte in name)


class NamesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = os.fsencode(os.path.realpath(folder.name))

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "wb") as stream:
            stream.write(text)

    def build(self, result, depfile, source):
        return run([PROGRAM, "-MP", "-MF", depfile, f"--depfile-format={TOOL}", "-o", result, source], self.folder)

    def out_of_date(self, results):
        """Those of the results that the tool would make again."""
        words = ["make", "-n", *results] if TOOL == "make" else ["ninja", "-n", "-v"]
        done = run(words, self.folder)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        if TOOL == "make":
            return {line[len(b"remake "):] for line in done.stdout.split(b"\n") if line.startswith(b"remake ")}
        return {results[int(line.split(b": true ")[1])] for line in done.stdout.split(b"\n") if b": true " in line}

    def check(self, sources, results):
        """Builds each result from the source of the same place, and sees that the tool notices a change of each."""
        for number, (source, result) in enumerate(zip(sources, results)):
            self.write(source, b"text\n")
            done = self.build(result, f"d{number}.d", self.path(source))
            self.assertEqual((done.returncode, done.stderr), (0, b""), (source, result))
        if TOOL == "make":
            self.write(b"makefile", b"include *.d\nmakefile: ;\n%.d: ;\n%:\n\tremake $@\n")
        else:
            rules = b"rule remake\n  command = : true $number\n"
            for number, result in enumerate(results):
                rules += b"build %s: remake\n  number = %d\n  depfile = d%d.d\n" % (for_ninja(result), number, number)
            self.write(b"build.ninja", rules)
            # Ninja has to know the commands, and takes their time for that of the results.
            done = run(["ninja"], self.folder)
            self.assertEqual((done.returncode, done.stderr), (0, b""), done.stdout)
        # The number of a name, in binary, says in which rounds it changes. Each number has a bit that is set.
        for bit in range(len(results).bit_length()):
            changed = {number for number in range(len(results)) if (number + 1) >> bit & 1}
            for number, (source, result) in enumerate(zip(sources, results)):
                os.utime(self.path(source), (NEW if number in changed else OLD,) * 2)
                os.utime(self.path(result), (OLD + 1,) * 2)
            self.assertEqual(self.out_of_date(results), {results[number] for number in changed})

    def test_changes_of_sources_are_noticed(self):
        self.check(ODD_NAMES, [b"r%d" % number for number in range(len(ODD_NAMES))])

    def test_results_are_known(self):
        # "~" and such at the beginning mean something to make only without a folder before them.
        results = [b"results/" + name for name in ODD_NAMES if can_be_a_result(name)]
        self.assertGreater(len(results), 80)
        os.mkdir(self.path(b"results"))
        self.check([b"s%d" % number for number in range(len(results))], results)

    def test_results_that_the_tool_cannot_name_are_refused(self):
        names = [name for name in ODD_NAMES if not can_be_a_result(name)]
        self.assertGreater(len(names), 80)
        self.write(b"source", b"text\n")
        for name in names:
            done = self.build(name, "depfile", "source")
            self.assertEqual(done.returncode, 2, name)
            self.assertIn(b"cannot name the result '" + with_escapes(name) + b"'", done.stderr)
        self.assertEqual(os.listdir(self.folder), [b"source"])


if __name__ == "__main__":
    unittest.main()
