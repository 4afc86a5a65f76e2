#include "activation/kb_activation_extensible.h"

#include <cstdio>

#include "base/parameter_file.h"
#include "base/run_state.h"
#include "base/uniform_variate.h"

KbActivationModelE::KbActivationModelE(std::string const& file) {
  SetInitial(file);
  WriteToTaveloOutput();
}

void KbActivationModelE::SetInitial(std::string const& file) {
  file_name = file;
  load_parameters(*this, file_name);
}

void KbActivationModelE::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection(handler, "rates").declare_double("kt_eff", "50000.0");
}

void KbActivationModelE::get_parameters(dealii::ParameterHandler& handler) {
  kt_eff = ParameterSection(handler, "rates", file_name).non_negative("kt_eff");
  segment_length = 7;
}

void KbActivationModelE::WriteToTaveloOutput() const {
  std::fprintf(fOutputFile, "\t\tKb ACTIVATION - Elastic Chain\n\n");
  std::fprintf(fOutputFile, "\tkt_eff:\t\t\t\t%15.10lf\n", kt_eff);
}

int KbActivationModelE::update_status(int status, double dt, double closing_probability) const {
  double const r = uniform_variate();
  if (status == 0) return dt * kb > r ? 1 : 0;
  if (status == 1) return closing_probability * kt_eff * dt > r ? 0 : 1;
  return status;
}
