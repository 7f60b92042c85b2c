"""The programs that are compared, and how one run of one of them is measured."""

import dataclasses
import os
import pathlib
import re
import shutil
import signal
import statistics
import subprocess
from typing import Callable, Hashable, Optional, Sequence

TIME_LIMIT = 60  # seconds
SLOW = 10.0  # seconds of one run after which a program is measured once only
_STDERR_READ = 65536
_MESSAGE_LENGTH = 200

_BENCH = pathlib.Path(__file__).resolve().parent


@dataclasses.dataclass(frozen=True)
class Program:
    name: str
    command: tuple[str, ...]  # completed by the name of the input; the result goes to standard output
    version_command: tuple[str, ...]


# All of them run with their defaults, write line directives and print to standard output.
PEERS = [
    Program("gcc -E", ("gcc", "-E"), ("gcc", "--version")),
    Program("clang -E", ("clang", "-E"), ("clang", "--version")),
    Program("mcpp", ("mcpp",), ("mcpp", "-v")),
    Program("tcc -E", ("tcc", "-E"), ("tcc", "-v")),
]


def installed_peers() -> list[Program]:
    return [peer for peer in PEERS if shutil.which(peer.command[0])]


def environment() -> dict[str, str]:
    """One locale for all: messages and, in some programs, the reading of characters depend on it."""
    kept = {name: value for name, value in os.environ.items() if name != "LANG" and not name.startswith("LC_")}
    return kept | {"LC_ALL": "C"}


def version(program: Program) -> str:
    result = subprocess.run(program.version_command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                            errors="replace", env=environment(), timeout=TIME_LIMIT)
    for line in (result.stdout + result.stderr).splitlines():
        if re.search(r"\d\.\d", line):
            return line.strip()
    return "unknown"


@dataclasses.dataclass(frozen=True)
class Run:
    user: float  # seconds
    system: float
    wall: float
    peak: float  # MB, resident
    failure: Optional[str]  # in a word or two; None when the run went well
    message: str = ""  # what a failed program said first
    said: int = 0  # messages that begin with a place

    @property
    def cpu(self) -> float:
        return self.user + self.system


class Launcher:
    """Builds and drives the small program that starts the others (see launcher.cpp)."""

    def __init__(self, work_folder: pathlib.Path, time_limit: int = TIME_LIMIT):
        self._time_limit = time_limit
        source = _BENCH / "launcher.cpp"
        self._path = work_folder / "launcher"
        self._errors = work_folder / f"stderr.{os.getpid()}"
        work_folder.mkdir(parents=True, exist_ok=True)
        if not self._path.exists() or self._path.stat().st_mtime < source.stat().st_mtime:
            subprocess.run([os.environ.get("CXX", "c++"), "-std=c++20", "-O2", "-Wl,--as-needed", str(source), "-o",
                            str(self._path)], check=True)

    def run(self, program: Program, folder: pathlib.Path, output: str = os.devnull,
            options: Sequence[str] = (), source: str = "input.c") -> Run:
        try:
            launch = (str(self._path), str(self._time_limit), output, str(self._errors))
            result = subprocess.run([*launch, *program.command, *options, source], cwd=folder, env=environment(),
                                    stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True, text=True)
            with open(self._errors, "rb") as errors:
                said = errors.read()
        finally:
            self._errors.unlink(missing_ok=True)
        status, ended_by, timed_out, user, system, wall, peak = map(int, result.stdout.split())
        failure = None
        error = re.search(rb"^.*\berror: .*$", said[:_STDERR_READ], re.MULTILINE)
        if timed_out:
            failure = "time-out"
        elif ended_by:
            failure = signal.Signals(ended_by).name
        elif status:
            failure = f"status {status}"
        elif error:  # some report an error and still return 0
            failure = "error"
        message = ""
        if failure:
            message = (error.group(0) if error else said.split(b"\n")[0]).decode(errors="replace")
            # Results are kept: where they were measured is nobody's business.
            message = message.replace(f"{folder.resolve().parent}/", "")[:_MESSAGE_LENGTH]
        messages = len(re.findall(rb"^[^:\n]+:\d+:", said, re.MULTILINE))
        return Run(user / 1e6, system / 1e6, wall / 1e6, peak * 1024 / 1e6, failure, message, messages)


def as_one(runs: Sequence[Run]) -> Run:
    """Several runs as if they were one."""
    failed = next((run for run in runs if run.failure), runs[0])
    return Run(sum(run.user for run in runs), sum(run.system for run in runs), sum(run.wall for run in runs),
               max(run.peak for run in runs), failed.failure, failed.message, sum(run.said for run in runs))


def was_stopped(run: Run) -> bool:
    """By a signal or the time limit. Errors that a program reports are its own way to go through."""
    return run.failure is not None and not run.failure.startswith(("status", "error"))


@dataclasses.dataclass
class Series:
    """All runs of one program on one input."""

    runs: list[Run] = dataclasses.field(default_factory=list)

    @property
    def failure(self) -> Optional[str]:
        return next((run.failure for run in self.runs if run.failure), None)

    @property
    def message(self) -> str:
        return next((run.message for run in self.runs if run.failure), "")

    @property
    def median(self) -> float:
        return statistics.median(run.cpu for run in self.runs)

    @property
    def fastest(self) -> float:
        return min(run.cpu for run in self.runs)

    @property
    def peak(self) -> float:
        return max(run.peak for run in self.runs)


def goes_on(run: Run) -> bool:
    return not run.failure and run.wall <= SLOW


def measure(subjects: Sequence[Hashable], rounds: int, run: Callable[[Hashable], Run],
            again: Callable[[Run], bool] = goes_on) -> dict[Hashable, Series]:
    """Each round runs every subject (a program, a size) once, beginning with another one each time, so that whatever
    disturbs the machine disturbs them alike."""
    series = {subject: Series() for subject in subjects}
    for round_number in range(rounds):
        start = round_number % max(len(subjects), 1)
        for subject in [*subjects[start:], *subjects[:start]]:
            runs = series[subject].runs
            if not runs or again(runs[-1]):
                runs.append(run(subject))
    return series
