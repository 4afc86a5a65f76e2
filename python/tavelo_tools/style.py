"""Colours and sizes of all plots, and vector plots that follow the page's theme."""

import io
import re
import textwrap
from collections.abc import Callable

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
from matplotlib.axes import Axes  # noqa: E402

INK, GRID = "#1b1c1e", "#dcdde0"
# Series colours on a light and on a dark ground, in the same order.
LIGHT = (
    "#1f5fa8",
    "#c2491d",
    "#2c7d43",
    "#8a4fa3",
    "#a87a00",
    "#0f8592",
    "#b3356f",
    "#5d6472",
    "#7b5136",
)
DARK = (
    "#6fb1f7",
    "#f58a5c",
    "#6fce8a",
    "#c694e0",
    "#e6bd4a",
    "#4fcbd6",
    "#f283b4",
    "#aab2c0",
    "#c99b7d",
)
WIDEST_LABEL = 48  # characters of a line of a legend
SIZE = (4.9, 2.9)  # inches; texts stay readable when a phone shows it at 360 pixels

STYLE: dict[str, object] = {
    "font.size": 10,
    "font.family": ["DejaVu Sans"],
    "axes.titlesize": 10,
    "axes.linewidth": 0.8,
    "axes.edgecolor": INK,
    "axes.labelcolor": INK,
    "axes.spines.top": False,
    "axes.spines.right": False,
    "axes.formatter.useoffset": False,
    "axes.grid": True,
    "axes.prop_cycle": plt.cycler(color=LIGHT),
    "grid.color": GRID,
    "grid.linewidth": 0.6,
    "text.color": INK,
    "xtick.color": INK,
    "ytick.color": INK,
    "xtick.direction": "in",
    "ytick.direction": "in",
    "lines.linewidth": 1.2,
    "legend.frameon": False,
    "legend.fontsize": 8.5,
    "figure.facecolor": "none",
    "axes.facecolor": "none",
    "savefig.facecolor": "none",
    "svg.fonttype": "none",
}

# Colours of the drawing by what the page calls them.
_VARIABLES = {INK: "var(--ink)", GRID: "var(--grid)"} | {
    colour: f"var(--series-{number})" for number, colour in enumerate(LIGHT)
}


def theme(colours: tuple[str, ...], ink: str, grid: str) -> str:
    """Declarations of a style sheet for one ground."""
    series = "".join(f"--series-{number}:{colour};" for number, colour in enumerate(colours))
    return f"--ink:{ink};--grid:{grid};{series}"


def as_text(words: str) -> str:
    """Words that are drawn as they stand: dollars begin no mathematics, and what is no text shows as
    question marks."""
    return words.encode("utf-8", "replace").decode().replace("$", r"\$")


def legend_above(axes: Axes) -> None:
    """Above the plot, where it hides no data, in as many columns as the picture is wide for."""
    room = 0.8 * SIZE[0] * axes.figure.dpi  # the rest stands left of the axes
    handles, texts = axes.get_legend_handles_labels()
    texts = [as_text(textwrap.fill(text, WIDEST_LABEL)) for text in texts]
    for columns in range(min(4, len(texts)), 0, -1):
        legend = axes.legend(
            handles,
            texts,
            loc="lower left",
            bbox_to_anchor=(0, 1),
            ncols=columns,
            columnspacing=1.2,
            handlelength=1.4,
        )
        if legend.get_window_extent().width <= room:
            return


def _room_for(axes: Axes) -> float:
    """Height that a legend takes beyond two lines [inches]."""
    legend = axes.get_legend()
    return max(0.0, legend.get_window_extent().height / axes.figure.dpi - 0.4) if legend else 0.0


def to_svg(draw: Callable[[Axes], None], name: str) -> str:
    """A plot as an element of a page; `name` is read out where pictures aren't seen."""
    style = STYLE | {"svg.hashsalt": name}
    with plt.rc_context(style):
        figure, axes = plt.subplots(figsize=SIZE, layout="constrained")
        draw(axes)
        figure.set_figheight(SIZE[1] + _room_for(axes))
        stream = io.StringIO()
        figure.savefig(stream, format="svg", metadata={"Date": None})
        plt.close(figure)
    return _for_page(stream.getvalue(), name)


def _for_page(svg: str, name: str) -> str:
    body = svg[svg.index("<svg") :]
    body = re.sub(r"<metadata>.*?</metadata>\s*", "", body, flags=re.DOTALL)
    # Plots of a page would share these names; nothing refers to them.
    body = re.sub(r' id="[a-zA-Z.]+_?\d+(_\d+)?"(?=>)', "", body)
    for colour, variable in _VARIABLES.items():
        body = body.replace(colour, variable)
    box = re.search(r'viewBox="[^"]*"', body)
    assert box  # matplotlib always writes one
    inner = body[body.index(">") + 1 :]
    label = name.replace('"', "'")
    return (
        f'<svg {box[0]} role="img" aria-label="{label}" xmlns="http://www.w3.org/2000/svg" '
        f'xmlns:xlink="http://www.w3.org/1999/xlink">{inner}'
    )


def write_png(
    path: str, draws: list[Callable[[Axes], None]], columns: int = 3, title: str = "", dpi: int = 110
) -> None:
    """All plots on one sheet with a white ground."""
    columns = max(1, min(columns, len(draws)))
    rows = -(-len(draws) // columns)
    size = (SIZE[0] * columns, SIZE[1] * rows + (0.4 if title else 0.0))
    with plt.rc_context(STYLE | {"figure.facecolor": "white", "savefig.facecolor": "white"}):
        figure, grid = plt.subplots(rows, columns, figsize=size, layout="constrained", squeeze=False)
        if title:
            figure.suptitle(as_text(title))
        for axes in grid.flat[len(draws) :]:
            axes.remove()
        for axes, draw in zip(grid.flat, draws):
            draw(axes)
        room = max((_room_for(axes) for axes in figure.axes), default=0.0)
        figure.set_figheight(figure.get_figheight() + rows * room)
        figure.savefig(path, dpi=dpi)
        plt.close(figure)
