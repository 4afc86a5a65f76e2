"""tavelo-compare: several runs laid over each other, with means over seeds."""

import argparse
import sys
from pathlib import Path

import pandas as pd

from . import page
from .groups import Group, differences, group, seed
from .noticed import Notice, notices
from .numbers import print_any_name
from .plots import IN_A_PLOT, LEAST_FOR_BAND, plots_of_groups
from .read import Run, RunError, read_run
from .report import about, draw_sheet, key_figures
from .summary import summary, to_show, with_settings

MOST_DRAWN = 4 * IN_A_PLOT  # conditions; the table has all


def read_runs(directories: list[Path]) -> tuple[list[Run], list[str]]:
    """The runs that can be compared, and why the others can't."""
    runs, left_out = [], []
    for directory in directories:
        try:
            run = read_run(directory)
        except RunError as error:
            left_out.append(str(error))
            continue
        if run["result"].empty:
            left_out.append(f"{directory}: result.csv holds no rows")
        else:
            runs.append(run)
    return runs, left_out


def _remarks(groups: list[Group], left_out: list[str]) -> list[Notice]:
    found = [Notice(f"Left out: {reason}", True) for reason in left_out]
    found += [
        Notice(f"{run.name}: {notice.text}", True)
        for item in groups
        for run in item.runs
        for notice in notices(run)
        if notice.grave
    ]
    if len(groups) > MOST_DRAWN:
        found.append(Notice(f"Drawn are the first {MOST_DRAWN} of {len(groups)} conditions."))
    if any(len(item.runs) > 1 for item in groups):
        text = (
            "Runs that differ only by seed are drawn as their mean; n is their number. The band is the "
            "95 % confidence band of the mean (Student's t), on a logarithmic scale for what can't be "
            "negative, on a logit scale for shares; with fewer than "
            f"{LEAST_FOR_BAND} runs there is none, and the runs are drawn thin."
        )
        found.append(Notice(text))
    return found


def _title(groups: list[Group]) -> str:
    if len(groups) > 3:
        return f"{len(groups)} conditions, {sum(len(item.runs) for item in groups)} runs"
    return " and ".join(item.counted for item in groups)


def _differing(groups: list[Group]) -> pd.DataFrame:
    table = differences([item.runs[0] for item in groups])
    table = table.rename(columns=dict(enumerate(item.label for item in groups)))
    # Tables are told apart, their numbers would fill the page.
    return table.assign(**{
        item.label: table[item.label].str.slice(stop=60) for item in groups
    })  # fmt: skip


def make_page(groups: list[Group], table: pd.DataFrame, left_out: list[str]) -> str:
    title = _title(groups)
    runs = pd.DataFrame(
        {"run": run.name, "condition": item.label, "seed": seed(run), **key_figures(run)}
        | {"conditions": about(run)}
        for item in groups
        for run in item.runs
    ).fillna("")
    sections = [
        page.header(title, "Runs of Tavelo compared"),
        page.alarms(_remarks(groups, left_out)),
        page.notices(_remarks(groups, left_out)),
        "<h2>Mean \u00b1 standard deviation</h2>" + page.table(to_show(table)),
        page.plots(plots_of_groups(groups[:MOST_DRAWN])),
        "<h2>Runs</h2>" + page.table(runs),
    ]
    if len(groups) > 1:
        differing = _differing(groups)
        known = "<p>None that are known here.</p>" if differing.empty else page.table(differing)
        sections.append("<h2>Parameters that differ</h2>" + known)
    return page.page(f"{title}: comparison", sections)


def write_comparison(groups: list[Group], left_out: list[str], out: Path) -> list[Path]:
    """Writes compare.html, compare.csv and compare.png into the directory `out`."""
    html, csv, png = (out / f"compare.{kind}" for kind in ("html", "csv", "png"))
    table = summary(groups)
    page.write(html, make_page(groups, table, left_out))
    with_settings(table, groups).to_csv(csv, index=False, errors="replace")
    draw_sheet(plots_of_groups(groups[:MOST_DRAWN]), png)
    return [path for path in (html, csv, png) if path.exists()]


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(
        prog="tavelo-compare",
        description="Writes compare.html, compare.csv and compare.png: several runs laid over each "
        "other. Runs that differ only by their seed become their mean with its 95 % band.",
        epilog="Exit status: 0; 1 if a run is left out or nothing can be written.",
    )
    parser.add_argument("runs", type=Path, nargs="+", metavar="RUN_DIR")
    parser.add_argument(
        "--out", type=Path, default=Path(), metavar="DIR", help="where to write; default: here"
    )
    parser.add_argument(
        "--allow-missing",
        action="store_true",
        help="exit status 0 even if runs are left out: no run, no rows, or a seed twice",
    )
    options = parser.parse_args(arguments)
    print_any_name()
    runs, left_out = read_runs(options.runs)
    groups, repeated = group(runs)
    left_out += [f"{run.directory}: same conditions and same seed as another" for run in repeated]
    for reason in left_out:
        print(f"tavelo-compare: left out: {reason}", file=sys.stderr)
    if not groups:
        return 1
    try:
        options.out.mkdir(parents=True, exist_ok=True)
        written = write_comparison(groups, left_out, options.out)
    except OSError as error:
        print(f"tavelo-compare: {error.filename}: can't be written: {error.strerror}", file=sys.stderr)
        return 1
    for path in written:
        print(path)
    return 1 if left_out and not options.allow_missing else 0
