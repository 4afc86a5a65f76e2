"""Reading, plotting and comparing runs of tavelo, and studies. Start with `read_run` or `Study`."""

from typing import TYPE_CHECKING

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

if TYPE_CHECKING:
    from .study import Study, StudyError

__all__ = [
    "__version__",
    "Fit",
    "Problem",
    "Run",
    "RunError",
    "Study",
    "StudyError",
    "fit_hill_hyperbola",
    "fit_hill_pca",
    "hill_hyperbola",
    "hill_pca",
    "intercept",
    "mean_and_error",
    "read_run",
]


def __getattr__(name: str) -> object:
    """Loads what studies need when it is first asked for."""
    if name in ("Study", "StudyError"):
        from . import study

        return getattr(study, name)
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
