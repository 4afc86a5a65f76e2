#pragma once
/// Regulation of a rigid chain by a prescribed opening rate: six states in two rows.
///
/// Law:     blocked 0 <-> 1 <-> 2, open (3), 4 <-> 5; 1 <-> 4 and 2 <-> 5 move tropomyosin
///          0 -> 1: k1t kb k_21      1 -> 0: k_21
///          1 -> 2: k2t kb k_32      2 -> 1: k_32
///          1 -> 4: k_25             4 -> 1: k_25 / (ep lam)
///          4 -> 5: k2t kb k_65 ep   5 -> 4: k_65
///          2 -> 5: k_36             5 -> 2: k_36 / lam
/// Symbols: kb value of the protocol, k1t, k2t scales of the two steps (k1t kb and k2t kb have no
///          dimension), ep, lam coupling factors, k_ij rates [1/s]
/// Assumes: state 3 is never entered
/// Refuses: negative constants, ep and lam not above 0, a segment_length below 1
///
/// A bound head holds an open segment open.

#include <string>

#include "activation/segment_transition.h"

namespace dealii {
class ParameterHandler;
}

class KbActivationModelR {
 public:
  explicit KbActivationModelR(std::string const& file);

  void SetInitial(std::string const& file);
  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  /// Fills the rates; due in each step before the first draw.
  void set_kb(double kb);
  double get_k(unsigned from, unsigned to) const { return rates[from][to]; }
  unsigned n_states() const { return 6; }
  unsigned get_segment_length() const { return segment_length; }
  bool get_strict_closing() const { return strict_closing; }
  /// As `ActinSite_s::state`: 0 open, 1 blocked.
  static unsigned GetLumpedSegmentState(int status) { return status < 3 ? 1 : 0; }

  /// Draws the `status` after a step; uses one number of the random stream.
  int update_status(int status, int n_heads_bound, double dt) const;

 private:
  double k1t = 0.0, k2t = 0.0;
  double ep = 0.0, lam = 0.0, e0 = 0.0;
  double k_21 = 0.0, k_32 = 0.0, k_25 = 0.0, k_65 = 0.0, k_36 = 0.0;
  unsigned segment_length = 0;
  bool strict_closing = false;
  SegmentRates<6> rates{};
  std::array<SegmentMoves, 6> moves;
  std::string file_name;
};
