#!/usr/bin/env python3
"""Holds the documents against the program and the sources.

    check_docs.py commands   --source DIR --build DIR [--long]    run what they show, and compare what it prints
    check_docs.py references --source DIR                         do the things exist that they mention, and do they
                                                                  mention all folders and messages?
                                                                  Is the changelog in order?

Commands are run in a copy of the checkout, with the tested build in the places where a build lies, the programs on the PATH
and an empty home folder. Which blocks are run, and how, is told in CONTRIBUTING.md.
"""

import argparse
import dataclasses
import difflib
import fnmatch
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "golden_runner"))

import golden_cases  # noqa: E402
import markdown  # noqa: E402

END_OF_COMMAND = "\x01"


class Problems:
    def __init__(self):
        self.count = 0

    def add(self, place, text):
        self.count += 1
        print(f"{place}: {text}\n", file=sys.stderr)


# ---- Commands ----


@dataclasses.dataclass
class Step:
    """A command as it is shown behind "$ ", and the text shown below it."""

    command: str
    shown: str


def steps_of(block):
    """A block "console" shows commands with their output; a block "sh" is commands that only have to succeed."""
    if block.language == "sh":
        return [Step(block.text.rstrip("\n"), "")]
    steps = []
    goes_on = False
    for line in block.text.split("\n")[:-1]:
        if goes_on:
            steps[-1].command += "\n" + line
        elif line.startswith("$ "):
            steps.append(Step(line[2:], ""))
        elif not steps:
            raise ValueError("the block does not begin with a command")
        else:
            steps[-1].shown += line + "\n"
            continue
        goes_on = line.endswith("\\")
    return steps


def is_run(block, is_readme):
    """README shows nothing that is not run; elsewhere a block has to ask for it."""
    return block.language in ("console", "sh") and (is_readme or block.mark.startswith("run"))


def pattern_of(shown):
    """What is shown, as a pattern: "..." stands for anything within a line, and a line "..." for any lines."""
    parts = []
    for line in shown.splitlines(keepends=True):
        if line == "...\n":
            parts.append(r"(?:.*\n)*")
        else:
            parts.append(".*".join(re.escape(part) for part in line.split("...")))
    return re.compile("".join(parts))


def make_shown_files(steps, folder):
    """`cat NAME` of a file that does not exist shows what the reader is to write into it."""
    for step in steps:
        shown = re.fullmatch(r"cat (\S+)", step.command)
        if shown and not (folder / shown.group(1)).exists():
            path = folder / shown.group(1)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(step.shown)


def run_block(block, folder, environment, seconds):
    """Runs the commands in one shell and returns what is wrong with them, or an empty text."""
    steps = steps_of(block)
    make_shown_files(steps, folder)
    script = "".join(f"{step.command}\n__status=$?; printf '\\001%s\\001' $__status; (exit $__status)\n"
                     for step in steps)
    try:
        done = subprocess.run(["bash", "-c", script], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds)
    except subprocess.TimeoutExpired:
        return f"takes longer than {seconds} seconds"
    parts = done.stdout.decode(errors="backslashreplace").split(END_OF_COMMAND)
    for index, step in enumerate(steps):
        if 2 * index + 1 >= len(parts):
            return f"$ {step.command}\nended the shell\n{parts[-1]}"
        printed, status = parts[2 * index], parts[2 * index + 1]
        if block.language == "sh":
            if status != "0":
                return f"$ {step.command}\nstatus {status}\n{printed}"
        elif not pattern_of(step.shown).fullmatch(printed):
            difference = difflib.unified_diff(step.shown.splitlines(keepends=True), printed.splitlines(keepends=True),
                                              "shown", "printed")
            return f"$ {step.command}\n" + "".join(difference)
    return ""


def copy_checkout(source, build, folder):
    """A checkout with a finished build: what belongs to the program is copied, what was built is linked."""
    ignored = ignored_names(source)
    shutil.copytree(source, folder, symlinks=True,
                    ignore=lambda at, names: [name for name in names if name in (".git", "__pycache__") or
                                              (at == str(source) and is_ignored(name, ignored))])
    for built in ("build", "build/release"):
        (folder / built).mkdir()
        for entry in build.iterdir():
            if not (folder / built / entry.name).exists() and entry.name not in (".scripts-built", "CMakeCache.txt"):
                (folder / built / entry.name).symlink_to(entry)
    (folder / "build/release/.scripts-built").touch()


def session_environment(folder, build, with_build):
    """Nothing of the developer's own settings, and nothing that leads out of the folder."""
    home = folder / "home"
    tools = folder / "bin"
    home.mkdir()
    tools.mkdir()
    if with_build:
        for program in ("qnpp", "qnpp-build", "qnpp-explain", "qnpp-check"):
            (tools / program).symlink_to(build / program)
    # The interpreter itself, since a "python3" on the PATH may be a script that looks for it in the home folder.
    python = pathlib.Path(sys.executable).resolve().parent
    return {"PATH": f"{home}/.local/bin:{tools}:{python}:{os.environ['PATH']}", "HOME": str(home), "LC_ALL": "C.UTF-8"}


def check_commands(source, build, with_long, problems):
    run = left_out = 0
    with tempfile.TemporaryDirectory(prefix="qnpp-docs-") as name:
        folder = pathlib.Path(name)
        checkout = folder / "qnpp"
        copy_checkout(source, build, checkout)
        environment = session_environment(folder, build, not with_long)
        if with_long:
            # The commands shown are to build everything. Only what they say about building is kept out of the way.
            shutil.rmtree(checkout / "build")
            subprocess.run([checkout / "scripts/qnpp", "--help"], env=environment, stdout=subprocess.DEVNULL)
        for path in documents(source) + sorted((source / "examples").glob("*/README.md")):
            # The commands of an example are shown to those who stand in its folder.
            place = checkout / path.parent.relative_to(source) if path.parent.parent.name == "examples" else checkout
            for block in markdown.split(path.read_text())[0]:
                if not is_run(block, path == source / "README.md"):
                    continue
                if block.mark == "run: long" and not with_long:
                    left_out += 1
                    continue
                try:
                    problem = run_block(block, place, environment, 3600 if with_long else 120)
                except ValueError as error:
                    problem = str(error)
                if problem:
                    problems.add(f"{path}:{block.line}", problem)
                run += 1
    print(f"{run} blocks run, {left_out} left out because they build everything")
    if run == 0:
        problems.add(source, "no block was run")


# ---- References ----


def documents(source):
    at_the_top = [source / name for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md")]
    return at_the_top + sorted((source / "docs").glob("*.md"))


def ignored_names(source):
    """The patterns of .gitignore for names at the top."""
    lines = (source / ".gitignore").read_text().split("\n")
    return [line.strip("/") for line in lines if line and not line.startswith("#")]


def is_ignored(name, patterns):
    return any(fnmatch.fnmatch(name, pattern) for pattern in patterns)


def folders_of(source, folder=""):
    """The folders that hold something, as a document names them: "lexer/", "tests/golden/"."""
    patterns = [] if folder else ignored_names(source)
    return {f"{folder}{entry.name}/" for entry in (source / folder).iterdir()
            if entry.is_dir() and not entry.name.startswith((".", "__")) and not is_ignored(entry.name, patterns)
            and any(entry.iterdir())}


def check_links(source, path, prose, problems):
    for line, target in markdown.links(prose):
        if re.match(r"[a-z]+:", target):
            continue
        name, _, anchor = target.partition("#")
        linked = (path.parent / name).resolve() if name else path
        if not linked.exists():
            problems.add(f"{path}:{line}", f"{target} does not exist")
        elif anchor and anchor not in markdown.anchors(markdown.split(linked.read_text())[1]):
            problems.add(f"{path}:{line}", f"no heading is called {anchor}")


def check_paths(source, path, prose, problems):
    """A code span that begins like a path of the repository is one."""
    tops = {folder for folder in folders_of(source)}
    for line, text in markdown.code_spans(prose):
        if any(text.startswith(top) for top in tops) and re.fullmatch(r"[\w./*+-]+", text):
            if not list(source.glob(text.rstrip("/"))):
                problems.add(f"{path}:{line}", f"`{text}` does not exist")


def words_of_sources(source):
    """Every word of the code, its comments included."""
    words = set()
    for folder in folders_of(source):
        for file in [*source.glob(f"{folder}*"), *source.glob(f"{folder}*/*")]:
            if file.suffix in (".h", ".cpp", ".l", ".inl", ".cmake", ".py", ".sh") or folder == "scripts/":
                words.update(re.findall(r"\w+", file.read_text(errors="replace") if file.is_file() else ""))
    return words


def check_names(path, prose, words, problems):
    """A code span that is one name in camel case, or several joined by "::", is a name of the code."""
    for line, text in markdown.code_spans(prose):
        if not re.fullmatch(r"[A-Za-z_]\w*(::~?\w+)*(\(\))?", text):
            continue
        for name in re.findall(r"\w+", text):
            if re.search(r"[a-z][A-Z]|[a-z]_$", name) and name not in words:
                problems.add(f"{path}:{line}", f"`{text}`: the code knows no {name}")


def check_excerpts(source, path, blocks, problems):
    """A block marked "from FILE" stands in that file as it is shown."""
    for block in blocks:
        named = re.fullmatch(r"from (\S+)", block.mark)
        if named and not (source / named.group(1)).exists():
            problems.add(f"{path}:{block.line}", f"{named.group(1)} does not exist")
        elif named and block.text not in (source / named.group(1)).read_text():
            problems.add(f"{path}:{block.line}", f"is not what stands in {named.group(1)}")


def check_folder_tables(source, path, prose, problems):
    """The tables of folders name what `ls` names: all folders at the top, and all within one of which any is named."""
    named = {match.group(1) for cell in markdown.first_cells(prose) if (match := re.fullmatch(r"`([\w/-]+/)`", cell))}
    parents = {""} | {folder[:folder.rstrip("/").rfind("/") + 1] for folder in named}
    for parent in sorted(parents):
        there = folders_of(source, parent)
        depth = parent.count("/") + 1
        listed = {folder for folder in named if folder.startswith(parent) and folder.count("/") == depth}
        for folder in sorted(there - listed):
            problems.add(path, f"{folder} is missing in the table of folders")
        for folder in sorted(listed - there):
            problems.add(path, f"{folder} is in the table of folders, but not there")


def message_patterns(manual):
    """The messages of the manual: the list items in the subsections of DIAGNOSTICS. What varies is in italics."""
    section = re.search(r"^## DIAGNOSTICS$.*?(^### .*?)^## ", manual, re.MULTILINE | re.DOTALL)
    for item in re.findall(r"^- (.*)$", section.group(1) if section else "", re.MULTILINE):
        parts = re.findall(r"`([^`]*)`|\*([^*]*)\*", item)
        if any(code.strip() for code, _ in parts):
            yield "".join(re.escape(code) if code else ".*" for code, _ in parts)


def check_messages(source, problems):
    """Every message that a golden case expects is in the manual."""
    manual = source / "docs/qnpp.1.md"
    patterns = list(message_patterns(manual.read_text())) if manual.exists() else []
    known = re.compile(rf"(?:.*:-?\d+: )?(?:{'|'.join(patterns)})\.?")
    for case in golden_cases.find_cases(source / "tests/golden"):
        for line in golden_cases.read_case(case).expectation["stderr"].decode("latin-1").split("\n"):
            if line and not line.startswith("\t") and not known.fullmatch(line):
                problems.add(case.path, f"the manual does not explain: {line}")


def check_changelog(source, problems):
    """Each release has its version and its day, the newest first. What came behind a release belongs to a version of
    its own, so that no build of it calls itself by the name of the release."""
    path = source / "CHANGELOG.md"
    title, *sections = re.split(r"^## ", path.read_text(), flags=re.MULTILINE)
    if not sections or not sections[0].startswith("Unreleased\n"):
        problems.add(path, 'the first section is not "Unreleased"')
        return
    releases = []
    for section in sections[1:]:
        heading = section.split("\n")[0]
        found = re.fullmatch(r"(\d+)\.(\d+)\.(\d+) - (\d{4}-\d\d-\d\d)", heading)
        if not found:
            problems.add(path, f'"{heading}" is not like "1.2.3 - 2026-01-31"')
            return
        releases.append((tuple(int(number) for number in found.groups()[:3]), found[4]))
    if releases != sorted(releases, reverse=True) or len({version for version, _ in releases}) < len(releases):
        problems.add(path, "the newest release does not come first")
    numbers = re.search(r'QNPP_VERSION "(\d+)\.(\d+)\.(\d+)"', (source / "cmake/Version.cmake").read_text())
    version = tuple(int(number) for number in numbers.groups())
    newest = max((version for version, _ in releases), default=(0, 0, 0))
    if version < newest or (version == newest and sections[0].strip() != "Unreleased"):
        problems.add(path, "cmake/Version.cmake has no higher version than the newest release")


def check_references(source, problems):
    words = words_of_sources(source)
    for path in documents(source):
        blocks, prose = markdown.split(path.read_text())
        check_links(source, path, prose, problems)
        check_paths(source, path, prose, problems)
        check_excerpts(source, path, blocks, problems)
        check_names(path, prose, words, problems)
        if path.name == "architecture.md":
            check_folder_tables(source, path, prose, problems)
    check_messages(source, problems)
    check_changelog(source, problems)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("what", choices=("commands", "references"))
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, help="the build to run; its program is DIR/qnpp")
    parser.add_argument("--long", action="store_true", help="run the commands that build everything too")
    options = parser.parse_args()
    problems = Problems()
    source = options.source.resolve()
    if options.what == "commands":
        if options.build is None:
            parser.error("--build is missing")
        check_commands(source, options.build.resolve(), options.long, problems)
    else:
        check_references(source, problems)
    return 1 if problems.count else 0


if __name__ == "__main__":
    sys.exit(main())
