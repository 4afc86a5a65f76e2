"""Time courses of a run, as the field prints them."""

from collections.abc import Callable
from dataclasses import dataclass

import numpy as np
import pandas as pd

from .noticed import protocol_rows
from .protocol import FORCE, LENGTH, course, course_of_mode
from .read import Run

BINS = 60  # of the plots of events per time: more would mostly show the scatter of counts


@dataclass(frozen=True)
class Curve:
    """One line of a plot. Its label is empty where the plot has no other."""

    label: str
    time: np.ndarray
    values: np.ndarray
    colour: int | None = None  # number of its colour; None: the next
    prescribed: bool = False  # by a protocol, and drawn as such


@dataclass(frozen=True)
class Quantity:
    """What one plot shows over time; `curves` gives none if the run has no such data."""

    key: str
    title: str
    axis: str | Callable[[Run], str]
    about: str
    curves: Callable[[Run], list[Curve]]
    lowest: float | None = None  # below which it can't be, and where the axis begins
    highest: float | None = None  # above which it can't be; a share has 0 and 100
    logarithmic: bool = False

    def axis_of(self, run: Run) -> str:
        return self.axis if isinstance(self.axis, str) else self.axis(run)


def _columns(run: Run, key: str, columns: dict[str, str]) -> list[Curve]:
    """Columns of a table that it has, with their labels."""
    return _columns_of(run[key], columns)


def _columns_of(table: pd.DataFrame, columns: dict[str, str]) -> list[Curve]:
    if table.empty:
        return []
    time = table["time"].to_numpy()
    return [
        Curve(label, time, table[column].to_numpy())
        for column, label in columns.items()
        if column in table.columns
    ]


def _force(run: Run) -> list[Curve]:
    return _columns(run, "result", {"force": ""}) + _prescribed(run, FORCE)


def _length(run: Run) -> list[Curve]:
    columns = {"displacement_actin": "Z-disc", "displacement_myosin": "thick filament's tip"}
    return _columns(run, "result", columns) + _prescribed(run, LENGTH)


def _prescribed(run: Run, mode: int) -> list[Curve]:
    """What protocol.dat prescribes while it has this mode."""
    times = run["result"].get("time", pd.Series(dtype=float)).to_numpy()
    values = course_of_mode(protocol_rows(run), times, mode)
    return [Curve("prescribed", times, values, prescribed=True)] if np.isfinite(values).any() else []


def _bonds(run: Run) -> list[Curve]:
    return _columns(run, "result", {"bound_heads": "heads", "bound_protein_c": "protein-C"})


def _filaments(run: Run) -> int:
    return run.filaments or 1


def _events(run: Run) -> list[Curve]:
    table = run["events"]
    curves = []
    for column in ("attachments", "detachments"):
        if column in table and len(table) > 1:
            counts = np.diff(table[column].to_numpy(), prepend=0.0)
            time, rate = _per_time(table["time"].to_numpy(), counts)
            curves.append(Curve(column, time, rate / _filaments(run)))
    return curves


def _starts(length: int) -> np.ndarray:
    """First rows of at most BINS stretches of rows."""
    return np.linspace(0, length, min(BINS, length) + 1).astype(int)[:-1]


def _per_time(time: np.ndarray, counts: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """Counts per unit of time in at most BINS stretches of whole steps; middles of the stretches."""
    starts = _starts(len(time))
    ends = np.append(starts[1:], len(time)) - 1
    until = time[ends]
    since = np.append(2 * time[0] - time[1], until[:-1])
    length = np.where(until > since, until - since, np.nan)
    return (since + until) / 2, np.add.reduceat(counts, starts) / length


def _states(table: pd.DataFrame) -> list[str]:
    return [name for name in table.columns if str(name).startswith("state_")]


def _label(run: Run, number: int) -> str:
    """Number as in the files and what the model calls the state, the same in every plot."""
    names = run.state_names
    return f"{number} {names[number]}" if number < len(names) else f"state {number}"


def _all_heads(run: Run) -> list[Curve]:
    table = run["head_states"]
    states = _states(table)
    if not states or table["time"].isna().all():
        return []
    total = table[states].sum(axis=1).replace(0, np.nan)
    return [
        Curve(_label(run, n), table["time"].to_numpy(), (100 * table[s] / total).to_numpy(), n)
        for n, s in enumerate(states)
    ]


def _bound_heads(run: Run) -> list[Curve]:
    table = run["bound_states"]
    per = _filaments(run)
    return [
        Curve(_label(run, n), table["time"].to_numpy(), table[s].to_numpy() / per, n)
        for n, s in enumerate(_states(table))
        if table[s].any()
    ]


def positions(activation: str, by_calcium: bool, columns: int) -> dict[str, list[int]]:
    """Columns of segments by what they mean for the sites."""
    if columns == 9:
        names = ("blocked", "closed", "open") if by_calcium else ("blocked", "open")
        return {name: list(range(3 * p, 3 * p + 3)) for p, name in enumerate(names)}
    if columns == 6:
        if not by_calcium:
            return {"blocked": [0], "open": [1]}
        return {"blocked": [0, 1, 2], "closed": [3, 4, 5]}
    return {f"state {number}": [number] for number in range(columns)}


def _by_calcium(run: Run) -> bool:
    return run.parameter("Ca Activation Model Indicator") != "0"


def _segments(run: Run) -> list[Curve]:
    table = run["segments"]
    counts = table.drop(columns="time", errors="ignore").to_numpy()
    if table.empty or counts.shape[1] == 0:
        return []
    total = counts.sum(axis=1)
    total = np.where(total > 0, total, np.nan)
    groups = positions(run.parameter("activation") or "", _by_calcium(run), counts.shape[1])
    return [
        Curve(name, table["time"].to_numpy(), 100 * counts[:, numbers].sum(axis=1) / total)
        for name, numbers in groups.items()
    ]


def _drive(run: Run) -> tuple[str, float, Callable[[np.ndarray], np.ndarray]]:
    """Axis, and what turns values of `ca_protocol.dat` into it."""
    activation = run.parameter("activation") or "None"
    if activation == "Fixed":
        return "Sites switched off [%]", 100.0, lambda v: v
    if activation == "Lumped2S":
        return "Calcium [\u00b5M]", 1e6, lambda v: 10.0**v
    if activation in ("Geeves6S", "FChain") and not _by_calcium(run):
        return "Opening rate kb", 1.0, lambda v: v
    return "Calcium [\u00b5M]", 1e6, lambda v: v


def _is_driven(run: Run) -> bool:
    return run.parameter("activation") not in (None, "None") or (
        run.parameter("Model") == "Vorn" or any(scheme.follows_calcium for scheme in run.schemes)
    )


def _calcium(run: Run) -> list[Curve]:
    rows = protocol_rows(run, "ca_protocol.dat")
    times = run["result"].get("time")
    if not rows or times is None or times.empty or not _is_driven(run):
        return []
    _, scale, convert = _drive(run)
    return [Curve("", times.to_numpy(), scale * convert(course(rows, times.to_numpy())))]


def _turnover(run: Run) -> list[Curve]:
    """Logged steps of the cycle per head and time."""
    heads = run["head_states"]
    states = _states(heads)
    result = run["result"]
    # The program logs two steps by their numbers, whatever they are in a scheme.
    if not states or result.empty or len(result) < 2 or run.schemes:
        return []
    edges = np.append(0.0, result["time"].to_numpy())
    curves = []
    for key, state in (("atp_6states", 2), ("atp_8states", 3)):
        logged = run[key].get("time")
        if logged is not None and not logged.empty and np.all(np.diff(edges) > 0):
            # Logged times have six digits and may fall short of their own step's.
            counts, _ = np.histogram(logged - 1e-9, edges)
            time, rate = _per_time(edges[1:], counts.astype(float))
            label = f"{_label(run, state)} to {_label(run, state + 1)}"
            curves.append(Curve(label, time, rate / heads[states].iloc[0].sum()))
    return curves


def _passes_of_steps(run: Run) -> tuple[pd.DataFrame, np.ndarray]:
    """The table of passes, and where in it a step ends: its last pass, before the count falls."""
    table = run["convergence"]
    if table.empty or "pass" not in table:
        return table, np.array([], dtype=bool)
    return table, np.append(np.diff(table["pass"].to_numpy()) <= 0, True)


def _passes(run: Run) -> list[Curve]:
    """Mean and highest number of passes over stretches of steps."""
    table, last = _passes_of_steps(run)
    if not last.any():
        return []
    passes, times = table["pass"].to_numpy()[last], table["time"].to_numpy()[last]
    starts = _starts(len(passes))
    size = np.diff(np.append(starts, len(passes)))
    mean = np.add.reduceat(passes, starts) / size
    return [
        Curve("mean", times[starts], mean),
        Curve("most", times[starts], np.maximum.reduceat(passes, starts)),
    ]


def _residuals(run: Run) -> list[Curve]:
    table, last = _passes_of_steps(run)
    if not len(last) or "largest_residual" not in table:
        return []
    if not table["largest_residual"].any():
        return []
    # Written with six digits behind the point: 0 means below half of the last.
    force = table.assign(largest_residual=table["largest_residual"].abs().clip(lower=5e-7))
    first = np.append(True, last[:-1])
    return [
        *_columns_of(force[first], {"largest_residual": "first pass"}),
        *_columns_of(force[last], {"largest_residual": "last pass"}),
    ]


QUANTITIES = (
    Quantity(
        "force",
        "Force",
        "Force\n[pN per thick filament]",
        "Positive force pulls. Dashed: the load that protocol.dat prescribes, where it does.",
        _force,
    ),
    Quantity(
        "length",
        "Length",
        "Displacement\n[nm per half-sarcomere]",
        "Since time 0; shortening is negative. Dashed: what protocol.dat prescribes, at the outer end of "
        "the series elastic element; not drawn where it depends on the run.",
        _length,
    ),
    Quantity(
        "bonds",
        "Bonds",
        "Bound per thick filament",
        "Bound myosin heads, and protein-C links where there are any.",
        _bonds,
        lowest=0.0,
    ),
    Quantity(
        "events",
        "Attachments and detachments",
        "Events\n[1/s per thick filament]",
        f"Counted over at most {BINS} stretches of the run; protein-C links included.",
        _events,
        lowest=0.0,
    ),
    Quantity(
        "all_heads",
        "States of all heads",
        "Share of all heads [%]",
        "Kinetic states of slow and fast heads together.",
        _all_heads,
        lowest=0.0,
        highest=100.0,
    ),
    Quantity(
        "bound_heads",
        "States of bound heads",
        "Heads per thick filament",
        "Heads in the mechanics; one that has just let go counts once more, detached.",
        _bound_heads,
        lowest=0.0,
    ),
    Quantity(
        "segments",
        "Thin filament",
        "Share of segments [%]",
        "Regulatory states of the segments.",
        _segments,
        lowest=0.0,
        highest=100.0,
    ),
    Quantity(
        "calcium",
        "Regulation",
        lambda run: _drive(run)[0],
        "What ca_protocol.dat prescribes.",
        _calcium,
        lowest=0.0,
    ),
    Quantity(
        "turnover",
        "Turnover",
        "Steps of the cycle\n[1/s per head]",
        "Logged steps past ADP release, as a measure of the turnover of ATP.",
        _turnover,
        lowest=0.0,
    ),
    Quantity(
        "passes",
        "Passes per step",
        "Passes of the iteration",
        f"Over at most {BINS} stretches of steps, logged up to time 0.5.",
        _passes,
        lowest=0.0,
    ),
    Quantity(
        "residuals",
        "Residual",
        "Largest out-of-\nbalance force [pN]",
        "In each step, logged up to time 0.5; drawn at 5e-7 where the file shows 0.",
        _residuals,
        lowest=1e-7,
        logarithmic=True,
    ),
)
