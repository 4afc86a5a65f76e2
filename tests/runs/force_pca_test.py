"""Would catch a Hill curve of another sense or half, a script that loses levels or calcium."""

import importlib.util
import os
import subprocess
from pathlib import Path

import numpy as np
import pandas as pd

SCRIPT = Path(__file__).resolve().parents[2] / "examples" / "force_pca" / "run_force_pca.py"
SPEC = importlib.util.spec_from_file_location("run_force_pca", SCRIPT)
run_force_pca = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(run_force_pca)


def test_the_fit_finds_the_curve_it_is_given() -> None:
    calcium = 10.0 ** -np.linspace(7.0, 4.5, 9)
    force = 300.0 * calcium**2.5 / (calcium**2.5 + (10.0**-5.7) ** 2.5)
    best, _ = run_force_pca.fit(-np.log10(calcium), force)
    assert np.allclose(best, (300.0, 5.7, 2.5), rtol=1e-6)


def test_the_script_runs_its_levels(tmp_path: Path) -> None:
    out = tmp_path / "out"
    command = [SCRIPT, "--program", os.environ["TAVELO"], "--out", out, "--seconds", "0.015"]
    subprocess.run([*command, "--levels", "6", "5.3", "4.5"], check=True)
    table = pd.read_csv(out / "force_pca.csv")
    assert table["pCa"].tolist() == [6.0, 5.3, 4.5]
    assert table["Force"].iloc[2] > table["Force"].iloc[0] >= 0.0
    assert (out / "pCa_5.3" / "ca_protocol.dat").read_text().split()[4] == "5.011872e-06"
    assert (out / "force_pca.png").stat().st_size > 10000
