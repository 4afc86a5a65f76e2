"""What the rows of docs/validation.md have in common: comparisons, their verdicts, their points in a picture."""

import math
from collections.abc import Iterable, Sequence
from dataclasses import dataclass, field

import numpy as np
import pandas as pd
from matplotlib.axes import Axes
from scipy.stats import t as student
from tavelo_tools import Run, Study, read_run

ONCE_IN = 1e-6  # a right program fails a comparison with this probability: 4.9 standard errors where they are known
PASS, FAIL, TOLD = "agrees", "FAILS", "told"


@dataclass(frozen=True)
class Check:
    """One comparison. `allowed` is the largest deviation that passes; None where nothing is judged."""

    what: str
    theory: str
    program: float
    deviation: float | None
    error: float
    allowed: float | None
    note: str = ""
    is_limit: bool = False  # what is below it doesn't deviate

    @property
    def verdict(self) -> str:
        if self.allowed is None or self.deviation is None:
            return self.note or TOLD
        return PASS if abs(self.deviation) <= self.allowed else FAIL  # a deviation that is no number fails

    @property
    def in_errors(self) -> float:
        """Deviation in standard errors."""
        if self.deviation is None or self.is_limit or not self.error > 0:
            return math.nan
        return self.deviation / self.error


@dataclass
class Checks:
    """Collects the comparisons of a row."""

    found: list[Check] = field(default_factory=list)

    def over_seeds(self, what: str, theory: float, values: Iterable[float]) -> None:
        """Chance: the mean over seeds, with its standard error and Student's factor for so few values."""
        taken = np.asarray(list(values), dtype=float)
        error = float(taken.std(ddof=1) / math.sqrt(len(taken)))
        self._judge(what, theory, float(taken.mean()), error, error * student.isf(ONCE_IN / 2, len(taken) - 1))

    def counted(self, what: str, theory: float, found: float, error: float) -> None:
        """Chance whose standard error is known, such as that of counted events."""
        self._judge(what, theory, found, error, error * student.isf(ONCE_IN / 2, np.inf))

    def exact(self, what: str, theory: float, found: float, relative: float, why: str) -> None:
        """No chance: up to a relative deviation that has a reason."""
        self._judge(what, theory, found, 0.0, relative * max(abs(theory), 1e-300) if theory else relative, why)

    def at_most(self, what: str, limit: float, values: Iterable[float]) -> None:
        """The mean over seeds is at most the limit, or beyond it by chance only."""
        taken = np.asarray(list(values), dtype=float)
        error = float(taken.std(ddof=1) / math.sqrt(len(taken)))
        beyond = max(0.0, float(taken.mean()) - limit)
        allowed = error * student.isf(ONCE_IN, len(taken) - 1)
        self.found.append(Check(what, f"at most {limit:.4g}", float(taken.mean()), beyond, error, allowed, is_limit=True))

    def published(self, what: str, low: float, high: float, found: float, error: float, source: str) -> None:
        """A published range. The model, not the program, answers for what lies outside, so nothing fails."""
        lies = "inside" if low <= found <= high else "outside"
        theory = f"{low:g} to {high:g} ({source})"
        self.found.append(Check(what, theory, found, None, error, None, lies))

    def told(self, what: str, found: float, error: float, note: str = TOLD) -> None:
        """A figure without a theory."""
        self.found.append(Check(what, "", found, None, error, None, note))

    def _judge(self, what: str, theory: float, found: float, error: float, allowed: float, note: str = "") -> None:
        self.found.append(Check(what, f"{theory:.5g}", found, found - theory, error, float(allowed), note))

    @property
    def failed(self) -> list[Check]:
        return [check for check in self.found if check.verdict == FAIL]

    @staticmethod
    def read(study: Study, name: str) -> Run:
        """A run of a study by its name in `study.table()`."""
        return read_run(study.store.folder(name))

    @staticmethod
    def points(axes: Axes, table: pd.DataFrame, x: str, values: "pd.Series[float]", label: str, marker: str = "o") -> None:
        """Means over seeds with standard errors."""
        groups = values.groupby(table[x])
        errors = (groups.std() / np.sqrt(groups.count())).fillna(0.0)
        axes.errorbar(groups.mean().index, groups.mean(), errors, fmt=marker, ms=4, capsize=2, label=label)


COLUMNS = ("quantity", "theory", "program", "deviation", "standard error", "deviation / error", "verdict")


def markdown(checks: Sequence[Check]) -> str:
    """The comparisons as a table."""
    lines = [f"| {' | '.join(COLUMNS)} |", "|---" * len(COLUMNS) + "|"]
    for check in checks:
        deviation = "" if check.deviation is None else f"{check.deviation:.2g}"
        error = f"{check.error:.2g}" if check.error else ""
        ratio = "" if math.isnan(check.in_errors) else f"{check.in_errors:.1f}"
        judged = f"{check.verdict}: {check.note}" if check.note and check.allowed is not None else check.verdict
        lines.append(f"| {check.what} | {check.theory} | {check.program:.5g} | {deviation} | {error} | {ratio} | {judged} |")
    return "\n".join(lines)
