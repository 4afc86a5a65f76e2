#pragma once
/// Eight-state cycle for the ATP turnover of fibres: the front of the six-state cycle, then states
/// with constant rates back to the start.
///
///     0 <-> 1 <-> 2 <-> 3 <-> 4 <-> 5 <-> 6 <-> 7 <-> 0    1 <-> 6
///
/// States:  0 and 7 detached; 1 bound; 2 after the stroke by D; 3 to 6 after the ADP step by delta
/// Law:     0 -> 1, 1 -> 2, 2 -> 3 as in ModelVorn; their reverses by detailed balance
///          all other rates are the constants of their names, k_34 being the rate of state 3 to 4
///     G_0 = 0,  G_1 = c_1 + K x^2/2,  G_2 = c_2 + K (x + D)^2/2,
///     G_3 = c_3 + K (x + D + delta)^2/2
/// Symbols: x strain [nm], K stiffness of the elastic law at x [pN/nm], G free energy [pN nm],
///          D and delta lever movements [nm]
/// Note:    the reverse of binding uses the constant as read, the forward rate the one divided by
///          the overlap of the sites in reach
/// Assumes: strain has no influence beyond state 3, so that the free energy of a whole turn depends
///          on the strain at which it is made
/// Refuses: kBT, D, k_12, k_21_cap, detachment_multiplier not above 0; other rates negative;
///          eta not above -1

#include <array>

#include "kinetics/active_model.h"

class ModelBrekAtpaseFiber : public ActiveModel {
 public:
  /// Also writes energies and rates over strain to "energy.csv" and "rates.csv".
  explicit ModelBrekAtpaseFiber(ModelParameter_s const& parameter);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  bool IsPowerStrokeState(int state) const override { return state >= 2 && state <= 6; }
  double power_stroke(unsigned state) const override;
  using ActiveModel::get_k;
  double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;
  double rate_bound(unsigned from, double reach) const override;

  /// `c` is the binding constant to use.
  double get_forward_rate(double x, unsigned from, unsigned to, double c) const;
  /// Rate of `j` to `i` from the rate `f` of `i` to `j`.
  double get_reverse_rate(double x, unsigned i, unsigned j, double f) const;
  double get_G(double x, unsigned state) const;

  /// Write tables over the strains from `x0` up to and including `x1`; give up silently when the
  /// file can't be opened.
  void print_energy(double x0, double x1, double dx) const;
  void print_rates(double x0, double x1, double dx) const;

 private:
  struct ConstantRate {
    char const* key;
    double ModelBrekAtpaseFiber::*value;
  };
  static ConstantRate const constant_rates[12];

  void SetAttached();
  void SetRateTypes();
  void SetTransitions();
  void CalculateX0();
  void RescaleBindFactor();
  double unregulated_rate(double x, unsigned from, unsigned to) const;
  double reverse_rate(double x, unsigned from, unsigned to) const;

  double c_1 = 0.0;
  double c_2 = 0.0;
  double c_3 = 0.0;
  double c_4 = 0.0;  ///< end of the cycle, not used by any rate
  double k_bind = 0.0;
  double k_bind_scaled = 0.0;
  double D = 0.0;
  double delta = 0.0;
  double kBT = 1.0;
  double G_ADP = 0.0;
  double G_ATP = 0.0;
  double eta = 0.0;
  double GBind = 0.0;
  double dGStroke = 0.0;
  double k_12 = 0.0;
  double k_21_cap = 0.0;
  double k_adp = 0.0;
  double x_cap = 0.0;
  double detachment_multiplier = 1.0;
  double k_34 = 0.0;
  double k_43 = 0.0;
  double k_45 = 0.0;
  double k_54 = 0.0;
  double k_56 = 0.0;
  double k_65 = 0.0;
  double k_67 = 0.0;
  double k_76 = 0.0;
  double k_70 = 0.0;
  double k_07 = 0.0;
  double k_16 = 0.0;
  double k_61 = 0.0;
  /// Kind of each transition, [from][to]: 0 none, 1 forward, 2 reverse.
  std::array<std::array<unsigned, 8>, 8> rate_type{};
};
