#include "activation/activation_fchain.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>

#include "activation/ca_activation_3x2s.h"
#include "activation/kb_activation_extensible.h"
#include "base/diagnostics.h"
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

/// Types of a pin.
enum : unsigned { by_troponin, by_weak_head, by_strong_head };

double sqr(double x) { return x * x; }

double read_mutated_xi(FChainModel const& fchain) {
  std::ifstream file(xi_file);
  if (!file) stop(std::string(xi_file) + ": can't be read: " + std::strerror(errno));
  double xi = 0.0;
  if (!(file >> xi)) stop(std::string(xi_file) + ": doesn't begin with a number");
  if (!fchain.accepts(xi)) {
    refuse(xi_file, "xi", shown(xi), FChainModel::accepted_xi);
  }
  return xi;
}

}  // namespace

bool CheckCoordinates(double a, double b, double c) {
  constexpr double same = 1e-8;
  return !(std::abs(a - b) < same && std::abs(c - b) < same);
}

// Construction

ActivationFChainModel::ActivationFChainModel(ActivationModelParameter const& parameter)
    : ActivationModel(parameter),
      power_stroke_model(parameter.model_slow),
      ca_protocol("ca_protocol.dat"),
      fchain(parameter.dt) {
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
  analytical_chain = std::make_unique<AnalyticalChainModel<double>>(*fchain.get_fc_parameter());
  fem_chain = std::make_unique<FEMFlexChainModel>(*fchain.get_fc_parameter());
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
  std::size_t longest = 0;
  for (auto& chain : chain_segments) {
    std::size_t const n = chain.size() * segment_length;
    for (auto* const values :
         {&phi_mean, &phi_sd, &phi_mean_weak, &phi_sd_weak, &curvature_factor}) {
      values->emplace_back(0.0, n);
    }
    longest = std::max(longest, n);
    for (ActivationStateData& segment : chain) {
      segment.status = 0;
      std::fill(segment.state.begin(), segment.state.end(), free_site);
      segment.state[troponin] = pinned;
    }
  }
  pins.reserve(longest);
  all_pins.reserve(longest);
  all_pins_mean.resize(longest);
  all_pins_sd.resize(longest);
}

// A step

int ActivationFChainModel::state_change(FilamentData& data, double time, std::vector<int>& counts) {
  double const value = ca_protocol.value_at(time);
  ca_protocol.checkForNewProtocol(time);
  if (kb_model) kb_model->set_kb(value);
  if (ca_model) ca_model->set_calcium(value);
  for (unsigned chain = 0; chain < chain_segments.size(); ++chain) {
    update_flexible_chain(chain);
    unsigned site_index = 0;
    for (ActivationStateData& segment : chain_segments[chain]) {
      state_change_segment(chain, segment, data, site_index);
      segment.copy_to_filament(data, fchain.get_state_map());
    }
  }
  write_release_factors(data.sites[1], 0);
  write_release_factors(data.sites[2], 2);
  count_segments();
  counts = state_counts;
  return 0;
}

void ActivationFChainModel::write_release_factors(std::valarray<ActinSite_s>& sites,
                                                  unsigned first_chain) const {
  auto const& even = curvature_factor[first_chain];
  auto const& odd = curvature_factor[first_chain + 1];
  std::size_t node = 0;
  for (std::size_t i = 0; i < std::max(even.size(), odd.size()); ++i) {
    if (i < even.size() && node < sites.size()) sites[node++].k_off_factor = even[i];
    if (i < odd.size() && node < sites.size()) sites[node++].k_off_factor = odd[i];
  }
}

void ActivationFChainModel::count_segments() {
  state_counts.assign(n_statuses, 0);
  for (auto const& chain : chain_segments) {
    for (ActivationStateData const& segment : chain) ++state_counts[segment.status];
  }
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
  find_fixed_pins(chain);
  solve_chain(chain);
  if (add_weak_pins(chain)) solve_chain(chain);
  phi_mean_weak[chain] = phi_mean[chain];
  phi_sd_weak[chain] = phi_sd[chain];
  let_weak_heads_pin(chain);
  update_curvature(chain);
}

void ActivationFChainModel::find_fixed_pins(unsigned chain) {
  pins.clear();
  all_pins.clear();
  for_each_site(chain, [&](unsigned site, unsigned state) {
    if (state == pinned) all_pins.push_back({site, by_troponin});
    if (state == weak_head) all_pins.push_back({site, by_weak_head});
    if (state == strong_head) all_pins.push_back({site, by_strong_head});
    if (state == pinned || state == strong_head) pins.push_back(all_pins.back());
  });
}

/// Means of the finite elements, deviations of the closed expressions.
void ActivationFChainModel::solve_chain(unsigned chain) {
  auto const n = static_cast<unsigned>(phi_mean[chain].size());
  analytical_chain->compute_chain(pins, n, phi_mean[chain], phi_sd[chain]);
  fem_chain->compute_chain(pins, n, phi_mean[chain]);
}

/// Adds to the pins the weakly bound heads that are nearest to a troponin pin, on either side and
/// with no strong head between, where the chain leans to the blocking side. Returns whether any.
bool ActivationFChainModel::add_weak_pins(unsigned chain) {
  enum { none, after_troponin, waiting } memory = none;
  unsigned saved = 0;  ///< the head that waits for a troponin
  std::size_t const n_fixed = pins.size();
  pins.clear();
  for_each_site(chain, [&](unsigned site, unsigned state) {
    if (state == pinned) {
      if (memory == waiting) pins.push_back({saved, by_weak_head});
      pins.push_back({site, by_troponin});
      memory = after_troponin;
    } else if (state == strong_head) {
      pins.push_back({site, by_strong_head});
      memory = none;
    } else if (state == weak_head && phi_mean[chain][site] < 0.0) {
      if (memory == after_troponin) {
        pins.push_back({site, by_weak_head});
        memory = none;
      } else {
        saved = site;
        memory = waiting;
      }
    }
  });
  return pins.size() != n_fixed;
}

/// Where a weakly bound head doesn't pin, the `_weak` arrays describe the chain as if it did.
void ActivationFChainModel::let_weak_heads_pin(unsigned chain) {
  if (all_pins.size() == pins.size()) return;
  auto const n = static_cast<unsigned>(phi_mean[chain].size());
  analytical_chain->compute_chain(all_pins, n, all_pins_mean, all_pins_sd);
  auto const is_loose = [this](PinningSite_s const& pin) {
    return pin.type == by_weak_head && !IsPinned(pin.site, pins);
  };
  for (std::size_t i = 1; i < all_pins.size(); ++i) {
    PinningSite_s const& a = all_pins[i - 1];
    PinningSite_s const& b = all_pins[i];
    if (!is_loose(a) && !is_loose(b)) continue;
    for (unsigned site = a.site; site <= b.site; ++site) {
      phi_mean_weak[chain][site] = all_pins_mean[site];
      phi_sd_weak[chain][site] = all_pins_sd[site];
    }
  }
}

bool ActivationFChainModel::IsPinned(unsigned site, std::vector<PinningSite_s> const& pins) {
  return std::binary_search(
      pins.begin(), pins.end(), PinningSite_s{site, 0},
      [](PinningSite_s const& a, PinningSite_s const& b) { return a.site < b.site; });
}

void ActivationFChainModel::update_curvature(unsigned chain) {
  curvature_factor[chain] = 1.0;
  for (std::size_t i = 0; i < pins.size(); ++i) {
    curvature_factor[chain][pins[i].site] = release_factor(i, phi_mean[chain]);
  }
}

double ActivationFChainModel::release_factor(std::size_t pin,
                                             std::valarray<double> const& mean) const {
  FlexChainParameter_s const& fc = *fchain.get_fc_parameter();
  double const d = 1e9 * fc.actin_distance;
  double const r = fc.radius_actin;
  bool const is_first = pin == 0;
  bool const is_last = pin + 1 == pins.size();
  double const x1 = is_first ? 0.0 : d * pins[pin - 1].site;
  double const y1 = is_first ? mean[0] : mean[pins[pin - 1].site];
  double const x2 = d * pins[pin].site;
  double const y2 = mean[pins[pin].site];
  double const x3 = is_last ? d * static_cast<double>(mean.size()) : d * pins[pin + 1].site;
  double const y3 = is_last ? mean[mean.size() - 1] : mean[pins[pin + 1].site];
  bool const coincides = pins[pin].site == 0;
  if (coincides || !CheckCoordinates(y1, y2, y3)) return 1.0;

  double const a2 = sqr(x2 - x1) + sqr(r) * sqr(y2 - y1);
  double const b2 = sqr(x2 - x3) + sqr(r) * sqr(y2 - y3);
  double const c2 = sqr(x3 - x1) + sqr(r) * sqr(y3 - y1);
  double const D = std::abs(x1 * y2 + x2 * y3 + y1 * x3 - x1 * y3 - x2 * y1 - y2 * x3);
  double const kappa = 2 * r * D / std::sqrt(a2 * b2 * c2);
  return 1.0 + kappa * fchain.k_cur / std::sqrt(c2);
}

// The segments

void ActivationFChainModel::state_change_segment(unsigned chain, ActivationStateData& segment,
                                                 FilamentData const& data, unsigned& site_index) {
  auto const& mean = phi_mean[chain];
  auto const& sd = phi_sd[chain];
  auto const& mean_weak = phi_mean_weak[chain];
  auto const& sd_weak = phi_sd_weak[chain];
  unsigned const c = site_index + troponin;
  unsigned const old_lumped = lumped_state(segment);
  step_status(segment, fchain.closing_probability(mean[c], sd[c], mean_weak[c], sd_weak[c]));
  unsigned const new_lumped = lumped_state(segment);
  update_bound_heads(segment, data);
  for (unsigned j = 0; j < segment_length; ++j, ++site_index) {
    if (j == troponin && new_lumped == blocked) {
      segment.state[j] = pinned;
      segment.k_on_factor[j] = 0.0;
      segment.k_stroke_factor[j] = 0.0;
      continue;
    }
    if (j == troponin && old_lumped == blocked) segment.state[j] = free_site;
    unsigned const i = site_index;
    fchain.update_status(j, mean[i], sd[i], mean_weak[i], sd_weak[i], segment.state[j],
                         segment.k_on_factor[j]);
    segment.k_stroke_factor[j] = segment.k_on_factor[j];
  }
}

void ActivationFChainModel::update_bound_heads(ActivationStateData& segment,
                                               FilamentData const& data) const {
  for (unsigned i = 0; i < segment_length; ++i) {
    unsigned& state = segment.state[i];
    if (segment.head_bound(i, data)) {
      auto const head_state = static_cast<int>(segment.head_state(i, data));
      state = power_stroke_model->IsPowerStrokeState(head_state) ? strong_head : weak_head;
    } else if (state > free_site) {
      state = free_site;
    }
  }
}

void ActivationFChainModel::step_status(ActivationStateData& segment,
                                        double closing_probability) const {
  auto const old = static_cast<int>(segment.status);
  int const next = kb_model ? kb_model->update_status(old, dt, closing_probability)
                            : ca_model->update_status(old, dt, closing_probability);
  segment.status = static_cast<unsigned>(next);
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
  std::size_t shortest = phi_mean[0].size();
  for (auto const& mean : phi_mean) shortest = std::min(shortest, mean.size());
  for (std::size_t i = 0; i < shortest; ++i) {
    for (std::size_t c = 0; c < n_chains; ++c) {
      unsigned const state = chain_segments[c][i / segment_length].state[i % segment_length];
      std::fprintf(file, c + 1 < n_chains ? "%f,%f,%d,," : "%f,%f,%d\n", phi_mean[c][i],
                   phi_sd[c][i], static_cast<int>(state));
    }
  }
}
