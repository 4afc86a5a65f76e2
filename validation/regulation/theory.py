"""Regulation of the thin filament

*Rigid segments* under calcium, without heads. Around each square of the scheme the constants balance here, so the stationary
solution is a product: with q = K_Ca Ca a segment with c ions is blocked, closed and open as 1 : K_TnB,c : K_TnB,c K_TnT,c times
q^c. Steps of fixed length have the same stationary solution, whatever their length.

*Flexible chain.* Without calcium all troponins pin their chain at phi_minus. Between two of them, S apart, symmetry makes the
slopes 0 at both pins, and the beam y'''' + 4 xi^4 y = 0 has the shape

    y(z) = A cosh(xi z) cos(xi z) + B sinh(xi z) sin(xi z), z from the middle, with y(+-S/2) = phi_minus, y'(+-S/2) = 0.

The program solves it on the mesh of the sites; with sites two and four times as close it must approach the beam with the square
of the distance. Neighbours act on each other through this chain only: rigid segments don't, so there is no chain of segments with
a constant coupling to compare with (27 of them, in a row with a coupling of 10, would have a Hill coefficient of 2.91).
"""

import numpy as np

CLOSED, OPEN = (0.02, 0.4, 8.0), (0.3, 0.3, 0.3)  # K_TnB and K_TnT with 0, 1, 2 ions
K_CA, XI, PHI, SPAN = 2.0e5, 3.0e7, -0.6, 14 * 5.5e-9
SETTLED = 0.2  # s
SHORT = {
    "rigid": {"seeds = 12": "seeds = 8", "[0, 2e-7, 5e-7, 1e-6, 2e-6, 5e-6, 2e-5]": "[0, 1e-6, 2e-5]", "1.2 0.0001": "0.45 0.0001"},
    "flexible": {},
}


def shares(calcium):
    """Stationary shares by position (blocked, closed, open) and number of ions."""
    q = (K_CA * calcium) ** np.arange(3)
    weights = np.array([q, q * CLOSED, q * CLOSED * OPEN])
    return weights / weights.sum()


def counted(run):
    segments = run["segments"]
    segments = segments[segments.time > SETTLED]
    counts = segments.drop(columns="time").to_numpy().mean(axis=0).reshape(3, 3)
    return counts / counts.sum()


def blocked(run, values):
    return counted(run)[0].sum()


def opened(run, values):
    return counted(run)[2].sum()


def calcium_bound(run, values):
    return counted(run).sum(axis=0) @ [0, 0.5, 1]


def sites_of_a_chain(run, values):
    return float(run["tropomyosin"].site.max() + 1)


def beam(z):
    """Angle at z from the middle between two pins."""
    x, a = XI * np.asarray(z), XI * SPAN / 2
    even, odd = (lambda t: np.cosh(t) * np.cos(t)), (lambda t: np.sinh(t) * np.sin(t))
    slopes = np.sinh(a) * np.cos(a) - np.cosh(a) * np.sin(a), np.cosh(a) * np.sin(a) + np.sinh(a) * np.cos(a)
    A, B = np.linalg.solve([[even(a), odd(a)], slopes], [PHI, 0.0])
    return A * even(x) + B * odd(x)


def middle_span(run, split):
    """Angles from the pin of the eighth segment of fifteen to the next."""
    angles = run["tropomyosin"]
    angles = angles[(angles.chain == 1) & (angles.filament == 1)].sort_values("site")
    first = 7 * 14 * split + 3
    return angles.angle.to_numpy()[first : first + 14 * split + 1]


def checks(studies, check):
    for calcium, runs in studies["rigid"].table().groupby("calcium"):
        theory = shares(calcium)
        at = f"at {calcium * 1e6:g} uM calcium"
        check.over_seeds(f"open segments {at}", theory[2].sum(), runs.open)
        check.over_seeds(f"blocked segments {at}", theory[0].sum(), runs.blocked)
        if calcium:
            check.over_seeds(f"calcium bound {at}", theory.sum(axis=0) @ [0, 0.5, 1], runs.calcium_bound)
    table = studies["flexible"].table()
    spans = [middle_span(check.read(studies["flexible"], run.run), run.split) for run in table.itertuples()]
    middles = [span[7 * split] for span, split in zip(spans, table.split)]
    for split, middle in zip(table.split, middles):
        check.told(f"angle in the middle, sites every {5.5 / split:.4g} nm [radian]", middle, 0.0)
    limit = middles[2] + (middles[2] - middles[1]) / 3
    check.exact("its limit for sites without distance [radian]", beam(0), limit, 1e-4, "fourth order and six decimals")
    ratio = (middles[0] - middles[1]) / (middles[1] - middles[2])
    check.exact("fall of the error when the distance is halved", 4.0, ratio, 0.1, "higher orders, six decimals")


def draw(figure, studies, check):
    over_calcium, profile = figure.subplots(1, 2)
    table = studies["rigid"].table()
    table = table[table.calcium > 0].assign(pCa=lambda t: -np.log10(t.calcium))
    pca = np.linspace(4.5, 7, 101)
    for colour, (name, row) in enumerate((("blocked", 0), ("open", 2))):
        over_calcium.plot(pca, [shares(10**-p)[row].sum() for p in pca], color=f"C{colour}", label=f"{name}, theory")
        check.points(over_calcium, table, "pCa", table[name], name)
    over_calcium.set(xlabel="pCa", ylabel="share of segments")
    over_calcium.invert_xaxis()
    z = np.linspace(-SPAN / 2, SPAN / 2, 201)
    profile.plot(z * 1e9, beam(z), label="beam")
    for run, marker in zip(studies["flexible"].table().itertuples(), "os."):
        span = middle_span(check.read(studies["flexible"], run.run), run.split)
        places = np.linspace(-SPAN / 2, SPAN / 2, len(span)) * 1e9
        profile.plot(places, span, marker, ms=4, mfc="none", label=f"sites every {5.5 / run.split:.3g} nm")
    profile.set(xlabel="distance from the middle [nm]", ylabel="angle [radian]")
    for axes in (over_calcium, profile):
        axes.legend()
