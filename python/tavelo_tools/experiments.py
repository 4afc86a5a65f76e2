"""Series of runs for the scripts of the examples: a folder of input with some of its files replaced, seed by seed.

    options = command_line(__doc__).parse_args()
    outcomes = run_series(HERE, conditions, read_outcome, options)    # outcomes[condition][seed]
    table = pd.DataFrame([averaged(each) for each in outcomes])       # means, standard errors, n
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
from collections.abc import Callable, Iterable
from pathlib import Path
from typing import TypeVar

import pandas as pd
from matplotlib.axes import Axes
from matplotlib.figure import Figure

from .read import read_run

BUILT = Path(__file__).resolve().parents[2] / "build" / "release" / "tavelo"
STYLE = {
    "font.size": 10,
    "axes.spines.top": False,
    "axes.spines.right": False,
    "legend.frameon": False,
    "savefig.dpi": 150,
    "figure.constrained_layout.use": True,
}
BLUE, RED, GREEN, GREY = "#1f4e79", "#a23b2a", "#2f6b3c", "#8a8a8a"

Outcome = TypeVar("Outcome")
Files = dict[str, str]


def command_line(about: str) -> argparse.ArgumentParser:
    """Where the program is and where results go: --program, --out, --seeds."""
    parser = argparse.ArgumentParser(description=about.splitlines()[0])
    program = shutil.which("tavelo") or BUILT
    parser.add_argument("--program", type=Path, default=program, metavar="PATH", help="tavelo; default: %(default)s")
    parser.add_argument("--out", type=Path, default=Path(), metavar="DIR", help="for table and picture; default: here")
    parser.add_argument("--seeds", type=int, default=5, metavar="N", help="runs per condition; default: %(default)s")
    return parser


def run_series(
    example: Path, conditions: Iterable[Files], read: Callable[[Path], Outcome], options: argparse.Namespace
) -> list[list[Outcome]]:
    """What `read` takes from each run: a list per condition with an outcome per seed.

    A condition is the files, by name, that replace those of the example. As many runs go on at a time as there are
    processors; a run that fails ends the program."""
    if not options.program.is_file():
        raise SystemExit(f"{options.program}: no such program; build it or name it with --program PATH")
    seeds = range(1, options.seeds + 1)
    with tempfile.TemporaryDirectory(prefix="tavelo-") as place:
        runs = [
            [_prepare(example, Path(place, f"{number}-seed-{seed}"), files, seed) for seed in seeds]
            for number, files in enumerate(conditions, start=1)
        ]
        names = "".join(f"{run.name}\n" for each in runs for run in each)
        command = [options.program.resolve(), "-q", "-j", str(os.cpu_count()), "-"]
        if subprocess.run(command, cwd=place, input=names, text=True).returncode != 0:
            raise SystemExit(f"{example.name}: a run has failed")
        return [[read(_checked(run)) for run in each] for each in runs]


def read_result(directory: Path) -> pd.DataFrame:
    """Time, force and bonds of a run."""
    return read_run(directory)["result"]


def _prepare(example: Path, directory: Path, files: Files, seed: int) -> Path:
    directory.mkdir()
    for source in (*example.glob("*.prm"), *example.glob("*.dat")):
        shutil.copy(source, directory)
    for file, text in files.items():
        (directory / file).write_text(text)
    with open(directory / "simulation.prm", "a") as file:
        file.write(f"\nsubsection global\n  set random_seed = {seed}\nend\n")
    return directory


def _checked(directory: Path) -> Path:
    record = read_run(directory).record
    if record and record.probabilities_above_1["draws"]:
        print(f"{directory.name}: the step is too long for these rates", file=sys.stderr)
    return directory


def averaged(outcomes: list[dict[str, float]]) -> dict[str, float]:
    """Mean of each quantity over the seeds, its standard error as NAME_sem (0 for a single seed), and their number n."""
    frame = pd.DataFrame(outcomes)
    means, errors = frame.mean(), frame.sem().fillna(0.0)
    return {key: value for name in frame for key, value in ((name, means[name]), (f"{name}_sem", errors[name]))} | {
        "n": len(frame)
    }


def draw_points(axis: Axes, table: pd.DataFrame, x: str, y: str, label: str, **style: object) -> None:
    """Means with their standard errors; the label says of how many seeds."""
    means = f"mean ± SEM, n = {table['n'].iloc[0]}"
    text = f"{label} ({means})" if label else means
    axis.errorbar(table[x], table[y], table[f"{y}_sem"], **{"fmt": "o", "ms": 4, "capsize": 2, "label": text, **style})


def save(figure: Figure, table: pd.DataFrame, out: Path, name: str) -> None:
    """Writes NAME.csv and NAME.png, and prints the table."""
    out.mkdir(parents=True, exist_ok=True)
    table.to_csv(out / f"{name}.csv", index=False, float_format="%.4g")
    figure.savefig(out / f"{name}.png")
    print(table.to_string(index=False, float_format=lambda value: f"{value:.3g}"))


def means_between(table: pd.DataFrame, start: float, end: float) -> dict[str, float]:
    """Mean force [pN] and bound heads, per thick filament, over the rows with start < time <= end."""
    columns = {"force_pN": "force", "bound_heads": "bound_heads"}
    return {name: mean_between(table, column, start, end) for name, column in columns.items()}


def mean_between(table: pd.DataFrame, column: str, start: float, end: float) -> float:
    """Mean of a column over the rows with start < time <= end."""
    return float(table.loc[table["time"].between(start + 1e-9, end + 1e-9), column].mean())


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


def step_response(table: pd.DataFrame, time: float) -> dict[str, float]:
    """Force T0 before a step of `step_protocol` [pN], and relative to it T1 right after it and T2 3 to 6 ms later."""
    windows = ((-0.005, 0.0), (0.0, 0.00001), (0.003, 0.006))
    t0, t1, t2 = (mean_between(table, "force", time + start, time + end) for start, end in windows)
    return {"T0_pN": t0, "T1": t1 / t0, "T2": t2 / t0}
