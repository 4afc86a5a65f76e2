"""tavelo-report: one page and one picture of a run."""

import argparse
import sys
from collections.abc import Callable
from pathlib import Path

import pandas as pd
from matplotlib.axes import Axes

from . import page
from .groups import FIELDS, PROTOCOLS
from .numbers import print_any_name
from .noticed import last_time, notices
from .plots import Plot, plots_of_run
from .read import Run, RunError, read_run
from .scheme.page import sections as scheme_sections
from .style import as_text, write_png
from .tables import BY_KEY

MOST_ROWS = 100  # of a protocol that the page shows


def overview(plots: list[Plot]) -> list[Plot]:
    """The few that tell most: force and bonds over length, or over the state of the thin filament."""
    keys = {plot.key.split()[0] for plot in plots}
    regulated = ("force", "bonds", "segments", "calcium")
    wanted = regulated if "segments" in keys else ("force", "length", "bonds")
    return [
        plot for plot in plots if plot.key.split()[0] in wanted and not plot.key.endswith("prescribed")
    ]


def key_figures(run: Run) -> dict[str, str]:
    """The first numbers that a reader looks for."""
    result = run["result"]
    if result.empty:
        return {}
    tail = result.tail(max(1, len(result) // 10))
    figures = {
        "Time simulated": f"{last_time(run):g} s",
        "Steps": f"{len(result):,}",
    }
    if "force" in result:
        peak = result.loc[result["force"].idxmax()]
        figures |= {
            "Force, last tenth": f"{tail['force'].mean():.4g} pN",
            "Highest force": f"{peak['force']:.3g} pN at {peak['time']:.3g} s",
        }
    if "bound_heads" in result:
        figures["Bound heads, last tenth"] = f"{tail['bound_heads'].mean():.3g} per filament"
    return figures


def about(run: Run) -> str:
    """Model, lattice, regulation and size, in a line."""
    names = {
        "Model": "model",
        "geometry": "lattice",
        "XB Model": "crossbridge law",
        "activation": "regulation",
        "filaments number": "filaments in parallel",
        "Random Seed": "seed",
    }
    known = {label: run.parameter(name) for name, label in names.items()}
    return ", ".join(f"{label} {value}" for label, value in known.items() if value is not None)


def protocols(run: Run) -> dict[str, str]:
    """The protocol files as they are, long ones without their end."""
    found = {}
    for name in PROTOCOLS:
        path = run.directory / name
        lines = run.input_text(path).splitlines()
        if lines:
            more = [f"... and {len(lines) - MOST_ROWS} more rows"] if len(lines) > MOST_ROWS else []
            found[f"{name}: {' '.join(FIELDS)}"] = "\n".join([*lines[:MOST_ROWS], *more])
    return found


def files(run: Run) -> pd.DataFrame:
    """What was found of each file."""
    rows = []
    for key, paths in run.files.items():
        names = paths[0].name if len(paths) == 1 else f"{paths[0].name} and {len(paths) - 1} more"
        count = "not read" if key == "integral" else f"{len(run[key]):,}"
        rows.append((names, count, key, BY_KEY[key].about))
    return pd.DataFrame(rows, columns=["file", "rows", "read_run key", "holds"])


def make_page(run: Run, plots: list[Plot]) -> str:
    found = notices(run)
    sections = [
        page.header(run.name, about(run)),
        page.alarms(found),
        page.key_figures(key_figures(run)),
        page.notices(found),
        page.plots(plots),
        *(text for scheme in run.schemes for text in scheme_sections(scheme)),
        page.texts("Protocols, as they stand now", protocols(run)),
        page.parameters("Parameters in force (listing)", run["parameters"], True),
        page.parameters("Parameter files, as they stand now", run.input_parameters, False),
        "<h2>Files</h2>" + page.table(files(run)),
    ]
    return page.page(f"{run.name}: Tavelo run", sections)


def write_report(run: Run, out: Path) -> tuple[Path, Path]:
    """Writes report.html and report.png into the directory `out`."""
    plots = plots_of_run(run)
    html, png = out / "report.html", out / "report.png"
    page.write(html, make_page(run, plots))
    draw_sheet(plots, png, title=f"{run.name}: {about(run)}")
    return html, png


def draw_sheet(plots: list[Plot], path: Path, title: str = "", columns: int = 3, dpi: int = 110) -> None:
    """The plots on one picture, each under its title."""

    def titled(plot: Plot) -> Callable[[Axes], None]:
        def draw(axes: Axes) -> None:
            plot.draw(axes)
            legend = axes.get_legend()
            if legend:  # it stands where the title would
                legend.set_title(as_text(plot.title), prop={"weight": "bold", "size": 9})
                legend.set_alignment("left")
            else:
                axes.set_title(as_text(plot.title), loc="left", fontsize=9, weight="bold")

        return draw

    if not plots:
        path.unlink(missing_ok=True)
        return
    write_png(str(path), [titled(plot) for plot in plots], columns, title, dpi)


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(
        prog="tavelo-report",
        description="Writes report.html and report.png of a run, finished or not.",
    )
    parser.add_argument("run", type=Path, metavar="RUN_DIR", help="the directory of the run")
    parser.add_argument(
        "--out", type=Path, metavar="DIR", help="where to write; default: the run's directory"
    )
    options = parser.parse_args(arguments)
    print_any_name()
    try:
        run = read_run(options.run)
        out = options.out or options.run
        out.mkdir(parents=True, exist_ok=True)
        html, png = write_report(run, out)
    except RunError as error:
        print(f"tavelo-report: {error}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"tavelo-report: {error.filename}: can't be written: {error.strerror}", file=sys.stderr)
        return 1
    for notice in notices(run):
        if notice.grave:
            print(f"tavelo-report: noticed: {notice.text}", file=sys.stderr)
    print(html)
    if png.exists():
        print(png)
    return 0
