"""Curves laid through measures over what is varied, with intervals from resampled seeds."""

from collections.abc import Callable, Iterable
from dataclasses import dataclass

import numpy as np
import pandas as pd

from ..fits import fit_hill_hyperbola, fit_hill_pca
from .bootstrap import LEAST_SEEDS
from .names import short
from .toml_text import Table

RESAMPLES = 400
KEYS = ("curve", "x", "y", "by", "within")


@dataclass(frozen=True)
class FitPlan:
    """A fit of a plan: which curve, through which columns, for each value of `by`."""

    curve: str
    x: str
    y: str
    by: str | None = None
    within: tuple[float, float] | None = None


@dataclass(frozen=True)
class Fitted:
    """Fitted values by name, and the curve."""

    values: dict[str, float]
    curve: Callable[[np.ndarray], np.ndarray]


@dataclass(frozen=True)
class FitResult:
    """A curve through the means over seeds, with 95 % intervals by bootstrap over seeds.

    `low` and `high` are empty, and the band is NaN, with fewer than three seeds."""

    plan: FitPlan
    group: object  # the value of `by`
    fit: Fitted
    seeds: int
    low: dict[str, float]
    high: dict[str, float]
    x: np.ndarray
    band: np.ndarray  # lower and upper limits over x

    def label(self, before: str = "") -> str:
        """Which of the values of `by` it is of; empty if there is no `by`."""
        return "" if self.plan.by is None else f"{before}{short(self.plan.by)} = {self.group}"


def fit_line(x: np.ndarray, y: np.ndarray) -> Fitted:
    """`slope`, `height` at x = 0, and `zero`, the x at which the line meets y = 0."""
    slope, height = map(float, np.polyfit(x, y, 1))
    zero = -height / slope if slope else float("nan")
    return Fitted({"slope": slope, "height": height, "zero": zero}, lambda t: slope * t + height)


def fit_parabola(x: np.ndarray, y: np.ndarray) -> Fitted:
    """`optimum`, the x of the extreme, `height` there, and `curvature` c of c (x - optimum)^2."""
    best = np.polyfit(x, y, 2)
    if best[0] == 0:
        raise ValueError("the points lie on a line")
    optimum = float(-best[1] / (2 * best[0]))
    values = {"optimum": optimum, "height": float(np.polyval(best, optimum)), "curvature": float(best[0])}
    return Fitted(values, lambda t: np.polyval(best, t))


def fit_log_parabola(x: np.ndarray, y: np.ndarray) -> Fitted:
    """A parabola over log10(x), with its `optimum` in the unit of x."""
    if not (x > 0).all():
        raise ValueError("a logarithm needs x above 0")
    fitted = fit_parabola(np.log10(x), y)
    values = fitted.values | {"optimum": 10.0 ** fitted.values["optimum"]}
    return Fitted(values, lambda t: fitted.curve(np.log10(t)))


def fit_hill(pca: np.ndarray, force: np.ndarray) -> Fitted:
    """Hill's curve over pCa: `F0`, `pCa50`, `n`."""
    found = fit_hill_pca(pca, force)
    return Fitted(found.values, found.curve)


def fit_hyperbola(speed: np.ndarray, force: np.ndarray) -> Fitted:
    """Hill's hyperbola: `v0`, `a/F0`. Forces count relative to that at speed 0, if there is one, `F0`."""
    still = speed == 0.0
    isometric = float(force[still].mean()) if still.any() else 1.0
    found = fit_hill_hyperbola(speed, force / isometric)
    values = found.values | ({"F0": isometric} if still.any() else {})
    return Fitted(values, lambda t: isometric * found.curve(t))


@dataclass(frozen=True)
class Curve:
    """A curve by name: what fits it, and how many points it needs."""

    fit: Callable[[np.ndarray, np.ndarray], Fitted]
    points: int


CURVES = {
    "hill_pca": Curve(fit_hill, 4),
    "hill_hyperbola": Curve(fit_hyperbola, 3),
    "line": Curve(fit_line, 3),
    "parabola": Curve(fit_parabola, 4),
    "log_parabola": Curve(fit_log_parabola, 4),
}


def read_fits(table: Table, columns: Iterable[str]) -> dict[str, FitPlan]:
    """The [fit] table of a plan; `columns` are those of runs.csv."""
    columns = tuple(columns)
    fits = {}
    for name, entry in table.tables().items():
        entry.allow(KEYS)
        curve = entry.get("curve", str, "", ", ".join(CURVES))
        if curve not in CURVES:
            raise entry.fail("curve", f"is '{curve}'; accepted: {', '.join(CURVES)}")
        x, y, by = (entry.get(key, str, None, ", ".join(columns)) for key in ("x", "y", "by"))
        for key, column in (("x", x), ("y", y), ("by", by)):
            if column not in columns and not (key == "by" and by is None):
                raise entry.fail(key, f"is '{column}'; accepted: {', '.join(columns)}")
        within = entry.get("within", list, None, "[lowest x, highest x]")
        if within is not None and (len(within) != 2 or not within[0] < within[1]):
            raise entry.fail("within", f"is {within}; accepted: [lowest x, highest x]")
        fits[name] = FitPlan(curve, x, y, by, None if within is None else (within[0], within[1]))
    return fits


def fit(plan: FitPlan, runs: pd.DataFrame) -> tuple[list[FitResult], list[str]]:
    """The fits through a table of runs, one for each value of `by`, and what could not be fitted.

    `runs` has the columns of the plan, `seed` and `condition`."""
    results, problems = [], []
    groups = [(None, runs)] if plan.by is None else list(runs.groupby(plan.by, sort=True))
    for group, rows in groups:
        try:
            results.append(_fit_group(plan, group, rows))
        except (ValueError, np.linalg.LinAlgError) as error:
            where = "" if plan.by is None else f" at {plan.by} = {group}"
            problems.append(f"{plan.curve} through {plan.y} over {plan.x}{where}: {error}")
    return results, problems


def _fit_group(plan: FitPlan, group: object, rows: pd.DataFrame) -> FitResult:
    x, y = (rows.pivot(index="condition", columns="seed", values=name) for name in (plan.x, plan.y))
    x, y = x.astype(float).to_numpy(), y.astype(float).to_numpy()
    best = _fit_means(plan, x, y)
    means = _means(x)
    inside = means[np.isfinite(means)]
    low, high = plan.within or (inside.min(), inside.max())
    fine = np.geomspace(low, high, 100) if plan.curve == "log_parabola" else np.linspace(low, high, 100)
    seeds = y.shape[1]
    again = _resampled(plan, x, y) if seeds >= LEAST_SEEDS else []
    if len(again) < RESAMPLES / 2:
        return FitResult(plan, group, best, seeds, {}, {}, fine, np.full((2, len(fine)), np.nan))
    limits = {name: np.percentile([f.values[name] for f in again], (2.5, 97.5)) for name in best.values}
    band = np.percentile([f.curve(fine) for f in again], (2.5, 97.5), axis=0)
    lows, highs = ({name: float(pair[end]) for name, pair in limits.items()} for end in (0, 1))
    return FitResult(plan, group, best, seeds, lows, highs, fine, band)


def _fit_means(plan: FitPlan, x: np.ndarray, y: np.ndarray) -> Fitted:
    known = np.isfinite(x) & np.isfinite(y)
    mean_x, mean_y = (_means(np.where(known, values, np.nan)) for values in (x, y))
    used = np.isfinite(mean_x) & np.isfinite(mean_y)
    if plan.within:
        used &= (mean_x >= plan.within[0]) & (mean_x <= plan.within[1])
    points, least = int(used.sum()), CURVES[plan.curve].points
    if points < least:
        raise ValueError(f"{points} points are too few; at least {least} are needed")
    return CURVES[plan.curve].fit(mean_x[used], mean_y[used])


def _means(values: np.ndarray) -> np.ndarray:
    """Over seeds; NaN where no seed has a value."""
    known = np.isfinite(values)
    count = known.sum(axis=1)
    total = np.where(known, values, 0.0).sum(axis=1)
    return np.where(count > 0, total / np.maximum(count, 1), np.nan)


def _resampled(plan: FitPlan, x: np.ndarray, y: np.ndarray) -> list[Fitted]:
    """Fits with seeds drawn anew, a seed always with all of its runs."""
    chance = np.random.default_rng(1)
    found = []
    for _ in range(RESAMPLES):
        drawn = chance.integers(0, y.shape[1], y.shape[1])
        try:
            found.append(_fit_means(plan, x[:, drawn], y[:, drawn]))
        except (ValueError, np.linalg.LinAlgError):
            continue
    return found
