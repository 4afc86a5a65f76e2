"""A study: a plan, its runs, and what came out.

    study = Study.load("force.toml")
    study.run(jobs=4)
    study.table()        # a row per run
    study.summary()      # mean, SD, n and interval per condition and measure
    study.fit()          # fits with intervals
    study.dataset()      # courses, an xarray dataset
"""

import json
import os
import shutil
from array import array
from collections.abc import Iterable
from contextlib import nullcontext
from dataclasses import dataclass, replace
from functools import cached_property
from pathlib import Path
from typing import TYPE_CHECKING

import pandas as pd

from . import curves
from .batches import Batches
from .errors import StudyError
from .inputs import Inputs, RunInput
from .plan import KEEP, Candidates, Plan, read_plan
from .probe import probe
from .program import find_program, go_on, version_of
from .progress import Watcher
from .results import run_rows, summary
from .store import Record, Store
from .work import Outcome, Place, carry_out, make_place, processors, salvage, taken

if TYPE_CHECKING:
    import xarray

    from .engines import Engine


@dataclass
class Tally:
    """How many runs of a study there are, by status; `old` are done but lack a measure of the plan."""

    done: int = 0
    failed: int = 0
    missing: int = 0
    old: int = 0

    @property
    def total(self) -> int:
        return self.done + self.failed + self.missing + self.old


class Study:
    """A plan with a folder for its runs and results."""

    def __init__(self, plan: Plan, out: Path | None = None, program: Path | None = None) -> None:
        self.plan = plan
        self.out = (out or plan.path.with_suffix("")).resolve()
        if self.out.is_file():
            raise StudyError(f"{self.out}: is a file; name a folder with --out")
        self._named_program = program
        self._is_checked = False
        self._seconds_per_run: float | None = None  # known once some were computed
        self.store = Store(plan.store.resolve() if plan.store else self.out / "runs")

    @classmethod
    def load(cls, plan: Path | str, out: Path | str | None = None, program: Path | str | None = None) -> "Study":
        """The study of a plan file. StudyError says what is wrong with the plan."""
        path = Path(plan)
        return cls(read_plan(path), Path(out) if out else None, Path(program) if program else None)

    @cached_property
    def program(self) -> Path:
        """The program that computes the runs."""
        return find_program(self._named_program)

    @cached_property
    def _version(self) -> str:
        return version_of(self.program)

    @cached_property
    def _inputs(self) -> Inputs:
        """Of all runs, with the version of the program."""
        return Inputs(self.plan, self._version)

    @cached_property
    def _place(self) -> Place:
        """What workers are told."""
        return make_place(self.plan, self.store.runs, self.program, self._version)

    def _record(self, number: int) -> tuple[str, Record | None]:
        """Name and record of a run; no record where the run isn't done."""
        name = self._inputs.run(number).name
        return name, self.store.read(name)

    def survey(self, numbers: Iterable[int] | None = None) -> tuple[Tally, "array[int]"]:
        """How many runs there are, and which are to be computed or measured."""
        tally, todo, names = Tally(), array("Q"), set()
        for number in range(self.plan.runs) if numbers is None else numbers:
            run = self._inputs.run(number)
            state = self._state(run)
            setattr(tally, state, getattr(tally, state) + 1)
            if state in ("missing", "old") and run.name not in names:
                todo.append(number)
                names.add(run.name)  # conditions may come to the same input
        return tally, todo

    def _state(self, run: RunInput) -> str:
        record = self.store.read(run.name)
        if record is None:
            return "missing"
        if record["status"] == "failed":
            return "failed"
        known = taken(self.plan, run.values, None, record["measures"])
        return "done" if len(known) == len(self.plan.measures) else "old"

    def check(self, plan: Plan | None = None) -> None:
        """Asks the program whether it accepts the inputs, unless it has been asked before.

        `plan` is the one whose inputs are tried: that of a fit with other candidates, for one."""
        if self._is_checked:
            return
        mark = self.out / "checked.json"
        inputs = Inputs(plan, self._version) if plan else self._inputs
        asked = {"plan": self._place.plan_digest, "first": inputs.run(0).name}
        if not mark.is_file() or mark.read_text() != json.dumps(asked):
            go_on()  # an earlier call in this process may have been stopped
            probe(inputs.plan, inputs, self.program)
            self.out.mkdir(parents=True, exist_ok=True)
            mark.write_text(json.dumps(asked))
        self._is_checked = True

    def run(
        self,
        jobs: int | None = None,
        engine: "Engine | None" = None,
        numbers: Iterable[int] | None = None,
        watch: "type[Watcher] | None" = None,
    ) -> list[Outcome]:
        """Computes what is missing: on `jobs` cores of this machine, all by default, or on an engine,
        which is left open.

        `numbers` limits it to some of the runs. Returns what failed or was stopped."""
        from .engines import LocalEngine

        self.check()
        self._begin()
        tally, todo = self.survey(numbers)
        bad: list[Outcome] = []
        if todo:
            with nullcontext(engine) if engine else LocalEngine(jobs or processors()) as used:
                with (watch or Watcher)(tally.total, tally.total - len(todo)) as watcher:
                    batches = Batches(todo, self._name, seconds_per_run=self._seconds_per_run)
                    for outcomes in used.run(self._place, batches):
                        watcher.tell(outcomes)
                        bad += [item for item in outcomes if item.status != "done"]
                    self._seconds_per_run = batches.seconds_per_run
        if tally.missing + tally.old > len(todo):
            self._measure_shared(numbers)
        return bad

    def _measure_shared(self, numbers: Iterable[int] | None) -> None:
        """Runs that several conditions share were computed for one; the others may measure them differently."""
        runs = (self._inputs.run(number) for number in (range(self.plan.runs) if numbers is None else numbers))
        carry_out(self._place, [(run.number, run.name) for run in runs if self._state(run) == "old"])

    def of(self, candidates: Candidates) -> "Study":
        """The same study with other candidates of a fit, and their seeds."""
        plan = replace(self.plan, candidates=candidates.values, seeds=candidates.seeds)
        other = Study(plan, self.out, self.program)
        other._version, other._is_checked = self._version, self._is_checked
        other._seconds_per_run = self._seconds_per_run
        return other

    def _begin(self) -> None:
        self.out.mkdir(parents=True, exist_ok=True)
        if self.out != self.plan.path.parent:
            shutil.copyfile(self.plan.path, self.out / "plan.toml")
        salvage(self.store)

    def _name(self, number: int) -> str:
        return self._inputs.run(number).name

    def failures(self) -> list[tuple[int, str, str]]:
        """Number, name and message of each run that has failed."""
        found = []
        for number in range(self.plan.runs):
            name, record = self._record(number)
            if record and record["status"] == "failed":
                found.append((number, name, record["message"]))
        return found

    def retry(self) -> int:
        """Forgets the runs that have failed, so that they are computed again. Returns their number."""
        failed = self.failures()
        for _, name, _ in failed:
            self.store.forget(name)
        return len(failed)

    def clean(self, keep: str) -> int:
        """Removes output of finished runs: `results` keeps input and main results, `measures` only
        the records. Returns the bytes that became free."""
        if keep not in KEEP:
            raise StudyError(f"keep is '{keep}'; accepted: {', '.join(KEEP)}")
        freed = 0
        for number in range(self.plan.runs):
            name, record = self._record(number)
            if record and record["status"] == "done":
                before = _bytes(self.store.folder(name))
                self.store.thin(name, keep)
                freed += before - _bytes(self.store.folder(name))
        return freed

    def table(self) -> pd.DataFrame:
        """A row per run: name, condition, values, seed, measures, status, seconds, message."""
        return run_rows(self.plan, self._record)

    def summary(self, table: pd.DataFrame | None = None) -> pd.DataFrame:
        """A row per condition and measure: n, mean, SD and 95 % interval over seeds."""
        return summary(self.plan, self.table() if table is None else table)

    def fit(self, table: pd.DataFrame | None = None) -> dict[str, list[curves.FitResult]]:
        """The fits of the plan by name, one for each group."""
        return {name: results for name, (results, _) in self.try_fits(table).items()}

    def try_fits(self, table: pd.DataFrame | None = None) -> dict[str, tuple[list[curves.FitResult], list[str]]]:
        """The fits, and in words which of them could not be made."""
        runs = self.table() if table is None else table
        return {name: curves.fit(fit, runs) for name, fit in self.plan.fits.items()}

    def dataset(self) -> "xarray.Dataset":
        """Courses and measures over the varied values, seed and time; written to study.nc as well."""
        import xarray

        from .courses import write_courses

        path = self.out / "study.nc"
        write_courses(self.plan, self.store, self.table(), path)
        with xarray.open_dataset(path, engine="h5netcdf") as data:
            return data.load()


def _bytes(folder: Path) -> int:
    if not folder.is_dir():
        return 0
    return sum(entry.stat().st_size for entry in os.scandir(folder))
