#include "activation/activation_2s.h"

#include <algorithm>
#include <cmath>

#include "activation/segment_layout.h"
#include "base/parameter_file.h"
#include "base/run_state.h"
#include "base/uniform_variate.h"

REGISTER_ACTIVATION(Activation2SModel, "Lumped2S");

namespace {

constexpr char const* parameter_file = "activ_2s.prm";

}  // namespace

Activation2SModel::Activation2SModel(ActivationModelParameter const& parameter)
    : ActivationModel(parameter), ca_protocol("ca_protocol.dat"), state_map{1, 0} {
  load_parameters(*this, parameter_file);
  // A new segment is off, with both factors at 1 until it switches off after having been on.
  for (auto const& chain : lay_out_segments(*geometry, segment_length)) {
    segments.insert(segments.end(), chain.begin(), chain.end());
  }
}

void Activation2SModel::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection(handler, "structure").declare_integer("segment_length", "7");
  ParameterSection const two_state(handler, "two_state");
  two_state.declare_double("k1t", "1.24e6");
  two_state.declare_double("k2t", "0.16e6");
  two_state.declare_double("ep", "0.001");
  two_state.declare_double("lam", "10.0");
  two_state.declare_double("e0", "0.0");
  two_state.declare_double("k_12", "30.0");
}

void Activation2SModel::get_parameters(dealii::ParameterHandler& handler) {
  segment_length = read_segment_length(ParameterSection(handler, "structure", parameter_file));
  ParameterSection const two_state(handler, "two_state", parameter_file);
  k1t = two_state.non_negative("k1t");
  k2t = two_state.non_negative("k2t");
  ep = two_state.non_negative("ep");
  lam = two_state.positive("lam");
  e0 = two_state.non_negative("e0");
  k_12 = two_state.non_negative("k_12");
}

double Activation2SModel::get_lti(double Ca) const {
  double const q = k1t * k2t * Ca * Ca;
  return (1.0 + k1t * Ca + q) / ((e0 * ep + k1t * ep * Ca + q) * lam);
}

int Activation2SModel::state_change(FilamentData& data, double time, std::vector<int>&) {
  double const lti = get_lti(std::pow(10.0, ca_protocol.value_at(time)));
  for (ActivationStateData& segment : segments) {
    bool const has_switched = state_change_segment(segment, data, lti);
    if (has_switched || !sites_are_set) segment.copy_to_filament(data, state_map);
  }
  sites_are_set = true;
  return 0;
}

bool Activation2SModel::state_change_segment(ActivationStateData& segment, FilamentData const& data,
                                             double lti) const {
  double const r = uniform_variate();
  unsigned state = segment.state.front();
  bool const goes_on = state == 0 && k_12 * currentTimeStep > r;
  if (goes_on) state = 1;
  bool const goes_off =
      state == 1 && lti * k_12 * currentTimeStep > r && !segment.heads_bound(data);
  if (goes_off) state = 0;
  if (!goes_on && !goes_off) return false;
  double const factor = state == 1 ? 1.0 : 0.0;
  std::fill(segment.state.begin(), segment.state.end(), state);
  std::fill(segment.k_on_factor.begin(), segment.k_on_factor.end(), factor);
  std::fill(segment.k_stroke_factor.begin(), segment.k_stroke_factor.end(), factor);
  return true;
}

void Activation2SModel::state_info(std::vector<double>& info) const {
  info.assign(2, 0.0);
  for (ActivationStateData const& segment : segments) {
    for (unsigned const state : segment.state) info[state == 0 ? 0 : 1] += 1.0;
  }
}
