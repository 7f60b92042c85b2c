#!/usr/bin/env python3
"""Puts a mistake into a copy of an example, in one place after the other, preprocesses it and hands the result to the
compiler, or to the reader of the example. The first message must name the file and the line of the mistake.

    mistakes_test.py --program PATH --examples FOLDER [--compiler cc]
"""

import argparse
import os
import re
import sys
import tempfile
from typing import NamedTuple

# The source tree stays free of compiled modules.
sys.dont_write_bytecode = True

from examples import (Failure, MissingTool, commands_of, compile_files, copy_to, hand_on,  # noqa: E402
                      preprocess)

MISTAKE = "int mistake = ;"
COMPILER_MESSAGE = re.compile(r"^(.+?):([0-9]+):(?:[0-9]+:)? (?:fatal )?error:", re.MULTILINE)
# Of an assembler, say, and of the tools that begin with "Error: ".
READER_MESSAGE = re.compile(r"^(?:error: )?([^\s:]+):([0-9]+)[:.]", re.MULTILINE | re.IGNORECASE)


class Mistake(NamedTuple):
    """A line with a mistake behind the lines `behind` of a file, or `instead` of those words."""

    where: str
    example: str
    file: str
    behind: str
    instead: str = ""
    # The place that the message must name, where it is not simply that of the mistake.
    shown_file: str = ""
    shown_line: int = 0


FIRMWARE = "sensor-firmware"
TABLE = "opcode-table"
MISTAKES = [
    Mistake("the main file, behind its headers", FIRMWARE, "src/main.c", '#include "generated/states.h"\n'),
    Mistake("the main file, behind a skipped group", FIRMWARE, "src/main.c",
            "#define READINGS_PER_SAMPLE 2\n#endif\n"),
    Mistake("the main file, behind an invocation over two lines", FIRMWARE, "src/main.c",
            "            fixedHundredths(temperature.value));\n"),
    Mistake("the main file, behind an invocation in one line", FIRMWARE, "src/main.c",
            '      logInfo("entering a state at tick", tick);\n'),
    Mistake("the second source", FIRMWARE, "src/report.c", '#include "core/log.h"\n'),
    Mistake("a header of the main file", FIRMWARE, "src/report.h", '#include "sensors/sensor.h"\n'),
    Mistake("a header of a header", FIRMWARE, "src/sensors/sensor.h", "#pragma pack(push, 1)\n"),
    Mistake("a header of a header, behind a macro of many lines", FIRMWARE, "src/sensors/sensor.h",
            "    return reading;                                                            \\\n  }\n"),
    Mistake("a header three includes deep", FIRMWARE, "src/core/fixed.h", "typedef int Fixed;\n",
            shown_file="src/sensors/../core/fixed.h"),
    Mistake("a header three includes deep, behind a macro of several lines", FIRMWARE, "src/core/fixed.h",
            "   (part) * (FIXED(high) - FIXED(low)) / (whole))\n", shown_file="src/sensors/../core/fixed.h"),
    Mistake("a header, behind groups that are skipped", FIRMWARE, "src/core/log.h",
            "#error LOG_LEVEL must be 0 (nothing), 1 (errors) or 2 (all)\n#endif\n",
            shown_file="src/sensors/../core/log.h"),
    Mistake("a header, behind an invocation over three lines", FIRMWARE, "src/sensors/thermometer.h",
            "       -40, 85)    /* degrees */\n"),
    Mistake("a header, behind a comment over two lines", FIRMWARE, "src/sensors/thermometer.h",
            "   Salt is spread then. */\n"),
    Mistake("a header, behind a skipped group", FIRMWARE, "src/sensors/barometer.h",
            "#define PRESSURE_READINGS 1\n#endif\n"),
    Mistake("a header found by -I", FIRMWARE, "board/rev-b/board.h", "#define HYGROMETER_CHANNEL 2\n"),
    Mistake("the source of generated code", FIRMWARE, "src/generated/states.h",
            "      if (elapsed >= WARM_UP_TICKS) return STATE_measuring;\n", shown_file="src/states.sm", shown_line=9),
    Mistake("generated code behind the part with a source", FIRMWARE, "src/generated/states.h",
            '#line 23 "src/generated/states.h"\n'),
    Mistake("a table, in the text that a macro takes", TABLE, "opcodes.def", "BINARY(+)", instead="BINARY(+ +*)"),
    Mistake("behind the first use of a table", TABLE, "machine.c", "  OPCODE_COUNT\n};\n"),
    Mistake("behind the last use of a table", TABLE, "machine.c",
            "action; break;\n#include \"opcodes.def\"\n#undef OPCODE\n"),
    Mistake("behind an invocation over four lines", TABLE, "machine.c",
            "          0,  /* the counter */\n          1),\n"),
    Mistake("a shader in GLSL, behind an included file", "fragment-shader", "lamp.frag", '#include "fog.glsl"\n'),
    Mistake("a shader in GLSL, in an included file", "fragment-shader", "fog.glsl", "#define FOGGED(seen) seen\n"),
    Mistake("a shader in HLSL, in an included file", "shader-quality", "lighting.hlsli",
            "#define SHADOW(where) softShadow(where)\n"),
    Mistake("a device tree, behind an included file", "device-tree", "board.dts", "#include <irq.h>\n",
            shown_file="board-model-2.dts"),
    Mistake("a device tree, in an included file", "device-tree", "include/irq.h", "#define IRQ_LEVEL_HIGH 4\n"),
    Mistake("an interface definition, behind a request of two lines", "interface-definition", "player.idl",
            "                       in unsigned long position));\n"),
    Mistake("an interface definition, in an included file", "interface-definition", "common.idl",
            "exception Refused { string why; };\n"),
    Mistake("an assembler's source, behind an included file", "assembler-table", "commands.s",
            '#include "commands.def"\n'),
    Mistake("an assembler's source, in an included file", "assembler-table", "commands.def",
            "COMMAND(7, erase, \"erase \" FLASH_NAME)\n"),
]


def make(mistake, folder):
    """Puts the mistake in, and gives the place that the message must name."""
    path = os.path.join(folder, mistake.file)
    with open(path, encoding="utf-8") as stream:
        text = stream.read()
    if text.count(mistake.behind) != 1:
        raise Failure("%s must hold %r once" % (mistake.file, mistake.behind))
    start = text.index(mistake.behind)
    end = start + len(mistake.behind)
    if mistake.instead:
        text, line = text[:start] + mistake.instead + text[end:], text.count("\n", 0, start) + 1
    else:
        text, line = text[:end] + MISTAKE + "\n" + text[end:], text.count("\n", 0, end) + 1
    with open(path, "w", encoding="utf-8") as stream:
        stream.write(text)
    return mistake.shown_file or mistake.file, mistake.shown_line or line


def check(mistake, program, compiler, examples):
    example = os.path.join(examples, mistake.example)
    command = commands_of(example)[0]
    with tempfile.TemporaryDirectory(prefix="qnpp-mistake-") as place:
        folder = copy_to(example, os.path.join(place, "example"))
        name, line = make(mistake, folder)
        output, files = preprocess(program, command, folder)
        run = hand_on(output, folder)
        if run:
            text = run.stdout + run.stderr
            message = READER_MESSAGE.search(text)
        else:
            run = compile_files(compiler, files, folder)
            text = run.stderr.decode("latin-1")
            message = COMPILER_MESSAGE.search(text)
    if run.returncode == 0 or not message:
        raise Failure("no error was reported:\n" + text)
    if (message[1], int(message[2])) != (name, line):
        raise Failure("the mistake stands in %s:%d, but the message is\n%s" % (name, line, text))


def main():
    parser = argparse.ArgumentParser(description="Compares the compiler's messages with the places of mistakes.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--examples", required=True)
    parser.add_argument("--compiler", default="cc")
    options = parser.parse_args()
    program, examples = os.path.abspath(options.program), os.path.abspath(options.examples)

    failures = skipped = 0
    for mistake in MISTAKES:
        try:
            check(mistake, program, options.compiler, examples)
        except MissingTool as missing:
            skipped += 1
            print("left out, since %s is not installed: %s" % (missing, mistake.where))
        except Failure as failure:
            failures += 1
            print("FAILED: %s: %s" % (mistake.where, failure))
    print("%d of %d mistakes were found where they are" % (len(MISTAKES) - failures - skipped, len(MISTAKES)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
