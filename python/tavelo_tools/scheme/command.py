"""tavelo-scheme: checks a kinetic scheme and draws it."""

import argparse
import subprocess
import sys
from pathlib import Path

from ..report import draw_sheet
from ..study.errors import StudyError
from ..study.program import find_program
from .data import Scheme, from_json
from .drawings import plots_of_scheme
from .page import make_page


class SchemeError(Exception):
    """A scheme that the program doesn't take."""


def ask(program: Path, file: Path) -> Scheme:
    """What the program tells of a scheme. It is asked in the folder of the file, whose simulation.prm names the
    crossbridge law."""
    if not file.is_file():
        raise SchemeError(f"{file}: no such file")
    result = subprocess.run(
        [program, "--scheme", file.name], cwd=file.resolve().parent, capture_output=True, text=True, errors="replace", check=False
    )
    told = [line.removeprefix("tavelo: ") for line in result.stderr.splitlines()]
    if result.returncode != 0:
        raise SchemeError("\n".join(told) or f"{program} ended with status {result.returncode}")
    for line in told:
        print(f"tavelo-scheme: {line}", file=sys.stderr)
    return from_json(result.stdout)


def write(scheme: Scheme, out: Path, stem: str) -> list[Path]:
    """Page and picture."""
    html, png = out / f"{stem}.html", out / f"{stem}.png"
    html.write_text(make_page(scheme), encoding="utf-8")
    draw_sheet(plots_of_scheme(scheme), png, title=scheme.name, columns=2)
    return [html, png]


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(
        prog="tavelo-scheme",
        description="Checks a kinetic scheme; draws its cycle, rates, free energies and steady states.",
    )
    parser.add_argument("file", type=Path, metavar="FILE", help="the scheme, a TOML file")
    parser.add_argument("--out", type=Path, metavar="DIR", help="where to write; default: the file's folder")
    parser.add_argument("--program", type=Path, metavar="PATH", help="tavelo itself; default: that of the path")
    options = parser.parse_args(arguments)
    try:
        scheme = ask(find_program(options.program), options.file)
        out = options.out or options.file.parent
        out.mkdir(parents=True, exist_ok=True)
        written = write(scheme, out, options.file.stem)
    except (SchemeError, StudyError) as error:
        print(f"tavelo-scheme: {error}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"tavelo-scheme: {error.filename}: can't be written: {error.strerror}", file=sys.stderr)
        return 1
    for text in scheme.checks:
        print(f"tavelo-scheme: noticed: {text}", file=sys.stderr)
    for path in written:
        print(path)
    return 0
