"""Response surfaces: each datum's model value as a quadratic in the scaled parameters, by linear least squares.

Source:  G. E. P. Box, K. B. Wilson, J. R. Stat. Soc. B 13 (1951) 1
Assumes: within the box the model is smooth; its noise averages out over points and seeds

A surface per seed goes through that seed's runs. As all seeds have the same points, their mean is the surface of the mean,
and how they differ is the model's own noise: with what the runs of a seed have in common, and neighbouring data, too.
"""

from dataclasses import dataclass

import numpy as np


def coefficients(dimensions: int) -> int:
    """Of a quadratic."""
    return (dimensions + 1) * (dimensions + 2) // 2


@dataclass(frozen=True)
class Surface:
    """In a box round `centre`, `half` wide to each side; `seeds` has [coefficient, seed, datum]."""

    centre: np.ndarray
    half: np.ndarray
    seeds: np.ndarray
    lack: np.ndarray  # variance of the means about the surface, by datum

    @classmethod
    def through(cls, centre: np.ndarray, half: np.ndarray, points: np.ndarray, models: np.ndarray) -> "Surface":
        """Through models [point, seed, datum]."""
        basis = _basis((points - centre) / half)
        flat = models.reshape(len(points), -1)
        found = np.linalg.lstsq(basis, flat, rcond=None)[0]
        rest = models.mean(axis=1) - basis @ found.reshape(-1, *models.shape[1:]).mean(axis=1)
        freedom = max(1, len(points) - basis.shape[1])
        return cls(centre, half, found.reshape(-1, *models.shape[1:]), (rest**2).sum(axis=0) / freedom)

    def of_seeds(self, point: np.ndarray) -> np.ndarray:
        """[seed, datum]."""
        return np.asarray(np.tensordot(_basis((point - self.centre)[None] / self.half)[0], self.seeds, axes=1))

    def at(self, point: np.ndarray) -> np.ndarray:
        """Mean over the seeds."""
        return np.asarray(_basis((point - self.centre)[None] / self.half)[0] @ self.seeds.mean(axis=1))

    def jacobian(self, point: np.ndarray) -> np.ndarray:
        """[datum, parameter]; central differences of a quadratic are exact."""
        steps = np.diag(self.half)
        return np.array([(self.at(point + step) - self.at(point - step)) / (2 * step.sum()) for step in steps]).T

    def with_seeds(self, chosen: np.ndarray) -> "Surface":
        """Of some of the seeds, also of one several times."""
        return Surface(self.centre, self.half, self.seeds[:, chosen], self.lack)


def _basis(z: np.ndarray) -> np.ndarray:
    count = z.shape[1]
    products = [z[:, i] * z[:, j] for i in range(count) for j in range(i, count)]
    return np.column_stack([np.ones(len(z)), *z.T, *products])
