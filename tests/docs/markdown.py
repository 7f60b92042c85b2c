"""What the documents' tests need to know of Markdown: fenced blocks, links, code spans, headings and tables."""

import dataclasses
import re


@dataclasses.dataclass
class Block:
    """A fenced block. The mark is the text of the comment `<!-- ... -->` on the line before it, if there is one."""

    language: str
    mark: str
    text: str
    line: int  # of its first line of text, counted from 1


_FENCE = re.compile(r"^(```+)\s*(\S*)\s*$")
_MARK = re.compile(r"^<!--\s*(.*?)\s*-->$")


def split(text):
    """The fenced blocks of a document, and the document without them: their lines are empty there, so that line numbers
    still hold."""
    blocks = []
    prose = []
    fence = None
    for number, line in enumerate(text.split("\n"), 1):
        if fence is None:
            opening = _FENCE.match(line)
            if opening:
                fence = opening.group(1)
                mark = _MARK.match(prose[-1]) if prose else None
                blocks.append(Block(opening.group(2), mark.group(1) if mark else "", "", number + 1))
                prose.append("")
            else:
                prose.append(line)
        else:
            prose.append("")
            if line.rstrip() == fence:
                fence = None
            else:
                blocks[-1].text += line + "\n"
    if fence is not None:
        raise ValueError(f"line {blocks[-1].line - 1}: the block is never closed")
    return blocks, "\n".join(prose)


def links(prose):
    """(line, target) of every link."""
    without_code = re.sub(r"`[^`\n]*`", "", prose)
    for number, line in enumerate(without_code.split("\n"), 1):
        for target in re.findall(r"\]\(([^()\s]+)\)", line):
            yield number, target


def code_spans(prose):
    """(line, text) of every code span that stands on one line."""
    for number, line in enumerate(prose.split("\n"), 1):
        for text in re.findall(r"(?<![`\\])`([^`]+)`(?!`)", line):
            yield number, text


def anchors(prose):
    """The names under which the headings can be linked to."""
    found = set()
    for line in prose.split("\n"):
        heading = re.match(r"^#+\s+(.*)$", line)
        if heading:
            words = re.sub(r"[^\w\- ]", "", heading.group(1).lower())
            found.add(words.strip().replace(" ", "-"))
    return found


def first_cells(prose):
    """The first cell of every row of every table, head rows included."""
    for line in prose.split("\n"):
        cell = re.match(r"^\|\s*(.*?)\s*\|", line)
        if cell and not set(cell.group(1)) <= set("-: "):
            yield cell.group(1)
