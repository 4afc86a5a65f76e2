"""Time steps and numbers of filaments

A step is of first order in its length: probabilities are rate times step, heads act on the positions of the step before, and a
head that lets go keeps its site for one step.

*Sliding.* Huxley's muscle of the first part at its unloaded speed, where the closed form has no force, in steps of 2 to 0.25 ms.
The mean of what the program does in its steps can be worked out site by site, with its steps, and is a second theory. The line
through the forces over the step must meet the closed form at 0.

*Scatter.* N filaments that don't feel each other: the variance of force per filament is that of independent sites, the sum of K^2
x^2 n (1 - n), over N.

*Examples.* The isometric force of each shipped example at 2, 1, 1/2 and 1/4 of the step that it begins with, three filaments,
eight seeds, the means from 0.1 to 0.2 s, regulation at its highest level: the share by which one step length changes force, from
a line through each seed's four forces. The step for 1 % is that step times 1 %/|share|; where the share can't be told from 0 (two
standard errors) it is at least that of the share's far end. Later phases of some examples have shorter steps of their own.
"""

import numpy as np

F1, G1, G2, H, K, SITES = 43.3, 10.0, 209.0, 15.6, 1.0, 201 / 80.4  # the last per nm
SPEED, P0 = 1663.0, 201 / 80.4 * 43.3 / 53.3 * 15.6**2 / 2
X = np.arange(0.2, 15.6, 0.4)  # strains of the crowns that face a site at rest
SHORT = {
    "sliding": {"seeds = 20": "seeds = 10", "[0.002, 0.001, 0.0005, 0.00025]": "[0.002, 0.001]"},
    "scatter": {"seeds = 30": "seeds = 12", "[1, 3, 10]": "[1, 3]"},
}


def in_steps(step):
    """Force per filament of heads that act in steps, the mean over the places at which steps meet sites."""
    shift, force = SPEED * step, 0.0
    phases = (np.arange(1000) + 0.5) / 1000
    x, n, let_go = H - shift * phases, np.zeros(1000), np.zeros(1000)
    while x.max() > -75:
        p = np.where((x > 0) & (x < H), F1 / 3 * x / H * step, 0.0)  # of each of three heads
        g = np.where(x < 0, G2, G1 * x / H) * step
        three, two = 1 - (1 - p) ** 3, 1 - (1 - p) ** 2
        # A head that has let go frees its site at its own turn: for itself and those behind it.
        bound = n * (1 - g) + (1 - n - let_go) * three + let_go * (p + two + three) / 3
        let_go, n, x = n * g, bound, x - shift
        force += np.sum(n * K * x) * shift / 1000
    return force * SITES


def rest(time):
    """Share of bound sites at rest."""
    return F1 / (F1 + G1) * -np.expm1(-(F1 + G1) * X * time / H)


def examples(studies):
    return {name: study for name, study in studies.items() if name not in ("sliding", "scatter")}


def change_per_step(table):
    """Of force, relative to that of no step length: a value for each seed."""
    lines = [np.polyfit(runs.factor, runs.force, 1) for _, runs in table.groupby("seed")]
    height = np.mean([line[1] for line in lines])
    return np.array([line[0] / height for line in lines])


def check_example(check, name, table):
    shares = change_per_step(table)
    mean, error = shares.mean(), shares.std(ddof=1) / np.sqrt(len(shares))
    least = abs(mean) if abs(mean) > 2 * error else abs(mean) + 2 * error
    relation = "" if least == abs(mean) else "at least "
    shipped = table.shipped.iloc[0]
    step = f"step for 1 %: {relation}{1e3 * shipped * 0.01 / least:.2g} ms"
    check.told(f"{name}: change of force by a step of {1e3 * shipped:g} ms [%]", 100 * mean, 100 * error, step)


def checks(studies, check):
    table = studies["sliding"].table()
    for step, runs in table.groupby("step"):
        check.over_seeds(f"P/P0 at Vmax in steps of {1e3 * step:g} ms", in_steps(step) / P0, runs.force / P0)
    lines = [np.polyfit(runs.step, runs.force / P0, 1) for _, runs in table.groupby("seed")]
    if table.step.nunique() > 2:
        check.over_seeds("its line at step 0, against the closed form", 0.0, [line[1] for line in lines])
        order = np.log2((in_steps(0.001) - in_steps(0.0005)) / (in_steps(0.0005) - in_steps(0.00025)))
        check.exact("order of the step by the second theory", 1.0, order, 0.1, "higher orders")
    scatter = studies["scatter"].table()
    for count, runs in scatter.groupby("filaments"):
        ratios = [np.zeros(len(runs))]
        for time in (0.08, 0.16, 0.24):
            n = rest(time)
            variance = np.sum((K * X) ** 2 * n * (1 - n)) / count
            ratios.append((runs[f"at_{1000 * time:.0f}"] - np.sum(K * X * n)) ** 2 / variance)
        check.over_seeds(f"variance of force of {count} filaments over that of independent sites", 1.0, np.mean(ratios[1:], axis=0))
    for name, study in examples(studies).items():
        check_example(check, name, study.table())


def draw(figure, studies, check):
    sliding, scatter, shipped = figure.subplots(1, 3, width_ratios=(1, 1, 1.5))
    table = studies["sliding"].table().assign(ms=lambda t: 1e3 * t.step)
    steps = np.linspace(0.02, 2, 40)
    sliding.plot(steps, [in_steps(step / 1e3) / P0 for step in steps], label="in steps, theory")
    check.points(sliding, table, "ms", table.force / P0, "program")
    sliding.set(xlabel="step [ms]", ylabel="P/P0 at Vmax")
    runs = studies["scatter"].table()
    counts = np.array([1.0, 10.0])
    n = rest(0.24)
    scatter.loglog(counts, np.sqrt(np.sum((K * X) ** 2 * n * (1 - n)) / counts), label="independent sites")
    spread = runs.groupby("filaments").at_240.std()
    scatter.errorbar(spread.index, spread, spread / np.sqrt(2 * 29), fmt="o", capsize=2, label="program, over seeds")
    scatter.set(xlabel="filaments", ylabel="SD of force [pN]")
    for place, (name, study) in enumerate(reversed(examples(studies).items())):
        shares = 100 * change_per_step(study.table())
        error = 2 * shares.std(ddof=1) / np.sqrt(len(shares))
        shipped.errorbar(shares.mean(), place, xerr=error, fmt="o", ms=4, color="C0", capsize=2)
    shipped.set_yticks(range(len(examples(studies))), list(reversed(examples(studies))), fontsize=7)
    shipped.set_visible(bool(examples(studies)))
    shipped.axvline(0, color="0.5", lw=0.8)
    shipped.set(xlabel="change of force by one step [%], 2 errors")
    for axes in (sliding, scatter):
        axes.legend()
