#!/usr/bin/env python3
"""Holds what qnpp-explain --json tells against qnpp and against itself, over the golden cases and generated sources:

    record_test.py --program QNPP --explain QNPP-EXPLAIN --source DIR [--cases N]

The texts of the output, put together, are what qnpp writes; the object follows its schema; every number refers to an
entry that is there; the result of an argument's expansion stands in the replacement wherever that says so; and the
results of expansions lie within those of the expansions that they came out of.
"""

import argparse
import json
import pathlib
import random
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path += [str(TESTS / "golden_runner"), str(TESTS / "model")]

import golden_cases  # noqa: E402
from generator import Generator  # noqa: E402


def complaint(value, schema, root, where="it"):
    """What is wrong with a value, in words; none if it follows the schema. Knows what that schema uses."""
    if "$ref" in schema:
        return complaint(value, root["$defs"][schema["$ref"].rsplit("/", 1)[1]], root, where)
    if "anyOf" in schema:
        found = [complaint(value, choice, root, where) for choice in schema["anyOf"]]
        return None if None in found else found[-1]
    if "const" in schema and value != schema["const"] or "enum" in schema and value not in schema["enum"]:
        return f"{where} is {value!r}"
    kinds = {"object": dict, "array": list, "string": str, "integer": int, "boolean": bool, "null": type(None)}
    kind = schema.get("type")
    if kind and (not isinstance(value, kinds[kind]) or kind == "integer" and isinstance(value, bool)):
        return f"{where} is no {kind}"
    if kind == "object":
        for name in schema["required"]:
            if name not in value:
                return f"{where} has no {name}"
        for name, entry in value.items():
            if name not in schema["properties"]:
                return f"{where} has {name}"
            found = complaint(entry, schema["properties"][name], root, f"{where}.{name}")
            if found:
                return found
    if kind == "array":
        for index, entry in enumerate(value):
            found = complaint(entry, schema["items"], root, f"{where}[{index}]")
            if found:
                return found
    return None


def bytes_of(text):
    return bytes.fromhex(text["hex"]) if isinstance(text, dict) else text.encode()


def joined(fragments):
    return b"".join(bytes_of(fragment["text"]) for fragment in fragments)


def problems(told):
    """What does not agree with itself in an explanation."""
    pieces = {entry["id"]: entry for entry in told["pieces"]}
    expansions = {entry["id"]: entry for entry in told["expansions"]}
    contexts = {entry["id"]: entry for entry in told["contexts"]}
    results = {0: told["output"], **{number: context["result"] for number, context in contexts.items()}}
    known = {0, *pieces}
    for number, piece in pieces.items():
        if piece["expansion"] not in expansions or piece.get("from", 0) >= number:
            yield f"piece {number} refers to nothing"
    for fragments in results.values():
        for fragment in fragments:
            if fragment.get("piece", 0) not in known:
                yield f"a fragment refers to piece {fragment['piece']}"
    for number, expansion in expansions.items():
        if "kept" in expansion:
            continue
        begin, end = expansion["result"]
        if not 0 <= begin <= end <= len(results[expansion["context"]]):
            yield f"the result of expansion {number} is not there"
        if expansion["parent"] and begin < end:
            outer = expansions[expansion["parent"]]
            if outer["context"] != expansion["context"] or outer["result"][0] > begin or outer["result"][1] < end:
                yield f"expansion {number} is not within its parent"
        for index, argument in enumerate(expansion["arguments"]):
            parts = b"".join(bytes_of(fragment["text"]) for fragment in expansion["replacement"]
                             if fragment.get("piece") and pieces[fragment["piece"]]["part"] == "argument"
                             and pieces[fragment["piece"]]["argument"] == index)
            expanded = b"".join(joined(contexts[context]["result"]) for context in argument["contexts"])
            if parts != expanded:
                yield f"argument {index} of expansion {number} is {expanded} and stands there as {parts}"


class Test:
    def __init__(self, options):
        self.options = options
        self.schema = json.loads((pathlib.Path(options.source) / "tools/explain/explain.schema.json").read_text())
        self.failed = 0
        self.count = 0

    def fail(self, title, what):
        self.failed += 1
        print(f"{title}: {what}", file=sys.stderr)

    def try_case(self, title, words, stdin, files):
        with tempfile.TemporaryDirectory(prefix="qnpp-record-") as folder:
            for name, data in files.items():
                path = pathlib.Path(folder, name if isinstance(name, str) else name.decode("utf-8", "surrogateescape"))
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(data)
            try:
                expected = subprocess.run([self.options.program, *words], input=stdin, capture_output=True, cwd=folder,
                                          timeout=60)
                done = subprocess.run([self.options.explain, "--json", *words], input=stdin, capture_output=True,
                                      cwd=folder, timeout=120)
            except subprocess.TimeoutExpired:
                return
        # What is wrong with a command line is said in the same words. A file of -o is not made here.
        said = [line for line in expected.stderr.splitlines(keepends=True)
                if line.startswith((b"qnpp: ", b"\t")) and b"cannot open output file" not in line]
        if said != [line for line in done.stderr.splitlines(keepends=True) if not line.startswith(b"qnpp-explain: ")]:
            self.fail(title, f"says {done.stderr[:300]} of its words")
        if done.returncode != 0:
            if done.returncode != 2 or expected.returncode != 1 or expected.stdout:
                self.fail(title, f"status {done.returncode}: {done.stderr[:300]}")
            return
        self.count += 1
        told = json.loads(done.stdout)
        if told["leftOutFrom"] is not None:
            return
        if b"-o" not in words and joined(told["output"]) != expected.stdout:
            self.fail(title, "the output differs")
        for what in [complaint(told, self.schema, self.schema), *problems(told)]:
            if what:
                self.fail(title, what)
                return

    def golden(self):
        for case in golden_cases.find_cases(TESTS / "golden"):
            case = golden_cases.read_case(case)
            if any(word in (b"-h", b"--help", b"-v", b"--version") for word in case.words):
                continue  # It has its own answers.
            self.try_case(case.title, case.words, case.parts.get("stdin", b""), case.inputs)

    def generated(self):
        for number in range(self.options.cases):
            case = Generator(random.Random(f"record {number}")).project(b"/nonexistent")
            self.try_case(f"generated case {number}", case.words, case.stdin, case.files)


def main():
    parser = argparse.ArgumentParser()
    for name in ("program", "explain", "source"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("--cases", type=int, default=100)
    test = Test(parser.parse_args())
    test.options.program = str(pathlib.Path(test.options.program).resolve())
    test.options.explain = str(pathlib.Path(test.options.explain).resolve())
    test.golden()
    test.generated()
    print(f"{test.count} explanations, {test.failed} problems")
    return 1 if test.failed or test.count < 100 else 0


if __name__ == "__main__":
    sys.exit(main())
