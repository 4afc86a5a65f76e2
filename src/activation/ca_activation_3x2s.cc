#include "activation/ca_activation_3x2s.h"

#include "base/output_file.h"
#include "base/parameter_file.h"
#include "base/run_state.h"

CaActivation3x2SModel::CaActivation3x2SModel(std::string const& file, int indicator,
                                             double closing_divisor)
    : CaRegulation(2) {
  SetInitial(file, indicator);
  k_c_b /= closing_divisor;
  k_c_b_p /= closing_divisor;
  k_c_b_s /= closing_divisor;
  WriteToTaveloOutput();
}

void CaActivation3x2SModel::SetInitial(std::string const& file, int indicator) {
  file_name = file;
  caActivationModelIndicator = indicator;
  load_parameters(*this, file_name);
  listingActivationInput();
}

void CaActivation3x2SModel::declare_parameters(dealii::ParameterHandler& handler) {
  CaRegulation::declare_parameters(handler, 2);
}

int CaActivation3x2SModel::update_status(int status, double dt, double closing_probability) const {
  auto const from = static_cast<unsigned>(status);
  bool const is_closed = GetLumpedSegmentState(status) == 2;
  auto const rate = [&](unsigned to) {
    bool const blocks = is_closed && GetLumpedSegmentState(static_cast<int>(to)) == 1;
    return blocks ? get_k(from, to) * closing_probability : get_k(from, to);
  };
  return static_cast<int>(draw_status(n_states(), from, dt, rate));
}

void CaActivation3x2SModel::listingActivationInput() const {
  OutputFile const listing(binds_two() ? "CaActivation3x2SModel.lst" : "CaActivation2x2SModel.lst",
                           "wt");
  std::fprintf(listing.get(), "\t\tCa Activation %dx2S Model\n\n", binds_two() ? 3 : 2);
  list_constants(listing.get());
  listing.flush();
}

void CaActivation3x2SModel::WriteToTaveloOutput() const {
  std::fprintf(fOutputFile, "\t*** Ca ACTIVATION 3X2 - Elastic Chain *\n\n");
  list_constants(fOutputFile);
}
