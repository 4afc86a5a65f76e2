"""Plans of fits: those of a study, with what is free, what it is fitted to, and how it is searched."""

from dataclasses import dataclass
from pathlib import Path

import numpy as np

from ..study.plan import Candidates, Plan, read_plan, read_table
from ..study.toml_text import Table
from .free import Free, read_free
from .surface import coefficients
from .targets import Target, read_targets

SAMPLERS = ("cma", "tpe", "random")
SEARCH_SHARE = 0.4  # of the runs; the rest is for the refinement


@dataclass(frozen=True)
class FitPlan:
    """What is fitted to what. `study` has the start as its only candidate, and all seeds."""

    study: Plan
    free: tuple[Free, ...]
    targets: tuple[Target, ...]
    sampler: str
    runs: int  # at most

    @property
    def y(self) -> np.ndarray:
        """All data, target by target."""
        return np.concatenate([target.y for target in self.targets])

    @property
    def sigma(self) -> np.ndarray:
        return np.concatenate([target.sigma for target in self.targets])

    @property
    def has_errors(self) -> bool:
        return self.targets[0].has_errors

    @property
    def freedom(self) -> int:
        """Degrees of freedom that the data leave."""
        return len(self.y) - len(self.free)

    @property
    def per_candidate(self) -> int:
        """Runs of a candidate with all seeds."""
        return self.study.combinations * len(self.study.seeds)

    @property
    def round_points(self) -> int:
        """Candidates of a round of the refinement."""
        return max(coefficients(len(self.free)) + 4, -(-3 * coefficients(len(self.free)) // 2))

    @property
    def search_runs(self) -> int:
        """What of the runs is for the search."""
        return int(SEARCH_SHARE * (self.runs - 2 * self.per_candidate))


def read_fit_plan(path: Path) -> FitPlan:
    """The plan of a fit in a file. StudyError says what can't be read, with file and line."""
    top = read_table(path)
    free = read_free(top.table("free"))
    study = read_plan(path, Candidates(({item.name: item.start for item in free},), ()))
    targets = read_targets(top.table("target"), study)
    table = top.table("search")
    table.allow(["sampler", "runs"])
    plan = FitPlan(study, free, targets, _sampler(table), table.get("runs", int, 300, "a number of runs"))
    if plan.freedom < 1:
        told = f"has {len(plan.y)} data for {len(free)} free parameters"
        raise top.table("target").fail("", f"{told}; accepted: more data than parameters")
    least = int(np.ceil((plan.round_points + 1) * plan.per_candidate / (1 - SEARCH_SHARE)))
    least += 2 * plan.per_candidate
    if plan.runs < least:
        why = f"as a candidate with all seeds takes {plan.per_candidate}"
        raise table.fail("runs", f"is {plan.runs}; accepted: {least} or more, {why}")
    return plan


def _sampler(table: Table) -> str:
    sampler: str = table.get("sampler", str, "cma", ", ".join(SAMPLERS))
    if sampler not in SAMPLERS:
        raise table.fail("sampler", f"is '{sampler}'; accepted: {', '.join(SAMPLERS)}")
    return sampler
