#pragma once
/// Duke's swinging lever-arm cycle: detached (0), bound (1), bound after the stroke (2).
///
/// Law:     0 -> 1  binding     k_bind b(exp(-E(x)/kBT)), b saturating with eta
///          1 -> 2  stroke      k_12 below x_cap; from there on k_12 exp(-W/kBT), W the work that a
///                              stroke at x - x_cap does beyond that of one at strain 0
///          2 -> 0  detachment  k_adp exp(-(E(x + D + delta) - E(x + D))/kBT): the head moves on by
///                              delta to release ADP; ATP binding then follows at once
///          1 -> 0, 2 -> 1 by detailed balance over the free energies of Model3State
/// Symbols: x strain [nm], E energy of the elastic law [pN nm], kBT thermal energy [pN nm], D and
///          delta lever movements [nm], k rates; GBind, GStroke, ener_cycle free energies that
///          binding, stroke and a whole cycle release [kBT]; x_cap the strain at which the reverse
///          stroke would exceed k_21_cap
/// Source:  T. A. J. Duke, Proc. Natl. Acad. Sci. USA 96 (1999) 2770
/// Assumes: the end of the cycle is irreversible; a head reaches several sites, and binding is
///          divided once by their overlap
/// Refuses: kBT, D, k_12, k_21_cap not above 0, other rates negative, eta not above -1

#include "kinetics/model_3state.h"

/// The cycle's parameters and laws; a derived class names its transitions and its file.
class DukeCycle : public Model3State {
 public:
  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  /// Depends on `from` alone.
  double get_forward_rate(double x, unsigned from, unsigned to) const final;
  double rate_bound(unsigned from, double reach) const final;

 protected:
  explicit DukeCycle(ModelParameter_s const& parameter) : Model3State(parameter) {}
  /// Reads the file, then works out what follows from it, and lists it.
  void set_up(std::string const& parameter_file);

 private:
  void CalculateX0();
  void RescaleBindFactor();
  double stroke_rate(double x) const;

  double eta = 0.0;
  double GBind = 0.0;
  double dGStroke = 0.0;
  double k_12 = 0.0;
  double k_21_cap = 0.0;
  double k_adp = 0.0;
  double delta = 0.0;
  double x_cap = 0.0;
  double energy_D = 0.0;
};

class ModelDuke : public DukeCycle {
 public:
  explicit ModelDuke(ModelParameter_s const& parameter);
};
