"""Comparison of two result tables, cell by cell."""

import math

# Printed results differ in their last digit at 1e-6 or coarser, so 1e-8 means "the same text"; the
# floor is for what is zero but for rounding.
RELATIVE = 1e-8
FLOOR = 1e-9


def number(cell: str) -> float | None:
    """The number in a cell, or None for text."""
    try:
        return float(cell)
    except ValueError:
        return None


def same_cell(expected: str, found: str) -> bool:
    """Whether two cells hold the same number or, where one is no number, the same text."""
    a, b = number(expected), number(found)
    if a is None or b is None:
        return expected == found
    return math.isclose(a, b, rel_tol=RELATIVE, abs_tol=FLOOR)


def first_difference(expected: str, found: str) -> str | None:
    """Names the first differing cell or the lost and extra rows; None if all are the same.

    Cells are separated by commas; a first line that isn't all numbers names the columns."""
    rows = [line.split(",") for line in expected.splitlines()]
    found_rows = [line.split(",") for line in found.splitlines()]
    is_heading = bool(rows) and all(number(cell) is None for cell in rows[0])
    names = rows[0] if is_heading else []
    for line, (row, found_row) in enumerate(zip(rows, found_rows), start=1):
        for i, (cell, found_cell) in enumerate(zip(row, found_row)):
            if not same_cell(cell, found_cell):
                name = f" ({names[i].strip()})" if i < len(names) else ""
                place = f"line {line}, column {i + 1}{name}"
                return f"{place}: expected '{cell.strip()}', found '{found_cell.strip()}'"
        if len(row) != len(found_row):
            return f"line {line}: expected {len(row)} cells, found {len(found_row)}"
    if len(rows) > len(found_rows):
        return f"rows are lost: expected {len(rows)} lines, found {len(found_rows)}"
    if len(rows) < len(found_rows):
        return f"rows are extra: expected {len(rows)} lines, found {len(found_rows)}"
    return None
