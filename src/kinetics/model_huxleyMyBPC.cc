#include "kinetics/model_huxleyMyBPC.h"

#include <cmath>
#include <cstdio>

#include "base/parameter_file.h"
#include "base/run_state.h"
#include "records/filament_data.h"

REGISTER_MODEL(ModelHuxleyMyBPC, "HuxleyMyBPC");

ModelHuxleyMyBPC::ModelHuxleyMyBPC(ModelParameter_s const& parameter) : ActiveModel(parameter, 2) {
  std::printf("<<<<<<<<<<<<<<<<<<<<<<HuxleyMyBPC>>>>>>>>>>>>>>>>>>>>>>>> \n");
  file_name = "model_huxleyMyBPC.prm";
  load_parameters(*this, file_name);
  attached[1] = true;
  WriteToTaveloOutput();
}

void ModelHuxleyMyBPC::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const huxley(handler, "huxley");
  huxley.declare_double("f", "48.5");
  huxley.declare_double("g0", "25.0");
  huxley.declare_double("g1", "11.2");
  huxley.declare_double("h", "15.6");
}

void ModelHuxleyMyBPC::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const huxley(handler, "huxley", file_name);
  f = huxley.non_negative("f");
  g0 = huxley.non_negative("g0");
  g1 = huxley.non_negative("g1");
  h = huxley.positive("h");
}

double ModelHuxleyMyBPC::get_k(double x, unsigned from, unsigned to,
                               ActinSite_s const& site) const {
  double const distance = std::abs(x);
  if (from == 0 && to == 1) return (distance < h ? f : 0.0) * site.k_on_factor;
  if (from == 1 && to == 0) return (g0 + g1 / h * distance) * site.k_off_factor;
  return 0.0;
}

double ModelHuxleyMyBPC::rate_bound(unsigned from, double reach) const {
  return from == 0 ? f : g0 + g1 / h * reach;  // detachment rises with the distance
}

void ModelHuxleyMyBPC::WriteToTaveloOutput() const {
  std::fprintf(fOutputFile, "\t*** MyBPC HUXLEY MODEL ***************\n\n");
}
