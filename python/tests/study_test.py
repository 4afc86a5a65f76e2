"""Would catch a plan read wrongly, a run lost, doubled or altered, a measure or interval off."""

import json
import os
import signal
import subprocess
import sys
from pathlib import Path

import numpy as np
import pandas as pd
import pytest
import xarray
from tavelo_tools import Study
from tavelo_tools.study import StudyError, experiments, traces
from tavelo_tools.study.bootstrap import interval
from tavelo_tools.study.curves import FitPlan, fit
from tavelo_tools.study.errors import Refused
from tavelo_tools.study.inputs import set_parameters
from tavelo_tools.study.plan import Parameter

ROOT = Path(__file__).resolve().parents[2]
COMMAND = [sys.executable, "-m", "tavelo_tools.study"]
PLAN = f"""
base = "{ROOT / "examples" / "isometric"}"
seeds = 3
courses = ["force"]
[vary]
load = [100, 150]
"model_huxley_fast.prm:huxley/g1" = [10, 20.5]
[derive]
half = "load / 2"
[write."protocol.dat"]
text = "0 0.0005 0 0 0\\n0.02 0.0005 1 0 {{2 * half:.1f}}\\n0.03 0.0005 0 0 0\\n"
[measure]
force = {{ column = "force", over = ["10 ms", "20 ms"] }}
double = {{ formula = "2 * force" }}
"""


def write_plan(folder: Path, text: str = PLAN) -> Path:
    path = folder / "plan.toml"
    path.write_text(text)
    return path


@pytest.mark.parametrize("change, told", [
    (("seeds", "seed"), r"plan.toml:3: seed: isn't known; known: title, base, seeds"),
    (("seeds = 3", "seeds = [1, 1]"), r"plan.toml:3: seeds: is \[1, 1\]; accepted: a number of seeds"),
    (('"load / 2"', '"laod / 2"'), r"plan.toml:9: \[derive\] half: 'laod' isn't known here; known: .*load"),
    (('"load / 2"', '"__import__"'), "isn't known here"),
    (("{2 * half:.1f}", "{2 * half:.1q}"), "Unknown format code 'q'"),
    (("load / 2", "1 / (load - 100)"), "division by zero"),
    (('over = ["10 ms", "20 ms"]', "over = [0, 2]"), r"plan.toml:13: \[measure.force\] over has 2; accepted: a share"),
    (('column = "force"', 'columm = "force"'), r"plan.toml:13: \[measure.force\] columm: isn't known; known: column"),
    (("g1", "g11"), r"plan.toml:7: \[vary\] model_huxley_fast.prm:huxley/g11: .*accepted keys: huxley: f1, g1"),
    (("model_huxley_fast", "model_duke"), "model_duke.prm is set or written, but no run reads it"),
    (("20.5", "-1"), "g1 = -1: .*g1 is '-1'"),
    (("[vary]", '[vary]\nmode = "zip"\nidle = [1]'), "zip needs lists of one length"),
    (("[vary]", "[vary]\nidle = [1, 2]"), "idle: is varied, but nothing uses it"),
])  # fmt: skip
def test_what_a_plan_gets_wrong_is_said_before_anything_runs(
    tmp_path: Path, change: tuple[str, str], told: str
) -> None:
    with pytest.raises(StudyError, match=told):
        Study.load(write_plan(tmp_path, PLAN.replace(*change, 1))).run()
    assert not (tmp_path / "plan" / "runs").exists()


def test_parameters_are_set_where_they_stand() -> None:
    text = "set k = 0\nsubsection a\n  set k = 1 # one\n  subsection b c\n    set k=2\n  end\nend\n"
    changes = [(Parameter.read(f"f:{path}", ""), value) for path, value in
               (("a/k", "7"), ("a/b c/k", "8"), ("d/k", "9"))]  # fmt: skip
    assert set_parameters(text, changes) == (
        "set k = 0\nsubsection a\n  set k = 7\n  subsection b c\n    set k= 8\n  end\nend\n"
        "subsection d\n  set k = 9\nend\n"
    )


TIME = np.linspace(0.0, 1.0, 2001)
NOISE = np.random.default_rng(3).normal(size=TIME.size)
LOOP = {"length": 3 * np.sin(20 * np.pi * TIME), "frequency": 10.0}


@pytest.mark.parametrize("take, values, more, expected", [
    ("slope", 5 - 3 * TIME, {}, -3.0),
    ("k_tr", np.where(TIME < 0.1, 9.0, 10 - 10 * np.exp(-12 * (TIME - 0.1))) + 0.05 * NOISE, {}, 12.0),
    ("k_recover", 4 * np.exp(-30 * TIME), {}, 30.0),
    ("k_tr", 10 + 0.5 * NOISE, {}, Refused),  # steady
    ("k_tr", 10 - TIME, {}, Refused),  # falls throughout
    ("k_tr", TIME, {}, Refused),  # no plateau
    ("time_to_peak", -np.abs(TIME - 0.25), {}, 0.25),
    ("half_relaxation", 1 - np.abs(TIME - 0.5), {}, 0.25),
    ("half_relaxation", TIME, {}, Refused),
    # An ellipse run clockwise: area pi a b, positive work; ten cycles in the second.
    ("work", 7 * np.cos(20 * np.pi * TIME + np.pi), LOOP, np.pi * 3 * 7),
    ("power", 7 * np.cos(20 * np.pi * TIME + np.pi), LOOP, 10 * np.pi * 3 * 7),
    ("work", TIME, LOOP | {"frequency": 0.5}, Refused),
    ("rate", np.ones_like(TIME), {}, 2001.0),
])  # fmt: skip
def test_traces_with_known_answers(take: str, values: np.ndarray, more: dict, expected: object) -> None:
    trace = traces.Trace(TIME, values, 0.0, 1.0, **more)
    if expected is Refused:
        with pytest.raises(Refused):
            traces.TAKES[take].function(trace)
    else:
        assert traces.TAKES[take].function(trace) == pytest.approx(expected, rel=0.01)


@pytest.mark.parametrize("curve, law, expected", [
    ("hill_pca", lambda x: 200 / (1 + 10 ** (3 * (x - 5.8))), {"F0": 200, "pCa50": 5.8, "n": 3}),
    ("hill_hyperbola", lambda v: 50 * (1 - v / 20) / (1 + v / (0.25 * 20)), {"v0": 20, "a/F0": 0.25, "F0": 50}),
    ("line", lambda x: 4 * (x - 3), {"slope": 4, "height": -12, "zero": 3}),
    ("parabola", lambda x: 7 - 2 * (x - 6.5) ** 2, {"optimum": 6.5, "height": 7, "curvature": -2}),
])  # fmt: skip
def test_fits_find_the_law_and_cover_it_over_seeds(curve: str, law, expected: dict) -> None:  # type: ignore[no-untyped-def]
    x = np.linspace(0.0, 15.0, 9) if curve == "hill_hyperbola" else np.linspace(5.0, 7.0, 9)
    chance = np.random.default_rng(5)
    rows = [(condition, seed, value, law(value) * (1 + 0.01 * chance.normal()))
            for seed in range(8) for condition, value in enumerate(x)]  # fmt: skip
    table = pd.DataFrame(rows, columns=["condition", "seed", "x", "y"])
    (result,), problems = fit(FitPlan(curve, "x", "y"), table)
    assert problems == []
    for name, value in expected.items():
        assert result.fit.values[name] == pytest.approx(value, rel=0.05)
        half = (result.high[name] - result.low[name]) / 2
        assert 0 < half < 0.1 * abs(value)
        assert abs(result.fit.values[name] - value) < 3 * half
    assert np.isfinite(result.band).all()
    assert fit(FitPlan(curve, "x", "y", within=(5.0, 5.3)), table)[1]  # too few points


def test_an_interval_of_the_mean_covers_it_as_often_as_it_says() -> None:
    drawn = np.random.default_rng(7).normal(2.0, 1.0, (300, 20))
    limits = np.array([interval(row) for row in drawn])
    # A percentile bootstrap of 20 values is a little too narrow: about 93 %.
    assert 0.88 < np.mean((limits[:, 0] < 2.0) & (limits[:, 1] > 2.0)) < 0.98
    assert np.isnan(interval(np.array([1.0, 2.0]))).all()


@pytest.fixture(scope="module")
def finished(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """The plan, run with two loads that hold and a third that no heads can."""
    plan = write_plan(tmp_path_factory.mktemp("study"), PLAN.replace("[100, 150]", "[100, 150, 5000]"))
    result = subprocess.run([*COMMAND, "run", plan, "-j", "2"], capture_output=True, text=True, check=False)
    assert result.returncode == 1
    assert result.stderr.count(" failed: no head is bound at time") >= 6
    return plan


def test_a_run_is_what_the_program_does_by_hand(finished: Path, tmp_path: Path) -> None:
    study = Study.load(finished)
    table = study.table()
    assert (table["status"] == "failed").tolist() == (table["load"] == 5000).tolist()
    row = table[(table["load"] == 150) & (table["model_huxley_fast.prm:huxley/g1"] == 20.5)].iloc[2]
    assert row["seed"] == 3
    for path in (ROOT / "examples" / "isometric").glob("*.prm"):
        text = path.read_text().replace("random_seed         = 1", "random_seed = 3")
        (tmp_path / path.name).write_text(text.replace("g1 = 20.0", "g1 = 20.5"))
    (tmp_path / "protocol.dat").write_text("0 0.0005 0 0 0\n0.02 0.0005 1 0 150\n0.03 0.0005 0 0 0\n")
    subprocess.run([os.environ["TAVELO"], "-q"], cwd=tmp_path, check=True)
    result = (tmp_path / "result.csv").read_bytes()
    assert (study.store.folder(row["run"]) / "result.csv").read_bytes() == result
    rows = np.genfromtxt(tmp_path / "result.csv", delimiter=",", skip_header=1)
    steady = rows[(rows[:, 0] > 0.0101) & (rows[:, 0] < 0.0201), 1]
    assert row["force"] == pytest.approx(steady.mean(), rel=1e-9)
    assert row["double"] == 2 * row["force"]


def test_results_of_a_study(finished: Path) -> None:
    study, out = Study.load(finished), finished.with_suffix("")
    runs = pd.read_csv(out / "runs.csv")
    summary = pd.read_csv(out / "summary.csv").set_index(["load", "model_huxley_fast.prm:huxley/g1", "measure"])
    three = runs[(runs["load"] == 100) & (runs["model_huxley_fast.prm:huxley/g1"] == 10)]["force"]
    row = summary.loc[(100, 10.0, "force")]
    assert (row["n"], row["unit"]) == (3, "pN per thick filament")
    assert (row["mean"], row["sd"]) == pytest.approx((three.mean(), three.std()))
    assert three.min() <= row["low"] < row["mean"] < row["high"] <= three.max()
    data = study.dataset()
    course = data["force_course"].sel(load=100, g1=20.5, seed=2)
    name = study.table().query("load == 100 and seed == 2")["run"].iloc[1]
    rows = np.genfromtxt(study.store.folder(name) / "result.csv", delimiter=",", skip_header=1)
    assert course.to_numpy() == pytest.approx(rows[:, 1], rel=1e-6)
    assert np.isnan(data["force"].sel(load=5000)).all()
    with xarray.open_dataset(out / "study.nc") as written:
        assert written["force_course"].attrs["units"] == "pN per thick filament"
    page = (out / "study.html").read_text()
    assert "failed: no head is bound" in page
    assert f'href="runs/{name[:2]}/{name}"' in page


def test_what_is_there_is_not_computed_again(finished: Path) -> None:
    runs = finished.with_suffix("") / "runs"
    before = {path: path.stat().st_mtime_ns for path in runs.glob("*/*/result.csv")}
    finished.write_text(finished.read_text() + 'late = { column = "force", take = "last" }\n')
    study = Study.load(finished)
    assert study.survey()[0].old == 12
    assert study.run(jobs=2) == []
    table = study.table()
    assert table["late"].notna().tolist() == (table["status"] == "done").tolist()
    assert {path: path.stat().st_mtime_ns for path in runs.glob("*/*/result.csv")} == before
    study.clean("measures")
    assert study.run(jobs=2) == []
    assert study.survey()[0].done == 12
    assert len(list(runs.glob("*/*/result.csv"))) == 6  # of the failed ones
    assert study.retry() == 6
    assert study.survey()[0].missing == 6


def test_killed_in_the_middle_a_study_goes_on(tmp_path: Path) -> None:
    plan = write_plan(tmp_path)
    process = subprocess.Popen([*COMMAND, "run", plan, "-j", "2"], stderr=subprocess.PIPE)
    runs = tmp_path / "plan" / "runs"
    while process.poll() is None and not list(runs.glob("*/*.json")):
        pass
    process.send_signal(signal.SIGKILL)
    process.wait()
    before = {path: path.stat().st_mtime_ns for path in runs.glob("*/*.json")}
    assert 0 < len(before) < 12
    study = Study.load(plan)
    assert study.run(jobs=2) == []
    after = {path: path.stat().st_mtime_ns for path in runs.glob("*/*.json")}
    assert len(after) == 12
    assert after.items() >= before.items()
    assert json.loads(next(iter(after)).read_bytes())["status"] == "done"


EXAMPLES = ROOT / "examples"
BASES = {"force-pca": "force_pca", "twitch": "twitch", "work-loop": "flight_muscle", "turnover": "atpase"}


@pytest.mark.parametrize("plan", sorted(path for path in EXAMPLES.glob("*/*.toml") if "[measure" in path.read_text()), ids=lambda path: path.stem)
def test_the_program_accepts_the_plans_of_the_examples(plan: Path, tmp_path: Path) -> None:
    Study.load(plan, out=tmp_path).check()


@pytest.mark.parametrize("name", experiments.names())
def test_the_program_accepts_the_plan_of_every_experiment(name: str, tmp_path: Path) -> None:
    base, plan = EXAMPLES / BASES.get(name, "duke_step_response"), tmp_path / "plan.toml"
    subprocess.run([*COMMAND, "new", name, base, "--out", plan], check=True)
    Study.load(plan).check()
    assert (ROOT / "docs" / "methods" / f"{name}.md").is_file()


def test_a_missing_library_is_told_in_a_line(tmp_path: Path) -> None:
    hidden = "import sys; sys.modules['asteval'] = None; from tavelo_tools.commands import study; sys.exit(study())"
    result = subprocess.run([sys.executable, "-c", hidden], capture_output=True, text=True, check=False)
    assert result.returncode == 1
    assert result.stderr.startswith("tavelo-study: needs the Python package 'asteval'; Debian has it as python3-asteval")
