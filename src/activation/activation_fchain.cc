#include "activation/activation_fchain.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <sstream>

#include "activation/ca_activation_3x2s.h"
#include "activation/kb_activation_extensible.h"
#include "base/diagnostics.h"
#include "base/input_file.h"
#include "base/run_state.h"
#include "base/uniform_variate.h"
#include "kinetics/model.h"
#include "lattice/geometry.h"
#include "records/filament_data.h"

REGISTER_ACTIVATION(ActivationFChainModel, "FChain");

namespace {

constexpr char const* xi_file = "xi_mutated.dat";

constexpr std::size_t n_chains = 4;
constexpr std::size_t n_statuses = 6;

/// Place of the troponin in its segment.
constexpr unsigned troponin = 3;
constexpr unsigned blocked = 1;  ///< lumped state of a segment

/// States of a site.
enum : unsigned { pinned, free_site, weak_head, strong_head };

/// Type of the pin that a site of this state makes.
constexpr unsigned pin_types[] = {by_troponin, by_troponin, by_weak_head, by_strong_head};

double read_mutated_xi(FChainModel const& fchain) {
  auto const text = read_input(xi_file);
  if (!text) stop(std::string(xi_file) + ": can't be read: " + std::strerror(errno));
  std::istringstream file(*text);
  double xi = 0.0;
  if (!(file >> xi)) stop(std::string(xi_file) + ": doesn't begin with a number");
  if (!fchain.accepts(xi)) {
    refuse(xi_file, "xi", shown(xi), FChainModel::accepted_xi);
  }
  return xi;
}

}  // namespace

// Construction

ActivationFChainModel::ActivationFChainModel(ActivationModelParameter const& parameter)
    : ActivationModel(parameter),
      power_stroke_model(parameter.model_slow),
      ca_protocol("ca_protocol.dat") {
  state_counts.assign(n_statuses, 0);
  if (geometry->n_actin_chains() != n_chains) {
    refuse("numeric_mc.prm", "activation", "FChain",
           "None, Fixed, Geeves6S or Lumped2S on a lattice without four chains of sites");
  }
  std::fprintf(fOutputFile, "\t*** CALCIUM PROTOCOL *****************\n\n");
  ca_protocol.WriteToTaveloOutput();
  bool const is_mutated = uniform_variate() > parameter.healtyChainPercent * 0.01;
  if (caActivationModelIndicator >= 1) {
    create_ca_model(is_mutated);
  } else {
    create_kb_model(is_mutated);
  }
  lay_out_chains();
}

ActivationFChainModel::~ActivationFChainModel() = default;

void ActivationFChainModel::create_ca_model(bool is_mutated) {
  // Rates and scales as read are those of a free chain, whose share of time they are divided by.
  constexpr double sd_times_sqrt_2 = 0.7330756847961304;
  FlexChainParameter_s const& fc = *fchain.get_fc_parameter();
  double const P_minus = 1 - 0.5 * std::erfc(fc.phi_minus / sd_times_sqrt_2);
  double const a = 0.5 - P_minus;
  double const b = 0.5 - 0.5 * std::erfc(fc.phi_plus / sd_times_sqrt_2);
  double const P_plus = b + a + P_minus;
  if (!(P_minus > 0.0 && P_plus < 1.0)) {
    refuse("mg_old.prm, section chain", "phi_minus, phi_plus",
           shown(fc.phi_minus) + ", " + shown(fc.phi_plus),
           "angles that the free chain falls below and exceeds");
  }
  fchain.km = fchain.km / (P_minus + a);
  fchain.kps = fchain.kps / (1 - P_plus);
  if (is_mutated) fchain.ChangeXi(read_mutated_xi(fchain));
  char const* const file = is_mutated ? "CaActivation3x2s_mutated.prm" : "CaActivation3x2s.prm";
  ca_model = std::make_unique<CaActivation3x2SModel>(file, caActivationModelIndicator, P_minus);
  segment_length = ca_model->get_segment_length();
  if (segment_length <= troponin) {
    refuse(std::string(file) + ", section structure", "segment_length",
           std::to_string(segment_length), "4 or more, as the troponin is at the fourth site");
  }
}

void ActivationFChainModel::create_kb_model(bool is_mutated) {
  if (is_mutated) fchain.ChangeXi(read_mutated_xi(fchain));
  kb_model = std::make_unique<KbActivationModelE>(is_mutated ? "KbActivationExtensible_mutated.prm"
                                                             : "KbActivationExtensible.prm");
  segment_length = kb_model->get_segment_length();
}

void ActivationFChainModel::lay_out_chains() {
  chain_segments = lay_out_segments(*geometry, segment_length);
  bound_sites = BoundSites(chain_segments);
  std::size_t longest = 0;
  std::size_t first_segment = 0;
  for (auto& segments : chain_segments) {
    std::size_t const n = segments.size() * segment_length;
    longest = std::max(longest, n);
    chains.push_back({first_segment, FlexibleChain_s(n), std::vector<char>(n),
                      std::vector<double>(segments.size()), std::vector<char>(segments.size())});
    first_segment += segments.size();
    for (ActivationStateData& segment : segments) {
      segment.status = 0;
      std::fill(segment.state.begin(), segment.state.end(), free_site);
      segment.state[troponin] = pinned;
    }
    state_counts[0] += static_cast<int>(segments.size());
  }
  holders.reserve(longest);
  solver = std::make_unique<FlexibleChainSolver>(fchain, longest);
}

// A step

int ActivationFChainModel::state_change(FilamentData& data, double time, std::vector<int>& counts) {
  double const value = ca_protocol.value_at(time);
  ca_protocol.checkForNewProtocol(time);
  if (kb_model) kb_model->set_kb(value);
  if (ca_model) ca_model->set_calcium(value);
  bound_sites.count(data);
  for (unsigned chain = 0; chain < chains.size(); ++chain) {
    Chain_s const& c = chains[chain];
    if (c.is_outdated) update_flexible_chain(chain);
    state_change_segments(chain, data);
    if (c.has_due_sites) renew_sites(chain, data);
  }
  counts = state_counts;
  return 0;
}

// The chain

template <class Visit>
void ActivationFChainModel::for_each_site(unsigned chain, Visit const& visit) const {
  unsigned site = 0;
  for (ActivationStateData const& segment : chain_segments[chain]) {
    for (unsigned const state : segment.state) visit(site++, state);
  }
}

void ActivationFChainModel::update_flexible_chain(unsigned chain) {
  holders.clear();
  for_each_site(chain, [&](unsigned site, unsigned state) {
    if (state != free_site) holders.push_back({site, pin_types[state]});
  });
  Chain_s& c = chains[chain];
  FlexibleChain_s const& shape = c.shape;
  solver->update(c.shape, holders, c.is_due);
  c.is_outdated = false;
  c.has_due_sites = true;
  for (unsigned s = 0; s < c.closing_probability.size(); ++s) {
    unsigned const i = s * segment_length + troponin;
    if (!c.is_due[i]) continue;
    c.closing_probability[s] = fchain.closing_probability(shape.mean[i], shape.sd[i],
                                                          shape.mean_weak[i], shape.sd_weak[i]);
  }
}

bool ActivationFChainModel::IsPinned(unsigned site, std::vector<PinningSite_s> const& pins) {
  return has_pin(pins, site);
}

// The segments

void ActivationFChainModel::state_change_segments(unsigned chain, FilamentData const& data) {
  Chain_s& c = chains[chain];
  for (unsigned s = 0; s < chain_segments[chain].size(); ++s) {
    ActivationStateData& segment = chain_segments[chain][s];
    unsigned const old_lumped = lumped_state(segment);
    step_status(segment, c.closing_probability[s]);
    bool const has_heads = bound_sites.in_segment(c.first_segment + s) > 0;
    // Without heads, now and before, only the segment's own move changes the state of a site.
    if (has_heads || c.has_heads[s] || lumped_state(segment) != old_lumped) {
      update_states(chain, s, old_lumped, data);
    }
    c.has_heads[s] = has_heads;
  }
}

void ActivationFChainModel::update_states(unsigned chain, unsigned number, unsigned old_lumped,
                                          FilamentData const& data) {
  Chain_s& c = chains[chain];
  ActivationStateData& segment = chain_segments[chain][number];
  for (unsigned j = 0; j < segment_length; ++j) {
    unsigned const state = next_state(segment, j, old_lumped, data);
    if (state == segment.state[j]) continue;
    segment.state[j] = state;
    c.is_due[number * segment_length + j] = true;
    c.has_due_sites = true;
    c.is_outdated = true;
  }
}

unsigned ActivationFChainModel::next_state(ActivationStateData const& segment, unsigned place,
                                           unsigned old_lumped, FilamentData const& data) const {
  if (place == troponin && lumped_state(segment) == blocked) return pinned;
  if (place == troponin && old_lumped == blocked) return free_site;
  if (!segment.head_bound(place, data)) return free_site;
  auto const head_state = static_cast<int>(segment.head_state(place, data));
  return power_stroke_model->IsPowerStrokeState(head_state) ? strong_head : weak_head;
}

/// Factors follow from the state of a site and the chain there: where both are as before, the site
/// holds them already.
void ActivationFChainModel::renew_sites(unsigned chain, FilamentData& data) {
  Chain_s& c = chains[chain];
  c.has_due_sites = false;
  FlexibleChain_s const& shape = c.shape;
  unsigned i = 0;
  for (ActivationStateData& segment : chain_segments[chain]) {
    for (unsigned j = 0; j < segment_length; ++j, ++i) {
      if (!c.is_due[i]) continue;
      c.is_due[i] = false;
      fchain.update_status(j, shape.mean[i], shape.sd[i], shape.mean_weak[i], shape.sd_weak[i],
                           segment.state[j], segment.k_on_factor[j]);
      segment.k_stroke_factor[j] = segment.k_on_factor[j];
      segment.copy_place_to_filament(j, data, fchain.get_state_map());
      if (ActinSite_s* const site = segment.find_site(j, data)) {
        site->k_off_factor = shape.curvature_factor[i];
        data.most_factor = std::max(data.most_factor, site->k_off_factor);
      }
    }
  }
}

void ActivationFChainModel::step_status(ActivationStateData& segment, double closing_probability) {
  auto const old = static_cast<int>(segment.status);
  int const next = kb_model ? kb_model->update_status(old, currentTimeStep, closing_probability)
                            : ca_model->update_status(old, currentTimeStep, closing_probability);
  --state_counts[segment.status];
  segment.status = static_cast<unsigned>(next);
  ++state_counts[segment.status];
}

unsigned ActivationFChainModel::lumped_state(ActivationStateData const& segment) const {
  auto const status = static_cast<int>(segment.status);
  return kb_model ? KbActivationModelE::GetLumpedSegmentState(status)
                  : CaActivation3x2SModel::GetLumpedSegmentState(status);
}

// Reports

void ActivationFChainModel::state_info(std::vector<double>& info) const {
  info.assign(fchain.n_states(), 0.0);
  for (unsigned chain = 0; chain < chain_segments.size(); ++chain) {
    for_each_site(chain, [&](unsigned, unsigned state) { info[state] += 1.0; });
  }
}

void ActivationFChainModel::write_state_data(FilamentData const&, FILE* file, bool full) const {
  if (!full) return;
  std::size_t shortest = chains[0].shape.mean.size();
  for (Chain_s const& chain : chains) shortest = std::min(shortest, chain.shape.mean.size());
  for (std::size_t i = 0; i < shortest; ++i) {
    for (std::size_t c = 0; c < n_chains; ++c) {
      unsigned const state = chain_segments[c][i / segment_length].state[i % segment_length];
      std::fprintf(file, c + 1 < n_chains ? "%f,%f,%d,," : "%f,%f,%d\n", chains[c].shape.mean[i],
                   chains[c].shape.sd[i], static_cast<int>(state));
    }
  }
}
