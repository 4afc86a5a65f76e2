"""study.html: what was varied, figures, tables, fits and runs of a study, in one file."""

from html import escape
from pathlib import Path
from urllib.parse import quote

import pandas as pd

from .. import page
from ..style import to_svg
from .drawings import Drawn, Figure, drawer
from .plan import Plan
from .store import Store

MOST_ROWS = 2000


def study_page(plan: Plan, store: Store, out: Path, tables: dict[str, pd.DataFrame], figures: dict[str, Figure],
               data: Drawn, problems: list[str]) -> str:  # fmt: skip
    """The whole document. `tables` has runs, summary and fits."""
    runs = tables["runs"]
    sections = [
        page.header(plan.title, f"Study of Tavelo, from {plan.path.name}"),
        page.key_figures(_key_figures(plan, runs)),
        _problems(problems),
        _figures(figures, data),
        _titled("Fits", tables["fits"]),
        _titled("Varied", _varied(plan)),
        _titled("Measures", tables["summary"].drop(columns=[*plan.derive])),
        _runs(plan, runs, store, out),
        f'<h2>Plan</h2><div class="scroll"><pre>{escape(plan.path.read_text())}</pre></div>',
    ]
    return page.page(plan.title, sections)


def _key_figures(plan: Plan, runs: pd.DataFrame) -> dict[str, str]:
    counts = runs["status"].value_counts()
    figures = {"Conditions": f"{plan.conditions:,}", "Seeds": str(len(plan.seeds))}
    figures |= {f"Runs {status}": f"{count:,}" for status, count in counts.items()}
    return figures | {"Time of the runs": f"{runs['seconds'].sum():,.0f} s"}


def _problems(problems: list[str]) -> str:
    items = "".join(f"<li>{escape(text)}</li>" for text in problems[:100])
    more = f"<p>and {len(problems) - 100} more</p>" if len(problems) > 100 else ""
    return f"<h2>Noticed</h2><ul>{items}</ul>{more}" if problems else page.notices([])


def _figures(figures: dict[str, Figure], data: Drawn) -> str:
    text = ""
    for name, figure in figures.items():
        for panel in figure.panels:
            drawn = to_svg(drawer(panel, data), panel.title or name)
            text += f"<figure><h3>{escape(name)}</h3>{drawn}</figure>\n"
    note = "Points are means over seeds, lines through them their 95 % intervals (bootstrap), bands those of the fits."
    return f'<h2>Figures</h2><p class="muted">{note}</p><div class="plots">{text}</div>' if text else ""


def _varied(plan: Plan) -> pd.DataFrame:
    rows = [(name, ", ".join(map(str, values)), plan.unit(name)) for name, values in plan.vary.items()]
    rows += [("seed", ", ".join(map(str, plan.seeds)), "")]
    return pd.DataFrame(rows, columns=["quantity", "values", "unit"])


def _titled(title: str, table: pd.DataFrame) -> str:
    if table.empty:
        return ""
    more = f"<p>The first {MOST_ROWS} of {len(table)} rows.</p>" if len(table) > MOST_ROWS else ""
    shown = page.table(_rounded(table).head(MOST_ROWS))
    return f"<details open><summary><b>{title}</b></summary>{more}{shown}</details>"


def _rounded(table: pd.DataFrame) -> pd.DataFrame:
    return table.apply(lambda column: column.map(_text))


def _text(value: object) -> str:
    if isinstance(value, float):
        return "" if value != value else f"{value:.4g}"
    return "" if value is None else str(value)


def _runs(plan: Plan, runs: pd.DataFrame, store: Store, out: Path) -> str:
    """Each with a link to its report, or to its folder while it has none."""
    columns = [*plan.vary, "seed", *plan.measures, "status", "seconds", "message"]
    head = "".join(f"<th>{escape(name)}</th>" for name in ["run", *columns])
    rows = ""
    for row in runs.sort_values("status", ascending=False, kind="stable").head(MOST_ROWS).to_dict("records"):
        cells = "".join(f"<td>{escape(_text(row[name]))}</td>" for name in columns)
        rows += f"<tr><td>{_link(store.folder(row['run']), out)}</td>{cells}</tr>"
    more = f"<p>The first {MOST_ROWS} of {len(runs)}; runs.csv has all.</p>" if len(runs) > MOST_ROWS else ""
    table = f'<div class="scroll"><table><tr>{head}</tr>{rows}</table></div>'
    return f"<details open><summary><b>Runs</b></summary>{more}{table}</details>"


def _link(folder: Path, out: Path) -> str:
    name = escape(folder.name[:8])
    report = folder / "report.html"
    target = report if report.is_file() else folder
    if not target.exists():
        return name
    relative = target.relative_to(out) if target.is_relative_to(out) else target
    return f'<a href="{quote(str(relative))}">{name}</a>'
