"""Force over length where the prescribed length goes round in cycles, and the work of each cycle."""

from dataclasses import dataclass

import numpy as np
from matplotlib.axes import Axes

from .noticed import last_time, protocol_rows
from .protocol import FROM_PRESENT, LENGTH, SINE, TABLE, Row
from .read import Run
from .style import legend_above

PHASES = 200  # of the mean cycle


@dataclass(frozen=True)
class Cycle:
    """One cycle: prescribed length [nm per half-sarcomere] and force [pN per thick filament]."""

    length: np.ndarray
    force: np.ndarray

    @property
    def work(self) -> float:
        """Minus the integral of force over length [pN nm]: what the muscle does on what moves it."""
        return -float(np.trapz(self.force, self.length))

    def at_phases(self) -> tuple[np.ndarray, np.ndarray]:
        """Length and force at equal parts of the cycle."""
        phase = np.linspace(0.0, 1.0, PHASES)
        own = np.linspace(0.0, 1.0, len(self.length))
        return np.interp(phase, own, self.length), np.interp(phase, own, self.force)


def _starts(row: Row, end: float) -> np.ndarray:
    """Times at which cycles of a row begin, the end of the last one too; none without cycles."""
    amplitude, frequency, *_ = (*row.parameters, 0.0, 0.0)
    if row.law == SINE and amplitude != 0 and 0 < frequency * row.step < 0.25:
        # A ten-thousandth of a cycle for the rounding of times.
        whole = int((end - row.start) * frequency + 1e-4)
        return row.start + np.arange(whole + 1) / frequency
    if row.law != TABLE or row.table is None:
        return np.array([])
    time, value = row.table.T[:2]
    above = value - (value.min() + value.max()) / 2
    up = np.flatnonzero((above[:-1] < 0) & (above[1:] >= 0))
    starts = row.start + time[up] - above[up] * np.diff(time)[up] / np.diff(above)[up]
    periods = np.diff(starts)
    is_regular = len(periods) > 0 and np.ptp(periods) < 0.02 * periods.mean()
    return starts[starts <= end] if is_regular else np.array([])


def cycles(run: Run) -> list[Cycle]:
    """The whole cycles of the first row of the protocol that has some, in their order."""
    rows, result = protocol_rows(run), run["result"]
    if "force" not in result:
        return []
    ends = [row.start for row in rows[1:]] + [last_time(run)]
    for row, end in zip(rows, ends):
        if row.law == FROM_PRESENT:
            return []  # the starts of all later rows depend on the run
        starts = _starts(row, min(end, last_time(run))) if row.mode == LENGTH else []
        found = [_cycle(run, row, *pair) for pair in zip(starts[:-1], starts[1:])]
        if found:
            return [cycle for cycle in found if len(cycle.length) > 4]
    return []


def _cycle(run: Run, row: Row, start: float, end: float) -> Cycle:
    table = run["result"]
    slack = 1e-4 * (end - start)
    table = table[table["time"].between(start - slack, end + slack)]
    return Cycle(row.values(table["time"].to_numpy() - row.start), table["force"].to_numpy())


def work_of(found: list[Cycle]) -> str:
    """Mean work of a cycle and its standard error."""
    work = [cycle.work for cycle in found]
    if len(work) < 2:
        return f"{work[0]:+.4g} pN nm"
    error = np.std(work, ddof=1) / np.sqrt(len(work))
    return f"{np.mean(work):+.4g} \u00b1 {error:.3g} pN nm (mean and standard error, n = {len(work)})"


def settled(found: list[Cycle]) -> list[Cycle]:
    """Without the first cycle, which begins elsewhere than it ends, if there are others."""
    return found[1:] or found


def draw_loops(axes: Axes, found: list[Cycle]) -> None:
    """Every cycle thin, the mean of the settled ones thick, with arrows the way round."""
    for number, cycle in enumerate(found):
        label = {"label": "each cycle"} if number == 0 else {}
        axes.plot(cycle.length, cycle.force, color="C0", alpha=0.35, linewidth=0.6, **label)
    used = settled(found)
    length, force = np.mean([cycle.at_phases() for cycle in used], axis=0)
    axes.plot(length, force, color="C1", linewidth=1.6, label=f"mean, n = {len(used)}")
    for at in (PHASES // 16, PHASES // 16 + PHASES // 2):
        ends = [(length[i], force[i]) for i in (at + PHASES // 40, at)]
        axes.annotate("", *ends, arrowprops={"arrowstyle": "-|>", "color": "C1", "mutation_scale": 14})
    axes.set_xlabel("Prescribed length\n[nm per half-sarcomere]")
    axes.set_ylabel("Force\n[pN per thick filament]")
    legend_above(axes)
