"""Comma- or blank-separated numbers of a file that may be cut off, still growing or damaged."""

import io
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
            faults.append(f"{len(bad)} row(s) hold no finite numbers, the first in line {first}")
    return Numbers(rows, faults)


def _quick_rows(data: bytes, separator: str) -> pd.DataFrame | None:
    """The rows at the speed of pandas; None if one of them isn't as wide as the first, or no number."""
    width = len(_fields(data.partition(b"\n")[0].decode(errors="replace"), separator))
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
    # Blank lines would shift the numbers of the rows behind them.
    if len(rows) != data.count(b"\n") + 1 or not np.isfinite(rows.to_numpy()).all():
        return None
    return rows


def _careful_rows(data: bytes, separator: str) -> tuple[pd.DataFrame, list[int]]:
    """The good rows one by one, and the numbers of the others, counted from 0."""
    good: dict[int, list[float]] = {}
    bad = []
    width = 0
    for number, line in enumerate(data.decode(errors="replace").split("\n")):
        if not line.strip():
            continue
        try:
            values = [float(text) for text in _fields(line, separator)]
        except ValueError:
            bad.append(number)
            continue
        width = width or len(values)
        if len(values) == width and np.isfinite(values).all():
            good[number] = values
        else:
            bad.append(number)
    return pd.DataFrame.from_dict(good, orient="index", columns=range(width)), bad


def _fields(line: str, separator: str) -> list[str]:
    if separator != ",":
        return line.split()
    return line.strip().removesuffix(",").split(",")

