"""tavelo-study: runs by the hundred from one plan."""

import argparse
import os
import re
import resource
import signal
import sys
import time
from collections.abc import Callable, Sequence
from contextlib import nullcontext
from pathlib import Path

from . import experiments
from .errors import StudyError
from .plan import KEEP
from .program import find_program
from .progress import watcher
from .study import Study
from .work import Outcome, processors

NAME = "tavelo-study"
MOST_SHOWN = 20
_SHARD = re.compile(r"^(\d+)/(\d+)$")


def main(arguments: list[str] | None = None) -> int:
    """The command line; returns the exit status."""

    def command() -> int:
        options = _parser().parse_args(arguments)
        status: int = options.command(options)
        return status

    return carry_out(NAME, command)


def carry_out(program: str, command: Callable[[], int]) -> int:
    """The exit status of a command; what keeps it from its end, SIGTERM as well, is told in a line."""
    signal.signal(signal.SIGTERM, _interrupt)
    try:
        return command()
    except StudyError as error:
        tell(program, str(error))
    except OSError as error:
        tell(program, f"{error.filename or 'a file'}: {error.strerror or error}")
    except KeyboardInterrupt:
        tell(program, "interrupted; the same command goes on from here")
    return 1


def _interrupt(*_: object) -> None:
    raise KeyboardInterrupt


def tell(program: str, text: str) -> None:
    print(f"{program}: {text}", file=sys.stderr)


def _tell(text: str) -> None:
    tell(NAME, text)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog=NAME, description="Many runs from one plan, on this machine or a cluster."
    )
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    _add_new(commands.add_parser("new", help="write the plan of an experiment, to look at and change"))
    _add_run(commands.add_parser("run", help="compute what is missing, then write tables, figures and page"))
    status = _plan_command(commands, "status", "tell how many runs are done, failed, missing", _status)
    status.add_argument("--failed", action="store_true", help="list the failed runs with their messages")
    _plan_command(commands, "retry", "forget the failed runs, so that `run` computes them again", _retry)
    clean = _plan_command(commands, "clean", "remove output of finished runs", _clean)
    clean.add_argument("--keep", choices=KEEP[1:], required=True,
                       help="results: input and main results; measures: only the measures")  # fmt: skip
    report = _plan_command(commands, "report", "write tables, figures and page anew", _report)
    _add_reports(report)
    return parser


def _add_new(parser: argparse.ArgumentParser) -> None:
    parser.set_defaults(command=_new)
    listed = ", ".join(experiments.names())
    parser.add_argument("name", metavar="NAME", help=f"the experiment: {listed}")
    parser.add_argument("base", type=Path, metavar="BASE", help="folder with the input files")
    parser.add_argument("--out", type=Path, metavar="PLAN", help="the plan to write; default: NAME.toml here")
    parser.add_argument("--program", type=Path, metavar="PATH", help=argparse.SUPPRESS)


def _plan_command(commands, name: str, text: str, command) -> argparse.ArgumentParser:  # type: ignore[no-untyped-def]
    parser: argparse.ArgumentParser = commands.add_parser(name, help=text, description=text)
    add_plan(parser)
    parser.set_defaults(command=command)
    return parser


def add_plan(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("plan", type=Path, metavar="PLAN", help="the plan, a TOML file")
    parser.add_argument("--out", type=Path, metavar="DIR", help="folder of the study; default: named as the plan, beside it")
    parser.add_argument("--program", type=Path, metavar="PATH", help="the program tavelo; default: the built or installed one")


def _add_reports(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("--reports", action="store_true", help="write a report of every run, too (some seconds each)")


def _add_run(parser: argparse.ArgumentParser) -> None:
    parser.set_defaults(command=_run)
    add_plan(parser)
    parser.add_argument("-j", type=positive, metavar="N", dest="jobs", help="runs at a time; default: all cores that may be used")
    _add_reports(parser)
    where = parser.add_mutually_exclusive_group()
    where.add_argument("--scheduler", metavar="ADDRESS", help="use the workers of a Dask scheduler")
    where.add_argument("--shard", type=_shard, metavar="I/N", help="compute only part I of N, and write no results")
    where.add_argument("--slurm", action="store_true", help="submit the missing runs as an array job of Slurm")
    where.add_argument("--chunk", help=argparse.SUPPRESS)
    slurm = parser.add_argument_group("with --slurm")
    slurm.add_argument("--dry-run", action="store_true", help="show the script, and submit nothing")
    slurm.add_argument("--runs-per-task", type=positive, metavar="N", help="default: 20, more where there are many")
    for name in ("time", "mem", "partition"):
        slurm.add_argument(f"--{name}", metavar=name.upper(), help="passed on to sbatch")


def positive(text: str) -> int:
    if not text.isdigit() or int(text) < 1:
        raise argparse.ArgumentTypeError(f"is '{text}'; accepted: a number from 1 on")
    return int(text)


def _shard(text: str) -> tuple[int, int]:
    found = _SHARD.match(text)
    if not found or not 1 <= int(found[1]) <= int(found[2]):
        raise argparse.ArgumentTypeError(f"is '{text}'; accepted: I/N with I from 1 to N")
    return int(found[1]), int(found[2])


def _study(options: argparse.Namespace) -> Study:
    return Study.load(options.plan, options.out, options.program)


def _new(options: argparse.Namespace) -> int:
    out: Path = options.out or Path(f"{options.name}.toml")
    if out.exists():
        raise StudyError(f"{out}: exists; name another with --out")
    relative = os.path.relpath(options.base.resolve(), out.resolve().parent)
    text = experiments.plan_text(options.name, options.base, relative, lambda: find_program(options.program))
    out.write_text(text)
    print(f"{out}: look at it, change it, then: tavelo-study run {out}")
    return 0


def _run(options: argparse.Namespace) -> int:
    from .engines import RemoteEngine

    study = _study(options)
    if options.slurm:
        return _submit(study, options)
    numbers: Sequence[int] | None = None
    if options.shard:
        part, parts = options.shard
        numbers = range(part - 1, study.plan.runs, parts)
    if options.chunk:
        from .slurm import read_chunk

        numbers = read_chunk(options.chunk)
    began = time.monotonic()
    with RemoteEngine(options.scheduler) if options.scheduler else nullcontext() as engine:
        bad = study.run(options.jobs or processors(), engine, numbers, watcher)
    if options.shard or options.chunk:
        return _end(bad, _failed_among(study, numbers or []))
    _write(study, options)
    _tell_costs(time.monotonic() - began)
    return _end(bad, study.failures())


def _failed_among(study: Study, numbers: Sequence[int]) -> list[tuple[int, str, str]]:
    wanted = set(numbers)
    return [item for item in study.failures() if item[0] in wanted]


def _end(bad: list[Outcome], failed: list[tuple[int, str, str]]) -> int:
    """Lists what has failed; exit status 1 if anything has."""
    stopped = [item for item in bad if item.status == "stopped"]
    for number, name, message in failed[:MOST_SHOWN]:
        _tell(f"run {number + 1} ({name[:8]}) failed: {message}")
    if len(failed) > MOST_SHOWN:
        _tell(f"and {len(failed) - MOST_SHOWN} more; tavelo-study status PLAN --failed lists them")
    if stopped:
        _tell(f"{len(stopped)} runs were stopped: {stopped[0].message or 'interrupted'}; run again to go on")
    return 1 if failed or stopped else 0


def _tell_costs(seconds: float) -> None:
    own, runs = (resource.getrusage(who) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN))
    cpu, overhead = runs.ru_utime + runs.ru_stime, own.ru_utime + own.ru_stime
    text = f"{seconds:.1f} s; runs used {cpu:.1f} s of processor time, the study {overhead:.1f} s"
    print(text, file=sys.stderr)


def _write(study: Study, options: argparse.Namespace) -> None:
    from .report import report

    written = report(study, options.reports)
    for text in written.problems[:MOST_SHOWN]:
        _tell(f"noticed: {text}")
    if written.told:
        print(written.told)
    print(os.path.relpath(written.page))


def _submit(study: Study, options: argparse.Namespace) -> int:
    from .slurm import submit

    passed_on = {name: getattr(options, name) for name in ("time", "mem", "partition")}
    print(submit(study, passed_on, options.runs_per_task, options.dry_run))
    return 0


def _status(options: argparse.Namespace) -> int:
    study = _study(options)
    tally, _ = study.survey()
    print(f"{study.plan.title}: {tally.done} of {tally.total} runs done, {tally.failed} failed, {tally.missing} missing")
    if tally.old:
        print(f"{tally.old} of the plan's runs are computed, but lack a measure; `run` adds it")
    if options.failed:
        for number, name, message in study.failures():
            print(f"run {number + 1} ({study.store.folder(name)}): {message}")
    return 1 if tally.failed else 0


def _retry(options: argparse.Namespace) -> int:
    print(f"{_study(options).retry()} failed runs forgotten; `tavelo-study run` computes them again")
    return 0


def _clean(options: argparse.Namespace) -> int:
    print(f"{_study(options).clean(options.keep) / 1e6:.1f} MB removed")
    return 0


def _report(options: argparse.Namespace) -> int:
    study = _study(options)
    _write(study, options)
    tally, _ = study.survey()
    return 1 if tally.failed or tally.missing else 0
