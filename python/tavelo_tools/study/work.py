"""What a worker does, on whatever machine: computes a batch of runs, measures and records them."""

import contextlib
import hashlib
import json
import os
import re
import shutil
import time
from dataclasses import dataclass
from datetime import datetime
from functools import lru_cache
from pathlib import Path

from ..read import Run, RunError, read_run
from .errors import Refused, StudyError
from .formulas import Names, Value
from .inputs import Inputs, RunInput
from .plan import Candidates, Plan, read_plan
from .program import Ended, run_program
from .store import Record, Store

_DEFAULTS = re.compile(r"warning: parameter file (\S+) was missing")
Batch = list[tuple[int, str]]  # numbers and names of runs


@dataclass(frozen=True)
class Place:
    """Where a study is and what computes it; all that a worker has to be told. The folder is shared."""

    plan: str
    plan_digest: str
    runs: str
    program: str
    version: str
    candidates: str = ""  # of a fit, in JSON, with their seeds


@dataclass(frozen=True)
class Outcome:
    """How a run of a batch ended: done, failed or stopped."""

    number: int
    name: str
    status: str
    seconds: float = 0.0
    message: str = ""


def make_place(plan: Plan, runs: Path, program: Path, version: str) -> Place:
    """The place of a plan as it stands in its file now."""
    candidates = json.dumps([plan.candidates, plan.seeds]) if plan.candidates != ({},) else ""
    return Place(str(plan.path), _digest(plan.path), str(runs), str(program), version, candidates)


def _digest(path: Path) -> str:
    return hashlib.sha256(path.read_bytes()).hexdigest()


@lru_cache(maxsize=4)
def _opened(place: Place) -> tuple[Plan, Inputs, Store]:
    path = Path(place.plan)
    if _digest(path) != place.plan_digest:
        raise StudyError(f"{path}: has changed since the study was started")
    plan = read_plan(path, _candidates(place))
    return plan, Inputs(plan, place.version), Store(Path(place.runs))


def _candidates(place: Place) -> Candidates | None:
    if not place.candidates:
        return None
    values, seeds = json.loads(place.candidates)
    return Candidates(tuple(values), tuple(seeds))


def carry_out(place: Place, batch: Batch) -> list[Outcome]:
    """Computes runs one after the other, for as long as they aren't there."""
    plan, inputs, store = _opened(place)
    todo, outcomes = [], []
    for number, name in batch:
        run = inputs.run(number)
        if run.name != name:
            raise StudyError(f"{plan.base}: its files have changed since the study was started")
        if store.folder(name).is_dir():
            outcomes.append(_record_done(plan, store, run, store.folder(name)))
        else:
            todo.append(run)
    return outcomes + (_compute(place, todo) if todo else [])


def _compute(place: Place, runs: list[RunInput]) -> list[Outcome]:
    plan, _, store = _opened(place)
    session = store.session()
    for run in runs:
        write_input(session / run.name, run)
    going = {run.name: run for run in runs}
    outcomes: list[Outcome] = []
    since = time.time()

    def settle(names: list[str], ended: Ended) -> None:
        """Records runs that have ended, so that they aren't lost with those that go on."""
        nonlocal since
        for name in names:
            run, attempt = going[name], session / name
            if name in ended.failed and not ended.was_interrupted:
                outcomes.append(_record_failed(store, run, attempt, ended.failed[name]))
            elif _has_finished(attempt, ended):
                seconds, since = _seconds(attempt, since)
                record = _new_record(run, ended.told.get(name, []) + _excess(attempt), seconds)
                record["measures"] = (store.read(name) or record)["measures"]
                outcomes.append(_record_done(plan, store, run, attempt, record))
            else:
                continue
            del going[name]

    ended = run_program(Path(place.program), session, list(going), on_end=settle)
    settle(list(going), ended)
    outcomes += _without_result(place, list(going.values()), ended)
    with contextlib.suppress(OSError):  # unless a run has left something there
        session.rmdir()
    return outcomes


def _without_result(place: Place, runs: list[RunInput], ended: Ended) -> list[Outcome]:
    """Runs of a call that was stopped, or that one of them has brought down."""
    store = _opened(place)[2]
    if ended.was_interrupted:
        for run in runs:
            shutil.rmtree(store.session() / run.name, ignore_errors=True)
        return [Outcome(run.number, run.name, "stopped") for run in runs]
    if len(runs) == 1:
        message = ended.rest.strip() or f"the program ended with status {ended.status}"
        return [_record_failed(store, runs[0], store.session() / runs[0].name, message)]
    return [outcome for run in runs for outcome in _compute(place, [run])]


def write_input(folder: Path, run: RunInput) -> None:
    """A fresh folder with the input of a run."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for file, data in run.files.items():
        (folder / file).write_bytes(data)


def _run_json(folder: Path) -> Record:
    with contextlib.suppress(OSError, ValueError):
        record: Record = json.loads((folder / "run.json").read_bytes())
        return record
    return {}


def _excess(folder: Path) -> list[str]:
    """What the run itself says of steps that were too long for its rates."""
    excess = _run_json(folder).get("probabilities_above_1") or {}
    steps = excess.get("steps", 0)
    return [f"probabilities above 1 in {steps} steps, up to {excess['largest_sum']}"] if steps else []


def _has_finished(folder: Path, ended: Ended) -> bool:
    known = _run_json(folder)
    return known.get("exit_status") == 0 if known else ended.status in (0, 1) and not ended.was_interrupted


def _seconds(folder: Path, since: float) -> tuple[float, float]:
    """How long a run took, and when it ended."""
    known = _run_json(folder)
    with contextlib.suppress(KeyError, TypeError, ValueError):
        started, ended = (datetime.fromisoformat(known[key]).timestamp() for key in ("started", "ended"))
        return ended - started, ended
    with contextlib.suppress(OSError):
        ended = (folder / "result.csv").stat().st_mtime
        return max(0.0, ended - since), ended
    return 0.0, since


def _new_record(run: RunInput, told: list[str], seconds: float) -> Record:
    defaults = [found[1] for text in told if (found := _DEFAULTS.match(text))]
    told = [text for text in told if not _DEFAULTS.match(text)]
    return {
        "run": run.name,
        "status": "done",
        "message": "; ".join(told),
        "seconds": round(seconds, 3),
        "seed": run.seed,
        "values": run.values,
        "defaults": defaults,
        "measures": {},
    }


def _record_failed(store: Store, run: RunInput, attempt: Path, message: str) -> Outcome:
    record = _new_record(run, [message], 0.0) | {"status": "failed"}
    store.write(run.name, record)
    store.put(run.name, attempt)
    return Outcome(run.number, run.name, "failed", 0.0, message)


def _record_done(plan: Plan, store: Store, run: RunInput, folder: Path, record: Record | None = None) -> Outcome:
    record = record or store.read(run.name) or _new_record(run, [], _seconds(folder, time.time())[0])
    try:
        record["measures"] |= taken(plan, run.values, read_run(folder), record["measures"])
    except RunError as error:
        return _record_failed(store, run, folder, str(error))
    if folder != store.folder(run.name):
        store.put(run.name, folder)
    store.write(run.name, record)
    store.thin(run.name, plan.keep)
    return Outcome(run.number, run.name, "done", record["seconds"], record["message"])


def taken(plan: Plan, values: Names, run: Run | None, known: Record) -> Record:
    """All measures of a run, by digest: those that are known, and without them those of the run.

    Where neither is there the measure is missing."""
    names: dict[str, Value] = dict(values)
    found: Record = {}
    for measure in plan.measures.values():
        digest = measure.digest(names)
        entry = known.get(digest)
        if entry is None and run is not None:
            entry = _take(plan, measure.name, run, names)
        if entry is None:
            continue
        found[digest] = entry
        if entry["value"] is not None:
            names[measure.name] = entry["value"]
    return found


def _take(plan: Plan, name: str, run: Run, names: Names) -> Record:
    measure = plan.measures[name]
    lacking = sorted(measure.names & plan.measures.keys() - names.keys()) if measure.formula else []
    if lacking:
        return {"name": name, "value": None, "message": f"{name}: needs {', '.join(lacking)}"}
    try:
        value = measure.of(run, names)
        if value == value and abs(value) != float("inf"):
            return {"name": name, "value": value, "message": ""}
        message = f"{value} is no number"
    except (Refused, StudyError) as error:
        message = str(error)
    except Exception as error:  # a function beside the plan may raise anything
        message = f"{type(error).__name__}: {error}"
    return {"name": name, "value": None, "message": f"{name}: {message}"}


def salvage(store: Store) -> None:
    """Brings runs to their place that had ended when their process was killed; removes the rest."""
    for session in store.abandoned():
        for attempt in sorted(session.iterdir()):
            if _run_json(attempt).get("exit_status") == 0:
                store.put(attempt.name, attempt)
        shutil.rmtree(session, ignore_errors=True)


def processors() -> int:
    """Cores that this process may use."""
    return len(os.sched_getaffinity(0))
