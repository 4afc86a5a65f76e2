"""What is taken from a course over time. Each function gives one number, or refuses in words.

Times in the unit of the run (s, where rates are in 1/s), values in the unit of their column.
"""

import warnings
from collections.abc import Callable
from dataclasses import dataclass

import numpy as np
from scipy.optimize import OptimizeWarning, curve_fit

from .errors import Refused

LEAST_POINTS = 8  # of a trace through which a curve is laid


@dataclass(frozen=True)
class Trace:
    """A course within a window, ends included; `length` and `frequency` only where work is asked."""

    time: np.ndarray
    values: np.ndarray
    start: float
    end: float
    length: np.ndarray | None = None  # [nm]
    frequency: float | None = None  # [1/time]


def slope(trace: Trace) -> float:
    """Of the straight line through the points."""
    if len(trace.time) < 2:
        raise Refused("a slope needs two points")
    return float(np.polyfit(trace.time - trace.start, trace.values, 1)[0])


def time_to_peak(trace: Trace) -> float:
    """From the start of the window to the highest value."""
    return float(trace.time[trace.values.argmax()] - trace.start)


def half_relaxation(trace: Trace) -> float:
    """From the highest value until half of what it stands above the window's first is lost."""
    peak = int(trace.values.argmax())
    half = (trace.values[peak] + trace.values[0]) / 2
    below = np.flatnonzero(trace.values[peak:] <= half)
    if peak == 0 or not len(below):
        raise Refused("it doesn't rise and fall to half of its height")
    after = peak + int(below[0])
    pair = slice(after - 1, after + 1)
    crossing = np.interp(-half, -trace.values[pair], trace.time[pair])
    return float(crossing - trace.time[peak])


def k_redevelopment(trace: Trace) -> float:
    """Rate k of y = a + b (1 - exp(-k t)) from the lowest value on, k_tr after a restretch."""
    return _rate(trace, int(trace.values.argmin()), 1.0, "redevelop")


def k_recovery(trace: Trace) -> float:
    """Rate k of y = a + b (1 - exp(-k t)) from the first value on, upwards or downwards."""
    later = trace.values[-max(len(trace.values) // 4, 1) :].mean()
    return _rate(trace, 0, 1.0 if later > trace.values[0] else -1.0, "recover")


def _rate(trace: Trace, first: int, sign: float, verb: str) -> float:
    """Refuses what is no exponential: too few points, no change above the noise, no plateau."""
    time, values = trace.time[first:] - trace.time[first], sign * trace.values[first:]
    if len(time) < LEAST_POINTS:
        raise Refused(f"it doesn't {verb}: {len(time)} points from its extreme on")

    def law(t: np.ndarray, low: float, rise: float, k: float) -> np.ndarray:
        return low + rise * (1.0 - np.exp(-k * t))

    risen = values[-max(len(values) // 4, 1) :].mean() - values[0]
    if not risen > 0:
        raise Refused(f"it doesn't {verb}: no change behind its extreme")
    crossing = time[np.argmax(values - values[0] >= 0.63 * risen)]
    start = (values[0], risen, 1.0 / max(crossing, time[1]))
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("error", OptimizeWarning)
            best, covariance = curve_fit(law, time, values, p0=start, maxfev=2000)
    except (RuntimeError, OptimizeWarning) as error:
        raise Refused(f"it doesn't {verb}: no exponential found") from error
    low, rise, k = map(float, best)
    noise = float(np.std(values - law(time, *best)))
    # A single lowest point of a steady trace lies a few times the noise below the others.
    if not rise > 4.0 * noise:
        raise Refused(f"it doesn't {verb}: a change of {rise:.3g} with a noise of {noise:.3g}")
    error = float(np.sqrt(covariance[2, 2]))
    if not (k * time[-1] > 1.0 and k * time[1] < 3.0 and error < 0.5 * k):
        raise Refused(f"it doesn't {verb} within the window: k = {k:.3g} +- {error:.2g}")
    return k


def work(trace: Trace) -> float:
    """Done by the muscle in a cycle: minus the integral of force over length."""
    cycles = (trace.end - trace.start) * (trace.frequency or 0.0)
    if cycles < 1.0 - 1e-6:
        raise Refused("the window holds no whole cycle")
    return _whole_work(trace) / cycles


def power(trace: Trace) -> float:
    """Work done by the muscle in a time."""
    return _whole_work(trace) / (trace.end - trace.start)


def _whole_work(trace: Trace) -> float:
    assert trace.length is not None
    if len(trace.time) < LEAST_POINTS:
        raise Refused(f"{len(trace.time)} points are too few for work")
    # A cycle's last point is its first one, too; without it the loop wouldn't be closed.
    force = np.append(trace.values[-1], trace.values)
    length = np.append(trace.length[-1], trace.length)
    return float(-np.trapz(force, length))


def _rate_of_events(trace: Trace) -> float:
    return float(trace.values.sum() / (trace.end - trace.start))


def _plain(function: Callable[[np.ndarray], np.floating]) -> Callable[[Trace], float]:
    return lambda trace: float(function(trace.values))


@dataclass(frozen=True)
class Take:
    """A way to make a number of a trace, and its unit from that of the column, {}."""

    function: Callable[[Trace], float]
    unit: str = "{}"
    of_events: bool = False  # the rows are events; none is none, and no refusal


TAKES = {
    "mean": Take(_plain(np.mean)),
    "sd": Take(_plain(np.std)),
    "min": Take(_plain(np.min)),
    "max": Take(_plain(np.max)),
    "first": Take(lambda trace: float(trace.values[0])),
    "last": Take(lambda trace: float(trace.values[-1])),
    "slope": Take(slope, "{}/s"),
    "time_to_peak": Take(time_to_peak, "s"),
    "half_relaxation": Take(half_relaxation, "s"),
    "k_tr": Take(k_redevelopment, "1/s"),
    "k_recover": Take(k_recovery, "1/s"),
    "work": Take(work, "{} nm"),
    "power": Take(power, "{} nm/s"),
    "rate": Take(_rate_of_events, "1/s", of_events=True),
}
