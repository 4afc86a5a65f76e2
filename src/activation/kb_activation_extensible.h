#pragma once
/// Regulation under a flexible chain by a prescribed opening rate: blocked (0) or open (1).
///
/// Law:     0 -> 1: kb      1 -> 0: kt_eff times the probability that the chain lies below the
///          blocking position
/// Symbols: kb value of the protocol [1/s], kt_eff [1/s]
/// Refuses: a negative kt_eff

#include <string>

namespace dealii {
class ParameterHandler;
}

class KbActivationModelE {
 public:
  explicit KbActivationModelE(std::string const& file);

  void SetInitial(std::string const& file);
  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  void set_kb(double value) { kb = value; }
  unsigned n_states() const { return 3; }  ///< the last is never entered
  unsigned get_segment_length() const { return segment_length; }
  /// As `ActinSite_s::state`: 0 open, 1 blocked.
  static unsigned GetLumpedSegmentState(int status) { return status < 1 ? 1 : 0; }

  /// Draws the `status` after a step; uses one number of the random stream.
  int update_status(int status, double dt, double closing_probability) const;

 private:
  double kb = 0.0;
  double kt_eff = 0.0;
  unsigned segment_length = 0;
  std::string file_name;
};
