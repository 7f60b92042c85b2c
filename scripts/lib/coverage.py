"""Adds up what llvm-cov has found out about the program's lines and branches, for scripts/coverage.

    coverage.py ROOT BUILD-FOLDER [--missing]

Reads coverage.lcov, for the lines, and coverage.text, which is JSON and knows where each condition begins.
"""

import collections
import json
import os
import re
import sys

FOLDERS = ("driver", "library", "engine", "macros", "directives", "lexer")
GENERATED = "generated/CppLexer.cpp"
RULES = "lexer/CppLexer.l"


class Source:
    """What has run of one source file. `branches` is keyed by the place of the condition, as (line, column, end line,
    end column): how often it was true, and how often false."""

    def __init__(self):
        self.lines = {}
        self.branches = collections.defaultdict(lambda: [0, 0])


class RuleFile:
    """Where the lines of the generated scanner come from: flex copies the actions and says so in line directives."""

    def __init__(self, path):
        self.origins = {}
        origin = None
        with open(path, encoding="utf-8") as scanner:
            for number, text in enumerate(scanner, 1):
                directive = re.match(r'#line (\d+) "(.*)"', text)
                if directive:
                    name = directive.group(2)
                    origin = int(directive.group(1)) if name.endswith(RULES) else None
                    continue
                # What comes after an action is flex's own, as is the rule that it adds for what no other rule matches.
                if text.strip() in ("YY_BREAK", "ECHO;"):
                    origin = None
                if origin is not None:
                    self.origins[number] = origin
                    origin += 1

    def origin(self, line):
        return self.origins.get(line)


class Figures:
    def __init__(self, root, folder):
        self.root = root
        self.folder = folder
        self.rules = RuleFile(os.path.join(folder, GENERATED))
        self.sources = collections.defaultdict(Source)
        self.names = {}
        self.textsOf = {}

    def place(self, path, line):
        """The source file, as told from the root, and the line there; None for what is not counted."""
        if path.endswith(GENERATED):
            origin = self.rules.origin(line)
            return (RULES, origin) if origin is not None else None
        name = self.names.get(path, "")
        if name == "":
            name = self.names[path] = self.name(path)
        return (name, line) if name else None

    def name(self, path):
        """The build takes the root out of the names of files, and llvm-cov puts something else before them."""
        parts = path.split("/")
        for begin, part in enumerate(parts):
            name = "/".join(parts[begin:])
            if part in FOLDERS and os.path.isfile(os.path.join(self.root, name)):
                return name
        return None

    def readLines(self):
        path = None
        with open(os.path.join(self.folder, "coverage.lcov"), encoding="utf-8") as report:
            for text in report:
                if text.startswith("SF:"):
                    path = text[3:].rstrip("\n")
                elif text.startswith("DA:"):
                    line, count = text[3:].split(",")[:2]
                    place = self.place(path, int(line))
                    if place:
                        lines = self.sources[place[0]].lines
                        lines[place[1]] = lines.get(place[1], 0) + int(count)

    def readBranches(self):
        with open(os.path.join(self.folder, "coverage.text"), encoding="utf-8") as report:
            files = json.load(report)["data"][0]["files"]
        for file in files:
            for line, column, endLine, endColumn, isTrue, isFalse, *_ in file["branches"]:
                place = self.place(file["filename"], line)
                if not place:
                    continue
                name, begin = place
                if self.isSwitch(name, begin, column) or self.isConstant(name, begin, column, endColumn):
                    continue
                counts = self.sources[name].branches[(begin, column, begin + endLine - line, endColumn)]
                counts[0] += isTrue
                counts[1] += isFalse

    def isSwitch(self, name, line, column):
        """llvm-cov takes the value of a switch without a default for a condition too: one that is true if no case fits.
        Such a switch lists all values of its type, which the compiler's warnings see to, so it has no such branch."""
        return self.texts(name)[line - 1][: column - 1].rstrip().endswith("switch (")

    def isConstant(self, name, line, column, endColumn):
        """A condition that is nothing but a named constant has one outcome, whatever the tests do."""
        return re.fullmatch(r"!?k[A-Z]\w*", self.texts(name)[line - 1][column - 1 : endColumn - 1]) is not None

    def texts(self, name):
        if name not in self.textsOf:
            with open(os.path.join(self.root, name), encoding="utf-8", errors="replace") as file:
                self.textsOf[name] = file.read().split("\n")
        return self.textsOf[name]

    def of(self, folder):
        """Lines that ran, lines, branches that ran, branches."""
        total = [0, 0, 0, 0]
        for name, source in self.sources.items():
            if not name.startswith(folder):
                continue
            outcomes = [count for counts in source.branches.values() for count in counts]
            total[0] += sum(1 for count in source.lines.values() if count)
            total[1] += len(source.lines)
            total[2] += sum(1 for count in outcomes if count)
            total[3] += len(outcomes)
        return total

    def show(self):
        rows = [(folder, self.of(folder + "/")) for folder in FOLDERS]
        rows.append(("all", [sum(column) for column in zip(*(row[1] for row in rows))]))
        print(f"{'':12}{'lines':>20}{'branches':>23}")
        for name, (ranLines, lines, ranBranches, branches) in rows:
            print(f"{name:12}" + share(ranLines, lines, 20) + share(ranBranches, branches, 23))

    def showMissing(self):
        for name in sorted(self.sources):
            source = self.sources[name]
            texts = self.texts(name)
            unseen = [line for line, count in source.lines.items() if not count]
            missing = [(line, 0, "never runs", texts[line - 1].strip()) for line in unseen]
            for (line, column, endLine, endColumn), counts in source.branches.items():
                if not source.lines.get(line, 1):
                    continue  # Told already.
                end = endColumn - 1 if endLine == line else None
                condition = texts[line - 1][column - 1 : end] if name != RULES else texts[line - 1].strip()
                for outcome, count in zip(("true", "false"), counts):
                    if not count:
                        missing.append((line, column, f"never {outcome}", condition))
            for line, _, what, text in sorted(missing):
                print(f"{name}:{line}: {what}: {text}")


def share(ran, count, width):
    percent = 100 * ran / count if count else 100
    # Never rounded up to something that is not so.
    text = f"{ran} of {count}  {int(percent * 10) / 10:5.1f} %"
    return f"{text:>{width}}"


def main():
    root, folder = sys.argv[1:3]
    figures = Figures(root, folder)
    figures.readLines()
    figures.readBranches()
    if not figures.sources:
        sys.exit("coverage.py: the reports name no source file of this checkout")
    if "--missing" in sys.argv[3:]:
        figures.showMissing()
        print()
    figures.show()


if __name__ == "__main__":
    main()
