"""Array jobs of Slurm: a script, a list of the runs of each task, and sbatch."""

import shlex
import subprocess
import sys
from collections.abc import Mapping
from pathlib import Path

from .engines import PACKAGES
from .errors import StudyError
from .study import Study

RUNS_PER_TASK = 20
MOST_TASKS = 1000  # of an array; Slurm's own limit is 1001 unless the site has raised it


def submit(study: Study, passed_on: Mapping[str, str | None], runs_per_task: int | None, dry_run: bool) -> str:
    """Submits what is missing as an array job, and behind it a job that writes the results.

    `passed_on` has options for sbatch. Returns what to tell: the script of a dry run, else the jobs."""
    study.check()
    _, todo = study.survey()
    if not todo:
        return "all runs are done; tavelo-study report writes the results"
    folder = study.out / "slurm"
    chunks = _chunks(todo, runs_per_task)
    if dry_run:
        return _script(study, folder, len(chunks), passed_on, folder / "chunks")
    folder.mkdir(parents=True, exist_ok=True)
    _refuse_second(folder)
    number = len(list(folder.glob("*.chunks"))) + 1
    chunk_file, script = folder / f"{number}.chunks", folder / f"{number}.sh"
    chunk_file.write_text("".join(" ".join(map(str, chunk)) + "\n" for chunk in chunks))
    script.write_text(_script(study, folder, len(chunks), passed_on, chunk_file))
    array = _sbatch(str(script))
    partition = [f"--partition={passed_on['partition']}"] if passed_on.get("partition") else []
    results = _sbatch(
        f"--dependency=afterany:{array}", f"--output={folder}/%j.log", *partition,
        f"--wrap={shlex.join(_command(study, 'report'))}",
    )  # fmt: skip
    (folder / "jobs").write_text(f"{array} {results}\n")
    return f"job {array}: {len(todo)} runs in {len(chunks)} tasks; job {results} writes the results to {study.out}"


def read_chunk(text: str) -> list[int]:
    """The runs of a task, given as FILE:LINE."""
    file, _, line = text.rpartition(":")
    try:
        return [int(word) for word in Path(file).read_text().splitlines()[int(line) - 1].split()]
    except (OSError, ValueError, IndexError) as error:
        raise StudyError(f"--chunk {text}: no such line of runs") from error


def _chunks(todo: "list[int]", runs_per_task: int | None) -> list[list[int]]:
    size = max(runs_per_task or RUNS_PER_TASK, -(-len(todo) // MOST_TASKS))
    return [list(todo[start : start + size]) for start in range(0, len(todo), size)]


def _script(study: Study, folder: Path, tasks: int, passed_on: Mapping[str, str | None], chunks: Path) -> str:
    options = {"job-name": study.plan.path.stem, "array": f"1-{tasks}", "output": f"{folder}/%A_%a.log"}
    options |= {name: value for name, value in passed_on.items() if value}
    lines = "".join(f"#SBATCH --{name}={value}\n" for name, value in options.items())
    command = shlex.join([*_command(study, "run"), "--chunk", str(chunks)])
    return f"#!/bin/bash\n{lines}exec {command}:$SLURM_ARRAY_TASK_ID -j ${{SLURM_CPUS_PER_TASK:-1}}\n"


def _command(study: Study, name: str) -> list[str]:
    """This command on another machine, without relying on what is installed there."""
    plan, out, program = map(str, (study.plan.path, study.out, study.program))
    packages = f"PYTHONPATH={PACKAGES}"
    start = ["env", packages, sys.executable, "-m", "tavelo_tools.study", name]
    return [*start, plan, "--out", out, "--program", program]


def _sbatch(*arguments: str) -> str:
    """Submits a job; returns its number."""
    try:
        result = subprocess.run(["sbatch", "--parsable", *arguments], capture_output=True, text=True, check=False)
    except FileNotFoundError as error:
        raise StudyError("sbatch isn't there; --slurm needs a machine from which jobs can be submitted") from error
    if result.returncode != 0:
        raise StudyError(f"sbatch: {result.stderr.strip()}")
    return result.stdout.strip().split(";")[0]


def _refuse_second(folder: Path) -> None:
    """Two array jobs of one study at a time would compute the same runs."""
    try:
        job = (folder / "jobs").read_text().split()[0]
    except (FileNotFoundError, IndexError):
        return
    queue = subprocess.run(["squeue", "--noheader", f"--jobs={job}"], capture_output=True, text=True, check=False)
    if queue.returncode == 0 and queue.stdout.strip():
        raise StudyError(f"job {job} of this study is still in the queue; wait for it, or scancel {job}")
