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
import unittest

import by_construct
import compare
import report
import side_by_side
from constructs import Construct
from programs import Launcher, Program, installed_peers, measure, version
from workloads import STARTUP, WORKLOADS, Workload, prepare

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
# Growth


def run_growth(launcher, qnpp, workloads, options) -> tuple[str, list[dict], bool]:
    """The fastest run of each size counts: what disturbs a run can only make it slower."""
    startup_input = prepare(STARTUP, 1, DATA)
    startup = measure([qnpp], max(options.rounds, 20),
                      lambda program: launcher.run(program, startup_input.folder))[qnpp].fastest
    rows = []
    for workload in workloads:
        note(f"{workload.name} ...")
        sizes = {factor: prepare(workload, 1 if workload.runs > 1 else factor * options.scale, DATA)
                 for factor in GROWTH_FACTORS}
        series = measure(GROWTH_FACTORS, options.rounds, lambda factor: side_by_side.run_once(
            launcher, qnpp, sizes[factor].folder, side_by_side.repeats(workload, factor * options.scale)))
        failure = next((one.failure for one in series.values() if one.failure), None)
        to_start = startup if workload.runs == 1 else 0
        net = [max(one.fastest - to_start, 1e-6) for one in series.values()]
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
    rows = []
    with side_by_side.scratch() as folder:
        output = os.path.join(folder, "output")
        for workload in workloads:
            note(f"{workload.name} ...")
            written = prepare(workload, 1 if workload.runs > 1 else options.scale, DATA)
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


def split_at_dashes(words: list[str]) -> tuple[list[str], list[str]]:
    place = words.index("--") if "--" in words else len(words)
    return words[:place], words[place + 1:]


def parse_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__.strip(),
                                     epilog="With --file, words behind -- are options for all programs, as -I and -D.")
    parser.add_argument("--rounds", type=int, default=5, help="runs of each program on each input (default 5)")
    parser.add_argument("--only", metavar="NAME,NAME",
                        help="these workloads only; with --constructs, those that match one of these patterns")
    parser.add_argument("--scale", type=float, default=1.0, help="make the workloads this many times as large")
    parser.add_argument("--output", type=pathlib.Path, metavar="FILE",
                        help="keep the tables in FILE (Markdown) and the raw figures beside it in .json")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE", help="keep only the raw figures, in FILE")
    parser.add_argument("--record", metavar="LABEL", help="keep them in bench/results/DATE-LABEL.md and .json")
    parser.add_argument("--file", type=pathlib.Path, metavar="PATH",
                        help="instead of workloads, measure this source, and compare what is made of it token by token")
    parser.add_argument("--constructs", action="store_true",
                        help="instead of workloads, measure each construct of the language by itself")
    parser.add_argument("--growth", action="store_true",
                        help="instead, run qnpp alone on growing sizes, each twice the one before")
    parser.add_argument("--check", action="store_true", help="instead, compare the outputs of all programs")
    parser.add_argument("--selftest", action="store_true", help="try the arithmetic, and measure nothing")
    parser.add_argument("--program", type=pathlib.Path, required=True, metavar="PATH",
                        help="the program to measure (default: build/release/qnpp, built first)")
    parser.add_argument("--list", action="store_true", help="name the workloads or constructs")
    own, words = split_at_dashes(sys.argv[1:])
    options = parser.parse_args(own)
    options.words = words
    if options.file and (options.constructs or options.growth or options.check or options.only):
        parser.error("--file goes with none of --constructs, --growth, --check and --only")
    if options.file and not options.file.is_file():
        parser.error(f"{options.file} is not a file")
    if words and not options.file:
        parser.error("options for the programs are for --file")
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
    if options.file:
        return "A file", side_by_side.run_file(launcher, programs, options.file, options.words, options.rounds, note)
    workloads = selected(options.only)
    if options.growth:
        return "Growth", run_growth(launcher, programs[0], workloads, options)
    if options.check:
        return "Comparison of outputs", run_check(launcher, programs, workloads, options)
    return "Benchmark", side_by_side.run_workloads(launcher, programs, workloads, DATA, options.rounds, options.scale,
                                                   note)


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
