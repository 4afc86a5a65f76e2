#pragma once
/// Three-state cycle in closed forms of the strain, reversible all the way round: detached (0),
/// bound (1), bound after the stroke (2).
///
/// Law:     0 -> 1  binding     k_bind sqrt(K(x)/(2 pi kBT)) exp(-E(x)/kBT): k_bind is the rate
///                              over all strains together, times nm
///          1 -> 2  stroke      5000 exp(-x) + 1000
///          2 -> 0  detachment  2 x above 0, -100 x below
///          1 -> 0, 2 -> 1 and 0 -> 2 by detailed balance over the free energies of Model3State,
///          the last across the end of the cycle, so that a whole cycle releases ener_cycle at
///          every strain
/// Symbols: x strain [nm], K stiffness [pN/nm] and E energy [pN nm] of the elastic law, kBT thermal
///          energy [pN nm], D stroke [nm], GBind, GStroke, ener_cycle free energies released [kBT]
/// Assumes: an elastic law whose stiffness is nowhere negative
/// Refuses: kBT or D not above 0, a negative k_bind

#include "kinetics/model_3state.h"

class ModelRombel : public Model3State {
 public:
  explicit ModelRombel(ModelParameter_s const& parameter);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  /// Depends on `from` alone.
  double get_forward_rate(double x, unsigned from, unsigned to) const override;
  double rate_bound(unsigned from, double reach) const override;

 private:
  double k_bind = 0.0;
};
