#include "elastic/XB_StiffnessFunction.h"

#include <cstdio>
#include <sstream>
#include <utility>

#include "base/diagnostics.h"
#include "base/input_file.h"
#include "base/parameter_file.h"

namespace {

/// Integral of a table over its segment behind row `i`.
double trapezoid(Table const& table, std::size_t i) {
  auto const& [x0, y0] = table[i];
  auto const& [x1, y1] = table[i + 1];
  return (x1 - x0) * (y0 + y1) * 0.5;
}

/// Integral from 0 to row `i`, over the segments that lie wholly on the row's side of zero; summed
/// from the row towards zero.
double integral_to_row(Table const& table, std::size_t i) {
  double sum = 0.0;
  if (table[i].first < 0.0) {
    for (std::size_t j = i; j + 1 < table.size() && table[j + 1].first <= 0.0; ++j) {
      sum += trapezoid(table, j);
    }
    return -sum;
  }
  if (table[i].first == 0.0) return 0.0;
  for (std::size_t j = i; j > 0 && table[j - 1].first >= 0.0; --j) sum += trapezoid(table, j - 1);
  return sum;
}

Table integral_of(Table const& table) {
  Table integral;
  for (std::size_t i = 0; i < table.size(); ++i) {
    integral.emplace_back(table[i].first, integral_to_row(table, i));
  }
  return integral;
}

std::pair<double, double> read_row(std::string const& line, std::string const& where) {
  std::istringstream words(line);
  double x, y;
  if (!(words >> x >> y)) refuse(where, "the line", line, "an extension and a stiffness");
  return {x, y};
}

}  // namespace

XB_StiffnessFunction::XB_StiffnessFunction(std::string file) : XB_Model(std::move(file)) {
  xbType = 2;
  load_parameters(*this, file_name);
  read_stiffness();
  stiffness_function.SetFunction(stiffness);
  std::printf("%zu\n", stiffness.size());
  WriteStiffness();
  CalculateForce();
  std::printf("%zu\n", force.size());
  WriteForce();
  CalculateEnergy();
  std::printf("%zu\n", energy.size());
  WriteEnergy();
}

void XB_StiffnessFunction::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "StiffnessFunction");
  section.declare_text("xbStiffnessFileName", "xbStiffnessFileName.dat");
}

void XB_StiffnessFunction::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "StiffnessFunction", file_name);
  xbStiffnessFileName = section.text("xbStiffnessFileName");
}

void XB_StiffnessFunction::read_stiffness() {
  auto const text = read_input(xbStiffnessFileName);
  if (!text) {
    stop_with_message(("No fajl XB(SEE) stiffness! " + xbStiffnessFileName).c_str(),
                      file_name + ": xbStiffnessFileName names a file that can't be read");
  }
  std::istringstream file(*text);
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    std::string const where = xbStiffnessFileName + ", line " + std::to_string(++number);
    if (line.find_first_not_of(" \t\r\f\v") == std::string::npos) continue;
    auto const row = read_row(line, where);
    if (!stiffness.empty() && !(row.first > stiffness.back().first)) {
      refuse(where, "the extension", shown(row.first),
             "a number above " + shown(stiffness.back().first) + ", the row before");
    }
    stiffness.push_back(row);
  }
  if (stiffness.size() < 2) {
    refuse(xbStiffnessFileName, "the number of rows", std::to_string(stiffness.size()),
           "2 or more");
  }
  if (!(stiffness.front().first < 0.0 && stiffness.back().first > 0.0)) {
    refuse(xbStiffnessFileName, "the range of extensions",
           shown(stiffness.front().first) + " to " + shown(stiffness.back().first),
           "rows on both sides of 0");
  }
}

void XB_StiffnessFunction::CalculateForce() {
  force = integral_of(stiffness);
  force_function.SetFunction(force);
}

void XB_StiffnessFunction::CalculateEnergy() {
  energy = integral_of(force);
  energy_function.SetFunction(energy);
}

void XB_StiffnessFunction::WriteStiffness() const {
  stiffness_function.PrintFunctionAtFile("XB_stiffness.dat");
}

void XB_StiffnessFunction::WriteForce() const {
  force_function.PrintFunctionAtFile("XB_force.dat");
}

void XB_StiffnessFunction::WriteEnergy() const {
  energy_function.PrintFunctionAtFile("XB_energy.dat");
}

void XB_StiffnessFunction::FillIntegralFunction() const {
  Table integral;
  energy_function.MakeIntegralTable(integral);
  integralFunction.SetFunction(integral);
}
