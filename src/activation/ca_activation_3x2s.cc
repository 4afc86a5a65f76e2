#include "activation/ca_activation_3x2s.h"

#include <algorithm>
#include <numeric>

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
  SegmentMoves out = moves_out_of(status);
  // Out of the closed position blocking comes first, as the blocked states are the lowest.
  bool const can_block = GetLumpedSegmentState(status) == 2 && out.target[0] < 3;
  if (can_block) {
    out.rate[0] *= std::max(0.0, closing_probability);
    out.total = std::accumulate(out.rate.begin(), out.rate.end(), 0.0);
  }
  return static_cast<int>(draw_status(static_cast<unsigned>(status), out, dt));
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
