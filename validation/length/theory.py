"""Force over the length of the sarcomere

Tetani of `examples/isometric` with thin filaments that begin at different distances from the middle. Force and bound heads should
follow the crowns that have sites in reach: all 50 as long as the thin filaments begin before the first crown (125 nm), then one
less for each 14.3 nm, and none behind the last (826 nm and a reach of 8 nm). A head binds sites ahead of it, so at the edge its
share of force falls as 1 - d^2/8^2 with the distance d to the first site. The steps of sites and crowns against each other leave
some hundredths of a crown's share that this doesn't know.

Drawn beside it: frog fibres (A. M. Gordon, A. F. Huxley and F. J. Julian, J. Physiol. 184, 1966, 170), plateau 2.05 to 2.20 um as
in the abstract; the other corners, 1.27, 1.67 and 3.65 um, are those commonly quoted for their figure 12, from memory. Here thin
filaments are 1.05 um long, not 0.95, so that plateau and end lie further out. There is no ascending limb: thin filaments that
meet, or thick ones that meet the Z-disc, aren't modelled.
"""

import numpy as np

CROWNS = 125.0 + 14.3 * np.arange(50)
H, THIN = 8.0, 1050.0
FROG = ((1.27, 0.0), (1.67, 0.84), (2.05, 1.0), (2.20, 1.0), (3.65, 0.0))  # um, relative force
SHORT = {"plan": {"[0, 50, 100, 200, 300, 400, 500, 600, 700, 800, 860]": "[0, 400, 860]", "filaments\" = 4": "filaments\" = 2"}}


def share(offset):
    """Of the full force."""
    missing = np.clip((offset - CROWNS) / H, 0, 1)
    return float(np.mean(1 - missing**2))


def relative(table, column):
    """To the mean of the same seed on the plateau."""
    full = table[table.offset <= 100].groupby("seed")[column].mean()
    return table[column] / table.seed.map(full)


def checks(studies, check):
    table = studies["plan"].table()
    for column, name in (("force", "force"), ("bound_heads", "bound heads")):
        table["relative"] = relative(table, column)
        for offset, runs in table[(table.offset > 0) & (table.offset < 850)].groupby("offset"):
            check.over_seeds(f"{name} at {2 * (THIN + offset) / 1000:.2f} um, of the plateau", share(offset), runs.relative)
        none = table[table.offset > 850][column].abs().max()
        check.exact(f"{name} at {2 * (THIN + 860) / 1000:.2f} um, without overlap", 0.0, none, 1e-9, "rounding")


def draw(figure, studies, check):
    table = studies["plan"].table()
    table["length"] = 2 * (THIN + table.offset) / 1000
    axes = figure.subplots()
    offsets = np.linspace(0, 880, 400)
    axes.plot(2 * (THIN + offsets) / 1000, [share(offset) for offset in offsets], label="crowns with sites in reach")
    check.points(axes, table, "length", relative(table, "force"), "force")
    check.points(axes, table, "length", relative(table, "bound_heads"), "bound heads", "s")
    axes.plot(*zip(*FROG), "--", color="0.5", label="frog fibres, 1966 (corners from memory, but for the plateau)")
    axes.set(xlabel="sarcomere length [um]", ylabel="of the plateau")
    axes.legend(loc="lower left")
