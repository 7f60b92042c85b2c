#!/usr/bin/env python3
"""Makes inputs for the fuzz targets from the golden cases:

    make_seeds.py <folder of the golden cases> <folder to be made>

Each target gets a folder of its own: whole sources for the lexer, sources with their headers and options for the
preprocessor, the same without options for the library, and what stands behind #if and #elif for the evaluator. The
macro target reads no text.
"""

import pathlib
import re
import shutil
import sys

sys.dont_write_bytecode = True
sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "tests/golden_runner"))

import golden_cases  # noqa: E402


def sources_of(case):
    """Names and texts; the main source, which is the standard input or bears the customary name, comes first."""
    sources = {**case.inputs, **{name: text for name, text in case.parts.items() if name == "stdin"}}
    return sorted(sources.items(), key=lambda source: (source[0] != "input.c", source[0] != "stdin", source[0]))


def seeds_of(case):
    """Target, name and bytes of each seed."""
    title = f"{case.area}.{case.name}"
    sources = sources_of(case)
    texts = [text for _, text in sources]
    # A word of the command line that is an option stands on a line of its own behind "@", the files apart by "@@".
    options = re.findall(rb"^-.*", case.parts.get("args", b""), re.M)
    # Behind a plan by which the caller does what should be done.
    yield "library", title, b"00000 \n" + b"\n@@\n".join(texts)
    yield "preprocessor", title, b"".join(b"@%s\n" % word for word in options) + b"\n@@\n".join(texts)
    for name, text in sources:
        yield "lexer", f"{title}.{pathlib.PurePath(name).name}", text
    conditions = [condition for text in texts for condition in re.findall(rb"if (.*)", text)]
    for number, condition in enumerate(conditions):
        yield "expression", f"{title}.{number}", condition


def main():
    cases, folder = sys.argv[1:]
    shutil.rmtree(folder, ignore_errors=True)
    for case in golden_cases.find_cases(cases):
        golden_cases.write_files(pathlib.Path(folder), {f"{target}/{name}": data for target, name, data in
                                                        seeds_of(golden_cases.read_case(case))})


if __name__ == "__main__":
    main()
