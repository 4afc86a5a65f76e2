#pragma once
/// Regulation by a flexible tropomyosin chain: each site is gated by where the chain lies there.
///
/// A chain runs along each strand of the two thin filaments. The troponin of a blocked segment pins
/// it at the angle phi_minus, at place 3 of the segment; a strongly bound head pins it at phi_plus;
/// a weakly bound one may pin it at 0. Between the pins the chain fluctuates with a mean and a
/// deviation at each site. How likely the chain leaves a site free sets the site's factors
/// (`FChainModel`), and how likely it lies below the blocking angle at the troponin sets how fast
/// the segment closes (`CaActivation3x2SModel`, `KbActivationModelE`).
///
/// States of a site: 0 pinned by troponin, 1 free, 2 with a weakly bound head, 3 with a head in a
/// power-stroke state. The chain of a step follows the states that the step before has left.
///
/// The release factor of a pinned site grows with the curvature kappa of the chain there, that of
/// the circle through the pin and its neighbours: k_off_factor = 1 + k_cur kappa / c, with c the
/// distance [nm] of the two neighbours. A pin at the very start of a chain keeps the factor 1: it
/// is its own left neighbour.
///
/// The value of "ca_protocol.dat" is the calcium concentration, or the rate kb where the indicator
/// is below 1. Each filament draws once whether it takes the healthy or the mutated files.
///
/// Refuses: a lattice without the four chains of two thin filaments; segments below 4 sites; under
/// calcium a free chain that never lies below phi_minus or never above phi_plus; "xi_mutated.dat"
/// without a number, or with one that `xi` couldn't have

#include <memory>
#include <valarray>
#include <vector>

#include "activation/activation.h"
#include "activation/analytical_chain_model.h"
#include "activation/fchain_model.h"
#include "activation/fem_flex_chain_model.h"
#include "activation/segment_layout.h"
#include "base/protocol.h"

class CaActivation3x2SModel;
class KbActivationModelE;
struct ActinSite_s;

/// False where both `a` and `c` lie within 1e-8 of `b`.
bool CheckCoordinates(double a, double b, double c);

class ActivationFChainModel : public ActivationModel {
 public:
  explicit ActivationFChainModel(ActivationModelParameter const& parameter);
  ~ActivationFChainModel() override;

  int state_change(FilamentData& data, double time, std::vector<int>& counts) override;
  /// Gives the number of sites in each of the four states.
  void state_info(std::vector<double>& info) const override;
  /// With `full`, a line per site up to the end of the shortest chain: mean, deviation and state of
  /// each chain there.
  void write_state_data(FilamentData const& data, FILE* file, bool full) const override;

  /// Whether a site is in the ascending list.
  static bool IsPinned(unsigned site, std::vector<PinningSite_s> const& pins);
  /// Renews all arrays of one chain from the states of its sites.
  void update_flexible_chain(unsigned chain);

 private:
  void create_ca_model(bool is_mutated);
  void create_kb_model(bool is_mutated);
  void lay_out_chains();

  void find_fixed_pins(unsigned chain);
  bool add_weak_pins(unsigned chain);
  void solve_chain(unsigned chain);
  void let_weak_heads_pin(unsigned chain);
  void update_curvature(unsigned chain);
  /// `pin` counts in `pins`.
  double release_factor(std::size_t pin, std::valarray<double> const& mean) const;

  /// One step of a segment; `site_index` is its first site along the chain and moves on to the next
  /// segment's.
  void state_change_segment(unsigned chain, ActivationStateData& segment, FilamentData const& data,
                            unsigned& site_index);
  void update_bound_heads(ActivationStateData& segment, FilamentData const& data) const;
  void step_status(ActivationStateData& segment, double closing_probability) const;
  unsigned lumped_state(ActivationStateData const& segment) const;
  void write_release_factors(std::valarray<ActinSite_s>& sites, unsigned first_chain) const;
  void count_segments();
  /// Calls `visit(site, state)` for all sites of a chain in order.
  template <class Visit>
  void for_each_site(unsigned chain, Visit const& visit) const;

  Model const* power_stroke_model;
  ChainSegments chain_segments;
  Protocol ca_protocol;
  FChainModel fchain;
  std::unique_ptr<CaActivation3x2SModel> ca_model;
  std::unique_ptr<KbActivationModelE> kb_model;
  unsigned segment_length = 0;
  std::unique_ptr<AnalyticalChainModel<double>> analytical_chain;
  std::unique_ptr<FEMFlexChainModel> fem_chain;

  // Per chain, per site along the chain: with the pins that hold in any case, and as if each other
  // weakly bound head held the chain, too.
  std::vector<std::valarray<double>> phi_mean;
  std::vector<std::valarray<double>> phi_sd;
  std::vector<std::valarray<double>> phi_mean_weak;
  std::vector<std::valarray<double>> phi_sd_weak;
  std::vector<std::valarray<double>> curvature_factor;

  // Of the chain at work; kept so that no step allocates.
  std::vector<PinningSite_s> pins;
  std::vector<PinningSite_s> all_pins;
  std::valarray<double> all_pins_mean;
  std::valarray<double> all_pins_sd;
};
