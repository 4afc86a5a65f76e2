"""Targets: measured data, and which value of which runs each of them stands against."""

import math
import re
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
from scipy.ndimage import uniform_filter1d

from ..study.courses import course
from ..study.errors import Refused
from ..study.measures import UNITS
from ..study.plan import Plan
from ..study.store import Store
from ..study.toml_text import Table
from ..tables import BY_KEY

KEYS = ("data", "value", "x", "time", "measure", "column", "at", "se", "weight", "smooth")
_HEADING = re.compile(r"^(.*?)\s*\[(.*)\]$")


@dataclass(frozen=True)
class Target:
    """Data of a curve (a measure over a varied value) or of a course (a column over time [s])."""

    name: str
    x_name: str
    y_name: str
    unit: str
    x: np.ndarray
    y: np.ndarray
    sigma: np.ndarray  # standard errors; without them what makes weights
    has_errors: bool
    conditions: np.ndarray  # of the plan, for each datum
    column: str | None = None  # of a course
    smooth: float = 0.0  # s

    def of(self, runs: pd.DataFrame, store: Store) -> np.ndarray:
        """The model's values for one candidate and seed, from its rows of the table of runs in order of conditions.

        Refused says which of them there is none of."""
        if self.column is None:
            values = runs[self.y_name].to_numpy(dtype=float)[self.conditions]
            if np.isnan(values).any():
                raise Refused(runs["message"].iloc[int(self.conditions[np.isnan(values)][0])])
            return values
        time, values = self.course(store, runs["run"].iloc[int(self.conditions[0])])
        if self.x[0] < 0 or self.x[-1] > time[-1] + 1e-9:
            place = self.x[0] if self.x[0] < 0 else self.x[-1]
            raise Refused(f"target {self.name}: its time {place:g} s lies outside the run, from 0 to {time[-1]:g} s")
        return np.interp(self.x, time, values)

    def course(self, store: Store, run: str) -> tuple[np.ndarray, np.ndarray]:
        """Time [s] and column of a run."""
        assert self.column
        frame = course(store.folder(run), ["time", self.column]).dropna()
        if len(frame) < 2:
            raise Refused(f"target {self.name}: the run has no column '{self.column}'")
        time, values = frame["time"].to_numpy(), frame[self.column].to_numpy()
        width = max(1, round(self.smooth / float(np.median(np.diff(time))))) if self.smooth else 1
        return time, uniform_filter1d(values, width, mode="nearest")


def read_targets(table: Table, plan: Plan) -> tuple[Target, ...]:
    """The [target] table of a plan, and the files that it names."""
    targets = tuple(_Reader(name, entry, plan).target() for name, entry in table.tables().items())
    if not targets:
        raise table.fail("", "is empty or missing; accepted: at least one target with its data")
    if len({target.has_errors for target in targets}) > 1:
        without = next(target.name for target in targets if not target.has_errors)
        raise table.fail(without, "has no se, though another target has; accepted: se for all, or for none")
    return targets


class _Reader:
    def __init__(self, name: str, entry: Table, plan: Plan) -> None:
        self.name, self.entry, self.plan = name, entry, plan
        entry.allow(KEYS)
        self.frame, self.units = self._read_data()

    def _read_data(self) -> tuple[pd.DataFrame, dict[str, str]]:
        file = self.entry.get("data", str, "", "a CSV file beside the plan")
        path = self.plan.path.parent / file
        if not file or not path.is_file():
            raise self.entry.fail("data", f"{path} is no file")
        try:
            frame = pd.read_csv(path, comment="#", skipinitialspace=True)
        except (ValueError, UnicodeDecodeError) as error:
            raise self.entry.fail("data", f"{file}: {str(error).strip()}") from error
        found = {str(name).strip(): _HEADING.match(str(name).strip()) for name in frame.columns}
        frame.columns = pd.Index([match[1] if match else name for name, match in found.items()])
        units = {match[1] if match else name: match[2] if match else "" for name, match in found.items()}
        return frame, units

    def target(self) -> Target:
        is_course = "column" in self.entry.values
        if is_course == ("measure" in self.entry.values):
            raise self.entry.fail("", "needs either measure (a curve over what is varied) or column (a course over time)")
        common = self._course() if is_course else self._curve()
        return Target(name=self.name, **common)

    def _curve(self) -> dict[str, Any]:
        plan = self.plan
        measure = self._name("measure", list(plan.measures))
        x_name = self._name("x", list(plan.vary))
        heading = x_name if x_name in self.frame else x_name.rpartition("/")[2]
        x = self._numbers("x", heading)
        self._check_unit(heading, plan.unit(x_name), x_name)
        conditions = self._conditions()
        known = [plan.varied(int(condition))[x_name] for condition in conditions]
        if len(set(known)) < len(known):
            accepted = "the other varied values, such as at = { name = 1 }"
            raise self.entry.fail("at", f"several runs have the same {x_name}; accepted: {accepted}")
        y = self._y(plan.unit(measure), measure)
        return y | {"x_name": x_name, "y_name": measure, "x": x, "conditions": self._matched(x, x_name, known, conditions)}

    def _matched(self, x: np.ndarray, name: str, known: list[Any], conditions: list[int]) -> np.ndarray:
        found = []
        for row, value in enumerate(x):
            near = [condition for k, condition in zip(known, conditions) if _is_same(k, value)]
            if not near:
                told = f"row {row + 1} of the data has {name} = {value:g}, which isn't varied"
                raise self.entry.fail("x", f"{told}; accepted: {known}")
            found.append(near[0])
        return np.array(found)

    def _course(self) -> dict[str, Any]:
        column = self.entry.get("column", str, "", "a column of result, or table.column")
        key, _, name = column.rpartition(".")
        if (key or "result") not in BY_KEY:
            raise self.entry.fail("column", f"there is no table '{key}'; there are: {', '.join(BY_KEY)}")
        if self.plan.keep == "measures":
            raise self.entry.fail("column", "a course needs the runs' results; accepted: keep = \"all\" or \"results\"")
        heading = self.entry.get("time", str, "time", "a column of the data")
        time = self._numbers("time", heading)
        unit = self.units[heading]
        if unit not in UNITS:
            told = f"'{heading}' of the data has the unit '{unit}'"
            raise self.entry.fail("time", f"{told}; accepted in its heading: [s], [ms], [us]")
        if not (np.diff(time) > 0).all():
            raise self.entry.fail("time", "doesn't ascend in the data")
        conditions = self._conditions()
        if len(conditions) != 1:
            raise self.entry.fail("at", f"leaves {len(conditions)} conditions; accepted: varied values that leave one")
        y = self._y(BY_KEY[key or "result"].unit(name), column)
        smooth = self._smooth()
        return y | {"x_name": "time", "y_name": column, "x": time * UNITS[unit], "column": column, "smooth": smooth,
                    "conditions": np.full(len(time), conditions[0])}  # fmt: skip

    def _smooth(self) -> float:
        text = self.entry.get("smooth", str, "0 s", 'a time such as "5 ms"')
        found = re.fullmatch(r"([\d.]+)\s*(s|ms|us)", text)
        if not found:
            raise self.entry.fail("smooth", f"is '{text}'; accepted: a time such as \"5 ms\"")
        return float(found[1]) * UNITS[found[2]]

    def _conditions(self) -> list[int]:
        at = self.entry.get("at", dict, {}, "a table of varied values")
        for name, value in at.items():
            if name not in self.plan.vary or value not in self.plan.vary[name]:
                known = {name: list(values) for name, values in self.plan.vary.items()}
                raise self.entry.fail("at", f"has {name} = {value!r}; varied: {known}")
        everything = range(self.plan.combinations)
        return [c for c in everything if all(self.plan.varied(c)[name] == value for name, value in at.items())]

    def _y(self, unit: str, name: str) -> dict[str, Any]:
        heading = self.entry.get("value", str, name if name in self.frame else name.rpartition(".")[2], "a column of the data")
        y = self._numbers("value", heading)
        self._check_unit(heading, unit, name)
        given = [key for key in ("se", "weight") if key in self.entry.values]
        if len(given) > 1:
            raise self.entry.fail("weight", "and se are both given; accepted: one")
        spread = float(np.ptp(y)) or float(np.abs(y).max()) or 1.0
        if "se" in given:
            sigma = self._errors("se", len(y))
        else:
            sigma = spread / np.sqrt(self._errors("weight", len(y)) if given else np.ones(len(y)))
        return {"unit": unit, "y": y, "sigma": sigma, "has_errors": "se" in given}

    def _errors(self, key: str, count: int) -> np.ndarray:
        value = self.entry.get(key, (int, float, str), 0.0, "a number, or a column of the data")
        values = self._numbers(key, value) if isinstance(value, str) else np.full(count, float(value))
        if not (values > 0).all() or not np.isfinite(values).all():
            raise self.entry.fail(key, f"has {values[~(values > 0)][:1]}; accepted: above 0")
        return values

    def _numbers(self, key: str, heading: str) -> np.ndarray:
        if heading not in self.frame:
            raise self.entry.fail(key, f"'{heading}' is no column of the data; there are: {', '.join(self.frame.columns)}")
        values = pd.to_numeric(self.frame[heading], errors="coerce").to_numpy(dtype=float)
        if not len(values) or not np.isfinite(values).all():
            row = int(np.flatnonzero(~np.isfinite(values))[0]) + 1 if len(values) else 1
            raise self.entry.fail(key, f"row {row} of column '{heading}' of the data holds no number")
        return values

    def _check_unit(self, heading: str, unit: str, name: str) -> None:
        own = self.units[heading]
        if own != unit:
            told = f"'{heading}' of the data has the unit '{own}', '{name}' of the plan '{unit}'"
            accepted = f"the same, in the data's heading as '{heading} [{unit}]' and in the plan's unit"
            raise self.entry.fail("data", f"{told}; accepted: {accepted}")

    def _name(self, key: str, known: list[str]) -> str:
        name: str = self.entry.get(key, str, "", ", ".join(known))
        if name not in known:
            raise self.entry.fail(key, f"is '{name}'; accepted: {', '.join(known)}")
        return name


def _is_same(known: object, value: float) -> bool:
    return isinstance(known, (int, float)) and math.isclose(known, value, rel_tol=1e-9, abs_tol=1e-12)
