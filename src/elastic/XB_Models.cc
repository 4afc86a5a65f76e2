#include "elastic/XB_Models.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include "base/diagnostics.h"
#include "base/parameter_file.h"

MyDiscreteFunction const& XB_Model::GetIntegralFunction() const {
  if (!std::exchange(integral_asked, true)) FillIntegralFunction();
  return integralFunction;
}

double XB_Model::GetEnergyFloor(double, double) const {
  return -std::numeric_limits<double>::infinity();
}

double XB_Model::GetStiffnessCeiling(double, double) const {
  return std::numeric_limits<double>::infinity();
}

void XB_Model::IntegrateEnergy() const {
  Table samples;
  for (double x = -30.0; 30.0 >= x; x += 0.001) samples.emplace_back(x, GetEnergy(x));
  MyDiscreteFunction energy(integralFunction.thermal_scale);
  energy.SetFunction(samples);
  Table integral;
  energy.MakeIntegralTable(integral);
  integralFunction.SetFunction(integral);
}

// Constant stiffness

XB_ConstantStiffness::XB_ConstantStiffness(std::string file) : XB_Model(std::move(file)) {
  xbType = 0;
  load_parameters(*this, file_name);
}

void XB_ConstantStiffness::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "ConstantStiffness");
  section.declare_double("k", "1.25");
}

void XB_ConstantStiffness::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "ConstantStiffness", file_name);
  k = section.number("k");
}

double XB_ConstantStiffness::GetStiffness(double) const { return k; }

double XB_ConstantStiffness::GetForce(double x) const { return k * x; }

double XB_ConstantStiffness::GetEnergy(double x) const { return 0.5 * k * x * x; }

double XB_ConstantStiffness::GetEnergyFloor(double from, double to) const {
  // A parabola is lowest at its vertex or, where that is a peak or lies outside, at an end.
  return std::min({GetEnergy(from), GetEnergy(to), GetEnergy(std::clamp(0.0, from, to))});
}

// Sigmoidal stiffness

XB_SigmoidalStiffness::XB_SigmoidalStiffness(std::string file) : XB_Model(std::move(file)) {
  xbType = 1;
  load_parameters(*this, file_name);
  std::printf("x0 = %lf\n", x0);
  std::printf("k0 = %lf\n", k0);
  std::printf("a = %lf\n", a);
  std::printf("b = %lf\n", b);
}

void XB_SigmoidalStiffness::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "SigmoidalStiffness");
  section.declare_double("x0", "0.01");
  section.declare_double("k0", "0.08");
  section.declare_double("a", "2.45");
  section.declare_double("b", "0.5");
}

void XB_SigmoidalStiffness::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "SigmoidalStiffness", file_name);
  x0 = section.number("x0");
  k0 = section.number("k0");
  a = section.number("a");
  b = section.positive("b");
}

double XB_SigmoidalStiffness::GetStiffness(double x) const {
  return k0 + a / (std::exp(-(x - x0) / b) + 1.0);
}

double XB_SigmoidalStiffness::GetForce(double x) const {
  return k0 * x + a * b * std::log(std::exp(x0 / b) + std::exp(x / b));
}

double XB_SigmoidalStiffness::GetEnergy(double) const {
  stop_with_message("XB_SigmoidalStiffness xb model nije uradjen do kraja!",
                    file_name +
                        ": the law SigmoidalStiffness has no energy, which a snapshot or a kinetic "
                        "model asked for");
}

// Three-linear force

XB_ThreeLinearForce::XB_ThreeLinearForce(std::string file) : XB_Model(std::move(file)) {
  xbType = 3;
  load_parameters(*this, file_name);
  std::printf("ThreeLinearForce XB Model\n");
  for (double const value : {y1, y2, y3, y4, T1, T2, t1, t3}) std::printf("%g\n", value);
}

void XB_ThreeLinearForce::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "ThreeLinearForce");
  section.declare_double("y1", "-9.1864");
  section.declare_double("y2", "-4.0105");
  section.declare_double("y3", "-0.9818");
  section.declare_double("y4", "19.9400");
  section.declare_double("T1", "-76.5709");
  section.declare_double("T2", "-0.4704");
  section.declare_double("t1", "-83.0");
  section.declare_double("t3", "8.0");
}

void XB_ThreeLinearForce::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "ThreeLinearForce", file_name);
  y1 = section.number("y1");
  y2 = section.number("y2");
  y3 = section.number("y3");
  y4 = section.number("y4");
  T1 = section.number("T1");
  T2 = section.number("T2");
  t1 = section.number("t1");
  t3 = section.number("t3");
  if (t1 == T1) section.refuse_value("T1", "a number other than t1");
  if (!(T1 < T2)) section.refuse_value("T2", "a number above T1");
  if (t3 == T2) section.refuse_value("t3", "a number other than T2");
}

double XB_ThreeLinearForce::GetStiffness(double x) const {
  if (x <= T1) return (y2 - y1) / (T1 - t1);
  if (x <= T2) return (y3 - y2) / (T2 - T1);
  return (y4 - y3) / (t3 - T2);
}

double XB_ThreeLinearForce::GetForce(double x) const {
  if (x <= T1) return ((T1 - x) * y1 + (x - t1) * y2) / (T1 - t1);
  if (x <= T2) return ((T2 - x) * y2 + (x - T1) * y3) / (T2 - T1);
  return ((t3 - x) * y3 + (x - T2) * y4) / (t3 - T2);
}

double XB_ThreeLinearForce::GetEnergy(double) const {
  stop_with_message("XB_ThreeLinearForce xb model nije uradjen do kraja!",
                    file_name +
                        ": the law ThreeLinearForce has no energy, which a snapshot or a kinetic "
                        "model asked for");
}
