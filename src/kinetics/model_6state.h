#pragma once
/// Common form of the six-state models: detached (0), bound (1), after the first stroke (2), after
/// the second (3), and two further detached states (4, 5).
///
/// A derived class gives the forward rates and says in `rate_type` how each rate comes about: 0
/// none, 1 forward, 2 reverse: a constant out of state 0, detailed balance elsewhere.
///
/// Free energy at strain x, with k the stiffness of the elastic law at x itself:
///     G_0 = 0,  G_1 = c_1 + k x^2 / 2,  G_2 = c_2 + k (x + D)^2 / 2,
///     G_3 = g_3 + k (x + D + delta)^2 / 2,  G_4 = G_3 + G_ATP,  G_5 = 0
/// A blocked site (state 1) has rate 0 for every transition. Rate keys count states from 1: k_45 is
/// the rate of state 3 to 4.

#include <array>

#include "kinetics/active_model.h"

class Model6State : public ActiveModel {
 public:
  explicit Model6State(ModelParameter_s const& parameter);

  bool IsPowerStrokeState(int state) const override { return state == 2 || state == 3; }
  double power_stroke(unsigned state) const override;
  using ActiveModel::get_k;
  double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;
  /// `c` is the binding constant to use.
  virtual double get_forward_rate(double x, unsigned from, unsigned to, double c) const = 0;

  double get_G(double x, unsigned state) const;
  /// Rate of `j` to `i` from the rate `f` of `i` to `j`.
  double get_reverse_rate(double x, unsigned i, unsigned j, double f) const;

  /// Diagnostic that no step of a run calls: writes the free energies of all states over strain to
  /// "energy.dat".
  void print_energy(double x0, double x1, double dx) const;

 protected:
  double c_1 = 0.0;
  double c_2 = 0.0;
  double c_3 = 0.0;  ///< binding constant as read
  double C_ = 0.0;   ///< binding constant after rescaling
  double g_3 = 0.0;
  double c_4 = 0.0;  ///< end of the cycle, listed only
  double D = 0.0;
  double kBT = 1.0;
  double delta = 0.0;
  double G_ADP = 0.0;
  double G_ATP = 0.0;
  double k_45 = 0.0;
  double k_61 = 0.0;
  double k_16 = 0.0;
  double k_51 = 0.0;
  double k_15 = 0.0;
  double k_ps_0 = 0.0;
  double k_ps_max = 0.0;
  double ca_50 = 0.0;
  double b_param = 0.0;
  /// Kind of each transition, [from][to].
  std::array<std::array<unsigned, 6>, 6> rate_type{};

 private:
  double unregulated_rate(double x, unsigned from, unsigned to) const;
  double reverse_rate(double x, unsigned from, unsigned to) const;
};
