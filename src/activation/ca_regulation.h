#pragma once
/// What the two calcium models of a regulatory segment have in common: constants, rates, listings.
///
/// A segment is described by the position of its tropomyosin, p = 0 blocked, 1 closed, 2 open, and
/// by the calcium ions c = 0, 1, 2 that its troponin holds:
///
///     status = 3 p + c
///
/// Law:     calcium binds at the position p and leaves it; tropomyosin moves between neighbouring
///          positions, at rates that depend on c. Each step has an equilibrium constant K and a
///          backward rate; the forward rate is K times the backward rate.
/// Symbols: K_Ca [1/M] (_p closed, _s open), k_Ca_on [1/(M s)], k_Ca_off [1/s];
///          K_TnB blocked to closed, K_TnT closed to open (_p one ion, _s two ions bound);
///          k_b_c, k_c_b, k_c_o, k_o_c rates of these [1/s]
/// Source:  three positions: D. F. A. McKillop, M. A. Geeves, Biophys. J. 65 (1993) 693
/// Refuses: negative constants, a segment_length below 1
///
/// The second ion binds only with the indicator 2. A model with two positions has neither the
/// status values nor the constants of the open one.

#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "activation/segment_transition.h"

namespace dealii {
class ParameterHandler;
}

class CaRegulation {
 public:
  /// Declares the keys of a model with 2 or 3 positions.
  static void declare_parameters(dealii::ParameterHandler& handler, unsigned positions);
  void get_parameters(dealii::ParameterHandler& handler);

  /// Fills the rates for a calcium concentration [M]; due in each step before the first draw.
  void set_calcium(double Ca);
  double get_k(unsigned from, unsigned to) const { return rates[from][to]; }
  unsigned n_states() const { return 3 * positions; }
  unsigned get_segment_length() const { return segment_length; }
  /// As `ActinSite_s::state`: 0 open, 1 blocked, 2 closed.
  static unsigned GetLumpedSegmentState(int status) { return status < 3 ? 1 : status < 6 ? 2 : 0; }

 protected:
  explicit CaRegulation(unsigned n_positions) : positions(n_positions) {}
  ~CaRegulation() = default;

  SegmentMoves const& moves_out_of(int status) const {
    return moves[static_cast<unsigned>(status)];
  }
  bool binds_two() const { return caActivationModelIndicator == 2; }
  /// Writes all constants of the model, in the form of both listings.
  void list_constants(FILE* file) const;

  int caActivationModelIndicator = 0;

  double K_Ca = 0.0, k_Ca_on = 0.0, k_Ca_off = 0.0;
  double K_Ca_p = 0.0, k_Ca_on_p = 0.0, k_Ca_off_p = 0.0;
  double K_Ca_s = 0.0, k_Ca_on_s = 0.0, k_Ca_off_s = 0.0;

  double K_TnB = 0.0, k_b_c = 0.0, k_c_b = 0.0;
  double K_TnB_p = 0.0, k_b_c_p = 0.0, k_c_b_p = 0.0;
  double K_TnB_s = 0.0, k_b_c_s = 0.0, k_c_b_s = 0.0;

  double K_TnT = 0.0, k_c_o = 0.0, k_o_c = 0.0;
  double K_TnT_p = 0.0, k_c_o_p = 0.0, k_o_c_p = 0.0;
  double K_TnT_s = 0.0, k_c_o_s = 0.0, k_o_c_s = 0.0;

  std::string file_name;

 private:
  struct Step_s;
  static Step_s const steps[9];
  bool has(Step_s const& step) const;

  unsigned const positions;
  unsigned segment_length = 0;
  double calcium = NAN;  ///< of the rates
  SegmentRates<9> rates{};
  std::array<SegmentMoves, 9> moves;
};
