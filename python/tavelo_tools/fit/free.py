"""Free parameters: bounds, start, and a scale from 0 to 1 on which a fit works."""

import math
from dataclasses import dataclass

import numpy as np

from ..study.toml_text import Table

SCALES = ("linear", "log")
DIGITS = 6  # of a value that is tried: more would only make files hard to read


@dataclass(frozen=True)
class Free:
    """A parameter, or a name that formulas use; scaled it runs from 0 at `low` to 1 at `high`."""

    name: str
    where: str
    start: float
    low: float
    high: float
    log: bool

    def scaled(self, value: float) -> float:
        if self.log:
            return math.log(value / self.low) / math.log(self.high / self.low)
        return (value - self.low) / (self.high - self.low)

    def value(self, scaled: float) -> float:
        share = min(1.0, max(0.0, float(scaled)))
        exact = self.low * (self.high / self.low) ** share if self.log else self.low + share * (self.high - self.low)
        return min(self.high, max(self.low, float(f"{exact:.{DIGITS}g}")))


def read_free(table: Table) -> tuple[Free, ...]:
    """The [free] table of a plan."""
    free = tuple(_read(name, entry) for name, entry in table.tables().items())
    if not free:
        raise table.fail("", "is empty or missing; accepted: at least one parameter with low and high")
    return free


def _read(name: str, entry: Table) -> Free:
    entry.allow(["start", "low", "high", "scale"])
    for key in ("low", "high"):
        if key not in entry.values:
            raise entry.fail("", f"needs {key}")
    low, high = (float(entry.get(key, (int, float), 0.0, "a number")) for key in ("low", "high"))
    scale = entry.get("scale", str, "linear", ", ".join(SCALES))
    if scale not in SCALES:
        raise entry.fail("scale", f"is '{scale}'; accepted: {', '.join(SCALES)}")
    if not (math.isfinite(low) and math.isfinite(high) and low < high):
        raise entry.fail("low", f"is {low:g}, and high {high:g}; accepted: low below high")
    log = scale == "log"
    if log and low <= 0:
        raise entry.fail("low", f"is {low:g}; accepted: above 0, as the scale is log")
    start = float(entry.get("start", (int, float), math.sqrt(low * high) if log else (low + high) / 2, "a number"))
    if not low <= start <= high:
        raise entry.fail("start", f"is {start:g}; accepted: {low:g} to {high:g}")
    return Free(name, entry.where(), start, low, high, log)


def values_at(free: tuple[Free, ...], point: np.ndarray) -> dict[str, float]:
    """The values at a scaled point."""
    return {item.name: item.value(share) for item, share in zip(free, point)}


def point_of(free: tuple[Free, ...], values: dict[str, float]) -> np.ndarray:
    """The scaled point of values."""
    return np.array([item.scaled(values[item.name]) for item in free])
