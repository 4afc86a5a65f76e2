#pragma once
/// Calcium regulation of a rigid chain: up to two ions, three positions of tropomyosin.
///
/// `status` runs from 0 to 8. Heads act by a veto alone: a segment with a bound head doesn't go
/// from the closed into the blocked position. Constants and rates: `CaRegulation`.

#include "activation/ca_regulation.h"

class CaActivation3x3SModel : public CaRegulation {
 public:
  CaActivation3x3SModel(std::string const& file, int caActivationModelIndicator);

  void SetInitial(std::string const& file, int caActivationModelIndicator);
  static void declare_parameters(dealii::ParameterHandler& handler);

  /// Draws the `status` after a step; uses one number of the random stream.
  int update_status(int status, int n_heads_bound, double dt) const;

  /// Writes "CaActivation3x3SModel.lst", or "CaActivation2x3SModel.lst" where one ion binds.
  void listingActivationInput() const;
  void WriteToTaveloOutput() const;
};
