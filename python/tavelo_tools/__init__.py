"""Reading, plotting and comparing runs of tavelo. Start with `read_run`."""

# The version of everything here, the program's too: pyproject.toml and CMakeLists.txt take it from this line.
__version__ = "0.1.0"

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
