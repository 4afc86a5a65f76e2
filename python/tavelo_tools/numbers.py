"""Comma- or blank-separated numbers of a file that may be cut off, still growing or damaged."""

import io
import re
from dataclasses import dataclass, field
from pathlib import Path

import pandas as pd


@dataclass
class Numbers:
    """Rows of numbers with columns 0, 1, ...; `faults` says what could not be read."""

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
            faults.append(f"{len(bad)} row(s) hold no numbers, the first in line {first}")
    return Numbers(rows, faults)


def _quick_rows(data: bytes, separator: str) -> pd.DataFrame | None:
    """The rows at the speed of pandas; None if one of them isn't as wide as the first, or no number."""
    width = _width(data.lstrip(b"\n").partition(b"\n")[0].decode(errors="replace"), separator)
    widest = data if separator == "," else re.sub(rb"(?m)^ +| +$", b"", data)
    try:
        rows = pd.read_csv(
            io.BytesIO(widest),
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
    return None if rows.isna().any(axis=None) else rows


def _careful_rows(data: bytes, separator: str) -> tuple[pd.DataFrame, list[int]]:
    """The good rows one by one, and the numbers of the others, counted from 0."""
    good: list[list[float]] = []
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
        if len(values) == width and all(value == value for value in values):
            good.append(values)
        else:
            bad.append(number)
    return pd.DataFrame(good, columns=range(width)), bad


def _fields(line: str, separator: str) -> list[str]:
    if separator != ",":
        return line.split()
    return line.strip().removesuffix(",").split(",")


def _width(line: str, separator: str) -> int:
    return len(_fields(line, separator))
