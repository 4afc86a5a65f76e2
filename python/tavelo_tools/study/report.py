"""Writes what came out of a study: tables, courses, figures and the page."""

from concurrent.futures import ProcessPoolExecutor
from dataclasses import dataclass
from functools import partial
from pathlib import Path

import pandas as pd

from ..read import RunError, read_run
from ..report import write_report
from .courses import course_lines, write_courses
from .drawings import Drawn, Figure, usual_figures, write_figure
from .page import study_page
from .results import fit_rows, told
from .study import Study
from .work import processors

MOST_FAILED = 3  # of which a page is made without being asked


@dataclass(frozen=True)
class Written:
    """The page, what there is to tell on a terminal, and what is missing: runs, measures, fits."""

    page: Path
    told: str
    problems: list[str]


def report(study: Study, reports: bool = False) -> Written:
    """Writes runs.csv, summary.csv, fits.csv, study.nc, the figures and study.html.

    With `reports` every run gets its own page, else the first that have failed."""
    out, plan = study.out, study.plan
    out.mkdir(parents=True, exist_ok=True)
    runs = study.table()
    tried = study.try_fits(runs)
    fits = {name: results for name, (results, _) in tried.items()}
    tables = {"runs": runs, "summary": study.summary(runs), "fits": fit_rows(fits)}
    for name, table in tables.items():
        table.drop(columns=["condition", "defaults"], errors="ignore").to_csv(out / f"{name}.csv", index=False)
    write_courses(plan, study.store, runs, out / "study.nc")
    problems = _problems(runs) + [text for _, texts in tried.values() for text in texts]
    failed = runs[runs["status"] == "failed"]
    _write_reports(study, runs if reports else failed.head(MOST_FAILED))
    data = Drawn(plan, runs, fits, partial(course_lines, plan, study.store, runs))
    figures = _write_figures(study, data)
    page = out / "study.html"
    page.write_text(study_page(plan, study.store, out, tables, figures, data, problems), encoding="utf-8")
    return Written(page, told(plan, runs, fits), problems)


def _problems(runs: pd.DataFrame) -> list[str]:
    missing = int((runs["status"] == "missing").sum())
    found = [f"{missing} of {len(runs)} runs are missing"] if missing else []
    for files in sorted(set(runs["defaults"]) - {""}):
        found.append(f"default values were used of files that aren't in the base folder: {files}")
    told = runs[runs["message"] != ""]
    alike = told["message"].str.replace(r"\d[\d.e+-]*", "0", regex=True)  # but for their numbers
    for (status, _), rows in told.groupby(["status", alike], sort=False):
        message = rows["message"].iloc[0]
        names = ", ".join(rows["run"].str[:8].head(3)) + (f" and {len(rows) - 3} more" if len(rows) > 3 else "")
        found.append(f"{names}: {'failed: ' if status == 'failed' else ''}{message}")
    return found


def _write_figures(study: Study, data: Drawn) -> dict[str, Figure]:
    figures = study.plan.figures or usual_figures(study.plan)
    if not (data.runs["status"] == "done").any():
        return {}
    folder = study.out / "figures"
    folder.mkdir(exist_ok=True)
    for name, figure in figures.items():
        write_figure(figure, data, folder / name)
    return figures


def _write_reports(study: Study, runs: pd.DataFrame) -> None:
    """Pages of the runs that have none yet, on all cores."""
    folders = [study.store.folder(name) for name in runs["run"]]
    wanted = [folder for folder in folders if folder.is_dir() and not (folder / "report.html").is_file()]
    if wanted:
        with ProcessPoolExecutor(processors()) as pool:
            list(pool.map(_write_report, wanted))


def _write_report(folder: Path) -> None:
    try:
        write_report(read_run(folder), folder)
    except RunError:  # it failed before it wrote anything
        return
