#include "kinetics/model_scheme.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "base/diagnostics.h"
#include "base/output_file.h"
#include "base/protocol.h"
#include "base/run_state.h"
#include "elastic/XB_Models.h"
#include "kinetics/rate_tools.h"
#include "records/filament_data.h"
#include "scheme/scheme_checks.h"
#include "scheme/scheme_json.h"

REGISTER_MODEL(ModelScheme, "Scheme");

namespace {

constexpr char const* calcium_file = "ca_protocol.dat";
constexpr double unbounded = std::numeric_limits<double>::infinity();

using Rate = Scheme::Rate_s;

/// What regulation leaves of a rate.
double regulated(double k, SiteFactors_s const& factors, ActinSite_s const& site) {
  if (factors.open && site.state == 1) return 0.0;
  if (factors.on) k *= site.k_on_factor;
  if (factors.stroke) k *= site.k_stroke_factor;
  if (factors.off) k *= site.k_off_factor;
  return k;
}

/// Whether its value is the same at every strain.
bool is_constant(Formula const& formula) {
  return !(formula.uses("x") || formula.uses("F") || formula.uses("E"));
}

double overlap(Scheme& scheme, Rate const& rate, Binding_s const& binding) {
  std::string const& file = scheme.as_read().file;
  auto const binds = [&](double x) { return scheme.evaluate_as_read(rate, x); };
  if (!binding.first.text.empty()) {
    double const first = scheme.formula_of(rate, binding.first)();
    double const last = scheme.formula_of(rate, binding.last)();
    if (!(last > first && last - first <= 1e4))
      refuse(binding.first.where, "range", shown(first) + ", " + shown(last),
             "a range that ascends");
    return range_overlap_factor(binds, first, last, file);
  }
  if (!binding.release.text.empty()) {
    Formula const release = scheme.formula_of(rate, binding.release);
    if (is_constant(release)) return binding_overlap_factor(binds, release(), file);
    return binding_overlap_factor(
        binds, [&](double x) { return scheme.evaluate(release, rate, x); }, file);
  }
  for (Rate const& other : scheme.rates()) {
    if (!other.is_reverse || other.transition != rate.transition) continue;
    return binding_overlap_factor(
        binds, [&](double x) { return scheme.evaluate_as_read(other, x); }, file);
  }
  stop(scheme.as_read().transitions[rate.transition].where +
       ": binding is rescaled by the release, and the transition has no reverse; accepted: "
       "binding = { release = ... } or binding = { range = [..., ...] }");
}

/// What a site of a filament makes of a formula that names its factors.
void set_site(SchemeVariables& variables, ActinSite_s const& site) {
  variables.on = site.k_on_factor;
  variables.stroke = site.k_stroke_factor;
  variables.off = site.k_off_factor;
  variables.open = site.state == 1 ? 0.0 : 1.0;
}

}  // namespace

ModelScheme::ModelScheme(ModelParameter_s const& parameter)
    : ModelScheme(parameter, std::make_unique<Scheme>(read_scheme_file(parameter.file_name),
                                                      *parameter.xb_model)) {}

ModelScheme::ModelScheme(ModelParameter_s const& parameter, std::unique_ptr<Scheme> made)
    : ActiveModel(parameter, made->n_states()), scheme(std::move(made)) {
  for (unsigned s = 0; s < n_states(); ++s) attached[s] = scheme->is_attached(s);
  if (scheme->follows_calcium()) calcium = std::make_unique<Protocol>(calcium_file);
  renew_clock();
  rescale_binding();
  refuse_unsound(*scheme);
  warnings = cycle_warnings(*scheme);
  if (!scheme->as_read().exact) scheme->tabulate();
  collect_terms();
  WriteToTaveloOutput();
  write_json();
}

ModelScheme::~ModelScheme() = default;

void ModelScheme::rescale_binding() {
  for (std::size_t i = 0; i < scheme->rates().size(); ++i) {
    Rate const& rate = scheme->rates()[i];
    auto const& binding = scheme->as_read().transitions[rate.transition].binding;
    if (binding && !rate.is_reverse) scheme->rescale(i, overlap(*scheme, rate, *binding));
  }
}

void ModelScheme::collect_terms() {
  for (unsigned from = 0; from < n_states(); ++from) {
    for (unsigned to = 0; to < n_states(); ++to) {
      of_pairs.push_back(static_cast<unsigned>(terms.size()));
      for (Rate const& rate : scheme->rates()) {
        if (rate.from != from || rate.to != to) continue;
        bool const is_constant = !attached[from] && !attached[to] && !rate.follows_time;
        terms.push_back({&rate, rate.table ? &*rate.table : nullptr,
                         is_constant ? scheme->evaluate(rate, 0.0) : -1.0});
      }
      transitions[from][to] = terms.size() > of_pairs.back();
    }
  }
  of_pairs.push_back(static_cast<unsigned>(terms.size()));
}

bool ModelScheme::IsPowerStrokeState(int state) const {
  auto const s = static_cast<unsigned>(state);
  return scheme->as_read().states[s].is_stroked.value_or(scheme->lever(s) != 0.0);
}

double ModelScheme::get_G(double x, unsigned state) const {
  return scheme->has_energy(state) ? scheme->energy(state, x) : 0.0;
}

double ModelScheme::get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const {
  unsigned const pair = from * n_states() + to;
  double k = 0.0;
  for (unsigned i = of_pairs[pair]; i < of_pairs[pair + 1]; ++i) {
    Term const& term = terms[i];
    if (term.constant >= 0.0) {
      k += term.constant;
    } else {
      bool const is_tabulated = term.table && term.table->covers(x);
      double const free = is_tabulated ? (*term.table)(x) : ask(*term.rate, x, site);
      k += regulated(free, term.rate->site, site);
    }
  }
  return k;
}

double ModelScheme::ask(Rate const& rate, double x, ActinSite_s const& site) const {
  if (rate.follows_time) renew_clock();
  if (rate.follows_site) set_site(scheme->variables(), site);
  double const k = scheme->evaluate(rate, x);
  if (rate.follows_site) set_site(scheme->variables(), ActinSite_s{});
  if (k >= 0.0 && k <= std::numeric_limits<double>::max()) return k;
  stop(scheme->as_read().transitions[rate.transition].where + ": the rate " +
       scheme->name_of(rate) + " is " + shown(k) + " at a strain of " + shown(x) + " nm" +
       at_step() + "; accepted: finite and not negative");
}

/// The time and the calcium that formulas see. The course goes on from row to row, as that of
/// regulation does.
void ModelScheme::renew_clock() const {
  if (clock == timeForAll) return;
  clock = timeForAll;
  scheme->variables().t = timeForAll;
  if (!calcium) return;
  double const value = calcium->value_at(timeForAll);
  calcium->checkForNewProtocol(timeForAll);
  if (!std::isfinite(value)) {
    refuse(calcium_file, "the value at time " + shown(timeForAll), shown(value), "a finite number");
  }
  scheme->variables().Ca = value;
}

double ModelScheme::rate_bound(unsigned from, double reach) const {
  if (bounds_reach != reach) {
    bounds_reach = reach;
    bounds.clear();
    for (unsigned s = 0; s < n_states(); ++s) bounds.push_back(bound_of(s, reach));
  }
  return bounds[from];
}

double ModelScheme::bound_of(unsigned from, double reach) const {
  double sum = 0.0;
  for (Term const& term : terms) {
    bool const is_free = !attached[term.rate->from] && !attached[term.rate->to];
    if (term.rate->from != from || is_free) continue;
    sum += term.table ? term.table->bound(reach) : unbounded;
  }
  return sum;
}

void ModelScheme::check_before_run(RunFrame_s const& frame) const {
  bool is_same = frame.other->n_states() == n_states();
  for (unsigned s = 0; is_same && s < n_states(); ++s) {
    is_same = frame.other->attached[s] == attached[s];
  }
  if (!is_same) {
    stop(scheme->as_read().file +
         ": slow and fast heads have different states; accepted: two schemes of which state by "
         "state both are attached or neither is");
  }
  auto const* const slow = dynamic_cast<ModelScheme const*>(frame.other);
  bool const is_told =
      frame.is_fast && slow && slow->scheme->as_read().file == scheme->as_read().file;
  if (is_told) return;
  for (std::string const& text : warnings) warn(text);
  FastestState_s const fastest = fastest_state(*scheme, frame.reach);
  if (!(fastest.rate * frame.step > 1.0)) return;
  warn(scheme->as_read().file + ": the rates out of '" +
       scheme->as_read().states[fastest.state].name + "' add up to " + shown(fastest.rate) +
       " at a strain of " + shown(fastest.strain) + " nm, more than 1 in a step of " +
       shown(frame.step) + "; the largest step that fits is " + shown(1.0 / fastest.rate));
}

void ModelScheme::WriteToTaveloOutput() const {
  SchemeFile const& file = scheme->as_read();
  std::fprintf(fOutputFile, "\t*** SCHEME ***************************\n\n");
  std::fprintf(fOutputFile, "\tname:\t\t%s\n\tfile:\t\t%s\n", file.name.c_str(), file.file.c_str());
  for (SchemeParameter_s const& parameter : file.parameters) {
    bool const has_unit = !parameter.unit.empty() && parameter.unit != "1";
    std::string const unit = has_unit ? " [" + parameter.unit + "]" : "";
    std::fprintf(fOutputFile, "\t%s:\t\t%.12g%s\n", parameter.name.c_str(),
                 scheme->values().at(parameter.name), unit.c_str());
  }
  for (unsigned s = 0; s < n_states(); ++s) {
    SchemeState_s const& state = file.states[s];
    std::fprintf(fOutputFile, "\tstate %u:\t\t%s, %s, lever %g\n", s, state.name.c_str(),
                 state.attached ? "attached" : "detached", scheme->lever(s));
  }
  for (Rate const& rate : scheme->rates()) {
    SchemeTransition_s const& transition = file.transitions[rate.transition];
    std::string const& text = rate.is_reverse ? transition.reverse_rate.text : transition.rate.text;
    std::fprintf(fOutputFile, "\t%s:\t\t%s\n", scheme->name_of(rate).c_str(),
                 single_line(text).c_str());
  }
  std::fprintf(fOutputFile, "\n");
}

std::string ModelScheme::json() const {
  static char const* const laws[] = {"ConstantStiffness", "SigmoidalStiffness", "StiffnessFunction",
                                     "ThreeLinearForce", "TwoPartSigmoidalStiffness"};
  return scheme_json(*scheme, laws[xb_model->xbType], warnings);
}

/// For reports, beside the results of the run.
void ModelScheme::write_json() const {
  std::string name = scheme->as_read().file;
  name = "scheme_" + name.substr(0, name.rfind('.')) + ".json";
  std::replace(name.begin(), name.end(), '/', '_');
  OutputFile const file(name, "wt");
  std::fputs(json().c_str(), file.get());
  file.flush();
}
