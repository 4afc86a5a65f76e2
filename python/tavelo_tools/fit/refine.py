"""The refinement: rounds of points about the best, a response surface through them, and where that fits best.

The box of a round reaches three standard errors to each side, as far as is known, so that intervals lie within it.
"""

from dataclasses import dataclass

import numpy as np
from scipy.stats import qmc

from .evaluate import Candidate, Evaluator
from .intervals import Data, best_point, errors_at
from .surface import Surface, coefficients

FIRST_HALF = 0.2  # of the box, in scaled parameters
REACH = 3.0  # standard errors
LEAST_HALF, MOST_HALF = 0.02, 0.5
MOST_ROUNDS = 8
SETTLED = 0.3  # of a standard error by which the best point may still move


@dataclass(frozen=True)
class Refined:
    """The last surface, where it fits best, and how the rounds went."""

    surface: Surface
    best: np.ndarray
    rounds: int
    settled: bool


def refine(evaluator: Evaluator, start: np.ndarray, data: Data) -> Refined | None:
    """Goes on until the best point stays, or the runs are used; None if too many candidates have failed."""
    plan = evaluator.plan
    cost = plan.round_points * plan.per_candidate
    limit = plan.runs - 2 * plan.per_candidate  # those of the final candidate
    centre, half = start, np.full(len(start), FIRST_HALF)
    result: Refined | None = None
    number = 0
    while number == 0 or (number < MOST_ROUNDS and len(evaluator.runs) + cost <= limit):
        centre, half = _inside(centre, half)
        evaluator.at(_design(centre, half, plan.round_points, number), plan.study.seeds)
        number += 1
        surface = _surface(evaluator, centre, half)
        if surface is None:
            half = np.minimum(0.5 * half, MOST_HALF)
            continue
        box = np.clip(centre - half, 0, 1), np.clip(centre + half, 0, 1)
        best = best_point(surface, data, centre, box)
        error = np.sqrt(np.diag(errors_at(surface, data, best).whole))
        wanted = np.clip(REACH * error, LEAST_HALF, MOST_HALF)
        held = _is_held(best, centre, half)
        fits = bool(((wanted < 1.5 * half) & (wanted > 0.4 * half)).all())
        settled = not held and fits and bool((np.abs(best - centre) < np.maximum(SETTLED * error, 0.5 * half)).all())
        result = Refined(surface, best, number, settled)
        if settled and number > 1 and bool((np.abs(best - centre) < np.maximum(SETTLED * error, 0.25 * half)).all()):
            break
        centre, half = best, np.maximum(half, wanted) if held else wanted
    return result


def _inside(centre: np.ndarray, half: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """A box of the same size that lies within the bounds."""
    half = np.minimum(half, MOST_HALF)
    return np.clip(centre, half, 1 - half), half


def _is_held(best: np.ndarray, centre: np.ndarray, half: np.ndarray) -> bool:
    """By an end of the box that is no bound."""
    at_end = np.abs(best - centre) > 0.98 * half
    return bool((at_end & (best > 0.001) & (best < 0.999)).any())


def _design(centre: np.ndarray, half: np.ndarray, count: int, number: int) -> list[np.ndarray]:
    """Points that fill the box evenly, its middle among them."""
    sampler = qmc.LatinHypercube(len(centre), seed=number, optimization="random-cd")
    spread = 2.0 * sampler.random(count - 1) - 1.0
    return [centre, *(centre + half * row for row in spread)]


def _surface(evaluator: Evaluator, centre: np.ndarray, half: np.ndarray) -> Surface | None:
    """Through everything within the box that was run with all seeds."""
    seeds = evaluator.plan.study.seeds
    found: dict[bytes, Candidate] = {}
    for candidate in evaluator.tried:
        inside = (np.abs(candidate.point - centre) <= 1.001 * half).all()
        if candidate.model is not None and candidate.seeds == seeds and inside:
            found[candidate.point.tobytes()] = candidate
    if len(found) <= coefficients(len(centre)):
        return None
    points = np.array([candidate.point for candidate in found.values()])
    models = np.array([candidate.model for candidate in found.values()])
    return Surface.through(centre, half, points, models)
