"""Published figures of muscle

Nothing here has a closed form, but that T1 is straight: these are Duke's three states with the constants of
`examples/duke_force_velocity`, `examples/duke_step_response` and, with rigid segments, `examples/force_pca`, beside what is
published. "Outside" speaks about the model and its constants, and fails nothing. Figures marked (memory) are commonly quoted and
were not looked up.

a/F0 is from A. V. Hill, Proc. R. Soc. B 126, 1938, 136 (frog, as quoted) and Ranatunga, J. Physiol. 329, 1982, 465 (rat soleus);
y0, where T1 meets 0, from L. E. Ford, A. F. Huxley and R. M. Simmons, J. Physiol. 269, 1977, 441 (4 nm) and A. F. Huxley and R.
M. Simmons, Nature 233, 1971, 533 (6 nm, memory); k_tr from Burton and others, J. Physiol. 2006 (rabbit psoas, 5 degrees, the
slower of two exponentials) and Milani-Nejad and others, J. Gen. Physiol. 141, 2013, 133 (rat trabeculae, body temperature); its
fall with calcium from Gilliver and others, Exp. Physiol. 96, 2011, 171 (rat soleus, pCa 5.6 against 4.5) and, tenfold, B.
Brenner, Proc. Natl. Acad. Sci. USA 85, 1988, 3265 (memory).
"""

import numpy as np
from tavelo_tools import hill_hyperbola

SHORT = {
    "length_steps": {"seeds = 5": "seeds = 3", "= 5\n[w": "= 2\n[w",
                     "[-14, -12, -10, -8, -6, -5, -4, -3, -2, -1, 1, 2]": "[-14, -11, -8, -5, -3, -1]"},
}  # fmt: skip


def checks(studies, check):
    fits = {name: study.fit() for name, study in studies.items()}
    told = ((("force_velocity", "hill", "a/F0"), "curvature a/F0 of Hill's hyperbola", (0.137, 0.25), "rat soleus, frog"),
            (("length_steps", "T1_line", "zero"), "step at which T1 is 0 [nm]", (-6, -4), "frog"),
            (("length_steps", "T2_line", "zero"), "step at which T2 is 0 [nm]", (-14, -11), "frog, memory"))  # fmt: skip
    for (study, fit, value), what, (low, high), source in told:
        if study in studies:
            check.published(what, low, high, *value_and_error(fits[study][fit][0], value), source)
    releases = studies["length_steps"].table().query("step < 0")
    bent = [np.ptp(runs.T1 - np.polyval(np.polyfit(runs.step, runs.T1, 1), runs.step)) for _, runs in releases.groupby("seed")]
    check.exact("T1 over releases, largest bend of a seed's line", 0.0, max(bent), 1e-4, "bonds are those of T0 and linear")
    if "ktr" not in studies:
        return
    table = studies["ktr"].table()
    for pca, runs in table.groupby("pCa"):
        known = runs.k_tr.dropna()
        check.published(f"k_tr at pCa {pca:g} [1/s]", 2, 45, known.mean(), known.sem(), "rabbit psoas, rat trabeculae")
    high = table[table.pCa == 4.5].k_tr.mean()
    low = table[table.pCa == 5.6].k_tr / high
    check.published("k_tr at pCa 5.6 over that at 4.5", 0.1, 0.77, low.mean(), low.sem(), "rat soleus; rabbit, memory")


def value_and_error(result, name):
    """Of a fit; half of the 95 % interval over seeds is two errors."""
    low, high = result.low.get(name, np.nan), result.high.get(name, np.nan)
    return result.fit.values[name], (high - low) / 4


def draw(figure, studies, check):
    hill, steps, redevelopment = figure.subplots(1, 3)
    if "force_velocity" in studies:
        table = studies["force_velocity"].table()
        fit = studies["force_velocity"].fit()["hill"][0].fit.values
        highest = table[table.speed == 0].force.mean()
        speeds = np.linspace(0, fit["v0"], 100)
        check.points(hill, table, "speed", table.force / highest, "program")
        hill.plot(speeds, hill_hyperbola(speeds, fit["v0"], fit["a/F0"]), label=f"Hill, a/F0 = {fit['a/F0']:.2f}")
        hill.plot(speeds, hill_hyperbola(speeds, fit["v0"], 0.25), "--", color="0.5", label="a/F0 = 0.25, frog")
    table = studies["length_steps"].table()
    for name in ("T1", "T2"):
        check.points(steps, table, "step", table[name], name)
    steps.axvspan(-6, -4, color="C0", alpha=0.1)
    steps.axvspan(-14, -11, color="C1", alpha=0.1)
    if "ktr" in studies:
        table = studies["ktr"].table()
        check.points(redevelopment, table, "redeveloped", table.k_tr, "program")
    hill.set(xlabel="speed [nm/s]", ylabel="force relative to isometric")
    steps.set(xlabel="step [nm], shaded where fibres meet 0", ylabel="relative to T0")
    redevelopment.set(xlabel="force redeveloped [pN]", ylabel="k_tr [1/s]", ylim=(0, None))
    steps.legend()
    for axes, plan in ((hill, "force_velocity"), (redevelopment, "ktr")):
        axes.set_visible(plan in studies)
    if "force_velocity" in studies:
        hill.legend()
