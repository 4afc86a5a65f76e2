"""What a page says of a scheme."""

from html import escape

import pandas as pd

from .. import page
from .data import Scheme
from .drawings import plots_of_scheme


def sections(scheme: Scheme) -> list[str]:
    """For the page of a scheme, and for the report of a run."""
    return [
        page.texts("Checks", {"": "\n".join(scheme.checks) or "Nothing out of the ordinary."}),
        page.plots(plots_of_scheme(scheme)).replace("<h2>Plots</h2>", f"<h2>Scheme {escape(scheme.file)}</h2>", 1),
        "<h2>Transitions</h2>" + page.table(transitions(scheme)),
        "<h2>Parameters of the scheme</h2>" + page.table(parameters(scheme)),
    ]


def transitions(scheme: Scheme) -> pd.DataFrame:
    rows = []
    for number, rate in enumerate(scheme.rates, start=1):
        marks = [name for name, is_so in (("rescaled for the sites in reach", rate.binding), ("ATP", rate.fuel)) if is_so]
        rows.append((number, scheme.name_of(rate), rate.as_read, ", ".join(rate.site), ", ".join(marks)))
    return pd.DataFrame(rows, columns=["", "transition", "rate", "site", "notes"])


def parameters(scheme: Scheme) -> pd.DataFrame:
    rows = [
        (p["name"], f"{p['value']:.6g}", p["unit"], "" if _is_number(p["as_read"]) else p["as_read"], p["about"])
        for p in scheme.parameters
    ]
    return pd.DataFrame(rows, columns=["name", "value", "unit", "formula", "meaning"])


def _is_number(text: str) -> bool:
    try:
        float(text)
    except ValueError:
        return False
    return True


def make_page(scheme: Scheme) -> str:
    about = ", ".join(filter(None, (scheme.source, f"crossbridge law {scheme.law}")))
    return page.page(f"{scheme.name}: kinetic scheme", [page.header(scheme.name, about), *sections(scheme)])
