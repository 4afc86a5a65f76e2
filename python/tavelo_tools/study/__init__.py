"""Studies: runs by the hundred from one plan. `tavelo-study` on the command line, `Study` in Python."""

from .errors import StudyError
from .study import Study

__all__ = ["Study", "StudyError"]
