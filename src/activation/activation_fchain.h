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
/// The value of "ca_protocol.dat" is the calcium concentration, or the rate kb where the indicator
/// is below 1. Each filament draws once whether it takes the healthy or the mutated files.
///
/// Refuses: a lattice without the four chains of two thin filaments; segments below 4 sites; under
/// calcium a free chain that never lies below phi_minus or never above phi_plus; "xi_mutated.dat"
/// without a number, or with one that `xi` couldn't have

#include <memory>
#include <vector>

#include "activation/activation.h"
#include "activation/fchain_model.h"
#include "activation/flexible_chain.h"
#include "activation/segment_layout.h"
#include "base/protocol.h"

class CaActivation3x2SModel;
class KbActivationModelE;

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

  void state_change_segments(unsigned chain, FilamentData const& data);
  /// Sites of the segment of that number in its chain.
  void update_states(unsigned chain, unsigned number, unsigned old_lumped,
                     FilamentData const& data);
  void renew_sites(unsigned chain, FilamentData& data);
  void step_status(ActivationStateData& segment, double closing_probability);
  unsigned next_state(ActivationStateData const& segment, unsigned place, unsigned old_lumped,
                      FilamentData const& data) const;
  unsigned lumped_state(ActivationStateData const& segment) const;
  /// Calls `visit(site, state)` for all sites of a chain in order.
  template <class Visit>
  void for_each_site(unsigned chain, Visit const& visit) const;

  /// What a chain has beside its segments.
  struct Chain_s {
    std::size_t first_segment;  ///< counted over all chains
    FlexibleChain_s shape;
    std::vector<char> is_due;                 ///< per site: state or chain has changed there
    std::vector<double> closing_probability;  ///< per segment
    std::vector<char> has_heads;              ///< per segment: in the last step
    bool has_due_sites = true;
    bool is_outdated = true;  ///< the states are no longer those of `shape`
  };

  Model const* power_stroke_model;
  ChainSegments chain_segments;
  std::vector<Chain_s> chains;
  BoundSites bound_sites;
  Protocol ca_protocol;
  FChainModel fchain;
  std::unique_ptr<CaActivation3x2SModel> ca_model;
  std::unique_ptr<KbActivationModelE> kb_model;
  unsigned segment_length = 0;
  std::unique_ptr<FlexibleChainSolver> solver;
  std::vector<PinningSite_s> holders;  ///< of the chain at work
};
