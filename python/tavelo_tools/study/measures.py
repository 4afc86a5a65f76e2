"""Measures of a run: what is taken from which column, in which part of the run."""

import hashlib
import importlib.util
import json
import re
import threading
from collections.abc import Callable, Iterable, Mapping
from dataclasses import dataclass, replace
from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
from scipy.ndimage import uniform_filter1d

from ..read import Run
from ..tables import BY_KEY
from .errors import Refused, StudyError
from .formulas import Formula, Names, Value
from .toml_text import Table
from .traces import TAKES, Trace

UNITS = {"s": 1.0, "ms": 1e-3, "us": 1e-6}
KEYS = ("column", "over", "take", "smooth", "per", "length", "frequency", "unit", "formula", "function")
PER = ("head", "filament")
_TIME = re.compile(r"^(.*\S)\s+(s|ms|us)$")
_LOCK = threading.Lock()


@dataclass(frozen=True)
class Time:
    """A time in a run: a share of its length, or a formula with a unit."""

    share: float | None
    formula: Formula | None = None
    factor: float = 1.0

    @classmethod
    def read(cls, value: object, where: str) -> "Time":
        if isinstance(value, (int, float)) and 0.0 <= value <= 1.0:
            return cls(float(value))
        found = _TIME.match(value) if isinstance(value, str) else None
        if not found:
            accepted = 'a share from 0 to 1, or a time with its unit (s, ms, us) such as "150 ms"'
            raise StudyError(f"{where} has {value!r}; accepted: {accepted}")
        return cls(None, Formula(found[1], where), UNITS[found[2]])

    def at(self, names: Names, end: float) -> float:
        """In the unit of the run."""
        if self.formula:
            return self.formula.number(names) * self.factor
        assert self.share is not None
        return self.share * end


@dataclass(frozen=True)
class Measure:
    """One number of each run. Exactly one of `column`, `formula`, `function` says where from."""

    name: str
    where: str
    unit: str
    names: frozenset[str]  # that its formulas use
    text: str  # what tells it from others
    table: str = "result"
    column: str = ""
    over: tuple[Time, Time] = (Time(0.0), Time(1.0))
    take: str = "mean"
    smooth: Time | None = None
    per: str | None = None
    length: str = "displacement_actin"
    frequency: Formula | None = None
    formula: Formula | None = None
    function: tuple[Path, str] | None = None

    def digest(self, names: Names) -> str:
        """Tells whether an earlier value is of the same measure; `names` has what formulas use."""
        used = names if self.function else {name: names.get(name) for name in sorted(self.names)}
        code = self.function[0].read_text() if self.function else ""
        return hashlib.sha256(json.dumps([self.text, dict(used), code]).encode()).hexdigest()[:16]

    def of(self, run: Run, names: Names) -> float:
        """Its value. Refused says why there is none."""
        if self.formula:
            return self.formula.number(names)
        if self.function:
            return _call(*self.function, self.where, run, names)
        value = TAKES[self.take].function(self._trace(run, names))
        return value / _heads_or_filaments(run, self.per) if self.per else value

    def _trace(self, run: Run, names: Names) -> Trace:
        frame = run[self.table]
        if self.table not in run.files or (frame.empty and not TAKES[self.take].of_events):
            raise Refused(f"the run has no rows of '{self.table}'")
        if not frame.empty and self.column not in frame:
            listed = ", ".join(map(str, frame.columns))
            raise Refused(f"'{self.table}' has no column '{self.column}', but {listed}")
        times = run["result"]["time"].to_numpy()
        end_of_run = float(times[-1]) if len(times) else 0.0
        start, end = (time.at(names, end_of_run) for time in self.over)
        if start > 0 and end > end_of_run + 1e-6:
            raise Refused(f"the run ends at {end_of_run:g} s, before the window does at {end:g} s")
        inside = (frame["time"] > start - 1e-9) & (frame["time"] <= end + 1e-9)
        if start > 0:  # what belongs to the step that ends at the start lies before the window
            inside &= frame["time"] > start + 1e-9
        frame = frame[inside]
        if frame.empty and not TAKES[self.take].of_events:
            raise Refused(f"no rows from {start:g} to {end:g} s")
        trace = Trace(frame["time"].to_numpy(), frame.get(self.column, _NO_ROWS).to_numpy(), start, end)
        if self.take in ("work", "power"):
            frequency = self.frequency.number(names) if self.frequency else None
            trace = replace(trace, length=frame[self.length].to_numpy(), frequency=frequency)
        return self._smoothed(trace, names, end_of_run) if self.smooth else trace

    def _smoothed(self, trace: Trace, names: Names, end_of_run: float) -> Trace:
        """By a moving mean."""
        assert self.smooth
        step = float(np.median(np.diff(trace.time))) if len(trace.time) > 1 else 1.0
        count = max(1, round(self.smooth.at(names, end_of_run) / step))
        return replace(trace, values=uniform_filter1d(trace.values, count, mode="nearest"))


_NO_ROWS = pd.Series(dtype=float)


def read_measures(table: Table, folder: Path, known: Iterable[str]) -> dict[str, Measure]:
    """The [measure] table of a plan; formulas may use what is varied and the measures before."""
    measures: dict[str, Measure] = {}
    for name, entry in table.tables().items():
        if not name.isidentifier():
            raise table.fail(name, "is no name; accepted: letters, digits, _")
        if name in known:
            raise table.fail(name, "has the name of a value that is varied or derived")
        entry.allow(KEYS)
        measures[name] = _read_measure(name, entry, folder, [*known, *measures])
    return measures


def _read_measure(name: str, entry: Table, folder: Path, known: list[str]) -> Measure:
    given = [key for key in ("column", "formula", "function") if key in entry.values]
    if len(given) != 1:
        raise entry.fail("", "needs one of: column, formula, function")
    text = json.dumps(entry.values, sort_keys=True, default=str)
    unit = entry.get("unit", str, "", "a text")
    common: dict[str, Any] = {"name": name, "where": entry.where(), "text": text}
    if "formula" in entry.values:
        formula = Formula(entry.get("formula", str, "", "a formula"), entry.where("formula"))
        formula.check(known)
        return Measure(**common, unit=unit, names=formula.names, formula=formula)
    if "function" in entry.values:
        function = _read_function(entry, folder)
        return Measure(**common, unit=unit, names=frozenset(known), function=function)
    return _read_column(entry, common, unit, known)


def _read_column(entry: Table, common: dict[str, Any], unit: str, known: list[str]) -> Measure:
    column = entry.get("column", str, "", "a column, or table.column")
    key, _, name = column.rpartition(".")
    key = key or "result"
    if key not in BY_KEY:
        raise entry.fail("column", f"there is no table '{key}'; there are: {', '.join(BY_KEY)}")
    take = entry.get("take", str, "mean", ", ".join(TAKES))
    if take not in TAKES:
        raise entry.fail("take", f"is '{take}'; accepted: {', '.join(TAKES)}")
    over = entry.get("over", list, [0.0, 1.0], "[from, to]")
    if len(over) != 2:
        raise entry.fail("over", f"is {over}; accepted: [from, to]")
    start, end = (Time.read(value, entry.where("over")) for value in over)
    smooth = entry.values.get("smooth")
    frequency = entry.get("frequency", (str, int, float), None, "a formula, in 1/s")
    if take == "work" and frequency is None:
        raise entry.fail("take", "'work' needs a frequency, of which it is one cycle's")
    per = entry.get("per", str, None, ", ".join(PER))
    if per not in (None, *PER):
        raise entry.fail("per", f"is '{per}'; accepted: {', '.join(PER)}")
    measure = Measure(
        **common,
        unit=unit or _unit(key, name, take, per),
        names=frozenset(),
        table=key,
        column=name,
        over=(start, end),
        take=take,
        smooth=None if smooth is None else Time.read(smooth, entry.where("smooth")),
        per=per,
        length=entry.get("length", str, "displacement_actin", "a column of result"),
        frequency=None if frequency is None else Formula(str(frequency), entry.where("frequency")),
    )
    formulas = [time.formula for time in (start, end, measure.smooth) if time and time.formula]
    formulas += [measure.frequency] if measure.frequency else []
    for formula in formulas:
        formula.check(known)
    return replace(measure, names=frozenset().union(*(formula.names for formula in formulas)))


def _unit(table: str, column: str, take: str, per: str | None) -> str:
    """Of a measure, by that of its column; the time of a run is taken as s."""
    unit, _, each = BY_KEY[table].unit(column).partition(" per ")
    form = TAKES[take].unit
    unit = form.format("s" if unit == "time" else unit.replace("/time", "/s"))
    unit = f"1{unit}" if unit.startswith("/") else unit.strip()
    each = each if "{}" in form else ""
    return " per ".join(part for part in (unit, each, per) if part)


def _read_function(entry: Table, folder: Path) -> tuple[Path, str]:
    text = entry.get("function", str, "", '"file.py:name"')
    file, _, name = text.partition(":")
    path = folder / file
    if not name or not path.is_file():
        raise entry.fail("function", f'is "{text}"; accepted: "file.py:name", the file beside the plan')
    return path, name


_MODULES: dict[Path, Any] = {}


def _call(path: Path, name: str, where: str, run: Run, names: Names) -> float:
    with _LOCK:
        if path not in _MODULES:
            spec = importlib.util.spec_from_file_location(path.stem, path)
            assert spec and spec.loader
            module = importlib.util.module_from_spec(spec)
            spec.loader.exec_module(module)
            _MODULES[path] = module
        function: Callable[[Run, Mapping[str, Value]], float] | None
        function = getattr(_MODULES[path], name, None)
    if function is None:
        raise StudyError(f"{where}: {path.name} has no function '{name}'")
    return float(function(run, dict(names)))


def _heads_or_filaments(run: Run, per: str) -> float:
    if per == "filament":
        count = float(run.filaments)
    else:
        heads = run["head_states"].drop(columns="time", errors="ignore")
        count = float(heads.iloc[0].sum()) if len(heads) else 0.0
    if not count > 0:
        raise Refused(f"the number of {per}s isn't known")
    return count
