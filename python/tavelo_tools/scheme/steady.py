"""Steady states of a head: held at a strain, or under a constant load, with a site in front of it for ever."""

from collections.abc import Sequence

import numpy as np

from .data import Scheme


def steady_state(rates: np.ndarray) -> np.ndarray:
    """Occupancies from the rates [from, to]; not a number where they are undetermined."""
    n = len(rates)
    if not np.isfinite(rates).all():
        return np.full(n, np.nan)
    generator = rates.T - np.diag(rates.sum(axis=1))
    scale = np.abs(np.diag(generator))
    if not scale.any():
        return np.full(n, np.nan)
    # Each balance in units of its own rates, then the sum of the occupancies.
    system = np.vstack([generator / np.where(scale > 0, scale, 1.0)[:, None], np.ones(n)])
    occupancies, _, rank, _ = np.linalg.lstsq(system, np.append(np.zeros(n), 1.0), rcond=1e-13)
    return np.clip(occupancies, 0, 1) if rank == n else np.full(n, np.nan)


def over_strain(scheme: Scheme) -> np.ndarray:
    """Occupancies [strain, state]."""
    return np.array([steady_state(_table(scheme, index)) for index in range(len(scheme.strain))])


def _table(scheme: Scheme, index: int) -> np.ndarray:
    rates = np.zeros((len(scheme.states), len(scheme.states)))
    for rate in scheme.rates:
        rates[rate.origin, rate.target] += rate.values[index]
    return rates


def strains_under(scheme: Scheme, load: float) -> list[float | None]:
    """By state, the strain at which its spring pulls with the load; None for detached states."""
    found: list[float | None] = []
    for state in scheme.states:
        if state.force is None:
            found.append(None)
            continue
        rises = bool(np.all(np.diff(state.force) > 0))
        inside = rises and state.force[0] <= load <= state.force[-1]
        found.append(float(np.interp(load, state.force, scheme.strain)) if inside else float("nan"))
    return found


def over_load(scheme: Scheme, loads: Sequence[float] | np.ndarray) -> np.ndarray:
    """Occupancies [load, state] of a head whose spring carries the load in every attached state: each rate is
    taken at the strain of the attached state that it leaves or, in binding, enters."""
    rows = []
    for load in loads:
        strains = strains_under(scheme, float(load))
        rates = np.zeros((len(scheme.states), len(scheme.states)))
        for rate in scheme.rates:
            strain = strains[rate.origin] if scheme.states[rate.origin].attached else strains[rate.target]
            rates[rate.origin, rate.target] += (
                rate.values[0] if strain is None else np.interp(strain, scheme.strain, rate.values)
            )
        rows.append(steady_state(rates))
    return np.array(rows)


def loads_of(scheme: Scheme) -> np.ndarray:
    """From none to what every attached state can carry within the strains that are told, at most 20 pN."""
    forces = [state.force for state in scheme.states if state.force is not None]
    return np.linspace(0.0, min(20.0, min(float(force[-1]) for force in forces)), 81)
