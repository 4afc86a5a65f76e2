#include "kinetics/model_rombel.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/parameter_file.h"
#include "elastic/XB_Models.h"
#include "kinetics/rate_tools.h"

REGISTER_MODEL(ModelRombel, "Rombel");

namespace {

constexpr double two_pi = 6.283185307179586;

}  // namespace

ModelRombel::ModelRombel(ModelParameter_s const& parameter) : Model3State(parameter) {
  load_parameters(*this, file_name);
  rate_type = {{{0, 1, 3}, {2, 0, 1}, {1, 2, 0}}};
}

void ModelRombel::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const rombel(handler, "rombel");
  rombel.declare_double("kBT", "4.14");
  rombel.declare_double("k_bind", "1000.0");
  rombel.declare_double("GBind", "4.3");
  rombel.declare_double("ener_cycle", "24.155");
  rombel.declare_double("D", "7.0");
  rombel.declare_double("GStroke", "6.423");
}

void ModelRombel::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const rombel(handler, "rombel", file_name);
  kBT = rombel.positive("kBT");
  D = rombel.positive("D");
  k_bind = rombel.non_negative("k_bind");
  c_1 = -rombel.number("GBind") * kBT;
  c_2 = c_1 - rombel.number("GStroke") * kBT;
  c_4 = -rombel.number("ener_cycle") * kBT;
}

double ModelRombel::get_forward_rate(double x, unsigned from, unsigned) const {
  switch (from) {
    case 0:
      return k_bind * std::sqrt(xb_model->GetStiffness(x) / (two_pi * kBT)) *
             std::exp(-xb_model->GetEnergy(x) / kBT);
    case 1:
      return 5000.0 / std::exp(x) + 1000.0;
    case 2:
      return x > 0.0 ? 2 * x : -100.0 * x;
    default:
      return 0.0;
  }
}

double ModelRombel::rate_bound(unsigned from, double reach) const {
  // The forward rates have no peak either: straight lines on both sides of 0, an exponential.
  if (from != 0) return bound_by_ends(*this, from, reach, D, kBT);
  // Binding and the reverse of detachment, with each factor at its largest.
  double const stiffness = std::max(0.0, xb_model->GetStiffnessCeiling(-reach, reach));
  double const binding = k_bind * std::sqrt(stiffness / (two_pi * kBT)) *
                         std::exp(-xb_model->GetEnergyFloor(-reach, reach) / kBT);
  double const detachment = std::max(get_forward_rate(-reach, 2, 0), get_forward_rate(reach, 2, 0));
  double const G_2 = c_2 + xb_model->GetEnergyFloor(D - reach, D + reach);
  double const sum = binding + detailed_balance(detachment, G_2, c_4, kBT);
  return std::isfinite(sum) ? sum : std::numeric_limits<double>::infinity();
}
