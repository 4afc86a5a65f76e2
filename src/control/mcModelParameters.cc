#include "control/mcModelParameters.h"

#include <cstdio>

#include "activation/activation.h"
#include "base/parameter_file.h"
#include "base/run_state.h"

McModelParameters::McModelParameters(std::string const& file) : file_name(file) {
  load_parameters(*this, file_name);
  WriteToTaveloOutput();
}

void McModelParameters::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "monte_carlo");
  section.declare_text("geometry", "Simple");
  section.declare_selection("activation", "None",
                            "None|" + known_types<ActivationModel, ActivationModelParameter>("|"));
  section.declare_integer("filaments", "10");
  section.declare_integer("full_sarcomer", "0");
  section.declare_integer("caActivationModelIndicator", "0");
  section.declare_integer("healtyChainPercent", "100");
  section.declare_double("dispSqLimit", "1.0e-6");
  section.declare_double("dispCBLimit", "1.0e-6");
  section.declare_double("forceSqLimit", "1.0e-6");
  section.declare_double("forceCBLimit", "1.0e-6");
}

void McModelParameters::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const section(handler, "monte_carlo", file_name);
  geometry = section.text("geometry");
  activation = section.text("activation");
  filaments = section.count("filaments", 1);
  full_sarcomer = section.count("full_sarcomer");
  sarcomer.full_sarcomer = full_sarcomer;
  caActivationModelIndicator = section.integer("caActivationModelIndicator");
  healtyChainPercent = static_cast<int>(section.count("healtyChainPercent"));
  if (healtyChainPercent > 100) section.refuse_value("healtyChainPercent", "0 to 100");
  sarcomer.dispSqLimit = section.non_negative("dispSqLimit");
  sarcomer.dispCBLimit = section.non_negative("dispCBLimit");
  sarcomer.forceSqLimit = section.non_negative("forceSqLimit");
  sarcomer.forceCBLimit = section.non_negative("forceCBLimit");
}

void McModelParameters::WriteToTaveloOutput() const {
  FILE* const f = fOutputFile;
  std::fprintf(f, "\t*** MC MODEL PARAMETERS **************\n\n");
  std::fprintf(f, "\tgeometry:\t\t\t\t\t\t\t%s\n", geometry.c_str());
  std::fprintf(f, "\tfilaments number:\t\t\t\t\t\t%d\n", static_cast<int>(filaments));
  std::fprintf(f, "\tfull_sarcomere:\t\t\t\t\t\t\t%d\n", static_cast<int>(full_sarcomer));
  std::fprintf(f, "\tactivation:\t\t\t\t\t\t\t%s\n", activation.c_str());
  std::fprintf(f, "\tCa Activation Model Indicator:\t\t\t%d\n", caActivationModelIndicator);
  std::fprintf(f, "\thealtyChainPercent:\t\t\t\t%d percent\n", healtyChainPercent);
  std::fprintf(f, "\tdispSqLimit:\t\t\t\t%e nm\n", sarcomer.dispSqLimit);
  std::fprintf(f, "\tdispCBLimit:\t\t\t\t%e nm\n", sarcomer.dispCBLimit);
  std::fprintf(f, "\tforceSqLimit:\t\t\t\t%e pN\n", sarcomer.forceSqLimit);
  std::fprintf(f, "\tforceCBLimit:\t\t\t\t%e pN\n\n", sarcomer.forceCBLimit);
}
