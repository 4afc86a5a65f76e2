"""Plots of a scheme: its cycle, rates and free energies over the strain, steady states over strain and load."""

import textwrap

import numpy as np
from matplotlib.axes import Axes
from matplotlib.patches import FancyArrowPatch

from ..plots import Plot
from ..style import GRID, INK, LIGHT, legend_above
from .data import Rate, Scheme
from .steady import loads_of, over_load, over_strain

SLOWEST, FASTEST = 1e-3, 1e7  # rates beyond are not drawn
STRAIN = "Strain [nm]"
NODE = 0.34  # radius
LONGEST = 200  # characters of a formula in the picture


def plots_of_scheme(scheme: Scheme) -> list[Plot]:
    at_start = " Rates that follow time or calcium are those at the start." if any(
        rate.follows_time for rate in scheme.rates) else ""  # fmt: skip
    plots = [
        Plot("scheme cycle", "Cycle", "Filled states are attached. Dashed arrows are the ways back.",
             lambda axes: _draw_cycle(axes, scheme)),
        Plot("scheme rates", "Rates", "Of an open site; ways back are dashed." + at_start,
             lambda axes: _draw_rates(axes, scheme)),
    ]  # fmt: skip
    if any(state.energy is not None for state in scheme.states):
        plots.append(Plot("scheme energies", "Free energies", "Of the states that have one; dotted ones are detached.",
                          lambda axes: _draw_energies(axes, scheme)))  # fmt: skip
    plots.append(
        Plot("scheme strain", "Steady state over strain",
             "Of a head held at one strain with a site in front of it for ever." + at_start,
             lambda axes: _draw_steady(axes, scheme, scheme.strain, over_strain(scheme), STRAIN))
    )  # fmt: skip
    loads = loads_of(scheme)
    plots.append(
        Plot("scheme load", "Steady state over load",
             "Of a head whose spring carries the load in every attached state: rates at the strain at which it does."
             + at_start,
             lambda axes: _draw_steady(axes, scheme, loads, over_load(scheme, loads), "Load [pN]"))
    )  # fmt: skip
    return plots


def colour_of(scheme: Scheme, state: int) -> str:
    return scheme.states[state].colour or LIGHT[state % len(LIGHT)]


def _places(n: int) -> np.ndarray:
    """On a circle, the first state at the top, clockwise."""
    angles = np.pi / 2 - 2 * np.pi * np.arange(n) / n
    radius = max(1.0, 0.28 * n)
    return radius * np.column_stack([1.6 * np.cos(angles), np.sin(angles)])


def _draw_cycle(axes: Axes, scheme: Scheme) -> None:
    places = _places(len(scheme.states))
    for number, rate in enumerate(scheme.rates, start=1):
        _draw_arrow(axes, places, rate, number)
        text = textwrap.shorten(rate.as_read, LONGEST, placeholder=" ...")
        marks = [*rate.site, *(["rescaled"] if rate.binding else []), *(["ATP"] if rate.fuel else [])]
        label = f"{number}  {scheme.name_of(rate)}: {text}" + (f" [{', '.join(marks)}]" if marks else "")
        axes.plot([], [], linestyle="none", label=label)
    for number, (state, place) in enumerate(zip(scheme.states, places)):
        colour = colour_of(scheme, number)
        axes.plot(*place, "o", markersize=17, markeredgecolor=colour, color=colour if state.attached else "none",
                  markeredgewidth=1.5, zorder=3)  # fmt: skip
        inwards = 1.0 if place[1] >= 0 else -1.0
        axes.text(place[0], place[1] + inwards * NODE, state.name, ha="center",
                  va="bottom" if inwards > 0 else "top", color=INK, zorder=4)  # fmt: skip
    reach = np.abs(places).max(axis=0)
    axes.set_xlim(-reach[0] - 0.8, reach[0] + 0.8)
    axes.set_ylim(-reach[1] - 0.8, reach[1] + 0.8)
    axes.set_axis_off()
    legend_above(axes)


def _draw_arrow(axes: Axes, places: np.ndarray, rate: Rate, number: int) -> None:
    start, end = places[rate.origin], places[rate.target]
    along = (end - start) / np.hypot(*(end - start))
    aside = np.array([along[1], -along[0]])
    start, end = start + NODE * along, end - NODE * along
    axes.add_patch(
        FancyArrowPatch(start, end, connectionstyle="arc3,rad=0.18", arrowstyle="-|>", mutation_scale=9, color=INK,
                        linewidth=1.0, linestyle="--" if rate.reverse else "-", zorder=2)  # fmt: skip
    )
    middle = (start + end) / 2 + 0.18 * np.hypot(*(end - start)) / 2 * aside + 0.1 * aside
    axes.text(*middle, str(number), ha="center", va="center", fontsize=8.5, color=INK, zorder=4)


def _draw_rates(axes: Axes, scheme: Scheme) -> None:
    pairs: dict[int, str] = {}
    for rate in scheme.rates:
        colour = pairs.setdefault(rate.transition, LIGHT[len(pairs) % len(LIGHT)])
        values = np.where((rate.values >= SLOWEST) & (rate.values <= FASTEST), rate.values, np.nan)
        style = "--" if rate.reverse else "-"
        axes.plot(scheme.strain, values, style, color=colour, label=scheme.name_of(rate))
    axes.set_yscale("log")
    axes.set_xlabel(STRAIN)
    axes.set_ylabel("Rate [1/time]")
    axes.margins(x=0)
    legend_above(axes)


def _draw_energies(axes: Axes, scheme: Scheme) -> None:
    lowest = []
    scale = scheme.kBT or 1.0
    for number, state in enumerate(scheme.states):
        if state.energy is None:
            continue
        axes.plot(scheme.strain, state.energy / scale, "-" if state.attached else ":",
                  color=colour_of(scheme, number), label=state.name)  # fmt: skip
        lowest.append(float(np.nanmin(state.energy)) / scale)
    axes.set_ylim(min(lowest) - 3, max(lowest) + 25)
    axes.set_xlabel(STRAIN)
    axes.set_ylabel("Free energy [kT]" if scheme.kBT else "Free energy [pN nm]")
    axes.margins(x=0)
    legend_above(axes)


def _draw_steady(axes: Axes, scheme: Scheme, x: np.ndarray, shares: np.ndarray, label: str) -> None:
    for number, state in enumerate(scheme.states):
        axes.plot(x, 100 * shares[:, number], "-" if state.attached else ":", color=colour_of(scheme, number),
                  label=state.name)  # fmt: skip
    axes.axhline(0, color=GRID, linewidth=0.6)
    axes.set_xlabel(label)
    axes.set_ylabel("Share of the head's time [%]")
    axes.set_ylim(0, 103)
    axes.set_xlim(x[0], x[-1])
    legend_above(axes)
