"""The golden cases as they lie on the disk.

A case is a file <area>/<name>.txtar: the reason at its head, then its parts, each below a line `-- NAME --`. What such
a file cannot hold, a carriage return say or a text without a final line end, makes the case a folder <area>/<name>/ in
which each part is a file, and so is the reason, `why`. CONTRIBUTING.md tells the meaning of each part.
"""

import dataclasses
import pathlib
import re
import shutil

SUFFIX = ".txtar"
EXPECTED = "expect/"
DEFAULTS = {"stdout": b"", "stderr": b"", "status": b"0"}

MARK = re.compile(rb"^-- (\S|\S.*\S) --\n", re.M)
LIKE_A_MARK = re.compile(rb"^-- .*--[ \t]*$", re.M)
PLAIN_LINES = re.compile(r"(?:[^\x00-\x08\x0b-\x1f\x7f]*\n)*")
ESCAPE = re.compile(rb"\\(?:([ntr\\])|x([0-9A-Fa-f]{2}))?")


class CaseError(ValueError):
    """A case that cannot be run, in words for its author."""


@dataclasses.dataclass
class Case:
    """A case is found by its name alone. If it is malformed, reading it fails, or asking for words or expectation."""

    path: pathlib.Path  # the file or the folder
    area: str
    name: str
    why: str = ""
    parts: dict = dataclasses.field(default_factory=dict)  # name -> bytes

    @property
    def title(self):
        return f"{self.area}/{self.name}"

    @property
    def words(self):
        """The command line behind the program's name, in bytes."""
        if "args" in self.parts:
            return parse_words(self.parts["args"])
        return [b"input.c"] if "input.c" in self.parts else []

    @property
    def inputs(self):
        return {name: data for name, data in self.parts.items()
                if name not in ("args", "stdin") and not is_expected(name)}

    @property
    def expectation(self):
        """What must come out: stdout, stderr, status, and expect/NAME for each file that is left behind."""
        given = {name: data for name, data in self.parts.items() if is_expected(name)}
        status = given.get("status", DEFAULTS["status"]).strip()
        if not re.fullmatch(rb"[0-9]+|SIG\w+", status):
            raise CaseError(f"status holds {status.decode()!r}, which is neither a number nor a signal's name")
        return {**DEFAULTS, **given, "status": status}

    def expect(self, outcome):
        """Makes the outcome the expectation. What is the default is left out, as an author would do."""
        told = {name: data for name, data in outcome.items() if data != DEFAULTS.get(name)}
        if "status" in told:
            told["status"] += b"\n"
        kept = {name: data for name, data in self.parts.items() if not is_expected(name) or name in told}
        self.parts = {**kept, **told}


def is_expected(name):
    return name in DEFAULTS or name.startswith(EXPECTED)


def find_cases(root):
    """The cases of all areas, not read yet."""
    cases = {}
    for area in (path for path in pathlib.Path(root).iterdir() if path.is_dir()):
        for path in area.glob("[!.]*"):
            if path.is_file() and path.suffix != SUFFIX:
                raise CaseError(f"{path} is no case: a case is a file *{SUFFIX}, or a folder")
            case = Case(path, area.name, path.stem if path.is_file() else path.name)
            if case.title in cases:
                raise CaseError(f"two cases are called {case.title}")
            cases[case.title] = case
    return [cases[title] for title in sorted(cases)]


def read_case(case):
    """Fills the case in."""
    if case.path.is_dir():
        case.parts = {path.relative_to(case.path).as_posix(): path.read_bytes()
                      for path in sorted(case.path.rglob("*")) if not path.is_dir()}
        why = case.parts.pop("why", b"")
    else:
        why, case.parts = split_file(case.path.read_bytes())
    case.why = why.decode().strip()
    if not case.why:
        raise CaseError("the case does not say why: which rule it holds fast, and its reason")
    for name in case.parts:
        check_name(name, case)
    return case


def split_file(data):
    """The reason and the parts."""
    if not is_text(data):
        raise CaseError("a file holds plain lines; a case with control characters, or without a final line end, has "
                        "to be a folder")
    for line in LIKE_A_MARK.findall(data):
        if not MARK.match(line + b"\n"):
            raise CaseError(f"{line.decode()!r} is no section mark; that is '-- NAME --', with no further blanks")
    why, *pieces = MARK.split(data)
    names = [name.decode() for name in pieces[::2]]
    for name in names:
        if names.count(name) > 1:
            raise CaseError(f"two sections are called {name}")
    return why, dict(zip(names, pieces[1::2]))


def check_name(name, case):
    if {"", ".", ".."} & set(name.split("/")):
        raise CaseError(f"{name} is no name within the working folder")
    # An input lies in a folder, has an extension or is named by the command line. Anything else is a slip of the pen.
    if name in case.inputs and not {".", "/"} & set(name) and name.encode() not in b" ".join(case.words):
        raise CaseError(f"unknown section {name}")


def parse_words(text):
    r"""A word a line, with the escapes \n, \t, \r, \\ and \xHH. No text is no words, an empty line an empty word."""
    lines = text.split(b"\n")
    if not lines[-1]:
        lines.pop()
    return [ESCAPE.sub(character_of, line) for line in lines]


def character_of(escape):
    letter, digits = escape.groups()
    if letter:
        return {b"n": b"\n", b"t": b"\t", b"r": b"\r", b"\\": b"\\"}[letter]
    # The system ends a word at a NUL byte, so the program would get another word than the case says.
    if digits in (None, b"00"):
        raise CaseError(rf"malformed escape in args: {escape.string.decode()}; known are \n, \t, \r, \\ and \xHH, but "
                        r"not \x00")
    return bytes.fromhex(digits.decode())


def is_text(data):
    try:
        return PLAIN_LINES.fullmatch(data.decode()) is not None
    except UnicodeDecodeError:
        return False


def fits_in_a_file(case):
    return all(is_text(data) and not LIKE_A_MARK.search(data) for data in case.parts.values())


def write_case(case):
    """Writes the case in the form that can hold it."""
    if case.path.is_dir():
        shutil.rmtree(case.path)
    else:
        case.path.unlink(missing_ok=True)
    if fits_in_a_file(case):
        case.path = case.path.with_name(case.name + SUFFIX)
        sections = [b"-- %s --\n%s" % (name.encode(), data) for name, data in case.parts.items()]
        case.path.write_bytes(case.why.encode() + b"\n" + b"".join(sections))
    else:
        case.path = case.path.with_name(case.name)
        write_files(case.path, {"why": case.why.encode() + b"\n", **case.parts})


def write_files(folder, files):
    for name, data in files.items():
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
