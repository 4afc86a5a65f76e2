"""Curves that the field fits to forces, with standard errors and confidence bands.

Hill's curve over pCa:   F = F0 / (1 + 10^(n (pCa - pCa50)))
Hill's hyperbola:        (F/F0 + a) (v + a v0) = (1 + a) a v0, with F = 0 at v0, a short for a/F0
"""

import warnings
from collections.abc import Callable
from dataclasses import dataclass

import numpy as np
from numpy.typing import ArrayLike
from scipy.optimize import OptimizeWarning, approx_fprime, curve_fit
from scipy.stats import t as student


@dataclass(frozen=True)
class Fit:
    """A fitted curve: `values` and their standard errors `errors` by name, the `covariance` of the
    values in that order, the number `points` of points, and `law`, a function of x and the values."""

    values: dict[str, float]
    errors: dict[str, float]
    covariance: np.ndarray
    points: int
    law: Callable[..., np.ndarray]

    def curve(self, x: ArrayLike) -> np.ndarray:
        """The fitted curve at x."""
        return self.law(np.asarray(x, dtype=float), *self.values.values())

    def band(self, x: ArrayLike, level: float = 0.95) -> tuple[np.ndarray, np.ndarray]:
        """Lower and upper end of the confidence band of the curve at x: what the scatter of the points
        leaves open of the curve, not where single points lie. To first order in the errors of the
        values, with Student's t for the degrees of freedom. ValueError unless 0 < level < 1."""
        if not 0 < level < 1:
            raise ValueError(f"the level of a band is {level}; accepted: between 0 and 1")
        places = np.atleast_1d(np.asarray(x, dtype=float))
        best = np.array(list(self.values.values()))
        slopes = np.array([approx_fprime(best, lambda v, p=p: float(self.law(p, *v))) for p in places])
        error = np.sqrt(np.einsum("ij,jk,ik->i", slopes, self.covariance, slopes))
        half = student.ppf((1 + level) / 2, self.points - len(best)) * error
        middle, half = self.curve(x), half.reshape(np.shape(x))
        return middle - half, middle + half

    def __str__(self) -> str:
        def shown(name: str) -> str:
            error = float(f"{self.errors[name]:.2g}")
            return f"{name} = {self.values[name]:.4g} \u00b1 {error:g}"

        return ", ".join(map(shown, self.values))


def hill_pca(pca: ArrayLike, highest: float, pca_50: float, n: float) -> np.ndarray:
    """Hill's curve: force at a pCa, in the unit of `highest`; `n` is its steepness at `pca_50`."""
    return highest / (1.0 + 10.0 ** (n * (np.asarray(pca) - pca_50)))


def hill_hyperbola(speed: ArrayLike, v0: float, a: float) -> np.ndarray:
    """Hill's hyperbola: force relative to the isometric one at a speed of shortening, in the unit
    of the unloaded speed `v0`; `a` is a/F0, the smaller the more curved."""
    speed = np.asarray(speed)
    return (1.0 - speed / v0) / (1.0 + speed / (a * v0))


def _checked(what: str, x: ArrayLike, y: ArrayLike, least: int) -> tuple[np.ndarray, np.ndarray]:
    """x and y as arrays, if a curve can be put through them."""
    x, y = (np.asarray(values, dtype=float).ravel() for values in (x, y))
    if len(x) != len(y):
        raise ValueError(f"{what}: {len(x)} places but {len(y)} values")
    for values in (x, y):
        if not np.isfinite(values).all():
            at = int(np.flatnonzero(~np.isfinite(values))[0])
            raise ValueError(f"{what}: point {at + 1} of {len(x)} holds {values[at]}, which is no number")
    if len(np.unique(x)) < least:
        raise ValueError(f"{what}: {len(np.unique(x))} different places are too few; it takes {least}")
    if not y.any():
        raise ValueError(f"{what}: all {len(y)} values are 0")
    return x, y


def _fit(
    what: str,
    law: Callable[..., np.ndarray],
    names: tuple[str, ...],
    x: np.ndarray,
    y: np.ndarray,
    start: tuple[float, ...],
) -> Fit:
    """Least squares. ValueError if no curve fits, or many do."""
    try:
        with warnings.catch_warnings(), np.errstate(all="ignore"):
            warnings.simplefilter("ignore", OptimizeWarning)
            best, covariance = curve_fit(law, x, y, p0=start)
    except RuntimeError as error:
        raise ValueError(f"{what}: no curve of this kind comes near the points") from error
    if not np.isfinite(covariance).all():
        raise ValueError(f"{what}: the points do not determine {', '.join(names)}")
    errors = np.sqrt(np.diag(covariance))
    values = dict(zip(names, map(float, best)))
    return Fit(values, dict(zip(names, map(float, errors))), covariance, len(x), law)


def fit_hill_pca(pca: ArrayLike, force: ArrayLike) -> Fit:
    """Hill's curve through forces [any unit] over pCa: `F0` [that unit], `pCa50`, `n`. ValueError for
    fewer than four different pCa, for values that are all 0 or no numbers, or if no curve is found."""
    pca, force = _checked("Hill's curve", pca, force, 4)
    half = pca[np.abs(force - force.max() / 2).argmin()]
    start = (float(force.max()), float(half), 2.0)
    return _fit("Hill's curve", hill_pca, ("F0", "pCa50", "n"), pca, force, start)


def fit_hill_hyperbola(speed: ArrayLike, relative_force: ArrayLike) -> Fit:
    """Hill's hyperbola through forces relative to the isometric one over speeds of shortening [any
    unit]: `v0` [that unit], `a/F0`. ValueError for fewer than three different speeds, for values
    that are all 0 or no numbers, or if no curve is found."""
    speed, force = _checked("Hill's hyperbola", speed, relative_force, 3)
    start = (float(np.abs(speed).max()), 0.25)
    return _fit("Hill's hyperbola", hill_hyperbola, ("v0", "a/F0"), speed, force, start)


def intercept(x: ArrayLike, y: ArrayLike) -> float:
    """Where the straight line of least squares through the points meets 0, in the unit of x.
    ValueError for fewer than two different x, for values that are all 0 or no numbers, or if y
    doesn't change with x."""
    x, y = _checked("straight line", x, y, 2)
    slope, height = np.polyfit(x, y, 1)
    if abs(slope) * np.ptp(x) <= 1e-12 * np.abs(y).max():
        raise ValueError("straight line: it is level, and never meets 0")
    return float(-height / slope)


def mean_and_error(values: ArrayLike, blocks: int = 4) -> tuple[float, float]:
    """Mean of a course and its standard error, from the means of `blocks` stretches of time.

    The values of neighbouring steps depend on each other, so their own scatter over the root of
    their number would be far too small an error. ValueError for fewer than two blocks, fewer values
    than blocks, or values that are no numbers."""
    course = np.asarray(values, dtype=float).ravel()
    if blocks < 2 or len(course) < blocks:
        raise ValueError(f"mean of a course: {len(course)} values can't be cut into {blocks} blocks")
    if not np.isfinite(course).all():
        raise ValueError("mean of a course: some of its values are no numbers")
    means = [block.mean() for block in np.array_split(course, blocks)]
    return float(course.mean()), float(np.std(means, ddof=1) / np.sqrt(blocks))
