#include "kinetics/model_huxley.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/parameter_file.h"
#include "base/run_state.h"
#include "kinetics/rate_tools.h"
#include "records/filament_data.h"

REGISTER_MODEL(ModelHuxley, "Huxley");

ModelHuxley::ModelHuxley(ModelParameter_s const& parameter) : ActiveModel(parameter, 2) {
  std::printf("%s\n", file_name.c_str());
  load_parameters(*this, file_name);
  attached[1] = true;
  RescaleBindFactor();
  WriteToTaveloOutput();
}

void ModelHuxley::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const huxley(handler, "huxley");
  huxley.declare_double("f1", "48.5");
  huxley.declare_double("g1", "11.2");
  huxley.declare_double("g2", "208.0");
  huxley.declare_double("g3", "1.0");
  huxley.declare_double("h", "15.6");
}

void ModelHuxley::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const huxley(handler, "huxley", file_name);
  f1 = huxley.non_negative("f1");
  g1 = huxley.non_negative("g1");
  g2 = huxley.non_negative("g2");
  g3 = huxley.non_negative("g3");
  h = huxley.positive("h");
  if (h > 1e4) huxley.refuse_value("h", "a number above 0 and at most 10000");
}

double ModelHuxley::get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const {
  if (from == 0 && to == 1) return binding_rate(x) * site.k_on_factor;
  if (from == 1 && to == 0) return detachment_rate(x) * site.k_off_factor;
  return 0.0;
}

double ModelHuxley::rate_bound(unsigned from, double reach) const {
  // Each piece is constant or rises with the distance.
  double const distance = reach / h;
  if (from == 0) return f1 * std::min(1.0, distance);
  return std::max({g2, g1 * std::min(1.0, distance), g1 * g3 * distance});
}

double ModelHuxley::binding_rate(double x) const { return x >= 0.0 && x < h ? f1 / h * x : 0.0; }

double ModelHuxley::detachment_rate(double x) const {
  if (x < 0.0) return g2;
  return x < h ? g1 / h * x : g1 * g3 / h * x;
}

void ModelHuxley::RescaleBindFactor() {
  auto const binding = [this](double x) { return ActiveModel::get_k(x, 0, 1); };
  f1 /= range_overlap_factor(binding, 0.0, h, file_name);
}

void ModelHuxley::WriteToTaveloOutput() const {
  std::fprintf(fOutputFile, "\t*** HUXLEY MODEL *********************\n\n");
  std::fprintf(fOutputFile, "\tf1:\t\t%15.8lf\n", f1);
  std::fprintf(fOutputFile, "\tg1:\t\t%15.8lf\n", g1);
  std::fprintf(fOutputFile, "\tg2:\t\t%15.8lf\n", g2);
  std::fprintf(fOutputFile, "\tg3(Kerval fac):\t\t%15.8lf\n", g3);
  std::fprintf(fOutputFile, "\th:\t\t%15.8lf\n\n", h);
}
