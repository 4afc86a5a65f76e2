"""The search: Optuna's, with its storage in SQLite, so that it goes on after a stop and several machines may share it."""

import hashlib
import logging
import math
import os
import socket
import warnings
from datetime import datetime, timedelta
from itertools import groupby
from pathlib import Path

import optuna
from optuna.distributions import FloatDistribution
from optuna.samplers import BaseSampler, CmaEsSampler, RandomSampler, TPESampler
from optuna.trial import FrozenTrial, TrialState

from .evaluate import Candidate, Evaluator
from .free import DIGITS
from .plan import FitPlan

TOLD = (TrialState.COMPLETE, TrialState.FAIL)
BY, SEEDS, RUNS, MESSAGE = "by", "seeds", "runs", "message"


class Search:
    """Asks for candidates and tells their misfit, a generation at a time."""

    def __init__(self, evaluator: Evaluator, path: Path) -> None:
        self._evaluator, self._plan = evaluator, evaluator.plan
        optuna.logging.set_verbosity(optuna.logging.ERROR)
        logging.getLogger("sqlalchemy").setLevel(logging.ERROR)
        storage = f"sqlite:///{path}?timeout=60"
        name = _name(self._plan)
        self._study = optuna.create_study(storage=storage, study_name=name, load_if_exists=True)
        self.generation = 4 + int(3 * math.log(len(self._plan.free)))

    def run(self) -> list[FrozenTrial]:
        """All trials, once the search's share of the runs is used."""
        self._evaluate(self._left_behind())
        while self._used() < self._plan.search_runs:
            self._evaluate(self._ask())
        self._recall()
        return self.trials()

    def trials(self) -> list[FrozenTrial]:
        return [trial for trial in self._study.get_trials(deepcopy=False) if trial.state in TOLD]

    def _recall(self) -> None:
        """Shows the evaluator what an earlier call, or another machine, has tried; the store has its runs."""
        seeds, tried = self._plan.study.seeds, {(*c.values.values(), len(c.seeds)) for c in self._evaluator.tried}
        for count, group in groupby(self.trials(), key=lambda trial: int(trial.user_attrs.get(SEEDS, 1))):
            values = [self._values(trial) for trial in group]
            fresh = [v for v in values if (*v.values(), count) not in tried]
            if fresh:
                self._evaluator.of(fresh, seeds[:count])

    def _values(self, trial: FrozenTrial) -> dict[str, float]:
        return {item.name: float(f"{trial.params[item.name]:.{DIGITS}g}") for item in self._plan.free}

    def _used(self) -> int:
        return sum(trial.user_attrs.get(RUNS, 0) for trial in self._study.get_trials(deepcopy=False))

    def _ask(self) -> list[FrozenTrial]:
        """The next generation; its chance depends on its number alone, not on how often one has begun anew."""
        known = self._study.get_trials(deepcopy=False)
        if not known:
            self._study.enqueue_trial({item.name: item.start for item in self._plan.free})
        self._study.sampler = self._sampler(len(known))
        space = {item.name: FloatDistribution(item.low, item.high, log=item.log) for item in self._plan.free}
        asked, seeds = [], self._seeds()
        for _ in range(1 if not known else self.generation):
            with warnings.catch_warnings():
                warnings.simplefilter("ignore")
                trial = self._study.ask(space)
            for key, value in ((BY, _process()), (SEEDS, seeds), (RUNS, seeds * self._plan.study.combinations)):
                trial.set_user_attr(key, value)
            asked.append(trial.number)
        return [trial for trial in self._study.get_trials() if trial.number in asked]

    def _seeds(self) -> int:
        """How many: a quarter in the first half of the search, then half of them, in the last quarter all."""
        whole, share = len(self._plan.study.seeds), self._used() / max(1, self._plan.search_runs)
        return max(1, -(-whole // 4)) if share < 0.5 else max(1, -(-whole // 2)) if share < 0.75 else whole

    def _sampler(self, number: int) -> BaseSampler:
        if self._plan.sampler == "random":
            return RandomSampler(seed=number)
        if self._plan.sampler == "tpe" or len(self._plan.free) == 1:  # CMA-ES needs two dimensions
            with warnings.catch_warnings():
                warnings.simplefilter("ignore")  # the option that tells candidates of a generation apart is new
                return TPESampler(seed=number, constant_liar=True)
        start = {item.name: item.start for item in self._plan.free}
        return CmaEsSampler(x0=start, seed=number, popsize=self.generation, warn_independent_sampling=False)

    def _left_behind(self) -> list[FrozenTrial]:
        """Trials of processes of this machine that have been killed."""
        running = [trial for trial in self._study.get_trials() if trial.state == TrialState.RUNNING]
        return [trial for trial in running if _is_abandoned(trial)]

    def _evaluate(self, trials: list[FrozenTrial]) -> None:
        seeds = self._plan.study.seeds
        for count in sorted({trial.user_attrs.get(SEEDS, 1) for trial in trials}):
            group = [trial for trial in trials if trial.user_attrs.get(SEEDS, 1) == count]
            for trial, candidate in zip(group, self._evaluator.of([self._values(trial) for trial in group], seeds[:count])):
                self._tell(trial, candidate)

    def _tell(self, trial: FrozenTrial, candidate: Candidate) -> None:
        if candidate.model is None:
            self._study._storage.set_trial_user_attr(trial._trial_id, MESSAGE, candidate.message)
            self._study.tell(trial.number, state=TrialState.FAIL)
        else:
            self._study.tell(trial.number, self._evaluator.misfit(candidate.mean))


def _name(plan: FitPlan) -> str:
    """Of the search: another one where plan or data are others."""
    text = plan.study.path.read_text() + repr((plan.y.tolist(), plan.sigma.tolist()))
    return hashlib.sha256(text.encode()).hexdigest()[:16]


def _process() -> str:
    return f"{socket.gethostname()}@{os.getpid()}"


def _is_abandoned(trial: FrozenTrial) -> bool:
    if BY not in trial.user_attrs:  # stopped before it was known whose it is, unless somebody is about to tell
        return trial.datetime_start is not None and datetime.now() - trial.datetime_start > timedelta(minutes=1)
    host, _, process = trial.user_attrs[BY].rpartition("@")
    return host == socket.gethostname() and process != str(os.getpid()) and not Path(f"/proc/{process}").exists()
