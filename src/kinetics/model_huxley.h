#pragma once
/// Huxley's two-state model: detached (0) and attached (1), without a power stroke.
///
/// Law:     binding f(x) = f1 x / h on 0 <= x < h, else 0
///          detachment g(x) = g2 below 0, g1 x / h on 0 <= x < h, g1 g3 x / h from h on
/// Symbols: x strain [nm], h binding range [nm], f1, g1 rates at x = h, g2 rate, g3 factor
/// Source:  A. F. Huxley, Prog. Biophys. 7 (1957) 255; g3 is a later addition for strongly
///          stretched heads
/// Refuses: h not above 0 (or beyond 10,000 nm), negative rates
///
/// A head reaches several sites; f1 is divided once by the overlap of their binding ranges.
/// Regulation acts through the factors of the site alone, not through its state.

#include "kinetics/active_model.h"

class ModelHuxley : public ActiveModel {
 public:
  explicit ModelHuxley(ModelParameter_s const& parameter);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  bool IsPowerStrokeState(int) const override { return false; }
  using ActiveModel::get_k;
  double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;
  double rate_bound(unsigned from, double reach) const override;

 private:
  void RescaleBindFactor();
  double binding_rate(double x) const;
  double detachment_rate(double x) const;

  double g1 = 0.0;
  double g2 = 0.0;
  double g3 = 0.0;
  double f1 = 0.0;
  double h = 0.0;
};
