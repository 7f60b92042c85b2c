"""Measures qnpp against the general-purpose preprocessors installed on this machine. Run it as scripts/bench."""

import argparse
import datetime
import json
import os
import pathlib
import platform
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import by_construct
import compare
import report
from constructs import Construct
from programs import Launcher, Program, Series, installed_peers, measure, version
from workloads import MB, STARTUP, WORKLOADS, Workload, prepare

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "build" / "bench-data"
RESULTS = ROOT / "bench" / "results"

GROWTH_FACTORS = (1, 2, 4)
GROWTH_TOLERANCE = 0.10


# ---------------------------------------------------------------------------------------------------------------------
# What the figures were measured with


def first_line(*command: str) -> str:
    try:
        result = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
    except OSError:
        return ""
    return result.stdout.strip().split("\n")[0] if result.returncode == 0 else ""


def processor() -> str:
    info = pathlib.Path("/proc/cpuinfo")
    found = re.search(r"^model name\s*:\s*(.*)$", info.read_text(), re.MULTILINE) if info.exists() else None
    return found.group(1) if found else platform.processor() or "unknown"


def memory_gb() -> float:
    return os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 1e9


def build_settings(program: pathlib.Path) -> str:
    """Compiler, build type and flags, as CMake noted them beside the program."""
    cache = program.parent / "CMakeCache.txt"
    if not cache.exists():
        return "unknown"
    entries = dict(re.findall(r"^(\w+):\w+=(.*)$", cache.read_text(), re.MULTILINE))
    compiler = entries.get("CMAKE_CXX_COMPILER", "")
    build_type = entries.get("CMAKE_BUILD_TYPE", "")
    flags = (entries.get("CMAKE_CXX_FLAGS", ""), entries.get(f"CMAKE_CXX_FLAGS_{build_type.upper()}", ""))
    return ", ".join(filter(None, (first_line(compiler, "--version") if compiler else "", build_type,
                                   " ".join(filter(None, flags)))))


def setting(program: pathlib.Path, peers: list[Program], options: argparse.Namespace) -> dict:
    commit = first_line("git", "rev-parse", "HEAD") or "unknown"
    if first_line("git", "status", "--porcelain", "--untracked-files=no"):
        commit += " with changes"
    return {
        "date": datetime.datetime.now().astimezone().isoformat(timespec="seconds"),
        "commit": commit,
        "program": str(program.relative_to(ROOT) if program.is_relative_to(ROOT) else program),
        "build": build_settings(program),
        "machine": f"{processor()}, {os.cpu_count()} cores, {memory_gb():.0f} GB",
        "system": f"{platform.system()} {platform.release()}",
        "rounds": options.rounds,
        "scale": options.scale,
        "load": " ".join(f"{value:.2f}" for value in os.getloadavg()),
        "peers": {peer.name: version(peer) for peer in peers},
    }


def setting_text(facts: dict) -> str:
    lines = [f"- {key}: {value}" for key, value in facts.items() if key != "peers"]
    lines += [f"- {name}: {value}" for name, value in facts["peers"].items()]
    return "\n".join(lines)


# ---------------------------------------------------------------------------------------------------------------------
# Side by side


def measure_programs(launcher: Launcher, programs: list[Program], folder: pathlib.Path,
                     rounds: int) -> dict[str, Series]:
    by_name = {program.name: program for program in programs}
    return measure(list(by_name), rounds, lambda name: launcher.run(by_name[name], folder))


def side_by_side_row(workload: Workload, bytes_read: int, series: dict[str, Series], factor: float) -> dict:
    qnpp, peers = series["qnpp"], {name: one for name, one in series.items() if name != "qnpp"}
    good = {name: one for name, one in peers.items() if not one.failure}
    best = min(good, key=lambda name: good[name].median, default=None)
    reference = workload.goal_peer or best
    ratio = goal_ratio = None
    goals_hold = factor == 1  # they were set for inputs of this size
    if not qnpp.failure:
        ratio = qnpp.median / good[best].median if best else None
        goal_ratio = qnpp.median / good[reference].median if reference in good else None
    met = None
    if goals_hold and workload.goal is not None and goal_ratio is not None:
        met = goal_ratio <= workload.goal
    memory_met = None
    if goals_hold and workload.memory_goal is not None and not qnpp.failure:
        memory_met = qnpp.peak <= workload.memory_goal
    return {
        "workload": workload.name,
        "title": workload.title,
        "comparable": workload.comparable,
        "bytes_read": bytes_read,
        "median": {name: None if one.failure else one.median for name, one in series.items()},
        "peak_mb": {name: None if one.failure else one.peak for name, one in series.items()},
        "failure": {name: one.failure for name, one in series.items() if one.failure},
        "message": {name: one.message for name, one in series.items() if one.failure},
        "best_peer": best,
        "ratio": ratio,
        "goal": workload.goal,
        "goal_peer": workload.goal_peer,
        "goal_ratio": goal_ratio,
        "goal_met": met,
        "memory_goal_mb": workload.memory_goal,
        "memory_goal_met": memory_met,
        "throughput_mb_s": None if qnpp.failure else bytes_read / MB / qnpp.median,
        "runs": {name: [vars(run) for run in one.runs] for name, one in series.items()},
    }


def goal_text(row: dict) -> str:
    if row["goal"] is None:
        return ""
    text = f"{row['goal']:g}"
    if row["goal_peer"]:
        text += f" of {row['goal_peer']} ({report.number(row['goal_ratio'])})"
    return text + {True: "", False: " MISSED", None: " ?"}[row["goal_met"]]


def side_by_side_tables(rows: list[dict], names: list[str]) -> str:
    def cell(row, name, kind, show):
        return row["failure"].get(name) or show(row[kind][name])

    times = report.table(
        ["workload", "MB", *names, "ratio", "best peer", "goal", "MB/s"],
        [[row["workload"], report.number(row["bytes_read"] / MB, 1),
          *(cell(row, name, "median", report.seconds) for name in names), report.number(row["ratio"]),
          row["best_peer"] or "-", goal_text(row), report.number(row["throughput_mb_s"], 0)] for row in rows])
    memory = report.table(
        ["workload", *names, "goal"],
        [[row["workload"], *(cell(row, name, "peak_mb", lambda value: report.number(value, 1)) for name in names),
          "" if row["memory_goal_mb"] is None else
          f"{row['memory_goal_mb']:g}" + (" MISSED" if row["memory_goal_met"] is False else "")] for row in rows])
    failures = "".join(f"- {name} on {row['workload']}: {failure}. {row['message'][name]}\n"
                       for row in rows for name, failure in row["failure"].items())
    if failures:
        failures = f"Failed, and left out of the ratio\n\n{failures}\n"
    about = "\n".join(f"- {row['workload']}: {row['title']}. Comparable: {row['comparable']}." for row in rows)
    return (f"User and system seconds, median\n\n{times}\n\nPeak resident memory, MB\n\n{memory}\n\n"
            f"{failures}The workloads\n\n{about}\n")


def run_side_by_side(launcher, programs, workloads, options) -> tuple[str, list[dict], bool]:
    rows = []
    for workload in workloads:
        note(f"{workload.name} ...")
        written = prepare(workload, options.scale, DATA)
        rows.append(side_by_side_row(workload, written.bytes_read,
                                     measure_programs(launcher, programs, written.folder, options.rounds),
                                     options.scale))
        rows[-1]["input_sha256"] = written.sha256
    return (side_by_side_tables(rows, [program.name for program in programs]), rows,
            all("qnpp" not in row["failure"] for row in rows))


# ---------------------------------------------------------------------------------------------------------------------
# Growth


def run_growth(launcher, qnpp, workloads, options) -> tuple[str, list[dict], bool]:
    """The fastest run of each size counts: what disturbs a run can only make it slower."""
    startup_input = prepare(STARTUP, 1, DATA)
    startup = measure_programs(launcher, [qnpp], startup_input.folder, max(options.rounds, 20))[qnpp.name].fastest
    rows = []
    for workload in workloads:
        note(f"{workload.name} ...")
        sizes = {factor: prepare(workload, factor * options.scale, DATA) for factor in GROWTH_FACTORS}
        series = measure(GROWTH_FACTORS, options.rounds, lambda factor: launcher.run(qnpp, sizes[factor].folder))
        failure = next((one.failure for one in series.values() if one.failure), None)
        net = [max(one.fastest - startup, 1e-6) for one in series.values()]
        ratios = [later / earlier for earlier, later in zip(net, net[1:])]
        rows.append({
            "workload": workload.name,
            "failure": failure,
            "seconds": {str(factor): one.fastest for factor, one in series.items()},
            "startup": startup,
            "ratios": ratios,
            "doubles": not failure and all(ratio <= 2 * (1 + GROWTH_TOLERANCE) for ratio in ratios),
            "as_expected": not failure and all(abs(ratio / 2 - 1) <= GROWTH_TOLERANCE for ratio in ratios),
            "peak_mb": {str(factor): one.peak for factor, one in series.items()},
            "runs": {str(factor): [vars(run) for run in one.runs] for factor, one in series.items()},
        })
    return growth_table(rows, startup), rows, not any(row["failure"] for row in rows)


def growth_table(rows: list[dict], startup: float) -> str:
    def verdict(row):
        if row["failure"]:
            return row["failure"]
        if row["as_expected"]:
            return ""
        return "less than double" if row["doubles"] else "MORE THAN DOUBLE"

    sizes = [f"x{factor}" for factor in GROWTH_FACTORS]
    steps = [f"{later}/{earlier}" for earlier, later in zip(sizes, sizes[1:])]
    text = report.table(
        ["workload", *sizes, *steps, "beyond 10 %", *(f"MB {size}" for size in sizes)],
        [[row["workload"], *map(report.seconds, row["seconds"].values()), *map(report.number, row["ratios"]),
          verdict(row), *(report.number(value, 1) for value in row["peak_mb"].values())] for row in rows])
    return (f"User and system seconds of qnpp at three sizes, fastest run. The ratios are those of the times less the "
            f"{startup * 1000:.1f} ms\nthat starting the program takes.\n\n{text}\n")


# ---------------------------------------------------------------------------------------------------------------------
# Comparing outputs


def run_check(launcher, programs, workloads, options) -> tuple[str, list[dict], bool]:
    """Every program's output against qnpp's."""
    memory = pathlib.Path("/dev/shm")
    rows = []
    with tempfile.TemporaryDirectory(prefix="qnpp-bench-", dir=memory if memory.is_dir() else None) as folder:
        output = os.path.join(folder, "output")
        for workload in workloads:
            note(f"{workload.name} ...")
            written = prepare(workload, options.scale, DATA)
            verdicts = {}
            expected = None
            for program in programs:
                run = launcher.run(program, written.folder, output)
                print_of = None if run.failure else compare.fingerprint(output)
                if program.name == "qnpp":
                    expected = print_of
                verdicts[program.name] = run.failure or ("equal" if print_of == expected else "DIFFERS")
            rows.append({"workload": workload.name, "comparable": workload.comparable, "verdicts": verdicts})
    names = [program.name for program in programs if program.name != "qnpp"]
    text = report.table(["workload", *names],
                        [[row["workload"], *(row["verdicts"][name] for name in names)] for row in rows])
    good = all(row["verdicts"]["qnpp"] == "equal" and "equal" in [row["verdicts"][name] for name in names]
               and "DIFFERS" not in row["verdicts"].values() for row in rows)
    return f"Outputs against those of qnpp, line directives and white space apart\n\n{text}\n", rows, good


# ---------------------------------------------------------------------------------------------------------------------


def note(text: str) -> None:
    if sys.stderr.isatty():
        print(f"\r\x1b[K{text}", end="", file=sys.stderr, flush=True)


def keep_figures(path: pathlib.Path, facts: dict, rows: list[dict]) -> None:
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(json.dumps({"setting": facts, "results": rows}, indent=1) + "\n")


def keep(path: pathlib.Path, heading: str, facts: dict, text: str, rows: list[dict]) -> None:
    """PATH holds the tables, the file of the same name in .json the raw figures."""
    keep_figures(path.with_suffix(".json"), facts, rows)
    path.write_text(f"# {heading}, {facts['date'][:10]}\n\n{setting_text(facts)}\n\n{text}")


def selected(names: str | None) -> list[Workload]:
    if not names:
        return WORKLOADS
    by_name = {workload.name: workload for workload in WORKLOADS}
    unknown = [name for name in names.split(",") if name not in by_name]
    if unknown:
        sys.exit(f"scripts/bench: no workload named {', '.join(unknown)}; there are {', '.join(by_name)}")
    return [by_name[name] for name in names.split(",")]


def selected_constructs(options: argparse.Namespace) -> list[Construct]:
    constructs = by_construct.selected(options.only, options.growth)
    if not constructs:
        sys.exit(f"scripts/bench: no construct matches {options.only}; --constructs --list names them all")
    return constructs


def list_names(options: argparse.Namespace) -> None:
    if options.constructs:
        print("\n".join(construct.name for construct in selected_constructs(options)))
        return
    for workload in selected(options.only):
        print(f"{workload.name:14} {workload.title}")


def parse_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__.strip())
    parser.add_argument("--rounds", type=int, default=5, help="runs of each program on each input (default 5)")
    parser.add_argument("--only", metavar="NAME,NAME",
                        help="these workloads only; with --constructs, those that match one of these patterns")
    parser.add_argument("--scale", type=float, default=1.0, help="make the workloads this many times as large")
    parser.add_argument("--output", type=pathlib.Path, metavar="FILE",
                        help="keep the tables in FILE (Markdown) and the raw figures beside it in .json")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE", help="keep only the raw figures, in FILE")
    parser.add_argument("--record", metavar="LABEL", help="keep them in bench/results/DATE-LABEL.md and .json")
    parser.add_argument("--constructs", action="store_true",
                        help="instead of workloads, measure each construct of the language by itself")
    parser.add_argument("--growth", action="store_true",
                        help="instead, run qnpp alone on growing sizes, each twice the one before")
    parser.add_argument("--check", action="store_true", help="instead, compare the outputs of all programs")
    parser.add_argument("--selftest", action="store_true", help="try the arithmetic, and measure nothing")
    parser.add_argument("--program", type=pathlib.Path, required=True, metavar="PATH",
                        help="the program to measure (default: build/release/qnpp, built first)")
    parser.add_argument("--list", action="store_true", help="name the workloads or constructs")
    options = parser.parse_args()
    if options.rounds < 1 or options.scale <= 0:
        parser.error("--rounds and --scale take positive numbers")
    if options.constructs and options.check:
        parser.error("--check is for workloads")
    if options.record:
        options.output = RESULTS / f"{datetime.date.today().isoformat()}-{options.record}.md"
    return options


def measured(launcher: Launcher, programs: list[Program], options: argparse.Namespace) -> tuple:
    """A heading and what was measured: tables, raw figures, and whether qnpp went through all of it."""
    if options.constructs:
        constructs = selected_constructs(options)
        if options.growth:
            return "Growth by construct", by_construct.run_growth(launcher, programs[0], constructs, DATA,
                                                                  options.rounds, note)
        return "Constructs", by_construct.run_side_by_side(launcher, programs, constructs, DATA, options.rounds,
                                                           options.scale, note)
    workloads = selected(options.only)
    if options.growth:
        return "Growth", run_growth(launcher, programs[0], workloads, options)
    if options.check:
        return "Comparison of outputs", run_check(launcher, programs, workloads, options)
    return "Benchmark", run_side_by_side(launcher, programs, workloads, options)


def main() -> int:
    options = parse_options()
    if options.selftest:
        return 0 if unittest.main("selftest", argv=["selftest"], exit=False).result.wasSuccessful() else 1
    if options.list:
        list_names(options)
        return 0
    path = options.program.resolve()
    if not shutil.which(path):
        sys.exit(f"scripts/bench: {path} is not a program that can be run")
    programs = [Program("qnpp", (str(path),), (str(path), "-v")), *installed_peers()]
    facts = setting(path, programs[1:], options)
    launcher = Launcher(DATA, by_construct.TIME_LIMIT) if options.constructs else Launcher(DATA)
    heading, (text, rows, good) = measured(launcher, programs, options)
    note("")
    print(f"{setting_text(facts)}\n\n{text}", end="")
    if options.output:
        keep(options.output, heading, facts, text, rows)
    if options.json:
        keep_figures(options.json, facts, rows)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
