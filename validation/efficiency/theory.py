"""Work from ATP

No cycle can do more work than its ATP gives: 24 kBT in the six-state model of `examples/vorn_calcium` (as far as its irreversible
detachment has a free energy at all), 25 kBT in the nine-state model of `examples/nine_state`, whose constants multiply to exp(25)
around the cycle; 96 and 100 pN nm at their kBT of 4 pN nm. (100 pN nm is also what one ATP is reckoned to give in muscle: C. J.
Barclay, Compr. Physiol. 5, 2015, 961.) Work is force times speed; ATP is the net flux between two detached states, which have
constant rates. The best efficiency of muscle is about 0.5 by that review, and 0.36 in skinned rabbit fibres (He and others, J.
Physiol. 517, 1999, 839).
"""

import numpy as np

HEADS = 150
ATP = {"vorn": ("six states", 24 * 4.0), "nine_state": ("nine states", 25 * 4.0)}
SHORT = {"vorn": {"seeds = 8": "seeds = 6", "[25, 50, 100, 200, 400, 700, 1000]": "[100, 400]", "= 4": "= 2"}}


def efficiency(table, energy):
    """Work per ATP over its energy, run by run."""
    return table.force * table.speed / (table.atp * HEADS) / energy


def checks(studies, check):
    for plan, (name, energy) in ATP.items():
        if plan not in studies:
            continue
        table = studies[plan].table()
        table["efficiency"] = efficiency(table, energy)
        for speed, runs in table.groupby("speed"):
            check.at_most(f"{name}: work per ATP at {speed:g} nm/s, of its energy", 1.0, runs.efficiency)
        best = table.groupby("speed").efficiency.agg(["mean", "sem"]).sort_values("mean").iloc[-1]
        check.published(f"{name}: best efficiency", 0.36, 0.5, best["mean"], best["sem"], "above")


def draw(figure, studies, check):
    over_speed, over_load = figure.subplots(1, 2)
    for plan, (name, energy) in ATP.items():
        if plan not in studies:
            continue
        table = studies[plan].table()
        values = efficiency(table, energy)
        check.points(over_speed, table, "speed", values, name)
        over_load.plot(table.groupby("speed").force.mean(), values.groupby(table.speed).mean(), "o-", label=name)
    for axes, what in ((over_speed, "speed of shortening [nm/s]"), (over_load, "force per thick filament [pN]")):
        axes.axhline(1.0, color="0.5", lw=0.8)
        axes.set(xlabel=what, ylabel="work per ATP over its energy", ylim=(None, 1.1))
        axes.legend()
