"""A. F. Huxley's muscle of 1957

One site at a time in reach, filaments 10,000 times as stiff as the heads. A site that passes at the speed v binds at f1 x/h and
lets go at g1 x/h on 0 < x < h, at g2 below, so that the share of bound sites is

    n(x) = f1/(f1+g1) (1 - exp((x^2/h^2 - 1)/u)) for x > 0,  n(0) exp(g2 x/v) for x < 0,  u = 2 v/((f1+g1) h)
    P/P0 = 1 - u (1 - exp(-1/u)) (1 + u/(2 r^2)),  r = g2/(f1+g1);  N by integration of n

(A. F. Huxley, Prog. Biophys. Biophys. Chem. 7, 1957, 255; rates as they are quoted for his frog muscle, 43.3, 10 and 209 /s with
h = 15.6 nm: r = 3.92). The three heads of a crown share a site, so each has a third of f1. At speed 0 muscle is still on its way
to P0 when it is measured: n(x, t) = n(x) (1 - exp(-(f1+g1) x t/h)). The steps of 0.05 to 0.1 ms change P/P0 by less than 0.001,
as the part on steps shows.

What changes on a real lattice is drawn, not judged: the same heads on the filaments of `examples/isometric`, where a head reaches
several sites 5.5 nm apart and filaments give. Neither has a place in Huxley's equation.
"""

import numpy as np

F1, G1, G2, H = 43.3, 10.0, 209.0, 15.6
K, CROWNS, SITE = 1.0, 201, 80.4  # pN/nm; crowns that have a site; distance of the sites
SHORT = {"plan": {"seeds = 20": "seeds = 10", "[0, 0.1, 0.2, 0.3, 0.5, 0.8, 1.0]": "[0, 0.3, 1.0]", "+ 0.2\"": "+ 0.06\""}}
X = np.linspace(-70.0, H, 20001)


def bound(x, speed, time=1e9):
    """Share of sites at x that are bound."""
    full = F1 / (F1 + G1)
    if speed == 0:
        return np.where(x > 0, full * -np.expm1(-(F1 + G1) * np.maximum(x, 0) / H * time), 0.0)
    u = 2 * speed / ((F1 + G1) * H)
    pulled = full * (1 - np.exp((np.clip(x / H, 0, 1) ** 2 - 1) / u))
    return np.where(x > 0, pulled, full * (1 - np.exp(-1 / u)) * np.exp(G2 * np.minimum(x, 0) / speed))


def relative_force(share_of_vmax):
    """P/P0 in closed form."""
    u, r = share_of_vmax * 1663.0 * 2 / ((F1 + G1) * H), G2 / (F1 + G1)
    return 1 - u * (1 - np.exp(-1 / u)) * (1 + u / (2 * r * r)) if u else 1.0


def expected(speed, begin, end):
    """Force and bound heads per filament, mean from begin to end."""
    times = np.linspace(begin, end, 21) if speed == 0 else [1e9]
    n = np.mean([bound(X, speed, t) for t in times], axis=0) * CROWNS / SITE
    return np.trapz(n * K * X, X), np.trapz(n, X)


P0, N0 = expected(0, 1e6, 1e6)


def checks(studies, check):
    table = studies["plan"].table()
    for share, runs in table.groupby("share"):
        first = runs.iloc[0]
        force, heads = expected(first.speed, first.begin, first.end)
        check.over_seeds(f"P/P0 at {share:g} Vmax", force / P0, runs.force / P0)
        check.over_seeds(f"N/N0 at {share:g} Vmax", heads / N0, runs.bound / N0)
    for share in (0.3, 1.0):
        of_share = table[table.share == share]
        strains = [steady_strains(studies["plan"], run, check) for run in of_share.itertuples()]
        speed = of_share.speed.iloc[0]
        n = bound(X, speed)
        check.over_seeds(f"share of bound heads that are pushed, at {share:g} Vmax",
                         np.trapz(n * (X < 0), X) / np.trapz(n, X), [np.mean(s < 0) for s in strains])  # fmt: skip


def steady_strains(study, run, check):
    """Strains of the bonds in all snapshots behind the beginning, by their times."""
    bonds = check.read(study, run.run)["bonds"]
    return bonds[bonds.time > run.begin].set_index("time")["strain"]


def draw(figure, studies, check):
    curve, distribution = figure.subplots(1, 2)
    table = studies["plan"].table()
    shares = np.linspace(0, 1, 101)
    curve.plot(shares, [relative_force(s) for s in shares], label="Huxley's P/P0")
    check.points(curve, table, "share", table.force / P0, "one site, rigid")
    lattice = studies["lattice"].table() if "lattice" in studies else None
    if lattice is not None:
        isometric = lattice[lattice.share == 0].force.mean()
        check.points(curve, lattice, "share", lattice.force / isometric, "several sites, filaments give", "s")
    curve.set(xlabel="V/Vmax of the closed form", ylabel="P/P0")
    curve.legend()
    edges = np.arange(-20, 16.1, 1.2)
    middles = (edges[1:] + edges[:-1]) / 2
    for colour, share in enumerate((0.1, 0.3, 1.0)):
        runs = table[table.share == share]
        if runs.empty:
            continue
        strains = [steady_strains(studies["plan"], run, check) for run in runs.itertuples()]
        snapshots = sum(times.nunique() for times in (s.index for s in strains))
        distribution.plot(X, bound(X, runs.speed.iloc[0]), color=f"C{colour}", label=f"{share:g} Vmax")
        share_bound = np.histogram(np.concatenate(strains), edges)[0] / (snapshots * 1.2 * CROWNS / SITE)
        distribution.plot(middles, share_bound, "o", ms=3, color=f"C{colour}")
    distribution.set(xlabel="strain x [nm]", ylabel="share of sites bound, n(x)", xlim=(-20, 16))
    distribution.legend()
