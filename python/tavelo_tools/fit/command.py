"""tavelo-fit: parameters from data, with intervals."""

import argparse
import os
from contextlib import nullcontext
from pathlib import Path

from ..study.command import add_plan, carry_out, positive, tell
from ..study.engines import RemoteEngine
from .fit import ParameterFit

NAME = "tavelo-fit"


def main(arguments: list[str] | None = None) -> int:
    """The command line; returns the exit status."""
    return carry_out(NAME, lambda: _fit(_parser().parse_args(arguments)))


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog=NAME, description="Parameters from data, with 95 % intervals, from one plan.")
    add_plan(parser)
    parser.add_argument("-j", type=positive, metavar="N", dest="jobs", help="runs at a time; default: all cores that may be used")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="use the workers of a Dask scheduler")
    return parser


def _fit(options: argparse.Namespace) -> int:
    from .report import report, told

    fit = ParameterFit.load(options.plan, options.out, options.program)
    with RemoteEngine(options.scheduler) if options.scheduler else nullcontext() as engine:
        result = fit.run(options.jobs, engine)
    page = report(result, fit.study.out)
    for text in result.noticed:
        tell(NAME, f"noticed: {text}")
    print(told(result))
    print(os.path.relpath(page))
    return 0
