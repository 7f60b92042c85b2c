"""Each construct by itself: qnpp beside the other programs, and at growing sizes. Run it as scripts/bench."""

import os
import pathlib
import re
import tempfile
from typing import Callable, Optional

import arithmetic
import compare
import report
import side_by_side
from arithmetic import Outcome
from constructs import CONSTRUCTS, GROWTH_ONLY, Construct, Source
from programs import Launcher, Program, Run, Series, as_one, measure, was_stopped

Note = Callable[[str], None]

TIME_LIMIT = 10  # seconds
OUT_OF_REACH = 3  # a program so many times slower than the best peer is not run again
STARTUP_RUNS = 20
SMALLER = 4  # the second size is so many times smaller

GROWTH_FACTORS = (1, 2, 4, 8)
MOST_AT_FIRST = 0.06  # seconds; a construct that takes longer at its own size begins at a smaller one
SLOW = 2.0  # seconds; a size that takes longer is run once
TOO_FAST = 0.02  # seconds; if the largest size takes less, the exponent says little
TOLERANCE = 0.3  # an exponent is too large if it is so much above 1, or above 2 where the square is due
MOST_OPTIONS = 1_900_000  # bytes of all words of a command line, and of one: what Linux takes
LONGEST_OPTION = 131_000


def selected(only: Optional[str], growth: bool = False) -> list[Construct]:
    """The constructs whose name matches one of the patterns, which are regular expressions with commas between."""
    known = CONSTRUCTS + (GROWTH_ONLY if growth else [])
    patterns = only.split(",") if only else [""]
    return [construct for construct in known if any(re.search(pattern, construct.name) for pattern in patterns)]


def run_source(launcher: Launcher, program: Program, folder: pathlib.Path, source: Source,
               output: str = os.devnull) -> Run:
    """All runs that the source asks for, as one."""
    return as_one([launcher.run(program, folder, output, source.options) for _ in range(source.runs)])


def inputs_below(data: pathlib.Path) -> tempfile.TemporaryDirectory:
    """A folder for the inputs of this run, which are written and read at once."""
    return tempfile.TemporaryDirectory(prefix="constructs-", dir=data)


def startups(launcher: Launcher, programs: list[Program], folder: pathlib.Path) -> dict[str, float]:
    """What it takes each program to start and to read an empty file."""
    Construct("empty", 0, lambda n: "").prepare(0, folder)
    by_name = {program.name: program for program in programs}
    series = measure(list(by_name), STARTUP_RUNS, lambda name: launcher.run(by_name[name], folder))
    return {name: one.fastest for name, one in series.items()}


def startups_text(startup: dict[str, float]) -> str:
    return ", ".join(f"{name} {1000 * seconds:.1f} ms" for name, seconds in startup.items())


# ---------------------------------------------------------------------------------------------------------------------
# Beside the other programs


class SideBySide:
    def __init__(self, launcher: Launcher, programs: list[Program], folder: pathlib.Path, rounds: int):
        self._launcher = launcher
        self._programs = {program.name: program for program in programs}
        self._folder = folder
        self._rounds = rounds
        self.startup = startups(launcher, programs, folder)

    def row(self, construct: Construct, n: int, output: str) -> dict:
        """One run of each program shows what it makes of the construct. The runs that are timed write to nowhere."""
        source = construct.prepare(n, self._folder)
        first, lines, text = {}, {}, {}
        for name, program in self._programs.items():
            first[name] = run_source(self._launcher, program, self._folder, source, output)
            lines[name], text[name] = compare.written(output)

        def outcomes(series: dict[str, Series]) -> dict[str, Outcome]:
            return {name: Outcome(arithmetic.net(one.fastest, self.startup[name] if source.runs == 1 else 0),
                                  first[name].failure, was_stopped(first[name]), lines[name], text[name],
                                  first[name].said)
                    for name, one in series.items()}

        at_first = {name: Series([run]) for name, run in first.items()}
        rivals = within_reach(outcomes(at_first))
        series = at_first | self._series(source, rivals)
        series_of_smaller = self._series(construct.prepare(max(n // SMALLER, 1), self._folder), rivals)
        of = outcomes(series)
        best, as_much = best_peer(of)
        return {
            "construct": construct.name,
            "n": n,
            "outcome": {name: vars(one) for name, one in of.items()},
            "share": {name: arithmetic.share(one, of["qnpp"]) for name, one in of.items()},
            "as_much": {name: arithmetic.does_as_much(one, of["qnpp"]) for name, one in of.items()},
            "message": {name: run.message for name, run in first.items() if run.failure},
            "best_peer": best,
            "best_does_as_much": as_much,
            "ratio": ratio(of, best),
            "ratio_smaller": ratio(outcomes(series_of_smaller), best),
            "mark": arithmetic.mark(ratio(of, best)),
            "runs": {name: [vars(run) for run in one.runs] for name, one in series.items()},
            "runs_smaller": {name: [vars(run) for run in one.runs] for name, one in series_of_smaller.items()},
        }

    def _series(self, source: Source, names: list[str]) -> dict[str, Series]:
        return measure(names, self._rounds, lambda name: run_source(self._launcher, self._programs[name], self._folder,
                                                                    source), lambda run: not was_stopped(run))


def best_peer(outcomes: dict[str, Outcome]) -> tuple[Optional[str], bool]:
    return arithmetic.best_peer(outcomes["qnpp"], {name: one for name, one in outcomes.items() if name != "qnpp"})


def within_reach(outcomes: dict[str, Outcome]) -> list[str]:
    """qnpp and the peers that may turn out to be the best. What a slow one takes exactly is of no interest."""
    best, _ = best_peer(outcomes)
    limit = OUT_OF_REACH * outcomes[best].seconds if best else 0
    return [name for name, one in outcomes.items()
            if name == "qnpp" or arithmetic.may_be_compared(one, outcomes["qnpp"]) and one.seconds <= limit]


def ratio(outcomes: dict[str, Outcome], peer: Optional[str]) -> Optional[float]:
    if peer not in outcomes or "qnpp" not in outcomes:
        return None
    return outcomes["qnpp"].seconds / outcomes[peer].seconds


def side_by_side_cell(row: dict, name: str) -> str:
    failure = row["outcome"][name]["failure"]
    if failure and not (row["outcome"]["qnpp"]["failure"] and not row["outcome"][name]["stopped"]):
        return failure
    cell = f"{1000 * row['outcome'][name]['seconds']:.1f}"
    return cell if row["as_much"][name] else f"{cell} ({100 * row['share'][name]:.0f} %)"


def side_by_side_text(rows: list[dict], startup: dict[str, float]) -> str:
    names = list(startup)
    table = report.table(
        ["construct", "n", *names, "best peer", f"ratio at n/{SMALLER}", "ratio", "mark"],
        [[row["construct"], f"{row['n']:,}", *(side_by_side_cell(row, name) for name in names),
          (row["best_peer"] or "-") + ("" if row["best_does_as_much"] else " *"), report.number(row["ratio_smaller"]),
          report.number(row["ratio"]), row["mark"]] for row in rows])
    behind = sorted((row for row in rows if row["mark"] == "behind"), key=lambda row: -row["ratio"])
    listed = "".join(f"- {row['construct']}: {row['ratio']:.2f} of {row['best_peer']}\n" for row in behind)
    return (f"User and system milliseconds, fastest run, without the time to start and read an empty file\n"
            f"({startups_text(startup)}). A percentage is the share of qnpp's lines,\n"
            f"errors or text that a program writes where that is less; such a program is the bar only where all do\n"
            f"less (*), and one that refuses the source never is. tie: within {arithmetic.TIE:g} times the best peer, "
            f"behind: over {arithmetic.BEHIND:g}.\n\n{table}\n\n"
            f"Behind: {len(behind)} of {len(rows)}\n\n{listed}")


def run_side_by_side(launcher: Launcher, programs: list[Program], constructs: list[Construct], data: pathlib.Path,
                     rounds: int, scale: float, note: Note) -> tuple[str, list[dict], bool]:
    with inputs_below(data) as inputs, side_by_side.scratch() as folder:
        beside = SideBySide(launcher, programs, pathlib.Path(inputs) / "input", rounds)
        rows = []
        for construct in constructs:
            note(f"{construct.name} ...")
            rows.append(beside.row(construct, max(round(construct.n * scale), 1), os.path.join(folder, "output")))
    return (side_by_side_text(rows, beside.startup), rows,
            not any(row["outcome"]["qnpp"]["stopped"] for row in rows))


# ---------------------------------------------------------------------------------------------------------------------
# Growth


def fits_command_line(source: Source, factor: int) -> bool:
    """Whether a command line that holds so many times as much would do. Longer numbers need some room more."""
    lengths = [len(option) + 1 for option in source.options]
    return (1.1 * factor * sum(length + 8 for length in lengths) < MOST_OPTIONS
            and 1.1 * factor * max(lengths, default=0) < LONGEST_OPTION)


def first_size(launcher: Launcher, qnpp: Program, construct: Construct, folder: pathlib.Path, startup: float) -> int:
    """The largest of n, n/2, n/4, ... from which the largest size is not too large."""
    n = construct.n
    while n > 1:
        source = construct.prepare(n, folder)
        if (fits_command_line(source, GROWTH_FACTORS[-1])
                and run_source(launcher, qnpp, folder, source).cpu - startup <= MOST_AT_FIRST):
            break
        n //= 2
    return n


def growth_row(launcher: Launcher, qnpp: Program, construct: Construct, inputs: pathlib.Path, startup: float,
               rounds: int) -> dict:
    n = first_size(launcher, qnpp, construct, inputs / "input", startup)
    folders = {n * factor: inputs / f"input-x{factor}" for factor in GROWTH_FACTORS}
    sources = {size: construct.prepare(size, folder) for size, folder in folders.items()}
    series = measure(list(folders), rounds,
                     lambda size: run_source(launcher, qnpp, folders[size], sources[size]),
                     lambda run: not was_stopped(run) and run.cpu <= SLOW)
    seconds = {size: arithmetic.net(one.fastest, startup if sources[size].runs == 1 else 0)
               for size, one in series.items() if not was_stopped(one.runs[-1])}
    exponent = arithmetic.exponent(list(seconds), list(seconds.values())) if len(seconds) > 1 else None
    stopped = next((run.failure for one in series.values() for run in one.runs if was_stopped(run)), None)
    return {
        "construct": construct.name,
        "n": n,
        "more": construct.more,
        "stopped": stopped,
        "seconds": {str(size): seconds.get(size) for size in folders},
        "exponent": exponent,
        "too_large": exponent is None or exponent > (2 if construct.more else 1) + TOLERANCE,
        "clear": max(seconds.values(), default=0) >= TOO_FAST,
        "peak_mb": {str(size): one.peak for size, one in series.items()},
        "runs": {str(size): [vars(run) for run in one.runs] for size, one in series.items()},
    }


def growth_text(rows: list[dict], startup: float) -> str:
    def exponent(row: dict) -> str:
        return report.number(row["exponent"]) + ("" if row["clear"] else " ?")

    def listed(chosen: list[dict]) -> str:
        return "".join(f"- {row['construct']}: {exponent(row)}{' and ' + row['stopped'] if row['stopped'] else ''}"
                       f"{', since ' + row['more'] if row['more'] else ''}\n" for row in chosen) or "None.\n"

    table = report.table(
        ["construct", "n", *(f"x{factor}" for factor in GROWTH_FACTORS), "exponent", ""],
        [[row["construct"], f"{row['n']:,}", *map(report.seconds, row["seconds"].values()), exponent(row),
          row["stopped"] or ("TOO LARGE" if row["too_large"] else "")] for row in rows])
    above = [row for row in rows if row["too_large"] or row["stopped"]]
    square = [row for row in rows if row not in above and row["exponent"] > 1 + TOLERANCE]
    return (f"User and system seconds of qnpp at n, 2n, 4n and 8n, fastest run, without the {1000 * startup:.1f} ms to "
            f"start.\nThe exponent e is that of size^e, fitted to the three largest; with a ? the largest took under "
            f"{TOO_FAST:g} s.\n\n{table}\n\nToo large: over {1 + TOLERANCE:g}, or over {2 + TOLERANCE:g} where the "
            f"square of n is due\n\n{listed(above)}\nThe square of n, or nearly, where it is due\n\n{listed(square)}")


def run_growth(launcher: Launcher, qnpp: Program, constructs: list[Construct], data: pathlib.Path, rounds: int,
               note: Note) -> tuple[str, list[dict], bool]:
    with inputs_below(data) as inputs:
        startup = startups(launcher, [qnpp], pathlib.Path(inputs) / "input")[qnpp.name]
        rows = []
        for construct in constructs:
            note(f"{construct.name} ...")
            rows.append(growth_row(launcher, qnpp, construct, pathlib.Path(inputs), startup, rounds))
    return growth_text(rows, startup), rows, not any(row["stopped"] for row in rows)
