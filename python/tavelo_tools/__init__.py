"""Reading, plotting and comparing runs of tavelo. Start with `read_run`."""

from .fits import (
    Fit,
    fit_hill_hyperbola,
    fit_hill_pca,
    hill_hyperbola,
    hill_pca,
    intercept,
    mean_and_error,
)
from .read import Problem, Run, RunError, read_run

__all__ = [
    "Fit",
    "Problem",
    "Run",
    "RunError",
    "fit_hill_hyperbola",
    "fit_hill_pca",
    "hill_hyperbola",
    "hill_pca",
    "intercept",
    "mean_and_error",
    "read_run",
]
