#include "kinetics/model_duke.h"

#include <cmath>

#include "base/parameter_file.h"
#include "elastic/XB_Models.h"
#include "kinetics/rate_tools.h"

REGISTER_MODEL(ModelDuke, "Duke");

ModelDuke::ModelDuke(ModelParameter_s const& parameter) : DukeCycle(parameter) {
  rate_type = {{{0, 1, 0}, {2, 0, 1}, {1, 2, 0}}};
  set_up(parameter.file_name);
}

void DukeCycle::set_up(std::string const& parameter_file) {
  file_name = parameter_file;
  load_parameters(*this, file_name);
  CalculateX0();
  energy_D = xb_model->GetEnergy(D);
  RescaleBindFactor();
  WriteToTaveloOutput();
}

void DukeCycle::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const duke(handler, "duke");
  duke.declare_double("kBT", "4.14");
  duke.declare_double("k_bind", "170.0");
  duke.declare_double("GBind", "3.63");
  duke.declare_double("k_adp", "51.0");
  duke.declare_double("D", "10.5");
  duke.declare_double("GStroke", "15.0");
  duke.declare_double("k_12", "1000.0");
  duke.declare_double("k_21_cap", "100.0");
  duke.declare_double("delta", "1.0");
  duke.declare_double("ener_cycle", "24.155");
  duke.declare_double("eta", "0.0");
}

void DukeCycle::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const duke(handler, "duke", file_name);
  kBT = duke.positive("kBT");
  D = duke.positive("D");
  GBind = duke.number("GBind");
  dGStroke = -duke.number("GStroke") * kBT;
  c_1 = -GBind * kBT;
  c_2 = c_1 + dGStroke;
  c_3 = duke.non_negative("k_bind");
  c_4 = -duke.number("ener_cycle") * kBT;
  k_12 = duke.positive("k_12");
  k_21_cap = duke.positive("k_21_cap");
  k_adp = duke.non_negative("k_adp");
  delta = duke.number("delta");
  eta = duke.number("eta");
  if (!(eta > -1.0)) duke.refuse_value("eta", "a number above -1");
}

void DukeCycle::CalculateX0() {
  x_cap = threshold_strain(*xb_model, D, kBT, k_12, k_21_cap, dGStroke);
}

void DukeCycle::RescaleBindFactor() {
  auto const rate = [this](double x) { return get_forward_rate(x, 0, 1); };
  c_3 /= binding_overlap_factor(rate, c_3 / std::exp(GBind), file_name);
}

double DukeCycle::get_forward_rate(double x, unsigned from, unsigned) const {
  auto const E = [this](double extension) { return xb_model->GetEnergy(extension); };
  switch (from) {
    case 0:
      return saturating_binding(c_3, eta, std::exp(-E(x) / kBT));
    case 1:
      return stroke_rate(x);
    case 2:
      return k_adp * std::exp((E(x + D) - E(x + D + delta)) / kBT);
    default:
      return 0.0;
  }
}

double DukeCycle::rate_bound(unsigned from, double reach) const {
  if (from == 0) return most_widened_binding(*xb_model, reach, c_3, eta, 1.0, kBT);
  double const lever = D + std::abs(delta) + std::abs(x_cap);
  return bound_by_ends(*this, from, reach, lever, kBT);
}

double DukeCycle::stroke_rate(double x) const {
  if (x < x_cap) return k_12;
  double const d = x - x_cap;
  double const work = xb_model->GetEnergy(D + d) - xb_model->GetEnergy(d);
  return k_12 * std::exp((energy_D - work) / kBT);
}

void DukeCycle::WriteToTaveloOutput() const {
  list_cycle("*** DUKE MODEL ***********************",
             {k_adp, D, kBT, dGStroke, c_1, c_2, c_3, c_4, k_12, k_21_cap, delta, eta});
}
