"""Figures of a fit: model over data, residuals, the search's course, profiles."""

from collections.abc import Iterator
from functools import partial
from typing import Any

import numpy as np
from optuna.trial import TrialState

from ..plots import Plot
from ..study.drawings import make_logarithmic
from ..study.names import short
from ..style import INK, LIGHT
from .fit import Estimate, ParameterFitResult
from .targets import Target

MOST_LETTERS = 32


def all_plots(result: ParameterFitResult) -> list[Plot]:
    """In the order of the page."""
    found = []
    for target, part in parts(result):
        of = partial(_draw_target, result, target, part)
        found.append(Plot("data", target.name, "Data, with their errors, and the fitted model", of))
        of = partial(_draw_residuals, result, target, part)
        found.append(Plot("residuals", f"{target.name}: residuals", "Data minus model; bars: errors of both together", of))
    about = "Misfit of each candidate, and the least so far; more seeds later"
    found.append(Plot("search", "Search", about, partial(_draw_search, result)))
    about = "Misfit above its least value, all others at their best; where it passes the line the 95 % interval ends"
    for estimate in result.estimates:
        found.append(Plot("profile", f"Profile of {short(estimate.free.name)}", about, partial(_draw_profile, result, estimate)))
    return found


def parts(result: ParameterFitResult) -> Iterator[tuple[Target, slice]]:
    """Each target, and where its data stand among all."""
    place = 0
    for target in result.plan.targets:
        yield target, slice(place, place + len(target.y))
        place += len(target.y)


def _draw_target(result: ParameterFitResult, target: Target, part: slice, axes: Any) -> None:
    factor = 1000.0 if target.column else 1.0
    bars = target.sigma if target.has_errors else None
    axes.errorbar(factor * target.x, target.y, bars, fmt="o", color=LIGHT[0], markersize=3.5, linewidth=0.9, label="data")
    x, mean, half = _model(result, target, part)
    axes.plot(factor * x, mean, color=LIGHT[1], marker=None if target.column else "s", markersize=3, label="model")
    axes.fill_between(factor * x, mean - half, mean + half, color=LIGHT[1], alpha=0.2, linewidth=0)
    _label(result, target, axes, target.y_name)
    axes.legend()


def _model(result: ParameterFitResult, target: Target, part: slice) -> tuple[np.ndarray, np.ndarray, np.ndarray]:
    """Mean over the seeds and twice its standard error; of a course all of its times."""
    if target.column is None:
        order = np.argsort(target.x)
        half = 2.0 * np.sqrt(result.noise[part])
        return target.x[order], result.final.mean[part][order], half[order]
    own = int(target.conditions[0])
    runs = result.final.runs[own :: result.plan.study.combinations]
    courses = [target.course(result.store, run) for run in runs]
    least = min(len(time) for time, _ in courses)
    values = np.array([values[:least] for _, values in courses])
    half = 2.0 * values.std(axis=0, ddof=1) / np.sqrt(len(values)) if len(values) > 1 else np.zeros(least)
    return courses[0][0][:least], values.mean(axis=0), half


def _label(result: ParameterFitResult, target: Target, axes: Any, name: str) -> None:
    x_unit = "ms" if target.column else result.plan.study.unit(target.x_name)
    axes.set_xlabel(short(target.x_name) + (f" [{x_unit}]" if x_unit else ""))
    text = f"{name} [{target.unit}]" if target.unit else name
    axes.set_ylabel(text.replace(" [", "\n[") if len(text) > MOST_LETTERS else text)


def _draw_residuals(result: ParameterFitResult, target: Target, part: slice, axes: Any) -> None:
    factor = 1000.0 if target.column else 1.0
    rest = target.y - result.final.mean[part]
    bars = np.sqrt(target.sigma**2 * target.has_errors + result.noise[part])
    axes.errorbar(factor * target.x, rest, bars, fmt="o", color=LIGHT[0], markersize=3.5, linewidth=0.9)
    axes.axhline(0.0, color=INK, linewidth=0.5)
    _label(result, target, axes, "data - model")


def _draw_search(result: ParameterFitResult, axes: Any) -> None:
    done = [trial for trial in result.trials if trial.state == TrialState.COMPLETE]
    numbers, misfits = [t.number + 1 for t in done], [t.value for t in done]
    for place, seeds in enumerate(sorted({trial.user_attrs["seeds"] for trial in done})):
        chosen = [n for n, trial in enumerate(done) if trial.user_attrs["seeds"] == seeds]
        label = f"{seeds} seed" + ("s" if seeds > 1 else "")
        axes.plot([numbers[n] for n in chosen], [misfits[n] for n in chosen], "o", color=LIGHT[place], markersize=3, label=label)
    axes.step(numbers, np.minimum.accumulate(misfits), where="post", color=INK, linewidth=0.7)
    if min(misfits) > 0:
        axes.set_yscale("log")
    axes.set_xlabel("candidate")
    axes.set_ylabel("misfit")
    axes.legend()


def _draw_profile(result: ParameterFitResult, estimate: Estimate, axes: Any) -> None:
    free, profile = estimate.free, estimate.profile
    axes.plot([free.value(u) for u in profile.x], profile.rise, color=LIGHT[0])
    axes.axhline(profile.threshold, color=INK, linewidth=0.7, linestyle="--")
    axes.axvline(estimate.value, color=LIGHT[1], linewidth=0.8)
    if free.log:
        make_logarithmic(axes)
    unit = result.plan.study.unit(free.name)
    axes.set_xlabel(short(free.name) + (f" [{unit}]" if unit else ""))
    axes.set_ylabel("misfit above the least")


