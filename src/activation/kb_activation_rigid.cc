#include "activation/kb_activation_rigid.h"

#include <algorithm>

#include "activation/segment_layout.h"
#include "base/parameter_file.h"
#include "base/run_state.h"

KbActivationModelR::KbActivationModelR(std::string const& file) {
  SetInitial(file);
  WriteToTaveloOutput();
}

void KbActivationModelR::SetInitial(std::string const& file) {
  file_name = file;
  load_parameters(*this, file_name);
}

void KbActivationModelR::declare_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const structure(handler, "structure");
    structure.declare_integer("segment_length", "7");
    structure.declare_integer("strict_closing", "1");
  }
  ParameterSection const six_state(handler, "six_state");
  six_state.declare_double("k1t", "1.24e6");
  six_state.declare_double("k2t", "0.16e6");
  six_state.declare_double("ep", "0.001");
  six_state.declare_double("lam", "10.0");
  six_state.declare_double("e0", "0.0");
  six_state.declare_double("k_21", "100.0");
  six_state.declare_double("k_32", "100.0");
  six_state.declare_double("k_25", "10000.0");
  six_state.declare_double("k_65", "10.0");
  six_state.declare_double("k_36", "100000.0");
}

void KbActivationModelR::get_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const structure(handler, "structure", file_name);
    segment_length = read_segment_length(structure);
    strict_closing = structure.integer("strict_closing") > 0;
  }
  ParameterSection const six_state(handler, "six_state", file_name);
  k1t = six_state.non_negative("k1t");
  k2t = six_state.non_negative("k2t");
  ep = six_state.positive("ep");
  lam = six_state.positive("lam");
  e0 = six_state.non_negative("e0");
  k_21 = six_state.non_negative("k_21");
  k_32 = six_state.non_negative("k_32");
  k_25 = six_state.non_negative("k_25");
  k_65 = six_state.non_negative("k_65");
  k_36 = six_state.non_negative("k_36");
}

void KbActivationModelR::WriteToTaveloOutput() const {
  std::fprintf(fOutputFile, "\t\tKb ACTIVATION - Rigid Chain\n\n");
}

void KbActivationModelR::set_kb(double kb) {
  rates[0][1] = k1t * kb * k_21;
  rates[1][0] = k_21;
  rates[1][2] = k2t * kb * k_32;
  rates[2][1] = k_32;
  rates[1][4] = k_25;
  rates[4][1] = k_25 / (ep * lam);
  rates[4][5] = k2t * kb * k_65 * ep;
  rates[5][4] = k_65;
  rates[2][5] = k_36;
  rates[5][2] = k_36 / lam;
  std::transform(rates.begin(), rates.end(), moves.begin(), moves_of<6>);
}

int KbActivationModelR::update_status(int status, int n_heads_bound, double dt) const {
  auto const from = static_cast<unsigned>(status);
  auto const next = static_cast<int>(draw_status(from, moves[from], dt));
  bool const would_close = GetLumpedSegmentState(status) == 0 && GetLumpedSegmentState(next) > 0;
  return would_close && n_heads_bound >= 1 ? status : next;
}
