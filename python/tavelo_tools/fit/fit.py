"""A fit: the search, its refinement, and what comes of it.

    fit = ParameterFit.load("rates.toml")
    result = fit.run(jobs=4)
    result.table()          # best values with intervals
"""

from contextlib import nullcontext
from dataclasses import dataclass, replace
from pathlib import Path

import numpy as np
import pandas as pd
from optuna.trial import FrozenTrial, TrialState
from scipy.stats import chi2

from ..study.engines import Engine, LocalEngine
from ..study.errors import StudyError
from ..study.store import Store
from ..study.study import Study
from ..study.work import processors
from .evaluate import Candidate, Evaluator, first_check
from .free import Free, values_at
from .intervals import Data, Errors, Profile, best_point, bootstrap, errors_at, profiles
from .plan import FitPlan, read_fit_plan
from .refine import Refined, refine
from .search import Search


@dataclass(frozen=True)
class Estimate:
    """A free parameter's best value and its 95 % interval: by profile, and by bootstrap as a check."""

    free: Free
    value: float
    low: float
    high: float
    boot: tuple[float, float]
    profile: Profile

    @property
    def is_determined(self) -> bool:
        return not (self.profile.meets_low and self.profile.meets_high)

    def word(self) -> str:
        """What the data leave open, if they do."""
        name = self.free.name
        if not self.is_determined:
            return f"{name} is not determined by these data: any value from {self.low:g} to {self.high:g} fits as well"
        if self.profile.meets_low:
            return f"{name} has no lower limit by these data: all below {self.high:g} fits as well, down to its bound {self.low:g}"
        if self.profile.meets_high:
            return f"{name} has no upper limit by these data: all above {self.low:g} fits as well, up to its bound {self.high:g}"
        return ""


@dataclass(frozen=True)
class ParameterFitResult:
    """What a fit has found. `final` is the best candidate, run with all seeds and as many fresh ones."""

    plan: FitPlan
    store: Store
    estimates: tuple[Estimate, ...]
    errors: Errors
    final: Candidate
    trials: list[FrozenTrial]
    tried: list[Candidate]
    runs: int
    noticed: list[str]

    @property
    def misfit(self) -> float:
        """Chi-square of the final candidate's mean over all of its seeds."""
        return float((((self.final.mean - self.plan.y) / self.plan.sigma) ** 2).sum())

    @property
    def noise(self) -> np.ndarray:
        """Variance of the final candidate's mean that is the model's own, by datum."""
        assert self.final.model is not None
        count = len(self.final.seeds)
        return np.asarray(self.final.model.var(axis=0, ddof=1) / count) if count > 1 else np.zeros(len(self.plan.y))

    @property
    def noise_misfit(self) -> float:
        """What of the misfit is to be expected from the model's own noise."""
        return float((self.noise / self.plan.sigma**2).sum())

    @property
    def chance(self) -> float:
        """That data with these errors lie so far from this model, or farther; NaN if the errors aren't known."""
        if not self.plan.has_errors:
            return float("nan")
        rest = (self.final.mean - self.plan.y) ** 2 / (self.plan.sigma**2 + self.noise)
        return float(chi2.sf(rest.sum(), self.plan.freedom))

    @property
    def failed(self) -> int:
        """Candidates of which a run has failed."""
        return len({tuple(c.values.items()) for c in self.tried if c.model is None})

    def table(self) -> pd.DataFrame:
        """A row per free parameter."""
        rows = [(e.free.name, e.value, e.low, e.high, *e.boot, self.plan.study.unit(e.free.name), e.is_determined, e.word())
                for e in self.estimates]  # fmt: skip
        columns = ["parameter", "value", "low", "high", "boot_low", "boot_high", "unit", "determined", "note"]
        return pd.DataFrame(rows, columns=columns)

    def correlation(self) -> pd.DataFrame:
        """Between the free parameters."""
        names = [e.free.name for e in self.estimates]
        return pd.DataFrame(self.errors.correlation, index=names, columns=names)

    def residuals(self) -> pd.DataFrame:
        """A row per datum: where, data, se if known, model with its own error, and their difference."""
        parts, place = [], 0
        for target in self.plan.targets:
            part = slice(place, place + len(target.y))
            place = part.stop
            model = self.final.mean[part]
            parts.append(pd.DataFrame({
                "target": target.name, "x": target.x, "data": target.y, "se": target.sigma if target.has_errors else np.nan,
                "model": model, "model_se": np.sqrt(self.noise[part]), "residual": target.y - model,
            }))  # fmt: skip
        return pd.concat(parts, ignore_index=True)


class ParameterFit:
    """A plan of a fit, with a folder for its runs and results."""

    def __init__(self, plan: FitPlan, out: Path | None = None, program: Path | None = None) -> None:
        self.plan = plan
        self.study = Study(plan.study, out, program)

    @classmethod
    def load(cls, plan: Path | str, out: Path | str | None = None, program: Path | str | None = None) -> "ParameterFit":
        """The fit of a plan file. StudyError says what is wrong with the plan."""
        return cls(read_fit_plan(Path(plan)), Path(out) if out else None, Path(program) if program else None)

    def run(self, jobs: int | None = None, engine: Engine | None = None) -> ParameterFitResult:
        """Searches, refines and runs the best candidate; what was computed before isn't computed again."""
        self._ask_program()
        self.study.out.mkdir(parents=True, exist_ok=True)
        with nullcontext(engine) if engine else LocalEngine(jobs or processors()) as used:
            return self._run(Evaluator(self.plan, self.study, used))

    def _ask_program(self) -> None:
        """Whether it accepts the start and both ends of each range."""
        start = {item.name: item.start for item in self.plan.free}
        ends = [start | {item.name: end} for item in self.plan.free for end in (item.low, item.high)]
        self.study.check(replace(self.plan.study, candidates=(start, *ends)))

    def _run(self, evaluator: Evaluator) -> ParameterFitResult:
        _, noticed = first_check(evaluator)
        search = Search(evaluator, self.study.out / "search.db")
        trials = search.run()
        start = self._best_trial(trials)
        data = Data(self.plan.y, self.plan.sigma, self.plan.has_errors)
        refined = refine(evaluator, start, data)
        if refined is None:
            raise StudyError(f"{self.plan.study.path.name}: too many candidates about the best one fail: {_a_failure(evaluator)}")
        return self._result(evaluator, refined, data, trials, noticed)

    def _best_trial(self, trials: list[FrozenTrial]) -> np.ndarray:
        """Among those with the most seeds: with fewer a low misfit may be luck."""
        done = [trial for trial in trials if trial.state == TrialState.COMPLETE]
        if not done:
            raise StudyError(f"{self.plan.study.path.name}: all candidates have failed: {trials[0].user_attrs.get('message', '')}")
        most = max(trial.user_attrs["seeds"] for trial in done)
        best = min((trial for trial in done if trial.user_attrs["seeds"] == most), key=lambda trial: trial.value)
        return np.array([item.scaled(best.params[item.name]) for item in self.plan.free])

    def _result(
        self, evaluator: Evaluator, refined: Refined, data: Data, trials: list[FrozenTrial], noticed: list[str]
    ) -> ParameterFitResult:
        plan, surface = self.plan, refined.surface
        everywhere = (np.zeros(len(plan.free)), np.ones(len(plan.free)))
        best = best_point(surface, data, refined.best, everywhere) if refined.settled else refined.best
        errors = errors_at(surface, data, best)
        limits = bootstrap(surface, data, best, errors)
        found = zip(plan.free, best, profiles(surface, data, best, errors), limits.T)
        estimates = tuple(
            Estimate(free, free.value(u), free.value(p.low), free.value(p.high), (free.value(b[0]), free.value(b[1])), p)
            for free, u, p, b in found
        )
        final = evaluator.of([values_at(plan.free, best)], (*plan.study.seeds, *fresh_seeds(plan)))[0]
        if final.model is None:
            raise StudyError(f"{plan.study.path.name}: the best candidate can't be run: {final.message}")
        result = ParameterFitResult(plan, self.study.store, estimates, errors, final, trials, evaluator.tried, len(evaluator.runs), noticed)
        noticed += _noticed(result, refined)
        return result


def fresh_seeds(plan: FitPlan) -> tuple[int, ...]:
    """As many as the plan has, which no candidate has been chosen by."""
    first = max(plan.study.seeds) + 1
    return tuple(range(first, first + len(plan.study.seeds)))


def _a_failure(evaluator: Evaluator) -> str:
    return next((c.message for c in reversed(evaluator.tried) if c.model is None), "none has told why")


def _noticed(result: ParameterFitResult, refined: Refined) -> list[str]:
    """In words, what the reader of the values must know."""
    told = [e.word() for e in result.estimates if e.word()]
    if not refined.settled:
        told.append("the runs were used up before the best values stayed put; allow more runs")
    if result.failed:
        messages = {c.message.partition(" failed: ")[2] or c.message for c in result.tried if c.model is None}
        told.append(f"{result.failed} of the candidates failed and were left out: {'; '.join(sorted(messages)[:3])}")
    if result.chance < 0.01:
        told.append(f"the model doesn't describe the data within their errors (p = {result.chance:.1g})")
    if len(result.plan.study.seeds) < 3:
        told.append("with fewer than three seeds the model's own noise is hardly known; intervals may be too narrow")
    told += _related(result)
    return told


def _related(result: ParameterFitResult) -> list[str]:
    """Courses whose residuals hang together, so that they tell less than their number."""
    told = []
    frame = result.residuals()
    for target in result.plan.targets:
        rest = frame[frame["target"] == target.name]["residual"].to_numpy()
        if target.column and len(rest) > 5 and np.corrcoef(rest[1:], rest[:-1])[0, 1] > 0.5:
            told.append(f"target {target.name}: neighbouring residuals are alike, so its points tell less than their number "
                        "and intervals are too narrow; take fewer of them")  # fmt: skip
    return told
