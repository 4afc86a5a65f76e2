"""The plots of one run, or of several laid over each other."""

from collections.abc import Callable, Sequence
from dataclasses import dataclass
from typing import TypeVar

import numpy as np
import pandas as pd
from matplotlib.axes import Axes
from scipy.special import expit, logit
from scipy.stats import t as student

from .downsample import downsample, downsample_band
from .groups import Group
from .loops import cycles, draw_loops, settled, work_of
from .quantities import QUANTITIES, Curve, Quantity
from .read import Run
from .style import INK, LIGHT, legend_above

MOST_SNAPSHOTS = 6  # that are drawn as lines; more become a map
IN_MS_UP_TO = 1.0  # length of a run whose axis has milliseconds
IN_A_PLOT = len(LIGHT)  # conditions that a plot can tell apart; more become several plots
LEAST_FOR_BAND = 3  # runs; of two the runs themselves are drawn

Item = TypeVar("Item")


@dataclass(frozen=True)
class Plot:
    """One plot: what a page says about it, and how to draw it."""

    key: str
    title: str
    about: str
    draw: Callable[[Axes], None]


def plots_of_run(run: Run) -> list[Plot]:
    """All plots that the outputs of a run allow."""
    plots = [_course_plot(quantity, curves, run) for quantity, curves in _courses(run)]
    return plots + _loop_plots(run) + _snapshot_plots(run) + _site_plots(run)


def plots_of_groups(groups: Sequence[Group]) -> list[Plot]:
    """The same over several runs; a quantity of several lines becomes a plot for each, and more
    conditions than a plot can tell apart become several plots on one scale."""
    plots = []
    for quantity in QUANTITIES:
        of_groups = [[(run, quantity.curves(run)) for run in group.runs] for group in groups]
        labels = dict.fromkeys(c.label for runs in of_groups for _, cs in runs for c in cs)
        for label in labels:
            plots += _compared_plots(quantity, label, groups, of_groups)
    return plots + _compared_snapshots(groups)


def _parts(items: Sequence[Item]) -> list[tuple[str, list[Item]]]:
    """As many conditions as fit a plot at a time, with what its title says of them."""
    starts = range(0, len(items), IN_A_PLOT)
    parts = [list(items[start : start + IN_A_PLOT]) for start in starts]
    if len(parts) < 2:
        return [("", part) for part in parts]
    return [(f", {start + 1} to {start + len(p)}", p) for start, p in zip(starts, parts)]


def _courses(run: Run) -> list[tuple[Quantity, list[Curve]]]:
    found = [(quantity, quantity.curves(run)) for quantity in QUANTITIES]
    return [(quantity, curves) for quantity, curves in found if curves]


def _time_scale(curves: Sequence[Curve]) -> tuple[float, str]:
    longest = max((curve.time[-1] for curve in curves if len(curve.time)), default=0.0)
    return (1000.0, "Time [ms]") if 0 < longest <= IN_MS_UP_TO else (1.0, "Time [s]")


def _course_plot(quantity: Quantity, curves: list[Curve], run: Run) -> Plot:
    scale, time_label = _time_scale(curves)

    def draw(axes: Axes) -> None:
        for curve in curves:
            time, values = downsample(curve.time, curve.values)
            axes.plot(scale * time, values, label=curve.label, **_style(curve))
        _finish_course(axes, quantity, run, time_label, len(curves) > 1)

    return Plot(quantity.key, quantity.title, quantity.about, draw)


def _style(curve: Curve) -> dict[str, object]:
    if curve.prescribed:
        return {"color": INK, "linestyle": "--", "linewidth": 0.9}
    return {} if curve.colour is None else {"color": f"C{curve.colour}"}


def _finish_course(
    axes: Axes, quantity: Quantity, run: Run, time_label: str, several: bool
) -> None:
    axes.set_xlabel(time_label)
    axes.set_ylabel(quantity.axis_of(run))
    axes.margins(x=0)
    left, right = axes.get_xlim()
    if 0 < left < 0.05 * right:
        axes.set_xlim(left=0)
    if quantity.logarithmic:
        axes.set_yscale("log")
        axes.set_ylim(top=max(1e-2, 2 * axes.get_ylim()[1]))
    if quantity.lowest is not None:
        axes.set_ylim(quantity.lowest, 1.05 * axes.get_ylim()[1])
    if several:
        legend_above(axes)


def _loop_plots(run: Run) -> list[Plot]:
    found = cycles(run)
    if not found:
        return []
    about = (
        f"Work per cycle: {work_of(settled(found))}, per thick filament; positive where the muscle does "
        "it. The first cycle doesn't count where there are others."
    )
    return [Plot("loop", "Work loop", about, lambda axes: draw_loops(axes, found))]


# Several runs


def _compared_plots(
    quantity: Quantity,
    label: str,
    groups: Sequence[Group],
    of_groups: list[list[tuple[Run, list[Curve]]]],
) -> list[Plot]:
    chosen = [
        (group.label, [curve for _, curves in runs for curve in curves if curve.label == label])
        for group, runs in zip(groups, of_groups)
    ]
    every = [curve for _, curves in chosen for curve in curves]
    first = next(run for runs in of_groups for run, curves in runs if curves)
    scale, time_label = _time_scale(every)
    limits = _limits(every, quantity)
    title = f"{quantity.title}: {label}" if label else quantity.title

    def drawing(part: Sequence[tuple[str, list[Curve]]]) -> Callable[[Axes], None]:
        def draw(axes: Axes) -> None:
            for number, (name, curves) in enumerate(part):
                if curves:
                    _draw_group(axes, name, curves, scale, f"C{number}", quantity)
            axes.set_ylim(limits)
            _finish_course(axes, quantity, first, time_label, True)

        return draw

    return [
        Plot(f"{quantity.key} {label}".strip(), title + place, quantity.about, drawing(part))
        for place, part in _parts(chosen)
    ]


def _limits(curves: Sequence[Curve], quantity: Quantity) -> tuple[float, float] | None:
    """Of the axis: what all runs reach, so that wide bands don't flatten the lines."""
    values = np.concatenate([curve.values for curve in curves])
    values = values[np.isfinite(values)]
    if not len(values) or values.min() == values.max() or quantity.logarithmic:
        return None
    margin = 0.05 * (values.max() - values.min())
    return float(values.min() - margin), float(values.max() + margin)


def _draw_group(
    axes: Axes, label: str, curves: list[Curve], scale: float, colour: str, quantity: Quantity
) -> None:
    """A line; of several runs their mean, with its 95 % band from three runs on."""

    def line(time: np.ndarray, values: np.ndarray, **style: object) -> None:
        time, values = downsample(time, values)
        axes.plot(scale * time, values, color=colour, **style)

    if len(curves) == 1:
        line(curves[0].time, curves[0].values, label=label)
        return
    time, mean, low, high = mean_and_band(curves, quantity)
    line(time, mean, label=f"{label} (n = {len(curves)})")
    if len(curves) < LEAST_FOR_BAND:
        for curve in curves:
            line(curve.time, curve.values, alpha=0.4, linewidth=0.6)
        return
    where, low, high = downsample_band(time, low, high)
    axes.fill_between(scale * where, low, high, color=colour, alpha=0.25, linewidth=0)


def mean_and_band(
    curves: Sequence[Curve], quantity: Quantity
) -> tuple[np.ndarray, np.ndarray, np.ndarray, np.ndarray]:
    """Times, mean, and the ends of the 95 % confidence band of the mean (Student's t).

    On the times of the first curve that all curves reach. The band of a quantity that can't be
    negative is that of its logarithm, the band of a share that of its logit, each with the error
    that the mean's own passes on to first order: neither leaves the quantity's range."""
    start = max(curve.time[0] for curve in curves)
    end = min(curve.time[-1] for curve in curves)
    time = curves[0].time
    time = time[(time >= start) & (time <= end)]
    values = np.array([np.interp(time, curve.time, curve.values) for curve in curves])
    n, mean = len(curves), values.mean(axis=0)
    half = student.ppf(0.975, n - 1) * values.std(axis=0, ddof=1) / np.sqrt(n)
    if quantity.lowest is None:
        return time, mean, mean - half, mean + half
    if quantity.highest is None:
        factor = np.exp(np.divide(half, mean, out=np.zeros_like(mean), where=mean > 0))
        return time, mean, mean / factor, mean * factor
    share = np.clip(mean / quantity.highest, 0.0, 1.0)
    slope = quantity.highest * share * (1 - share)
    spread = np.divide(half, slope, out=np.zeros_like(mean), where=slope > 0)
    low, high = (quantity.highest * expit(logit(share) + sign * spread) for sign in (-1, 1))
    return time, mean, low, high


# Snapshots


@dataclass(frozen=True)
class _Measure:
    """A column of the snapshots whose distribution is drawn."""

    table: str
    column: str
    title: str
    axis: str
    about: str


MEASURES = (
    _Measure("bonds", "strain", "Strain of bonds", "Strain without the lever [nm]",
             "From head to site, before the movement of the lever."),
    _Measure("bonds", "force", "Force of bonds", "Force [pN]", "With the lever."),
    _Measure("bonds", "energy", "Energy of bonds", "Energy [pN nm]", "With the lever."),
    _Measure("xray", "x", "Places of bonds", "Coordinate of the site [nm]",
             "Along the thin filament, from the middle of the sarcomere."),
)  # fmt: skip


def _snapshot_plots(run: Run) -> list[Plot]:
    plots = []
    for measure in MEASURES:
        table = run[measure.table]
        if not table.empty and measure.column in table:
            plots.append(_distribution_plot(measure, table))
    return plots


def edges_of(values: np.ndarray, bins: int = 25) -> np.ndarray:
    """Edges of equal bins over all values."""
    low, high = float(values.min()), float(values.max())
    return np.linspace(low, high, bins + 1) if high > low else np.array([low - 0.5, low + 0.5])


def _distribution_plot(measure: _Measure, table: pd.DataFrame) -> Plot:
    edges = edges_of(table[measure.column].to_numpy())
    times = sorted(table["time"].unique())
    scale, time_label = (1000.0, "ms") if times[-1] <= IN_MS_UP_TO else (1.0, "s")

    def draw(axes: Axes) -> None:
        axes.set_xlabel(measure.axis)
        shares = [_shares(table, measure.column, time, edges) for time in times]
        if len(times) > MOST_SNAPSHOTS:
            axes.grid(False)
            steps = np.arange(len(times) + 1)
            mesh = axes.pcolormesh(edges, steps, np.array(shares), rasterized=True)
            ticks = np.unique(np.linspace(0, len(times) - 1, 5).astype(int))
            axes.set_yticks(ticks + 0.5, [f"{scale * times[tick]:g}" for tick in ticks])
            axes.set_ylabel(f"Snapshot at time [{time_label}]")
            axes.figure.colorbar(mesh, ax=axes, label="Share of bonds [%]")
            return
        for time, share in zip(times, shares):
            count = int((table["time"] == time).sum())
            label = f"{scale * time:g} {time_label}, n = {count}"
            axes.stairs(share, edges, label=label, linewidth=1.2)
        axes.set_ylabel("Share of bonds [%]")
        axes.set_ylim(0, None)
        legend_above(axes)

    return Plot(measure.table + measure.column, measure.title, measure.about, draw)


def _shares(table: pd.DataFrame, column: str, time: float, edges: np.ndarray) -> np.ndarray:
    counts, _ = np.histogram(table.loc[table["time"] == time, column], edges)
    return 100.0 * counts / max(1, counts.sum())


def _compared_snapshots(groups: Sequence[Group]) -> list[Plot]:
    """Distributions at the last snapshot that all runs with snapshots have."""
    plots = []
    for measure in MEASURES:
        tables = [(g.counted, [r[measure.table] for r in g.runs]) for g in groups]
        tables = [(label, [t for t in ts if not t.empty]) for label, ts in tables]
        tables = [(label, ts) for label, ts in tables if ts]
        if not tables:
            continue
        shared = set.intersection(*(set(t["time"]) for _, ts in tables for t in ts))
        if shared:
            plots += _compared_distributions(measure, tables, max(shared))
    return plots


def _compared_distributions(
    measure: _Measure, tables: list[tuple[str, list[pd.DataFrame]]], time: float
) -> list[Plot]:
    every = [t.loc[t["time"] == time, measure.column] for _, ts in tables for t in ts]
    edges = edges_of(pd.concat(every).to_numpy())

    def drawing(part: Sequence[tuple[str, list[pd.DataFrame]]]) -> Callable[[Axes], None]:
        def draw(axes: Axes) -> None:
            for label, of_group in part:
                shares = [_shares(table, measure.column, time, edges) for table in of_group]
                axes.stairs(np.mean(shares, axis=0), edges, label=label, linewidth=1.2)
            axes.set_xlabel(measure.axis)
            axes.set_ylabel("Share of bonds [%]")
            axes.set_ylim(0, None)
            legend_above(axes)

        return draw

    title = f"{measure.title} at time {time:g}"
    return [
        Plot(measure.table + measure.column, title + place, measure.about, drawing(part))
        for place, part in _parts(tables)
    ]


# State of the thin filaments at time 0.7


def _site_plots(run: Run) -> list[Plot]:
    plots = []
    sites = run["sites"]
    if not sites.empty:
        about = "Means over all thin filaments at time 0.7, from the middle of the sarcomere on."
        plots.append(Plot("sites", "Sites", about, lambda axes: _draw_sites(axes, sites)))
    chains = run["tropomyosin"]
    if not chains.empty and "angle" in chains:
        about = "Mean and standard deviation over all chains at time 0.7."
        draw = lambda axes: _draw_angles(axes, chains)  # noqa: E731
        plots.append(Plot("tropomyosin", "Tropomyosin", about, draw))
    return plots


def _draw_sites(axes: Axes, sites: pd.DataFrame) -> None:
    """Shares over stretches of 14 sites, two segments side by side on the two strands."""
    stretch = sites["site"] // 14
    for state, label in enumerate(("open", "blocked", "closed")):
        share = 100.0 * (sites["state"] == state).groupby(stretch).mean()
        axes.step(14 * share.index, share, where="post", label=label)
    axes.set_xlabel("Site along the thin filament")
    axes.set_ylabel("Share of sites [%]")
    axes.margins(x=0)
    legend_above(axes)


def _draw_angles(axes: Axes, chains: pd.DataFrame) -> None:
    angles = chains.groupby("site")["angle"]
    mean, deviation = angles.mean(), angles.std().fillna(0.0)
    axes.plot(mean.index, mean)
    axes.fill_between(mean.index, mean - deviation, mean + deviation, alpha=0.25, linewidth=0)
    axes.set_xlabel("Site along the chain")
    axes.set_ylabel("Angle of tropomyosin [rad]")
    axes.margins(x=0)
