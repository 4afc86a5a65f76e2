#include "control/scheme_program.h"

#include <cstdio>
#include <filesystem>

#include "base/output_file.h"
#include "base/run_state.h"
#include "control/silent_output.h"
#include "control/simulation.h"
#include "elastic/create_law.h"
#include "kinetics/model_scheme.h"

namespace {

constexpr char const* simulation_file = "simulation.prm";

std::string tell_scheme(std::string const& file) {
  SilentOutput const silent;
  open_listings();
  std::string law = "ConstantStiffness";
  if (std::filesystem::exists(simulation_file)) law = SimParameter(simulation_file).xb_model;
  return ModelScheme({create_elastic_law(law, "xb_"), file}).json();
}

}  // namespace

void scheme_program(std::string const& file) {
  discards_outputs = true;
  std::string const text = tell_scheme(file);
  std::fputs(text.c_str(), stdout);
  flush_output(stdout, "standard output");
}
