#include "activation/ca_activation_3x3s.h"

#include "base/output_file.h"
#include "base/parameter_file.h"
#include "base/run_state.h"

CaActivation3x3SModel::CaActivation3x3SModel(std::string const& file, int indicator)
    : CaRegulation(3) {
  SetInitial(file, indicator);
  WriteToTaveloOutput();
}

void CaActivation3x3SModel::SetInitial(std::string const& file, int indicator) {
  file_name = file;
  caActivationModelIndicator = indicator;
  load_parameters(*this, file_name);
  listingActivationInput();
}

void CaActivation3x3SModel::declare_parameters(dealii::ParameterHandler& handler) {
  CaRegulation::declare_parameters(handler, 3);
}

int CaActivation3x3SModel::update_status(int status, int n_heads_bound, double dt) const {
  auto const from = static_cast<unsigned>(status);
  auto const next = static_cast<int>(draw_status(from, moves_out_of(status), dt));
  bool const would_block = GetLumpedSegmentState(status) == 2 && GetLumpedSegmentState(next) == 1;
  return would_block && n_heads_bound >= 1 ? status : next;
}

void CaActivation3x3SModel::listingActivationInput() const {
  OutputFile const listing(binds_two() ? "CaActivation3x3SModel.lst" : "CaActivation2x3SModel.lst",
                           "wt");
  std::fprintf(listing.get(), "\t\tCa Activation 3x3S Model\n\n");
  list_constants(listing.get());
  listing.flush();
}

void CaActivation3x3SModel::WriteToTaveloOutput() const {
  std::fprintf(fOutputFile, "\t\tCa ACTIVATION 3X3 - Rigid Chain\n\n");
  list_constants(fOutputFile);
}
