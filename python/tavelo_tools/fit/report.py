"""Writes what came out of a fit: tables, a picture and the page."""

from html import escape
from pathlib import Path

import pandas as pd

from .. import page
from ..style import write_png
from .drawings import all_plots
from .fit import ParameterFitResult

FIRST_ROWS = 40  # of a table on the page


def report(result: ParameterFitResult, out: Path) -> Path:
    """Writes fit.csv, correlation.csv, residuals.csv, trials.csv, fit.png and fit.html; returns the page."""
    tables = {"fit": result.table(), "residuals": result.residuals(), "trials": trials(result)}
    for name, table in tables.items():
        table.to_csv(out / f"{name}.csv", index=False)
    result.correlation().to_csv(out / "correlation.csv")
    plots = all_plots(result)
    write_png(str(out / "fit.png"), [plot.draw for plot in plots], title=result.plan.study.title)
    path = out / "fit.html"
    path.write_text(_page(result, tables), encoding="utf-8")
    return path


def trials(result: ParameterFitResult) -> pd.DataFrame:
    """A row per candidate, in the order in which it was tried: values, seeds, misfit, message."""
    rows = []
    for candidate in result.tried:
        misfit = float("nan")
        if candidate.model is not None:
            misfit = float((((candidate.mean - result.plan.y) / result.plan.sigma) ** 2).sum())
        status = "done" if candidate.model is not None else "failed"
        rows.append({**candidate.values, "seeds": len(candidate.seeds), "misfit": misfit, "status": status,
                     "message": candidate.message})  # fmt: skip
    return pd.DataFrame(rows)


def told(result: ParameterFitResult) -> str:
    """For a terminal: best values, misfit."""
    lines = [f"{e.free.name} = {e.value:.4g} ({e.low:.4g} to {e.high:.4g})" for e in result.estimates]
    return "\n".join([*lines, _misfit(result)])


def _misfit(result: ParameterFitResult) -> str:
    text = f"misfit {result.misfit:.4g} with {result.plan.freedom} degrees of freedom"
    if result.plan.has_errors:
        text += f" (p = {result.chance:.2g})"
    share = result.noise_misfit / result.misfit if result.misfit else 0.0
    return f"{text}; of it {result.noise_misfit:.3g} ({100 * min(1.0, share):.0f} %) is the model's own noise; {result.runs} runs"


def _page(result: ParameterFitResult, tables: dict[str, pd.DataFrame]) -> str:
    plan = result.plan
    figures = {
        "Runs": f"{result.runs:,}", "Candidates": f"{len(result.tried):,}", "Candidates failed": f"{result.failed:,}",
        "Data": str(len(plan.y)), "Free": str(len(plan.free)), "Seeds": str(len(plan.study.seeds)),
        "Misfit": f"{result.misfit:.4g}", "of it the model's noise": f"{result.noise_misfit:.3g}",
    }  # fmt: skip
    items = "".join(f"<li>{escape(text)}</li>" for text in result.noticed)
    correlation = result.correlation().reset_index(names="")
    sections = [
        page.header(plan.study.title, f"Fit of Tavelo, from {plan.study.path.name}"),
        page.key_figures(figures),
        f"<p>{escape(_misfit(result))}.</p>",
        f"<h2>Best values, with 95 % intervals</h2>{page.table(_rounded(tables['fit']))}",
        f"<h2>Noticed</h2><ul>{items}</ul>" if items else page.notices([]),
        page.plots(all_plots(result)),
        _folded("Correlation between the parameters", correlation),
        _folded("Residuals", tables["residuals"]),
        _folded("Candidates", tables["trials"]),
        page.texts("Plan", {plan.study.path.name: plan.study.path.read_text()}),
    ]
    return page.page(plan.study.title, sections)


def _folded(title: str, table: pd.DataFrame) -> str:
    more = f"<p>The first {FIRST_ROWS} of {len(table)} rows.</p>" if len(table) > FIRST_ROWS else ""
    return f"<details><summary><b>{title}</b></summary>{more}{page.table(_rounded(table.head(FIRST_ROWS)))}</details>"


def _rounded(table: pd.DataFrame) -> pd.DataFrame:
    def text(value: object) -> str:
        if isinstance(value, bool):
            return "yes" if value else "no"
        if isinstance(value, float):
            return "" if value != value else f"{value:.4g}"
        return "" if value is None else str(value)

    return table.apply(lambda column: column.map(text))
