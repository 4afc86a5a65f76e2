"""What candidates come to: their runs, with the same seeds for each, through a study's store."""

from collections.abc import Sequence
from dataclasses import dataclass
from functools import partial

import numpy as np
import pandas as pd

from ..study.engines import Engine
from ..study.errors import Refused, StudyError
from ..study.plan import Candidates
from ..study.study import Study
from .free import point_of, values_at
from .plan import FitPlan


@dataclass(frozen=True)
class Candidate:
    """Values that were tried. `model` has a row per seed and a column per datum; none if a run has failed."""

    values: dict[str, float]
    point: np.ndarray  # scaled
    seeds: tuple[int, ...]
    model: np.ndarray | None
    message: str = ""
    runs: tuple[str, ...] = ()

    @property
    def mean(self) -> np.ndarray:
        assert self.model is not None
        return self.model.mean(axis=0)


class Evaluator:
    """Computes candidates on an engine, and counts runs."""

    def __init__(self, plan: FitPlan, study: Study, engine: Engine) -> None:
        self.plan, self._study, self._engine = plan, study, engine
        self.runs: set[str] = set()
        self.tried: list[Candidate] = []

    def at(self, points: Sequence[np.ndarray], seeds: Sequence[int]) -> list[Candidate]:
        """The candidates at scaled points, in order."""
        return self.of([values_at(self.plan.free, point) for point in points], seeds)

    def of(self, values: Sequence[dict[str, float]], seeds: Sequence[int]) -> list[Candidate]:
        self._study = study = self._study.of(Candidates(tuple(dict(v) for v in values), tuple(seeds)))
        stopped = [item for item in study.run(engine=self._engine) if item.status == "stopped"]
        if stopped:
            raise StudyError(f"{len(stopped)} runs were stopped: {stopped[0].message or 'interrupted'}; run again to go on")
        table = study.table()
        self.runs |= set(table["run"])
        combinations = self.plan.study.combinations
        make = partial(self._candidate, study)
        made = [make(v, rows) for v, (_, rows) in zip(values, table.groupby(table["condition"] // combinations))]
        self.tried += made
        return made

    def _candidate(self, study: Study, values: dict[str, float], rows: pd.DataFrame) -> Candidate:
        seeds = study.plan.seeds
        made = partial(Candidate, values, point_of(self.plan.free, values), seeds, runs=tuple(rows["run"]))
        failed = rows[rows["status"] != "done"]
        if len(failed):
            return made(None, f"{failed['run'].iloc[0][:8]} failed: {failed['message'].iloc[0]}")
        try:
            model = [self._row(study, rows[rows["seed"] == seed]) for seed in seeds]
        except Refused as error:
            return made(None, str(error))
        return made(np.array(model))

    def _row(self, study: Study, rows: pd.DataFrame) -> np.ndarray:
        ordered = rows.sort_values("condition")
        return np.concatenate([target.of(ordered, study.store) for target in self.plan.targets])

    def misfit(self, model: np.ndarray) -> float:
        """Weighted squares of what the data stand off the model."""
        return float((((model - self.plan.y) / self.plan.sigma) ** 2).sum())


def first_check(evaluator: Evaluator) -> tuple[Candidate, list[str]]:
    """The start, once its runs are known to be sound. StudyError if they aren't, or if a free parameter changes nothing.

    One run per condition at the start, and one at each end of each range. Returns also what was noticed."""
    free, seed = evaluator.plan.free, evaluator.plan.study.seeds[:1]
    start = {item.name: item.start for item in free}
    first = evaluator.of([start], seed)[0]
    if first.model is None:
        raise StudyError(f"{evaluator.plan.study.path.name}: the start can't be fitted: {first.message}")
    noticed = []
    for item in free:
        ends = [end for end in (item.high, item.low) if end != item.start]
        tried = evaluator.of([start | {item.name: end} for end in ends], seed)
        sound = [candidate.model for candidate in tried if candidate.model is not None]
        if sound and all(np.array_equal(model, first.model) for model in sound):
            raise StudyError(f"{item.where}: changes nothing that is fitted between {item.low:g} and {item.high:g}; leave it out")
        for end, candidate in zip(ends, tried):
            if candidate.model is None:
                noticed.append(f"at its bound {item.name} = {end:g} a run fails: {candidate.message}")
    return first, noticed
