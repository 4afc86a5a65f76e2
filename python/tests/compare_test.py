"""Would catch seeds taken for conditions, wrong means and bands, runs that vanish without a word."""

import re
from collections.abc import Callable
from pathlib import Path

import browser
import numpy as np
import pandas as pd
import pytest
from report_test import start
from tavelo_tools import read_run
from tavelo_tools.groups import group
from tavelo_tools.plots import mean_and_band
from tavelo_tools.quantities import QUANTITIES, Curve

Series = Callable[..., list[Path]]


def test_the_band_is_students_on_the_quantitys_scale() -> None:
    half = 4.3027 / 3**0.5  # t(0.975, 2) from the tables; s = 1, n = 3
    slope = half / (100 * 0.5 * 0.5)  # of the logit of 50 in 100, which is 0
    for key, middle, s, low, high in (
        ("force", 2.0, 1.0, 2 - half, 2 + half),
        ("bonds", 2.0, 1.0, 2 * np.exp(-half / 2), 2 * np.exp(half / 2)),
        ("bonds", 0.0, 0.0, 0.0, 0.0),
        ("segments", 50.0, 1.0, 100 / (1 + np.exp(slope)), 100 / (1 + np.exp(-slope))),
    ):
        quantity = next(quantity for quantity in QUANTITIES if quantity.key == key)
        values = np.array([[middle - s], [middle], [middle + s]])
        _, *found = mean_and_band([Curve("", np.array([1.0]), value) for value in values], quantity)
        assert np.ravel(found) == pytest.approx([middle, low, high], rel=1e-4), key


def test_runs_are_grouped_by_all_but_the_seed_and_named_by_what_differs(series: Series) -> None:
    paths = series((8, 1), (8.5, 1), (8, 2))
    changed = paths[2] / "model_huxley_slow.prm"
    changed.write_text(changed.read_text().replace("f1 = 8", "f1=8.00 # the same"))
    groups, repeated = group([read_run(path) for path in paths])
    assert [item.counted for item in groups] == ["f1 = 8 (n = 2)", "f1 = 8.5"]
    assert repeated == []
    changed.write_text(changed.read_text().replace("8.00", "9"))
    (paths[1] / "protocol.dat").write_text("0 0.1 0 0 0\n0.4 0.1 0 0 0\n")
    groups, _ = group([read_run(path) for path in paths])
    assert [item.label for item in groups] == [
        f"model_huxley_slow f1 = {slow}, model_huxley_fast f1 = {fast}, protocol row 2 start = {end}"
        for slow, fast, end in (("8", "8", "0.3"), ("8.5", "8.5", "0.4"), ("9", "8", "0.3"))
    ]


def test_the_table_and_its_file(series: Series, tmp_path: Path) -> None:
    paths = series((8, 1), (8, 2), (8, 6), (10, 1))
    assert start("tavelo-compare", *paths, "--out", tmp_path).returncode == 0
    table = pd.read_csv(tmp_path / "compare.csv").set_index(["condition", "quantity"])
    forces = table.xs("force, last tenth", level="quantity")
    # At 0.3 s the forces are 2.4, 4.8 and 14.4 pN: mean 7.2, deviations -4.8, -2.4, 7.2.
    assert forces.loc["f1 = 8", ["mean", "n"]].tolist() == pytest.approx([7.2, 3])
    assert forces.loc["f1 = 8", "sd"] == pytest.approx((80.64 / 2) ** 0.5)
    assert np.isnan(forces.loc["f1 = 10", "sd"])
    assert forces["f1"].tolist() == [8, 10]
    page = (tmp_path / "compare.html").read_text()
    assert "<td>7.2 \u00b1 6.3</td>" in page and "f1 = 8 (n = 3)" in page


def test_more_conditions_than_colours(series: Series, tmp_path: Path) -> None:
    paths = series(*((f1, 1) for f1 in range(1, 13)))
    result = start("tavelo-compare", *paths, "--out", tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    page = (tmp_path / "compare.html").read_text()
    assert "<h3>Force, 10 to 12</h3>" in page
    browser.check(tmp_path / "compare.html", plots=page.count("<figure>"))


def test_what_is_left_out_is_said(series: Series, tmp_path: Path) -> None:
    first, second, again = series((8, 1), (8, 2), (8, 3))
    (again / "TaveloOutput.lst").write_text((second / "TaveloOutput.lst").read_text())
    arguments = (first, second, again, tmp_path / "nowhere", "--out", tmp_path)
    result = start("tavelo-compare", *arguments)
    assert result.returncode == 1
    assert [re.sub("/.*/", "", line) for line in result.stderr.splitlines()] == [
        "tavelo-compare: left out: nowhere: no such directory",
        "tavelo-compare: left out: run8_3: same conditions and same seed as another",
    ]
    assert start("tavelo-compare", *arguments, "--allow-missing").returncode == 0
    assert "%%" not in start("tavelo-compare", "--help").stdout


def test_runs_of_which_nothing_is_known_are_not_the_same(series: Series, tmp_path: Path) -> None:
    paths = []
    for path in series((8, 1), (9, 1)):
        for file in (*path.glob("*.prm"), *path.glob("*.dat"), path / "TaveloOutput.lst"):
            file.unlink()
        (tmp_path / f"{path.name}x").mkdir()
        paths.append(path.rename(tmp_path / f"{path.name}x" / "run"))
    groups, _ = group([read_run(path) for path in paths])
    assert [item.label for item in groups] == [str(path) for path in paths]
    # A key that is set to nothing is not a key that is not set.
    for path, line in zip(paths, ("", "set model_slow_fileName =\n")):
        (path / "simulation.prm").write_text(line)
    start("tavelo-compare", *paths, "--out", tmp_path)
    page = (tmp_path / "compare.html").read_text()
    assert "None that are known" not in page and "(empty)" in page
