#pragma once
/// Rigid-chain regulation: a segment moves as a whole between open, closed and blocked.
///
/// The state of a segment is drawn by a calcium model, where the indicator is 1 or more, else by a
/// model of the opening rate kb; the value of "ca_protocol.dat" is the concentration or kb itself.
/// All sites of a segment share its lumped state:
///
///     0 open     heads bind and go on
///     1 blocked  no head binds, bound ones don't go on
///     2 closed   heads bind but don't make their stroke
///
/// Heads act back only through the number of bound sites of a segment. Each filament draws once
/// whether it takes the healthy or the mutated parameter file.

#include <memory>

#include "activation/activation.h"
#include "activation/segment_layout.h"
#include "base/protocol.h"

class CaActivation3x3SModel;
class KbActivationModelR;

class ActivationGeeves6SModel : public ActivationModel {
 public:
  explicit ActivationGeeves6SModel(ActivationModelParameter const& parameter);
  ~ActivationGeeves6SModel() override;

  int state_change(FilamentData& data, double time, std::vector<int>& counts) override;
  /// Gives the number of sites in each lumped state (six entries), then the number of segments with
  /// 0, 1, 2 ... bound sites in the last step.
  void state_info(std::vector<double>& info) const override;
  /// Appends, chain by chain, one 32-bit integer a site, padded with zeros to the longest chain:
  /// the state of a bound head + 1; without a head 0 at the troponin (place 3), else 1.
  void write_state_data(FilamentData const& data, FILE* file, bool) const override;

 private:
  void choose_regulation(int healtyChainPercent);
  void state_change_segment(ActivationStateData& segment, unsigned n_bound, FilamentData& data);
  void set_sites(ActivationStateData& segment, unsigned lumped, FilamentData& data) const;

  std::vector<unsigned> state_map;
  ChainSegments chain_segments;
  BoundSites bound_sites;
  Protocol ca_protocol;
  std::unique_ptr<CaActivation3x3SModel> ca_model;
  std::unique_ptr<KbActivationModelR> kb_model;
  unsigned segment_length = 0;
  std::vector<unsigned> bound_histogram;
  bool sites_are_set = false;  ///< since the first step
};
