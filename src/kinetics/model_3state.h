#pragma once
/// Common form of the three-state models: detached (0), bound (1), bound after the stroke (2).
///
/// A derived class gives the forward rates and says in `rate_type` how each rate comes about: 0
/// none, 1 forward, 2 reverse by detailed balance with the forward rate, 3 the same across the end
/// of the cycle, whose free energy stands as state `from` + 3.
///
/// Free energy at strain x, with E the energy of the elastic law and D the stroke:
///     G_0 = 0,  G_1 = c_1 + E(x),  G_2 = c_2 + E(x + D),  G_3 = c_4 (end of the cycle)
/// A blocked site (state 1) has rate 0 for every transition.

#include <array>

#include "kinetics/active_model.h"

class Model3State : public ActiveModel {
 public:
  explicit Model3State(ModelParameter_s const& parameter);

  bool IsPowerStrokeState(int state) const override { return state == 2; }
  double power_stroke(unsigned state) const override { return state == 2 ? D : 0.0; }
  using ActiveModel::get_k;
  double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;
  virtual double get_forward_rate(double x, unsigned from, unsigned to) const = 0;

  double get_G(double x, unsigned state) const;
  /// Rate of `j` to `i` from the rate `f` of `i` to `j`.
  double get_reverse_rate(double x, unsigned i, unsigned j, double f) const;

  /// Diagnostic that no step of a run calls: writes the free energies of all states over strain to
  /// "energy.dat".
  void print_energy(double x0, double x1, double dx) const;

 protected:
  double c_1 = 0.0;
  double c_2 = 0.0;
  double c_3 = 0.0;
  double c_4 = 0.0;
  double D = 0.0;
  double kBT = 1.0;
  /// Kind of each transition, [from][to].
  std::array<std::array<unsigned, 3>, 3> rate_type{};

 private:
  double unregulated_rate(double x, unsigned from, unsigned to) const;
};
