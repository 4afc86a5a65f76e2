#pragma once
/// Calcium regulation under a flexible chain: up to two ions, blocked or closed; what lies beyond
/// the closed position is left to the mechanics of the chain.
///
/// `status` runs from 0 to 5. The chain acts on the closing rates: each is multiplied by the
/// probability that the chain lies below the blocking position. The closing rates as read are those
/// of a segment in a free chain, so they are divided by that probability of a free chain,
/// `closing_divisor`, once. Constants and rates: `CaRegulation`.

#include "activation/ca_regulation.h"

class CaActivation3x2SModel : public CaRegulation {
 public:
  /// `closing_divisor` is above 0.
  CaActivation3x2SModel(std::string const& file, int caActivationModelIndicator,
                        double closing_divisor);

  void SetInitial(std::string const& file, int caActivationModelIndicator);
  static void declare_parameters(dealii::ParameterHandler& handler);

  /// Draws the `status` after a step; uses one number of the random stream.
  int update_status(int status, double dt, double closing_probability) const;

  /// Writes "CaActivation3x2SModel.lst", or "CaActivation2x2SModel.lst" where one ion binds, with
  /// the closing rates as read.
  void listingActivationInput() const;
  /// Lists the closing rates after their division.
  void WriteToTaveloOutput() const;
};
