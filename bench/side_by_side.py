"""Workloads, and a file of the user, in qnpp and in the other programs. Run it as scripts/bench."""

import os
import pathlib
import tempfile
from typing import Callable, Optional, Sequence

import arithmetic
import compare
import report
from arithmetic import Outcome
from programs import Launcher, Program, Run, Series, as_one, measure, was_stopped
from workloads import MB, Workload, prepare

Note = Callable[[str], None]


def scratch() -> tempfile.TemporaryDirectory:
    """A folder for outputs, in memory where there is such a one."""
    memory = pathlib.Path("/dev/shm")
    return tempfile.TemporaryDirectory(prefix="qnpp-bench-", dir=memory if memory.is_dir() else None)


def repeats(workload: Workload, factor: float) -> int:
    """How many runs count as one. Where it is more than one, the factor scales it and not the input."""
    return 1 if workload.runs == 1 else max(round(workload.runs * factor), 1)


def outcomes(series: dict[str, Series], written: dict[str, tuple[int, int]]) -> dict[str, Outcome]:
    return {name: Outcome(one.median, one.failure, any(map(was_stopped, one.runs)), *written[name])
            for name, one in series.items()}


def verdict(of: dict[str, Outcome], against_all: bool) -> dict:
    """The best peer, and the fastest whatever it writes, with the ratio of qnpp to each."""
    peers = {name: one for name, one in of.items() if name != "qnpp" and not one.failure}
    fastest = min(peers, key=lambda name: peers[name].seconds, default=None)
    best, as_much = arithmetic.best_peer(of["qnpp"], peers)
    if against_all:
        best = fastest

    def ratio(name: Optional[str]) -> Optional[float]:
        return of["qnpp"].seconds / of[name].seconds if name and not of["qnpp"].failure else None
    return {
        "best_peer": best,
        "best_does_as_much": as_much or against_all,
        "ratio": ratio(best),
        "fastest_peer": fastest,
        "ratio_to_fastest": ratio(fastest),
        "share": {name: arithmetic.share(one, of["qnpp"]) for name, one in of.items()},
        "as_much": {name: arithmetic.does_as_much(one, of["qnpp"]) for name, one in of.items()},
    }


def figures(series: dict[str, Series], written: dict[str, tuple[int, int]], bytes_read: int,
            against_all: bool = False) -> dict:
    qnpp = series["qnpp"]
    return {
        "bytes_read": bytes_read,
        "median": {name: None if one.failure else one.median for name, one in series.items()},
        "peak_mb": {name: None if one.failure else one.peak for name, one in series.items()},
        "failure": {name: one.failure for name, one in series.items() if one.failure},
        "message": {name: one.message for name, one in series.items() if one.failure},
        "throughput_mb_s": None if qnpp.failure else bytes_read / MB / max(qnpp.median, 1e-6),
        **verdict(outcomes(series, written), against_all),
        "runs": {name: [vars(run) for run in one.runs] for name, one in series.items()},
    }


def within(value: Optional[float], limit: Optional[float]) -> Optional[bool]:
    return None if value is None or limit is None else value <= limit


def workload_row(workload: Workload, bytes_read: int, series: dict[str, Series], written: dict[str, tuple[int, int]],
                 factor: float) -> dict:
    row = {
        "workload": workload.name,
        "title": workload.title,
        "comparable": workload.comparable,
        **figures(series, written, bytes_read * repeats(workload, factor), workload.against_all),
        "bar": workload.bar,
        "aim": workload.aim,
        "memory_goal_mb": workload.memory_goal,
    }
    held = factor == 1  # bars and aims are for inputs of this size
    return row | {
        "bar_met": within(row["ratio"], workload.bar) if held else None,
        "aim_met": within(row["ratio"], workload.aim) if held else None,
        "memory_goal_met": within(row["peak_mb"]["qnpp"], workload.memory_goal) if held else None,
    }


# ---------------------------------------------------------------------------------------------------------------------
# Tables


def time_cell(row: dict, name: str) -> str:
    if name in row["failure"]:
        return row["failure"][name]
    text = report.seconds(row["median"][name])
    return text if row["as_much"][name] else f"{text} ({100 * row['share'][name]:.0f} %)"


def limit_cell(row: dict, limit: str, missed: str) -> str:
    if row[limit] is None:
        return ""
    return f"{row[limit]:g}" + {True: "", False: missed, None: " ?"}[row[limit + "_met"]]


def best_cell(row: dict) -> str:
    return (row["best_peer"] or "-") + ("" if row["best_does_as_much"] or not row["best_peer"] else " *")


TIMES_HEADING = """User and system seconds, median. A percentage is the share of qnpp's lines, or of its text, that a
program writes where that is much less; such a program is the best peer only where all do less (*), or where the
workload is about what it saves. "to fastest" is the ratio to the fastest of all."""


def tables(rows: list[dict], names: Sequence[str]) -> str:
    times = report.table(
        ["workload", "MB", *names, "best peer", "ratio", "bar", "aim", "to fastest", "MB/s"],
        [[row["workload"], report.number(row["bytes_read"] / MB, 1), *(time_cell(row, name) for name in names),
          best_cell(row), report.number(row["ratio"]), limit_cell(row, "bar", " MISSED"),
          limit_cell(row, "aim", " not yet"), report.number(row["ratio_to_fastest"]),
          report.number(row["throughput_mb_s"], 0)] for row in rows])
    memory = report.table(
        ["workload", *names, "goal"],
        [[row["workload"], *(row["failure"].get(name) or report.number(row["peak_mb"][name], 1) for name in names),
          "" if row["memory_goal_mb"] is None else
          f"{row['memory_goal_mb']:g}" + (" MISSED" if row["memory_goal_met"] is False else "")] for row in rows])
    about = "\n".join(f"- {row['workload']}: {row['title']}. Comparable: {row['comparable']}." for row in rows)
    return (f"{TIMES_HEADING}\n\n{times}\n\nPeak resident memory, MB\n\n{memory}\n\n{failures(rows)}"
            f"The workloads\n\n{about}\n")


def failures(rows: list[dict]) -> str:
    text = "".join(f"- {name} on {row['workload']}: {failure}. {row['message'][name]}\n"
                   for row in rows for name, failure in row["failure"].items())
    return f"Failed, and left out of the ratio\n\n{text}\n" if text else ""


# ---------------------------------------------------------------------------------------------------------------------
# Runs


def run_workloads(launcher: Launcher, programs: list[Program], workloads: list[Workload], data: pathlib.Path,
                  rounds: int, scale: float, note: Note) -> tuple[str, list[dict], bool]:
    rows = []
    with scratch() as folder:
        output = os.path.join(folder, "output")
        for workload in workloads:
            note(f"{workload.name} ...")
            of = prepare(workload, 1 if workload.runs > 1 else scale, data)
            written = {}
            for program in programs:
                launcher.run(program, of.folder, output)
                written[program.name] = compare.written(output)
            by_name = {program.name: program for program in programs}
            series = measure(list(by_name), rounds,
                             lambda name: run_once(launcher, by_name[name], of.folder, repeats(workload, scale)))
            rows.append(workload_row(workload, of.bytes_read, series, written, scale) | {"input_sha256": of.sha256})
    return tables(rows, [program.name for program in programs]), rows, not any("qnpp" in row["failure"] for row in rows)


def run_once(launcher: Launcher, program: Program, folder: pathlib.Path, count: int) -> Run:
    return as_one([launcher.run(program, folder) for _ in range(count)])


def run_file(launcher: Launcher, programs: list[Program], path: pathlib.Path, words: Sequence[str],
             rounds: int, note: Note) -> tuple[str, list[dict], bool]:
    """A file of the user, with the same options for all programs, in the folder where this was started."""
    here = pathlib.Path.cwd()
    by_name = {program.name: program for program in programs}
    written, tokens = {}, {}
    with scratch() as folder:
        output = pathlib.Path(folder, "output")
        for name, program in by_name.items():
            note(f"{path}, {name} ...")
            run = launcher.run(program, here, str(output), words, str(path))
            written[name] = compare.written(output)
            tokens[name] = None if run.failure else compare.tokens(output.read_bytes())
    series = measure(list(by_name), rounds,
                     lambda name: launcher.run(by_name[name], here, os.devnull, words, str(path)))
    row = {
        "workload": path.name,
        **figures(series, written, path.stat().st_size),
        "options": list(words),
        "difference": {name: compare.difference(tokens["qnpp"], tokens[name]) for name in by_name
                       if tokens["qnpp"] is not None and tokens[name] is not None},
    }
    return file_table(row, list(by_name)), [row], "qnpp" not in row["failure"]


def file_table(row: dict, names: Sequence[str]) -> str:
    def same(name: str) -> str:
        if name not in row["difference"]:
            return "-"
        return "as qnpp" if row["difference"][name] is None else row["difference"][name]

    def ratio(name: str) -> str:
        qnpp, peer = row["median"]["qnpp"], row["median"][name]
        return report.number(qnpp / peer if qnpp is not None and peer else None)
    table = report.table(
        ["program", "seconds", "ratio", "peak MB", "tokens"],
        [[name, time_cell(row, name), ratio(name), row["failure"].get(name) or report.number(row["peak_mb"][name], 1),
          same(name)] for name in names])
    return (f"{row['workload']}, {row['bytes_read'] / MB:.1f} MB without what it includes, options: "
            f"{' '.join(row['options']) or 'none'}\n\nUser and system seconds, median; the ratio is that of qnpp to "
            f"the program. A percentage is the share of qnpp's\nlines, or of its text, that a program writes where "
            f"that is much less. Where tokens differ, the programs did not\ndo the same.\n\n{table}\n\n"
            f"Best peer: {best_cell(row)}, ratio {report.number(row['ratio'])}\n\n{failures([row])}")
