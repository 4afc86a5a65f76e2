"""tavelo-view: the lattice of a run in three dimensions, as a page and as files for ParaView."""

import argparse
import sys
from pathlib import Path

from ..read import RunError, read_run
from .lattice import read_lattice
from .page import make_page
from .vtk import write_vtk

MOST_HEADS = 15_000


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(
        prog="tavelo-view",
        description="Writes a page that shows the lattice of a run in three dimensions, at its snapshots.",
    )
    parser.add_argument("run", type=Path, metavar="RUN_DIR", help="the directory of the run")
    parser.add_argument("--out", type=Path, metavar="FILE", help="the page; default: view.html in the run's directory")
    parser.add_argument(
        "--heads",
        type=int,
        default=MOST_HEADS,
        metavar="N",
        help="show as many rows of filaments as have at most N heads; default: %(default)s",
    )
    parser.add_argument("--vtk", type=Path, metavar="DIR", help="also write files for ParaView into DIR")
    options = parser.parse_args(arguments)
    try:
        run = read_run(options.run)
        lattice = read_lattice(run, options.heads)
        out = options.out or options.run / "view.html"
        made = [write_vtk(lattice, options.vtk, run.name)] if options.vtk else []
        out.write_text(make_page(lattice, run), encoding="utf-8")
    except RunError as error:
        print(f"tavelo-view: {error}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"tavelo-view: {error.filename}: can't be written: {error.strerror}", file=sys.stderr)
        return 1
    for note in [*map(str, run.problems), *lattice.notes]:
        print(f"tavelo-view: {note}", file=sys.stderr)
    print(*[out, *made], sep="\n")
    return 0
