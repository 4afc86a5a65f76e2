"""Figures of a study: measures over what is varied, and courses over time."""

from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from pathlib import Path
from typing import TYPE_CHECKING, Any

import numpy as np
import pandas as pd

from ..style import INK, LIGHT, STYLE, as_text
from ..tables import BY_KEY
from .bootstrap import LEAST_SEEDS, interval
from .measures import Time
from .names import short
from .toml_text import Table

if TYPE_CHECKING:
    from .curves import FitResult
    from .plan import Plan

WIDTH, HEIGHT = 3.4, 2.6  # inches of a panel: one column of a journal
DPI = 300
MOST_LETTERS = 32  # of an axis
MARKERS = "osD^vP<>X"
KEYS = ("x", "y", "by", "course", "against", "over", "only", "log", "reverse", "title")


@dataclass(frozen=True)
class Panel:
    """Measures over a column of runs.csv, or where `course` is given a course of the runs."""

    x: str | None = None
    y: tuple[str, ...] = ()
    by: str | None = None
    course: str | None = None
    against: str | None = None  # another course; time if there is none
    over: tuple[Time, Time] | None = None
    only: dict[str, list[Any]] = field(default_factory=dict)
    log: bool = False
    reverse: bool = False
    title: str = ""


@dataclass(frozen=True)
class Figure:
    """Panels side by side."""

    panels: tuple[Panel, ...]


@dataclass(frozen=True)
class CourseLine:
    """A course of one condition, the mean over its seeds."""

    label: str
    x: np.ndarray
    y: np.ndarray


def read_figures(table: Table, columns: Sequence[str]) -> dict[str, Figure]:
    """The [figure] table of a plan: each entry a table, or a list of them."""
    figures = {}
    for name, value in table.values.items():
        listed = value if isinstance(value, list) else [value]
        if not listed or not all(isinstance(item, dict) for item in listed):
            raise table.fail(name, "is no table { ... }, nor a list of them")
        entries = [table.inner(name, item) for item in listed]
        figures[name] = Figure(tuple(_read_panel(entry, columns) for entry in entries))
    return figures


def _read_panel(entry: Table, columns: Sequence[str]) -> Panel:
    entry.allow(KEYS)
    y = entry.get("y", (str, list), [], "columns")
    panel = Panel(
        x=entry.get("x", str, None, "a column"),
        y=tuple([y] if isinstance(y, str) else y),
        by=entry.get("by", str, None, "a column"),
        course=entry.get("course", str, None, "a course"),
        against=entry.get("against", str, None, "a course"),
        over=_read_over(entry),
        only=_read_only(entry),
        log=entry.get("log", bool, False, "true, false"),
        reverse=entry.get("reverse", bool, False, "true, false"),
        title=entry.get("title", str, "", "a text"),
    )
    if (panel.course is None) == (panel.x is None or not panel.y):
        raise entry.fail("", "needs either x and y, or course")
    for key, names in (("x", (panel.x,)), ("y", panel.y), ("by", (panel.by,)), ("only", panel.only)):
        for name in names:
            if name is not None and name not in columns:
                raise entry.fail(key, f"is '{name}'; accepted: {', '.join(columns)}")
    for key, name in (("course", panel.course), ("against", panel.against)):
        if name and (name.rpartition(".")[0] or "result") not in BY_KEY:
            raise entry.fail(key, f"is '{name}'; accepted: a column of result, or table.column")
    return panel


def _read_over(entry: Table) -> tuple[Time, Time] | None:
    over = entry.get("over", list, None, "[from, to]")
    if over is None:
        return None
    if len(over) != 2:
        raise entry.fail("over", f"is {over}; accepted: [from, to]")
    start, end = (Time.read(value, entry.where("over")) for value in over)
    return start, end


def _read_only(entry: Table) -> dict[str, list[Any]]:
    only = entry.get("only", dict, {}, "a table of columns and values")
    return {name: value if isinstance(value, list) else [value] for name, value in only.items()}


def usual_figures(plan: "Plan") -> dict[str, Figure]:
    """What is drawn without a [figure] table: every fit, and every measure that has none."""
    figures = {}
    for name, fit in plan.fits.items():
        reverse = fit.curve == "hill_pca"
        figures[name] = Figure((Panel(x=fit.x, y=(fit.y,), by=fit.by, reverse=reverse),))
    fitted = {fit.y for fit in plan.fits.values()}
    varied = [name for name, values in plan.vary.items() if not isinstance(values[0], str)]
    others = [name for name in plan.vary if name not in varied[:1]]
    for name in plan.measures:
        if name not in fitted and varied:
            by = others[0] if others and not plan.zipped else None
            figures[name] = Figure((Panel(x=varied[0], y=(name,), by=by),))
    return figures


@dataclass(frozen=True)
class Drawn:
    """What figures are made of."""

    plan: "Plan"
    runs: pd.DataFrame
    fits: "dict[str, list[FitResult]]"
    lines: Callable[[Panel], list[CourseLine]]


def drawer(panel: Panel, data: Drawn) -> Callable[[Any], None]:
    """Draws the panel on axes."""

    def draw(axes: Any) -> None:
        if panel.course:
            _draw_courses(axes, panel, data)
        else:
            _draw_measures(axes, panel, data)
        if panel.log:
            make_logarithmic(axes)
        if panel.reverse:
            axes.invert_xaxis()
        if panel.title:
            axes.set_title(as_text(panel.title), loc="left")
        handles, labels = axes.get_legend_handles_labels()
        if handles:
            axes.legend(handles, map(as_text, labels))

    return draw


def make_logarithmic(axes: Any) -> None:
    """With numbers between the powers of ten, of which a narrow range may hold only one."""
    from matplotlib.ticker import LogFormatter

    axes.set_xscale("log")
    axes.xaxis.set_major_formatter(LogFormatter())
    axes.xaxis.set_minor_formatter(LogFormatter(minor_thresholds=(2, 0.5)))


def _draw_measures(axes: Any, panel: Panel, data: Drawn) -> None:
    assert panel.x
    rows = chosen(panel, data.runs[data.runs["status"] == "done"])
    groups = [("", rows)] if panel.by is None else list(rows.groupby(panel.by, sort=True))
    series = [(name, label, group) for name in panel.y for label, group in groups]
    for place, (name, label, group) in enumerate(series):
        colour, marker = LIGHT[place % len(LIGHT)], MARKERS[place % len(MARKERS)]
        words = [name] if len(panel.y) > 1 else []
        words += [] if panel.by is None else [f"{short(panel.by)} = {label}{_unit(data.plan, panel.by)}"]
        fitted = [r for r in _results(panel, name, data) if panel.by is None or r.group == label]
        _draw_points(axes, panel.x, name, group, colour, marker, ", ".join(words), joined=not fitted)
        for result in fitted:
            told = _fitted_values(result) if len(series) == 1 else None
            axes.plot(result.x, result.fit.curve(result.x), color=colour, label=told)
            axes.fill_between(result.x, *result.band, color=colour, alpha=0.18, linewidth=0)
    axes.set_xlabel(as_text(_label(data.plan, panel.x)))
    label = ", ".join(short(n) for n in panel.y) + _unit(data.plan, panel.y[0], " [{}]")
    axes.set_ylabel(as_text(_broken(label)))
    low, high = axes.get_ylim()
    if low < 0 < high:
        axes.axhline(0.0, color=INK, linewidth=0.5)


def _fitted_values(result: "FitResult") -> str:
    return "\n".join(f"{name} = {value:.4g}" for name, value in result.fit.values.items())


def _results(panel: Panel, y: str, data: Drawn) -> "list[FitResult]":
    found = [r for results in data.fits.values() for r in results]
    return [r for r in found if (r.plan.x, r.plan.y, r.plan.by) == (panel.x, y, panel.by)]


def _draw_points(
    axes: Any, x: str, y: str, rows: pd.DataFrame, colour: str, marker: str, label: str, joined: bool
) -> None:
    """Means over seeds, with their 95 % intervals where there are seeds enough."""
    points = []
    for _, group in rows.groupby("condition", sort=True):
        known = group.dropna(subset=[x, y])
        if len(known):
            low, high = interval(known[y].to_numpy(dtype=float))
            points.append((_mean(known[x]), known[y].mean(), low, high))
    points.sort(key=lambda point: point[0])
    if not points:
        return
    xs, ys, low, high = (list(column) for column in zip(*points))
    line = "-" if joined and not isinstance(xs[0], str) else ""
    axes.plot(xs, ys, marker + line, color=colour, markersize=3.5, linewidth=0.8, label=label or None)
    if not np.isnan(low).any():
        axes.vlines(xs, low, high, color=colour, linewidth=0.9)


def _mean(values: pd.Series) -> Any:
    return values.iloc[0] if values.dtype == object else float(values.mean())


def _draw_courses(axes: Any, panel: Panel, data: Drawn) -> None:
    for place, line in enumerate(data.lines(panel)):
        axes.plot(line.x, line.y, color=LIGHT[place % len(LIGHT)], linewidth=0.8, label=line.label or None)
    axes.set_xlabel(_course_label(panel.against) if panel.against else "Time [ms]")
    axes.set_ylabel(_broken(_course_label(panel.course or "")))


def _broken(label: str) -> str:
    """In two lines where one would be longer than the axis."""
    return label.replace(" [", "\n[") if len(label) > MOST_LETTERS else label


def _course_label(name: str) -> str:
    table, _, column = name.rpartition(".")
    unit = BY_KEY[table or "result"].unit(column)
    return f"{column} [{unit}]" if unit else column


def chosen(panel: Panel, rows: pd.DataFrame) -> pd.DataFrame:
    """The rows that a panel shows."""
    for name, values in panel.only.items():
        rows = rows[rows[name].isin(values)]
    return rows


def _label(plan: "Plan", name: str) -> str:
    return short(name) + _unit(plan, name, " [{}]")


def _unit(plan: "Plan", name: str, form: str = " {}") -> str:
    unit = plan.unit(name)
    return form.format(unit) if unit else ""


def write_figure(figure: Figure, data: Drawn, path: Path) -> None:
    """The figure as PNG and as PDF, at the size at which it is printed."""
    import matplotlib.pyplot as plt

    style = STYLE | {"font.size": 8, "axes.titlesize": 8, "legend.fontsize": 7, "pdf.fonttype": 42,
                     "figure.facecolor": "white", "savefig.facecolor": "white", "axes.grid": False}  # fmt: skip
    count = len(figure.panels)
    with plt.rc_context(style):
        drawn, grid = plt.subplots(1, count, figsize=(WIDTH * count, HEIGHT), layout="constrained", squeeze=False)
        for axes, panel in zip(grid.flat, figure.panels):
            drawer(panel, data)(axes)
        seeds = len(data.plan.seeds)
        if seeds > 1:
            note = f"means of n = {seeds} seeds" + ("; bars and bands: 95 %" if seeds >= LEAST_SEEDS else "")
            drawn.supxlabel(note, fontsize=6, x=0.99, ha="right")
        drawn.savefig(path.with_suffix(".png"), dpi=DPI)
        drawn.savefig(path.with_suffix(".pdf"), metadata={"CreationDate": None})
        plt.close(drawn)
