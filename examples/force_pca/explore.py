"""A study in Python, cell by cell: open it in an editor that runs cells, or all of it by

    PYTHONPATH=python python3 examples/force_pca/explore.py
"""

# %% The plan beside this file; its runs go to a temporary folder
import tempfile
from pathlib import Path

from tavelo_tools import Study

plan = Path(__file__).with_name("force_pca.toml")
study = Study.load(plan, out=Path(tempfile.gettempdir()) / "force_pca")

# %% Computes what is missing; a second time nothing is left to do
failed = study.run()
print(f"{study.survey()[0].done} runs done, {len(failed)} failed")

# %% A row per run, and means over seeds
table = study.table()
print(table[["pCa", "seed", "force"]].head())
print(study.summary(table).query("measure == 'force'")[["pCa", "n", "mean", "sd", "low", "high"]])

# %% Hill's curve with intervals that mean replicates
(hill,) = study.fit(table)["hill"]
for name, value in hill.fit.values.items():
    print(f"{name} = {value:.3g} (95 %: {hill.low[name]:.3g} to {hill.high[name]:.3g})")

# %% Courses: the first 50 ms at pCa 4.5, mean over seeds
data = study.dataset()
start = data["force_course"].sel(pCa=4.5, time=slice(0, 0.05)).mean("seed")
print(f"half of the force after {1000 * float(start.time[start > start.max() / 2][0]):.1f} ms")
