"""Commands that need more libraries than reports do: a missing one is told in a line, not by a traceback."""

import sys
from importlib import import_module


def study() -> int:
    """tavelo-study."""
    return _start("tavelo-study", "study.command")


def fit() -> int:
    """tavelo-fit."""
    return _start("tavelo-fit", "fit.command")


def _start(name: str, module: str) -> int:
    try:
        status: int = import_module(f".{module}", __package__).main()
        return status
    except ModuleNotFoundError as error:
        package = (error.name or "").partition(".")[0]
        if package == __package__:
            raise
        told = f"needs the Python package '{package}'; Debian has it as python3-{package}, pip brings it with tavelo-tools[study]"
        print(f"{name}: {told}", file=sys.stderr)
        return 1
