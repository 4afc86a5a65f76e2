#pragma once
/// Elastic laws: how a spring-like molecular element answers to its extension.
///
/// One family serves the crossbridge, the series elastic element, titin and the protein-C link.
/// Units: extension x [nm], force F [pN], stiffness K [pN/nm], energy E [pN nm].
/// F is positive when the element is stretched; K = dF/dx, F = dE/dx where the law has an energy.

#include <string>
#include <utility>

#include "base/discrete_function.h"

namespace dealii {
class ParameterHandler;
}

class XB_Model {
 public:
  explicit XB_Model(std::string file = "") : file_name(std::move(file)) {}
  virtual ~XB_Model() = default;
  XB_Model(XB_Model const&) = delete;
  XB_Model& operator=(XB_Model const&) = delete;

  virtual double GetStiffness(double x) const = 0;
  virtual double GetForce(double x) const = 0;
  /// Ends the run for a law without an energy.
  virtual double GetEnergy(double x) const = 0;
  virtual bool IsNonLinear() const = 0;
  /// Whether `GetEnergy` may be asked.
  virtual bool HasEnergy() const { return true; }

  /// No energy at extensions between `from` and `to` lies below; minus infinity where the law knows
  /// no such limit. Unlike `GetEnergy` it may be asked of every law.
  virtual double GetEnergyFloor(double from, double to) const;
  /// No stiffness there lies above; infinity where the law knows no such limit.
  virtual double GetStiffnessCeiling(double from, double to) const;

  /// The Boltzmann-weighted integral table of the law's energy. It is built when first asked for,
  /// since it holds some 600,000 rows; it stays empty for a law that has none.
  MyDiscreteFunction const& GetIntegralFunction() const;

  /// Which law this is: 0 constant, 1 sigmoidal, 2 tabulated, 3 three-linear, 4 two-part sigmoidal.
  int xbType = 0;
  /// The law's parameter file.
  std::string const file_name;

 protected:
  /// Fills `integralFunction`; a law without an integral table leaves it empty.
  virtual void FillIntegralFunction() const {}
  /// Samples `GetEnergy` on -30 to 30 nm and keeps the integral table of the samples.
  void IntegrateEnergy() const;

  /// Thermal scale 4 pN nm, about kBT at 17 degrees Celsius.
  mutable MyDiscreteFunction integralFunction{4.0};

 private:
  mutable bool integral_asked = false;
};

/// Crossbridge spring with a stiffness that does not depend on its extension.
///
/// Law:     F = k x,  E = k x^2 / 2
/// Refuses: nothing; any finite k is taken as read
class XB_ConstantStiffness : public XB_Model {
 public:
  explicit XB_ConstantStiffness(std::string file_name);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  double GetStiffness(double x) const override;
  double GetForce(double x) const override;
  double GetEnergy(double x) const override;
  bool IsNonLinear() const override { return false; }
  double GetEnergyFloor(double from, double to) const override;
  double GetStiffnessCeiling(double, double) const override { return k; }

  double k = 0.0;

 protected:
  void FillIntegralFunction() const override { IntegrateEnergy(); }
};

/// Spring whose stiffness rises from a floor k0 to k0 + a around the extension x0.
///
/// Law:     K = k0 + a / (1 + exp(-(x - x0) / b)),  F = k0 x + a b log(exp(x0 / b) + exp(x / b))
/// Note:    F(0) is a b log(1 + exp(x0 / b)), not 0; the law has no energy
/// Refuses: a width b not above 0
class XB_SigmoidalStiffness : public XB_Model {
 public:
  explicit XB_SigmoidalStiffness(std::string file_name);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  double GetStiffness(double x) const override;
  double GetForce(double x) const override;
  double GetEnergy(double x) const override;
  bool IsNonLinear() const override { return true; }
  bool HasEnergy() const override { return false; }

  double x0 = 0.0;
  double k0 = 0.0;
  double a = 0.0;
  double b = 0.0;
};

/// Force in three straight pieces through (t1, y1), (T1, y2), (T2, y3), (t3, y4).
///
/// The outer pieces go on as straight lines beyond t1 and t3. The law has no energy.
/// Refuses: pieces of length 0, breaks that are not in the order T1 < T2
class XB_ThreeLinearForce : public XB_Model {
 public:
  explicit XB_ThreeLinearForce(std::string file_name);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  double GetStiffness(double x) const override;
  double GetForce(double x) const override;
  double GetEnergy(double x) const override;
  bool IsNonLinear() const override { return true; }
  bool HasEnergy() const override { return false; }

  double y1 = 0.0;
  double y2 = 0.0;
  double y3 = 0.0;
  double y4 = 0.0;
  double T1 = 0.0;
  double T2 = 0.0;
  double t1 = 0.0;
  double t3 = 0.0;
};
