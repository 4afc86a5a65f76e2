#pragma once
/// Six-state cycle with two strokes and a parked state that calcium empties.
///
///     0 <-> 1 <-> 2 <-> 3 -> 4 -> 0    0 -> 4    0 -> 5 -> 0
///
/// States:  0 detached, ready to bind; 1 bound; 2 after the stroke by D; 3 after the ADP step by
///          delta; 4 detached behind it; 5 detached and parked
/// Law:     0 -> 1  binding   C_ b(exp(-E(x)/kBT)), saturating with eta; for x > 0 the energy is
///                            counted in units of detachment_multiplier kBT
///          1 -> 2  stroke    k_12 below x_cap, then k_12 exp(-K(x) D (x - x_cap)/kBT)
///          2 -> 3  ADP step  k_adp exp(-K(x) ((x + D + delta)^2 - (x + D)^2)/(2 kBT))
///          3 -> 4, 4 -> 0, 0 -> 4, 0 -> 5  constants k_45, k_51, k_15, k_16
///          5 -> 0  k_ps_0 + (k_ps_max - k_ps_0) ca^b_param / (ca_50^b_param + ca^b_param)
///          1 -> 0, 2 -> 1, 3 -> 2 by detailed balance over the free energies of Model6State
/// Symbols: x strain [nm], K stiffness [pN/nm] and E energy [pN nm] of the elastic law, kBT thermal
///          energy [pN nm], ca the value of "ca_protocol.dat" at the current time, in the unit of
///          ca_50; C_ the binding constant divided by the overlap of the sites in reach
/// Note:    rate keys count states from 1. The reverse of binding uses the constant as read.
/// Assumes: a crossbridge spring that is linear around each strain
/// Refuses: kBT, D, k_12, k_21_cap, detachment_multiplier, ca_50 not above 0; other rates
///          or b_param negative; eta not above -1; calcium for which the rate is no number

#include "base/protocol.h"
#include "kinetics/model_6state.h"

class ModelVorn : public Model6State {
 public:
  /// Also writes rates over strain to "model_vorn_rates.csv".
  explicit ModelVorn(ModelParameter_s const& parameter);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  /// Depends on `x`, `from` and `c`.
  double get_forward_rate(double x, unsigned from, unsigned to, double c) const override;
  double rate_bound(unsigned from, double reach) const override;

 private:
  void CalculateX0();
  void RescaleBindFactor();
  void write_rates() const;
  double calcium_rate() const;

  double eta = 0.0;
  double GBind = 0.0;
  double dGStroke = 0.0;
  double k_12 = 0.0;
  double k_21_cap = 0.0;
  double k_adp = 0.0;
  double x_cap = 0.0;
  double detachment_multiplier = 1.0;
  /// Stays on its first row for the whole run. Mutable since some rows take note of being asked.
  mutable Protocol ca_protocol;
};
