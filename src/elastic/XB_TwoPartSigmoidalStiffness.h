#pragma once
/// Crossbridge spring that is soft when pushed and stiff when pulled: two exponentials below a
/// fixed extension, a sigmoid above it.
///
/// Law:     K = a_left exp(b_left x) + k0_left + c_left exp(d_left x)              x < x_split
///          K = k0_right + a_right / (1 + exp(-(x - x0_right) / b_right))          otherwise
///          F and E are integrated from K on a grid of 101 extensions and interpolated; beyond the
///          grid they go on as straight lines. F(0) = 0.
/// Symbols: x extension [nm], K stiffness [pN/nm], x_split = -0.8042 nm
/// Note:    nothing makes the parts meet at x_split; those of the default values nearly do
/// Refuses: a grid that doesn't reach from 0 or below to above 0, a width b_right not above 0,
///          curves that a double can't hold

#include "elastic/XB_Models.h"

class XB_TwoPartSigmoidalStiffness : public XB_Model {
 public:
  /// Also writes the curves to "Stiffness.csv", "Force.csv" and "Energy.csv".
  explicit XB_TwoPartSigmoidalStiffness(std::string file_name);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  double GetStiffness(double x) const override;
  double GetForce(double x) const override { return GetValue(force, x); }
  double GetEnergy(double x) const override { return GetValue(energy, x); }
  bool IsNonLinear() const override { return true; }
  double GetEnergyFloor(double from, double to) const override {
    return GetRange(energy, from, to).first;
  }
  double GetStiffnessCeiling(double from, double to) const override;

  double GetStiffnessLeft(double x) const;
  double GetStiffnessRight(double x) const;
  /// Integral of the stiffness by 100 trapezoids.
  double IntegrateStiffness(double from, double to) const;

 private:
  void CalculateStiffnessFunction(double from, double to) const;
  void MakeForceFunction(double from, double to);
  void MakeEnergyFunction();
  void check_force() const;
  void print_parameters() const;

  double a_right = 0.0;
  double b_right = 0.0;
  double x0_right = 0.0;
  double k0_right = 0.0;
  double a_left = 0.0;
  double b_left = 0.0;
  double c_left = 0.0;
  double d_left = 0.0;
  double k0_left = 0.0;
  double const x_split = -0.8042;
  double x_start = 0.0;
  double x_end = 0.0;
  Table force;   ///< x [nm], F [pN]
  Table energy;  ///< x [nm], E [pN nm]
};
