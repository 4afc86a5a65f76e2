"""Before a study: do its inputs name only parameters that the program knows, and reads?"""

import tempfile
from dataclasses import replace
from pathlib import Path

from .errors import StudyError
from .inputs import Inputs, RunInput
from .plan import Plan
from .program import run_program
from .work import write_input

MOST_CONDITIONS = 200
MOST_SPOILT = 10


def probe(plan: Plan, inputs: Inputs, program: Path) -> None:
    """Asks the program's `--check`. StudyError with its answer if it refuses anything.

    Every value of every varied quantity is tried once. Every file that the plan sets or writes is
    spoilt as well: where that isn't refused no run reads the file, and varying it changes nothing."""
    runs = {f"run{number}": inputs.run(number) for number in _tried(plan)}
    files = sorted({parameter.file for parameter in plan.parameters} | plan.writes.keys())
    spoilt = {
        f"file{n}-{key}": _spoilt(run, file)
        for n, file in enumerate(files)
        for key, run in list(runs.items())[:MOST_SPOILT]
    }
    with tempfile.TemporaryDirectory(prefix="tavelo-study-") as name:
        for key, run in (runs | spoilt).items():
            write_input(Path(name) / key, run)
        ended = run_program(program, Path(name), [*runs, *spoilt], "--check")
    if ended.was_interrupted:
        raise KeyboardInterrupt
    if ended.status not in (0, 1):
        raise StudyError(f"{program}: {ended.rest.strip() or f'ended with status {ended.status}'}")
    for key, run in runs.items():
        if key in ended.failed:
            raise _refused(plan, run, ended.failed[key])
    for n, file in enumerate(files):
        if not any(key.startswith(f"file{n}-") for key in ended.failed):
            raise StudyError(f"{plan.path.name}: {file} is set or written, but no run reads it")


def _refused(plan: Plan, run: RunInput, message: str) -> StudyError:
    for parameter, where in plan.places.items():
        if f"<{parameter.key}>" in message:
            return StudyError(f"{where}: {message}")
    condition = plan.place(run.number)[0]
    values = plan.varied(condition) | plan.candidates[condition // plan.combinations]
    listed = ", ".join(f"{name} = {value}" for name, value in values.items()) or "the input"
    return StudyError(f"{plan.path.name}: the program refuses {listed}: {message}")


def _tried(plan: Plan) -> list[int]:
    """Conditions in which each value occurs once, the others being the first."""
    if plan.zipped:
        return list(range(min(plan.conditions, MOST_CONDITIONS)))
    tried, stride = {0}, 1
    for values in reversed(plan.vary.values()):
        tried |= {place * stride for place in range(len(values))}
        stride *= len(values)
    tried |= {place * plan.combinations for place in range(len(plan.candidates))}
    return sorted(tried)[:MOST_CONDITIONS]


def _spoilt(run: RunInput, file: str) -> RunInput:
    return replace(run, files=run.files | {file: run.files.get(file, b"") + b"\nno such thing\n"})
