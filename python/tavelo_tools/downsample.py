"""Fewer points for drawing: the lowest and the highest value of each stretch of time stay."""

import numpy as np

BUCKETS = 700


def downsample(
    x: np.ndarray, y: np.ndarray, buckets: int = BUCKETS
) -> tuple[np.ndarray, np.ndarray]:
    """At most 2 * `buckets` points in their order: first, last and the extremes of every bucket."""
    if len(x) <= 2 * buckets:
        return x, y
    edges = np.linspace(0, len(x), buckets + 1).astype(int)
    keep = {0, len(x) - 1}
    filled = np.nan_to_num(y, nan=0.0)
    for start, end in zip(edges[:-1], edges[1:]):
        stretch = filled[start:end]
        keep.update((start + int(stretch.argmin()), start + int(stretch.argmax())))
    chosen = np.array(sorted(keep))
    return x[chosen], y[chosen]


def downsample_band(
    x: np.ndarray, low: np.ndarray, high: np.ndarray, buckets: int = BUCKETS
) -> tuple[np.ndarray, np.ndarray, np.ndarray]:
    """A band with `buckets` places, nowhere narrower than the one given."""
    if len(x) <= buckets:
        return x, low, high
    starts = np.linspace(0, len(x), buckets + 1).astype(int)[:-1]
    return x[starts], np.minimum.reduceat(low, starts), np.maximum.reduceat(high, starts)
