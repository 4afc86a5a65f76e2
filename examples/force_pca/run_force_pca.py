#!/usr/bin/python3
"""Steady force over calcium: a run of tavelo per level, a Hill curve through the forces, a picture.

    examples/force_pca/run_force_pca.py [--program PATH] [--out FOLDER] [--levels PCA...] [--seconds T]

Writes force_pca.csv and force_pca.png into FOLDER, by default beside this script.
"""

import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))

import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
import pandas as pd  # noqa: E402
from experiments import (  # noqa: E402
    STYLE,
    Files,
    mean_between,
    program_of,
    program_parser,
    read_result,
    run_series,
)
from tavelo_tools import Fit, fit_hill_pca, mean_and_error  # noqa: E402

LEVELS = (7.0, 6.6, 6.4, 6.2, 6.0, 5.9, 5.8, 5.6, 5.3, 5.0, 4.5)
SECONDS = 0.6
STEP = 0.0001
MEASURED = 0.4  # the last share of a run, in which force is steady


def level(pca: float, seconds: float) -> Files:
    """A run at one level of calcium."""
    return {
        "protocol.dat": f"0 {STEP} 0 0 0\n{seconds} {STEP} 0 0 0\n",
        "ca_protocol.dat": f"0 {STEP} 0 0 {10.0 ** -pca:.6e}\n",
    }


def steady(run: pd.DataFrame, seconds: float) -> tuple[float, float, float]:
    """Mean force, its standard error from blocks of time, mean of bound heads."""
    start = (1.0 - MEASURED) * seconds
    force = run.loc[run["time"] > start + 1e-9, "force"]
    return *mean_and_error(force), mean_between(run, "bound_heads", start, seconds)


def draw(table: pd.DataFrame, fit: Fit | None, output: Path) -> None:
    """Forces with their standard errors and the fitted curve; calcium grows to the right."""
    with plt.rc_context(STYLE):
        figure, axis = plt.subplots(figsize=(5.5, 4), layout="constrained")
        axis.errorbar(table["pCa"], table["force_pN"], table["error_pN"], fmt="o", capsize=2,
                      color="#1f4e79", markersize=5, label="runs, mean +- SEM", zorder=3)  # fmt: skip
        if fit:
            fine = np.linspace(table["pCa"].min(), table["pCa"].max(), 300)
            axis.plot(fine, fit.curve(fine), color="#a23b2a", label="Hill curve")
            text = f"pCa of half force {fit.values['pCa50']:.2f}\nHill coefficient {fit.values['n']:.1f}"
            axis.text(0.04, 0.72, text, transform=axis.transAxes)
        axis.invert_xaxis()
        axis.set_ylim(bottom=0.0)
        axis.set_xlabel("pCa")
        axis.set_ylabel("Force per thick filament [pN]")
        axis.legend(loc="upper left")
        figure.savefig(output)
        plt.close(figure)


def main() -> None:
    parser = program_parser()
    parser.add_argument("--out", type=Path, default=HERE, metavar="FOLDER")
    parser.add_argument("--levels", type=float, nargs="+", default=LEVELS, metavar="PCA")
    parser.add_argument("--seconds", type=float, default=SECONDS, metavar="T")
    options = parser.parse_args()
    options.out.mkdir(parents=True, exist_ok=True)
    series = (level(pca, options.seconds) for pca in options.levels)
    runs = run_series(HERE, series, read_result, program_of(options))
    rows = [steady(run, options.seconds) for run in runs]
    table = pd.DataFrame(rows, columns=["force_pN", "error_pN", "bound_heads"])
    table.insert(0, "pCa", options.levels)
    table.to_csv(options.out / "force_pca.csv", index=False, float_format="%.4g")
    print(table.to_string(index=False, float_format="%.1f"))
    fit = None
    try:
        fit = fit_hill_pca(table["pCa"], table["force_pN"])
        print(f"{fit} (F0 in pN)")
    except ValueError as problem:
        print(f"run_force_pca: {problem}", file=sys.stderr)
    draw(table, fit, options.out / "force_pca.png")


if __name__ == "__main__":
    main()
