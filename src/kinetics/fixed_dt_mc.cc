#include "kinetics/fixed_dt_mc.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "base/diagnostics.h"
#include "base/logger.h"
#include "base/run_state.h"
#include "base/uniform_variate.h"
#include "kinetics/active_model.h"
#include "kinetics/model_util.h"
#include "kinetics/outcome_scale.h"
#include "kinetics/rate_tools.h"
#include "lattice/geometry.h"

/// The scale of one draw, on the stack unless a head has very many candidates.
struct FixedTimeStepMC::Outcomes : OutcomeScale<StateBin_s, 64> {};

namespace {

/// A step of bound heads of which each is a row of a diagnostic file.
struct LoggedStep_s {
  unsigned from;
  unsigned to;
  int file;
};

/// By these steps ATP turnover is counted: the ADP step of the six-state cycle, and the one behind
/// it in the eight-state cycle. The numbers of the states alone decide, in any model.
constexpr LoggedStep_s turnover_steps[] = {
    {2, 3, Log::atp_ase_rates_6states},
    {3, 4, Log::atp_ase_rates_8states},
};

void log_turnover(unsigned from, unsigned to) {
  for (LoggedStep_s const& step : turnover_steps) {
    if (from != step.from || to != step.to) continue;
    char line[64];
    std::snprintf(line, sizeof line, "%lf,%d\n", timeForAll, 1);
    Logger::Write(line, step.file, false);
  }
}

/// Distance from the node of a bound head to its site [nm].
double bound_strain(FilamentData const& data, MyosinHead_s const& head) {
  return data.position(head.actin_fibre)[head.actin_site] - data.position(head.fibre)[head.node];
}

}  // namespace

FixedTimeStepMC::FixedTimeStepMC(Model const& slow, Model const& fast, Model const* protein_c)
    : models{&slow, &fast, protein_c},
      n_states(slow.n_states()),
      transition_counts(n_states, std::vector<unsigned>(n_states, 0)),
      detached_states_file("detached_states_init.csv", "wt") {
  std::fprintf(detached_states_file.get(), "State 1,State 5,State 6\n");
}

double FixedTimeStepMC::get_k_slow(double x, unsigned from, unsigned to, ActinSite_s const&) const {
  return models.slow->get_k(x, from, to);
}

double FixedTimeStepMC::get_k_fast(double x, unsigned from, unsigned to, ActinSite_s const&) const {
  return models.fast->get_k(x, from, to);
}

void FixedTimeStepMC::initialize_filament(FilamentData& data) const {
  std::vector<double> p;
  ModelUtil::get_detached_states(*models.slow, p);
  std::vector<unsigned> states;
  std::vector<double> c;
  double sum = 0.0;
  for (unsigned s = 0; s < n_states; ++s) {
    if (models.slow->attached[s]) continue;
    sum += p[s];
    states.push_back(s);
    c.push_back(sum);
  }
  for (MyosinHead_s& head : data.heads) {
    double const u = uniform_variate();
    auto const above = std::find_if(c.begin(), c.end(), [u](double c_j) { return c_j > u; });
    if (above != c.end()) head.state = states[static_cast<std::size_t>(above - c.begin())];
    // A protein-C head may have drawn a state that its own, smaller model doesn't have.
    if (head.is_myosin() || !models.protein_c) continue;
    Model const& own = *models.protein_c;
    bool const is_own = head.state < own.n_states() && !own.attached[head.state];
    if (!is_own) head.state = 0;
  }
  for (unsigned const s : states) {
    auto const n = std::count_if(data.heads.begin(), data.heads.end(),
                                 [s](MyosinHead_s const& head) { return head.state == s; });
    std::fprintf(detached_states_file.get(), "%d,", static_cast<int>(n));
  }
  std::fprintf(detached_states_file.get(), "\n");
  detached_states_file.flush();
}

int FixedTimeStepMC::state_change(FilamentData& data, MyosinHead_s& head,
                                  std::vector<BindingSite_s> const& candidates) const {
  move(uniform_variate(), data, head, candidates);
  return 0;
}

int FixedTimeStepMC::state_change(FilamentData& data, MyosinHead_s& head, Geometry const& geometry,
                                  std::vector<BindingSite_s>& candidates) const {
  double const u = uniform_variate();
  if (surely_stays(u, data, head)) return 0;
  candidates.clear();
  bool const is_bound = models.of(head).attached[head.state];
  if (!is_bound) geometry.get_binding_sites(data, head, candidates);
  move(u, data, head, candidates);
  return 0;
}

void FixedTimeStepMC::begin_step(double wanted_reach) {
  reach = wanted_reach;
  bounds = {find_bounds(models.slow), find_bounds(models.fast), find_bounds(models.protein_c)};
}

FixedTimeStepMC::ModelBounds FixedTimeStepMC::find_bounds(Model const* model) const {
  if (!model) return {};
  // The sums that a draw is held against carry rounding of their own.
  double const scale = currentTimeStep * (1.0 + 1e-9);
  ModelBounds found(model->n_states());
  for (unsigned from = 0; from < found.size(); ++from) {
    found[from].at_site = scale * model->rate_bound(from, reach);
    if (model->attached[from]) continue;
    for (unsigned to = 0; to < found.size(); ++to) {
      bool const is_free = model->transitions[from][to] && !model->attached[to];
      if (is_free) found[from].free += scale * std::max(model->get_k(0.0, from, to), 0.0);
    }
  }
  return found;
}

bool FixedTimeStepMC::surely_stays(double u, FilamentData const& data,
                                   MyosinHead_s const& head) const {
  ModelBounds const& of_model = bounds[static_cast<std::size_t>(head.kind())];
  if (head.state >= of_model.size()) return false;
  StateBounds const& state = of_model[head.state];
  if (head.actin_site == unbound) {
    if (head.crown_code >= data.weight_bounds.size()) return false;
    double const factor = data.most_factor * data.most_factor;  // of weight and rate
    double const at_sites = state.at_site * factor * data.weight_bounds[head.crown_code];
    return u > state.free + at_sites;
  }
  if (!(u > state.at_site * data.most_factor)) return false;
  // What holds for all bonds spares a look at the ends of each.
  return data.longest_bond <= reach || std::abs(bound_strain(data, head)) <= reach;
}

void FixedTimeStepMC::move(double u, FilamentData& data, MyosinHead_s& head,
                           std::vector<BindingSite_s> const& candidates) const {
  unsigned const old_state = head.state;
  Outcomes outcomes;
  if (models.of(head).attached[old_state]) {
    collect_of_bound(data, head, outcomes);
    if (outcomes.sum > 1.0) note_excess("Bound", outcomes.sum);
  } else {
    collect_of_detached(data, head, candidates, outcomes);
    if (outcomes.sum > 1.0) tell_excess("Attach", outcomes.sum);
  }
  outcomes.close();
  if (StateBin_s const* const outcome = outcomes.pick(u)) carry_out(*outcome, data, head);
  if (head.state != old_state) ++transition_counts[old_state][head.state];
}

double FixedTimeStepMC::rate(MyosinHead_s const& head, double x, unsigned to,
                             ActinSite_s const& site) const {
  switch (head.kind()) {
    case HeadKind::slow:
      return get_k_slow(x, head.state, to, site);
    case HeadKind::fast:
      return get_k_fast(x, head.state, to, site);
    case HeadKind::protein_c:
      break;
  }
  return models.protein_c->get_k(x, head.state, to);
}

void FixedTimeStepMC::collect_of_detached(FilamentData const& data, MyosinHead_s const& head,
                                          std::vector<BindingSite_s> const& candidates,
                                          Outcomes& outcomes) const {
  Model const& model = models.of(head);
  unsigned const from = head.state;
  unsigned const n = std::min(n_states, model.n_states());
  double const head_position = data.position(head.fibre)[head.node];
  for (unsigned to = 0; to < n; ++to) {
    if (!model.transitions[from][to]) continue;
    if (!model.attached[to]) {
      // Among detached states the thin filament has no influence.
      double const k = require_finite(model.get_k(0.0, from, to), model, 0.0, from, to);
      if (k > 0.0) outcomes.add(k * currentTimeStep, {to, unbound, unbound});
      continue;
    }
    for (BindingSite_s const& c : candidates) {
      double const x = data.position(c.fibre)[c.site] - head_position;
      double const k =
          require_finite(rate(head, x, to, data.sites[c.fibre][c.site]), model, x, from, to);
      if (k > 0.0 && c.weight > 0.0)
        outcomes.add(k * currentTimeStep * c.weight, {to, c.site, c.fibre});
    }
  }
}

void FixedTimeStepMC::collect_of_bound(FilamentData const& data, MyosinHead_s const& head,
                                       Outcomes& outcomes) const {
  Model const& model = models.of(head);
  unsigned const n = std::min(n_states, model.n_states());
  double const x = bound_strain(data, head);
  ActinSite_s const& site = data.sites[head.actin_fibre][head.actin_site];
  for (unsigned to = 0; to < n; ++to) {
    if (!model.transitions[head.state][to]) continue;
    double const k = require_finite(rate(head, x, to, site), model, x, head.state, to);
    if (k > 0.0) outcomes.add(k * currentTimeStep, {to, unbound, unbound});
  }
}

void FixedTimeStepMC::carry_out(StateBin_s const& outcome, FilamentData& data,
                                MyosinHead_s& head) const {
  Model const& model = models.of(head);
  bool const was_bound = model.attached[head.state];
  bool const will_be_bound = model.attached[outcome.state];
  if (!was_bound && will_be_bound) {
    head.actin_site = outcome.site;
    head.actin_fibre = outcome.fibre;
    attach(data, head);
    ++numberOfAtachments;
  }
  if (was_bound && !will_be_bound) {
    ++numberOfDetachments;
    head.detach_pending = 1;
  }
  if (was_bound) log_turnover(head.state, outcome.state);
  head.state = outcome.state;
}

void FixedTimeStepMC::attach(FilamentData& data, MyosinHead_s& head) const {
  ++data.bound_count[head.fibre][head.node];
  ++data.bound_count[head.actin_fibre][head.actin_site];
  data.sites[head.actin_fibre][head.actin_site].head = &head;
}

void FixedTimeStepMC::detach(FilamentData& data, MyosinHead_s& head) const {
  --data.bound_count[head.fibre][head.node];
  --data.bound_count[head.actin_fibre][head.actin_site];
  data.sites[head.actin_fibre][head.actin_site].head = nullptr;
  head.actin_site = unbound;
  head.actin_fibre = unbound;
}

FixedTimeStepMCActiv::FixedTimeStepMCActiv(ActiveModel const& slow, ActiveModel const& fast,
                                           Model const* protein_c)
    : FixedTimeStepMC(slow, fast, protein_c), active_model_slow(&slow), active_model_fast(&fast) {}

double FixedTimeStepMCActiv::get_k_slow(double x, unsigned from, unsigned to,
                                        ActinSite_s const& site) const {
  return active_model_slow->get_k(x, from, to, site);
}

double FixedTimeStepMCActiv::get_k_fast(double x, unsigned from, unsigned to,
                                        ActinSite_s const& site) const {
  return active_model_fast->get_k(x, from, to, site);
}

// Diagnostics

void FixedTimeStepMC::print_transitions_slow(std::ostream& os) {
  print_transitions(*models.slow, os);
}

void FixedTimeStepMC::print_transitions_fast(std::ostream& os) {
  print_transitions(*models.fast, os);
}

void FixedTimeStepMC::print_transitions(Model const& model, std::ostream& os) {
  for (unsigned from = 0; from < n_states; ++from) {
    for (unsigned to = 0; to < n_states; ++to) {
      if (model.transitions[from][to]) os << transition_counts[from][to] << ' ';
      transition_counts[from][to] = 0;
    }
  }
  os << std::endl;
}
