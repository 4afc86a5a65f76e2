"""Heads at a fixed strain

A crown of three heads faces one site, at a strain that filaments 10,000 times as stiff as a head hold; so the rates k(i, j) are
constants. With three heads the rows of `Myosin_head_states.csv` tell every move. Judged, for each model with rates of its laws
written down anew in theory.py (see `docs/theory/kinetics.md` and, for the nine states, here in scheme C7,
`docs/theory/nine_state.md`):

*Dwell times.* The mean time in a state is 1 / sum of the rates out of it; a detached head's with the site free, as long as it is.
Single rates are the moves counted over the time in the state; the one that deviates most is shown.

*Occupancies.* Three heads that share a site are a Markov chain of their own, whose null vector gives the mean share of each
state. The program goes on in steps of 0.1 ms, in which a head that lets go still keeps its site: by some 1 % of the rates that
isn't the chain.

*Balance.* A cycle without free energy must not turn, though each step goes back and forth: net moves from state 1 to 2. Of the
models only Rombel's cycle can be set to 0 at every strain, by `ener_cycle`, and BrekAtpaseFiber's at one strain, by `k_07`.
Duke's and Vorn's let go irreversibly, and Huxley's has one state bound, so that no cycle can be counted. Each model's attachments
less detachments are what is bound.
"""

from itertools import product

import numpy as np

KT, STEP = 4.0, 1e-4  # pN nm, s
BOUND = {"Huxley": {1}, "Duke": {1, 2}, "Rombel": {1, 2}, "Vorn": {1, 2, 3}, "BrekAtpaseFiber": {1, 2, 3, 4, 5, 6},
         "Tolen9": {4, 5, 6, 7}}  # fmt: skip
SHORT = {
    "plan": {"seeds = 20": "seeds = 6", "\\n1.2 0.0001": "\\n0.25 0.0001"},
    "balance": {"seeds = 20": "seeds = 6", "\\n1.2 0.0001": "\\n0.25 0.0001", "[0, 0, 3, 0, 1]": "[0, 0]",
                "[4.0, 6.0, 6.0, 0.3, 0.3]": "[6.0, 0.3]",
                '"Rombel", "Rombel", "Rombel", "BrekAtpaseFiber", "BrekAtpaseFiber"': '"Rombel", "BrekAtpaseFiber"'},
}  # fmt: skip


def energy(x, k):
    """Of the spring, in kBT."""
    return k * x * x / 2 / KT


def huxley(x):
    return {(0, 1): 300 * x / 5, (1, 0): 400 * x / 5}


def front(x, states):
    """The front of the cycle of Duke, Vorn and BrekAtpaseFiber: binding, stroke of 2 nm, release of ADP at 0.1 nm more."""
    k, D, delta = 8.0, 2.0, 0.1
    x_cap = KT * (5.5 - np.log(150 / 60)) / (k * D) - D / 2  # where the stroke's reverse reaches its cap
    G = [0, -1 + energy(x, k), -6.5 + energy(x + D, k), -8 + energy(x + D + delta, k)]
    release = 80 * np.exp(energy(x + D, k) - energy(x + D + delta, k))
    forward = [60 * np.exp(-energy(x, k)), 150 * np.exp(-k * D * max(0, x - x_cap) / KT), release]
    rates = {(i, i + 1): forward[i] for i in range(states - 1)}
    return rates | {(i + 1, i): forward[i] * np.exp(G[i + 1] - G[i]) for i in range(states - 1)}


def duke(x):
    return front(x, 3) | {(2, 0): front(x, 4)[2, 3]}


def rombel(x, cycle=3.0):
    k, D = 0.05, 1.0
    G = [0, -1 + energy(x, k), -2 + energy(x + D, k), -cycle]
    binding = 2000 * np.sqrt(k / (2 * np.pi * KT)) * np.exp(-energy(x, k))
    forward = [binding, 5000 * np.exp(-x) + 1000, 2 * x if x > 0 else -100 * x]
    rates = {(i, (i + 1) % 3): forward[i] for i in range(3)}
    return rates | {((i + 1) % 3, i): forward[i] * np.exp(G[i + 1] - G[i]) for i in range(3)}


def vorn(x):
    parked = 20 + (100 - 20) / 2  # half of what calcium adds, at its ca_50
    return front(x, 4) | {(3, 4): 100, (4, 0): 60, (0, 4): 20, (0, 5): 30, (5, 0): parked}


def brek(x):
    back = {(3, 4): 90, (4, 5): 80, (5, 6): 100, (6, 7): 120, (7, 0): 70, (1, 6): 12}
    return front(x, 4) | back | {(4, 3): 30, (5, 4): 20, (6, 5): 40, (7, 6): 15, (0, 7): 25, (6, 1): 8}


def stroke(q, length, k):
    """Diffusion over the spring's energy from q on, against a flight without spring."""
    u = np.linspace(0, length, 2001)
    return length / np.trapz(np.exp(energy(q + u, k) - energy(q, k)), u)


def tolen(x):
    """Scheme C7; states count from 0 here."""
    k, h, hd, ht, ha, c, eta = 8.0, 1.0, 1.0, 0.1, 0.1, 0.2, 1.0
    p = {4: x, 5: x + h, 6: x + h + hd, 7: x + h + hd}
    v = {state: energy(at, k) for state, at in p.items()}
    D = {state: np.exp(c * abs(k * at) / KT) for state, at in p.items()}
    B = {state: D[state] * np.exp(-v[state]) for state in p}
    rates = {(0, 2): 100, (2, 0): 40, (2, 3): 80, (3, 2): 60, (2, 1): 20, (1, 2): 40, (1, 0): 30, (0, 1): 15}
    for (a, b), bind, release in (((3, 4), 60, 30), ((2, 5), 40, 10), ((2, 6), 80, 5), ((1, 7), 80, 10)):
        saturation = (eta + 1) / (eta * B[b] + 1)
        rates |= {(a, b): bind * B[b] * saturation, (b, a): release * D[b] * saturation}
    for (a, b), length, forth, back in (((4, 5), h, 150, 15), ((5, 6), hd, 300, 3)):
        barrier = stroke(p[a], length, k)
        rates |= {(a, b): forth * barrier, (b, a): back * barrier * np.exp(v[b] - v[a])}
    slowed = np.exp(v[6] - energy(p[6] + ht, k))
    rates |= {(6, 7): 100 * slowed, (7, 6): 30 * slowed}
    d, b, e = ((eta + 1) / (eta * B[7] + 1) * D[7], (eta + 1) / (eta * B[7] + 1) * B[7], np.exp(v[7] - energy(p[7] + ha, k)))
    return rates | {(7, 0): (eta + 1) * 20 * d / (1 + eta * d / e), (0, 7): (eta + 1) * 80 * b / (1 + eta * d / e)}


RATES = {"Huxley": huxley, "Duke": duke, "Rombel": rombel, "Vorn": vorn, "BrekAtpaseFiber": brek, "Tolen9": tolen}


def balancing_k_07(x=0.3):
    """The rate of balance.toml with which both ways around BrekAtpaseFiber's cycle are equally likely at a strain."""
    k = brek(x) | {(4, 3): 300, (5, 4): 200, (6, 5): 100, (7, 6): 120}
    around = [0, 1, 2, 3, 4, 5, 6, 7, 0]
    forward, reverse = (np.prod([k[step] for step in steps]) for steps in (zip(around, around[1:]), zip(around[1:], around)))
    return k[0, 7] * forward / reverse


def occupancies(rates, bound, states):
    """Mean share of heads in each state: the null vector of three heads, of which one at most is bound."""
    crowns = [c for c in product(range(states), repeat=3) if sum(s in bound for s in c) <= 1]
    place = {crown: i for i, crown in enumerate(crowns)}
    Q = np.zeros((len(crowns), len(crowns)))
    for crown, head in product(crowns, range(3)):
        for (a, b), k in rates.items():
            to = (*crown[:head], b, *crown[head + 1 :])
            if crown[head] == a and to in place:
                Q[place[crown], place[to]] += k
                Q[place[crown], place[crown]] -= k
    weights = np.linalg.lstsq(np.vstack([Q.T, np.ones(len(crowns))]), np.append(np.zeros(len(crowns)), 1), rcond=None)[0]
    return np.array([sum(w * crown.count(s) for w, crown in zip(weights, crowns)) / 3 for s in range(states)])


def history(run, model):
    """Heads by state over the steps, and whether a site is free when a step begins."""
    states = 1 + max(max(pair) for pair in RATES[model](1.0))
    heads = run["head_states"].drop(columns="time").to_numpy()[:, :states]
    free = run["bound_states"].drop(columns="time").to_numpy().sum(axis=1) == 0
    return heads.astype(int), free


def count_moves(heads, free, bound):
    """Numbers of moves by pair, and head-steps by state from which they are made.

    A step counts if one head at most moves in it, so that the pair is certain; `moves_to_rates` puts right what is lost so.
    Detached heads count in steps that begin with a free site."""
    change = np.diff(heads, axis=0)
    moved = np.abs(change).sum(axis=1) // 2
    start, at_start = heads[:-1], free[:-1]
    states = heads.shape[1]
    moves, time = np.zeros((states, states)), np.zeros(states)
    for i in range(states):
        allowed = np.ones_like(at_start) if i in bound else at_start
        time[i] = start[(moved == 0) & allowed, i].sum()
        left = (moved == 1) & allowed & (change[:, i] == -1)
        moves[i] = np.bincount(change[left].argmax(axis=1), minlength=states)
    return moves, time


def moves_to_rates(moves, time):
    """k dt = p; moves over time in steps without a move are p / (1 - sum of p)."""
    odds = moves / time[:, None]
    return odds / (1 + odds.sum(axis=1))[:, None] / STEP


def check_dwell_times(check, model, rates, moves, time):
    """Errors are those of the counts that theory expects."""
    found, worst = moves_to_rates(moves, time), (0.0, None)
    for i in range(len(time)):
        legal = [b for a, b in rates if a == i]
        theory, total = sum(rates[i, b] for b in legal), found[i, legal].sum()
        expected = theory * STEP * time[i]
        check.counted(f"{model}: time in state {i} [ms]", 1e3 / theory, 1e3 / total, 1e3 / theory / np.sqrt(expected))
        errors = {b: np.sqrt(rates[i, b] / (STEP * time[i])) for b in legal if rates[i, b] * STEP * time[i] > 20}
        worst = max([worst, *((abs(found[i, b] - rates[i, b]) / error, (i, b, error)) for b, error in errors.items())])
    i, b, error = worst[1]
    name = f"{model}: rate from {i} to {b}, the most deviating of {len(rates)} [1/s]"
    check.counted(name, rates[i, b], found[i, b], error)


def model_runs(studies, check, model):
    runs = studies["plan"].table().query("model == @model")
    return runs.strain.iloc[0], [history(check.read(studies["plan"], name), model) for name in runs.run]


def checks(studies, check):
    for model, law in RATES.items():
        strain, histories = model_runs(studies, check, model)
        rates = law(strain)
        counts = [count_moves(heads, free, BOUND[model]) for heads, free in histories]
        check_dwell_times(check, model, rates, *(sum(part) for part in zip(*counts)))
        shares = np.array([heads[len(heads) // 10 :].mean(axis=0) / 3 for heads, _ in histories])
        for i, theory in enumerate(occupancies(rates, BOUND[model], shares.shape[1])):
            check.over_seeds(f"{model}: share of heads in state {i}", theory, shares[:, i])
    for name in ("plan", "balance"):
        unpaired_sum = studies[name].table().unpaired.abs().max()
        check.exact(f"attachments less detachments less bound, all runs of {name}.toml", 0.0, unpaired_sum, 1e-9, "counts")
    for (model, strain, cycle), runs in studies["balance"].table().groupby(["model", "strain", "energy"]):
        forth, back = strokes(studies["balance"], runs, check, model).T
        text = f"{model} at {strain:g} nm: strokes forth less back of a run, of {np.mean(forth + back):.0f}, "
        if cycle:
            driven = f"with a cycle of {cycle:g} kBT" if model == "Rombel" else "k_07 a quarter of what balances"
            net = forth - back
            check.told(text + driven, net.mean(), net.std(ddof=1) / np.sqrt(len(net)))
        else:
            check.over_seeds(text + "with a cycle of 0 kBT", 0.0, forth - back)


def strokes(study, runs, check, model):
    """Forth and back in each run."""
    moves = [count_moves(*history(check.read(study, name), model), BOUND[model])[0] for name in runs.run]
    return np.array([(found[1, 2], found[2, 1]) for found in moves])


def draw(figure, studies, check):
    dwell, shares = figure.subplots(1, 2)
    for colour, (model, law) in enumerate(RATES.items()):
        strain, histories = model_runs(studies, check, model)
        counts = [count_moves(heads, free, BOUND[model]) for heads, free in histories]
        found = moves_to_rates(*(sum(part) for part in zip(*counts)))
        rates = law(strain)
        style = {"color": f"C{colour}", "ms": 4, "mfc": "none", "label": model}
        dwell.loglog(list(rates.values()), [found[pair] for pair in rates], "o", **style)
        states = found.shape[0]
        mean = np.mean([heads[len(heads) // 10 :].mean(axis=0) / 3 for heads, _ in histories], axis=0)
        shares.plot(occupancies(rates, BOUND[model], states), mean, "o", **style)
    for axes, what in ((dwell, "rate [1/s]"), (shares, "share of heads")):
        ends = (0.0, 0.8) if axes is shares else (2, 1200)
        axes.plot(ends, ends, color="0.5", zorder=0)
        axes.set(xlabel=f"{what}, theory", ylabel=f"{what}, program")
        axes.legend()
