"""Filaments, titin and series elastic element

Every element is linear, so figures must agree but for their printing and the mesh.

*Chain.* n equal forces f, one at each end of n elements of stiffness k, move the free end by n (n + 1) f/2k. Here soft heads pull
the crowns of a thick and the sites of a thin filament.

*Half-sarcomere.* Heads of the stiffness K per length, all bound along the overlap L, between filaments of the compliances c_m and
c_a per length: u'' of each filament is the heads' force, whence with S = c_a + c_m and mu = sqrt(K S)

    compliance = c_a c_m L/S + ((c_a^2 + c_m^2) cosh(mu L) + 2 c_a c_m)/(mu S sinh(mu L))

(the solution of c_m K (u_a - u_m) = -u_m'' and c_a K (u_a - u_m) = u_a'' with one end of each filament held). Crowns have a
distance; halving it, with the same stiffness per length, must approach the formula with its square.

*Series.* Without overlap thick filament, titin and series elastic element are three springs in a row.
"""

import numpy as np

EA_THICK, EA_THIN, DX, LENGTH = 3.52e3 * 50.0, 1.27e3 * 50.4, 14.3, 50 * 14.3
TITIN, LAST_CROWN = 0.5, 125.0 + 49 * 14.3
SEE, HEAD = 1e5, 50.0  # pN/nm; of the element in the first two parts, of a head in the second
PRINTED = 1e-5  # six digits
SHORT = {"chain": {}, "half_sarcomere": {}, "titin": {}}


def compliance(k_per_length):
    """Of the overlap, filaments included [nm/pN]."""
    thin, thick = 1 / EA_THIN, 1 / EA_THICK
    both = thin + thick
    mu = np.sqrt(k_per_length * both)
    ends = (thin**2 + thick**2) * np.cosh(mu * LENGTH) + 2 * thin * thick
    return thin * thick * LENGTH / both + ends / (mu * both * np.sinh(mu * LENGTH))


def measured_compliance(table):
    """Without the half element between the last site and the Z-disc, and the series elastic element."""
    return 1 / (table.after - table.before) - table.spacing / 2 / EA_THIN - 1 / SEE


def chain_shape(nodes, count, force, stiffness):
    """Displacement of node m of a chain with `count` equal forces."""
    return force / stiffness * (nodes * count - nodes * (nodes - 1) / 2)


def checks(studies, check):
    for run in studies["chain"].table().itertuples():
        n, force = run.crowns, run.force / run.crowns
        check.exact(f"tip of the thick filament, {n} crowns [nm]", n * (n + 1) * force / 2 / (EA_THICK / DX),
                    run.thick_tip, 3e-4, "the heads' force falls by that much as they shorten")  # fmt: skip
        bonds = check.read(studies["chain"], run.run)["bonds"].sort_values("x_rest")
        moved = (bonds.x - bonds.x_rest - 5.0).iloc[0] + run.force / SEE
        check.exact(f"free end of the thin filament, {n} sites [nm]", -n * (n + 1) * force / 2 / (EA_THIN / DX),
                    moved, 3e-4 + 1e-6 / abs(moved), "the same, and six decimals")  # fmt: skip
    table = studies["half_sarcomere"].table()
    theory, found = compliance(HEAD / DX), measured_compliance(table)
    for split, bound in zip(table.split, table.bound):
        check.exact(f"bound heads, crowns every {DX / split:.4g} nm", 50 * split, bound, 0.0, "all")
    for split, value in zip(table.split, found):
        check.told(f"compliance of the half-sarcomere, crowns every {14.3 / split:.4g} nm [nm/pN]", value, 0.0)
    limit = found.iloc[2] + (found.iloc[2] - found.iloc[1]) / 3
    check.exact("its limit for crowns without distance [nm/pN]", theory, limit, 2e-5, "what is left of fourth order")
    ratio = (found.iloc[0] - found.iloc[1]) / (found.iloc[1] - found.iloc[2])
    check.exact("fall of the error when the distance is halved", 4.0, ratio, 0.02, "higher orders")
    for see, runs in studies["titin"].table().groupby("see"):
        series = 1 / (LAST_CROWN / EA_THICK + 1 / TITIN + 1 / see)
        slope = np.polyfit(runs.stretch, runs.force, 1)[0]
        check.exact(f"stiffness with titin and {see:g} pN/nm in series [pN/nm]", series, slope, 3 * PRINTED, "six digits")


def draw(figure, studies, check):
    chain, half, series = figure.subplots(1, 3)
    run = studies["chain"].table().iloc[-1]
    bonds = check.read(studies["chain"], run.run)["bonds"].sort_values("x_rest")
    n, nodes, force = 50, np.arange(1, 51), run.force / 50
    chain.plot(nodes, 1e3 * chain_shape(nodes, n, force, EA_THICK / DX), label="thick, chain")
    chain.plot(nodes, -1e3 * chain_shape(n + 1 - nodes, n, force, EA_THIN / DX), label="thin, chain")
    chain.plot(bonds.crown + 1, 1e3 * (bonds.x_head - (bonds.crown + 1) * DX), ".", label="thick, program")
    chain.plot(np.round(bonds.x_rest / DX), 1e3 * (bonds.x - bonds.x_rest - 5.0), ".", label="thin, program")
    chain.set(xlabel="crown or site", ylabel="displacement [0.001 nm]")
    table = studies["half_sarcomere"].table()
    half.plot(table.spacing, measured_compliance(table) * 1e3, "o", label="program")
    half.axhline(compliance(HEAD / DX) * 1e3, label="formula, distance 0")
    half.set(xlabel="distance of crowns [nm]", ylabel="compliance [0.001 nm/pN]", xlim=(0, None))
    stiff = np.geomspace(0.1, 40, 50)
    series.semilogx(stiff, 1 / (LAST_CROWN / EA_THICK + 1 / TITIN + 1 / stiff), label="three springs")
    for see, runs in studies["titin"].table().groupby("see"):
        series.plot(see, np.polyfit(runs.stretch, runs.force, 1)[0], "o", color="C1")
    series.set(xlabel="series elastic element [pN/nm]", ylabel="stiffness [pN/nm]")
    for axes in (chain, half, series):
        axes.legend()
