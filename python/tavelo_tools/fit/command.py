"""tavelo-fit: parameters from data, with intervals."""

import argparse
import os
import signal
import sys
from contextlib import nullcontext
from pathlib import Path

from ..study.command import add_plan, positive
from ..study.engines import RemoteEngine
from ..study.errors import StudyError
from .fit import Fit


def main(arguments: list[str] | None = None) -> int:
    """The command line; returns the exit status."""
    signal.signal(signal.SIGTERM, _interrupt)
    options = _parser().parse_args(arguments)
    try:
        return _fit(options)
    except StudyError as error:
        _tell(str(error))
    except OSError as error:
        _tell(f"{error.filename or 'a file'}: {error.strerror or error}")
    except KeyboardInterrupt:
        _tell("interrupted; the same command goes on from here")
    return 1


def _interrupt(*_: object) -> None:
    raise KeyboardInterrupt


def _tell(text: str) -> None:
    print(f"tavelo-fit: {text}", file=sys.stderr)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="tavelo-fit", description="Parameters from data, with 95 % intervals, from one plan.")
    add_plan(parser)
    parser.add_argument("-j", type=positive, metavar="N", dest="jobs", help="runs at a time; default: all cores that may be used")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="use the workers of a Dask scheduler")
    return parser


def _fit(options: argparse.Namespace) -> int:
    from .report import report, told

    fit = Fit.load(options.plan, options.out, options.program)
    with RemoteEngine(options.scheduler) if options.scheduler else nullcontext() as engine:
        result = fit.run(options.jobs, engine)
    page = report(result, fit.study.out)
    for text in result.noticed:
        _tell(f"noticed: {text}")
    print(told(result))
    print(os.path.relpath(page))
    return 0
