#include "elastic/XB_TwoPartSigmoidalStiffness.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include "base/diagnostics.h"
#include "base/output_file.h"
#include "base/parameter_file.h"

namespace {

constexpr int n_steps = 100;

/// Opens a curve's file and writes its heading.
OutputFile open_curve(char const* file_name, char const* heading) {
  OutputFile file(file_name, "wt");
  std::fprintf(file.get(), "%s\n", heading);
  return file;
}

void write_row(OutputFile const& file, double x, double y) {
  std::fprintf(file.get(), "%lf,%lf\n", x, y);
}

}  // namespace

XB_TwoPartSigmoidalStiffness::XB_TwoPartSigmoidalStiffness(std::string file)
    : XB_Model(std::move(file)) {
  xbType = 4;
  load_parameters(*this, file_name);
  CalculateStiffnessFunction(x_start, x_end);
  MakeForceFunction(x_start, x_end);
  MakeEnergyFunction();
  print_parameters();
}

void XB_TwoPartSigmoidalStiffness::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "TwoPartSigmoidalStiffness");
  section.declare_double("a_right", "1.8445");
  section.declare_double("b_right", "0.1555");
  section.declare_double("x0_right", "-0.7659");
  section.declare_double("k0_right", "1.2443");
  section.declare_double("a_left", "0.5767");
  section.declare_double("b_left", "0.3748");
  section.declare_double("c_left", "8.683");
  section.declare_double("d_left", "2.1057");
  section.declare_double("k0_left", "0.037");
  section.declare_double("x_start", "-25.0");
  section.declare_double("x_end", "15.0");
}

void XB_TwoPartSigmoidalStiffness::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "TwoPartSigmoidalStiffness", file_name);
  a_right = section.number("a_right");
  b_right = section.positive("b_right");
  x0_right = section.number("x0_right");
  k0_right = section.number("k0_right");
  a_left = section.number("a_left");
  b_left = section.number("b_left");
  c_left = section.number("c_left");
  d_left = section.number("d_left");
  k0_left = section.number("k0_left");
  x_start = section.number("x_start");
  x_end = section.positive("x_end");
  if (x_start > 0.0) section.refuse_value("x_start", "a number of at most 0");
}

double XB_TwoPartSigmoidalStiffness::GetStiffnessRight(double x) const {
  return k0_right + a_right / (std::exp(-(x - x0_right) / b_right) + 1);
}

double XB_TwoPartSigmoidalStiffness::GetStiffnessLeft(double x) const {
  return a_left * std::exp(b_left * x) + k0_left + c_left * std::exp(d_left * x);
}

double XB_TwoPartSigmoidalStiffness::GetStiffness(double x) const {
  return x < x_split ? GetStiffnessLeft(x) : GetStiffnessRight(x);
}

double XB_TwoPartSigmoidalStiffness::GetStiffnessCeiling(double from, double to) const {
  // Each term is monotonic within its part, and so highest at an end of it.
  double ceiling = -std::numeric_limits<double>::infinity();
  if (from < x_split) {
    auto const term = [from, end = std::min(to, x_split)](double factor, double exponent) {
      return std::max(factor * std::exp(exponent * from), factor * std::exp(exponent * end));
    };
    ceiling = k0_left + term(a_left, b_left) + term(c_left, d_left);
  }
  if (to < x_split) return ceiling;
  return std::max({ceiling, GetStiffnessRight(std::max(from, x_split)), GetStiffnessRight(to)});
}

double XB_TwoPartSigmoidalStiffness::IntegrateStiffness(double from, double to) const {
  double const h = (to - from) / n_steps;
  double sum = 0.0;
  double x = from;
  for (int i = 0; i < n_steps; ++i, x += h) {
    sum += 0.5 * (GetStiffness(x) + GetStiffness(x + h)) * h;
  }
  return sum;
}

void XB_TwoPartSigmoidalStiffness::CalculateStiffnessFunction(double from, double to) const {
  OutputFile const file = open_curve("Stiffness.csv", "X[nm],K(X)[pN/nm]");
  double const dx = (to - from) / n_steps;
  double x = from;
  for (int i = 0; i < n_steps; ++i, x += dx) write_row(file, x, GetStiffness(x));
  file.flush();
}

void XB_TwoPartSigmoidalStiffness::MakeForceFunction(double from, double to) {
  OutputFile const file = open_curve("Force.csv", "X[nm],F(X)[pN]");
  double const dx = (to - from) / n_steps;
  double x = from;
  for (int i = 0; i <= n_steps; ++i, x += dx) {
    double const F = x < 0.0 ? -IntegrateStiffness(x, 0.0) : IntegrateStiffness(0.0, x);
    force.emplace_back(x, F);
    write_row(file, x, F);
  }
  file.flush();
}

void XB_TwoPartSigmoidalStiffness::MakeEnergyFunction() {
  check_force();
  auto const x = [this](std::size_t i) { return force[i].first; };
  auto const F = [this](std::size_t i) { return force[i].second; };
  std::size_t i0 = force.size() - 1;
  while (x(i0) > 0.0) --i0;
  energy.resize(force.size());
  // On each side a triangle with the vertex at the origin, then trapezoids outwards.
  double E = 0.5 * F(i0) * x(i0);
  energy[i0] = {x(i0), E};
  for (std::size_t i = i0; i-- > 0;) {
    E += 0.5 * (F(i) + F(i + 1)) * (x(i) - x(i + 1));
    energy[i] = {x(i), E};
  }
  E = 0.5 * F(i0 + 1) * x(i0 + 1);
  energy[i0 + 1] = {x(i0 + 1), E};
  for (std::size_t i = i0 + 2; i < force.size(); ++i) {
    E += 0.5 * (F(i) + F(i - 1)) * (x(i) - x(i - 1));
    energy[i] = {x(i), E};
  }
  OutputFile const file = open_curve("Energy.csv", "X[nm],E(X)[pNnm]");
  for (auto const& row : energy) write_row(file, row.first, row.second);
  file.flush();
}

void XB_TwoPartSigmoidalStiffness::check_force() const {
  for (auto const& [x, F] : force) {
    // F x bounds the energy of a row.
    if (std::isfinite(F * x)) continue;
    refuse(file_name, "the energy at extension " + shown(x), shown(F * x), "a finite number");
  }
  // An x_end within rounding of 0 can miss it.
  if (force.back().first > 0.0) return;
  refuse(file_name, "the grid's last extension", shown(force.back().first), "a number above 0");
}

void XB_TwoPartSigmoidalStiffness::print_parameters() const {
  std::printf("a_right = %g\nb_right = %g\nx0_right = %g\nk0_right = %g\n\n", a_right, b_right,
              x0_right, k0_right);
  std::printf("a_left = %g\nb_left = %g\nc_left = %g\nd_left = %g\nk0_left = %g\n\n", a_left,
              b_left, c_left, d_left, k0_left);
  std::printf("x_start = %g\nx_end = %g\n\n", x_start, x_end);
}
