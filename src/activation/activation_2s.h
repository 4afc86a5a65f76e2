#pragma once
/// Lumped two-state regulation: each segment is off or on and switches as a whole.
///
/// Law:     off -> on: k_12      on -> off: k_12 L(Ca), unless a head is bound in the segment
///          L(Ca) = (1 + k1t Ca + q) / ((e0 ep + k1t ep Ca + q) lam)  with  q = k1t k2t Ca^2
/// Symbols: Ca calcium concentration [M], 10 to the value of "ca_protocol.dat"; k1t, k2t affinities
///          of the two ions [1/M]; ep, lam, e0 coupling factors; k_12 [1/s]
/// Assumes: L tends to 1 / lam at high calcium
/// Refuses: negative constants, lam not above 0, a segment_length below 1
///
/// One number of the random stream serves both moves of a segment, which can so switch on and off
/// again within one step.

#include "activation/activation.h"
#include "activation/activation_state_data.h"
#include "base/protocol.h"

namespace dealii {
class ParameterHandler;
}

class Activation2SModel : public ActivationModel {
 public:
  explicit Activation2SModel(ActivationModelParameter const& parameter);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  int state_change(FilamentData& data, double time, std::vector<int>& counts) override;
  /// Gives the numbers of sites that are off and that are on.
  void state_info(std::vector<double>& info) const override;

  /// Ratio L of the rate off to the rate on.
  double get_lti(double Ca) const;

 private:
  /// Returns whether the segment has switched, if only to and fro.
  bool state_change_segment(ActivationStateData& segment, FilamentData const& data,
                            double lti) const;

  std::vector<ActivationStateData> segments;  ///< of all chains, chain after chain
  unsigned segment_length = 0;
  double k1t = 0.0;
  double k2t = 0.0;
  double ep = 0.0;
  double lam = 0.0;
  double e0 = 0.0;
  double k_12 = 0.0;
  Protocol ca_protocol;
  std::vector<unsigned> state_map;
  bool sites_are_set = false;  ///< since the first step
};
