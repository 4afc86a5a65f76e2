"""The 95 % interval of a mean over seeds."""

import numpy as np

LEAST_SEEDS = 3  # below there is nothing to resample
RESAMPLES = 2000


def interval(values: np.ndarray) -> tuple[float, float]:
    """Percentile bootstrap of the mean; NaN for fewer than three values."""
    n = len(values)
    if n < LEAST_SEEDS:
        return float("nan"), float("nan")
    drawn = np.random.default_rng(1).integers(0, n, (RESAMPLES, n))
    low, high = np.percentile(values[drawn].mean(axis=1), (2.5, 97.5))
    return float(low), float(high)
