"""Would catch a fit that finds other values than the data have, an interval too narrow, a trial lost or doubled."""

import shutil
import subprocess
import sys
from pathlib import Path

import numpy as np
import optuna
import pytest
from tavelo_tools.fit import ParameterFit
from tavelo_tools.fit.intervals import Data, best_point, bootstrap, errors_at, profiles
from tavelo_tools.fit.surface import Surface
from tavelo_tools.study import StudyError
from tavelo_tools.study.toml_text import set_number

ROOT = Path(__file__).resolve().parents[2]
RATE = "model_huxley_fast.prm:huxley"
# A measure by formula has no noise: the values that its data have are known exactly.
PLAN = f"""
base = "{ROOT / "examples" / "isometric"}"
seeds = 2
[vary]
x = [0, 1, 2, 3, 4, 5]
[free]
a = {{ start = 3, low = 1, high = 20, scale = "log" }}
b = {{ low = -5, high = 5 }}
[write."protocol.dat"]
text = "0 0.0005 0 0 0\\n0.001 0.0005 0 0 0\\n"
[measure]
y = {{ formula = "a * exp(-x / 2) + b", unit = "mN" }}
force = {{ column = "force" }}
[target.decay]
data = "data.csv"
measure = "y"
x = "x"
se = 0.1
[search]
runs = 400
"""
X = np.arange(6.0)
DATA = "x,y [mN]\n" + "\n".join(f"{x},{8 * np.exp(-x / 2) - 1}" for x in X)


def write(folder: Path, plan: str = PLAN, data: str = DATA) -> Path:
    (folder / "data.csv").write_text(data)
    (folder / "fit.toml").write_text(plan)
    return folder / "fit.toml"


@pytest.mark.parametrize("change, told", [
    (("low = 1, high = 20", "low = 20, high = 1"), r"fit.toml:7: \[free.a\] low: is 20, and high 1; accepted: low below"),
    (("start = 3", "start = 30"), r"fit.toml:7: \[free.a\] start: is 30; accepted: 1 to 20"),
    (("low = -5", 'scale = "log", low = -5'), r"fit.toml:8: \[free.b\] low: is -5; accepted: above 0"),
    (("[0, 1, 2, 3, 4, 5]", "[0, 1, 2, 3, 4]"), r"row 6 of the data has x = 5, which isn't varied"),
    (('unit = "mN"', 'unit = "kN"'), r"'y' of the data has the unit 'mN', 'y' of the plan 'kN'"),
    (("se = 0.1", "se = 0"), r"fit.toml:18: \[target.decay\] se: has \[0.\]; accepted: above 0"),
    (('measure = "y"', 'measure = "z"'), r"fit.toml:16: \[target.decay\] measure: is 'z'; accepted: y, force"),
    (("runs = 400", "runs = 60"), r"fit.toml:20: \[search\] runs: is 60; accepted: 244 or more"),
    (("runs = 400", 'sampler = "magic"'), "sampler: is 'magic'; accepted: cma, tpe, random"),
    (("b = {", "c = {"), "'b' isn't known here"),
    (("[free]", "[free]\nc = { low = 1, high = 2 }"), "c: is free, but nothing uses it"),
    (("+ b", "+ b + 0 * c"), "'c' isn't known here"),
    (("[free]", f'[free]\n"{RATE}/g2" = {{ low = 10, high = 20 }}'), r"g2.*: changes nothing that is fitted between 10 and 20"),
    (('measure = "y"\nx = "x"', f'column = "force"\ntime = "x"\nat = {{ x = 0 }}'), "has the unit ''; accepted in its heading"),
])  # fmt: skip
def test_what_cannot_be_fitted_is_said_before_the_search(tmp_path: Path, change: tuple[str, str], told: str) -> None:
    with pytest.raises(StudyError, match=told):
        ParameterFit.load(write(tmp_path, PLAN.replace(*change, 1))).run(jobs=2)
    assert not list(tmp_path.glob("fit/search.db"))


def test_few_data_and_times_outside_the_run_are_refused(tmp_path: Path) -> None:
    course = PLAN.replace('measure = "y"\nx = "x"', 'column = "force"\nat = { x = 0 }')
    heading = "time [ms],force [pN per thick filament]\n"
    with pytest.raises(StudyError, match="has 2 data for 2 free parameters"):
        ParameterFit.load(write(tmp_path, course, heading + "0.5,1\n1,2\n"))
    with pytest.raises(StudyError, match="target decay: its time 0.003 s lies outside the run, from 0 to 0.001 s"):
        ParameterFit.load(write(tmp_path, course, heading + "0.5,1\n1,2\n3,3\n")).run(jobs=2)


@pytest.fixture(scope="module")
def known(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """The plan, killed when a third of the search is done, and started again."""
    plan = write(tmp_path_factory.mktemp("fit"))
    process = subprocess.Popen([sys.executable, "-m", "tavelo_tools.fit", plan, "-j", "2"], stderr=subprocess.PIPE)
    while process.poll() is None and len(list((plan.parent / "fit").glob("runs/*/*.json"))) < 1:
        pass
    while process.poll() is None and _trials(plan) < 10:
        pass
    process.kill()
    process.wait()
    assert 10 <= _trials(plan) < 40
    return plan


def _trials(plan: Path) -> int:
    import sqlite3

    try:
        with sqlite3.connect(f"file:{plan.parent / 'fit' / 'search.db'}?mode=ro", uri=True) as data:
            return int(data.execute("select count(*) from trials").fetchone()[0])
    except sqlite3.Error:
        return 0


def test_known_values_are_found_by_a_fit_that_was_killed(known: Path) -> None:
    result = ParameterFit.load(known).run(jobs=2)
    a, b = result.estimates
    assert (a.value, b.value) == pytest.approx((8.0, -1.0), abs=0.05)
    # By linear least squares: y is linear in a and b.
    design = np.column_stack([np.exp(-X / 2), np.ones(6)]) / 0.1
    covariance = np.linalg.inv(design.T @ design)
    error = np.sqrt(np.diag(covariance))
    assert (a.high - a.low, b.high - b.low) == pytest.approx(tuple(2 * 1.96 * error), rel=0.1)
    assert result.correlation().iloc[0, 1] == pytest.approx(covariance[0, 1] / error.prod(), abs=0.01)
    assert result.noise_misfit == 0.0
    storage = f"sqlite:///{known.parent / 'fit' / 'search.db'}"
    (search,) = optuna.get_all_study_summaries(storage)
    trials = optuna.load_study(study_name=search.study_name, storage=storage).trials
    assert {trial.state.name for trial in trials if trial.user_attrs} == {"COMPLETE"}
    copy = Path(shutil.copytree(known.parent / "fit", known.parent / "again"))
    assert ParameterFit.load(known, copy).run(jobs=1).table().equals(result.table())


CHANCE = np.random.default_rng(11)
POINTS = CHANCE.random((30, 2))


def _line(points: np.ndarray) -> np.ndarray:
    """Ten data of a straight line, whose height and slope are the scaled parameters."""
    return points[:, :1] + points[:, 1:] * np.linspace(0.0, 1.0, 10)


def test_intervals_cover_the_truth_as_often_as_they_say() -> None:
    truth, inside, by_bootstrap = np.array([0.4, 0.6]), [], []
    for _ in range(16):
        of_seed = 0.1 * CHANCE.normal(size=(1, 5, 1))  # a seed's runs have much in common
        models = _line(POINTS)[:, None] + of_seed + 0.02 * CHANCE.normal(size=(30, 5, 10))
        data = Data(_line(truth[None])[0] + 0.05 * CHANCE.normal(size=10), np.full(10, 0.05), True)
        surface = Surface.through(np.full(2, 0.5), np.full(2, 0.5), POINTS, models)
        best = best_point(surface, data, np.full(2, 0.5), (np.zeros(2), np.ones(2)))
        found = profiles(surface, data, best, errors_at(surface, data, best))
        inside.append([profile.low <= value <= profile.high for profile, value in zip(found, truth)])
        if len(by_bootstrap) < 3:
            by_bootstrap.append(bootstrap(surface, data, best, errors_at(surface, data, best)))
    assert (np.mean(inside, axis=0) > 0.8).all()
    widths = np.mean([limits[1] - limits[0] for limits in by_bootstrap], axis=0)
    assert (widths > 0.1).all()


def test_what_the_data_leave_open_is_told() -> None:
    """Only the sum of two parameters acts."""
    models = (POINTS.sum(axis=1)[:, None] * np.linspace(1.0, 2.0, 6))[:, None].repeat(3, axis=1)
    data = Data(np.linspace(1.0, 2.0, 6), np.full(6, 0.02), True)
    surface = Surface.through(np.full(2, 0.5), np.full(2, 0.5), POINTS, models)
    best = best_point(surface, data, np.array([0.5, 0.5]), (np.zeros(2), np.ones(2)))
    found = profiles(surface, data, best, errors_at(surface, data, best))
    assert all(profile.meets_low and profile.meets_high for profile in found)


def test_a_number_of_a_scheme_is_set_where_it_stands() -> None:
    text = '# cycle\n[parameters]\nf1 = { about = "x = 3", value = 10, unit = "1/s" } # fast\ng1 = 1e2\n[other]\nf1 = 3\n'
    changed = set_number(text, ("parameters", "f1"), "12.5", "")
    assert changed == text.replace("value = 10", "value = 12.5")
    assert set_number(text, ("parameters", "g1"), "7", "") == text.replace("1e2", "7")
    for path in (("parameters", "g2"), ("other",)):
        with pytest.raises(StudyError):
            set_number(text, path, "1", "")
