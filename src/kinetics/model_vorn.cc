#include "kinetics/model_vorn.h"

#include <cmath>
#include <cstdio>

#include "base/diagnostics.h"
#include "base/logger.h"
#include "base/parameter_file.h"
#include "base/run_state.h"
#include "kinetics/rate_tools.h"

REGISTER_MODEL(ModelVorn, "Vorn");

namespace {

constexpr char const* calcium_file = "ca_protocol.dat";

constexpr std::array<std::array<unsigned, 6>, 6> rate_type_vorn = {{{0, 1, 0, 0, 2, 2},
                                                                    {2, 0, 1, 0, 0, 0},
                                                                    {0, 2, 0, 1, 0, 0},
                                                                    {0, 0, 2, 0, 1, 0},
                                                                    {1, 0, 0, 0, 0, 0},
                                                                    {1, 0, 0, 0, 0, 0}}};

}  // namespace

ModelVorn::ModelVorn(ModelParameter_s const& parameter)
    : Model6State(parameter), ca_protocol(calcium_file) {
  load_parameters(*this, file_name);
  rate_type = rate_type_vorn;
  set_transitions(rate_type, transitions);
  CalculateX0();
  RescaleBindFactor();
  WriteToTaveloOutput();
  write_rates();
}

void ModelVorn::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const vorn(handler, "vorn");
  vorn.declare_double("kBT", "4.14");
  vorn.declare_double("k_bind", "170.0");
  vorn.declare_double("GBind", "3.63");
  vorn.declare_double("k_adp", "51.0");
  vorn.declare_double("D", "10.5");
  vorn.declare_double("GStroke", "15.0");
  vorn.declare_double("k_12", "1000.0");
  vorn.declare_double("k_21_cap", "100.0");
  vorn.declare_double("delta", "1.0");
  vorn.declare_double("ener_cycle", "24.155");
  vorn.declare_double("eta", "0.0");
  vorn.declare_double("G_ATP", "24.0");
  vorn.declare_double("G_ADP", "24.0");
  vorn.declare_double("k_45", "1000000.0");
  vorn.declare_double("k_51", "100.0");
  vorn.declare_double("k_15", "10.0");
  vorn.declare_double("k_61", "10.0");
  vorn.declare_double("k_16", "10.0");
  vorn.declare_double("k_ps_0", "10.0");
  vorn.declare_double("k_ps_max", "500.0");
  vorn.declare_double("ca_50", "1.0E-6");
  vorn.declare_double("b_param", "2.0");
  vorn.declare_double("detachment_multiplier", "1.0");
}

void ModelVorn::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const vorn(handler, "vorn", file_name);
  kBT = vorn.positive("kBT");
  D = vorn.positive("D");
  delta = vorn.number("delta");
  GBind = vorn.number("GBind");
  dGStroke = -vorn.number("GStroke") * kBT;
  G_ADP = -vorn.number("G_ADP") * kBT;
  G_ATP = vorn.number("G_ATP") * kBT;
  c_1 = -GBind * kBT;
  c_2 = c_1 + dGStroke;
  c_3 = vorn.non_negative("k_bind");
  c_4 = -vorn.number("ener_cycle") * kBT;
  g_3 = c_2 + G_ADP;
  k_12 = vorn.positive("k_12");
  k_21_cap = vorn.positive("k_21_cap");
  k_adp = vorn.non_negative("k_adp");
  k_45 = vorn.non_negative("k_45");
  k_51 = vorn.non_negative("k_51");
  k_15 = vorn.non_negative("k_15");
  k_61 = vorn.non_negative("k_61");
  k_16 = vorn.non_negative("k_16");
  k_ps_0 = vorn.non_negative("k_ps_0");
  k_ps_max = vorn.non_negative("k_ps_max");
  ca_50 = vorn.positive("ca_50");
  b_param = vorn.non_negative("b_param");
  detachment_multiplier = vorn.positive("detachment_multiplier");
  eta = vorn.number("eta");
  if (!(eta > -1.0)) vorn.refuse_value("eta", "a number above -1");
}

void ModelVorn::CalculateX0() {
  x_cap = threshold_strain(*xb_model, D, kBT, k_12, k_21_cap, dGStroke);
}

void ModelVorn::RescaleBindFactor() {
  auto const rate = [this](double x) { return get_forward_rate(x, 0, 1, c_3); };
  C_ = c_3 / binding_overlap_factor(rate, c_3 / std::exp(GBind), file_name);
  std::printf("MODEL VORN C_ = %g\n", C_);
}

double ModelVorn::get_forward_rate(double x, unsigned from, unsigned, double c) const {
  switch (from) {
    case 0:
      return widened_binding(*xb_model, x, c, eta, detachment_multiplier, kBT);
    case 1:
      return linear_stroke(*xb_model, x, k_12, x_cap, D, kBT);
    case 2:
      return linear_adp_step(*xb_model, x, k_adp, D, delta, kBT);
    case 3:
      return k_45;
    case 4:
      return k_51;
    case 5:
      return calcium_rate();
    default:
      return 0.0;
  }
}

double ModelVorn::rate_bound(unsigned from, double reach) const {
  if (from == 0) {
    return most_widened_binding(*xb_model, reach, C_, eta, detachment_multiplier, kBT);
  }
  if (!attached[from]) return 0.0;  // leads to state 0 alone
  double const lever = D + std::abs(delta) + std::abs(x_cap);
  return bound_by_ends(*this, from, reach, lever, kBT);
}

double ModelVorn::calcium_rate() const {
  double const ca = ca_protocol.value_at(timeForAll);
  double const bound = std::pow(ca, b_param);
  double const rate = k_ps_0 + (k_ps_max - k_ps_0) * bound / (std::pow(ca_50, b_param) + bound);
  if (!std::isfinite(rate)) {
    refuse(calcium_file, "the calcium concentration at time " + shown(timeForAll), shown(ca),
           "a number of at least 0, not too small or large for the power b_param");
  }
  return rate;
}

void ModelVorn::WriteToTaveloOutput() const {
  list_cycle("*** VORN MODEL ***********************",
             {k_adp, D, kBT, dGStroke, c_1, c_2, c_3, c_4, k_12, k_21_cap, delta, eta});
}

void ModelVorn::write_rates() const {
  for (double x = -10.0; x <= 10.0; x += 0.01) {
    char line[2048];  // five numbers of a double's whole range
    std::snprintf(line, sizeof line, "%10.8lf,%10.8lf,%10.8lf, %10.8lf,%10.8lf\n", x,
                  ActiveModel::get_k(x, 0, 1), ActiveModel::get_k(x, 1, 0),
                  ActiveModel::get_k(x, 1, 2), ActiveModel::get_k(x, 2, 1));
    Logger::Write(line, Log::model_vorn_rates, false);
  }
}
