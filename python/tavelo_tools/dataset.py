"""Runs as data sets of xarray, and as tidy tables of many runs."""

from __future__ import annotations

import json
import re
from collections.abc import Iterable, Mapping, Sequence
from typing import TYPE_CHECKING

import numpy as np
import pandas as pd

from .groups import condition_labels, seed, varied
from .read import Run, RunError
from .tables import BY_KEY, LISTING, VALUES

if TYPE_CHECKING:
    import xarray

LARGE = ("integral",)  # only when asked for
NUMBERED = re.compile(r"(.+_)(\d+)")


def to_xarray(run: Run, tables: Iterable[str] | None = None) -> xarray.Dataset:
    """One run; `Run.to_xarray` says what it holds."""
    xarray = _library()
    chosen = [key for key in run if key not in LARGE] if tables is None else list(tables)
    variables: dict[str, tuple[tuple[str, ...], np.ndarray, dict[str, str]]] = {}
    times: dict[str, np.ndarray] = {}
    attributes = {"title": run.name, "source": "Tavelo"}
    for key in chosen:
        frame = run[key]
        if BY_KEY[key].kind in (LISTING, VALUES):
            attributes[key] = json.dumps(frame.drop(columns="block", errors="ignore").to_dict("list"))
        elif not frame.empty:
            rows = _rows(key, frame, times)
            kept = frame.drop(columns="time") if rows in times else frame
            variables |= _variables(run, key, kept, rows)
    coordinates = {name: ((name,), values, _about_time(run)) for name, values in times.items()}
    for dimensions, values, _ in variables.values():
        for name, size in zip(dimensions, values.shape):
            # Rows and states are counted from 0; runs with more or fewer are then joined by them.
            coordinates.setdefault(name, ((name,), np.arange(size), {"units": "1"}))
    return xarray.Dataset(variables, coordinates, attributes)


def _library():  # noqa: ANN202  its type is known only where it is installed
    try:
        import xarray
    except ImportError as error:
        raise RunError("data sets need xarray: install the package python3-xarray") from error
    return xarray


def _about_time(run: Run) -> dict[str, str]:
    return {"units": run.unit("result", "time"), "long_name": "time"}


def _rows(key: str, frame: pd.DataFrame, times: dict[str, np.ndarray]) -> str:
    """Name of a table's rows: "time" for those of "result.csv", the same for tables with the same
    times; the table's own name where times repeat."""
    time = frame.get("time", pd.Series(dtype=float)).to_numpy()
    if not len(time) or not np.all(np.diff(time) > 0):
        return key
    for name, known in times.items():
        # Files differ in how many digits of a time they have.
        if len(known) == len(time) and np.allclose(known, time, rtol=1e-5, atol=1e-9):
            return name
    name = "time" if key == "result" else f"time_{key}"
    times[name] = time
    return name


def _variables(
    run: Run, key: str, frame: pd.DataFrame, rows: str
) -> dict[str, tuple[tuple[str, ...], np.ndarray, dict[str, str]]]:
    """A variable for each column; numbered columns become one with a second dimension."""
    found: dict[str, tuple[tuple[str, ...], np.ndarray, dict[str, str]]] = {}
    numbered: dict[str, list[str]] = {}
    for column in map(str, frame.columns):
        match = NUMBERED.fullmatch(column)
        if match and match[1] in BY_KEY[key].columns:
            numbered.setdefault(match[1], []).append(column)
            continue
        name = column if key == "result" else f"{key}_{column}"
        found[name] = ((rows,), frame[column].to_numpy(), _about(run, key, column))
    for stem, columns in numbered.items():
        about = {"units": run.unit(key, columns[0]) or "1", "long_name": BY_KEY[key].about}
        if stem == "state_":
            about["states"] = ", ".join(run.state_names)
        second = "state" if stem == "state_" else f"{key}_number"
        found[key] = ((rows, second), frame[columns].to_numpy(), about)
    return found


def _about(run: Run, key: str, column: str) -> dict[str, str]:
    return {"units": run.unit(key, column) or "1", "long_name": f"{column}: {BY_KEY[key].about}"}


def join(runs: Sequence[Run], tables: Iterable[str] | None = None) -> xarray.Dataset:
    """Runs along a dimension `run`, with their names, seeds, conditions and the parameters in which
    they differ as coordinates, and with listings as variables. NaN where a run has nothing."""
    xarray = _library()
    chosen = None if tables is None else list(tables)
    sets = [to_xarray(run, chosen) for run in runs]
    every = {name: variable for found in sets for name, variable in found.data_vars.items()}
    sets = [_completed(found, every) for found in sets]
    merged = xarray.concat(sets, dim="run", join="outer", combine_attrs="drop_conflicts")
    listings = dict.fromkeys(key for found in sets for key in found.attrs if key in BY_KEY)
    texts = {key: ("run", [found.attrs.get(key, "") for found in sets]) for key in listings}
    merged.attrs = {"source": "Tavelo"}
    about = about_runs(runs)
    return merged.assign(texts).assign_coords({name: ("run", about[name].to_numpy()) for name in about})


def _completed(found: xarray.Dataset, every: Mapping[str, xarray.DataArray]) -> xarray.Dataset:
    """With the variables that only others have, as NaN, so that all can be laid side by side."""
    missing = {}
    for name, variable in every.items():
        if name not in found:
            shape = [found.sizes.get(dimension, 0) for dimension in variable.dims]
            missing[name] = (variable.dims, np.full(shape, np.nan), variable.attrs)
    rows = {name for dimensions, *_ in missing.values() for name in dimensions if name not in found.sizes}
    return found.assign(missing).assign_coords({name: [] for name in rows})


def about_runs(runs: Sequence[Run]) -> pd.DataFrame:
    """A row for each run: `run`, `condition`, `seed`, and each parameter that differs."""
    about = {
        "run": [run.name for run in runs],
        "condition": condition_labels(runs),
        "seed": [seed(run) for run in runs],
    }
    differing = {name.replace(" ", "_"): values for name, values in varied(runs).items()}
    frame = pd.DataFrame(about | {n: v for n, v in differing.items() if n not in about})
    return frame.apply(_as_numbers)


def _as_numbers(column: pd.Series) -> pd.Series:
    try:
        return pd.to_numeric(column)
    except ValueError:
        return column.astype(str)


def tidy(runs: Sequence[Run], key: str) -> tuple[pd.DataFrame, dict[str, str]]:
    """One table of all runs, the columns of `about_runs` before its own, and the units of its columns."""
    about = about_runs(runs)
    frames = []
    for number, run in enumerate(runs):
        frame = run[key]
        row = about.iloc[number]
        named = {name: row[name] for name in about if name not in frame}
        frames.append(frame.assign(**named)[[*named, *frame.columns]])
    return pd.concat(frames, ignore_index=True), runs[0][key].attrs["units"]
