#include "kinetics/model_brek_atpase_fiber.h"

#include <cmath>
#include <cstdio>
#include <functional>

#include "base/output_file.h"
#include "base/parameter_file.h"
#include "elastic/XB_Models.h"
#include "kinetics/rate_tools.h"
#include "records/filament_data.h"

REGISTER_MODEL(ModelBrekAtpaseFiber, "BrekAtpaseFiber");

namespace {

/// Writes a heading, then one line per strain: the strain, then what `write_values` writes. Left
/// out without a word where the file can't be opened, as the tables of `write_strain_table`.
void write_table(char const* file_name, std::string const& heading, double x0, double x1, double dx,
                 std::function<void(FILE*, double)> const& write_values) {
  OutputFile const file = OutputFile::if_possible(file_name, "wb");
  if (!file.get()) return;
  std::fprintf(file.get(), "%s\n", heading.c_str());
  for (double x = x0; x <= x1; x += dx) {
    std::fprintf(file.get(), "%e,", x);
    write_values(file.get(), x);
    std::fprintf(file.get(), "\n");
  }
  file.flush();
}

}  // namespace

using Fiber = ModelBrekAtpaseFiber;

Fiber::ConstantRate const Fiber::constant_rates[] = {
    {"k_34", &Fiber::k_34}, {"k_43", &Fiber::k_43}, {"k_45", &Fiber::k_45}, {"k_54", &Fiber::k_54},
    {"k_56", &Fiber::k_56}, {"k_65", &Fiber::k_65}, {"k_67", &Fiber::k_67}, {"k_76", &Fiber::k_76},
    {"k_70", &Fiber::k_70}, {"k_07", &Fiber::k_07}, {"k_16", &Fiber::k_16}, {"k_61", &Fiber::k_61}};

ModelBrekAtpaseFiber::ModelBrekAtpaseFiber(ModelParameter_s const& parameter)
    : ActiveModel(parameter, 8) {
  SetAttached();
  SetRateTypes();
  SetTransitions();
  load_parameters(*this, file_name);
  CalculateX0();
  RescaleBindFactor();
  print_energy(-10.0, 10.0, 0.01);
  print_rates(-10.0, 10.0, 0.01);
}

void ModelBrekAtpaseFiber::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const fiber(handler, "brek_atpase_fiber");
  fiber.declare_double("k_bind", "170.0");
  fiber.declare_double("k_12", "10000.0");
  fiber.declare_double("k_21_cap", "1000.0");
  fiber.declare_double("k_adp", "51.0");
  fiber.declare_double("kBT", "4.14");
  fiber.declare_double("D", "10.5");
  fiber.declare_double("delta", "1.0");
  fiber.declare_double("GBind", "3.63");
  fiber.declare_double("GStroke", "13.96");
  fiber.declare_double("ener_cycle", "24.155");
  fiber.declare_double("eta", "0.0");
  fiber.declare_double("G_ATP", "24.0");
  fiber.declare_double("G_ADP", "24.0");
  fiber.declare_double("detachment_multiplier", "1.0");
  for (ConstantRate const& rate : constant_rates) fiber.declare_double(rate.key, "1.0");
}

void ModelBrekAtpaseFiber::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const fiber(handler, "brek_atpase_fiber", file_name);
  kBT = fiber.positive("kBT");
  D = fiber.positive("D");
  delta = fiber.number("delta");
  GBind = fiber.number("GBind");
  dGStroke = -fiber.number("GStroke") * kBT;
  G_ADP = -fiber.number("G_ADP") * kBT;
  G_ATP = fiber.number("G_ATP") * kBT;
  c_1 = -GBind * kBT;
  c_2 = c_1 + dGStroke;
  c_3 = c_2 + G_ADP;
  c_4 = -fiber.number("ener_cycle") * kBT;
  k_bind = fiber.non_negative("k_bind");
  k_12 = fiber.positive("k_12");
  k_21_cap = fiber.positive("k_21_cap");
  k_adp = fiber.non_negative("k_adp");
  detachment_multiplier = fiber.positive("detachment_multiplier");
  eta = fiber.number("eta");
  if (!(eta > -1.0)) fiber.refuse_value("eta", "a number above -1");
  for (ConstantRate const& rate : constant_rates) this->*rate.value = fiber.non_negative(rate.key);
}

void ModelBrekAtpaseFiber::SetAttached() {
  for (unsigned state = 1; state <= 6; ++state) attached[state] = true;
}

void ModelBrekAtpaseFiber::SetRateTypes() {
  for (unsigned state = 0; state < 7; ++state) {
    rate_type[state][state + 1] = 1;
    rate_type[state + 1][state] = 2;
  }
  rate_type[7][0] = rate_type[1][6] = 1;
  rate_type[6][1] = rate_type[0][7] = 2;
}

void ModelBrekAtpaseFiber::SetTransitions() { set_transitions(rate_type, transitions); }

void ModelBrekAtpaseFiber::CalculateX0() {
  x_cap = threshold_strain(*xb_model, D, kBT, k_12, k_21_cap, dGStroke);
}

void ModelBrekAtpaseFiber::RescaleBindFactor() {
  auto const rate = [this](double x) { return get_forward_rate(x, 0, 1, k_bind); };
  k_bind_scaled = k_bind / binding_overlap_factor(rate, k_bind / std::exp(GBind), file_name);
  std::printf("k bind scaled: %g\n", k_bind_scaled);
}

double ModelBrekAtpaseFiber::power_stroke(unsigned state) const {
  if (state == 2) return D;
  return IsPowerStrokeState(static_cast<int>(state)) ? D + delta : 0.0;
}

double ModelBrekAtpaseFiber::get_k(double x, unsigned from, unsigned to,
                                   ActinSite_s const& site) const {
  if (site.state == 1) return 0.0;
  double const k = unregulated_rate(x, from, to);
  if (from == 0 && to == 1) return k * site.k_on_factor;
  if (from == 1 && to == 2) return k * site.k_stroke_factor;
  bool const is_release = (from == 1 && to == 0) || (from == 6 && to == 7);
  return is_release ? k * site.k_off_factor : k;
}

double ModelBrekAtpaseFiber::unregulated_rate(double x, unsigned from, unsigned to) const {
  switch (rate_type[from][to]) {
    case 1:
      return get_forward_rate(x, from, to, k_bind_scaled);
    case 2:
      return reverse_rate(x, from, to);
    default:
      return 0.0;
  }
}

double ModelBrekAtpaseFiber::reverse_rate(double x, unsigned from, unsigned to) const {
  switch (from) {
    case 0:
      return k_07;
    case 4:
      return k_43;
    case 5:
      return k_54;
    case 6:
      return to == 5 ? k_65 : k_61;
    case 7:
      return k_76;
    default:
      // The unscaled constant: rescaling corrects how often a head binds, not how long it stays.
      return get_reverse_rate(x, to, from, get_forward_rate(x, to, from, k_bind));
  }
}

double ModelBrekAtpaseFiber::get_forward_rate(double x, unsigned from, unsigned to,
                                              double c) const {
  switch (from) {
    case 0:
      return widened_binding(*xb_model, x, c, eta, detachment_multiplier, kBT);
    case 1:
      if (to == 6) return k_16;
      return to == 2 ? linear_stroke(*xb_model, x, k_12, x_cap, D, kBT) : 0.0;
    case 2:
      return linear_adp_step(*xb_model, x, k_adp, D, delta, kBT);
    case 3:
      return k_34;
    case 4:
      return k_45;
    case 5:
      return k_56;
    case 6:
      return k_67;
    case 7:
      return k_70;
    default:
      return 0.0;
  }
}

double ModelBrekAtpaseFiber::rate_bound(unsigned from, double reach) const {
  if (from == 0) {
    return most_widened_binding(*xb_model, reach, k_bind_scaled, eta, detachment_multiplier, kBT);
  }
  if (from == 7) return k_76;
  double const lever = D + std::abs(delta) + std::abs(x_cap);
  return bound_by_ends(*this, from, reach, lever, kBT);
}

double ModelBrekAtpaseFiber::get_reverse_rate(double x, unsigned i, unsigned j, double f) const {
  return detailed_balance(f, get_G(x, i), get_G(x, j), kBT);
}

double ModelBrekAtpaseFiber::get_G(double x, unsigned state) const {
  switch (state) {
    case 1:
      return strained_level(*xb_model, c_1, x, x);
    case 2:
      return strained_level(*xb_model, c_2, x, x + D);
    case 3:
      return strained_level(*xb_model, c_3, x, x + D + delta);
    case 4:
      return strained_level(*xb_model, c_3, x, x + D + delta) + G_ATP;
    default:
      return 0.0;
  }
}

void ModelBrekAtpaseFiber::print_energy(double x0, double x1, double dx) const {
  std::string heading = "x[nm]/energy,";
  for (unsigned s = 0; s < n_states(); ++s) heading += "State " + std::to_string(s) + ",";
  write_table("energy.csv", heading, x0, x1, dx, [this](FILE* file, double x) {
    for (unsigned s = 0; s < n_states(); ++s) std::fprintf(file, "%e,", get_G(x, s));
  });
}

void ModelBrekAtpaseFiber::print_rates(double x0, double x1, double dx) const {
  std::vector<std::pair<unsigned, unsigned>> pairs;
  std::string heading = "x[nm]/rates,";
  for (unsigned from = 0; from < n_states(); ++from) {
    for (unsigned to = 0; to < n_states(); ++to) {
      if (rate_type[from][to] == 0) continue;
      pairs.emplace_back(from, to);
      heading += std::to_string(from) + " -> " + std::to_string(to) + ",";
    }
  }
  write_table("rates.csv", heading, x0, x1, dx, [&](FILE* file, double x) {
    for (auto const& [from, to] : pairs) {
      std::fprintf(file, "%e,", get_k(x, from, to, ActinSite_s{}));
    }
  });
}
