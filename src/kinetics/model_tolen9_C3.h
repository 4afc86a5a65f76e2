#pragma once
/// Nine-state crossbridge in five chemical schemes, C3 to C7, with rates from integrals over the
/// energy of the crossbridge spring.
///
/// States 0, 1, 2 are detached (3 as well in C7), the others attached; keys count states from 1,
/// so k_13 is the constant of state 0 to 2. Levers and laws: docs/theory/nine_state.md, pphis.h.
///
/// The rates are worked out once on a grid of strains xs, xs + dx, .. below xe. In a run `Linear`
/// continues the straight line of the grid interval above the one that holds x, `Step` takes the
/// grid point above x, and `Exact` works the rates out anew. Beyond the grid its end holds.
/// Where a rate jumps up with the strain, the line reaches below 0 for one interval; the stepper
/// takes such a rate for none.
///
/// Regulation acts through `k_on_factor` on the four binding steps 0 to 8, 1 to 5, 1 to 7 and 2 to
/// 3 of the grid, in every scheme, and not at all on `Exact` rates.
///
/// Refuses: a law without an integral table; an empty or endless grid; strokes not above 0 where
/// the scheme has a barrier; negative rates, saturations and limits; rates that come out as no
/// numbers or negative, as with a stiffness not above 0

#include <array>
#include <vector>

#include "base/discrete_function.h"
#include "kinetics/active_model.h"
#include "kinetics/pphis.h"

class ModelTolen9_C3 : public ActiveModel {
 public:
  explicit ModelTolen9_C3(ModelParameter_s const& parameter);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  bool IsPowerStrokeState(int state) const override { return state >= 4 && state <= 7; }
  double power_stroke(unsigned state) const override { return power_strokes[state]; }
  using ActiveModel::get_k;
  double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;
  double rate_bound(unsigned from, double) const override { return rate_bounds[from]; }
  /// The rate at `x` itself. The rates of the last strain asked for are kept.
  double get_k_exact(double x, unsigned from, unsigned to) const;
  /// The rates of C6, whose law needn't be linear: `rk` holds the constants, then the rates.
  void XRates(double x, double* rk) const;

 private:
  enum Variant : unsigned { C3, C4, C5, C6, C7 };
  enum Interpolation : unsigned { linear, step, exact };
  using Rates = std::array<double, 81>;  ///< of `from` to `to` at to * 9 + from

  void copy_integral();
  void get_grid(dealii::ParameterHandler& handler);
  void get_powerstroke(dealii::ParameterHandler& handler);
  void get_misc(dealii::ParameterHandler& handler);
  void set_states();
  void set_transitions();
  void evaluate(double x) const;
  void set_elastic_values(double x) const;
  void require_rates(double x) const;
  void fill_tables();
  void set_rate_bounds();
  double highest_sum(unsigned from, std::size_t row) const;
  double table_rate(double x, std::size_t entry) const;
  void RescaleBindFactor();

  MyDiscreteFunction integral{4.0};
  unsigned variant = C7;
  unsigned interpolation = linear;
  double power_strokes[9] = {};
  double k[11][11] = {};  ///< rate constants by state, counted from 1
  double dco = 0.0;       ///< reach of binding [nm]
  mutable RateBlock_s block;
  mutable double cached_x = 0.0;
  mutable Rates rk{};  ///< the rates at `cached_x`
  double xs = 0.0;
  double xe = 0.0;
  double dx = 0.0;
  std::vector<double> x_grid;
  std::vector<Rates> rate_tables;
  std::array<double, 9> rate_bounds;
};
