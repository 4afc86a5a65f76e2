#include "activation/flexible_chain.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

double sqr(double x) { return x * x; }

}  // namespace

bool CheckCoordinates(double a, double b, double c) {
  constexpr double same = 1e-8;
  return !(std::abs(a - b) < same && std::abs(c - b) < same);
}

FlexibleChain_s::FlexibleChain_s(std::size_t n_sites)
    : fixed_mean(n_sites),
      mean(n_sites),
      sd(n_sites),
      mean_weak(n_sites),
      sd_weak(n_sites),
      curvature_factor(n_sites) {
  fixed_pins.reserve(n_sites);
  pins.reserve(n_sites);
}

FlexibleChainSolver::FlexibleChainSolver(FChainModel const& model, std::size_t longest)
    : parameter(model),
      analytical(*model.get_fc_parameter()),
      elements(*model.get_fc_parameter()),
      next_mean(longest),
      next_sd(longest) {
  next_pins.reserve(longest);
}

void FlexibleChainSolver::update(FlexibleChain_s& chain, std::vector<PinningSite_s> const& holders,
                                 std::vector<char>& has_changed) {
  update_fixed_pins(chain, holders);
  if (update_pins(chain, holders)) std::fill(has_changed.begin(), has_changed.end(), true);
  let_weak_heads_pin(chain, holders, has_changed);
  chain.is_solved = true;
}

void FlexibleChainSolver::update_fixed_pins(FlexibleChain_s& chain,
                                            std::vector<PinningSite_s> const& holders) {
  next_pins.clear();
  std::copy_if(holders.begin(), holders.end(), std::back_inserter(next_pins),
               [](PinningSite_s const& pin) { return pin.type != by_weak_head; });
  if (chain.is_solved && next_pins == chain.fixed_pins) return;
  chain.fixed_pins = next_pins;
  elements.compute_chain(chain.fixed_pins, static_cast<unsigned>(chain.fixed_mean.size()),
                         chain.fixed_mean);
}

bool FlexibleChainSolver::update_pins(FlexibleChain_s& chain,
                                      std::vector<PinningSite_s> const& holders) {
  find_pins(chain, holders);
  if (chain.is_solved && next_pins == chain.pins) return false;
  chain.pins = next_pins;
  auto const n = static_cast<unsigned>(chain.mean.size());
  analytical.compute_chain(chain.pins, n, chain.mean, chain.sd);
  if (chain.pins == chain.fixed_pins) {
    chain.mean = chain.fixed_mean;
  } else {
    elements.compute_chain(chain.pins, n, chain.mean);
  }
  update_curvature(chain);
  return true;
}

/// Lists in `next_pins` the fixed pins and the weak heads that hold the chain.
void FlexibleChainSolver::find_pins(FlexibleChain_s const& chain,
                                    std::vector<PinningSite_s> const& holders) {
  enum { none, after_troponin, waiting } memory = none;
  PinningSite_s saved = {};  ///< the head that waits for a troponin
  next_pins.clear();
  for (PinningSite_s const& holder : holders) {
    if (holder.type == by_troponin) {
      if (memory == waiting) next_pins.push_back(saved);
      next_pins.push_back(holder);
      memory = after_troponin;
    } else if (holder.type == by_strong_head) {
      next_pins.push_back(holder);
      memory = none;
    } else if (chain.fixed_mean[holder.site] < 0.0) {
      if (memory == after_troponin) {
        next_pins.push_back(holder);
        memory = none;
      } else {
        saved = holder;
        memory = waiting;
      }
    }
  }
}

/// Between two neighbouring holders one of which is a weak head that doesn't pin, the `_weak` pair
/// describes the chain as if it did; elsewhere it is that of the pins.
void FlexibleChainSolver::let_weak_heads_pin(FlexibleChain_s& chain,
                                             std::vector<PinningSite_s> const& holders,
                                             std::vector<char>& has_changed) {
  std::size_t const n = chain.mean.size();
  std::copy(std::begin(chain.mean), std::end(chain.mean), std::begin(next_mean));
  std::copy(std::begin(chain.sd), std::end(chain.sd), std::begin(next_sd));
  auto const is_loose = [&chain](PinningSite_s const& pin) {
    return pin.type == by_weak_head && !has_pin(chain.pins, pin.site);
  };
  if (holders.size() != chain.pins.size()) {
    for (std::size_t i = 1; i < holders.size(); ++i) {
      PinningSite_s const& a = holders[i - 1];
      PinningSite_s const& b = holders[i];
      if (is_loose(a) || is_loose(b)) analytical.compute_span(a, b, next_mean, next_sd);
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    if (next_mean[i] == chain.mean_weak[i] && next_sd[i] == chain.sd_weak[i]) continue;
    chain.mean_weak[i] = next_mean[i];
    chain.sd_weak[i] = next_sd[i];
    has_changed[i] = true;
  }
}

void FlexibleChainSolver::update_curvature(FlexibleChain_s& chain) const {
  chain.curvature_factor = 1.0;
  for (std::size_t i = 0; i < chain.pins.size(); ++i) {
    chain.curvature_factor[chain.pins[i].site] = release_factor(chain, i);
  }
}

/// `pin` counts in the chain's pins.
double FlexibleChainSolver::release_factor(FlexibleChain_s const& chain, std::size_t pin) const {
  FlexChainParameter_s const& fc = *parameter.get_fc_parameter();
  auto const& pins = chain.pins;
  auto const& mean = chain.mean;
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
  return 1.0 + kappa * parameter.k_cur / std::sqrt(c2);
}
