#include "scheme/scheme_checks.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "base/diagnostics.h"

namespace {

using Rate = Scheme::Rate_s;
using Links = std::function<bool(unsigned from, unsigned to)>;

constexpr double step_of_signs = 1.0 / 64;  // nm
constexpr double step_of_cycles = 0.25;
/// Below this a rate has lost digits, and its logarithm says nothing.
constexpr double least_rate = 1e-280;

/// Calls `act` at strains `step` apart from the multiple above the first to the last, 0 among them.
template <class Act>
void for_strains(Scheme const& scheme, double step, Act act) {
  auto const begin = static_cast<long>(std::ceil(scheme.first_strain() / step));
  auto const end = static_cast<long>(std::floor(scheme.last_strain() / step));
  for (long i = begin; i <= end; ++i) act(static_cast<double>(i) * step);
}

bool is_free(Scheme const& scheme, Rate const& rate) {
  return !scheme.is_attached(rate.from) && !scheme.is_attached(rate.to);
}

void refuse_rate(Scheme const& scheme, Rate const& rate, double x) {
  double const k = scheme.evaluate(rate, x);
  if (k >= 0.0 && std::isfinite(k)) return;
  SchemeTransition_s const& transition = scheme.as_read().transitions[rate.transition];
  std::string const formula = rate.is_reverse ? transition.reverse_rate.text : transition.rate.text;
  stop(transition.where + ": the rate " + scheme.name_of(rate) + ", '" + formula + "', is " +
       shown(k) + " at a strain of " + shown(x) + " nm; accepted: finite and not negative from " +
       shown(scheme.first_strain()) + " to " + shown(scheme.last_strain()) + " nm");
}

void refuse_rates(Scheme const& scheme) {
  for (Rate const& rate : scheme.rates()) {
    if (is_free(scheme, rate)) {
      refuse_rate(scheme, rate, 0.0);
      continue;
    }
    for_strains(scheme, step_of_signs, [&](double x) { refuse_rate(scheme, rate, x); });
  }
}

/// The states that links lead to from `start`.
std::vector<bool> reached(unsigned n, unsigned start, Links const& leads) {
  std::vector<bool> found(n, false);
  std::vector<unsigned> open = {start};
  found[start] = true;
  while (!open.empty()) {
    unsigned const state = open.back();
    open.pop_back();
    for (unsigned other = 0; other < n; ++other) {
      if (found[other] || !leads(state, other)) continue;
      found[other] = true;
      open.push_back(other);
    }
  }
  return found;
}

void refuse_dead_ends(Scheme const& scheme) {
  auto const has_rate = [&](unsigned from, unsigned to) {
    return std::any_of(scheme.rates().begin(), scheme.rates().end(),
                       [&](Rate const& rate) { return rate.from == from && rate.to == to; });
  };
  unsigned const n = scheme.n_states();
  auto const forth = reached(n, 0, has_rate);
  auto const back = reached(n, 0, [&](unsigned to, unsigned from) { return has_rate(from, to); });
  auto const& states = scheme.as_read().states;
  for (unsigned s = 0; s < n; ++s) {
    if (forth[s] && back[s]) continue;
    stop(scheme.as_read().file + ": the state '" + states[s].name + "' can't be " +
         (forth[s] ? "left for" : "reached from") + " the state '" + states[0].name +
         "'; accepted: states that transitions lead to and back from");
  }
}

/// Heads start among the detached states as these exchange at strain 0. That is determined where
/// one group of them, and no more, keeps what it has.
void refuse_undetermined_start(Scheme const& scheme) {
  auto const leads = [&](unsigned from, unsigned to) {
    return std::any_of(scheme.rates().begin(), scheme.rates().end(), [&](Rate const& rate) {
      return rate.from == from && rate.to == to && is_free(scheme, rate) &&
             scheme.evaluate(rate, 0.0) > 0.0;
    });
  };
  unsigned const n = scheme.n_states();
  std::vector<unsigned> first_of_group;
  for (unsigned s = 0; s < n; ++s) {
    if (scheme.is_attached(s)) continue;
    auto const there = reached(n, s, leads);
    bool is_kept = true;
    unsigned first = s;
    for (unsigned other = 0; other < n; ++other) {
      if (!there[other]) continue;
      is_kept = is_kept && reached(n, other, leads)[s];
      first = std::min(first, other);
    }
    if (is_kept && first == s) first_of_group.push_back(s);
  }
  if (first_of_group.size() == 1) return;
  auto const& states = scheme.as_read().states;
  stop(
      scheme.as_read().file + ": heads start detached, and whether in '" +
      states[first_of_group[0]].name + "' or in '" + states[first_of_group[1]].name +
      "' is undetermined; accepted: rates between detached states that lead from one to the other");
}

/// A transition with its reverse, walked along or against.
struct Step {
  Rate const* forward;
  Rate const* backward;
  bool is_along;

  unsigned from() const { return is_along ? forward->from : forward->to; }
  unsigned to() const { return is_along ? forward->to : forward->from; }
};
using Walk = std::vector<Step>;

Walk reversible_steps(Scheme const& scheme) {
  Walk steps;
  auto const& rates = scheme.rates();
  for (std::size_t i = 1; i < rates.size(); ++i) {
    if (rates[i].is_reverse) steps.push_back({&rates[i - 1], &rates[i], true});
  }
  return steps;
}

/// The shortest walk between two states over the first `n` of the steps; empty if there is none.
Walk shortest_walk(Walk const& steps, std::size_t n, unsigned from, unsigned to) {
  std::vector<Walk> walks = {{}};
  std::vector<unsigned> seen = {from};
  for (std::size_t i = 0; i < walks.size(); ++i) {
    unsigned const end = walks[i].empty() ? from : walks[i].back().to();
    for (std::size_t j = 0; j < n; ++j) {
      for (bool const is_along : {true, false}) {
        Step const step = {steps[j].forward, steps[j].backward, is_along};
        bool const is_seen = std::find(seen.begin(), seen.end(), step.to()) != seen.end();
        if (step.from() != end || is_seen) continue;
        seen.push_back(step.to());
        walks.push_back(walks[i]);
        walks.back().push_back(step);
        if (step.to() == to) return walks.back();
      }
    }
  }
  return {};
}

/// One cycle for each step that closes one with those before it: all others are sums of these.
std::vector<Walk> cycles(Scheme const& scheme) {
  Walk const steps = reversible_steps(scheme);
  std::vector<Walk> found;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    Walk walk = shortest_walk(steps, i, steps[i].to(), steps[i].from());
    if (walk.empty()) continue;
    walk.insert(walk.begin(), steps[i]);
    found.push_back(walk);
  }
  return found;
}

/// What the rates of a walk are worth, and what the energies and the fuel on it are [kBT].
struct Worth {
  double of_rates = 0.0;
  double of_energies = 0.0;
  bool is_known = true;
};

/// Around a cycle, or across one step whose states have free energies.
Worth worth_of(Scheme const& scheme, Walk const& walk, double x) {
  Worth worth;
  for (Step const& step : walk) {
    double const forward = scheme.evaluate(*step.forward, x);
    double const backward = scheme.evaluate(*step.backward, x);
    worth.is_known = worth.is_known && forward > least_rate && backward > least_rate;
    double const sign = step.is_along ? 1.0 : -1.0;
    worth.of_rates += sign * std::log(forward / backward);
    worth.of_energies += sign * scheme.fuel_of(*step.forward) / scheme.kBT();
  }
  unsigned const from = walk.front().from();
  unsigned const to = walk.back().to();
  if (from != to) {
    worth.of_energies += (scheme.energy(from, x) - scheme.energy(to, x)) / scheme.kBT();
  }
  return worth;
}

std::string name_of(Scheme const& scheme, Walk const& walk) {
  auto const& states = scheme.as_read().states;
  std::string name = states[walk.front().from()].name;
  for (Step const& step : walk) name += " -> " + states[step.to()].name;
  return name;
}

std::string rounded(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3g", number);
  return text;
}

/// A warning where the two differ by more than the tolerance, for the strain at which most.
void add_warning(Scheme const& scheme, Walk const& walk, std::vector<std::string>& warnings) {
  Worth worst;
  double strain = 0.0;
  auto const missing = [](Worth const& worth) { return worth.of_energies - worth.of_rates; };
  for_strains(scheme, step_of_cycles, [&](double x) {
    Worth const worth = worth_of(scheme, walk, x);
    if (!worth.is_known) return;
    double const more = std::abs(missing(worth)) - std::abs(missing(worst));
    // Of equal ones that nearest to 0.
    bool const is_worse = more > 1e-6 || (more > -1e-6 && std::abs(x) < std::abs(strain));
    if (!is_worse) return;
    worst = worth;
    strain = x;
  });
  if (!(std::abs(missing(worst)) > scheme.as_read().tolerance)) return;
  bool const is_cycle = walk.front().from() == walk.back().to();
  warnings.push_back(scheme.as_read().file + ": " + (is_cycle ? "around the cycle " : "across ") +
                     name_of(scheme, walk) + " the rates forward over those backward are worth " +
                     rounded(worst.of_rates) + " kT at a strain of " + shown(strain) +
                     " nm, the free energies and ATP " + rounded(worst.of_energies) +
                     " kT: " + rounded(missing(worst)) + " kT are missing");
}

/// Cycles through a transition that has no reverse set free what energy they like.
void warn_of_one_way(Scheme const& scheme, std::vector<std::string>& warnings) {
  for (Rate const& rate : scheme.rates()) {
    SchemeTransition_s const& transition = scheme.as_read().transitions[rate.transition];
    bool const is_checked = transition.reverse != SchemeTransition_s::Reverse::none;
    if (is_checked || transition.fuel) continue;
    warnings.push_back(
        transition.where + ": " + scheme.name_of(rate) +
        " has neither a reverse nor fuel = true; what energy a cycle through it sets "
        "free can't be checked");
  }
}

}  // namespace

void refuse_unsound(Scheme const& scheme) {
  refuse_dead_ends(scheme);
  refuse_rates(scheme);
  refuse_undetermined_start(scheme);
}

std::vector<std::string> cycle_warnings(Scheme const& scheme) {
  std::vector<std::string> warnings;
  warn_of_one_way(scheme, warnings);
  if (scheme.kBT() == 0.0) return warnings;
  for (Step const& step : reversible_steps(scheme)) {
    bool const has_energies = scheme.has_energy(step.from()) && scheme.has_energy(step.to());
    if (has_energies) add_warning(scheme, {step}, warnings);
  }
  for (Walk const& cycle : cycles(scheme)) add_warning(scheme, cycle, warnings);
  return warnings;
}

FastestState_s fastest_state(Scheme const& scheme, double reach) {
  FastestState_s fastest;
  for_strains(scheme, step_of_cycles, [&](double x) {
    if (std::abs(x) > reach) return;
    std::vector<double> sums(scheme.n_states(), 0.0);
    for (Rate const& rate : scheme.rates()) {
      sums[rate.from] += scheme.evaluate(rate, is_free(scheme, rate) ? 0.0 : x);
    }
    auto const most = std::max_element(sums.begin(), sums.end());
    if (!(*most > fastest.rate)) return;
    fastest = {static_cast<unsigned>(most - sums.begin()), x, *most};
  });
  return fastest;
}
