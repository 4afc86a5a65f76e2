#pragma once
/// Where a flexible tropomyosin chain lies, given who holds it.
///
/// The chain is computed twice: with the pins that hold in any case, and as if each other weakly
/// bound head held it, too. A weakly bound head is a pin only where the chain of the troponins and
/// strong heads leans to the blocking side, and there only the nearest one to a troponin, on either
/// side and with no strong head between. Means come from the finite elements, in which all pins act
/// together, deviations from the closed expressions.
///
/// The release factor of a pinned site grows with the curvature kappa of the chain there, that of
/// the circle through the pin and its neighbours: k_off_factor = 1 + k_cur kappa / c, with c the
/// distance [nm] of the two neighbours. A pin at the very start of a chain keeps the factor 1: it
/// is its own left neighbour.

#include <valarray>
#include <vector>

#include "activation/analytical_chain_model.h"
#include "activation/fem_flex_chain_model.h"
#include "activation/pinning_site.h"

/// False where both `a` and `c` lie within 1e-8 of `b`.
bool CheckCoordinates(double a, double b, double c);

/// One chain: its pins and, per site, the distribution of its angle that they lead to.
struct FlexibleChain_s {
  explicit FlexibleChain_s(std::size_t n_sites);

  std::vector<PinningSite_s> fixed_pins;  ///< troponins and strong heads
  std::valarray<double> fixed_mean;       ///< where these alone hold it
  std::vector<PinningSite_s> pins;        ///< with the weak heads that hold it, too
  std::valarray<double> mean, sd;
  std::valarray<double> mean_weak, sd_weak;  ///< as if each other weak head held it, too
  std::valarray<double> curvature_factor;

  bool is_solved = false;
};

/// Both solvers, with work arrays that serve chains of up to `longest` sites.
class FlexibleChainSolver {
 public:
  FlexibleChainSolver(FChainModel const& model, std::size_t longest);

  /// Renews a chain whose troponins and bound heads are the `holders`, and marks the sites at which
  /// it changes. What follows from a list of pins alone is kept while that list stays the same.
  void update(FlexibleChain_s& chain, std::vector<PinningSite_s> const& holders,
              std::vector<char>& has_changed);

 private:
  void update_fixed_pins(FlexibleChain_s& chain, std::vector<PinningSite_s> const& holders);
  /// Returns whether the pins are others than before.
  bool update_pins(FlexibleChain_s& chain, std::vector<PinningSite_s> const& holders);
  void find_pins(FlexibleChain_s const& chain, std::vector<PinningSite_s> const& holders);
  void let_weak_heads_pin(FlexibleChain_s& chain, std::vector<PinningSite_s> const& holders,
                          std::vector<char>& has_changed);
  void update_curvature(FlexibleChain_s& chain) const;
  double release_factor(FlexibleChain_s const& chain, std::size_t pin) const;

  FChainModel const& parameter;
  AnalyticalChainModel<double> analytical;
  FEMFlexChainModel elements;
  std::vector<PinningSite_s> next_pins;
  std::valarray<double> next_mean, next_sd;
};
