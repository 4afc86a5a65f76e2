"""Would catch a name without a word in docs/api.md or the other way round, data sets with swapped
axes or lost runs, and questions to a run that have no answer or a wrong one."""

import importlib
import inspect
import json
import re
from collections.abc import Callable, Iterator
from pathlib import Path

import numpy as np
import pandas as pd
import pytest
import xarray
from report_test import start
from tavelo_tools import read_run
from tavelo_tools.tables import TABLES

ROOT = Path(__file__).resolve().parents[2]
PAGE = (ROOT / "docs" / "api.md").read_text()


def public(module: str) -> Iterator[tuple[str, object]]:
    """Names of a module and of its classes, "Run.parameter" say."""
    for name in importlib.import_module(module).__all__:
        found = getattr(importlib.import_module(module), name)
        yield name, found
        if inspect.isclass(found) and not issubclass(found, Exception):
            members = {**getattr(found, "__dataclass_fields__", {}), **vars(found)}
            yield from ((f"{name}.{m}", o) for m, o in members.items() if not m.startswith("_"))


def test_the_page_has_every_name_and_no_other() -> None:
    names = dict([*public("tavelo_tools"), *public("tavelo_tools.protocol")])
    headings = re.findall(r"^### (\w+)", PAGE, re.MULTILINE)
    members = re.findall(r"`([A-Z]\w+\.\w+)", PAGE.split("## Tables")[0])
    made = {f"Run.{name}" for name in ("directory", "name", "files", "problems")}
    assert sorted([*headings, *members]) == sorted({*names, *made})
    for name, found in names.items():
        assert inspect.getdoc(found) or not callable(found), name
        if inspect.isfunction(found):
            wanted = [p for p in inspect.signature(found).parameters if p != "self"]
            said = re.search(rf"(?:### |`){re.escape(name)}\((.*?)\)", PAGE)
            assert said and re.findall(r"(\w+)(?:=[^,]*)?", said[1]) == wanted, name


def test_the_page_has_every_table_with_its_columns() -> None:
    rows = {row.split("`")[1]: row for row in PAGE.split("## Tables")[1].splitlines() if row[:3] == "| `"}
    assert set(rows) == {table.key for table in TABLES}
    for table in TABLES:
        lost = [name for name in table.columns if f"`{name.rstrip('_')}" not in rows[table.key]]
        assert not lost, (table.key, lost)


def test_questions_to_a_run(made_run: Path) -> None:
    (made_run / "simulation.prm").write_text("subsection global\n  set only_here = 3\nend\n")
    run = read_run(made_run)
    assert re.fullmatch(r"<Run '.*made': 5 tables, 3 steps>", repr(run))
    assert [run.parameter(n) for n in ("random_seed", "Random Seed", "only_here")] == ["7", "7", "3"]
    assert run.parameter("nowhere") is None
    assert "segments" not in run and run["segments"].empty
    with pytest.raises(KeyError, match="'resul'.* result, bound_states"):
        run["resul"]


def test_a_run_as_a_data_set(real_run: Path) -> None:
    run = read_run(real_run)
    data = run.to_xarray()
    assert data["force"].dims == data["events_attachments"].dims == ("time",)
    assert data["force"].attrs["units"] == "pN per thick filament"
    at = data["head_states"].isel(time_bound_states=[0, 30]).sum("state")
    assert at.values.tolist() == [1500, 1500]
    assert data["head_states"].sel(state=1).values.tolist() == run["head_states"]["state_1"].tolist()
    assert data["bonds_x"].sizes == {"bonds": len(run["bonds"])}
    assert json.loads(data.attrs["parameters"])["name"][0] == "Model"


def test_runs_in_one_file(series: Callable[..., list[Path]], real_run: Path, tmp_path: Path) -> None:
    paths = series((8, 1), (8, 2), (9, 1))
    for file in (tmp_path / "runs.nc", tmp_path / "runs.csv"):
        result = start("tavelo-export", *paths, "-o", file)
        assert (result.returncode, result.stderr, result.stdout) == (0, "", f"{file}\n")
    with xarray.open_dataset(tmp_path / "runs.nc", engine="h5netcdf") as data:
        assert data["force"].sel(time=0.3).values == pytest.approx([2.4, 4.8, 2.7])
        assert data["f1"].values.tolist() == [8, 8, 9]
        assert data["condition"].values.tolist() == ["f1 = 8", "f1 = 8", "f1 = 9"]
        assert data["force"].attrs["units"] == "pN per thick filament"
    table = pd.read_csv(tmp_path / "runs.csv")
    assert table.groupby("run")["force"].max().tolist() == pytest.approx([2.4, 4.8, 2.7])
    about = json.loads((tmp_path / "runs.csv-metadata.json").read_text())["tableSchema"]["columns"]
    assert [c["name"] for c in about] == list(table) and {"name": "time", "unit": "time"} in about
    # Runs with other tables, states and times stand beside each other; what one lacks is no number.
    start("tavelo-export", paths[0], real_run, "-o", tmp_path / "two.nc")
    with xarray.open_dataset(tmp_path / "two.nc", engine="h5netcdf") as data:
        assert data["bonds_x"].count("bonds").values.tolist() == [0, len(read_run(real_run)["bonds"])]
        assert np.isnan(data["segments"].isel(run=0)).all()


def test_what_can_not_be_exported(made_run: Path) -> None:
    two = ("-o", "a.csv", "--table", "see", "--table", "bonds")
    for arguments, status, told in (
        (two, 2, "a.csv: holds one table, not see and bonds"),
        (("-o", "nowhere/a.nc"), 1, "nowhere/a.nc: can't be written: No such file or directory"),
    ):
        result = start("tavelo-export", made_run, *arguments)
        assert (result.returncode, told in result.stderr) == (status, True)
