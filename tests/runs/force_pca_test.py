"""Would catch a script that loses levels or calcium, or measures outside the steady part."""

import os
import subprocess
from importlib.machinery import SourceFileLoader
from pathlib import Path
from types import ModuleType

import pandas as pd
import pytest

SCRIPT = Path(__file__).resolve().parents[2] / "examples" / "force_pca" / "run_force_pca.py"
run_force_pca = ModuleType("run_force_pca")
run_force_pca.__file__ = str(SCRIPT)
SourceFileLoader("run_force_pca", str(SCRIPT)).exec_module(run_force_pca)


def test_a_level_has_its_calcium_and_only_the_steady_part_counts() -> None:
    assert run_force_pca.level(5.3, 0.6)["ca_protocol.dat"].split()[4] == "5.011872e-06"
    time = [0.1 * n for n in range(1, 11)]
    rising = pd.DataFrame({"time": time, "force": [0.0] * 6 + [5.0, 7.0, 5.0, 7.0], "bound_heads": 1.0})
    # Blocks of one row each: their deviation is 2/sqrt(3), the error half of that.
    assert run_force_pca.steady(rising, 1.0) == pytest.approx((6.0, 1 / 3**0.5, 1.0))


def test_the_script_runs_its_levels(tmp_path: Path) -> None:
    command = [SCRIPT, "--program", os.environ["TAVELO"], "--out", tmp_path, "--seconds", "0.015"]
    subprocess.run([*command, "--levels", "6", "5.3", "4.5"], check=True)
    table = pd.read_csv(tmp_path / "force_pca.csv")
    assert table["pCa"].tolist() == [6.0, 5.3, 4.5]
    assert table["force_pN"].iloc[2] > table["force_pN"].iloc[0] >= 0.0
    assert (tmp_path / "force_pca.png").stat().st_size > 10000
