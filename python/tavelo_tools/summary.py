"""What several runs came to, condition by condition: mean, standard deviation and number of runs."""

from collections.abc import Sequence

import pandas as pd

from .groups import Group, varied
from .noticed import last_time
from .read import Run

# Quantities of a run: column of "result.csv", name, whether the largest or the mean at the end.
MEASURES = (
    ("force", "force, last tenth", False),
    ("force", "highest force", True),
    ("displacement_actin", "displacement, last tenth", False),
    ("bound_heads", "bound heads, last tenth", False),
    ("bound_protein_c", "bound protein-C links, last tenth", False),
)
COLUMNS = ["condition", "quantity", "unit", "mean", "sd", "n"]


def measure(run: Run, column: str, largest: bool, end: float) -> float | None:
    """One figure of a run up to the time `end`, whose last tenth counts; None without data."""
    table = run["result"]
    if column not in table:
        return None
    # Times are written to eleven digits.
    table = table[table["time"] <= end + 1e-9]
    values = table[column] if largest else table.loc[table["time"] > 0.9 * end, column]
    if values.empty:
        return None
    return float(values.max() if largest else values.mean())


def summary(groups: Sequence[Group]) -> pd.DataFrame:
    """A row for each condition and quantity, with what the condition sets differently; `sd` is the
    standard deviation over the runs, empty for a single one. Runs of a condition are compared up to
    the time that all of them reach."""
    rows = []
    for group in groups:
        end = min(last_time(run) for run in group.runs)
        for column, name, largest in MEASURES:
            found = [measure(run, column, largest, end) for run in group.runs]
            values = pd.Series([value for value in found if value is not None], dtype=float)
            if not values.empty:
                unit = group.runs[0].unit("result", column)
                rows.append([group.label, name, unit, values.mean(), values.std(), len(values)])
    return pd.DataFrame(rows, columns=COLUMNS)


def with_settings(table: pd.DataFrame, groups: Sequence[Group]) -> pd.DataFrame:
    """The same with a column for each parameter that differs, to sort and to draw by."""
    names = [group.label for group in groups]
    added = {
        name: table["condition"].map(dict(zip(names, values)))
        for name, values in varied([group.runs[0] for group in groups]).items()
    }
    return pd.concat([table, pd.DataFrame(added, index=table.index)], axis="columns")


def to_show(table: pd.DataFrame) -> pd.DataFrame:
    """A row for each condition, each quantity as "mean ± SD" in a column."""
    if table.empty:
        return table
    shown = table.assign(
        cell=[
            f"{row.mean:.4g}" + (f" \u00b1 {row.sd:.2g}" if row.n > 1 else "")
            for row in table[["mean", "sd", "n"]].itertuples(index=False)
        ],
        heading=table["quantity"] + " [" + table["unit"] + "]",
    )
    wide = shown.pivot(index="condition", columns="heading", values="cell")
    wide = wide.loc[table["condition"].unique(), shown["heading"].unique()].fillna("")
    wide.insert(0, "n", table.groupby("condition")["n"].max().astype(str))
    return wide.reset_index().rename_axis(columns=None)
