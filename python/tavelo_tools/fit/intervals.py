"""Intervals on a response surface: profiles of chi-square, errors to first order, and a bootstrap.

Without standard errors of the data chi-square is scaled so that it comes to its degrees of freedom at the best values. The
model's own noise widens every interval: the best values that each seed's surface would give differ, and the variance of
their mean adds to that from the data.
"""

from dataclasses import dataclass

import numpy as np
from scipy.optimize import least_squares
from scipy.stats import chi2, t

from .surface import Surface

LEVEL = 0.95
RESAMPLES = 400
GRID = 25  # points of a profile to each side


@dataclass(frozen=True)
class Data:
    """What the surface stands against."""

    y: np.ndarray
    sigma: np.ndarray
    has_errors: bool

    def rest(self, surface: Surface, point: np.ndarray) -> np.ndarray:
        """What the model stands off the data, in standard errors."""
        return np.asarray((surface.at(point) - self.y) / self.sigma)


@dataclass(frozen=True)
class Profile:
    """Chi-square over one scaled parameter, the others at their best, above its least value; both ends of the interval."""

    x: np.ndarray
    rise: np.ndarray
    threshold: float
    low: float
    high: float

    @property
    def meets_low(self) -> bool:
        """Whether the lower bound fits as well."""
        return self.low <= 0.0

    @property
    def meets_high(self) -> bool:
        return self.high >= 1.0


@dataclass(frozen=True)
class Errors:
    """To first order: covariance of the scaled parameters from the data's scatter and from the model's noise."""

    data: np.ndarray
    model: np.ndarray
    scale: float  # of chi-square, 1 where the data have standard errors

    @property
    def whole(self) -> np.ndarray:
        return self.data + self.model

    @property
    def correlation(self) -> np.ndarray:
        deviation = np.sqrt(np.diag(self.whole))
        return np.asarray(self.whole / np.outer(deviation, deviation))


def best_point(surface: Surface, data: Data, start: np.ndarray, box: tuple[np.ndarray, np.ndarray]) -> np.ndarray:
    """Where the surface fits best within a box."""
    low, high = box
    first = np.clip(start, low + 1e-9, high - 1e-9)
    found = least_squares(
        lambda point: data.rest(surface, point), first, bounds=(low, high),
        jac=lambda point: surface.jacobian(point) / data.sigma[:, None],
    )  # fmt: skip
    return np.asarray(found.x)


def errors_at(surface: Surface, data: Data, point: np.ndarray) -> Errors:
    """At the best point."""
    weighted = surface.jacobian(point) / data.sigma[:, None]
    inverse = np.linalg.pinv(weighted.T @ weighted, rcond=1e-10, hermitian=True)
    freedom = len(data.y) - len(point)
    scale = 1.0 if data.has_errors else float((data.rest(surface, point) ** 2).sum()) / freedom
    apart = (surface.of_seeds(point) - surface.at(point)) / data.sigma
    count = len(apart)
    shifts = -apart @ weighted @ inverse  # of the best point, if there were that seed alone
    noise = shifts.T @ shifts / max(1, count - 1) / count
    if count > 1:  # few seeds tell their own variance badly: Student's t in place of the normal law
        noise *= (t.ppf(0.975, count - 1) / t.ppf(0.975, np.inf)) ** 2
    return Errors(inverse * scale, noise, scale)


def profiles(surface: Surface, data: Data, best: np.ndarray, errors: Errors) -> list[Profile]:
    """One for each parameter."""
    return [_profile(surface, data, best, errors, place) for place in range(len(best))]


def _profile(surface: Surface, data: Data, best: np.ndarray, errors: Errors, place: int) -> Profile:
    freedom = len(data.y) - len(best)
    quantile = float(chi2.ppf(LEVEL, 1)) if data.has_errors else errors.scale * float(t.ppf(0.5 + LEVEL / 2, freedom)) ** 2
    # Both variances are of the same shift, so their ratio tells how much further the profile may rise.
    wider = errors.model[place, place] / max(errors.data[place, place], 1e-300)
    threshold = quantile * (1.0 + wider)
    least = float((data.rest(surface, best) ** 2).sum())
    reach = 4.0 * float(np.sqrt(errors.whole[place, place]))
    sides = [_side(surface, data, best, place, end, least, threshold, reach) for end in (0.0, 1.0)]
    x = np.concatenate([sides[0][0][::-1], [best[place]], sides[1][0]])
    rise = np.concatenate([sides[0][1][::-1], [0.0], sides[1][1]])
    return Profile(x, rise, threshold, sides[0][2], sides[1][2])


def _side(
    surface: Surface, data: Data, best: np.ndarray, place: int, end: float, least: float, threshold: float, reach: float
) -> tuple[np.ndarray, np.ndarray, float]:
    """The profile from the best point towards a bound, and where it passes the threshold: the bound if it never does."""
    near = best[place] + np.clip(end - best[place], -reach, reach)
    steps = np.linspace(best[place], near, GRID)[1:]
    if abs(near - end) > 1e-12:
        steps = np.concatenate([steps, np.linspace(near, end, GRID)[1:]])
    xs, rises, last, start = [], [], (best[place], 0.0), best
    for x in steps:
        start = _others(surface, data, start, place, x)
        rise = float((data.rest(surface, start) ** 2).sum()) - least
        xs.append(x)
        rises.append(rise)
        if rise > threshold:
            # Near its least value chi-square is a parabola, its root a straight line.
            before, after = np.sqrt(max(last[1], 0.0)), np.sqrt(rise)
            share = (np.sqrt(threshold) - before) / (after - before)
            return np.array(xs), np.array(rises), float(last[0] + share * (x - last[0]))
        last = (x, rise)
    return np.array(xs), np.array(rises), end


def _others(surface: Surface, data: Data, start: np.ndarray, place: int, x: float) -> np.ndarray:
    """The best point with one parameter held."""
    point = start.copy()
    point[place] = x
    free = [other for other in range(len(point)) if other != place]
    if not free:
        return point

    def whole(others: np.ndarray) -> np.ndarray:
        filled = point.copy()
        filled[free] = others
        return filled

    found = least_squares(
        lambda others: data.rest(surface, whole(others)), np.clip(point[free], 1e-9, 1 - 1e-9), bounds=(0.0, 1.0),
        jac=lambda others: surface.jacobian(whole(others))[:, free] / data.sigma[:, None],
    )  # fmt: skip
    return whole(found.x)


def bootstrap(surface: Surface, data: Data, best: np.ndarray, errors: Errors) -> np.ndarray:
    """95 % limits [end, parameter] with seeds drawn anew, and data with new errors of their size about the fitted curve."""
    chance = np.random.default_rng(1)
    deviation = data.sigma * np.sqrt(errors.scale)
    count, fitted = surface.seeds.shape[1], surface.at(best)
    found = []
    everywhere = (np.zeros(len(best)), np.ones(len(best)))
    for _ in range(RESAMPLES):
        drawn = surface.with_seeds(chance.integers(0, count, count))
        other = Data(fitted + deviation * chance.normal(size=len(fitted)), data.sigma, data.has_errors)
        found.append(best_point(drawn, other, best, everywhere))
    return np.percentile(found, (50 * (1 - LEVEL), 50 * (1 + LEVEL)), axis=0)


