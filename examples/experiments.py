"""Series of runs for the scripts of the examples: an example with some of its files replaced."""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
from collections.abc import Callable, Iterable
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import TypeVar

ROOT = Path(__file__).resolve().parents[1]
# The tools stand in the source tree, or two folders up from where examples are installed.
for place in (ROOT / "python", ROOT.parents[1] / "tavelo" / "python"):
    if (place / "tavelo_tools").is_dir():
        sys.path.insert(0, str(place))

import matplotlib  # noqa: E402

matplotlib.use("Agg")
import pandas as pd  # noqa: E402
from tavelo_tools import read_run  # noqa: E402

RELEASE_BUILD = ROOT / "build" / "release" / "tavelo"
STYLE = {
    "font.size": 10,
    "axes.spines.top": False,
    "axes.spines.right": False,
    "legend.frameon": False,
    "savefig.dpi": 150,
}

Outcome = TypeVar("Outcome")
Files = dict[str, str]


def read_result(directory: Path) -> pd.DataFrame:
    """Time, force and bonds of a run."""
    return read_run(directory)["result"]


def run(example: Path, files: Files, read: Callable[[Path], Outcome], program: Path) -> Outcome:
    """Runs an example in a directory of its own, and returns what `read` takes from there."""
    with tempfile.TemporaryDirectory(prefix="tavelo-") as name:
        directory = Path(name)
        for source in (*example.glob("*.prm"), *example.glob("*.dat")):
            shutil.copy(source, directory)
        for file, text in files.items():
            (directory / file).write_text(text)
        result = subprocess.run(
            [program], cwd=directory, capture_output=True, text=True, check=False
        )
        if result.returncode != 0:
            raise SystemExit(f"{example.name}: {result.stderr.strip() or result.stdout[-500:]}")
        if "Internal Error" in result.stdout:
            print(f"{example.name}: the step is too long for these rates", file=sys.stderr)
        return read(directory)


def run_series(
    example: Path,
    series: Iterable[Files],
    read: Callable[[Path], Outcome],
    program: Path | None = None,
) -> list[Outcome]:
    """One run per set of replaced files, as many at a time as there are processors."""
    program = program or program_of(program_parser().parse_args())
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(lambda files: run(example, files, read, program), series))


def program_parser() -> argparse.ArgumentParser:
    """A command line that can name the program; else it is the release build or the installed one."""
    built = RELEASE_BUILD if RELEASE_BUILD.is_file() else shutil.which("tavelo") or RELEASE_BUILD
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", type=Path, default=Path(built), metavar="PATH")
    return parser


def program_of(arguments: argparse.Namespace) -> Path:
    """The program that the command line names."""
    if not arguments.program.is_file():
        text = f"{arguments.program}: no such program; build it or name it with --program PATH"
        raise SystemExit(text)
    return arguments.program.resolve()


def mean_between(table: pd.DataFrame, column: str, start: float, end: float) -> float:
    """Mean of a column over the rows with start < time <= end."""
    return table.loc[table["time"].between(start + 1e-9, end + 1e-9), column].mean()


def ramp_protocol(tetanus: float, speed: float, end: float) -> str:
    """Rows of a tetanus and a ramp of shortening [nm/s] from its end on; times in s."""
    return (
        "0.0 0.0005 0 0 0.0\n"
        f"{tetanus} 0.0005 0 1 {-speed} 0.0\n"
        f"{end:.6f} 0.0005 0 0 0.0\n"
    )


def step_protocol(time: float, step: float) -> str:
    """Rows of a tetanus, a step of length [nm] within 10 us, and 12 ms at the new length."""
    return (
        "0.0 0.0005 0 0 0.0\n"
        f"{time} 0.00001 0 0 {step}\n"
        f"{time + 0.00005:.5f} 0.0001 0 0 {step}\n"
        f"{time + 0.012} 0.0005 0 0 {step}\n"
    )


def step_response(table: pd.DataFrame, time: float) -> tuple[float, float, float]:
    """Forces T0 before a step of `step_protocol`, T1 right after it and T2 3 to 6 ms later."""
    windows = ((-0.005, 0.0), (0.0, 0.00001), (0.003, 0.006))
    before, after, recovered = (
        mean_between(table, "force", time + start, time + end) for start, end in windows
    )
    return before, after, recovered
