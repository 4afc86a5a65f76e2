"""One page that needs nothing but itself: no network, no script."""

import re
from html import escape
from pathlib import Path

import pandas as pd

from .noticed import Notice
from .plots import Plot
from .style import DARK, LIGHT, theme, to_svg

_LIGHT = theme(LIGHT, "#1b1c1e", "#dcdde0") + "--ground:#fff;--soft:#f4f5f7;--muted:#5a6070;--alarm:#b3261e;"
_DARK = theme(DARK, "#e8e9ec", "#3a3d44") + "--ground:#16181c;--soft:#20232a;--muted:#a3a9b6;--alarm:#ff8a80;"

STYLE = f"""
:root{{color-scheme:light dark;{_LIGHT}}}
@media (prefers-color-scheme:dark){{:root{{{_DARK}}}}}
*{{box-sizing:border-box}}
body{{margin:0 auto;max-width:96rem;padding:1rem;background:var(--ground);color:var(--ink);
font:1rem/1.45 system-ui,sans-serif}}
h1{{font-size:1.5rem;margin:.2rem 0;overflow-wrap:anywhere}}
h2{{font-size:1.15rem;margin:1.8rem 0 .6rem}}
p{{margin:.3rem 0}}.muted,figcaption,th{{color:var(--muted)}}
.key{{display:grid;grid-template-columns:repeat(auto-fit,minmax(9.5rem,1fr));gap:.6rem;margin:1rem 0}}
.key div{{background:var(--soft);border-radius:.4rem;padding:.5rem .7rem}}
.key b{{display:block;font-size:1.15rem}}
.plots{{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,25rem),1fr));gap:1.2rem}}
figure{{margin:0;min-width:0}}figure h3{{font-size:1rem;margin:0 0 .2rem}}
figure svg{{display:block;width:100%;height:auto}}figcaption{{font-size:.85rem}}
ul{{padding-left:1.2rem;margin:.4rem 0}}
.grave{{color:var(--alarm);border-left:.3rem solid;padding:.1rem .7rem;margin:.8rem 0;font-weight:600;
overflow-wrap:anywhere}}
.scroll{{overflow-x:auto}}table{{border-collapse:collapse;font-size:.9rem;min-width:100%}}
th,td{{text-align:left;padding:.2rem .7rem .2rem 0;border-bottom:1px solid var(--grid);
vertical-align:top;overflow-wrap:break-word}}
pre{{margin:0;font-size:.9rem}}h3{{font-size:1rem;margin:.6rem 0 .2rem}}
.folds{{columns:24rem;column-gap:2rem}}
details{{margin:0 0 .6rem;break-inside:avoid}}summary{{cursor:pointer}}
@media print{{details{{display:block}}figure{{break-inside:avoid}}}}
"""


def page(title: str, sections: list[str]) -> str:
    """The whole document."""
    return (
        '<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8">'
        '<meta name="viewport" content="width=device-width,initial-scale=1">'
        '<link rel="icon" href="data:,">'
        f"<title>{escape(title)}</title><style>{STYLE}</style></head><body>\n"
        + "\n".join(sections)
        + "\n</body></html>\n"
    )


def write(path: Path, text: str) -> None:
    """Names of files that are no text stand there with question marks."""
    path.write_text(text, encoding="utf-8", errors="replace")


def header(title: str, about: str) -> str:
    return f'<header><h1>{escape(title)}</h1><p class="muted">{escape(about)}</p></header>'


def key_figures(figures: dict[str, str]) -> str:
    tiles = "".join(f"<div>{escape(name)}<b>{escape(text)}</b></div>" for name, text in figures.items())
    return f'<div class="key">{tiles}</div>'


def alarms(found: list[Notice]) -> str:
    """The grave ones, to stand at the top of the page."""
    grave = [notice for notice in found if notice.grave]
    return f'<div class="grave" role="alert">{_listed(grave)}</div>' if grave else ""


def notices(found: list[Notice]) -> str:
    """All others."""
    if not found:
        return "<h2>Noticed</h2><p>Nothing out of the ordinary.</p>"
    rest = [notice for notice in found if not notice.grave]
    return f"<h2>Noticed</h2>{_listed(rest)}" if rest else ""


def _listed(found: list[Notice]) -> str:
    return f"<ul>{''.join(f'<li>{escape(notice.text)}</li>' for notice in found)}</ul>"


def plots(found: list[Plot]) -> str:
    if not found:
        return "<h2>Plots</h2><p>There are no data to draw.</p>"
    figures = "".join(
        f"<figure><h3>{escape(plot.title)}</h3>{to_svg(plot.draw, plot.title)}"
        f"<figcaption>{escape(plot.about)}</figcaption></figure>\n"
        for plot in found
    )
    return f'<h2>Plots</h2><div class="plots">{figures}</div>'


def texts(title: str, found: dict[str, str]) -> str:
    """Texts as they are, under their names."""
    shown = "".join(
        f'<h3>{escape(name)}</h3><div class="scroll"><pre>{escape(text)}</pre></div>'
        for name, text in found.items()
    )
    return f"<h2>{escape(title)}</h2>{shown}" if found else ""


def table(frame: pd.DataFrame) -> str:
    head = "".join(f"<th>{escape(str(name))}</th>" for name in frame.columns)
    rows = "".join(
        "<tr>" + "".join(f"<td>{escape(_shown(value))}</td>" for value in row) + "</tr>"
        for row in frame.itertuples(index=False)
    )
    return f'<div class="scroll"><table><tr>{head}</tr>{rows}</table></div>'


def _shown(value: object) -> str:
    """Numbers without the zeros that end them."""
    text = str(value)
    return text.rstrip("0").rstrip(".") if re.fullmatch(r"-?\d+\.\d+", text) else text


def parameters(title: str, frame: pd.DataFrame, opened: bool) -> str:
    """A folded table a section; what several components list in the same way stands there once."""
    heading = f"<h2>{escape(title)}</h2>"
    if frame.empty:
        return heading + "<p>None are known.</p>"
    columns = ["name", "value", "unit"]
    keys = [key for key in ("block", "section") if key in frame]
    counts: dict[tuple[str, str], int] = {}
    for _, part in frame.groupby(keys if len(keys) > 1 else keys[0], sort=False):
        name = str(part["section"].iloc[0])
        text = table(part[columns].loc[:, lambda t: (t != "").any()])
        counts[name, text] = counts.get((name, text), 0) + 1
    folds = ""
    for (name, text), count in counts.items():
        times = f" ({count} times the same)" if count > 1 else ""
        start = "<details open>" if opened else "<details>"
        folds += f"{start}<summary>{escape(name)}{times}</summary>{text}</details>"
    return f'{heading}<div class="folds">{folds}</div>'
