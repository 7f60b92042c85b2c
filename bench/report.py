"""The tables that are printed and kept: padded Markdown, readable in a terminal as it stands."""

from typing import Optional, Sequence


def table(header: Sequence[str], rows: Sequence[Sequence[str]]) -> str:
    """The first column is text, every other one holds figures and is set to the right."""
    widths = [max(len(row[column]) for row in [header, *rows]) for column in range(len(header))]

    def line(cells):
        first, *others = cells
        padded = [first.ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(others, widths[1:])]
        return "| " + " | ".join(padded) + " |"

    rule = "|" + "|".join(["-" * (widths[0] + 2)] + ["-" * (width + 1) + ":" for width in widths[1:]]) + "|"
    return "\n".join([line(header), rule, *map(line, rows)])


def seconds(value: Optional[float]) -> str:
    return "-" if value is None else f"{value:.3f}"


def number(value: Optional[float], digits: int = 2) -> str:
    return "-" if value is None else f"{value:.{digits}f}"
