"""Courses of the runs: study.nc, and means over seeds for figures."""

from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import h5netcdf
import h5py
import numpy as np
import pandas as pd

from ..protocol import FROM_PRESENT, read_protocol
from ..read import read_run
from ..tables import BY_KEY
from .drawings import CourseLine, Panel, chosen
from .formulas import Value
from .names import short
from .plan import Plan
from .store import Store

MOST_LINES = 9
CHUNK = 4096  # steps


def course(folder: Path, names: list[str]) -> pd.DataFrame:
    """Columns of a run, of its result or as table.column; empty where the run's folder isn't kept.

    Rows are those of the result, unless all columns are of one other table."""
    if not (folder / "result.csv").is_file():
        return pd.DataFrame(columns=names)
    run = read_run(folder)
    tables = {_table(name) for name in names if name != "time"}
    own = run[next(iter(tables))] if len(tables) == 1 else run["result"]
    columns = {}
    for name in names:
        frame = own if name == "time" else run[_table(name)]
        values = frame.get(name.rpartition(".")[2])
        if values is not None and len(values) >= len(own):  # others have a row for time 0 as well
            columns[name] = values.to_numpy()[len(values) - len(own) :]
    return pd.DataFrame(columns, index=range(len(own))).reindex(columns=names)


def _table(name: str) -> str:
    return name.rpartition(".")[0] or "result"


def course_lines(plan: Plan, store: Store, runs: pd.DataFrame, panel: Panel) -> list[CourseLine]:
    """Means over the seeds of the conditions that a panel shows, at most nine; time in ms."""
    names = ["time", *dict.fromkeys(name for name in (panel.course, panel.against) if name)]
    rows = chosen(panel, runs[runs["status"] == "done"])
    lines = []
    for condition, group in list(rows.groupby("condition", sort=True))[:MOST_LINES]:
        frames = [course(store.folder(name), names) for name in group["run"]]
        frames = [frame for frame in frames if len(frame)]
        if not frames:
            continue
        least = min(map(len, frames))
        mean = sum(frame.iloc[:least].to_numpy() for frame in frames) / len(frames)
        if panel.over:
            start, stop = (time.at(plan.values(int(condition)), mean[-1, 0]) for time in panel.over)
            mean = mean[(mean[:, 0] > start - 1e-9) & (mean[:, 0] <= stop + 1e-9)]
        x = mean[:, names.index(panel.against)] if panel.against else 1000.0 * mean[:, 0]
        lines.append(CourseLine(_label(plan, int(condition)), x, mean[:, 1]))
    return lines


def _label(plan: Plan, condition: int) -> str:
    pairs = ((name, value) for name, value in plan.varied(condition).items() if len(plan.vary[name]) > 1)
    return ", ".join(f"{short(name)} = {value}" for name, value in pairs)


@dataclass(frozen=True)
class _Grid:
    """Dimensions of the courses, and where in them a run stands."""

    plan: Plan
    names: dict[str, str]  # of the varied quantities, as dimensions

    @property
    def sizes(self) -> dict[str, int]:
        if self.plan.zipped:
            return {"condition": self.plan.conditions, "seed": len(self.plan.seeds)}
        sizes = {self.names[name]: len(values) for name, values in self.plan.vary.items()}
        return sizes | {"seed": len(self.plan.seeds)}

    def at(self, number: int) -> tuple[int, ...]:
        condition, seed = number % self.plan.conditions, number // self.plan.conditions
        if self.plan.zipped:
            return condition, seed
        shape = tuple(self.sizes.values())[:-1]
        return (*(int(i) for i in np.unravel_index(condition, shape)), seed) if shape else (seed,)


def write_courses(plan: Plan, store: Store, runs: pd.DataFrame, path: Path) -> None:
    """NetCDF with every kept course over the varied values, seed and time, and all measures.

    Where all runs have the same times these are a coordinate; else the last dimension counts rows,
    and `time` is a variable over all dimensions. Runs without a course are NaN throughout."""
    done = runs[runs["status"] == "done"]
    grid = _Grid(plan, _dimension_names(plan))
    aside = path.with_name(path.name + ".part")
    with h5netcdf.File(aside, "w") as file:
        file.attrs["title"], file.attrs["plan"] = plan.title, plan.path.name
        file.dimensions = dict(grid.sizes)
        _write_axes(file, grid)
        _write_measures(file, grid, runs)
        _write_courses(file, grid, _Kept(plan, store, done))
    aside.replace(path)


def _dimension_names(plan: Plan) -> dict[str, str]:
    names = {name: short(name) for name in plan.vary}
    if len(set(names.values()) | {"seed", "row", "time"}) < len(names) + 3:
        names = {name: name.replace("/", "_").replace(":", "_") for name in plan.vary}
    return names


def _write_axes(file: Any, grid: _Grid) -> None:
    plan = grid.plan
    _variable(file, "seed", ("seed",), np.array(plan.seeds))
    for name, values in plan.vary.items():
        axis = "condition" if plan.zipped else grid.names[name]
        variable = _variable(file, grid.names[name], (axis,), _array(values))
        _describe(variable, plan.unit(name), name)


def _array(values: tuple[Value, ...]) -> np.ndarray:
    if any(isinstance(value, str) for value in values):
        return np.array([str(value) for value in values], dtype=object)
    return np.array(values, dtype=float)


def _variable(file: Any, name: str, axes: tuple[str, ...], values: np.ndarray) -> Any:
    kind = h5py.string_dtype() if values.dtype == object else values.dtype
    return file.create_variable(name, axes, kind, data=values)


def _describe(variable: Any, unit: str, name: str) -> None:
    if unit:
        variable.attrs["units"] = unit
    variable.attrs["long_name"] = name


def _write_measures(file: Any, grid: _Grid, runs: pd.DataFrame) -> None:
    for name in grid.plan.measures:
        values = np.full(tuple(grid.sizes.values()), np.nan)
        for number, value in enumerate(runs[name]):
            values[grid.at(number)] = value
        _describe(_variable(file, name, tuple(grid.sizes), values), grid.plan.unit(name), name)


@dataclass(frozen=True)
class _Kept:
    """The courses that are there, one run after the other."""

    plan: Plan
    store: Store
    done: pd.DataFrame

    def __iter__(self) -> Iterator[tuple[int, pd.DataFrame]]:
        for number, name in self.done["run"].items():
            frame = course(self.store.folder(name), ["time", *self.plan.courses])
            if len(frame):
                yield int(number), frame

    def have_one_time(self) -> bool:
        """Whether all runs follow the same protocol, and its times don't depend on the run."""
        found = set()
        for name in self.done["run"]:
            path = self.store.folder(name) / "protocol.dat"
            if not path.is_file():
                continue
            text = path.read_bytes()
            if text not in found and any(row.law == FROM_PRESENT for row in read_protocol(path)):
                return False
            found.add(text)
            if len(found) > 1:
                return False
        return True


def _write_courses(file: Any, grid: _Grid, kept: _Kept) -> None:
    first = next(iter(kept), None)
    if first is None:
        return
    fixed = kept.have_one_time()
    last = "time" if fixed else "row"
    axes = (*grid.sizes, last)
    names = [name for name in grid.plan.courses if first[1][name].notna().any()]
    file.dimensions[last] = len(first[1]) if fixed else None
    if fixed:
        _describe(_variable(file, "time", ("time",), first[1]["time"].to_numpy()), "s", "time")
    names += [] if fixed else ["time"]
    chunks = (*(1 for _ in grid.sizes), min(len(first[1]), CHUNK))
    for name in names:
        own = _own_name(grid.plan, name)
        kind = np.float64 if name == "time" else np.float32
        variable = file.create_variable(
            own, axes, kind, fillvalue=kind(np.nan), chunks=chunks, compression="gzip", compression_opts=1
        )
        _describe(variable, BY_KEY[_table(name)].unit(name.rpartition(".")[2]), name)
    most = 0
    for number, frame in kept:
        if not fixed and len(frame) > most:
            most = len(frame)
            file.resize_dimension("row", most)
        if fixed and len(frame) != len(first[1]):
            continue
        for name in names:
            file[_own_name(grid.plan, name)][(*grid.at(number), slice(0, len(frame)))] = frame[name].to_numpy()


def _own_name(plan: Plan, name: str) -> str:
    own = name.replace(".", "_")
    return f"{own}_course" if own in plan.measures else own
