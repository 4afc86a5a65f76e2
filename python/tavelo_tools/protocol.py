"""Protocol files: the rows of `protocol.dat` and `ca_protocol.dat`, and the values they prescribe."""

from dataclasses import dataclass
from pathlib import Path

import numpy as np

from .numbers import read_numbers, read_text

__all__ = ["Row", "course", "course_of_mode", "end_time", "read_protocol"]

LENGTH, FORCE = 0, 1  # modes: what is prescribed
CONSTANT, RAMP, SINE, TWITCH, FROM_PRESENT, LOG_NORMAL, TABLE = 0, 1, 2, 3, 4, 5, 999


@dataclass(frozen=True)
class Row:
    """One row: what holds from `start` on."""

    start: float
    step: float
    mode: int
    law: int
    parameters: tuple[float, ...]
    table: np.ndarray | None = None

    def values(self, tau: np.ndarray) -> np.ndarray:
        """The law over the time since the row's start; NaN where it depends on the run."""
        p = (*self.parameters, 0.0, 0.0, 0.0, 0.0)
        if self.law == CONSTANT:
            return np.full_like(tau, p[0])
        if self.law == RAMP:
            return tau * p[0] + p[1]
        if self.law == SINE:
            return p[0] * np.sin(2 * np.pi * tau * p[1] + np.pi * p[3]) + p[2]
        if self.law == TWITCH:
            return _twitch(tau, *p[:4])
        if self.law == LOG_NORMAL:
            return _log_normal(tau, *p[:4])
        if self.law == TABLE and self.table is not None:
            return np.interp(tau, self.table[:, 0], self.table[:, 1])
        return np.full_like(tau, np.nan if self.law in (FROM_PRESENT, TABLE) else 0.0)


def _twitch(tau: np.ndarray, p0: float, p1: float, p2: float, p3: float) -> np.ndarray:
    peak = -np.log(p1 / p0) / (1 / p1 - 1 / p0)
    height = np.exp(-peak / p0) - np.exp(-peak / p1)
    return (np.exp(-tau / p0) - np.exp(-tau / p1)) * p2 / height + p3


def _log_normal(tau: np.ndarray, p0: float, p1: float, p2: float, p3: float) -> np.ndarray:
    x = 1000.0 * tau
    early = x < 1.1
    logarithm = np.log10(np.where(early, 10.0, x))
    value = p3 * p0 / logarithm * np.exp(-0.5 * (np.log(logarithm / p2) / p1) ** 2)
    return np.where(early, 0.0, value)


def read_protocol(path: Path) -> list[Row]:
    """The rows of a protocol file. ValueError names the line that can't be read."""
    rows = []
    for number, line in enumerate(read_text(path).splitlines(), start=1):
        words = line.split()
        if not words:
            continue
        try:
            start, step, mode, law = float(words[0]), float(words[1]), int(words[2]), int(words[3])
            if law == TABLE:
                rows.append(Row(start, step, mode, law, (), _table(path.parent / words[4])))
            else:
                rows.append(Row(start, step, mode, law, tuple(map(float, words[4:8]))))
        except (ValueError, IndexError) as error:
            raise ValueError(f"line {number} is no row of a protocol") from error
    return rows


def _table(path: Path) -> np.ndarray | None:
    if not path.is_file():
        return None
    rows = read_numbers(path, separator=" ").rows.to_numpy()
    return rows if rows.shape[0] > 1 and rows.shape[1] > 1 else None


def end_time(rows: list[Row]) -> float | None:
    """When the run is over; None where a row makes it depend on the run."""
    for row in rows[:-1] if len(rows) > 1 else rows:
        if row.law == FROM_PRESENT:
            return None
        if row.law == TABLE:
            return None if row.table is None else float(row.table[-1, 0])
    return rows[-1].start if rows else None


def _current(rows: list[Row], time: np.ndarray) -> np.ndarray:
    """Number of the row that holds: one takes over behind the step that reaches its start."""
    starts = np.array([row.start for row in rows])
    return np.maximum(np.searchsorted(starts + 1e-9, time, side="left") - 1, 0)


def course_of_mode(rows: list[Row], time: np.ndarray, mode: int) -> np.ndarray:
    """The same, NaN where another mode holds."""
    if not rows:
        return np.full(time.shape, np.nan)
    modes = np.array([row.mode for row in rows])
    return np.where(modes[_current(rows, time)] == mode, course(rows, time), np.nan)


def course(rows: list[Row], time: np.ndarray) -> np.ndarray:
    """The prescribed values over time, NaN before the first row and where the run decides."""
    values = np.full(time.shape, np.nan)
    current = _current(rows, time)
    for index, row in enumerate(rows):
        here = current == index
        values[here] = row.values(time[here] - row.start)
        if row.law == FROM_PRESENT:
            values[time > row.start + 1e-9] = np.nan
            break
    return values
