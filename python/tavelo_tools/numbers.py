"""Comma- or blank-separated numbers of a file that may be cut off, still growing or damaged."""

import io
import sys
from collections import Counter
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np
import pandas as pd


@dataclass
class Numbers:
    """Rows of numbers with columns 0, 1, ..., their index the number of the line (0 is the first
    behind the heading); `faults` says what could not be read."""

    rows: pd.DataFrame
    faults: list[str] = field(default_factory=list)


def read_text(path: Path) -> str:
    """The text of a file; bytes that are no text become replacement characters."""
    return path.read_text(encoding="utf-8", errors="replace")


def print_any_name() -> None:
    """From now on names of files are printed as they are, whether they are text or not."""
    if isinstance(sys.stdout, io.TextIOWrapper):
        sys.stdout.reconfigure(errors="surrogateescape")


def read_numbers(path: Path, heading: bool = False, separator: str = ",") -> Numbers:
    """All whole rows. A last row without its line end is dropped, as a run may be writing it."""
    data = path.read_bytes()
    whole, _, rest = data.rpartition(b"\n")
    faults = ["the last row is cut off"] if rest.strip(b" \r\0") else []
    if heading:
        whole = whole.partition(b"\n")[2]
    if not whole.strip():
        return Numbers(pd.DataFrame(), faults)
    rows = _quick_rows(whole, separator)
    if rows is None:
        rows, bad = _careful_rows(whole, separator)
        if bad:
            first = bad[0] + (2 if heading else 1)
            faults.append(f"{len(bad)} row(s) are no numbers or too short, the first in line {first}")
    return Numbers(rows, faults)


def _quick_rows(data: bytes, separator: str) -> pd.DataFrame | None:
    """The rows at the speed of pandas; None if one isn't as wide as the first, or no number."""
    first = data.partition(b"\n")[0]
    width = len(_fields(first.decode(errors="replace"), separator))
    try:
        rows = pd.read_csv(
            io.BytesIO(data),
            header=None,
            names=list(range(width)),
            usecols=list(range(width)),
            sep="," if separator == "," else r"\s+",
            index_col=False,
            skipinitialspace=True,
            dtype=float,
        )
    except (ValueError, pd.errors.ParserError):
        return None
    # Blank lines would shift the numbers of the rows behind them, and wider rows lose columns.
    lines = data.count(b"\n") + 1
    even = len(rows) == lines and data.count(b",") == lines * first.count(b",")
    return rows if even and np.isfinite(rows.to_numpy()).all() else None


def _careful_rows(data: bytes, separator: str) -> tuple[pd.DataFrame, list[int]]:
    """The good rows, as wide as most are, and the numbers of the others, counted from 0."""
    rows: dict[int, list[float]] = {}
    for number, line in enumerate(data.decode(errors="replace").split("\n")):
        if line.strip():
            rows[number] = _numbers(_fields(line, separator))
    widths = Counter(len(values) for values in rows.values() if values)
    width = widths.most_common(1)[0][0] if widths else 0
    good = {number: values for number, values in rows.items() if values and len(values) == width}
    bad = [number for number in rows if number not in good]
    return pd.DataFrame.from_dict(good, orient="index", columns=range(width)), bad


def _numbers(texts: list[str]) -> list[float]:
    """All as finite numbers, or none."""
    try:
        values = [float(text) for text in texts]
    except ValueError:
        return []
    return values if np.isfinite(values).all() else []


def _fields(line: str, separator: str) -> list[str]:
    if separator != ",":
        return line.split()
    return line.strip().removesuffix(",").split(",")

