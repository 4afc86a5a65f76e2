#pragma once
/// Spring whose stiffness is measured: a table of extensions and stiffnesses in a file.
///
/// Law:     K(x) interpolated between the rows; F and E are integrated from it row by row, by
///          trapezoids, from the row nearest to zero outwards. Outside the table the first and the
///          last segment of each curve go on as straight lines.
/// Note:    a segment that crosses zero counts on neither side; a row at x = 0 leaves nothing out
/// Refuses: a table of fewer than two rows, not strictly ascending, without a row on each side of
///          zero, or with a line that has no two numbers

#include "elastic/XB_Models.h"

class XB_StiffnessFunction : public XB_Model {
 public:
  /// Also writes the three curves to "XB_stiffness.dat", "XB_force.dat" and "XB_energy.dat", which
  /// the last law of this kind in a run keeps.
  explicit XB_StiffnessFunction(std::string file_name);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  double GetStiffness(double x) const override { return GetValue(stiffness, x); }
  double GetForce(double x) const override { return GetValue(force, x); }
  double GetEnergy(double x) const override { return GetValue(energy, x); }
  bool IsNonLinear() const override { return true; }
  double GetEnergyFloor(double from, double to) const override {
    return GetRange(energy, from, to).first;
  }
  double GetStiffnessCeiling(double from, double to) const override {
    return GetRange(stiffness, from, to).second;
  }

 protected:
  void FillIntegralFunction() const override;

 private:
  void read_stiffness();
  void CalculateForce();
  void CalculateEnergy();
  void WriteStiffness() const;
  void WriteForce() const;
  void WriteEnergy() const;

  std::string xbStiffnessFileName;
  Table stiffness;  ///< x [nm], K [pN/nm]
  Table force;      ///< x [nm], F [pN]
  Table energy;     ///< x [nm], E [pN nm]
  MyDiscreteFunction stiffness_function{4.0};
  MyDiscreteFunction force_function{4.0};
  MyDiscreteFunction energy_function{4.0};
};
