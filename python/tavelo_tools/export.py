"""tavelo-export: runs as one file for other programs."""

import argparse
import json
import sys
from collections.abc import Sequence
from pathlib import Path

from .dataset import join, tidy
from .numbers import print_any_name
from .read import Run, RunError, read_run
from .tables import BY_KEY

KINDS = (".nc", ".csv", ".parquet")


def write_netcdf(runs: Sequence[Run], tables: Sequence[str], path: Path) -> None:
    """The data set of all runs. RunError without xarray and h5netcdf."""
    merged = join(runs, tables or None)
    packed = {
        name: {"zlib": True, "complevel": 4}
        for name, variable in merged.variables.items()
        if variable.ndim and variable.dtype.kind in "fi"
    }
    path.touch()  # fails with the system's reason, which HDF5 hides in a text of its own
    try:
        merged.to_netcdf(path, engine="h5netcdf", encoding=packed)
    except (ImportError, ValueError) as error:
        raise RunError(f"NetCDF needs the package python3-h5netcdf: {error}") from error


def write_table(runs: Sequence[Run], key: str, path: Path) -> None:
    """One table of all runs, and beside it its units (metadata of "CSV on the Web")."""
    table, units = tidy(runs, key)
    if path.suffix == ".csv":
        table.to_csv(path, index=False)
    else:
        try:
            table.to_parquet(path, index=False)
        except ImportError as error:
            text = "Parquet needs the Python package pyarrow or fastparquet, neither of which is here"
            raise RunError(text) from error
    columns = [{"name": name, "unit": units.get(name, "")} for name in table.columns]
    about = {"@context": "http://www.w3.org/ns/csvw", "url": path.name, "tableSchema": {"columns": columns}}
    beside = path.with_name(f"{path.name}-metadata.json")
    beside.write_text(json.dumps(about, indent=1) + "\n")


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(
        prog="tavelo-export",
        description="Writes runs into one file, with tidy names and units: FILE.nc holds all tables as a "
        "data set with a dimension for the runs, FILE.csv and FILE.parquet one table with the runs "
        "below each other.",
        epilog="Tables: " + ", ".join(BY_KEY) + ".",
    )
    parser.add_argument("runs", type=Path, nargs="+", metavar="RUN_DIR")
    parser.add_argument(
        "-o", "--out", type=Path, required=True, metavar="FILE", help="what to write: .nc, .csv or .parquet"
    )
    parser.add_argument(
        "--table",
        action="append",
        choices=list(BY_KEY),
        metavar="TABLE",
        help="a table to write, repeated for several in FILE.nc; default: all but the large table "
        "integral into FILE.nc, else result",
    )
    options = parser.parse_args(arguments)
    print_any_name()
    out, tables = options.out, options.table or []
    if out.suffix not in KINDS:
        parser.error(f"{out}: no such kind of file; accepted: {', '.join(KINDS)}")
    if out.suffix != ".nc" and len(tables) > 1:
        parser.error(f"{out}: holds one table, not {' and '.join(tables)}")
    try:
        runs = [read_run(directory) for directory in options.runs]
        if out.suffix == ".nc":
            write_netcdf(runs, tables, out)
        else:
            write_table(runs, *(tables or ["result"]), out)
    except RunError as error:
        print(f"tavelo-export: {error}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"tavelo-export: {out}: can't be written: {error.strerror or error}", file=sys.stderr)
        return 1
    for problem in (f"{run.name}: {problem}" for run in runs for problem in run.problems):
        print(f"tavelo-export: noticed: {problem}", file=sys.stderr)
    print(out)
    return 0
