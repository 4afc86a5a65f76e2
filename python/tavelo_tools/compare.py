"""tavelo-compare: several runs laid over each other, with means over seeds."""

import argparse
import sys
from pathlib import Path

import pandas as pd

from . import page
from .listing import value_of
from .noticed import Notice, notices
from .numbers import read_text
from .plots import Group, plots_of_groups
from .read import Run, RunError, read_run
from .report import about, draw_sheet, key_figures
from .style import LIGHT

SEED = "random_seed"


def conditions(run: Run) -> tuple[tuple[str, str], ...]:
    """All that a run depends on but its seed: its input files, or the listing where they are lost."""
    files = sorted({*run.directory.glob("*.prm"), *run.directory.glob("*.dat")})
    outputs = {path for paths in run.files.values() for path in paths}
    inputs = [path for path in files if path not in outputs]
    if not any(path.name == "simulation.prm" for path in inputs):
        listed = run["parameters"]
        return (("listing", listed[listed["name"] != "Random Seed"].to_csv()),)
    return tuple((path.name, _without_seed(path)) for path in inputs)


def _without_seed(path: Path) -> str:
    lines = (line.split("#")[0].split() for line in read_text(path).splitlines())
    return "\n".join(" ".join(words) for words in lines if words and SEED not in words)


def group(runs: list[Run]) -> list[Group]:
    """Runs under the same conditions together, in the order of the first of each."""
    by_conditions: dict[tuple[tuple[str, str], ...], list[Run]] = {}
    for run in runs:
        by_conditions.setdefault(conditions(run), []).append(run)
    groups = []
    for members in by_conditions.values():
        # Runs of the same seed are the same run; counted twice, they would narrow the band.
        distinct = {value_of(run["parameters"], "Random Seed") or run.name: run for run in members}
        label = members[0].name
        if len(distinct) > 1:
            label += f" and {len(distinct) - 1} more seeds"
        groups.append(Group(label, tuple(distinct.values())))
    return groups


def differences(groups: list[Group]) -> pd.DataFrame:
    """Listed and set parameters in which the groups differ, a column for each group."""
    columns = {}
    for item in groups:
        run = item.runs[0]
        frame = pd.concat([run["parameters"], run.input_parameters])
        frame = frame[~frame["name"].isin(["Random Seed", SEED])]
        frame = frame.drop_duplicates(["section", "name"])
        columns[item.label] = frame.set_index(["section", "name"])["value"]
    table = pd.DataFrame(columns).fillna("")
    table = table[table.nunique(axis="columns") > 1]
    return table.reset_index()


def _notices(groups: list[Group], given: int) -> list[Notice]:
    found = [
        Notice(f"{run.name}: {notice.text}", True)
        for item in groups
        for run in item.runs
        for notice in notices(run)
        if notice.grave
    ]
    averaged = [item for item in groups if len(item.runs) > 1]
    for item in averaged:
        members = ", ".join(run.name for run in item.runs)
        text = f"{item.label}: mean of {len(item.runs)} runs ({members}) that differ only by seed; "
        found.append(Notice(text + "the band is the 95 % confidence band of the mean (Student's t)."))
    counted = sum(len(item.runs) for item in groups)
    if counted < given:
        found.append(Notice(f"{given - counted} run(s) left out: same conditions and same seed."))
    return found


def make_page(groups: list[Group], given: int) -> str:
    title = " and ".join(item.label for item in groups[:3]) + (" ..." if len(groups) > 3 else "")
    runs = pd.DataFrame(
        {"run": run.name, **key_figures(run), "conditions": about(run)}
        for item in groups
        for run in item.runs
    ).fillna("")
    differing = differences(groups)
    sections = [
        page.header(title, "Runs of Tavelo compared"),
        page.notices(_notices(groups, given)),
        page.plots(plots_of_groups(groups)),
        "<h2>Runs</h2>" + page.table(runs),
    ]
    if len(groups) > 1:
        known = "<p>None that are known here.</p>" if differing.empty else page.table(differing)
        sections.append("<h2>Parameters that differ</h2>" + known)
    return page.page(f"{title}: comparison", sections)


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(
        prog="tavelo-compare",
        description="Writes compare.html and compare.png: several runs laid over each other. "
        "Runs that differ only by their seed become their mean with its 95 %% band.",
    )
    parser.add_argument("runs", type=Path, nargs="+", metavar="RUN_DIR")
    parser.add_argument(
        "--out", type=Path, default=Path(), metavar="DIR", help="where to write; default: here"
    )
    options = parser.parse_args(arguments)
    try:
        runs = [read_run(directory) for directory in options.runs]
        groups = group(runs)
        if len(groups) > len(LIGHT):
            raise RunError(f"{len(groups)} different runs; at most {len(LIGHT)} can be told apart")
        options.out.mkdir(parents=True, exist_ok=True)
        html, png = options.out / "compare.html", options.out / "compare.png"
        html.write_text(make_page(groups, len(runs)), encoding="utf-8")
        draw_sheet(plots_of_groups(groups), png)
    except RunError as error:
        print(f"tavelo-compare: {error}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"tavelo-compare: {error.filename}: can't be written: {error.strerror}", file=sys.stderr)
        return 1
    print(html)
    if png.exists():
        print(png)
    return 0
