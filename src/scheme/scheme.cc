#include "scheme/scheme.h"

#include <cmath>

#include "base/diagnostics.h"
#include "base/discrete_function.h"
#include "elastic/XB_Models.h"

namespace {

using Reverse = SchemeTransition_s::Reverse;

constexpr double farthest_strain = 1000.0;  // nm

}  // namespace

Scheme::Scheme(SchemeFile scheme, XB_Model const& law) : file(std::move(scheme)), xb(law) {
  evaluate_parameters();
  if (constants.count("kBT") > 0) thermal_energy = constants.at("kBT");
  fuel_energy = constant_of(file.energy_per_ATP, 0.0);
  first = constant_of(file.first, 0.0);
  last = constant_of(file.last, 0.0);
  if (!(first < 0.0 && last > 0.0 && first >= -farthest_strain && last <= farthest_strain)) {
    refuse(file.first.where, "range", shown(first) + ", " + shown(last),
           "a strain below and one above 0, at most " + shown(farthest_strain) + " nm from it");
  }
  compile_states();
  compile_rates();
}

// Constants

void Scheme::evaluate_parameters() {
  for (SchemeParameter_s const& parameter : file.parameters) {
    double const value =
        parameter.solution ? solve(*parameter.solution) : constant_of(parameter.formula, 0.0);
    constants[parameter.name] = value;
  }
  auto const kBT = constants.find("kBT");
  if (kBT != constants.end() && !(kBT->second > 0.0))
    refuse(file.file, "kBT", shown(kBT->second), "a number above 0 [pN nm]");
}

double Scheme::constant_of(FormulaText const& text, double otherwise) {
  if (text.text.empty()) return otherwise;
  double const value = Formula(text, constants, around, {}, xb)();
  if (!std::isfinite(value))
    refuse(text.where, "the value of " + text.text, shown(value), "a finite number");
  return value;
}

double Scheme::solve(SchemeParameter_s::Solution_s const& solution) {
  Formula const law(solution.law, constants, around, {"x"}, xb);
  double const start = constant_of(solution.first, 0.0);
  double const step = (constant_of(solution.last, 0.0) - start) / (solution.points - 1);
  if (!(step > 0.0)) refuse(solution.first.where, "over", shown(start), "a range that ascends");
  Table table;
  around.x = start;
  for (unsigned i = 0; i < solution.points; ++i, around.x += step) {
    table.emplace_back(around.x, law());
  }
  double const value = GetInverseValue(table, constant_of(solution.equals, 0.0));
  if (!std::isfinite(value)) {
    refuse(solution.law.where, "the solution", shown(value), "a formula that takes the value");
  }
  return value;
}

// States

Scheme::Law_s Scheme::compile(FormulaText const& text, std::vector<std::string> const& allowed,
                              Constants const& with) {
  Formula formula(text, with, around, allowed, xb);
  bool const takes_force = formula.uses("F");
  bool const takes_energy = formula.uses("E");
  return {std::move(formula), takes_force, takes_energy};
}

void Scheme::compile_states() {
  for (SchemeState_s const& state : file.states) {
    levers.push_back(constant_of(state.lever, 0.0));
    energies.emplace_back();
    if (state.energy.text.empty()) continue;
    std::vector<std::string> allowed;
    if (state.attached) allowed = {"x", "F", "E"};
    energies.back() = compile(state.energy, allowed, constants);
  }
}

double Scheme::evaluate(Law_s const& law, unsigned state, double x) const {
  around.x = x;
  if (law.takes_force) around.F = xb.GetForce(x + levers[state]);
  if (law.takes_energy) around.E = xb.GetEnergy(x + levers[state]);
  return law.formula();
}

double Scheme::energy(unsigned state, double x) const {
  return evaluate(*energies[state], state, x);
}

double Scheme::force(unsigned state, double x) const { return xb.GetForce(x + levers[state]); }

// Rates

/// The attached state whose spring a rate feels: that which it leaves, or else enters.
unsigned Scheme::strained_state(unsigned from, unsigned to) const {
  return is_attached(from) ? from : to;
}

std::vector<std::string> Scheme::allowed_in(unsigned from, unsigned to) const {
  if (!is_attached(from) && !is_attached(to)) return {"t", "Ca"};
  return scheme_variables();
}

void Scheme::compile_rates() {
  for (unsigned i = 0; i < file.transitions.size(); ++i) {
    SchemeTransition_s const& transition = file.transitions[i];
    Rate_s rate{transition.from, transition.to, i, false, transition.site};
    rate.as_read = compile(transition.rate, allowed_in(rate.from, rate.to), constants);
    forward_places.push_back(all_rates.size());
    all_rates.push_back(std::move(rate));
    if (transition.reverse != Reverse::none) add_reverse(i);
    if (transition.fuel && file.energy_per_ATP.text.empty()) {
      stop(transition.where +
           ": fuel is 'true' and the file has no energy_per_ATP; accepted: "
           "energy_per_ATP at the top of the file, such as \"24 * kBT\" [pN nm]");
    }
  }
  for (Rate_s& rate : all_rates) note_dependences(rate);
}

/// A reverse by detailed balance depends on what its forward rate, just before it, depends on.
void Scheme::note_dependences(Rate_s& rate) {
  if (!rate.as_read) {
    Rate_s const& forward = forward_of(rate);
    rate.follows_time = forward.follows_time;
    rate.follows_site = forward.follows_site;
    return;
  }
  Formula const& formula = rate.as_read->formula;
  rate.follows_time = formula.uses("t") || formula.uses("Ca");
  takes_calcium = takes_calcium || formula.uses("Ca");
  for (std::string const& name : site_variables()) {
    rate.follows_site = rate.follows_site || formula.uses(name);
  }
}

void Scheme::add_reverse(unsigned i) {
  SchemeTransition_s const& transition = file.transitions[i];
  Rate_s rate{transition.to, transition.from, i, true, transition.reverse_site};
  if (transition.reverse == Reverse::formula) {
    rate.as_read = compile(transition.reverse_rate, allowed_in(rate.from, rate.to), constants);
  } else {
    require_balance(transition);
  }
  all_rates.push_back(std::move(rate));
}

void Scheme::require_balance(SchemeTransition_s const& transition) const {
  if (thermal_energy == 0.0) {
    stop(transition.reverse_rate.where +
         ": 'balance' needs the parameter kBT, the thermal energy "
         "[pN nm], which the file lacks");
  }
  for (unsigned const state : {transition.from, transition.to}) {
    if (has_energy(state)) continue;
    stop(transition.reverse_rate.where +
         ": 'balance' needs the free energy of both states; the state '" + file.states[state].name +
         "' has no energy");
  }
}

std::string Scheme::name_of(Rate_s const& rate) const {
  return file.states[rate.from].name + " -> " + file.states[rate.to].name;
}

Scheme::Rate_s const& Scheme::forward_of(Rate_s const& rate) const {
  return all_rates[forward_places[rate.transition]];
}

double Scheme::fuel_of(Rate_s const& rate) const {
  if (!file.transitions[rate.transition].fuel) return 0.0;
  return rate.is_reverse ? -fuel_energy : fuel_energy;
}

double Scheme::balance(Rate_s const& rate, double x, bool is_as_read) const {
  SchemeTransition_s const& transition = file.transitions[rate.transition];
  Rate_s const& forward = forward_of(rate);
  bool const reads = is_as_read || transition.reverse == Reverse::balance_as_read;
  double const f = reads ? evaluate_as_read(forward, x) : evaluate(forward, x);
  double const G_i = energy(transition.from, x);
  double G_j = energy(transition.to, x);
  if (transition.fuel) G_j -= fuel_energy;
  return f / std::exp((G_i - G_j) / thermal_energy);
}

double Scheme::evaluate_as_read(Rate_s const& rate, double x) const {
  if (!rate.as_read) return balance(rate, x, true);
  return evaluate(*rate.as_read, strained_state(rate.from, rate.to), x);
}

double Scheme::evaluate(Rate_s const& rate, double x) const {
  if (!rate.as_read) return balance(rate, x, false);
  Law_s const& law = rate.scaled ? *rate.scaled : *rate.as_read;
  return evaluate(law, strained_state(rate.from, rate.to), x) / rate.divisor;
}

Formula Scheme::formula_of(Rate_s const& rate, FormulaText const& text) {
  return Formula(text, constants, around, allowed_in(rate.from, rate.to), xb);
}

double Scheme::evaluate(Formula const& formula, Rate_s const& rate, double x) const {
  double const extension = x + levers[strained_state(rate.from, rate.to)];
  around.x = x;
  if (formula.uses("F")) around.F = xb.GetForce(extension);
  if (formula.uses("E")) around.E = xb.GetEnergy(extension);
  return formula();
}

void Scheme::rescale(std::size_t number, double factor) {
  Rate_s& rate = all_rates[number];
  SchemeTransition_s const& transition = file.transitions[rate.transition];
  std::string const& constant = transition.binding->constant;
  if (constant.empty()) {
    rate.divisor = factor;
    return;
  }
  Constants scaled = constants;
  auto const found = scaled.find(constant);
  if (found == scaled.end())
    refuse(transition.where, "constant", constant, "a parameter of the file");
  if (!rate.as_read->formula.uses(constant))
    refuse(transition.where, "constant", constant, "a parameter that stands in the rate");
  found->second /= factor;
  rate.scaled = compile(transition.rate, allowed_in(rate.from, rate.to), scaled);
}

void Scheme::tabulate() {
  for (Rate_s& rate : all_rates) {
    bool const is_free = !is_attached(rate.from) && !is_attached(rate.to);
    if (rate.follows_time || rate.follows_site || is_free) continue;
    rate.table.emplace([this, &rate](double x) { return evaluate(rate, x); }, first, last);
  }
}
