"""Curves that the field fits to forces, with standard errors.

Hill's curve over pCa:   F = F0 / (1 + 10^(n (pCa - pCa50)))
Hill's hyperbola:        (F/F0 + a) (v + a v0) = (1 + a) a v0, with F = 0 at v0, a short for a/F0
"""

from collections.abc import Callable
from dataclasses import dataclass

import numpy as np
from numpy.typing import ArrayLike
from scipy.optimize import curve_fit


@dataclass(frozen=True)
class Fit:
    """Fitted values by name, their standard errors, and the curve through them."""

    values: dict[str, float]
    errors: dict[str, float]
    curve: Callable[[ArrayLike], np.ndarray]

    def __str__(self) -> str:
        def shown(name: str) -> str:
            error = float(f"{self.errors[name]:.2g}")
            return f"{name} = {self.values[name]:.4g} \u00b1 {error:g}"

        return ", ".join(map(shown, self.values))


def hill_pca(pca: ArrayLike, highest: float, pca_50: float, n: float) -> np.ndarray:
    """Force at a pCa."""
    return highest / (1.0 + 10.0 ** (n * (np.asarray(pca) - pca_50)))


def hill_hyperbola(speed: ArrayLike, v0: float, a: float) -> np.ndarray:
    """Force relative to the isometric one at a speed of shortening."""
    speed = np.asarray(speed)
    return (1.0 - speed / v0) / (1.0 + speed / (a * v0))


def _fit(
    law: Callable[..., np.ndarray],
    names: tuple[str, ...],
    x: ArrayLike,
    y: ArrayLike,
    start: tuple[float, ...],
) -> Fit:
    """Least squares. ValueError if there are too few points or none of the curves fits."""
    x, y = np.asarray(x, dtype=float), np.asarray(y, dtype=float)
    if len(x) <= len(names):
        raise ValueError(f"{len(x)} points are too few for {len(names)} parameters")
    try:
        best, covariance = curve_fit(law, x, y, p0=start)
    except RuntimeError as error:
        raise ValueError(f"no curve found: {error}") from error
    errors = np.sqrt(np.diag(covariance))
    return Fit(
        dict(zip(names, map(float, best))),
        dict(zip(names, map(float, errors))),
        lambda fine: law(fine, *best),
    )


def fit_hill_pca(pca: ArrayLike, force: ArrayLike) -> Fit:
    """`F0` [unit of force], `pCa50`, `n`."""
    pca, force = np.asarray(pca, dtype=float), np.asarray(force, dtype=float)
    half = pca[np.abs(force - force.max() / 2).argmin()] if len(pca) else 6.0
    return _fit(hill_pca, ("F0", "pCa50", "n"), pca, force, (float(force.max()), float(half), 2.0))


def fit_hill_hyperbola(speed: ArrayLike, relative_force: ArrayLike) -> Fit:
    """`v0` [unit of speed], `a/F0`."""
    start = (float(np.max(np.asarray(speed))), 0.25)
    return _fit(hill_hyperbola, ("v0", "a/F0"), speed, relative_force, start)


def intercept(x: ArrayLike, y: ArrayLike) -> float:
    """Where the straight line through the points meets 0."""
    slope, height = np.polyfit(np.asarray(x), np.asarray(y), 1)
    return float(-height / slope)


def mean_and_error(values: ArrayLike, blocks: int = 4) -> tuple[float, float]:
    """Mean of a course and its standard error, from the means of blocks of time.

    The values of neighbouring steps depend on each other, so their own scatter over the root of
    their number would be far too small an error."""
    course = np.asarray(values, dtype=float)
    means = [block.mean() for block in np.array_split(course, blocks)]
    return float(course.mean()), float(np.std(means, ddof=1) / np.sqrt(blocks))
