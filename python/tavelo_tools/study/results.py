"""Tables of a study: a row per run, a row per condition and measure."""

from collections.abc import Callable, Iterator
from typing import Any

import numpy as np
import pandas as pd

from .bootstrap import interval
from .curves import FitResult
from .names import short
from .plan import Plan
from .store import Record
from .work import taken

MOST_TOLD = 60  # conditions
SUMMARY = ["measure", "unit", "n", "mean", "sd", "low", "high"]


def run_rows(plan: Plan, records: Callable[[int], tuple[str, Record | None]]) -> pd.DataFrame:
    """A row per run: its name, values, seed, measures, status, seconds and message."""
    return pd.DataFrame(_rows(plan, records))


def _rows(plan: Plan, records: Callable[[int], tuple[str, Record | None]]) -> Iterator[dict[str, Any]]:
    for number in range(plan.runs):
        name, record = records(number)
        condition, seed = plan.place(number)
        values = plan.values(condition)
        status = record["status"] if record else "missing"
        measures = dict.fromkeys(plan.measures, float("nan"))
        messages = [record["message"]] if record and record["message"] else []
        if record and status == "done":
            for entry in taken(plan, values, None, record["measures"]).values():
                measures[entry["name"]] = float("nan") if entry["value"] is None else entry["value"]
                messages += [entry["message"]] if entry["message"] else []
        yield {
            "run": name,
            "condition": condition,
            **values,
            "seed": seed,
            **measures,
            "status": status,
            "seconds": record["seconds"] if record else float("nan"),
            "message": "; ".join(messages),
            "defaults": " ".join(record.get("defaults", [])) if record else "",
        }


def summary(plan: Plan, runs: pd.DataFrame) -> pd.DataFrame:
    """Mean, SD, n and 95 % interval of the mean over seeds, of each measure in each condition.

    The interval is the percentile bootstrap over seeds; with fewer than three there is none."""
    rows = []
    for _, group in runs.groupby("condition", sort=True):
        values = {name: group[name].iloc[0] for name in (*plan.vary, *plan.derive)}
        for name in plan.measures:
            known = group[name].dropna().to_numpy(dtype=float)
            rows.append({**values, "measure": name, "unit": plan.unit(name), **_statistics(known)})
    return pd.DataFrame(rows, columns=[*plan.vary, *plan.derive, *SUMMARY])


def _statistics(values: np.ndarray) -> dict[str, float]:
    low, high = interval(values)
    return {
        "n": len(values),
        "mean": float(values.mean()) if len(values) else float("nan"),
        "sd": float(values.std(ddof=1)) if len(values) > 1 else float("nan"),
        "low": low,
        "high": high,
    }


def fit_rows(fits: dict[str, list[FitResult]]) -> pd.DataFrame:
    """A row per fitted value."""
    rows = []
    for name, results in fits.items():
        for result in results:
            for parameter, value in result.fit.values.items():
                limits = (result.low.get(parameter), result.high.get(parameter))
                curve, group, seeds = result.plan.curve, result.label(), result.seeds
                rows.append((name, curve, group, parameter, value, *limits, seeds))
    return pd.DataFrame(rows, columns=["fit", "curve", "group", "parameter", "value", "low", "high", "seeds"])


def told(plan: Plan, runs: pd.DataFrame, fits: dict[str, list[FitResult]]) -> str:
    """Means and SD of the measures by condition, and the fits, for a terminal."""
    done = runs[runs["status"] == "done"]
    names = [name for name, values in plan.vary.items() if len(values) > 1]
    rows = []
    for _, group in done.groupby("condition", sort=True):
        cells = {short(name): group[name].iloc[0] for name in names}
        rows.append(cells | {name: _cell(group[name].dropna()) for name in plan.measures} | {"n": len(group)})
    lines = [pd.DataFrame(rows[:MOST_TOLD]).to_string(index=False)] if rows and plan.measures else []
    if len(rows) > MOST_TOLD:
        lines.append(f"and {len(rows) - MOST_TOLD} more conditions; summary.csv has all")
    for name, results in fits.items():
        for result in results:
            values = ", ".join(_fitted(result, parameter) for parameter in result.fit.values)
            lines.append(f"{name}{result.label(' at ')}: {values}")
    return "\n".join(lines)


def _cell(values: pd.Series) -> str:
    """Mean and SD."""
    if not len(values):
        return ""
    return f"{values.mean():.4g}" + (f" \u00b1 {values.std():.2g}" if len(values) > 1 else "")


def _fitted(result: FitResult, parameter: str) -> str:
    value = f"{parameter} = {result.fit.values[parameter]:.4g}"
    if parameter not in result.low:
        return value
    return f"{value} ({result.low[parameter]:.4g} to {result.high[parameter]:.4g})"
