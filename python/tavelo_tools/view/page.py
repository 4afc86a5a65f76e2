"""The page of a lattice: one file, with three.js, its own scripts and all data in it."""

import json
from html import escape
from pathlib import Path

from .. import page
from ..read import Run, RunError
from .lattice import Lattice
from .payload import describe, pack

FOLDER = Path(__file__).parent
SCRIPTS = ("data.js", "shapes.js", "colours.js", "scene.js", "picking.js", "charts.js", "export.js", "app.js")
# Where Debian's libjs-three has it.
THREE = Path("/usr/share/javascript/three")
LIBRARY = ("three.min.js", "examples/js/controls/OrbitControls.js")
MOST_BYTES = 16_000_000  # of all snapshots; the page stays below 20 MB


def make_page(lattice: Lattice, run: Run) -> str:
    snapshots = _few_enough(lattice)
    data = [_data("description", json.dumps(describe(lattice, run), separators=(",", ":")))]
    data += [_data(f"snapshot-{number}", text) for number, text in enumerate(snapshots)]
    scripts = "\n".join((FOLDER / name).read_text(encoding="utf-8") for name in SCRIPTS)
    return page.page(
        f"{run.name}: lattice",
        [
            f"<style>{(FOLDER / 'view.css').read_text(encoding='utf-8')}</style>",
            (FOLDER / "view.html").read_text(encoding="utf-8").format(
                name=escape(run.name),
                about=escape(_about(lattice, run)),
                notes="".join(f"<p>{escape(note)}</p>" for note in lattice.notes),
                rows="".join(f'<option value="{row}">row {row + 1} only</option>' for row in range(lattice.rows)),
            ),
            *data,
            *(f"<script>{_safe(text)}</script>" for text in _library()),
            f"<script>(() => {{\n'use strict';\n{_safe(scripts)}\n}})();</script>",
        ],
    )


def _few_enough(lattice: Lattice) -> list[str]:
    """The packed snapshots; where they would be too much for a page, every second, third ... of them."""
    packed = [pack(snapshot) for snapshot in lattice.snapshots]
    count, step = len(packed), 1
    while sum(map(len, packed[::step])) > MOST_BYTES and step < count:
        step += 1
    if step > 1:
        kept = range(0, count, step)
        lattice.notes.append(f"{len(kept)} of {count} snapshots are shown: more would be too much for a page.")
        lattice.snapshots = [lattice.snapshots[number] for number in kept]
    return packed[::step]


def _about(lattice: Lattice, run: Run) -> str:
    series = f", {lattice.in_series} half-sarcomeres in series" if lattice.in_series > 1 else ""
    heads = f"{lattice.kind.size:,} heads"
    return f"lattice {lattice.name}, model {run.parameter('Model')}, rows {lattice.rows}{series}, {heads}"


def _library() -> list[str]:
    try:
        return [(THREE / name).read_text(encoding="utf-8") for name in LIBRARY]
    except OSError as error:
        raise RunError(f"{error.filename}: {error.strerror}; install Debian's package libjs-three") from error


def _data(name: str, text: str) -> str:
    return f'<script type="text/plain" id="{name}">{_safe(text)}</script>'


def _safe(text: str) -> str:
    """Text that doesn't end the element that holds it."""
    return text.replace("</script", "<\\/script").replace("<!--", "<\\!--")
