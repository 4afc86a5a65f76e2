#pragma once
/// Switches sites off at random: the value of "ca_protocol.dat" is the probability that a site is
/// off.
///
/// The draw is independent from site to site, fibre by fibre and node by node, and is made anew
/// only when the protocol's value changes. The model has no segments.

#include "activation/activation.h"
#include "base/protocol.h"

class ActivationFixedModel : public ActivationModel {
 public:
  explicit ActivationFixedModel(ActivationModelParameter const& parameter);

  int state_change(FilamentData& data, double time, std::vector<int>& counts) override;
  /// Gives the numbers of disabled and of enabled sites.
  void state_info(std::vector<double>& info) const override;

 private:
  unsigned n_enabled = 0;
  unsigned n_disabled = 0;
  double last_value = -1.0;
  Protocol ca_protocol;
};
