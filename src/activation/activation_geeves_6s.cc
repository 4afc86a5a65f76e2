#include "activation/activation_geeves_6s.h"

#include <algorithm>
#include <cstdint>

#include "activation/ca_activation_3x3s.h"
#include "activation/kb_activation_rigid.h"
#include "base/run_state.h"
#include "base/uniform_variate.h"

REGISTER_ACTIVATION(ActivationGeeves6SModel, "Geeves6S");

namespace {

/// Place of the troponin in its segment.
constexpr unsigned troponin = 3;

/// Entries of `state_info` for lumped states, and of `state_counts` for segments by status.
constexpr std::size_t listed_states = 6;
constexpr std::size_t n_statuses = 9;

}  // namespace

ActivationGeeves6SModel::ActivationGeeves6SModel(ActivationModelParameter const& parameter)
    : ActivationModel(parameter), state_map{0, 1, 2}, ca_protocol("ca_protocol.dat") {
  std::fprintf(fOutputFile, "\t\tCALCIUM PROTOCOL\n\n");
  ca_protocol.WriteToTaveloOutput();
  choose_regulation(parameter.healtyChainPercent);
  bound_histogram.assign(segment_length + 1, 0);
  chain_segments = lay_out_segments(*geometry, segment_length);
  bound_sites = BoundSites(chain_segments);
  state_counts.assign(n_statuses, 0);
  for (auto& chain : chain_segments) {
    for (ActivationStateData& segment : chain) {
      segment.status = 0;
      ++state_counts[segment.status];
      std::fill(segment.state.begin(), segment.state.end(), 1);
    }
  }
}

ActivationGeeves6SModel::~ActivationGeeves6SModel() = default;

void ActivationGeeves6SModel::choose_regulation(int healtyChainPercent) {
  double const limit = healtyChainPercent * 0.01;
  bool const is_mutated = uniform_variate() > limit;
  if (caActivationModelIndicator > 0) {
    char const* const file = is_mutated ? "CaActivation3x3s_mutated.prm" : "CaActivation3x3s.prm";
    ca_model = std::make_unique<CaActivation3x3SModel>(file, caActivationModelIndicator);
    segment_length = ca_model->get_segment_length();
  } else {
    char const* const file = is_mutated ? "KbActivationRigid_mutated.prm" : "KbActivationRigid.prm";
    kb_model = std::make_unique<KbActivationModelR>(file);
    segment_length = kb_model->get_segment_length();
  }
}

int ActivationGeeves6SModel::state_change(FilamentData& data, double time,
                                          std::vector<int>& counts) {
  double const value = ca_protocol.value_at(time);
  ca_protocol.checkForNewProtocol(time);
  if (ca_model) ca_model->set_calcium(value);
  if (kb_model) kb_model->set_kb(value);
  std::fill(bound_histogram.begin(), bound_histogram.end(), 0);
  bound_sites.count(data);
  std::size_t number = 0;
  for (auto& chain : chain_segments) {
    for (ActivationStateData& segment : chain) {
      state_change_segment(segment, bound_sites.in_segment(number++), data);
    }
  }
  sites_are_set = true;
  counts = state_counts;
  return 0;
}

void ActivationGeeves6SModel::state_change_segment(ActivationStateData& segment, unsigned n_bound,
                                                   FilamentData& data) {
  ++bound_histogram[n_bound];
  auto const draw = [&](auto const& model) {
    auto const old = static_cast<int>(segment.status);
    int const next = model.update_status(old, static_cast<int>(n_bound), currentTimeStep);
    if (next != old) {
      --state_counts[segment.status];
      segment.status = static_cast<unsigned>(next);
      ++state_counts[segment.status];
    }
    return model.GetLumpedSegmentState(next);
  };
  unsigned const lumped = ca_model ? draw(*ca_model) : draw(*kb_model);
  // Nobody else writes what the sites hold, so they keep it until the lumped state changes.
  if (sites_are_set && lumped == segment.state.front()) return;
  set_sites(segment, lumped, data);
}

void ActivationGeeves6SModel::set_sites(ActivationStateData& segment, unsigned lumped,
                                        FilamentData& data) const {
  std::fill(segment.state.begin(), segment.state.end(), lumped);
  std::fill(segment.k_on_factor.begin(), segment.k_on_factor.end(), lumped == 1 ? 0.0 : 1.0);
  std::fill(segment.k_stroke_factor.begin(), segment.k_stroke_factor.end(),
            lumped == 0 ? 1.0 : 0.0);
  segment.copy_to_filament(data, state_map);
}

void ActivationGeeves6SModel::state_info(std::vector<double>& info) const {
  info.assign(listed_states, 0.0);
  for (auto const& chain : chain_segments) {
    for (ActivationStateData const& segment : chain) {
      for (unsigned const state : segment.state) info[state] += 1.0;
    }
  }
  info.insert(info.end(), bound_histogram.begin(), bound_histogram.end());
}

void ActivationGeeves6SModel::write_state_data(FilamentData const& data, FILE* file, bool) const {
  std::size_t longest = 0;
  for (auto const& chain : chain_segments) longest = std::max(longest, chain.size());
  std::vector<std::int32_t> sites(longest * segment_length);
  for (auto const& chain : chain_segments) {
    std::fill(sites.begin(), sites.end(), 0);
    auto site = sites.begin();
    for (ActivationStateData const& segment : chain) {
      for (unsigned i = 0; i < segment_length; ++i) {
        bool const is_troponin = i == troponin && segment.state[i] < 3;
        *site++ = segment.head_bound(i, data)
                      ? static_cast<std::int32_t>(segment.head_state(i, data) + 1)
                  : is_troponin ? 0
                                : 1;
      }
    }
    std::fwrite(sites.data(), sizeof(std::int32_t), sites.size(), file);
  }
}
