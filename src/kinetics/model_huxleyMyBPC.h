#pragma once
/// Two-state model of a protein-C link to actin: detached (0) and attached (1), no power stroke.
///
/// Law:     binding f on |x| < h, else 0;  detachment g0 + g1 |x| / h
/// Symbols: x strain [nm], h half-width of the binding range [nm], f, g0, g1 rates
/// Refuses: h not above 0, negative rates
///
/// Always reads "model_huxleyMyBPC.prm". Site state plays no part.

#include "kinetics/active_model.h"

class ModelHuxleyMyBPC : public ActiveModel {
 public:
  explicit ModelHuxleyMyBPC(ModelParameter_s const& parameter);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  bool IsPowerStrokeState(int) const override { return false; }
  using ActiveModel::get_k;
  double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;
  double rate_bound(unsigned from, double reach) const override;

 private:
  double g0 = 0.0;
  double g1 = 0.0;
  double f = 0.0;
  double h = 0.0;
};
