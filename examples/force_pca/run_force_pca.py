#!/usr/bin/python3
"""Steady force over calcium: a run of tavelo per level, a Hill curve through the forces, a picture.

    ./run_force_pca.py [--program PROGRAM] [--out FOLDER] [--levels PCA...] [--seconds T]

Each level runs in a folder of its own under FOLDER (by default force_pca-out, here), with the input
files beside this script. FOLDER then also holds force_pca.csv and force_pca.png.
"""

import argparse
import os
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
import pandas as pd  # noqa: E402
from scipy.optimize import curve_fit  # noqa: E402

HERE = Path(__file__).resolve().parent
BUILT = HERE.parents[1] / "build" / "release" / "tavelo"
LEVELS = (7.0, 6.6, 6.4, 6.2, 6.0, 5.9, 5.8, 5.6, 5.3, 5.0, 4.5)
SECONDS = 0.6
STEP = 0.0001
MEASURED = 0.4  # the last share of a run, in which force is steady
BLOCKS = 4


def hill(pca, highest, half, coefficient):
    """Force at a pCa: the highest force, the pCa of half of it, and the Hill coefficient."""
    return highest / (1.0 + 10.0 ** (coefficient * (pca - half)))


def fit(pca, force) -> tuple[np.ndarray, np.ndarray]:
    """Highest force, pCa of half activation and Hill coefficient, and their standard errors."""
    start = (np.max(force), 6.0, 2.0)
    best, covariance = curve_fit(hill, pca, force, start)
    return best, np.sqrt(np.diag(covariance))


def run_level(
    program: Path, folder: Path, pca: float, seconds: float
) -> tuple[float, float, float]:
    """Runs one level: mean force, its standard error from blocks of time, mean of bound heads."""
    folder.mkdir(parents=True)
    for file in HERE.glob("*.prm"):
        shutil.copy(file, folder)
    (folder / "protocol.dat").write_text(f"0 {STEP} 0 0 0\n{seconds} {STEP} 0 0 0\n")
    (folder / "ca_protocol.dat").write_text(f"0 {STEP} 0 0 {10.0 ** -pca:.6e}\n")
    with open(folder / "stdout.txt", "w") as log:
        subprocess.run([program], cwd=folder, stdout=log, check=True)
    if "Internal Error" in (folder / "stdout.txt").read_text():
        print(f"run_force_pca: pCa {pca}: the step is too long for these rates", file=sys.stderr)
    table = pd.read_csv(folder / "result.csv", index_col=False, skipinitialspace=True)
    steady = table[table["Time"] > (1.0 - MEASURED) * seconds]
    blocks = [block.mean() for block in np.array_split(steady["Force"], BLOCKS)]
    error = np.std(blocks, ddof=1) / np.sqrt(BLOCKS)
    return steady["Force"].mean(), error, steady["CB_per_filament"].mean()


def draw(table: pd.DataFrame, best: np.ndarray | None, output: Path) -> None:
    """Forces with their errors and the fitted curve; calcium grows to the right."""
    style = {"font.size": 10, "axes.spines.top": False, "axes.spines.right": False}
    with plt.rc_context(style):
        figure, axis = plt.subplots(figsize=(5.5, 4), layout="constrained")
        axis.errorbar(table["pCa"], table["Force"], table["Error"], fmt="o", color="#1f4e79",
                      markersize=5, capsize=2, label="runs", zorder=3)
        if best is not None:
            fine = np.linspace(table["pCa"].min(), table["pCa"].max(), 300)
            axis.plot(fine, hill(fine, *best), color="#a23b2a", label="Hill curve")
            text = f"pCa of half force {best[1]:.2f}\nHill coefficient {best[2]:.1f}"
            axis.text(0.04, 0.72, text, transform=axis.transAxes)
        axis.invert_xaxis()
        axis.set_ylim(bottom=0.0)
        axis.set_xlabel("pCa")
        axis.set_ylabel("Force per thick filament [pN]")
        axis.legend(frameon=False, loc="upper left")
        figure.savefig(output, dpi=150)
        plt.close(figure)


def read_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    default = BUILT if BUILT.is_file() else Path(shutil.which("tavelo") or "tavelo")
    parser.add_argument("--program", type=Path, default=default)
    parser.add_argument("--out", type=Path, default=Path("force_pca-out"))
    parser.add_argument("--levels", type=float, nargs="+", default=LEVELS, metavar="PCA")
    parser.add_argument("--seconds", type=float, default=SECONDS)
    return parser.parse_args()


def main() -> int:
    arguments = read_arguments()
    found = shutil.which(arguments.program)
    if not found:
        print(f"run_force_pca: no program {arguments.program}; name one by --program",
              file=sys.stderr)
        return 1
    if arguments.out.exists():
        print(f"run_force_pca: {arguments.out} is there already; name another by --out",
              file=sys.stderr)
        return 1
    program = Path(found).resolve()

    def measure(pca: float) -> tuple[float, float, float]:
        return run_level(program, arguments.out / f"pCa_{pca}", pca, arguments.seconds)

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        rows = list(pool.map(measure, arguments.levels))
    table = pd.DataFrame(rows, columns=["Force", "Error", "Bound_heads"])
    table.insert(0, "pCa", arguments.levels)
    table.to_csv(arguments.out / "force_pca.csv", index=False, float_format="%.4g")
    print(table.to_string(index=False, float_format="%.1f"))
    best = None
    try:
        best, error = fit(table["pCa"], table["Force"])
        print(f"highest force {best[0]:.0f} +- {error[0]:.0f} pN, half of it at pCa "
              f"{best[1]:.2f} +- {error[1]:.2f}, Hill coefficient {best[2]:.2f} +- {error[2]:.2f}")
    except (RuntimeError, TypeError, ValueError) as problem:
        print(f"run_force_pca: no Hill curve fits: {problem}", file=sys.stderr)
    draw(table, best, arguments.out / "force_pca.png")
    return 0


if __name__ == "__main__":
    sys.exit(main())
